"""Sound files as numbers, and where a sound lies in another."""

import wave
from dataclasses import dataclass

import numpy

LONGEST_PAUSE_S = 0.1  # between two passes: the sample host repeats a block of 20 ms, and plays the file's header
ANOTHER_SOUND = 0.5  # correlation that another sound does not reach
BYTE_ORDER = "<i2"  # 16-bit little endian


@dataclass
class Sound:
    samples: numpy.ndarray  # mono, as float
    rate: int  # Hz

    @property
    def length(self):
        """Length in s."""
        return len(self.samples) / self.rate


@dataclass
class Match:
    """Where a sound begins in another (s, negative when its beginning is missing) and how alike they are there."""

    offset: float
    correlation: float  # 1 for equal ones
    heard: float  # the part of the sound that the other has, 1 for all


def read(path):
    """Reads a mono 16-bit WAV file."""
    with wave.open(str(path), "rb") as file:
        if file.getnchannels() != 1 or file.getsampwidth() != 2:
            raise ValueError(f"{path} is not mono with 16 bits")
        frames = file.readframes(file.getnframes())
        return Sound(numpy.frombuffer(frames, BYTE_ORDER).astype(float), file.getframerate())


def _cross_correlation(long, short):
    size = 1 << (len(long) + len(short) - 1).bit_length()
    return numpy.fft.irfft(numpy.fft.rfft(long, size) * numpy.conj(numpy.fft.rfft(short, size)), size)


def passes(sent, heard):
    """Finds the whole passes of a sound that is played over and over, from the first one to where it breaks off."""
    pause = int(LONGEST_PAUSE_S * heard.rate)
    found, begin, length = [], 0, len(sent.samples)
    windows = (length + pause, 2 * length + pause)  # the first one may come behind a part of another
    while True:
        match = next(filter(None, (_whole_pass(sent, heard, begin, window) for window in windows)), None)
        if match is None:
            return found
        found.append(match)
        begin = round(match.offset * heard.rate) + length
        windows = windows[:1]


def _whole_pass(sent, heard, begin, window):
    match = find(sent, Sound(heard.samples[begin : begin + window], heard.rate))
    match.offset += begin / heard.rate
    return match if match.heard == 1 and match.correlation > ANOTHER_SOUND else None


def find(sent, heard):
    """Finds the sent sound in what was heard, by the peak of their cross-correlation."""
    if len(heard.samples) == 0 or not numpy.any(heard.samples):
        return Match(0.0, 0.0, 0.0)
    products = _cross_correlation(heard.samples, sent.samples)
    peak = int(numpy.argmax(products))
    offset = peak if peak < len(heard.samples) else peak - len(products)
    begin, end = max(offset, 0), min(offset + len(sent.samples), len(heard.samples))
    there, here = heard.samples[begin:end], sent.samples[begin - offset : end - offset]
    power = numpy.linalg.norm(there) * numpy.linalg.norm(here)
    correlation = float(there @ here / power) if power else 0.0
    return Match(offset / heard.rate, correlation, (end - begin) / len(sent.samples))
