"""The host's end: what the library logged of the calls that the sample host made and the callbacks that it got."""

import re
import time
from collections import Counter
from datetime import datetime

from growing_file import GrowingFile
from happening import HOST, Happening, Stream

LINE = re.compile(r"(\d\d-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3})\t(.*)")
CALLBACK = re.compile(r"(P[A-Z]+)\((.*)\)$")
TASK_STATES = {"1": "accepted", "2": "broadcasting", "0": "over"}
CALL_MESSAGES = {"1": "is called", "2": "was hung up", "3": "is accepted"}
AUDIO = {
    "PMONITORZONE": "zone {1} of controller {0}, monitored",
    "PRPKPTTAUDIO": "push-to-talk of station {0}",
    "PINTERCOMAUDIO": "the caller at station {0}",
}
# Of no news to a reader: registrations of callbacks, and reports that only repeat.
DULL = ("Register callback", "K740_SetTrainStatus", "PZONESTATUS")


def arguments(text):
    """Splits a callback's arguments; an array in braces is one of them."""
    return [signed(part.strip()) for part in re.findall(r"\{[^}]*\}|[^,{}]+", text) if part.strip()]


def signed(text):
    """The log writes negative numbers as those of 32 bits without a sign."""
    return str(int(text) - 2**32) if text.isdecimal() and int(text) >= 2**31 else text


class HostLog:
    """Follows the log files of the library."""

    def __init__(self, directory):
        self.directory = directory
        self.blocks = Counter()  # audio blocks by callback
        self.task_states = []
        self.call_messages = []
        self.volumes = []
        self.device_states = {}  # last one by callback and ID
        self._files = {}
        self._streams = {}

    def news(self):
        """The happenings since the last call, in no particular order."""
        for path in self.directory.glob("*.log"):
            self._files.setdefault(path, GrowingFile(path))
        lines = [line for file in self._files.values() for line in file.new_lines()]
        return [told for line in lines for told in self._read(line)] + self._ended(time.time())

    def rest(self):
        """The last happenings, once the host has ended."""
        return self.news() + self._ended(float("inf"))

    def _read(self, line):
        match = LINE.match(line)
        if not match or not match[2].strip():
            return []
        return self._happenings(datetime.strptime(match[1], "%y-%m-%d %H:%M:%S.%f").timestamp(), match[2])

    def _happenings(self, when, text):
        if text.startswith(DULL):
            return []
        callback = CALLBACK.match(text)
        if not callback:
            return [Happening(when, HOST, text.lstrip("-="))]
        name, values = callback[1], arguments(callback[2])
        if name in AUDIO:
            return self._heard(when, name, values)
        told = self._told(name, values)
        return [Happening(when, HOST, "is told: " + told)] if told else []

    def _told(self, name, values):
        if name == "PTASKSTATUS":
            self.task_states.append(int(values[1]))
            return f"task {values[0]} is {TASK_STATES.get(values[1], 'in state ' + values[1])}"
        if name == "PINTERCOMMESSAGE":
            self.call_messages.append(int(values[2]))
            meaning = CALL_MESSAGES.get(values[2], "got message " + values[2])
            return f"intercom {values[1]} {meaning} (station {values[0]})"
        if name == "PZCUVOLUME":
            self.volumes.append(values[1])
            return f"volumes of controller {values[0]} are {values[1]}"
        if name in ("PZCUSTATUS", "PRPKSTATUS"):
            return self._device_state(name, values)
        return f"{name}({', '.join(values)})"

    def _device_state(self, name, values):
        kind = "controller" if name == "PZCUSTATUS" else "station"
        if self.device_states.get((kind, values[0])) == values[1]:
            return None
        self.device_states[kind, values[0]] = values[1]
        return f"{kind} {values[0]} is " + ("off line" if values[1] == "0" else f"on line, in state {values[1]}")

    def _heard(self, when, name, values):
        self.blocks[name] += 1
        begins = name not in self._streams
        if begins:
            self._streams[name] = Stream(AUDIO[name].format(*values), when, when)
        stream = self._streams[name]
        stream.last = max(stream.last, when)
        stream.blocks += 1
        return [stream.beginning()] if begins else []

    def _ended(self, now):
        over = [name for name, stream in self._streams.items() if stream.is_over(now)]
        return [self._streams.pop(name).ending() for name in over]
