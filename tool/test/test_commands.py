"""What the commands do when all is well."""
import json
import os
import re
import subprocess

from harness import RK, SOURCE, ToolTest, main, png, read_png, rk


def flat(width, height, pixel):
    return png(width, height, list(pixel) * (width * height))


class Composite(ToolTest):
    def setUp(self):
        super().setUp()
        self.red = self.write("red.png", flat(4, 4, (255, 0, 0, 255)))
        self.blue = self.write("blue.png", flat(2, 2, (0, 0, 255, 255)))
        self.half = self.write("half.png", flat(2, 2, (0, 255, 0, 128)))
        self.out = self.path("out.png")

    def pixels(self, *words):
        """The result's pixels as rows of tuples."""
        self.good("composite", *words, "-o", self.out)
        width, height, _, samples = read_png(self.read("out.png"))
        flat_pixels = [tuple(samples[i:i + 4]) for i in range(0, len(samples), 4)]
        return [flat_pixels[y * width:(y + 1) * width] for y in range(height)]

    def test_a_layer_lies_where_it_is_put(self):
        red, blue = (255, 0, 0, 255), (0, 0, 255, 255)
        self.assertEqual(self.pixels(self.red, self.blue, "--at", "1,2"),
                         [[red] * 4, [red] * 4, [red, blue, blue, red], [red, blue, blue, red]])
        self.assertEqual(self.pixels(self.red, self.blue, "--at", "-1,-1"), [[blue] + [red] * 3] + [[red] * 4] * 3)
        self.assertEqual(self.pixels(self.red, self.blue, "--at=-1,3"), [[red] * 4] * 3 + [[blue] + [red] * 3])

    def test_opacity(self):
        self.assertEqual(self.pixels(self.red, self.blue, "--opacity", "0")[0][0], (255, 0, 0, 255))
        self.assertEqual(self.pixels(self.red, self.blue, "--opacity", "0.5")[0][0], (127, 0, 128, 255))
        self.assertEqual(self.pixels(self.red, self.half)[0][0], (127, 128, 0, 255))

    def test_modes_in_any_spelling(self):
        wanted = self.pixels(self.red, self.blue, "--mode", "linear-dodge")
        self.assertEqual(wanted[0][0], (255, 0, 255, 255))
        for name in ("LinearDodge", "linear_dodge", "LINEARDODGE"):
            self.assertEqual(self.pixels(self.red, self.blue, "--mode", name), wanted)

    def test_every_mode_draws_at_every_depth(self):
        modes = json.loads(self.good("modes", "--json"))
        self.assertEqual(len(modes), 39)
        for mode in modes:
            matte = ["--matte", self.half] if mode["name"] == "matte-mix" else []
            for depth in ("8", "16", "float"):
                self.good("composite", self.red, self.half, "-o", self.out, "--mode", mode["name"], "--depth", depth, *matte)

    def test_layers_are_laid_from_left_to_right(self):
        green = self.write("green.png", flat(4, 4, (0, 255, 0, 255)))
        self.assertEqual(self.pixels(self.red, self.blue, "--over", green, "--at", "1,0")[0],
                         [(0, 0, 255, 255)] + [(0, 255, 0, 255)] * 3)
        self.assertEqual(self.pixels(self.red, green, "--at", "1,0", "--over", self.blue)[0],
                         [(0, 0, 255, 255)] * 2 + [(0, 255, 0, 255)] * 2)

    def test_options_belong_to_the_layer_before_them(self):
        # multiply on the first makes black; the second is laid over plainly.
        rows = self.pixels(self.red, self.blue, "--mode", "multiply", "--over=" + self.blue, "--at", "2,2")
        self.assertEqual((rows[0][0], rows[2][2], rows[3][0]), ((0, 0, 0, 255), (0, 0, 255, 255), (255, 0, 0, 255)))
        rows = self.pixels(self.red, self.blue, "--over", self.blue, "--at", "2,2", "--mode", "multiply")
        self.assertEqual((rows[0][0], rows[2][2]), ((0, 0, 255, 255), (0, 0, 0, 255)))

    def test_many_layers(self):
        words = [self.red, self.blue]
        for x in range(40):
            words += ["--over", self.blue, "--at", "%d,%d" % (x % 4, x // 4 % 4)]
        self.assertEqual(self.pixels(*words), [[(0, 0, 255, 255)] * 4] * 4)

    def test_mattes_of_all_kinds(self):
        samples = [v for pixel in ((255, 255, 255, 255), (0, 0, 0, 255), (255, 255, 255, 0), (255, 255, 255, 128))
                   for v in pixel]
        matte = self.write("matte.png", png(4, 1, samples))
        blue = self.write("wide.png", flat(4, 1, (0, 0, 255, 255)))
        below = self.write("below.png", flat(4, 1, (255, 0, 0, 255)))
        for kind, wanted in (("alpha", (255, 255, 0, 128)), ("inverted-alpha", (0, 0, 255, 127)),
                             ("luma", (255, 0, 0, 128)), ("inverted-luma", (0, 255, 255, 127))):
            row = self.pixels(below, blue, "--matte", matte, "--matte-kind", kind)[0]
            self.assertEqual(tuple(pixel[2] for pixel in row), wanted, kind)

    def test_a_matte_lies_where_it_is_put(self):
        row = self.pixels(self.red, self.blue, "--at", "1,1", "--matte", self.blue, "--matte-at", "2,2")
        self.assertEqual([[p[2] for p in line] for line in row],
                         [[0] * 4, [0] * 4, [0, 0, 255, 0], [0] * 4])

    def test_fields(self):
        green = self.write("green.png", flat(4, 4, (0, 255, 0, 255)))
        self.assertEqual([line[0][1] for line in self.pixels(self.red, green, "--field", "even")], [255, 0, 255, 0])
        self.assertEqual([line[0][1] for line in self.pixels(self.red, green, "--field", "odd")], [0, 255, 0, 255])

    def test_rgb_only_keeps_alpha(self):
        clear = self.write("clear.png", flat(1, 1, (10, 20, 30, 100)))
        self.assertEqual(self.pixels(clear, self.blue, "--rgb-only")[0][0][3], 100)
        self.assertEqual(self.pixels(clear, self.blue)[0][0], (0, 0, 255, 255))

    def test_the_seed_changes_dissolve_and_nothing_else_does(self):
        big = self.write("big.png", flat(32, 32, (0, 0, 255, 255)))
        ground = self.write("ground.png", flat(32, 32, (255, 0, 0, 255)))
        words = (ground, big, "--mode", "dissolve", "--opacity", "0.5")
        one, again, other = (self.pixels(*words, "--seed", seed) for seed in ("1", "1", "-2"))
        self.assertEqual(one, again)
        self.assertNotEqual(one, other)
        shown = sum(pixel[2] == 255 for line in one for pixel in line)
        self.assertTrue(400 < shown < 624, shown)

    def test_the_deepest_input_decides_the_depth(self):
        deep = self.write("deep.png", png(2, 2, [65535] * 16, 16))
        self.convert(deep, self.path("float.exr"))
        for words, depth in (((self.red, self.blue), "8"), ((self.red, deep), "16"), ((deep, self.blue), "16"),
                             ((self.red, self.blue, "--over", self.path("float.exr")), "float"),
                             ((self.red, self.blue, "--matte", deep), "16"),
                             ((deep, deep, "--depth", "8"), "8"), ((self.red, self.red, "--depth", "float"), "float")):
            figures = json.loads(self.good("composite", *words, "-o", self.path("o.tif"), "--json"))
            self.assertEqual(figures["depth"], depth, words)

    def test_figures(self):
        figures = json.loads(self.good("composite", self.red, self.blue, "--mode", "screen", "--at", "1,0",
                                       "--over", self.half, "--opacity", "0.25", "-o", self.out, "--json"))
        self.assertEqual((figures["width"], figures["height"], figures["format"], figures["output"]),
                         (4, 4, "PNG", self.out))
        self.assertEqual([(layer["mode"], layer["x"], layer["opacity"]) for layer in figures["layers"]],
                         [("screen", 1, 1.0), ("over", 0, 0.25)])
        self.assertEqual(set(figures["seconds"]), {"read", "composite", "write", "total"})

    def test_standard_input_and_output(self):
        with open(self.red, "rb") as file:
            content = file.read()
        piped = self.good("composite", "-", self.blue, "-o", "-", "--format", "png", input=content)
        self.good("composite", self.red, self.blue, "-o", self.out)
        self.assertEqual(piped, self.read("out.png"))
        for form in ("tiff", "exr", "jpeg"):
            self.write("piped", self.good("composite", self.red, self.blue, "-o", "-", "--format", form))
            self.assertIn("4 x 4", self.good("info", self.path("piped")).decode())
        self.assertIn("standard input: PNG", self.good("info", "-", input=content).decode())

    def test_the_result_may_replace_an_input(self):
        self.good("composite", self.red, self.blue, "-o", self.red)
        self.assertEqual(read_png(self.read("red.png"))[3][:4], [0, 0, 255, 255])

    def test_a_replaced_file_keeps_its_permissions_and_a_link_stays_a_link(self):
        os.chmod(self.red, 0o640)
        os.symlink(self.red, self.path("link.png"))
        self.good("composite", self.blue, self.blue, "-o", self.path("link.png"))
        self.assertTrue(os.path.islink(self.path("link.png")))
        self.assertEqual(os.stat(self.red).st_mode & 0o777, 0o640)
        self.assertEqual(read_png(self.read("red.png"))[0], 2)

    def test_a_new_file_obeys_the_umask(self):
        self.good("composite", self.red, self.blue, "-o", self.out, preexec_fn=lambda: os.umask(0o027))
        self.assertEqual(os.stat(self.out).st_mode & 0o777, 0o640)

    def test_a_layer_off_the_picture_is_noted_and_changes_nothing(self):
        done = rk("composite", self.red, self.blue, "--at", "2000000000,0", "-o", self.out)
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stderr.decode(), r"^rk: note: .*nothing of it lies on .*\n$")
        self.assertEqual(read_png(self.read("out.png"))[3], [255, 0, 0, 255] * 16)

    def test_the_format_may_differ_from_the_name(self):
        self.good("composite", self.red, self.blue, "-o", self.out, "--format", "tiff")
        self.assertIn("TIFF", self.good("info", self.out).decode())


class Lists(ToolTest):
    def test_modes(self):
        lines = self.good("modes").decode().splitlines()
        self.assertEqual(len(lines), 40)
        self.assertRegex(lines[9], r"^ +6  screen +wrap black +1 +")

    def test_slots(self):
        slots = json.loads(self.good("slots", "--json"))
        self.assertEqual([slot["slot"] for slot in slots], list(range(118)))
        self.assertTrue(all((slot["picked"] == "empty") == (slot["function"] == "") for slot in slots))
        told = re.findall(r"^ *\d+  (\w+) +(?:default|SSE2|SSSE3|override) ", self.good("slots").decode(), re.M)
        self.assertEqual(told, [slot["function"] for slot in slots if slot["function"]])

    def test_the_pages_are_what_the_lists_say(self):
        for page in ("modes", "slots"):
            with open(os.path.join(SOURCE, "docs", page + ".md"), "rb") as file:
                self.assertEqual(file.read(), self.good(page, "--markdown"),
                                 "docs/%s.md is out of date: rk %s --markdown > docs/%s.md" % (page, page, page))

    def test_the_sheet(self):
        sample = lambda name: os.path.join(SOURCE, "samples", name)
        self.good("modes", "--sheet", self.path("sheet.png"), sample("coffee.png"), sample("paint.png"))
        width, height, bits, samples = read_png(self.read("sheet.png"))
        self.assertEqual((width, bits), (12 + 7 * 268, 8))
        self.assertTrue(all(alpha == 255 for alpha in samples[3::4]))
        self.good("modes", "--sheet", self.path("again.jpg"), sample("coffee.png"), sample("paint.png"))

    def test_a_sheet_of_tiny_pictures(self):
        self.write("dot.png", flat(1, 1, (1, 2, 3, 4)))
        self.write("bar.png", flat(300, 1, (1, 2, 3, 255)))
        self.good("modes", "--sheet", self.path("s.png"), self.path("dot.png"), self.path("bar.png"))
        self.good("modes", "--sheet", self.path("s.png"), self.path("bar.png"), self.path("dot.png"))


class Help(ToolTest):
    def test_every_command_has_help_with_examples(self):
        self.assertIn("Example:", self.good("--help").decode())
        self.assertEqual(self.good("help"), self.good("-h"))
        for command in re.findall(r"^  (\w+)  ", self.good("--help").decode(), re.M):
            text = self.good(command, "--help").decode()
            self.assertIn("Examples:\n  rk " + command, text)
            self.assertEqual(text, self.good(command, "-h").decode())

    def test_the_examples_work(self):
        os.symlink(os.path.join(SOURCE, "samples"), self.path("samples"))
        os.mkdir(self.path("docs"))
        os.mkdir(self.path("bin"))
        os.symlink(RK, self.path("bin/rk"))
        with open(os.path.join(SOURCE, "docs", "tool.md"), encoding="utf-8") as file:
            page = file.read()
        texts = [self.good("--help").decode(), page] + [self.good(c, "--help").decode()
                                                        for c in ("composite", "transform", "resize", "halve", "boxmean",
                                                                  "blur", "convolve", "crossfade", "mask", "modes", "slots",
                                                                  "info")]
        self.write("emboss.txt", b"-2 -1 0 -1 1 1 0 1 2")
        examples = {}  # in the order of the page: some use what those before them made
        for text in texts:
            for example in re.findall(r"^ *(rk (?:[^\n]*\\\n)*[^\n]*)$", text, re.M):
                if " " in example.strip() and not re.match(r"rk (COMMAND|[A-Z]|: )", example):
                    examples[re.sub(r"\\\n *", "", example)] = True
        self.assertGreater(len(examples), 10)
        path = self.path("bin") + ":" + os.environ["PATH"]
        for example in examples:
            done = subprocess.run(["bash", "-c", example], cwd=self.folder, capture_output=True,
                                  env={**os.environ, "PATH": path}, timeout=120)
            self.assertEqual((done.returncode, done.stderr.decode()), (0, ""), example)

    def test_the_version(self):
        self.assertRegex(self.good("--version").decode(), r"^rk \d+\.\d+\.\d+\n$")


if __name__ == "__main__":
    main()
