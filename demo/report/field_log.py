"""The field's end: what the simulator wrote of its devices, one JSON object a line."""

import json
from datetime import datetime

from growing_file import GrowingFile
from happening import FIELD, Happening

# Packets that come again and again; one that says the same as the last one is no news.
ROUTINE = (
    "heartbeat", "heartbeat-answer", "paging-heartbeat", "paging-status", "read-version", "read-zone-groups", "status",
    "version", "zone-groups",
)
NO_GROUP = "0.0.0.0"
FRAME = ("time", "device", "event", "peer", "command", "name", "source", "destination", "length")
MARKS = {"received": "<-", "sent": "->"}
WORDS = {
    "joined": "joins {peer}",
    "left": "leaves {peer}",
    "end-of-stream": "gets the end of the stream of {peer}",
    "audio-begins": "plays task {task}",
    "audio-ends": "played task {task}: {datagrams} datagrams, {gaps} gaps",
    "intercom-begins": "hears the intercom",
    "intercom-ends": "heard the intercom: {datagrams} datagrams, {gaps} gaps",
    "stream-begins": "begins to send audio to {peer}",
    "stream-ends": "has sent {datagrams} datagrams of audio to {peer}",
}


class FieldLog:
    """Follows the simulator's events."""

    def __init__(self, path):
        self.events = []  # all objects so far
        self._file = GrowingFile(path)
        self._begin = None  # s since the epoch, of time 0
        self._routine = {}  # last text of each packet of routine, by what it is

    def news(self):
        """The happenings since the last call, in the order of their times."""
        new = [json.loads(line) for line in self._file.new_lines()]
        self.events += new
        return [happening for event in new for happening in self._happenings(event)]

    rest = news

    def of(self, event, **fields):
        """The objects of one event that have these fields."""
        return [
            line
            for line in self.events
            if line["event"] == event and all(line.get(name) == value for name, value in fields.items())
        ]

    def _happenings(self, event):
        if event["event"] == "ready":
            self._begin = datetime.fromisoformat(event["date"].replace("Z", "+00:00")).timestamp()
        text = self._text(event)
        return [Happening(self._begin + event["time"], FIELD, text)] if text else []

    def _text(self, event):
        kind = event["event"]
        if kind in MARKS:
            return self._packet(event)
        if kind == "command":
            return f"[{event['text']}]" + (f" failed: {event['error']}" if "error" in event else "")
        if kind in WORDS:
            return f"{event['device']} {WORDS[kind].format(**event)}"
        return None

    def _packet(self, event):
        told = ", ".join(f"{name} {value}" for name, value in self._fields(event).items())
        text = f"{event['device']} {MARKS[event['event']]} {event['name']}" + (f": {told}" if told else "")
        if event["name"] in ROUTINE:
            what = (event["device"], event["event"], event["name"], event["source"])
            if self._routine.get(what) == text:
                return None
            self._routine[what] = text
        return text

    @staticmethod
    def _fields(event):
        """What a reader may want to know of a packet."""
        if event["name"] == "status":
            return {"of": event["source"], "state": event["state"], "zone 1": event["zone_states"][0]}
        fields = {name: value for name, value in event.items() if name not in FRAME}
        if "groups" in fields:
            fields["groups"] = ", ".join(group for group in fields["groups"] if group != NO_GROUP)
        return fields
