"""Everything that can go wrong with files and words: one line, the right status, nothing written, nothing harmed."""
import concurrent.futures
import os
import struct
import subprocess
import sys

from harness import RK, ToolTest, chunk, main, png, read_png, rk, tiff


class Failing(ToolTest):
    def setUp(self):
        super().setUp()
        self.good_picture = self.write("good.png", png(3, 3, [10, 20, 30, 255] * 9))
        self.matte = self.write("matte.png", png(2, 2, [255, 255, 255, 255] * 4))
        os.mkdir(self.path("made"))
        self.out = self.path("made/out.png")
        self.old = b"an older file"

    def composite_fails(self, status, *words, **options):
        """Fails without an output, and again with an older file there, which stays; returns the line."""
        line = self.bad(status, "composite", "-o", self.out, *words, **options)
        self.assertEqual(os.listdir(self.path("made")), [])
        self.write("made/out.png", self.old)
        self.bad(status, "composite", "-o", self.out, *words, **options)
        self.assertEqual(os.listdir(self.path("made")), ["out.png"])
        self.assertEqual(self.read("made/out.png"), self.old)
        os.remove(self.out)
        return line


class Inputs(Failing):
    def test_missing(self):
        for words in (("missing.png", self.good_picture), (self.good_picture, "missing.png"),
                      (self.good_picture, self.good_picture, "--matte", "missing.png"),
                      (self.good_picture, self.good_picture, "--over", "missing.png")):
            self.assertEqual(self.composite_fails(1, *words), "missing.png: No such file or directory")

    def test_a_folder(self):
        self.assertIn("Is a directory", self.composite_fails(1, self.folder, self.good_picture))

    def test_empty(self):
        empty = self.write("empty.png", b"")
        self.assertEqual(self.composite_fails(1, empty, self.good_picture), empty + ": the file is empty")

    def test_no_picture(self):
        for content in (b"x", b"GIF89a" + bytes(40), b"\0" * 5000, b"%PDF-1.4", os.urandom(7) + b"\1"):
            text = self.write("text.png", content)
            self.assertIn("not a picture that rk reads", self.composite_fails(1, text, self.good_picture))

    def test_an_endless_file_is_read_no_further_than_its_head(self):
        self.assertIn("not a picture", self.composite_fails(1, "/dev/zero", self.good_picture, timeout=10))

    def test_unreadable(self):
        os.chmod(self.good_picture, 0)
        os.chmod(self.folder, 0o755)
        as_nobody = {"preexec_fn": lambda: os.setuid(65534)} if os.getuid() == 0 else {}
        line = self.bad(1, "composite", self.good_picture, self.matte, "-o", self.out, **as_nobody)
        self.assertEqual(line, self.good_picture + ": Permission denied")

    def test_a_name_with_a_line_break_stays_one_line(self):
        self.assertEqual(self.composite_fails(1, "a\nb\x1b.png", self.good_picture),
                         "a\\nb\\x1b.png: No such file or directory")

    def test_too_large(self):
        wide = struct.pack(">IIBBBBB", 30001, 1, 8, 6, 0, 0, 0)
        content = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", wide) + chunk(b"IDAT", b"") + chunk(b"IEND", b"")
        picture = self.write("wide.png", content)
        self.assertEqual(self.composite_fails(1, picture, self.good_picture),
                         picture + ": 30001 x 1 pixels: each side may be 1 to 30000")
        self.assertIn("30000", self.composite_fails(1, self.good_picture, picture))
        big = self.write("big.tif", tiff(1, 1, [0, 0, 0]).replace(struct.pack("<HHII", 256, 4, 1, 1),
                                                                 struct.pack("<HHII", 256, 4, 1, 2000000000)))
        self.assertIn("2000000000 x 1 pixels", self.composite_fails(1, big, self.good_picture))

    def test_absurd_sizes_fail_fast(self):
        huge = struct.pack(">IIBBBBB", 30000, 30000, 16, 6, 0, 0, 0)
        content = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", huge) + chunk(b"IDAT", b"\x78\x9c") + chunk(b"IEND", b"")
        self.composite_fails(1, self.write("huge.png", content), self.good_picture, timeout=20)
        none = content.replace(huge, struct.pack(">IIBBBBB", 0, 5, 8, 6, 0, 0, 0))
        self.composite_fails(1, self.write("none.png", none), self.good_picture)

    def test_30000_pixels_are_not_too_many(self):
        self.good("composite", self.write("long.png", png(30000, 1, [1] * 120000)), self.good_picture, "-o", self.out)


class Words(Failing):
    def test_each_is_told_in_one_line_with_status_2(self):
        back, front = self.good_picture, self.good_picture
        for words, part in (
                ((back, front, "--mode", "multipy"), "did you mean multiply?"),
                ((back, front, "--mode", "none"), "unknown mode 'none'"),
                ((back, front, "--opacity", "1.01"), "from 0 to 1"), ((back, front, "--opacity", "-0.1"), "from 0 to 1"),
                ((back, front, "--opacity", "nan"), "from 0 to 1"), ((back, front, "--opacity", "inf"), "from 0 to 1"),
                ((back, front, "--opacity", "0.5x"), "from 0 to 1"), ((back, front, "--opacity", ""), "from 0 to 1"),
                ((back, front, "--at", "3"), "X,Y"), ((back, front, "--at", "1,x"), "whole number"),
                ((back, front, "--at", "99999999999,0"), "whole number"), ((back, front, "--at", "1,2,3"), "whole number"),
                ((back, front, "--matte-at", "1,1"), "--matte FILE"),
                ((back, front, "--matte-kind", "luma"), "--matte FILE"),
                ((back, front, "--matte", self.matte, "--matte-kind", "lume"), "inverted-luma"),
                ((back, front, "--matte", self.matte, "--matte-at", "40000,0"), "32767"),
                ((back, front, "--mode", "matte-mix"), "--matte"),
                ((back, front, "--field", "left"), "upper, lower or both"), ((back, front, "--seed", "1.5"), "whole number"),
                ((back, front, "--depth", "10"), "8, 16 or float"), ((back, front, "--format", "gif"), "png, jpeg"),
                ((back, front, "--quality", "0"), "1 to 100"), ((back, front, "--flatten", "reddish"), "#rrggbb"),
                ((back, front, "--flatten", "#12345g"), "#rrggbb"),
                ((back,), "FRONT"), ((), "BACK"), ((back, front, "third.png"), "third.png"),
                ((back, front, "--wrong"), "--wrong"), ((back, front, "--mode"), "--mode"),
                ((back, front, "--over"), "--over"), ((back, front, "--over", front, "extra"), "extra"),
                ((back, front, "-q", "--over", front, "-q"), "twice"), (("-", "-"), "once")):
            self.assertIn(part, self.composite_fails(2, *words), words)

    def test_the_output_is_asked_for(self):
        pictures = (self.good_picture, self.good_picture)
        self.assertIn("-o OUT", self.bad(2, "composite", *pictures))
        self.assertIn("--format", self.bad(2, "composite", *pictures, "-o", "-"))
        self.assertIn("tells no format", self.bad(2, "composite", *pictures, "-o", self.path("out.gif")))
        self.assertIn("tells no format", self.bad(2, "composite", *pictures, "-o", self.path("out")))
        self.assertIn("standard output", self.bad(2, "composite", *pictures, "-o", "-", "--format", "png", "--json"))
        self.assertIn("twice", self.bad(2, "composite", *pictures, "-o", self.out, "--over", self.matte, "-o", self.out))

    def test_other_commands(self):
        self.assertIn("did you mean composite?", self.bad(2, "compsite"))
        self.assertIn("rk --help", self.bad(2, "xyzzy"))
        self.assertIn("rk --help", self.bad(2))
        self.assertIn("FILE", self.bad(2, "info"))
        self.assertIn("BACK and FRONT", self.bad(2, "modes", "--sheet", self.out, self.good_picture))
        self.bad(2, "modes", "--json", "--markdown")
        self.bad(2, "slots", "--json", "--markdown")
        self.bad(2, "modes", self.good_picture, self.good_picture)
        self.bad(1, "info", "missing.png")
        self.bad(1, "modes", "--sheet", self.out, self.good_picture, "missing.png")
        self.assertEqual(os.listdir(self.path("made")), [])

    def test_a_matte_that_does_not_overlap(self):
        for kind, status in (("alpha", 1), ("luma", 1)):
            for place in ("3,0", "-2,0", "0,3", "0,-2"):
                line = self.composite_fails(status, self.good_picture, self.good_picture, "--matte", self.matte,
                                            "--matte-kind", kind, "--matte-at", place)
                self.assertIn("does not overlap", line)
        self.good("composite", self.good_picture, self.good_picture, "-o", self.out, "--matte", self.matte,
                  "--matte-kind", "inverted-luma", "--matte-at", "100,100")


class Outputs(Failing):
    def test_a_folder_that_does_not_exist(self):
        line = self.bad(1, "composite", self.good_picture, self.matte, "-o", self.path("none/out.png"))
        self.assertIn("the folder %s does not exist" % self.path("none"), line)
        self.assertFalse(os.path.exists(self.path("none")))

    def test_a_folder_as_output(self):
        os.mkdir(self.path("x.png"))
        self.assertIn("Is a directory", self.bad(1, "composite", self.good_picture, self.matte, "-o", self.path("x.png")))

    def test_a_file_as_folder(self):
        line = self.bad(1, "composite", self.good_picture, self.matte, "-o", self.good_picture + "/out.png")
        self.assertIn("Not a directory", line)

    def test_a_read_only_folder_and_a_read_only_file(self):
        os.chmod(self.folder, 0o755)
        as_nobody = {"preexec_fn": lambda: os.setuid(65534)} if os.getuid() == 0 else {}
        if not as_nobody:
            os.chmod(self.path("made"), 0o555)
        line = self.bad(1, "composite", self.good_picture, self.matte, "-o", self.out, **as_nobody)
        self.assertIn("Permission denied", line)
        os.chmod(self.path("made"), 0o777)
        self.write("made/out.png", self.old)
        os.chmod(self.out, 0o444)
        line = self.bad(1, "composite", self.good_picture, self.matte, "-o", self.out, **as_nobody)
        self.assertIn("Permission denied", line)
        self.assertEqual((os.listdir(self.path("made")), self.read("made/out.png")), (["out.png"], self.old))

    def test_a_full_disk(self):
        for form in ("png", "jpeg", "tiff", "exr"):
            line = self.bad(1, "composite", self.good_picture, self.matte, "-o", "/dev/full", "--format", form)
            self.assertEqual(line, "/dev/full: No space left on device")
        with open("/dev/full", "wb") as full:
            for words in (("modes",), ("slots",), ("info", self.good_picture), ("--help",), ("composite", "--help"),
                          ("composite", self.good_picture, self.matte, "-o", self.out, "--json"),
                          ("composite", self.good_picture, self.matte, "-o", "-", "--format", "png")):
                done = subprocess.run([RK, *words], stdout=full, stderr=subprocess.PIPE, timeout=60)
                self.assertEqual((done.returncode, done.stderr), (1, b"rk: standard output: No space left on device\n"))

    def test_a_file_size_limit_stops_every_format_with_nothing_left(self):
        import resource
        import signal

        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (20000, 20000))

        noise = self.write("noise.png", png(100, 100, list(os.urandom(40000))))
        for form in ("png", "tiff", "exr"):
            line = self.composite_fails(1, noise, self.matte, "--format", form, preexec_fn=limit)
            self.assertEqual(line, self.out + ": File too large")
        line = self.composite_fails(1, noise, self.matte, "--format", "jpeg", "--flatten", "black", preexec_fn=limit)
        self.assertEqual(line, self.out + ": File too large")

    def test_a_closed_pipe(self):
        reader, writer = os.pipe()
        os.close(reader)
        for words in (("modes",), ("composite", self.good_picture, self.matte, "-o", "-", "--format", "tiff")):
            done = subprocess.run([RK, *words], stdout=writer, stderr=subprocess.PIPE, timeout=60)
            self.assertEqual((done.returncode, done.stderr), (1, b"rk: standard output: Broken pipe\n"))
        os.close(writer)

    def test_closed_standard_streams(self):
        for closed in ((0,), (1,), (2,), (0, 1, 2)):
            def close():
                for fd in closed:
                    os.close(fd)
            done = subprocess.run([RK, "composite", self.good_picture, self.matte, "-o", self.out], preexec_fn=close,
                                  stdin=None, timeout=60)
            self.assertEqual(done.returncode, 0, closed)
            self.assertEqual(read_png(self.read("made/out.png"))[:3], (3, 3, 8))
            os.remove(self.out)
        done = subprocess.run([RK, "modes"], preexec_fn=lambda: os.close(1), stderr=subprocess.PIPE, timeout=60)
        self.assertEqual(done.returncode, 1)

    def test_a_device_is_written_to_and_not_replaced(self):
        self.good("composite", self.good_picture, self.matte, "-o", "/dev/null", "--format", "png")
        self.assertFalse(os.path.isfile("/dev/null"))


class Damage(Failing):
    """Small files cut at every byte, and with bytes changed: no crash, no hang, no output from a cut file."""

    def samples(self):
        self.write("s.png", png(5, 4, [(i * 37) % 256 for i in range(80)]))
        self.write("i.png", png(9, 9, list(range(243)) + list(range(81)), interlaced=True))
        self.convert(self.path("s.png"), self.path("s.jpg"), "--flatten", "white")
        self.convert(self.path("s.png"), self.path("s.tif"))
        self.convert(self.path("s.png"), self.path("s.exr"))
        self.write("t.tif", tiff(9, 9, [(i * 91) % 256 for i in range(162)], 8, 2, photometric=1, extra=1, tile=16,
                                 planar=True))
        self.write("p.tif", tiff(9, 1, [0, 1] * 4 + [1], 1, 1, photometric=0))
        return "s.png", "i.png", "s.jpg", "s.tif", "s.exr", "t.tif", "p.tif"

    def run_all(self, cases):
        """cases: (name, content). Yields (name, finished process, whether an output was left)."""
        def one(case):
            index, (name, content) = case
            out = self.path("made/%d.png" % index)
            done = rk("composite", "-", self.good_picture, "-o", out, "-q", input=content, timeout=60)
            return name, done, os.path.exists(out)

        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            yield from pool.map(one, enumerate(cases))
        for leftover in os.listdir(self.path("made")):
            self.assertFalse(leftover.startswith("."))
            os.remove(self.path("made/" + leftover))

    def test_cut_at_every_byte(self):
        for name in self.samples():
            content = self.read(name)
            cases = [("%s cut at %d of %d" % (name, n, len(content)), content[:n]) for n in range(len(content))]
            passed = 0
            for label, done, left in self.run_all(cases):
                self.assertIn(done.returncode, (0, 1), label)
                self.assertEqual(left, done.returncode == 0, label)
                if done.returncode == 1:
                    self.assertRegex(done.stderr.decode(), r"\Ark: [^\n]+\n\Z", label)
                passed += done.returncode == 0
            # The last four bytes of a TIFF directory point to a next one, which is not read.
            self.assertLessEqual(passed, 4 if name == "p.tif" else 0, name)

    def test_every_other_byte_changed(self):
        for name in self.samples():
            content = self.read(name)
            cases = []
            for n in range(0, len(content), 2):
                changed = bytearray(content)
                changed[n] ^= 0xFF if n % 4 else 0x41
                cases.append(("%s changed at %d" % (name, n), bytes(changed)))
            for label, done, left in self.run_all(cases):
                self.assertIn(done.returncode, (0, 1), (label, done.stderr))
                self.assertEqual(left, done.returncode == 0, label)
                self.assertLessEqual(done.stderr.count(b"\n"), 1, label)


if __name__ == "__main__":
    sys.exit(main())
