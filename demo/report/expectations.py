"""What is to happen in the demonstration, and what the logs of both ends say of it."""

from dataclasses import dataclass
from pathlib import Path

import pictures
import sound

CONTROLLER = 33
STATION = 5000
VIRTUAL_CONTROLLER = 900
BROADCAST_GROUP = "225.0.0.1:28100"
INTERCOM_PORT = ":29002"
TASK_STATES = [1, 2, 0]
CALL_MESSAGES = [1, 2]  # invited, hung up
TRAIN_STATE = (4, 4)  # as a report has it: the controller's state and that of its zone 1
GOOD_CORRELATION = 0.99


@dataclass
class Route:
    """A way of audio from one end to the other: how much was sent and heard, and how alike the two are."""

    name: str
    sent: int
    heard: int
    match: sound.Match = None

    @property
    def row(self):
        alike = "" if self.match is None else f"{self.match.correlation:.4f}"
        return [self.name, self.sent, self.heard, self.sent - self.heard, alike]

    @property
    def is_good(self):
        matches = self.match is None or (self.match.correlation >= GOOD_CORRELATION and self.match.heard == 1.0)
        return 0 < self.sent == self.heard and matches


@dataclass
class Recording:
    """A sound file of the field, to be held against the one that the host sent."""

    sent: Path
    heard: Path
    place: str

    def compare(self):
        """Compares the two and draws them beside the recording."""
        if not self.heard.exists():
            return sound.Match(0.0, 0.0, 0.0)
        sent, heard = sound.read(self.sent), sound.read(self.heard)
        match = sound.find(sent, heard)
        pictures.draw(self.heard.with_suffix(".png"), sent, heard, match, (self.sent.name, self.place))
        return match


def _sum(events):
    return sum(event["datagrams"] for event in events)


def routes(field, host, broadcast, intercom):
    """All routes of audio. broadcast and intercom: the matches of the two recordings"""

    def on_cable(receiver):
        return _sum(line for line in field.of("cable") if line["receiver"].endswith(receiver))

    def streamed(device, to):
        return _sum(line for line in field.of("stream-ends", device=device) if to(line["peer"]))

    played = _sum(field.of("recording", device=CONTROLLER))
    return [
        Route("broadcast to zone 1", on_cable(BROADCAST_GROUP), played, broadcast),
        Route("operator to caller", on_cable(INTERCOM_PORT), _sum(field.of("intercom", device=STATION)), intercom),
        Route(
            "caller to operator",
            streamed(STATION, lambda peer: peer.endswith(INTERCOM_PORT)),
            host.blocks["PINTERCOMAUDIO"],
        ),
        Route(
            "push-to-talk",
            streamed(STATION, lambda peer: not peer.endswith(INTERCOM_PORT)),
            host.blocks["PRPKPTTAUDIO"],
        ),
        # The controller sends all that its zone plays to the group of that zone, on which the host listens.
        Route("monitored zone", played, host.blocks["PMONITORZONE"]),
    ]


def unmet(field, host, all_routes, exit_status):
    """What was expected and did not happen, one sentence each."""
    train = [
        (event["state"], event["zone_states"][0])
        for event in field.of("received", name="status", source=VIRTUAL_CONTROLLER)
    ]
    gaps = sum(event["gaps"] for kind in ("recording", "intercom") for event in field.of(kind))
    expected = {
        "the sample host ends with 0": exit_status == 0,
        "the task's states are 1, 2 and 0": host.task_states == TASK_STATES,
        "the call's messages are 1 and 2": host.call_messages == CALL_MESSAGES,
        "the host is told volumes": bool(host.volumes),
        "controller and station are on line": sorted(state for state in host.device_states.values()) == ["1", "1"],
        "another station sees the train's status": TRAIN_STATE in train,
        "the audio is closed once": len(field.of("received", name="close-audio", device=CONTROLLER)) == 1,
        "no audio has gaps": gaps == 0,
        "no command of the scenario fails": not [event for event in field.of("command") if "error" in event],
    }
    expected |= {f"{route.name}: everything sent is heard, and alike": route.is_good for route in all_routes}
    return [sentence for sentence, holds in expected.items() if not holds]
