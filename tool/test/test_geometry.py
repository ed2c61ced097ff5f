"""transform, resize, halve and boxmean: what they draw, and what they refuse."""
import json
import os

from harness import ToolTest, main, png, read_png, rk


def flat(width, height, pixel):
    return png(width, height, list(pixel) * (width * height))


def gradient(width, height):
    """Opaque; neighbours differ."""
    return png(width, height, [v for y in range(height) for x in range(width)
                               for v in ((x * 37 + y * 11) % 256, (x * 5 + y * 71) % 256, x * y % 256, 255)])


class Geometry(ToolTest):
    def setUp(self):
        super().setUp()
        self.square = self.write("square.png", gradient(24, 24))
        self.wide = self.write("wide.png", gradient(31, 17))
        self.red = self.write("red.png", flat(9, 7, (200, 40, 10, 255)))
        self.dot = self.write("dot.png", flat(1, 1, (1, 2, 3, 255)))
        os.mkdir(self.path("made"))
        self.out = self.path("made/out.png")

    def samples(self, name):
        with open(name, "rb") as file:
            return read_png(file.read())

    def made(self, *words):
        """(width, height, rows of pixels) of the result."""
        self.good(*words, "-o", self.out)
        width, height, _, samples = self.samples(self.out)
        pixels = [tuple(samples[i:i + 4]) for i in range(0, len(samples), 4)]
        return width, height, [pixels[y * width:(y + 1) * width] for y in range(height)]

    def refused(self, status, *words):
        line = self.bad(status, *words, "-o", self.out)
        self.assertEqual(os.listdir(self.path("made")), [])
        return line


class Transform(Geometry):
    def test_nothing_asked_for_is_a_copy(self):
        for quality in ("draft", "best"):
            self.made("transform", self.wide, "--quality", quality)
            self.assertEqual(self.samples(self.out), self.samples(self.wide))

    def test_a_whole_shift_moves_the_pixels(self):
        _, _, was = self.made("transform", self.square)
        _, _, now = self.made("transform", self.square, "--translate", "3,-2")
        self.assertEqual(now[0][3:], was[2][:-3])
        self.assertEqual(now[0][0][3], 0)
        self.assertEqual(now[-1][5][3], 0)

    def test_a_quarter_turn_is_clockwise(self):
        _, _, was = self.made("transform", self.square)
        _, _, now = self.made("transform", self.square, "--rotate", "90", "--quality", "best")
        for y in range(1, 23):
            for x in range(1, 23):
                self.assertEqual(now[y][x], was[23 - x][y], (x, y))

    def test_four_quarter_turns_give_the_picture_back_inside(self):
        _, _, was = self.made("transform", self.square)
        now, source = None, self.square
        for turn in range(4):
            target = self.path("turn%d.png" % turn)
            self.good("transform", source, "--rotate", "90", "-o", target)
            source = target
        _, _, now = self.made("transform", source)
        for y in range(4, 20):
            self.assertEqual(now[y][4:20], was[y][4:20])
        self.good("transform", self.square, "--rotate", "-720", "-o", self.out)
        self.assertEqual(self.samples(self.out), self.samples(self.square))

    def test_the_anchor_stays_where_it_is(self):
        rows = self.made("transform", self.red, "--scale", "2,3", "--anchor", "0,0", "--size", "20x22",
                         "--quality", "draft")[2]
        self.assertEqual([[rows[y][x][3] for x in (0, 17, 18)] for y in (0, 20, 21)],
                         [[255, 255, 0], [255, 255, 0], [0, 0, 0]])

    def test_a_matrix_is_the_same_as_its_parts(self):
        one = self.made("transform", self.wide, "--scale", "1.5,2", "--anchor", "0,0", "--translate", "2.25,-1.5")
        self.assertEqual(one, self.made("transform", self.wide, "--matrix", "1.5,0,0,0,2,0,2.25,-1.5,1"))

    def test_it_is_laid_onto_a_picture_under_a_mode_an_opacity_and_a_matte(self):
        back = self.write("back.png", flat(20, 10, (0, 0, 255, 255)))
        rows = self.made("transform", self.red, "--onto", back, "--translate", "4,1")[2]
        self.assertEqual((len(rows[0]), len(rows)), (20, 10))
        self.assertEqual((rows[0][5], rows[1][4], rows[7][12], rows[8][12]),
                         ((0, 0, 255, 255), (200, 40, 10, 255), (200, 40, 10, 255), (0, 0, 255, 255)))
        self.assertEqual(self.made("transform", self.red, "--onto", back, "--opacity", "0")[2][0][0], (0, 0, 255, 255))
        for mode in ("multiply", "screen"):
            wanted = self.made("composite", back, self.red, "--mode", mode, "--opacity", "0.4", "--at", "1,2")
            self.assertEqual(wanted, self.made("transform", self.red, "--onto", back, "--translate", "1,2", "--mode", mode,
                                               "--opacity", "0.4"))
        matte = self.write("matte.png", flat(2, 2, (255, 255, 255, 255)))
        rows = self.made("transform", self.red, "--onto", back, "--scale", "1.1", "--matte", matte, "--matte-at", "3,2")[2]
        shown = {(x, y) for y in range(10) for x in range(20) if rows[y][x] != (0, 0, 255, 255)}
        self.assertEqual(shown, {(3, 2), (4, 2), (3, 3), (4, 3)})

    def test_every_depth(self):
        for depth in ("8", "16", "float"):
            for more in ((), ("--motion", "0:rotate=0; 1:rotate=50")):
                _, _, rows = self.made("transform", self.red, "--depth", depth, "--rotate", "0.5", *more)
                self.assertEqual([v >> (0 if depth == "8" else 8) for v in rows[3][4]], [200, 40, 10, 255])

    def test_a_field_is_every_other_row_of_the_result(self):
        back = self.write("back.png", flat(20, 12, (0, 0, 255, 255)))
        lay = ("transform", self.red, "--onto", back, "--scale", "1.3", "--rotate", "4")
        whole, plain = self.made(*lay)[2], self.made("transform", back)[2]
        for names, drawn in ((("upper", "even"), 0), (("lower", "odd"), 1)):
            for name in names:
                rows = self.made(*lay, "--field", name)[2]
                self.assertEqual(rows, [(whole if y % 2 == drawn else plain)[y] for y in range(12)], name)
        self.assertEqual(self.made(*lay, "--field", "both")[2], whole)

    def test_every_kind_of_matte(self):
        back = self.write("back.png", flat(9, 7, (0, 0, 255, 255)))
        matte = self.write("matte.png", png(2, 1, [255, 255, 255, 255, 255, 255, 255, 0]))
        shown = {}
        for kind in ("alpha", "inverted-alpha", "luma", "inverted-luma"):
            rows = self.made("transform", self.red, "--onto", back, "--matte", matte, "--matte-at", "4,3",
                             "--matte-kind", kind)[2]
            shown[kind] = {(x, y) for y in range(7) for x in range(9) if rows[y][x] == (200, 40, 10, 255)}
        self.assertEqual((shown["alpha"], shown["luma"]), ({(4, 3)}, {(4, 3)}))
        self.assertEqual(shown["inverted-alpha"], shown["inverted-luma"])
        # Rows outside an inverted matte show all, and so do the columns beside it.
        self.assertEqual(shown["inverted-alpha"], {(x, y) for y in range(7) for x in range(9)} - {(4, 3)})

    def test_figures_as_json(self):
        back = self.write("back.png", flat(20, 12, (0, 0, 255, 255)))
        figures = json.loads(self.good("transform", self.red, "--onto", back, "--translate", "4,1", "--anchor", "0,0",
                                       "--opacity", "0.5", "--field", "odd", "--json", "-o", self.out))
        self.assertEqual({key: figures[key] for key in figures if key != "seconds"},
                         {"output": self.out, "format": "PNG", "width": 20, "height": 12, "depth": "8",
                          "input": {"file": self.red, "width": 9, "height": 7}, "onto": back, "mode": "over",
                          "opacity": 0.5, "quality": "best", "field": "lower", "matrix": [1, 0, 0, 0, 1, 0, 4, 1, 1],
                          "drawn": {"left": 4, "top": 1, "right": 13, "bottom": 8}})
        self.assertEqual(list(figures["seconds"]), ["read", "draw", "write", "total"])
        figures = json.loads(self.good("transform", self.red, "--motion", "0:x=0;1:x=8", "--shutter", "360", "--samples",
                                       "5", "--matte", self.wide, "--json", "-o", self.out, "--quality", "draft"))
        self.assertEqual((figures["samples"], figures["matrix"][6], figures["last_matrix"][6], figures["matte"],
                          figures["quality"], figures["field"]), (5, 0, 8, self.wide, "draft", "both"))
        self.assertEqual(figures["drawn"], {"left": 0, "top": 0, "right": 9, "bottom": 7})
        self.assertIn("standard output", self.bad(2, "transform", self.red, "--json", "-o", "-", "--format", "png"))


class Places(Geometry):
    """What lies beside the result."""

    def said(self, *words):
        """What is said of a picture that is written all the same."""
        done = rk("transform", *words, "-o", self.out)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(os.path.exists(self.out))
        return done.stderr.decode()

    def test_a_picture_beside_the_result_is_told_of_and_leaves_it_as_it_was(self):
        back = self.write("back.png", flat(20, 12, (0, 0, 255, 255)))
        for words in (("--translate", "20,0"), ("--translate", "-9,0"), ("--translate", "0,12"), ("--translate", "0,-7"),
                      ("--motion", "0:x=40;1:x=90,rotate=20")):
            self.assertEqual(self.said(self.red, "--onto", back, *words),
                             "rk: note: %s: nothing of it lies on %s\n" % (self.red, back), words)
            self.assertEqual(self.samples(self.out), self.samples(back))
        self.assertEqual(self.said(self.red, "--translate", "9,0"),
                         "rk: note: %s: nothing of it lies on the result of 9x7\n" % self.red)
        self.assertEqual(set(self.samples(self.out)[3]), {0})
        self.assertEqual(self.said(self.red, "--size", "30x40", "--translate", "50,0"),
                         "rk: note: %s: nothing of it lies on the result of 30x40\n" % self.red)
        self.assertEqual(self.said(self.red, "--translate", "9,0", "-q"), "")
        figures = json.loads(rk("transform", self.red, "--translate", "9,0", "-q", "--json", "-o", self.out).stdout)
        self.assertEqual(figures["drawn"], {"left": 0, "top": 0, "right": 0, "bottom": 0})

    def test_what_touches_the_result_is_not_told_of(self):
        for words in (("--translate", "8,0"), ("--translate", "-8.5,6"), ("--motion", "0:x=40;1:x=0", "--shutter", "360"),
                      ("--scale", "3", "--translate", "17.9,0")):
            self.assertEqual(self.said(self.red, *words), "", words)
            alphas = self.samples(self.out)[3][3::4]
            self.assertNotEqual(set(alphas), {0}, words)

    def test_a_matte_beside_the_picture_is_refused_unless_it_is_inverted(self):
        self.assertEqual(self.refused(1, "transform", self.red, "--size", "90x90", "--matte", self.dot, "--matte-at", "9,0"),
                         "%s: the matte, at 9,0, does not overlap %s: nothing would show" % (self.dot, self.red))
        self.made("transform", self.red, "--size", "90x90", "--matte", self.dot, "--matte-at", "9,0", "--matte-kind",
                  "inverted-alpha")


class Motion(Geometry):
    def test_a_motion_of_equal_poses_is_the_still_picture(self):
        pose = ("--rotate", "12", "--scale", "0.9")
        self.assertEqual(self.made("transform", self.wide, *pose),
                         self.made("transform", self.wide, *pose, "--motion", "0:; 1:"))
        self.assertEqual(self.made("transform", self.wide, *pose),
                         self.made("transform", self.wide, *pose, "--motion", "0:;1:x=50", "--shutter", "0"))

    def test_a_slide_covers_the_way_of_the_open_shutter(self):
        bar = self.write("bar.png", flat(4, 5, (255, 255, 255, 255)))
        reach = []
        for shutter in ("90", "180", "360"):
            rows = self.made("transform", bar, "--size", "80x5", "--shutter", shutter, "--samples", "64",
                             "--motion", "0:x=0; 1:x=60")[2]
            reach.append(max(x for x in range(80) if rows[2][x][3] > 0))
        for found, wanted in zip(reach, (18, 33, 63)):
            self.assertLess(abs(found - wanted), 2.5)

    def test_a_motion_that_comes_back_is_blurred(self):
        still = self.made("transform", self.square)
        for keys in ("0:rotate=0; 1:rotate=360", "0:x=0; 0.5:x=12; 1:x=0"):
            self.assertNotEqual(still, self.made("transform", self.square, "--motion", keys, "--shutter", "360"), keys)

    def test_a_key_keeps_what_it_does_not_name(self):
        self.assertEqual(self.made("transform", self.wide, "--motion", "0:rotate=5,scale=0.5; 1:x=9"),
                         self.made("transform", self.wide, "--motion",
                                   " 0 : rotate = 5 , sx=.5,sy=.5,x=0 ;1:rotate=5,scale=0.5,x=9;"))


class Sizes(Geometry):
    def test_a_resize_to_the_same_size_is_a_copy(self):
        for words in (("--size", "100%"), ("--size", "31x17"), ("--size", "100%", "--quality", "draft")):
            self.made("resize", self.wide, *words)
            self.assertEqual(self.samples(self.out), self.samples(self.wide))

    def test_percent_and_pixels(self):
        for size, wanted in (("50%", (16, 9)), ("200%", (62, 34)), ("1%", (1, 1)), ("7x40", (7, 40))):
            for depth in ("8", "16", "float"):
                self.assertEqual(self.made("resize", self.wide, "--size", size, "--depth", depth)[:2], wanted)

    def test_a_flat_picture_stays_flat_inside(self):
        for size in ("40x30", "3x3"):
            rows = self.made("resize", self.red, "--size", size)[2]
            self.assertEqual(rows[len(rows) // 2][len(rows[0]) // 2], (200, 40, 10, 255))

    def test_draft_doubling_repeats_pixels(self):
        _, _, was = self.made("resize", self.wide, "--size", "100%")
        _, _, now = self.made("resize", self.wide, "--size", "200%", "--quality", "draft")
        self.assertEqual(now, [[was[y // 2][x // 2] for x in range(62)] for y in range(34)])

    def test_halving_a_flat_picture_keeps_it_flat(self):
        for depth, pixel in (("8", (200, 40, 10, 255)), ("16", tuple(v * 257 for v in (200, 40, 10, 255)))):
            width, height, rows = self.made("halve", self.red, "--depth", depth)
            self.assertEqual((width, height, rows), (4, 3, [[pixel] * 4] * 3))
        width, height, rows = self.made("halve", self.red, "--keep-odd")
        self.assertEqual((width, height, rows[1][1]), (5, 4, (200, 40, 10, 255)))
        width, height, rows = self.made("halve", self.red, "--filter", "gauss")
        self.assertEqual((width, height, rows[1][1]), (4, 3, (200, 40, 10, 255)))

    def test_halving_takes_the_mean(self):
        picture = self.write("four.png", png(2, 2, [v for c in (10, 20, 30, 40) for v in (c, c, c, 255)]))
        self.assertEqual(self.made("halve", picture)[2], [[(25, 25, 25, 255)]])

    def test_float_pictures_are_halved_at_another_depth(self):
        self.convert(self.square, self.path("float.exr"), "--depth", "float")
        self.assertIn("give --depth 8 or 16", self.refused(1, "halve", self.path("float.exr")))
        self.assertEqual(self.made("halve", self.path("float.exr"), "--depth", "16")[:2], (12, 12))

    def test_the_mean_of_a_box(self):
        self.assertEqual(self.made("boxmean", self.square, "--radius", "0"), self.made("transform", self.square))
        row = self.write("row.png", png(5, 1, [v for c in (0, 30, 60, 90, 240) for v in (c, c, c, 255)]))
        for depth, scale in (("8", 1), ("float", 257)):
            rows = self.made("boxmean", row, "--radius", "1", "--depth", depth)[2]
            for x, wanted in ((1, 30), (2, 60), (3, 130)):
                self.assertLessEqual(abs(rows[0][x][0] - wanted * scale), scale)
        middle = self.made("boxmean", self.red, "--radius", "2.5")[2][3][4]
        self.assertEqual(middle, (200, 40, 10, 255))


class Refusals(Geometry):
    def test_words_that_cannot_be_meant(self):
        t = ("transform", self.square)
        m = t + ("--motion",)
        for words, part in (
                (t + ("--rotate", "x"), "--rotate"), (t + ("--rotate", "nan"), "--rotate"),
                (t + ("--scale", "1,2,3"), "X,Y"), (t + ("--scale", "0"), "nothing would show"),
                (t + ("--translate", "1"), "X,Y"), (t + ("--translate", ",3"), "--translate: a number"), (t + ("--anchor", "1,b"), "--anchor"),
                (t + ("--matrix", "1,0,0,0,1,0,0,0"), "nine numbers"), (t + ("--matrix", "1,0,0,1,0,0,0,0,1"), "no inverse"),
                (t + ("--matrix", "1,0,0,0,1,0,0,0,1", "--rotate", "1"), "alone"),
                (t + ("--size", "0x5"), "1 to 30000"), (t + ("--size", "5"), "WxH"),
                (t + ("--size", "5x5", "--onto", self.red), "--onto"), (t + ("--quality", "good"), "draft or best"),
                (t + ("--mode", "overr"), "did you mean"), (t + ("--mode", "matte-mix"), "--matte"),
                (t + ("--matte-at", "1,1"), "--matte FILE"), (t + ("--opacity", "2"), "from 0 to 1"),
                (t + ("--shutter", "90"), "--motion"), (t + ("--samples", "9"), "--motion"),
                (m + ("0:x=1",), "two keys"), (m + ("",), "--motion"), (m + ("0:x=1;0:x=2",), "must rise"),
                (m + ("0:x=1;1",), "TIME:NAME=VALUE"), (m + ("0:x;1:x=2",), "NAME=VALUE"),
                (m + ("0:z=1;1:x=2",), "unknown"), (m + ("0:x=a;1:x=2",), "number"), (m + ("a:x=1;1:x=2",), "time"),
                (m + ("0:scale=0;1:scale=1",), "scale of 0"), (m + ("0:sx=1;1:sx=-1", "--shutter", "360", "--samples", "9"), "another number of --samples"),
                (t + ("--scale", "1,0.000001"), "nothing would show"), (t + ("--field", "top"), "upper, lower or both"), (m + ("0:;1:", "--samples", "1"), "2 to 256"),
                (m + ("0:;1:", "--shutter", "-1"), "--shutter"), (m + ("0:;1:", "--matrix", "1,0,0,0,1,0,0,0,1"), "alone"),
                (("transform", "-", "--onto", "-"), "once"), (("transform",), "IN"),
                (("resize", self.square), "--size"), (("resize", self.square, "--size", "50"), "50%"),
                (("resize", self.square, "--size", "0%"), "--size"), (("resize", self.square, "--size", "1000000%"), "30000"),
                (("resize", self.square, "--size", "axb"), "whole number"), (("resize", self.square, "--size", "5x"), "--size: a whole"),
                (("resize", self.square, "--size", "9x9", "--quality", "x"), "draft or best"),
                (("halve", self.square, "--filter", "cubic"), "box or gauss"),
                (("halve", self.square, "--depth", "float"), "8 or 16"),
                (("boxmean", self.square), "--radius"), (("boxmean", self.square, "--radius", "-1"), "--radius"),
                (("boxmean", self.square, "--radius", "1", "--jpeg-quality", "0"), "--jpeg-quality")):
            self.assertIn(part, self.refused(2, *words), words)

    def test_files_that_fail(self):
        for words in (("transform", "none.png"), ("transform", self.red, "--onto", "none.png"),
                      ("transform", self.red, "--matte", "none.png"), ("resize", "none.png", "--size", "50%"),
                      ("halve", "none.png"), ("boxmean", "none.png", "--radius", "1")):
            self.assertEqual(self.refused(1, *words), "none.png: No such file or directory")
        self.assertIn("--keep-odd", self.refused(1, "halve", self.dot))
        self.assertEqual(self.made("halve", self.dot, "--keep-odd")[:2], (1, 1))

    def test_the_output_is_asked_for(self):
        for words in (("transform", self.red), ("resize", self.red, "--size", "50%"), ("halve", self.red),
                      ("boxmean", self.red, "--radius", "1")):
            self.assertIn("-o OUT", self.bad(2, *words))

    def test_standard_input_and_output(self):
        with open(self.wide, "rb") as file:
            content = file.read()
        self.assertEqual(self.good("halve", "-", "-o", "-", "--format", "png", input=content),
                         (self.good("halve", self.wide, "-o", self.out), self.read("made/out.png"))[1])


if __name__ == "__main__":
    main()
