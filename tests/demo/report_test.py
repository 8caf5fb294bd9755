"""The demonstration's report: reading of both logs, the timeline, comparison of sounds, pictures, verdict."""

import json
import sys
import tempfile
import unittest
import wave
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parents[2] / "demo" / "report"))
# pylint: disable=wrong-import-position
import numpy

import expectations
import pictures
import sound
import table
from field_log import FieldLog
from happening import FIELD, HOST, Happening
from host_log import HostLog
from timeline import Timeline

RATE = 8000


class InDirectory(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = Path(directory.name)

    def write(self, name, text):
        with (self.directory / name).open("a", encoding="utf-8") as file:
            file.write(text)


class HostLogTest(InDirectory):
    def texts(self, log):
        return [happening.text for happening in log.rest()]

    def test_tells_calls_and_states(self):
        self.write("k740sdk.log", "26-11-21 10:00:00.000\t\n\n\n26-11-21 10:00:01.500\t=====K740_StopTask(1)\n")
        self.write("PTASKSTATUS.log", "26-11-21 10:00:02.000\tPTASKSTATUS(1, 2)\n")
        log = HostLog(self.directory)
        told = sorted(log.rest(), key=lambda entry: entry.time)
        self.assertEqual(["K740_StopTask(1)", "is told: task 1 is broadcasting"], [entry.text for entry in told])
        self.assertAlmostEqual(0.5, told[1].time - told[0].time)
        self.assertEqual([2], log.task_states)

    def test_waits_for_the_rest_of_a_line(self):
        log = HostLog(self.directory)
        self.write("k740sdk.log", "26-11-21 10:00:00.000\tK740_Stop")
        self.assertEqual([], log.news())
        self.write("k740sdk.log", "Task(1)\n")
        self.assertEqual(["K740_StopTask(1)"], self.texts(log))

    def test_audio_blocks_are_one_thing_with_a_beginning_and_an_end(self):
        for second in range(3):
            self.write("PMONITORZONE.log", f"26-11-21 10:00:0{second}.000\tPMONITORZONE(33, 1, {{1,2 ...}}, 4096)\n")
        log = HostLog(self.directory)
        told = self.texts(log)
        self.assertEqual("hears zone 1 of controller 33, monitored", told[0])
        self.assertEqual("heard zone 1 of controller 33, monitored: 3 blocks in 2.0 s", told[1])
        self.assertEqual(3, log.blocks["PMONITORZONE"])

    def test_a_device_state_is_told_once(self):
        for second in range(2):
            self.write("PZCUSTATUS.log", f"26-11-21 10:00:0{second}.000\tPZCUSTATUS(33, 1, 0, {{0,0}}, 0, 0)\n")
        self.assertEqual(["is told: controller 33 is on line, in state 1"], self.texts(HostLog(self.directory)))

    def test_negative_numbers_have_their_sign(self):
        self.write("PTASKSTATUS.log", "26-11-21 10:00:02.000\tPTASKSTATUS(1, 4294967293)\n")
        self.assertEqual(["is told: task 1 is in state -3"], self.texts(HostLog(self.directory)))

    def test_registrations_are_left_out(self):
        self.write("k740sdk.log", "26-11-21 10:00:00.000\tRegister callback PZCUSTATUS()\n")
        self.assertEqual([], self.texts(HostLog(self.directory)))


class FieldLogTest(InDirectory):
    def setUp(self):
        super().setUp()
        self.log = FieldLog(self.directory / "events.jsonl")

    def add(self, **event):
        self.write("events.jsonl", json.dumps(event) + "\n")

    def packet(self, name, source=9500, **fields):
        self.add(time=1.5, device=33, event="received", peer="192.168.1.166:1", command="0x0000", name=name,
                 source=source, **fields)

    def test_times_count_from_the_beginning_of_the_simulator(self):
        self.add(time=0.0, event="ready", date="1970-01-01T00:00:10.250Z")
        self.packet("play-request", task=1001)
        self.assertEqual([Happening(11.75, FIELD, "33 <- play-request: task 1001")], self.log.news())

    def test_no_file_and_half_a_line_are_no_news(self):
        self.assertEqual([], self.log.news())
        self.write("events.jsonl", '{"time": 0.0, "event": "rea')
        self.assertEqual([], self.log.news())
        self.assertEqual([], self.log.events)

    def test_routine_that_says_the_same_again_is_left_out(self):
        self.add(time=0.0, event="ready", date="1970-01-01T00:00:00.000Z")
        for state in (1, 1, 4):
            self.packet("status", source=900, state=state, zone_states=[state])
        self.assertEqual(
            ["33 <- status: of 900, state 1, zone 1 1", "33 <- status: of 900, state 4, zone 1 4"],
            [entry.text for entry in self.log.news()],
        )

    def test_requests_that_repeat_are_told_again(self):
        self.add(time=0.0, event="ready", date="1970-01-01T00:00:00.000Z")
        for _ in range(2):
            self.packet("close-audio", task=1)
        self.assertEqual(["33 <- close-audio: task 1"] * 2, [entry.text for entry in self.log.news()])

    def test_commands_tell_what_became_of_them(self):
        self.add(time=0.0, event="ready", date="1970-01-01T00:00:00.000Z")
        self.add(time=1.0, event="command", origin="timeline", text="end", result="done")
        self.add(time=2.0, event="command", origin="timeline", text="call 1 2", error="no station 1")
        self.assertEqual(["[end]", "[call 1 2] failed: no station 1"], [entry.text for entry in self.log.news()])


class Source:
    def __init__(self, *entries):
        self.entries = list(entries)

    def news(self):
        return []

    def rest(self):
        return self.entries


class TimelineTest(unittest.TestCase):
    def printed(self, *sources):
        lines = []
        Timeline(sources, ("here", "there"), lines.append).follow(lambda: False)
        return lines[1:]

    def test_sorts_both_ends_into_two_columns(self):
        lines = self.printed(Source(Happening(12.0, FIELD, "second")), Source(Happening(10.0, HOST, "first")))
        self.assertEqual(["   0.00  first", "   2.00" + " " * 60 + "second"], lines)

    def test_long_texts_go_on_below(self):
        lines = self.printed(Source(Happening(1.0, HOST, "word " * 20)))
        self.assertEqual(2, len(lines))
        self.assertTrue(lines[1].startswith("           word"))


def noise(length, seed=1):
    return numpy.random.default_rng(seed).integers(-9000, 9000, length).astype(float)


class SoundTest(InDirectory):
    def test_finds_a_sound_in_another(self):
        sent = sound.Sound(noise(4000), RATE)
        heard = sound.Sound(numpy.concatenate([numpy.zeros(800), sent.samples / 2, numpy.zeros(500)]), RATE)
        match = sound.find(sent, heard)
        self.assertAlmostEqual(0.1, match.offset)
        self.assertAlmostEqual(1.0, match.correlation)
        self.assertEqual(1.0, match.heard)

    def test_knows_how_much_is_missing(self):
        sent = sound.Sound(noise(4000), RATE)
        match = sound.find(sent, sound.Sound(sent.samples[1000:3000], RATE))
        self.assertAlmostEqual(-0.125, match.offset)
        self.assertEqual(0.5, match.heard)

    def test_another_sound_and_silence_are_no_match(self):
        sent = sound.Sound(noise(4000), RATE)
        self.assertLess(sound.find(sent, sound.Sound(noise(4000, seed=2), RATE)).correlation, 0.3)
        self.assertEqual(0.0, sound.find(sent, sound.Sound(numpy.zeros(4000), RATE)).correlation)
        self.assertEqual(0.0, sound.find(sent, sound.Sound(numpy.zeros(0), RATE)).heard)

    def test_reads_mono_files_only(self):
        for channels in (1, 2):
            with wave.open(str(self.directory / f"{channels}.wav"), "wb") as file:
                file.setnchannels(channels)
                file.setsampwidth(2)
                file.setframerate(RATE)
                file.writeframes(b"\x01\x00\xff\xff")
        self.assertEqual([1.0, -1.0], sound.read(self.directory / "1.wav").samples.tolist())
        self.assertRaises(ValueError, sound.read, self.directory / "2.wav")

    def test_draws_a_picture(self):
        both = sound.Sound(noise(4000), RATE)
        picture = self.directory / "picture.png"
        pictures.draw(picture, both, both, [0.0], ("this", "that"))
        data = picture.read_bytes()
        self.assertEqual(b"\x89PNG", data[:4])
        self.assertEqual((1200, 900), tuple(int.from_bytes(data[at : at + 4], "big") for at in (16, 20)))


class ExpectationsTest(InDirectory):
    def test_a_route_is_good_when_all_is_heard_and_alike(self):
        self.assertTrue(expectations.Route("", 5, 5, 0.99).is_good)
        self.assertTrue(expectations.Route("", 5, 5).is_good)
        for bad in (
            expectations.Route("", 5, 4, 0.99),
            expectations.Route("", 0, 0, 0.99),
            expectations.Route("", 5, 5, 0.98),
        ):
            self.assertFalse(bad.is_good, bad)

    def likeness(self, *parts):
        sent = sound.Sound(noise(RATE), RATE)
        heard = sound.Sound(numpy.concatenate([part(sent.samples) for part in parts]), RATE)
        return expectations.likeness(sent, heard, sound.passes(sent, heard))

    def test_all_of_a_recording_is_compared(self):
        whole, middle, end = lambda s: s, lambda s: s[: RATE * 3 // 4], lambda s: s[RATE // 2 :]
        other, pause = lambda s: noise(RATE, seed=2), lambda s: numpy.zeros(RATE // 20)
        self.assertGreater(self.likeness(whole), 0.99)
        self.assertGreater(self.likeness(end, pause, whole, pause, whole, pause, middle), 0.99)
        self.assertLess(self.likeness(whole, other), 0.5)
        self.assertLess(self.likeness(whole, other, whole), 0.5)
        self.assertLess(self.likeness(whole, whole, other, other), 0.5)
        self.assertLess(self.likeness(whole, pause, pause, pause, whole), 0.5)
        self.assertEqual(0.0, self.likeness(middle))

    def test_nothing_happened_is_told_in_full(self):
        field, host = FieldLog(self.directory / "events.jsonl"), HostLog(self.directory)
        missing = expectations.unmet(field, host, expectations.routes(field, host, 0.0, 0.0), 1)
        self.assertIn("the sample host ends with 0", missing)
        self.assertIn("another station sees the train's status", missing)
        self.assertIn("push-to-talk: everything sent is heard, and alike", missing)
        self.assertEqual(12, len(missing))  # all but the absence of gaps and of failed commands


class TableTest(unittest.TestCase):
    def test_columns_are_as_wide_as_their_texts(self):
        self.assertEqual(["a   bb", "--  --", "cc   1"], table.render(["a", "bb"], [["cc", 1]]))


if __name__ == "__main__":
    unittest.main()
