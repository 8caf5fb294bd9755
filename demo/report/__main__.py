"""Runs the demonstration and tells what happens: python3 demo/report OUT BROADCAST.wav INTERCOM.wav COMMAND...

The command runs the simulator with the sample host, in the directory OUT. There it writes events.jsonl, the library's
log and the recordings; what the sample host prints goes to host.txt.
"""

import os
import signal
import subprocess
import sys
import time
from pathlib import Path

import table
from expectations import Recording, routes, unmet
from field_log import FieldLog
from host_log import HostLog
from timeline import Timeline

LONGEST_RUN_S = 45  # the host ends after 30
EXIT_INTERRUPTED = 130  # as shells count
TITLES = ("HOST 192.168.1.166 (the sample host)", "FIELD (simulated devices)")


def run(out, command, sources):
    """Runs the command and prints the timeline meanwhile; the exit status."""
    with (out / "host.txt").open("w", encoding="utf-8") as printed:
        with subprocess.Popen(
            command, cwd=out, stdin=subprocess.DEVNULL, stdout=printed, process_group=0
        ) as process:
            end = time.monotonic() + LONGEST_RUN_S
            try:
                Timeline(sources, TITLES, lambda line: print(line, flush=True)).follow(
                    lambda: process.poll() is None and time.monotonic() < end
                )
            finally:
                if process.poll() is None:  # interrupted, or the host does not end
                    os.killpg(process.pid, signal.SIGTERM)
            return process.returncode


def interrupt(*_):
    raise KeyboardInterrupt


def main(arguments):
    out, broadcast, intercom = (Path(argument) for argument in arguments[:3])
    field, host = FieldLog(out / "events.jsonl"), HostLog(out / "k740log")
    exit_status = run(out, arguments[3:], (host, field))

    recordings = [
        Recording(broadcast, out / "zcu33-zone1.wav", "zone 1 of controller 33"),
        Recording(intercom, out / "rpk5000-intercom.wav", "the caller at station 5000"),
    ]
    all_routes = routes(field, host, *(recording.compare() for recording in recordings))

    print()
    for line in table.render(["audio, in datagrams", "sent", "heard", "lost", "match"], [r.row for r in all_routes]):
        print(line)
    print("Without a match: the sample host keeps nothing of the audio that it is handed, it is only counted.")
    print(f"states of task 1001: {host.task_states}; messages of the call: {host.call_messages}")
    print()
    for recording in recordings:
        if recording.heard.exists():
            print(f"Listen to {recording.heard}")
            print(f"  look at {recording.picture}")
    missing = unmet(field, host, all_routes, exit_status)
    for sentence in missing:
        print(f"FAILED: {sentence}", file=sys.stderr)
    return 1 if missing else 0


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, interrupt)
    try:
        sys.exit(main(sys.argv[1:]))
    except KeyboardInterrupt:
        sys.exit(EXIT_INTERRUPTED)
