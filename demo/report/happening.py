"""What happened in the installation, at either end, as entries of one timeline."""

from dataclasses import dataclass

HOST = "host"
FIELD = "field"

# A stream that pauses for longer has ended. The library logs audio block by block, 46 ms apart at most.
STREAM_PAUSE_S = 0.7


@dataclass
class Happening:
    """One line of the timeline."""

    time: float  # s since the epoch
    side: str  # HOST or FIELD
    text: str


@dataclass
class Stream:
    """Audio blocks that the host is handed, as one thing that begins and ends."""

    name: str
    begin: float
    last: float
    blocks: int = 0

    def is_over(self, now):
        return now - self.last > STREAM_PAUSE_S

    def beginning(self):
        return Happening(self.begin, HOST, f"hears {self.name}")

    def ending(self):
        length = self.last - self.begin
        return Happening(self.last, HOST, f"heard {self.name}: {self.blocks} blocks in {length:.1f} s")
