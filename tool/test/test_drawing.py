"""text, outline and guess-alpha: what they draw and tell, and what they refuse."""
import json
import os

from harness import ToolTest, main, png, read_png, tiff

LETTER = ("......", "...#..", "..#.#.", ".#...#", ".#...#", ".#####", ".#...#", ".#...#", "......", "......")


def flat(width, height, pixel):
    return png(width, height, list(pixel) * (width * height))


class Drawing(ToolTest):
    def setUp(self):
        super().setUp()
        self.grey = self.write("grey.png", flat(60, 40, (90, 90, 90, 255)))
        # A square of alpha 200 in the middle of nothing.
        self.square = self.write("square.png", png(40, 30, [v for y in range(30) for x in range(40) for v in (
            (1, 2, 3, 200) if 10 <= x < 30 and 10 <= y < 20 else (0, 0, 0, 0))]))
        os.mkdir(self.path("made"))
        self.out = self.path("made/out.png")

    def made(self, *words):
        """(width, height, rows of pixels) of the result."""
        self.good(*words, "-o", self.out)
        with open(self.out, "rb") as file:
            width, height, _, samples = read_png(file.read())
        pixels = [tuple(samples[i:i + 4]) for i in range(0, len(samples), 4)]
        return width, height, [pixels[y * width:(y + 1) * width] for y in range(height)]

    def drawn(self, *words, ground=(90, 90, 90, 255)):
        """The places that differ from the ground, with their colours."""
        rows = self.made(*words)[2]
        return {(x, y): pixel for y, row in enumerate(rows) for x, pixel in enumerate(row) if pixel != ground}

    def refused(self, status, *words):
        line = self.bad(status, *words, "-o", self.out)
        self.assertEqual(os.listdir(self.path("made")), [])
        return line


def letter(x, y, scale=1):
    return {(x + (h * scale) + i, y + (v * scale) + j) for v, row in enumerate(LETTER) for h, c in enumerate(row)
            if c == "#" for i in range(scale) for j in range(scale)}


class Text(Drawing):
    def test_a_letter_has_its_cell_where_it_is_asked_for(self):
        for depth in ("8", "16", "float"):
            found = self.drawn("text", self.grey, "A", "--at", "5,7", "--depth", depth,
                               ground=(90, 90, 90, 255) if depth == "8" else tuple(v * 257 for v in (90, 90, 90, 255)))
            self.assertEqual(set(found), letter(5, 7))
            self.assertEqual(set(found.values()), {(255,) * 4 if depth == "8" else (65535,) * 4})
        self.assertEqual(set(self.drawn("text", self.grey, "A")), letter(0, 0))

    def test_lines_tabs_and_backslashes(self):
        wanted = letter(0, 0) | letter(6, 0) | letter(0, 10) | letter(24, 20)
        self.assertEqual(set(self.drawn("text", self.grey, "AA\\nA\\n\\tA")), wanted)
        self.assertEqual(set(self.drawn("text", self.grey, "AA\nA\n\tA")), wanted)
        slash = set(self.drawn("text", self.grey, "\\\\"))
        self.assertEqual(len(slash), 7)
        self.assertEqual(set(self.drawn("text", self.grey, "\\")), slash)
        self.assertEqual(self.drawn("text", self.grey, ""), {})

    def test_letters_grow(self):
        self.assertEqual(set(self.drawn("text", self.grey, "A", "--at", "3,2", "--scale", "3")), letter(3, 2, 3))

    def test_what_does_not_fit_is_cut(self):
        for at in ((-8, 3), (57, 3), (20, -14), (20, 35), (-100, -100), (3000, 3000)):
            for scale in (1, 4):
                wanted = {(x, y) for x, y in letter(*at, scale) if 0 <= x < 60 and 0 <= y < 40}
                found = set(self.drawn("text", self.grey, "A", "--at", "%d,%d" % at, "--scale", str(scale)))
                self.assertEqual(found, wanted, (at, scale))

    def test_colours(self):
        found = self.drawn("text", self.grey, "A", "--colour", "#10ff80")
        self.assertEqual(set(found.values()), {(16, 255, 128, 255)})
        self.assertEqual(set(self.drawn("text", self.grey, "A", "--color", "black").values()), {(0, 0, 0, 255)})

    def test_characters_outside_ascii_are_left_out_with_a_note(self):
        self.assertEqual(set(self.drawn("text", self.grey, "A\u00e9A", "-q")), letter(0, 0) | letter(6, 0))
        from harness import rk
        done = rk("text", self.grey, "A\u00e9", "-o", self.out)
        self.assertEqual((done.returncode, done.stderr),
                         (0, b"rk: note: characters outside ASCII are left out of the text\n"))

    def test_refusals(self):
        for words, part in ((("text", self.grey), "TEXT"), (("text",), "IN"), (("text", self.grey, "A", "--at", "1"), "X,Y"),
                            (("text", self.grey, "A", "--scale", "0"), "1 to 64"),
                            (("text", self.grey, "A", "--scale", "65"), "1 to 64"),
                            (("text", self.grey, "A", "--colour", "pink"), "--colour pink: black, white"),
                            (("text", self.grey, "x" * 1024), "1023 at most")):
            self.assertIn(part, self.refused(2, *words))
        self.assertIn("No such file", self.refused(1, "text", "missing.png", "A"))


class Outline(Drawing):
    def outline(self, *words, picture=None):
        if "--step" not in words:
            words += ("--step", "1")
        return set(self.drawn("outline", picture or self.square, "--bare", *words, ground=(0, 0, 0, 0)))

    def test_dots_stand_on_both_sides_of_the_edge(self):
        inside = {(x, y) for x in range(10, 30) for y in range(10, 20)}
        core = {(x, y) for x in range(11, 29) for y in range(11, 19)}
        around = {(x, y) for x in (9, 30) for y in range(10, 20)} | {(x, y) for x in range(10, 30) for y in (9, 20)}
        self.assertEqual(self.outline(), (inside - core) | around)

    def test_it_is_drawn_on_the_picture_or_on_another(self):
        wanted = self.outline()
        for depth in ("8", "16", "float"):
            rows = self.made("outline", self.square, "--step", "1", "--depth", depth)[2]
            scale = 1 if depth == "8" else 257
            red = {(x, y) for y, row in enumerate(rows) for x, p in enumerate(row) if p[0] == 255 * scale}
            self.assertEqual(red, wanted)
            self.assertEqual(rows[15][20], tuple(v * scale for v in (1, 2, 3, 200)))
        found = self.drawn("outline", self.square, "--step", "1", "--onto", self.grey)
        self.assertEqual(set(found), wanted)
        self.assertEqual(set(found.values()), {(255, 32, 32, 255)})

    def test_it_moves_as_a_picture_does(self):
        still = self.outline()
        self.assertEqual(self.outline("--translate", "3,-2"), {(x + 3, y - 2) for x, y in still})
        self.assertEqual(self.outline("--rotate", "90", "--anchor", "20,15"), {(35 - y, x - 5) for x, y in still if
                                                                            0 <= x - 5 < 30 and 0 <= 35 - y < 40})
        self.assertEqual(self.outline("--scale", "2", "--anchor", "19,12"),
                         {(2 * x - 19, 2 * y - 12) for x, y in still if 0 <= 2 * x - 19 < 40 and 0 <= 2 * y - 12 < 30})
        self.assertEqual(self.outline("--translate", "1000,0"), set())

    def test_a_tilt_of_nothing_changes_nothing_and_tilting_back_narrows_the_top(self):
        self.assertEqual(self.outline("--tilt", "0,0"), self.outline())
        large = self.write("large.png", png(160, 160, [v for y in range(160) for x in range(160) for v in (
            (9, 9, 9, 255) if 30 <= x < 130 and 30 <= y < 130 else (0, 0, 0, 0))]))

        def extent(dots, along, across, first):
            """How long the dots reach at one end of the figure."""
            end = min(p[across] for p in dots) if first else max(p[across] for p in dots)
            line = [p[along] for p in dots if abs(p[across] - end) <= 1]
            return max(line) - min(line)

        top = self.outline("--tilt", "50,0", picture=large)
        left = self.outline("--tilt", "0,50", picture=large)
        self.assertEqual(left, {(y, x) for x, y in top})
        self.assertLess(extent(top, 0, 1, True) + 10, extent(top, 0, 1, False))
        self.assertLess(max(y for _, y in top) - min(y for _, y in top), 80)

    def test_steps_points_corners_and_pens(self):
        self.assertLess(len(self.outline("--step", "3")), len(self.outline()))
        self.assertLessEqual(len(self.outline("--points", "12")), 12)
        corners = self.outline("--corners") - self.outline()
        self.assertEqual(corners, {(0, 0)})  # the others lie one pixel outside
        self.assertEqual(self.outline("--corners", "--scale", "0.5") - self.outline("--scale", "0.5"),
                         {(10, 8), (30, 8), (30, 23), (10, 23)})
        big = self.outline("--pen", "3")
        self.assertEqual(big, {(x + i, y + j) for x, y in self.outline() for i in (-1, 0, 1) for j in (-1, 0, 1)})

    def test_nothing_to_outline_is_noted(self):
        from harness import rk
        done = rk("outline", self.grey, "-o", self.out)
        self.assertEqual((done.returncode, done.stderr.decode()),
                         (0, "rk: note: %s: its alpha crosses one half nowhere: no dots\n" % self.grey))

    def test_refusals(self):
        o = ("outline", self.square)
        for words, part in ((("outline",), "IN"), (o + ("--step", "0"), "1 to 30000"), (o + ("--points", "3"), "4 to"),
                            (o + ("--pen", "65"), "1 to 64"), (o + ("--colour", "x"), "--colour x"),
                            (o + ("--tilt", "90,0"), "--tilt"), (o + ("--tilt", "1"), "X,Y"),
                            (o + ("--scale", "1,2,3"), "X,Y"), (o + ("--rotate", "a"), "--rotate"),
                            (o + ("--bare", "--onto", self.grey), "one or the other"),
                            (("outline", "-", "--onto", "-"), "once")):
            self.assertIn(part, self.refused(2, *words))
        self.assertIn("No such file", self.refused(1, "outline", self.square, "--onto", "missing.png"))


class Guess(Drawing):
    def guess(self, pixels, name="in.png"):
        return self.good("guess-alpha", self.write(name, png(len(pixels), 1, [v for p in pixels for v in p]))).decode()

    def test_each_kind_is_told(self):
        name = self.path("in.png")
        self.assertEqual(self.guess([(0, 0, 0, 0)] * 3), name + ": undetermined (Unable to guess alpha channel.)\n")
        self.assertEqual(self.guess([(0, 0, 0, 0), (9, 9, 9, 10)]), name + ": premultiplied, matte #000000\n")
        self.assertEqual(self.guess([(255, 255, 255, 0), (250, 250, 250, 10)]), name + ": premultiplied, matte #ffffff\n")
        self.assertEqual(self.guess([(200, 30, 7, 0), (199, 30, 7, 1), (1, 2, 3, 255)]),
                         name + ": premultiplied, matte #c81e07\n")
        self.assertEqual(self.guess([(0, 0, 0, 0), (11, 9, 9, 10)]), name + ": straight\n")
        opaque = self.write("opaque.png", png(1, 1, [1, 2, 3], colour=2))
        self.assertEqual(self.good("guess-alpha", opaque).decode(), opaque + ": straight (the file has no alpha)\n")

    def test_records(self):
        self.guess([(200, 30, 7, 0), (199, 30, 7, 1), (1, 2, 3, 255)])
        lines = self.good("guess-alpha", "--json", self.path("in.png"), self.grey).decode().splitlines()
        self.assertEqual([json.loads(line) for line in lines], [
            {"file": self.path("in.png"), "alpha": "premultiplied", "matte": "#c81e07", "message": "",
             "file_has_alpha": True},
            {"file": self.grey, "alpha": "straight", "matte": None, "message": "", "file_has_alpha": True}])
        self.guess([(1, 1, 1, 0)])
        record = json.loads(self.good("guess-alpha", "--json", self.path("in.png")))
        self.assertEqual((record["alpha"], record["matte"], record["message"]),
                         ("undetermined", None, "Unable to guess alpha channel."))

    def test_premultiplied_files_are_taken_as_they_are_stored(self):
        # Said to be premultiplied with black, as its pixels are; divided by alpha they would be straight.
        samples = [0, 0, 0, 0, 100, 5, 0, 100, 9, 90, 3, 200]
        file = self.write("in.tif", tiff(3, 1, samples, channels=4, extra=1))
        self.assertEqual(self.good("guess-alpha", file).decode(), file + ": premultiplied, matte #000000\n")

    def test_standard_input_and_refusals(self):
        with open(self.square, "rb") as file:
            self.assertEqual(self.good("guess-alpha", "-", input=file.read()), b"standard input: premultiplied, matte #000000\n")
        self.assertIn("FILE", self.bad(2, "guess-alpha"))
        self.assertIn("No such file", self.bad(1, "guess-alpha", "missing.png"))


if __name__ == "__main__":
    main()
