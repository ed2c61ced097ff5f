"""Signals, kills and the progress bar."""
import os
import pty
import random
import select
import signal
import subprocess
import sys
import time

from harness import RK, ToolTest, big_png, main, png


class Interrupted(ToolTest):
    @classmethod
    def setUpClass(cls):
        cls.picture = big_png(1500)

    def setUp(self):
        super().setUp()
        os.mkdir(self.path("made"))
        self.big = self.write("big.png", self.picture)
        self.words = [RK, "composite", self.big, self.big, "--mode", "soft-light", "--depth", "float",
                      "-o", self.path("made/out.png")]
        started = time.monotonic()
        subprocess.run(self.words, check=True, capture_output=True)
        self.seconds = time.monotonic() - started
        self.whole = self.read("made/out.png")

    def stop_after(self, seconds, number):
        """Sends the signal then; returns the process, its line on standard error in `line`."""
        process = subprocess.Popen(self.words, stderr=subprocess.PIPE)
        time.sleep(seconds)
        process.send_signal(number)
        process.line = process.communicate(timeout=60)[1]
        return process

    def test_a_signal_stops_it_with_nothing_written(self):
        os.remove(self.path("made/out.png"))
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            for part in (0.15, 0.5, 0.8):
                process = self.stop_after(self.seconds * part, number)
                if process.returncode == 0:  # it was faster than before
                    os.remove(self.path("made/out.png"))
                    continue
                self.assertEqual((process.returncode, process.line), (-number, b"rk: stopped: nothing was written\n"))
                self.assertEqual(os.listdir(self.path("made")), [])

    def test_killed_at_random_moments_it_leaves_the_old_file_or_the_new_one(self):
        numbers = random.Random(1)
        for _ in range(20):
            self.write("made/out.png", b"old")
            process = self.stop_after(numbers.uniform(0, self.seconds * 1.1), signal.SIGKILL)
            self.assertIn(process.returncode, (0, -signal.SIGKILL))
            self.assertEqual(os.listdir(self.path("made")), ["out.png"])
            self.assertIn(self.read("made/out.png"), (b"old", self.whole))

    def test_waiting_for_standard_input_ends_on_a_signal(self):
        reader, writer = os.pipe()
        process = subprocess.Popen([RK, "info", "-"], stdin=reader, stderr=subprocess.PIPE)
        time.sleep(0.3)
        process.send_signal(signal.SIGINT)
        process.communicate(timeout=10)
        self.assertEqual(process.returncode, -signal.SIGINT)
        os.close(reader)
        os.close(writer)

    def on_terminal(self, words):
        """What a run writes to a terminal on standard error."""
        terminal, end = pty.openpty()
        process = subprocess.Popen(words, stderr=end, stdout=subprocess.DEVNULL)
        os.close(end)
        text = b""
        while True:
            if select.select([terminal], [], [], 60)[0]:
                try:
                    part = os.read(terminal, 4096)
                except OSError:
                    part = b""
                if not part:
                    break
                text += part
        os.close(terminal)
        self.assertEqual(process.wait(60), 0)
        return text

    def test_the_bar_is_drawn_on_a_terminal_for_long_work_and_wiped_off(self):
        # Layers until the work takes a few seconds, however fast the machine is.
        layers = ["--over", self.big]
        seconds = 0
        while seconds < 3:
            layers *= 2
            started = time.monotonic()
            self.assertEqual(self.on_terminal(self.words + layers + ["-q"]), b"")
            seconds = time.monotonic() - started
        text = self.on_terminal(self.words + layers)
        self.assertRegex(text, rb"\[#+\.*\] +\d+% ")
        self.assertTrue(text.endswith(b"\r\x1b[K"), text[-40:])

    def test_short_work_draws_no_bar(self):
        small = self.write("small.png", png(1, 1, [1, 2, 3, 4]))
        self.assertEqual(self.on_terminal([RK, "composite", small, small, "-o", self.path("made/s.png")]), b"")

    def test_a_pipe_gets_no_bar(self):
        done = subprocess.run(self.words + ["--over", self.big] * (2 + int(2 / self.seconds)), capture_output=True)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"", b""))

    def test_a_picture_is_not_written_to_a_terminal(self):
        small = self.write("small.png", png(1, 1, [1, 2, 3, 4]))
        terminal, end = pty.openpty()
        done = subprocess.run([RK, "composite", small, small, "-o", "-", "--format", "png"], stdout=end,
                              stderr=subprocess.PIPE, timeout=60)
        os.close(end)
        os.close(terminal)
        self.assertEqual(done.returncode, 2)
        self.assertIn(b"terminal", done.stderr)


if __name__ == "__main__":
    sys.exit(main())
