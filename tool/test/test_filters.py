"""convolve and crossfade: what they draw, and what they refuse."""
import os

from harness import ToolTest, main, png, read_png


def picture(width, height, pixel_at):
    return png(width, height, [v for y in range(height) for x in range(width) for v in pixel_at(x, y)])


class Filters(ToolTest):
    def setUp(self):
        super().setUp()
        self.dot = self.write("dot.png", picture(7, 5, lambda x, y: (90, 180, 45, 255) if (x, y) == (3, 2) else (0, 0, 0, 255)))
        self.red = self.write("red.png", picture(9, 7, lambda x, y: (200, 40, 10, 255)))
        self.soft = self.write("soft.png", picture(9, 7, lambda x, y: (200, 40, 10, x * 30)))
        os.mkdir(self.path("made"))
        self.out = self.path("made/out.png")

    def kernel(self, text):
        return self.write("kernel.txt", text.encode())

    def made(self, *words, **options):
        self.good(*words, "-o", self.out, **options)
        with open(self.out, "rb") as file:
            width, height, _, samples = read_png(file.read())
        pixels = [tuple(samples[i:i + 4]) for i in range(0, len(samples), 4)]
        return [pixels[y * width:(y + 1) * width] for y in range(height)]

    def refused(self, status, *words, **options):
        line = self.bad(status, *words, "-o", self.out, **options)
        self.assertEqual(os.listdir(self.path("made")), [])
        return line


class Convolve(Filters):
    def test_a_kernel_of_one_number_scales(self):
        was = self.made("convolve", self.soft, "--kernel", self.kernel("255"))
        self.assertEqual(was[3][4], (200, 40, 10, 120))
        rows = self.made("convolve", self.soft, "--kernel", self.kernel("510"))
        self.assertEqual(rows[3][4], (255, 80, 20, 120))
        rows = self.made("convolve", self.soft, "--kernel", self.kernel("510"), "--no-clamp")
        self.assertEqual(rows[3][4], (144, 80, 20, 120))

    def test_the_kernel_lies_on_the_picture_as_it_stands(self):
        rows = self.made("convolve", self.dot, "--normalise",
                         "--kernel", self.kernel("# nine\n1,2,3\n4 5 6 # the middle\n7\t8\r\n9"))
        self.assertEqual([[rows[y][x][1] for x in (2, 3, 4)] for y in (1, 2, 3)], [[36, 32, 28], [24, 20, 16], [12, 8, 4]])
        self.assertEqual(rows[0][0], (0, 0, 0, 255))

    def test_the_built_in_kernels(self):
        rows = self.made("convolve", self.red, "--kernel", "sharpen")
        self.assertEqual((rows[3][4], rows[0][4]), ((200, 40, 10, 255), (255, 80, 20, 255)))
        rows = self.made("convolve", self.red, "--kernel", "edges")
        self.assertEqual((rows[3][4], rows[0][4]), ((0, 0, 0, 255), (255, 120, 30, 255)))
        rows = self.made("convolve", self.red, "--kernel", "gauss:1.5")
        self.assertEqual(rows[3][4], (200, 40, 10, 255))
        self.assertLess(rows[0][0][0], 120)
        self.assertEqual(self.made("convolve", self.soft, "--kernel", "gauss:0"),
                         self.made("convolve", self.soft, "--kernel", self.kernel("255")))

    def test_a_gaussian_is_symmetric_and_falls(self):
        rows = self.made("convolve", self.dot, "--kernel", "gauss:2")
        self.assertEqual(rows, [row[::-1] for row in rows])
        self.assertEqual(rows, rows[::-1])
        line = [rows[2][x][1] for x in (3, 4, 5, 6)]
        self.assertEqual(line, sorted(line, reverse=True))
        self.assertEqual(line[3], 0)

    def test_alpha_is_filtered_when_asked_for(self):
        half = self.write("half.png", picture(9, 9, lambda x, y: (200, 40, 10, 255) if x < 4 else (0, 255, 0, 0)))
        kept = self.made("convolve", half, "--kernel", "gauss:1")
        self.assertEqual([kept[4][x][3] for x in (3, 4)], [255, 0])
        rows = self.made("convolve", half, "--kernel", "gauss:1", "--alpha")
        self.assertTrue(0 < rows[4][4][3] < rows[4][3][3] < 255)
        for x in (2, 3, 4):  # nothing of the hidden green shows
            self.assertTrue(all(abs(a - b) < 4 for a, b in zip(rows[4][x], (200, 40, 10))), rows[4][x])

    def test_every_depth(self):
        for depth in ("8", "16", "float"):
            rows = self.made("convolve", self.red, "--kernel", "gauss:1", "--depth", depth)
            self.assertLessEqual(abs((rows[3][4][0] >> (0 if depth == "8" else 8)) - 200), 1)

    def test_standard_input_holds_the_picture_or_the_kernel(self):
        with open(self.red, "rb") as file:
            content = file.read()
        wanted = self.made("convolve", self.red, "--kernel", "sharpen")
        self.assertEqual(wanted, self.made("convolve", "-", "--kernel", "sharpen", input=content))
        self.assertEqual(wanted, self.made("convolve", self.red, "--kernel", "-", "--normalise",
                                           input=b"0 -1 0 -1 5 -1 0 -1 0"))

    def test_what_is_refused(self):
        c = ("convolve", self.red)
        for words, part in ((c, "--kernel"), (("convolve", "-", "--kernel", "-"), "once"),
                            (c + ("--kernel", "gauss:"), "gauss:"), (c + ("--kernel", "gauss:-1"), "from 0 to 127"),
                            (c + ("--kernel", "gauss:200"), "from 0 to 127"), (c + ("--kernel", "gauss:x"), "number")):
            self.assertIn(part, self.refused(2, *words), words)
        for text, part in (("1 2 3 4", "4 numbers"), ("1 2 3", "3 numbers"), (" ", "0 numbers"), ("", "empty"),
                           ("1 2 3\n4 5 6\n7 8 x", "line 3: x"), ("1.5", "1.5"), ("4294967296", "32 bits"),
                           ("1 " * 66049, "255"), ("\x01\x02", "no text")):
            self.assertIn(part, self.refused(1, *c, "--kernel", self.kernel(text)), text[:20])
        self.assertEqual(self.refused(1, *c, "--kernel", "none.txt"), "none.txt: No such file or directory")
        self.assertEqual(self.refused(1, "convolve", "none.png", "--kernel", "edges"),
                         "none.png: No such file or directory")


class Crossfade(Filters):
    def setUp(self):
        super().setUp()
        self.blue = self.write("blue.png", picture(9, 7, lambda x, y: (0, 0, 250, 255)))

    def test_the_ends_are_the_pictures(self):
        for more in ((), ("--premultiplied",)):
            self.assertEqual(self.made("crossfade", self.soft, self.blue, "--at", "0", *more)[3][4], (200, 40, 10, 120))
            self.assertEqual(self.made("crossfade", self.soft, self.blue, "--at", "1", *more)[3][4], (0, 0, 250, 255))

    def test_between_them_colours_mix(self):
        for more in ((), ("--premultiplied",)):
            self.assertEqual(self.made("crossfade", self.red, self.blue, "--at", "0.25", *more)[3][4], (150, 30, 70, 255))

    def test_what_is_transparent_lends_no_colour_unless_premultiplied(self):
        self.assertEqual(self.made("crossfade", self.soft, self.blue, "--at", "0.5")[3][0], (0, 0, 250, 128))
        self.assertEqual(self.made("crossfade", self.soft, self.blue, "--at", "0.5", "--premultiplied")[3][0],
                         (100, 20, 130, 128))

    def test_every_depth(self):
        for depth in ("8", "16", "float"):
            row = self.made("crossfade", self.red, self.blue, "--at", "0.5", "--depth", depth)[3]
            self.assertEqual([v >> (0 if depth == "8" else 8) for v in row[4]], [100, 20, 130, 255])

    def test_what_is_refused(self):
        c = ("crossfade", self.red, self.blue)
        for words, part in ((c, "--at"), (c + ("--at", "1.5"), "from 0 to 1"), (c + ("--at", "nan"), "--at"),
                            (("crossfade", self.red, "--at", "1"), "B"), (("crossfade", "-", "-", "--at", "0"), "once")):
            self.assertIn(part, self.refused(2, *words), words)
        self.assertIn("two of one size", self.refused(1, "crossfade", self.red, self.dot, "--at", "0.5"))
        self.assertEqual(self.refused(1, "crossfade", self.red, "none.png", "--at", "0.5"),
                         "none.png: No such file or directory")

    def test_the_output_is_asked_for(self):
        self.assertIn("-o OUT", self.bad(2, "crossfade", self.red, self.blue, "--at", "0"))
        self.assertIn("-o OUT", self.bad(2, "convolve", self.red, "--kernel", "edges"))


if __name__ == "__main__":
    main()
