"""What the tool's tests share: running rk, and making and reading small pictures with the standard library alone."""
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

RK = os.path.abspath(sys.argv[1]) if len(sys.argv) > 1 else "rk"
SOURCE = os.path.abspath(sys.argv[2]) if len(sys.argv) > 2 else "."


def rk(*words, **options):
    """Runs rk; never through a shell. Returns the finished process with bytes in stdout and stderr."""
    return subprocess.run([RK, *map(str, words)], capture_output=True, timeout=options.pop("timeout", 120), **options)


class ToolTest(unittest.TestCase):
    """A test with a folder of its own."""

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="rk-test-")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content)
        return self.path(name)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def good(self, *words, **options):
        done = rk(*words, **options)
        self.assertEqual((done.returncode, done.stderr.decode()), (0, ""), words)
        return done.stdout

    def bad(self, status, *words, **options):
        """Runs rk, which must fail with the status and one line that begins with "rk: "; returns the line."""
        done = rk(*words, **options)
        line = done.stderr.decode()
        self.assertEqual(done.returncode, status, (words, line))
        self.assertTrue(line.startswith("rk: ") and line.endswith("\n") and line.count("\n") == 1, (words, line))
        return line[4:-1]

    def convert(self, source, target, *more):
        """A picture in another format: nothing laid on it."""
        self.good("composite", source, source, "--opacity", "0", "-o", target, "-q", *more)


# ---- PNG ----------------------------------------------------------------------------------------------------

def chunk(kind, content):
    return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))


def png(width, height, samples, bits=8, colour=6, extra=b"", interlaced=False, level=9):
    """samples: a flat list, channel after channel; below 8 bits one sample a pixel."""
    channels = {0: 1, 2: 3, 3: 1, 4: 2, 6: 4}[colour]

    def scanlines(columns, rows):
        out = bytearray()
        for y in rows:
            line = [samples[(y * width + x) * channels + c] for x in columns for c in range(channels)]
            out.append(0)
            if bits == 16:
                out += struct.pack(">%dH" % len(line), *line)
            elif bits == 8:
                out += bytes(line)
            else:
                text = "".join(format(value, "0%db" % bits) for value in line)
                text += "0" * (-len(text) % 8)
                out += bytes(int(text[i:i + 8], 2) for i in range(0, len(text), 8))
        return bytes(out)

    if interlaced:
        passes = ((0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2), (0, 1, 1, 2))
        data = b"".join(scanlines(range(x, width, dx), range(y, height, dy))
                        for x, y, dx, dy in passes if x < width and y < height)
    else:
        data = scanlines(range(width), range(height))
    header = struct.pack(">IIBBBBB", width, height, bits, colour, 0, 0, 1 if interlaced else 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + extra + chunk(b"IDAT", zlib.compress(data, level)) +
            chunk(b"IEND", b""))


def big_png(side):
    """A large RGBA picture, quickly made and small on disk."""
    row = b"\0" + bytes(i * 5 % 251 for i in range(side * 4))
    header = struct.pack(">IIBBBBB", side, side, 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(row * side, 1)) +
            chunk(b"IEND", b""))


def read_png(content):
    """(width, height, bits, flat samples) of an RGBA file that rk wrote."""
    at, data, width, height, bits = 8, b"", 0, 0, 0
    while at < len(content):
        length, kind = struct.unpack(">I4s", content[at:at + 8])
        body = content[at + 8:at + 8 + length]
        assert struct.unpack(">I", content[at + 8 + length:at + 12 + length])[0] == zlib.crc32(kind + body)
        if kind == b"IHDR":
            width, height, bits, colour, _, _, interlace = struct.unpack(">IIBBBBB", body)
            assert colour == 6 and interlace == 0
        elif kind == b"IDAT":
            data += body
        at += length + 12
    data = zlib.decompress(data)
    pixel = bits // 2
    stride = width * pixel
    before, rows = bytearray(stride), bytearray()
    for y in range(height):
        kind, line = data[y * (stride + 1)], bytearray(data[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for i in range(stride):
            left = line[i - pixel] if i >= pixel else 0
            up = before[i]
            corner = before[i - pixel] if i >= pixel else 0
            if kind == 4:
                estimate = left + up - corner
                nearest = min((abs(estimate - left), 0, left), (abs(estimate - up), 1, up),
                              (abs(estimate - corner), 2, corner))[2]
            line[i] = line[i] + (0, left, up, (left + up) // 2, nearest if kind == 4 else 0)[kind] & 255
        before = line
        rows += line
    if bits == 16:
        return width, height, bits, list(struct.unpack(">%dH" % (len(rows) // 2), bytes(rows)))
    return width, height, bits, list(rows)


# ---- TIFF ---------------------------------------------------------------------------------------------------

def tiff(width, height, samples, bits=8, channels=3, floating=False, photometric=2, extra=None, planar=False,
         tile=None, orientation=None, order="<", rows_per_strip=None, palette=None):
    """An uncompressed file of a flat list of samples."""
    code = {8: "B", 16: "e" if floating else "H", 32: "f"}[bits] if bits >= 8 else None

    def pack(values):
        if code:
            return struct.pack("%s%d%s" % (order, len(values), code), *values)
        text = "".join(format(value, "0%db" % bits) for value in values)
        text += "0" * (-len(text) % 8)
        return bytes(int(text[i:i + 8], 2) for i in range(0, len(text), 8))

    def sample(x, y, c):
        return samples[(y * width + x) * channels + c] if x < width and y < height else 0

    planes = [[c] for c in range(channels)] if planar else [list(range(channels))]
    blocks = []
    for plane in planes:
        if tile:
            for top in range(0, height, tile):
                for left in range(0, width, tile):
                    blocks.append(b"".join(pack([sample(x, y, c) for x in range(left, left + tile) for c in plane])
                                           for y in range(top, top + tile)))
        else:
            step = rows_per_strip or height
            for top in range(0, height, step):
                blocks.append(b"".join(pack([sample(x, y, c) for x in range(width) for c in plane])
                                       for y in range(top, min(top + step, height))))
    body, offsets = b"", []
    for block in blocks:
        offsets.append(8 + len(body))
        body += block
    body += b"\0" * (len(body) % 2)

    entries = {256: ("I", [width]), 257: ("I", [height]), 258: ("H", [bits] * channels), 259: ("H", [1]),
               262: ("H", [photometric]), 277: ("H", [channels]), 284: ("H", [2 if planar else 1]),
               339: ("H", [3 if floating else 1] * channels)}
    if tile:
        entries.update({322: ("I", [tile]), 323: ("I", [tile]), 324: ("I", offsets),
                        325: ("I", [len(block) for block in blocks])})
    else:
        entries.update({273: ("I", offsets), 278: ("I", [rows_per_strip or height]),
                        279: ("I", [len(block) for block in blocks])})
    if extra is not None:
        entries[338] = ("H", [extra])
    if orientation:
        entries[274] = ("H", [orientation])
    if palette:
        entries[320] = ("H", palette)
    directory = 8 + len(body)
    after = directory + 2 + 12 * len(entries) + 4
    records, tail = b"", b""
    for tag, (kind, values) in sorted(entries.items()):
        content = struct.pack("%s%d%s" % (order, len(values), kind), *values)
        if len(content) > 4:
            place = struct.pack(order + "I", after + len(tail))
            tail += content + b"\0" * (len(content) % 2)
        else:
            place = content.ljust(4, b"\0")
        records += struct.pack(order + "HHI", tag, {"H": 3, "I": 4}[kind], len(values)) + place
    head = (b"II*\0" if order == "<" else b"MM\0*") + struct.pack(order + "I", directory)
    return head + body + struct.pack(order + "H", len(entries)) + records + b"\0\0\0\0" + tail


def main():
    unittest.main(argv=[sys.argv[0]] + sys.argv[3:], verbosity=1)
