"""A picture of a recording: waveform and spectrogram of what was sent above those of what was heard."""

import matplotlib

matplotlib.use("Agg")  # draws into files, without a screen
import matplotlib.pyplot as plot
import numpy

FULL_SCALE = 32768
SPECTRUM_SAMPLES = 1024
QUIETEST_DB = -120
LOUDEST_DB = -30
HIGHEST_HZ = 12000
SIZE_INCHES = (12, 9)


def _waveform(axes, sound, offset, title):
    times = offset + numpy.arange(len(sound.samples)) / sound.rate
    axes.plot(times, sound.samples / FULL_SCALE, linewidth=0.3, color="tab:blue")
    axes.set(title=title, ylabel="of full scale", ylim=(-1, 1))


def _spectrogram(axes, sound, offset):
    axes.set(ylabel="kHz", ylim=(0, HIGHEST_HZ / 1000), facecolor="black")
    if len(sound.samples) < SPECTRUM_SAMPLES:
        return
    quiet = 10 ** (QUIETEST_DB / 10)  # so that silence has a logarithm
    power, frequencies, times = matplotlib.mlab.specgram(
        sound.samples / FULL_SCALE, SPECTRUM_SAMPLES, sound.rate, noverlap=SPECTRUM_SAMPLES // 2
    )
    decibels = 10 * numpy.log10(power + quiet)
    axes.pcolormesh(offset + times, frequencies / 1000, decibels, vmin=QUIETEST_DB, vmax=LOUDEST_DB, shading="nearest")


def draw(path, sent, heard, offsets, titles):
    """Draws both sounds on the time axis of what was heard, the sent one at the places where it was found.

    offsets: of these places, in s; titles: of what was sent and of what was heard
    """
    figure, axes = plot.subplots(4, 1, sharex=True, figsize=SIZE_INCHES, constrained_layout=True)
    for offset in offsets:
        _waveform(axes[0], sent, offset, f"sent: {titles[0]}")
        _spectrogram(axes[1], sent, offset)
    _waveform(axes[2], heard, 0, f"heard: {titles[1]}")
    _spectrogram(axes[3], heard, 0)
    axes[3].set(xlabel="s", xlim=(0, heard.length))
    figure.savefig(path, dpi=100)
    plot.close(figure)
