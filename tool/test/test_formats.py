"""Picture files in and out: every depth, colour type and alpha kind, the way there and back."""
import json
import random
import struct

from harness import ToolTest, chunk, main, png, read_png, rk, tiff


def random_rgba(count, seed, full=255, step=1, least_alpha=0):
    numbers = random.Random(seed)
    samples = []
    for _ in range(count):
        samples += [numbers.randrange(full // step + 1) * step for _ in range(3)]
        samples.append(max(least_alpha, numbers.choice([0, full, numbers.randrange(full // step + 1) * step])))
    return samples


class RoundTrips(ToolTest):
    def through(self, content, *ways, depth="16"):
        """The samples after a trip through files of the given extensions, last into PNG."""
        source = self.write("source.png", content)
        for i, way in enumerate(ways):
            target = self.path("way%d.%s" % (i, way))
            self.convert(source, target, "--depth", depth)
            source = target
        self.convert(source, self.path("end.png"), "--depth", depth)
        return read_png(self.read("end.png"))

    def test_8_bit_png_and_tiff_keep_every_byte(self):
        samples = random_rgba(37 * 11, 1)
        for ways in ([], ["tif"], ["png", "tif", "png"]):
            self.assertEqual(self.through(png(37, 11, samples), *ways, depth="8"), (37, 11, 8, samples), ways)

    def test_8_bits_through_half_float_exr_keep_every_byte_where_alpha_is(self):
        samples = random_rgba(37 * 11, 2, least_alpha=1)
        self.convert(self.write("a.png", png(37, 11, samples)), self.path("a.exr"))
        info = json.loads(self.good("info", "--json", self.path("a.exr")))
        self.assertEqual((info["bits"], info["float"], info["alpha"]), (16, True, "premultiplied"))
        self.convert(self.path("a.exr"), self.path("b.png"), "--depth", "8")
        self.assertEqual(read_png(self.read("b.png")), (37, 11, 8, samples))

    def test_16_bit_steps_of_255_survive_every_format(self):
        samples = random_rgba(29 * 7, 3, 65535, 257, 257)
        for ways in ([], ["tif"], ["exr"], ["exr", "tif", "exr"]):
            self.assertEqual(self.through(png(29, 7, samples, 16), *ways), (29, 7, 16, samples), ways)

    def test_all_256_steps_of_255_survive_16_bits(self):
        samples = [v * 257 for c in range(256) for v in (c, 255 - c, c, 255)]
        self.assertEqual(self.through(png(256, 1, samples, 16)), (256, 1, 16, samples))

    def test_a_16_bit_file_settles_after_one_trip(self):
        samples = random_rgba(64 * 16, 4, 65535)
        once = self.through(png(64, 16, samples, 16))
        self.assertLessEqual(max(abs(a - b) for a, b in zip(once[3], samples)), 2)
        self.assertEqual(self.through(png(64, 16, once[3], 16)), once)
        self.assertEqual(self.through(png(64, 16, once[3], 16), "tif"), once)

    def test_float_tiff_and_exr_keep_float_values(self):
        values = [0.0, 1.0, 0.1, 2.5, -0.25, 1e-6, 1000.0, 0.33333]
        samples = [value for v in values for value in (v, v / 2, 1.0 - v, 1.0)]
        source = self.write("a.tif", tiff(8, 1, samples, 32, 4, True, extra=2))
        self.convert(source, self.path("b.exr"))
        self.convert(self.path("b.exr"), self.path("c.tif"))
        self.convert(source, self.path("d.tif"))
        self.assertEqual(self.read("c.tif"), self.read("d.tif"))
        self.assertEqual(json.loads(self.good("info", "--json", self.path("c.tif")))["depth"], "float")

    def test_jpeg_in_and_out_stays_near(self):
        samples = [v for y in range(32) for x in range(32) for v in (x * 8, y * 8, 128, 255)]
        self.write("a.png", png(32, 32, samples))
        self.convert(self.path("a.png"), self.path("a.jpg"))
        self.convert(self.path("a.jpg"), self.path("b.png"))
        _, _, _, after = read_png(self.read("b.png"))
        self.assertLessEqual(max(abs(a - b) for a, b in zip(after, samples)), 8)
        self.convert(self.path("a.png"), self.path("small.jpg"), "--quality", "10")
        self.assertLess(len(self.read("small.jpg")), len(self.read("a.jpg")))

    def test_one_pixel_and_odd_sizes(self):
        for width, height in ((1, 1), (1, 9), (17, 1), (3, 5)):
            samples = random_rgba(width * height, 5, least_alpha=1)
            for way in ("png", "tif", "exr"):
                self.write("s.png", png(width, height, samples))
                self.convert(self.path("s.png"), self.path("s." + way), "--depth", "8")
                self.convert(self.path("s." + way), self.path("e.png"), "--depth", "8")
                self.assertEqual(read_png(self.read("e.png")), (width, height, 8, samples), (width, height, way))

    def test_the_same_call_writes_the_same_bytes(self):
        self.write("s.png", png(9, 9, random_rgba(81, 6)))
        for way in ("png", "tif", "exr"):
            self.convert(self.path("s.png"), self.path("1." + way))
            self.convert(self.path("s.png"), self.path("2." + way))
            self.assertEqual(self.read("1." + way), self.read("2." + way))


class PngKinds(ToolTest):
    def rgba(self, content):
        self.write("in.png", content)
        self.convert(self.path("in.png"), self.path("out.png"))
        return read_png(self.read("out.png"))[3]

    def test_grey_of_every_depth(self):
        for bits, full in ((1, 1), (2, 3), (4, 15), (8, 255)):
            values = [i % (full + 1) for i in range(7 * 3)]
            wanted = [v for value in values for v in [value * 255 // full] * 3 + [255]]
            self.assertEqual(self.rgba(png(7, 3, values, bits, 0)), wanted, bits)
        values = [i * 257 for i in range(21)]
        self.assertEqual(self.rgba(png(7, 3, values, 16, 0)), [v for value in values for v in [value] * 3 + [65535]])

    def test_grey_and_alpha(self):
        self.assertEqual(self.rgba(png(2, 1, [9, 80, 200, 0], 8, 4)), [9, 9, 9, 80, 200, 200, 200, 0])

    def test_palette_with_and_without_alpha(self):
        palette = chunk(b"PLTE", bytes([1, 2, 3, 40, 50, 60, 255, 0, 7]))
        self.assertEqual(self.rgba(png(3, 1, [2, 0, 1], 2, 3, palette)), [255, 0, 7, 255, 1, 2, 3, 255, 40, 50, 60, 255])
        alpha = palette + chunk(b"tRNS", bytes([128, 0]))
        self.assertEqual(self.rgba(png(3, 1, [2, 0, 1], 8, 3, alpha)), [255, 0, 7, 255, 1, 2, 3, 128, 40, 50, 60, 0])

    def test_a_transparent_colour(self):
        key = chunk(b"tRNS", struct.pack(">HHH", 1, 2, 3))
        self.assertEqual(self.rgba(png(2, 1, [1, 2, 3, 1, 2, 4], 8, 2, key)), [1, 2, 3, 0, 1, 2, 4, 255])

    def test_interlaced(self):
        samples = random_rgba(13 * 9, 7)
        self.assertEqual(self.rgba(png(13, 9, samples, interlaced=True)), samples)

    def test_info_tells_the_kind(self):
        palette = chunk(b"PLTE", bytes([1, 2, 3]))
        exif = chunk(b"eXIf", b"MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x03\0\0\0\0\0\0")
        for content, wanted in (
                (png(7, 1, [0] * 7, 1, 0), ("grey", 1, "none")), (png(1, 1, [0, 0], 8, 4), ("grey and alpha", 8, "straight")),
                (png(1, 1, [0], 4, 3, palette), ("palette", 4, "none")),
                (png(1, 1, [0], 8, 3, palette + chunk(b"tRNS", b"\0")), ("palette", 8, "straight")),
                (png(1, 1, [0] * 3, 16, 2), ("RGB", 16, "none")), (png(1, 1, [0] * 4, 8, 6, exif), ("RGBA", 8, "straight"))):
            info = json.loads(self.good("info", "--json", self.write("a.png", content)))
            self.assertEqual((info["colour"], info["bits"], info["alpha"]), wanted)
        self.assertEqual(info["orientation"], 3)


class TiffKinds(ToolTest):
    def rgba(self, content, *more):
        self.write("in.tif", content)
        self.convert(self.path("in.tif"), self.path("out.png"), *more)
        return read_png(self.read("out.png"))[3]

    def test_strips_tiles_planes_and_both_byte_orders(self):
        samples = random_rgba(21 * 19, 8)
        for options in ({}, {"rows_per_strip": 4}, {"tile": 16}, {"planar": True}, {"planar": True, "rows_per_strip": 5},
                        {"planar": True, "tile": 16}, {"order": ">"}):
            self.assertEqual(self.rgba(tiff(21, 19, samples, 8, 4, extra=2, **options)), samples, options)
        deep = [v * 257 for v in samples]
        for options in ({"order": ">"}, {"order": "<", "planar": True, "tile": 16}):
            self.assertEqual(self.rgba(tiff(21, 19, deep, 16, 4, extra=2, **options)), deep, options)

    def test_associated_alpha_is_divided_out(self):
        samples = [64, 32, 0, 128, 10, 20, 30, 0, 1, 2, 3, 255]
        self.assertEqual(self.rgba(tiff(3, 1, samples, 8, 4, extra=1)), [128, 64, 0, 128, 0, 0, 0, 0, 1, 2, 3, 255])
        self.assertEqual(json.loads(self.good("info", "--json", self.path("in.tif")))["alpha"], "premultiplied")

    def test_an_extra_channel_of_unknown_meaning_is_no_alpha(self):
        self.assertEqual(self.rgba(tiff(1, 1, [9, 8, 7, 0], 8, 4, extra=0)), [9, 8, 7, 255])
        self.assertEqual(json.loads(self.good("info", "--json", self.path("in.tif")))["alpha"], "none")

    def test_grey_both_ways_up_and_with_alpha(self):
        self.assertEqual(self.rgba(tiff(2, 1, [9, 200], 8, 1, photometric=1)), [9, 9, 9, 255, 200, 200, 200, 255])
        self.assertEqual(self.rgba(tiff(2, 1, [9, 200], 8, 1, photometric=0)), [246, 246, 246, 255, 55, 55, 55, 255])
        self.assertEqual(self.rgba(tiff(1, 1, [9, 77], 8, 2, photometric=1, extra=2)), [9, 9, 9, 77])

    def test_one_bit_and_palette(self):
        self.assertEqual(self.rgba(tiff(3, 1, [1, 0, 1], 1, 1, photometric=1)), [255] * 4 + [0, 0, 0, 255] + [255] * 4)
        palette = [v * 257 for plane in ((1, 40), (2, 50), (3, 60)) for v in list(plane) + [0] * 14]
        self.assertEqual(self.rgba(tiff(2, 1, [1, 0], 4, 1, photometric=3, palette=palette)),
                         [40, 50, 60, 255, 1, 2, 3, 255])

    def test_half_and_full_float(self):
        samples = [0.0, 0.5, 1.0, 1.0]
        for bits in (16, 32):
            self.assertEqual(self.rgba(tiff(1, 1, samples, bits, 4, True, extra=2)), [0, 32768, 65535, 65535], bits)

    def test_an_orientation_is_told_and_not_applied(self):
        samples = random_rgba(6, 9)
        for orientation in (3, 6):
            self.write("a.tif", tiff(3, 2, samples, 8, 4, extra=2, orientation=orientation))
            self.convert(self.path("a.tif"), self.path("a.png"))
            self.assertEqual(read_png(self.read("a.png")), (3, 2, 8, samples))
        self.write("p.tif", tiff(3, 1, [1, 0, 0], 1, 1, photometric=1, orientation=3))
        self.convert(self.path("p.tif"), self.path("p.png"))
        self.assertEqual(read_png(self.read("p.png"))[3][:4], [255] * 4)

    def test_kinds_that_are_not_read_say_so(self):
        self.write("c.tif", tiff(1, 1, [0] * 4, 8, 4, photometric=5))
        self.assertIn("CMYK", self.bad(1, "composite", self.path("c.tif"), self.path("c.tif"), "-o", self.path("o.png")))


class ExrKinds(ToolTest):
    """Files laid out here: uncompressed scan lines."""

    def exr(self, display, data, channels, rows, kind=2):
        """rows: for each row, for each channel in alphabetical order, its values. kind 1 is half, 2 float, 0 uint."""
        def attribute(name, form, content):
            return name + b"\0" + form + b"\0" + struct.pack("<i", len(content)) + content

        listing = b"".join(name + b"\0" + struct.pack("<iBxxxii", kind, 0, 1, 1) for name in channels) + b"\0"
        head = (b"\x76\x2f\x31\x01\x02\0\0\0" + attribute(b"channels", b"chlist", listing) +
                attribute(b"compression", b"compression", b"\0") +
                attribute(b"dataWindow", b"box2i", struct.pack("<4i", *data)) +
                attribute(b"displayWindow", b"box2i", struct.pack("<4i", *display)) +
                attribute(b"lineOrder", b"lineOrder", b"\0") +
                attribute(b"pixelAspectRatio", b"float", struct.pack("<f", 1)) +
                attribute(b"screenWindowCenter", b"v2f", struct.pack("<2f", 0, 0)) +
                attribute(b"screenWindowWidth", b"float", struct.pack("<f", 1)) + b"\0")
        code = {0: "I", 1: "e", 2: "f"}[kind]
        lines = [b"".join(struct.pack("<%d%s" % (len(v), code), *v) for v in row) for row in rows]
        at = len(head) + 8 * len(lines)
        table, body = b"", b""
        for i, line in enumerate(lines):
            table += struct.pack("<Q", at + len(body))
            body += struct.pack("<ii", data[1] + i, len(line)) + line
        return head + table + body

    def rgba(self, content):
        self.write("in.exr", content)
        self.convert(self.path("in.exr"), self.path("out.png"), "--depth", "8")
        return read_png(self.read("out.png"))

    def test_rgb_without_alpha_is_opaque(self):
        content = self.exr((0, 0, 1, 0), (0, 0, 1, 0), [b"B", b"G", b"R"], [[(0, 1), (0.5, 0), (1, 2)]])
        self.assertEqual(self.rgba(content)[3], [255, 128, 0, 255, 255, 0, 255, 255])

    def test_premultiplied_colour_is_divided_out(self):
        content = self.exr((0, 0, 1, 0), (0, 0, 1, 0), [b"A", b"B", b"G", b"R"],
                           [[(0.5, 0), (0.25, 1), (0.5, 1), (0, 1)]])
        self.assertEqual(self.rgba(content)[3], [0, 255, 128, 128, 0, 0, 0, 0])

    def test_luminance_alone_is_grey(self):
        for kind in (1, 2):
            content = self.exr((0, 0, 1, 0), (0, 0, 1, 0), [b"Y"], [[(0, 1)]], kind)
            self.assertEqual(self.rgba(content)[3], [0, 0, 0, 255, 255, 255, 255, 255])

    def test_the_display_window_is_the_picture(self):
        # A data window that leaves a row and a column free and hangs over on the other side.
        content = self.exr((10, 20, 12, 21), (11, 21, 14, 22), [b"B", b"G", b"R"],
                           [[(0,) * 4, (0,) * 4, (0.2, 0.4, 0.6, 0.8)], [(0,) * 4, (0,) * 4, (1,) * 4]])
        width, height, _, samples = self.rgba(content)
        self.assertEqual((width, height), (3, 2))
        self.assertEqual(samples, [0] * 12 + [0] * 4 + [51, 0, 0, 255] + [102, 0, 0, 255])

    def test_a_data_window_far_from_the_display_window_is_all_transparent(self):
        for data in ((-900, -900, -900, -900), (2000000, 5, 2000000, 5)):
            content = self.exr((0, 0, 1, 0), data, [b"Y"], [[(1,)]])
            self.assertEqual(self.rgba(content)[3], [0] * 8)

    def test_files_that_hold_no_picture_say_so(self):
        out = self.path("o.png")
        for channels, kind, cause in (([b"Z"], 2, "channels"), ([b"R"], 0, "whole numbers")):
            self.write("n.exr", self.exr((0, 0, 0, 0), (0, 0, 0, 0), channels, [[(1,)]], kind))
            self.assertIn(cause, self.bad(1, "composite", self.path("n.exr"), self.path("n.exr"), "-o", out))


class JpegKinds(ToolTest):
    def test_orientation_is_told_and_noted(self):
        self.write("a.png", png(8, 8, [128, 128, 128, 255] * 64))
        self.convert(self.path("a.png"), self.path("a.jpg"))
        exif = b"Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0"
        plain = self.read("a.jpg")
        turned = plain[:2] + b"\xff\xe1" + struct.pack(">H", len(exif) + 2) + exif + plain[2:]
        self.write("t.jpg", turned)
        self.assertIn(b"EXIF orientation 6 (not applied)", self.good("info", self.path("t.jpg")))
        done = rk("composite", self.path("t.jpg"), self.path("a.png"), "-o", self.path("o.png"))
        self.assertEqual(done.returncode, 0)
        self.assertIn(b"orientation 6 is not applied", done.stderr)
        self.good("composite", self.path("t.jpg"), self.path("a.png"), "-o", self.path("o.png"), "-q")

    def test_transparent_results_need_flatten(self):
        self.write("a.png", png(1, 1, [255, 0, 0, 128]))
        line = self.bad(1, "composite", self.path("a.png"), self.path("a.png"), "-o", self.path("o.jpg"), "--mode", "copy")
        self.assertIn("--flatten", line)
        self.good("composite", self.path("a.png"), self.path("a.png"), "-o", self.path("o.png"), "--mode", "copy",
                  "--flatten", "#0000ff")
        self.assertEqual(read_png(self.read("o.png"))[3], [128, 0, 127, 255])


if __name__ == "__main__":
    main()
