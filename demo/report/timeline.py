"""Prints what happens at both ends as it happens, in one timeline with a column for each."""

import heapq
import textwrap
import time
from itertools import count

from happening import HOST

# Entries come from two processes through files: they are held back until no earlier one can be under way.
HELD_BACK_S = 1.5
PAUSE_S = 0.1

TIME_WIDTH = 7
COLUMN_WIDTH = 56
GAP = "  "


class Timeline:
    """Takes the happenings of its sources and prints them in the order of their times."""

    def __init__(self, sources, titles, write):
        """sources: with the functions news() and rest(); titles: of the host's and the field's column"""
        self._sources = sources
        self._write = write
        self._waiting = []  # a heap of (time, order of coming, entry)
        self._order = count()
        self._begin = None
        self._write(f"{'s':>{TIME_WIDTH}}{GAP}{titles[0]:{COLUMN_WIDTH}}{GAP}{titles[1]}")

    def follow(self, goes_on):
        """Prints as long as goes_on() says so, and then what is left."""
        while goes_on():
            self._take([entry for source in self._sources for entry in source.news()])
            self._print_until(time.time() - HELD_BACK_S)
            time.sleep(PAUSE_S)
        self._take([entry for source in self._sources for entry in source.rest()])
        self._print_until(float("inf"))

    def _take(self, entries):
        for entry in entries:
            heapq.heappush(self._waiting, (entry.time, next(self._order), entry))

    def _print_until(self, end):
        while self._waiting and self._waiting[0][0] <= end:
            self._print(heapq.heappop(self._waiting)[-1])

    def _print(self, entry):
        if self._begin is None:
            self._begin = entry.time
        label = f"{entry.time - self._begin:{TIME_WIDTH}.2f}"
        indent = "" if entry.side == HOST else " " * (COLUMN_WIDTH + len(GAP))
        for line in textwrap.wrap(entry.text, COLUMN_WIDTH, subsequent_indent="  "):
            self._write(f"{label}{GAP}{indent}{line}")
            label = " " * TIME_WIDTH
