"""scripts/with-home-files: further files in /home, of which nothing else changes. Each test has a /home of its own."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

PROGRAM = Path(__file__).parents[2] / "scripts" / "with-home-files"
NAMESPACES = ["unshare", "--mount"] if os.getuid() == 0 else ["unshare", "--user", "--map-root-user", "--mount"]
REFUSED = 125


class HomeFilesTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = Path(directory.name)
        (self.directory / "sound").write_text("sound", encoding="utf-8")

    def run_below(self, home, script):
        """Runs a shell script where /home is this directory; the script calls the program as $with_home_files."""
        environment = {**os.environ, "with_home_files": str(PROGRAM), "TMPDIR": str(self.directory)}
        command = [*NAMESPACES, "sh", "-e", "-c", f"mount --rbind '{home}' /home; {script}"]
        return subprocess.run(
            command, cwd=self.directory, env=environment, capture_output=True, text=True, check=False
        )

    def home(self):
        home = self.directory / "home"
        (home / "ann").mkdir(parents=True)
        (home / "ann" / "letter").write_text("letter", encoding="utf-8")
        return home

    def test_the_command_finds_the_files_and_all_others(self):
        home = self.home()
        result = self.run_below(
            home, "$with_home_files 1.wav=sound 2.wav=sound -- cat /home/1.wav /home/2.wav /home/ann/letter"
        )
        self.assertEqual(("soundsoundletter", "", 0), (result.stdout, result.stderr, result.returncode))
        self.assertEqual(["ann"], os.listdir(home))

    def test_what_is_written_there_vanishes_but_for_the_working_directory(self):
        home = self.home()
        result = self.run_below(
            home, "cd /home/ann; $with_home_files 1.wav=letter -- sh -c 'echo > ../gone; echo > $PWD/stays'"
        )
        self.assertEqual(("", 0), (result.stderr, result.returncode))
        self.assertEqual(["ann"], os.listdir(home))
        self.assertEqual(["letter", "stays"], sorted(os.listdir(home / "ann")))

    def test_file_systems_below_home_stay_in_sight(self):
        home = self.home()
        result = self.run_below(
            home,
            "mount -t tmpfs tmpfs /home/ann; mkdir '/home/ann/a b'; mount -t tmpfs tmpfs '/home/ann/a b'; "
            "echo deep > '/home/ann/a b/file'; $with_home_files 1.wav=sound -- cat '/home/ann/a b/file'",
        )
        self.assertEqual(("deep\n", "", 0), (result.stdout, result.stderr, result.returncode))

    def test_the_command_gives_the_exit_status_and_nothing_stays_behind(self):
        result = self.run_below(self.home(), "$with_home_files 1.wav=sound -- sh -c 'exit 7'")
        self.assertEqual(7, result.returncode)
        self.assertEqual(["home", "sound"], sorted(os.listdir(self.directory)))

    def test_without_the_right_to_mount_it_refuses(self):
        user = [] if os.getuid() != 0 else ["setpriv", "--bounding-set=-all", "--inh-caps=-all", "--ambient-caps=-all"]
        command = [*user, str(PROGRAM), "1.wav=sound", "--", "echo", "ran"]
        result = subprocess.run(command, cwd=self.directory, capture_output=True, text=True, check=False)
        self.assertEqual(("", REFUSED), (result.stdout, result.returncode))
        self.assertNotEqual("", result.stderr)

    def test_wrong_arguments_print_the_usage(self):
        result = subprocess.run([str(PROGRAM), "1.wav=sound"], capture_output=True, text=True, check=False)
        self.assertEqual(2, result.returncode)
        self.assertTrue(result.stderr.startswith("usage:"))


if __name__ == "__main__":
    unittest.main()
