"""blur: what it draws, and what it refuses."""
import os

from harness import ToolTest, main, png, read_png


def picture(width, height, pixel_at):
    return png(width, height, [v for y in range(height) for x in range(width) for v in pixel_at(x, y)])


class Blur(ToolTest):
    def setUp(self):
        super().setUp()
        self.dot = self.write("dot.png", picture(11, 9, lambda x, y: (250, 125, 50, 255) if (x, y) == (5, 4) else (0, 0, 0, 255)))
        self.flat = self.write("flat.png", picture(13, 7, lambda x, y: (200, 40, 10, 255)))
        self.half = self.write("half.png", picture(12, 12, lambda x, y: (200, 40, 10, 255) if x < 6 else (0, 255, 0, 0)))
        self.noise = self.write("noise.png", picture(40, 30, lambda x, y: [(x * 37 + y * 101 + c * 59) * 7919 % 251
                                                                           for c in range(3)] + [255]))
        os.mkdir(self.path("made"))
        self.out = self.path("made/out.png")

    def made(self, *words, **options):
        """Rows of pixels; at 16 bits of their high bytes."""
        self.good("blur", *words, "-o", self.out, **options)
        with open(self.out, "rb") as file:
            width, height, bits, samples = read_png(file.read())
        pixels = [tuple(v >> bits - 8 for v in samples[i:i + 4]) for i in range(0, len(samples), 4)]
        return [pixels[y * width:(y + 1) * width] for y in range(height)]

    def refused(self, status, *words, **options):
        line = self.bad(status, "blur", *words, "-o", self.out, **options)
        self.assertEqual(os.listdir(self.path("made")), [])
        return line

    def test_a_box_spreads_a_pixel_evenly(self):
        rows = self.made(self.dot, "--radius", "2")
        self.assertEqual([[p[0] for p in row] for row in rows],
                         [[10 if 3 <= x <= 7 and 2 <= y <= 6 else 0 for x in range(11)] for y in range(9)])

    def test_a_fraction_of_the_radius_weighs_the_outermost_pixels(self):
        rows = self.made(self.dot, "--radius", "1.5", "--axis", "x")
        self.assertEqual([p[0] for p in rows[4]], [0, 0, 0, 31, 63, 63, 63, 31, 0, 0, 0])

    def test_an_axis_alone(self):
        rows = self.made(self.dot, "--radius", "2", "--axis", "x")
        self.assertEqual([p[1] for p in rows[4]], [25 if 3 <= x <= 7 else 0 for x in range(11)])
        self.assertEqual({p[:3] for p in rows[3]}, {(0, 0, 0)})
        rows = self.made(self.dot, "--radius", "2", "--axis", "y")
        self.assertEqual([row[5][1] for row in rows], [25 if 2 <= y <= 6 else 0 for y in range(9)])
        self.assertEqual({row[4][:3] for row in rows}, {(0, 0, 0)})

    def test_both_axes_are_one_after_the_other(self):
        for more in ((), ("--filter", "gauss"), ("--passes", "2"), ("--filter", "gauss", "--passes", "2")):
            self.made(self.noise, "--radius", "3.3", "--axis", "x", *more)
            os.rename(self.out, self.path("x.png"))
            wanted = self.made(self.path("x.png"), "--radius", "3.3", "--axis", "y", *more)
            self.assertEqual(wanted, self.made(self.noise, "--radius", "3.3", *more), more)

    def test_passes_are_blurs_of_blurs(self):
        for filter in ("box", "gauss"):
            once = ("--radius", "1", "--axis", "y", "--filter", filter)
            self.made(self.dot, *once)
            for _ in range(2):
                os.rename(self.out, self.path("one.png"))
                wanted = self.made(self.path("one.png"), *once)
            self.assertEqual(wanted, self.made(self.dot, *once, "--passes", "3"), filter)

    def test_a_gaussian_is_symmetric_and_falls(self):
        rows = self.made(self.dot, "--radius", "4", "--filter", "gauss")
        self.assertEqual(rows, [row[::-1] for row in rows])
        self.assertEqual(rows, rows[::-1])
        line = [rows[4][x][0] for x in range(5, 10)]
        self.assertEqual(line, sorted(set(line), reverse=True))

    def test_edges_that_are_kept_and_edges_that_fade(self):
        for more in (("--radius", "5"), ("--radius", "50.5", "--passes", "3"), ("--radius", "4", "--filter", "gauss")):
            self.assertEqual({p for row in self.made(self.flat, *more) for p in row}, {(200, 40, 10, 255)}, more)
        for more in (("--radius", "5"), ("--radius", "2.5", "--passes", "3"), ("--radius", "4", "--filter", "gauss")):
            faded = self.made(self.flat, *more, "--edges", "fade")
            self.assertLess(faded[0][0][3], 130)
            self.assertLess(faded[0][0][3], faded[0][6][3])
            self.assertLess(faded[0][6][3], faded[3][6][3])
            self.assertTrue(all(abs(a - b) < 5 for a, b in zip(faded[0][0], (200, 40, 10))), faded[0][0])

    def test_what_is_transparent_lends_no_colour(self):
        for filter in ("box", "gauss"):
            rows = self.made(self.half, "--radius", "3", "--filter", filter)
            alphas = [p[3] for p in rows[6]]
            self.assertEqual(alphas, sorted(alphas, reverse=True))
            for x in range(9):
                if alphas[x] > 20:
                    self.assertTrue(all(abs(a - b) < 8 for a, b in zip(rows[6][x], (200, 40, 10))), (x, rows[6][x]))

    def test_the_channels_that_are_not_named_stay(self):
        was = self.made(self.half, "--radius", "0")
        for channels in ("a", "r", "gb", "bgr", "ar", "argb"):
            rows = self.made(self.half, "--radius", "2", "--channels", channels)
            for name, at in (("r", 0), ("g", 1), ("b", 2), ("a", 3)):
                same = all(rows[y][x][at] == was[y][x][at] for y in range(12) for x in range(6))
                self.assertEqual(same, name not in channels or (name in "rgb" and "a" in channels), (channels, name))
        # Without alpha a colour is blurred as it stands.
        rows = self.made(self.half, "--radius", "1", "--channels", "g", "--axis", "x")
        self.assertEqual([rows[5][x] for x in (4, 5, 6, 7)],
                         [(200, 40, 10, 255), (200, 112, 10, 255), (0, 183, 0, 0), (0, 255, 0, 0)])

    def test_every_depth(self):
        wanted = self.made(self.noise, "--radius", "2.5", "--passes", "2")
        for depth in ("16", "float"):
            rows = self.made(self.noise, "--radius", "2.5", "--passes", "2", "--depth", depth)
            self.assertTrue(all(abs(a - b) <= 2 for row, other in zip(wanted, rows) for p, q in zip(row, other)
                                for a, b in zip(p, q)), depth)

    def test_a_radius_of_0_changes_nothing(self):
        for filter in ("box", "gauss"):
            self.assertEqual(self.made(self.noise, "--radius", "0", "--filter", filter),
                             self.made(self.noise, "--radius", "0", "--axis", "x", "--passes", "3"))
        self.assertEqual(self.made(self.flat, "--radius", "0")[0][0], (200, 40, 10, 255))

    def test_radii_far_beyond_the_picture(self):
        for more in (("--radius", "30000"), ("--radius", "30000", "--filter", "gauss"), ("--radius", "500", "--passes", "3")):
            self.assertEqual(self.made(self.flat, *more)[0][0], (200, 40, 10, 255), more)

    def test_standard_input_and_output(self):
        with open(self.noise, "rb") as file:
            content = file.read()
        self.made(self.noise, "--radius", "3")
        made = self.good("blur", "-", "-o", "-", "--format", "png", "--radius", "3", input=content)
        with open(self.out, "rb") as file:
            self.assertEqual(made, file.read())

    def test_the_input_may_be_the_output(self):
        wanted = self.made(self.noise, "--radius", "3")
        self.good("blur", self.noise, "-o", self.noise, "--radius", "3")
        with open(self.noise, "rb") as file, open(self.out, "rb") as other:
            self.assertEqual(file.read(), other.read())
        self.assertTrue(wanted)

    def test_a_jpeg_of_what_faded_asks_for_a_ground(self):
        out = self.path("made/out.jpg")
        self.bad(1, "blur", self.flat, "--radius", "3", "--edges", "fade", "-o", out)
        self.assertEqual(os.listdir(self.path("made")), [])
        self.good("blur", self.flat, "--radius", "3", "--edges", "fade", "-o", out, "--flatten", "black")

    def test_what_is_refused(self):
        c = (self.flat, "--radius", "1")
        for words, part in (((self.flat,), "--radius"), ((self.flat, "--radius", "-1"), "from 0 to 30000"),
                            ((self.flat, "--radius", "nan"), "--radius"), ((self.flat, "--radius", "30001"), "30000"),
                            ((self.flat, "--radius", "x"), "number"), ((self.flat, "--radius", ""), "--radius"),
                            (c + ("--passes", "0"), "from 1 to 100"), (c + ("--passes", "101"), "from 1 to 100"),
                            (c + ("--passes", "1.5"), "--passes"), (c + ("--filter", "tent"), "box or gauss"),
                            (c + ("--edges", "wrap"), "keep or fade"), (c + ("--axis", "z"), "both, x or y"),
                            (c + ("--channels", "rgx"), "each once"), (c + ("--channels", "rr"), "each once"),
                            (c + ("--channels", ""), "wanted"), (c + ("--channels", "R"), "each once"),
                            ((), "IN"), (c + ("more.png",), "more.png")):
            self.assertIn(part, self.refused(2, *words), words)
        self.assertEqual(self.refused(1, "none.png", "--radius", "1"), "none.png: No such file or directory")
        self.assertIn("-o OUT", self.bad(2, "blur", self.flat, "--radius", "1"))


if __name__ == "__main__":
    main()
