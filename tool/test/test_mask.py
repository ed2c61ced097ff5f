"""mask: what it makes, changes, combines and cuts out, and what it refuses."""
import os

from harness import ToolTest, main, png, read_png, rk, tiff


def picture(width, height, pixel_at):
    return png(width, height, [v for y in range(height) for x in range(width) for v in pixel_at(x, y)])


def luma(r, g, b):
    return (9798 * r + 19235 * g + 3735 * b + 16384) >> 15


def mul(a, b):
    return (2 * a * b + 255) // 510


class Masks(ToolTest):
    def setUp(self):
        super().setUp()
        self.ramp = self.write("ramp.png", picture(8, 4, lambda x, y: (200, 40, 10, x * 30)))
        self.opaque = self.write("opaque.png", picture(8, 4, lambda x, y: (x * 30, 90, y * 50, 255)))
        self.bare = self.write("bare.png", png(8, 4, [v for y in range(4) for x in range(8) for v in (x * 30, 90, y * 50)],
                                               colour=2))
        self.square = self.write("square.png", picture(2, 2, lambda x, y: (255, 255, 255, 255)))
        os.mkdir(self.path("made"))
        self.out = self.path("made/out.png")

    def made(self, *words, **options):
        self.good("mask", *words, "-o", self.out, **options)
        with open(self.out, "rb") as file:
            width, height, self.bits, samples = read_png(file.read())
        pixels = [tuple(samples[i:i + 4]) for i in range(0, len(samples), 4)]
        return [pixels[y * width:(y + 1) * width] for y in range(height)]

    def mask(self, *words, **options):
        """The samples of a grey result."""
        rows = self.made(*words, **options)
        full = 255 if self.bits == 8 else 65535
        for row in rows:
            for pixel in row:
                self.assertEqual(pixel, (pixel[0],) * 3 + (full,))
        return [[pixel[0] for pixel in row] for row in rows]

    def refused(self, status, *words, **options):
        line = self.bad(status, "mask", *words, "-o", self.out, **options)
        self.assertEqual(os.listdir(self.path("made")), [])
        return line


class Making(Masks):
    def test_from_alpha_or_luma_upright_or_inverted(self):
        alphas = [x * 30 for x in range(8)]
        self.assertEqual(self.mask(self.ramp), [alphas] * 4)
        self.assertEqual(self.mask(self.ramp, "--from", "alpha"), [alphas] * 4)
        self.assertEqual(self.mask(self.ramp, "--from", "inverted-alpha"), [[255 - a for a in alphas]] * 4)
        lumas = [mul(a, luma(200, 40, 10)) for a in alphas]
        self.assertEqual(self.mask(self.ramp, "--from", "luma"), [lumas] * 4)
        self.assertEqual(self.mask(self.ramp, "--from", "inverted-luma"), [[255 - m for m in lumas]] * 4)

    def test_without_alpha_luma_is_taken(self):
        wanted = [[luma(x * 30, 90, y * 50) for x in range(8)] for y in range(4)]
        self.assertEqual(self.mask(self.bare), wanted)
        self.assertEqual(self.mask(self.opaque), [[255] * 8] * 4)
        self.assertEqual(self.mask(self.opaque, "--from", "luma"), wanted)
        self.assertEqual(self.mask(self.bare, "--from", "alpha"), [[255] * 8] * 4)

    def test_every_depth(self):
        for depth, bits in (("8", 8), ("16", 16), ("float", 16)):
            rows = self.mask(self.ramp, "--depth", depth, "--blur", "0.8")
            self.assertEqual(self.bits, bits)
            inner = [rows[1][x] >> (bits - 8) for x in range(1, 7)]
            self.assertTrue(all(abs(inner[x - 1] - x * 30) <= 1 for x in range(1, 7)), inner)

    def test_deep_files_make_deep_masks(self):
        deep = self.write("deep.tif", tiff(3, 1, [v for v in (0, 257 * 100, 65535) for _ in range(3)], bits=16))
        self.assertEqual(self.mask(deep, "--invert"), [[65535, 257 * 155, 0]])
        self.assertEqual(self.bits, 16)

    def test_padding_widens(self):
        rows = self.mask(self.square, "--pad", "3")
        self.assertEqual(rows, [[255 if x in (3, 4) and y in (3, 4) else 0 for x in range(8)] for y in range(8)])

    def test_standard_input_and_output(self):
        with open(self.ramp, "rb") as file:
            content = file.read()
        wanted = self.good("mask", self.ramp, "-o", "-", "--format", "png", "--invert")
        self.assertEqual(wanted, self.good("mask", "-", "-o", "-", "--format", "png", "--invert", input=content))
        self.assertEqual(self.mask(self.opaque, "--with", "-", "--mode", "intersect", input=content)[0],
                         [x * 30 for x in range(8)])


class Changing(Masks):
    def test_invert_and_fade(self):
        self.assertEqual(self.mask(self.ramp, "--invert")[0], [255 - x * 30 for x in range(8)])
        self.assertEqual(self.mask(self.ramp, "--fade", "0.5")[0], [mul(x * 30, 128) for x in range(8)])
        self.assertEqual(self.mask(self.ramp, "--invert", "--invert"), self.mask(self.ramp))

    def test_steps_are_taken_from_left_to_right(self):
        self.assertEqual(self.mask(self.ramp, "--fade", "0.5", "--invert")[0], [255 - mul(x * 30, 128) for x in range(8)])
        self.assertEqual(self.mask(self.ramp, "--invert", "--fade", "0.5")[0], [mul(255 - x * 30, 128) for x in range(8)])
        self.assertEqual(self.mask(self.ramp, "--fade", "0.5", "--invert", "--fade=0.25", "--invert")[0],
                         [255 - mul(255 - mul(x * 30, 128), 64) for x in range(8)])

    def test_a_blur_spreads_both_ways_and_keeps_the_middle(self):
        wide = self.write("wide.png", picture(40, 40, lambda x, y: (0, 0, 0, 255 if 10 <= x < 30 and 10 <= y < 30 else 0)))
        for name in ("gauss", "boxes", "box"):
            rows = self.mask(wide, "--blur", "4", "--filter", name)
            self.assertEqual(rows[20][20], 255, name)
            self.assertTrue(0 < rows[20][9] < rows[20][10] <= rows[20][11] <= 255, name)
            self.assertEqual(rows, rows[::-1], name)
            self.assertEqual(rows, [row[::-1] for row in rows], name)
            for row, column in zip(rows, zip(*rows)):
                self.assertTrue(all(abs(a - b) <= 2 for a, b in zip(row, column)), name)
            self.assertEqual(rows[20][0], 0, name)
        self.assertEqual(self.mask(wide, "--blur", "4"), self.mask(wide, "--blur", "4", "--filter", "gauss"))
        self.assertEqual(self.mask(wide, "--blur", "0"), self.mask(wide))

    def test_a_blur_over_more_columns_than_are_taken_at_once(self):
        band = self.write("band.png", picture(150, 5, lambda x, y: (0, 0, 0, 255 if y == 2 else 0)))
        rows = self.mask(band, "--blur", "1.5")
        self.assertTrue(0 < rows[1][75] < rows[2][75] < 255)
        for row in rows:
            self.assertEqual(len(set(row[3:147])), 1)


class Combining(Masks):
    WANTED = {
        "union": lambda s, d: s + d - mul(s, d),
        "subtract": lambda s, d: d - mul(s, d),
        "intersect": mul,
        "lighten": max,
        "darken": min,
        "difference": lambda s, d: abs(s - d),
        "add": lambda s, d: min(255, s + d),
    }

    def test_the_modes(self):
        d = [luma(x * 30, 90, 0) for x in range(8)]
        for mode, wanted in self.WANTED.items():
            row = self.mask(self.opaque, "--from", "luma", "--with", self.ramp, "--mode", mode)[0]
            self.assertEqual(row, [wanted(x * 30, d[x]) for x in range(8)], mode)
        row = self.mask(self.opaque, "--from", "luma", "--with", self.ramp, "--mode", "dither")[0]
        for x in range(8):
            self.assertLessEqual(abs(row[x] - self.WANTED["union"](x * 30, d[x])), 1)

    def test_union_is_the_mode_unless_another_is_named(self):
        self.assertEqual(self.mask(self.ramp, "--with", self.square, "--mode=union"),
                         self.mask(self.ramp, "--with=" + self.square))

    def test_a_file_lies_where_it_is_put(self):
        rows = self.mask(self.ramp, "--with", self.square, "--at", "3,-1")
        self.assertEqual(rows, [[255 if x in (3, 4) and y == 0 else x * 30 for x in range(8)] for y in range(4)])
        rows = self.mask(self.ramp, "--with", self.square, "--at", "3,1", "--mode", "intersect")
        self.assertEqual(rows, [[x * 30 if x in (3, 4) and y in (1, 2) else 0 for x in range(8)] for y in range(4)])
        rows = self.mask(self.square, "--pad", "2", "--with", self.square, "--at", "-1,-1")
        self.assertEqual([sum(map(bool, row)) for row in rows], [0, 2, 3, 2, 0, 0])

    def test_what_lies_beside_the_mask_is_told_and_leaves_nothing_in_common(self):
        for mode, kept in (("union", True), ("subtract", True), ("intersect", False), ("darken", False)):
            rows = self.mask(self.ramp, "--with", self.square, "--at", "8,0", "--mode", mode, "-q")
            self.assertEqual(rows[0], [x * 30 if kept else 0 for x in range(8)], mode)
        done = rk("mask", self.ramp, "--with", self.square, "--at", "8,0", "-o", self.out)
        self.assertEqual((done.returncode, done.stderr.decode()),
                         (0, "rk: note: %s: at 8,0 nothing of it lies on the mask\n" % self.square))

    def test_options_belong_to_the_file_before_them(self):
        rows = self.mask(self.ramp, "--with", self.square, "--mode", "subtract", "--with", self.square, "--at", "6,2")
        self.assertEqual(rows, [[0 if x < 2 and y < 2 else 255 if x > 5 and y > 1 else x * 30 for x in range(8)]
                                for y in range(4)])
        rows = self.mask(self.ramp, "--with", self.opaque, "--from", "inverted-luma", "--mode", "darken", "--invert")
        self.assertEqual(rows[0], [255 - min(x * 30, 255 - luma(x * 30, 90, 0)) for x in range(8)])

    def test_opacity_fades_the_file_first(self):
        for mode, wanted in self.WANTED.items():
            row = self.mask(self.ramp, "--with", self.opaque, "--from", "luma", "--mode", mode, "--opacity", "0.5")[0]
            self.assertEqual(row, [wanted(mul(luma(x * 30, 90, 0), 128), x * 30) for x in range(8)], mode)

    def test_dither_goes_towards_its_limit(self):
        row = self.mask(self.ramp, "--with", self.opaque, "--mode", "dither", "--limit", "0.5")[0]
        self.assertEqual(row[5:], [150, 180, 210])
        self.assertTrue(all(abs(row[x] - 128) <= 1 for x in range(5)), row)

    def test_a_mask_with_itself(self):
        self.assertEqual(self.mask(self.ramp, "--with", self.ramp, "--mode", "difference"), [[0] * 8] * 4)
        self.assertEqual(self.mask(self.ramp, "--with", self.ramp, "--mode", "lighten"), self.mask(self.ramp))

    def test_deep_masks_combine(self):
        for mode, wanted in self.WANTED.items():
            row = self.mask(self.opaque, "--from", "luma", "--with", self.ramp, "--mode", mode, "--depth", "16")[0]
            for x in range(8):
                self.assertLessEqual(abs(row[x] / 257 - wanted(x * 30, luma(x * 30, 90, 0))), 2, mode)


class Showing(Masks):
    def test_into_a_picture(self):
        for depth in ("8", "16", "float"):
            rows = self.made(self.ramp, "--into", self.opaque, "--depth", depth)
            shift = 0 if depth == "8" else 8
            self.assertEqual([[v >> shift for v in p] for p in rows[1]], [[x * 30, 90, 50, x * 30] for x in range(8)], depth)

    def test_what_the_mask_does_not_reach_becomes_transparent(self):
        rows = self.made(self.square, "--into", self.opaque, "--into-at", "3,1")
        for y in range(4):
            for x in range(8):
                self.assertEqual(rows[y][x], (x * 30, 90, y * 50, 255 if x in (3, 4) and y in (1, 2) else 0))
        rows = self.made(self.square, "--pad", "1", "--invert", "--into", self.opaque, "--into-at", "-1,-1")
        self.assertEqual([[p[3] for p in row] for row in rows[:3]],
                         [[0, 255] + [0] * 6, [255, 255] + [0] * 6, [0] * 8])

    def test_a_colour_through_the_mask(self):
        rows = self.made(self.ramp, "--colour", "#102030")
        self.assertEqual(rows, [[(16, 32, 48, x * 30) for x in range(8)]] * 4)
        self.assertEqual(self.made(self.ramp, "--colour", "black", "--depth", "16")[0][3], (0, 0, 0, 90 * 257))

    def test_flattened(self):
        rows = self.made(self.ramp, "--colour", "black", "--flatten", "white")
        self.assertEqual([p[0] for p in rows[0]], [255 - x * 30 for x in range(8)])


class Refusing(Masks):
    def test_misuse(self):
        r = self.ramp
        for words, part in (
                ((), "IN"), ((r, "--fade", "2"), "from 0 to 1"), ((r, "--blur", "-1"), "from 0 to 1000"),
                ((r, "--blur", "x"), "--blur x"), ((r, "--from", "red"), "alpha, inverted-alpha, luma or inverted-luma"),
                ((r, "--mode", "add"), "--mode goes after a --with"), ((r, "--at", "1,1"), "--at goes after"),
                ((r, "--with", r, "--mode", "screen"), "union, subtract"),
                ((r, "--with", r, "--at", "1"), "two numbers"), ((r, "--with", r, "--opacity", "nan"), "--opacity nan"),
                ((r, "--with", r, "--limit", "0.5"), "--mode dither"), ((r, "--with", r, "--mode", "add", "--mode", "add"), "--mode"),
                ((r, "--into-at", "1,1"), "--into PICTURE"), ((r, "--into", r, "--colour", "black"), "two different results"),
                ((r, "--colour", "blue"), "--colour blue"), ((r, "--pad", "-1"), "from 0 to 2000"),
                ((r, "--pad", "1", "--with", r, "--pad", "2"), "--pad is given twice"),
                ((r, "--filter", "median"), "gauss, boxes or box"), (("-", "--with", "-"), "once"),
                (("-", "--into", "-"), "once"), ((r, "--what"), "--what")):
            self.assertIn(part, self.refused(2, *words), words)
        self.assertIn("-o OUT", self.bad(2, "mask", r))
        self.assertIn("--with needs a FILE", self.bad(2, "mask", r, "-o", self.out, "--with"))

    def test_files_that_will_not(self):
        for words in (("none.png",), (self.ramp, "--with", "none.png"), (self.ramp, "--into", "none.png")):
            self.assertEqual(self.refused(1, *words), "none.png: No such file or directory")
        self.assertIn("does not overlap", self.refused(1, self.square, "--into", self.opaque, "--into-at", "8,0"))
        self.assertIn("does not overlap", self.refused(1, self.square, "--into", self.opaque, "--into-at", "0,-2"))
        long = self.write("long.png", png(29999, 1, [0] * 29999, colour=0))
        self.assertIn("too large", self.refused(1, long, "--pad", "1"))
        self.assertIn("JPEG", self.bad(1, "mask", self.ramp, "--colour", "black", "-o", self.path("made/out.jpg")))
        self.assertEqual(os.listdir(self.path("made")), [])


if __name__ == "__main__":
    main()
