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
VOLUMES = "{17,16,15,14,17,16,15,14}"  # 19 less the attenuations that somebody turns
GOOD_CORRELATION = 0.99
LEAST_REST_S = 0.5  # of the sound, to be found again


@dataclass
class Route:
    """A way of audio from one end to the other: how much was sent and heard, in datagrams.

    likeness: the least correlation of any part of the recording with what was sent; None where nothing is recorded
    """

    name: str
    sent: int
    heard: int
    likeness: float = None

    @property
    def row(self):
        alike = "" if self.likeness is None else f"{self.likeness:.4f}"
        return [self.name, self.sent, self.heard, self.sent - self.heard, alike]

    @property
    def is_good(self):
        return 0 < self.sent == self.heard and (self.likeness is None or self.likeness >= GOOD_CORRELATION)


@dataclass
class Recording:
    """A sound file of the field, to be held against the one that the host sent."""

    sent: Path
    heard: Path
    place: str

    @property
    def picture(self):
        return self.heard.with_suffix(".png")

    def compare(self):
        """Compares the two and draws them beside the recording; the likeness, 0 when something else was heard."""
        if not self.heard.exists():
            return 0.0
        sent, heard = sound.read(self.sent), sound.read(self.heard)
        found = sound.passes(sent, heard)
        pictures.draw(self.picture, sent, heard, [match.offset for match in found], (self.sent.name, self.place))
        return likeness(sent, heard, found)


def likeness(sent, heard, found):
    """The least correlation of the passes that were found, and of the part of one behind them.

    0 when there is no pass, or when something else was heard behind the last one.
    """
    if not found:
        return 0.0
    end = found[-1].offset + sent.length
    rest = sound.Sound(heard.samples[round(end * heard.rate) :], heard.rate)
    if rest.length < LEAST_REST_S:
        return min(match.correlation for match in found)
    last = sound.find(sent, rest)
    if not 0 <= last.offset <= sound.LONGEST_PAUSE_S or rest.length > last.offset + sent.length:
        return 0.0
    return min(match.correlation for match in [*found, last])


def _sum(events):
    return sum(event["datagrams"] for event in events)


def routes(field, host, broadcast, intercom):
    """All routes of audio. broadcast and intercom: the likeness of the two recordings"""

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
        Route("zone 1 to its monitor", played, host.blocks["PMONITORZONE"]),
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
        "the host is told the volumes": VOLUMES in host.volumes,
        "controller and station are on line": sorted(state for state in host.device_states.values()) == ["1", "1"],
        "another station sees the train's status": TRAIN_STATE in train,
        "the audio is closed once": len(field.of("received", name="close-audio", device=CONTROLLER)) == 1,
        "no audio has gaps": gaps == 0,
        "no command of the scenario fails": not [event for event in field.of("command") if "error" in event],
    }
    expected |= {f"{route.name}: everything sent is heard, and alike": route.is_good for route in all_routes}
    return [sentence for sentence, holds in expected.items() if not holds]
