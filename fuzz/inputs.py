#!/usr/bin/env python3
"""Writes the inputs that the fuzzers start from: fuzz/inputs.py, from any folder.

What a fuzzer found stands beside them under a name of its own and is left alone.
"""

import pathlib
import struct
import zlib

FOLDER = pathlib.Path(__file__).resolve().parent / "inputs"


def write(fuzzer, name, data):
    path = FOLDER / fuzzer / name
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(data.encode() if isinstance(data, str) else data)


def text(content, length):
    return content.encode().ljust(length)


def function(name, number, parameters=(0, 0, 0), colours=(0, 0), option=0, style="", point=(0, 0)):
    return (text(name, 30) + text(str(number), 30) + struct.pack("<5i", *parameters, *colours)
            + struct.pack("<h", option) + text(style, 30) + struct.pack("<2fi", *point, 0))


def helper_answers():
    def need(width, height, number=1):
        return struct.pack("<BBhh", number, 0, width, height)

    def read_done(error, width, height, block, number=1, message=b""):
        return (struct.pack("<BBBhhhBB", number, 2, error, width, height, 24, block, len(message))
                + message)

    def write_done(error, message=b"", number=2):
        return struct.pack("<BBBB", number, 3, error, len(message)) + message

    def helper(*packets, how=1, status=0, ready=True):
        return (bytes([0 if ready else 1, len(packets)]) + b"".join(packets)
                + bytes([how, status]))

    ask = b"\1\1"
    good = [need(8, 8), read_done(0, 8, 8, 1)]
    write("helper_answers", "read-and-written", ask + helper(*good, write_done(0)))
    write("helper_answers", "cannot-write", ask + helper(*good, write_done(5, b"the disk is full")))
    write("helper_answers", "second-block", ask + helper(need(8, 8), need(9, 9),
                                                         read_done(0, 9, 9, 2)))
    write("helper_answers", "unreadable", ask + helper(read_done(1, 0, 0, 0, 1, b"no\xc3\xa9\x1b[")))
    write("helper_answers", "too-large", ask + helper(need(32767, 32767), read_done(2, 0, 0, 0)))
    write("helper_answers", "larger-than-its-block", ask + helper(need(8, 8),
                                                                  read_done(0, 999, 999, 1)))
    write("helper_answers", "died", ask + helper(need(8, 8), how=2, status=11) + helper(*good))
    write("helper_answers", "never-ready", ask + helper(*good, ready=False) * 3)
    def with_metadata(orientation, count, block=1):
        return struct.pack("<BBBhhBBi", 1, 6, 0, 8, 8, block, orientation, count)

    both = b"\3\1"
    write("helper_answers", "metadata", both + helper(need(8, 8), with_metadata(6, 100)))
    write("helper_answers", "metadata-unasked", ask + helper(need(8, 8), with_metadata(6, 100)))
    write("helper_answers", "metadata-without-end", both + helper(need(8, 8),
                                                                  with_metadata(1, -1)))
    write("helper_answers", "many-blocks", ask + helper(*[need(2, 2)] * 20))


def function_lists():
    contrast = function("Contrast", 2, (60, 0, 0))
    lens = function("Lens", 27, (50, 50, 0), point=(12.5, 40))
    resize = function("Resize", 59, (40, 30, 1), option=-1)
    turn = function("Rotate Intelligently", 70, option=-1)
    glass = function("Glass", 39, (1, 0, 0), style="squary")
    replace = function("Replace", 21, (30, 0, 0), (0x0000FF, 0xFF8000))
    write("function_lists", "one-row", contrast)
    write("function_lists", "many-rows", contrast + lens + resize + turn + glass + replace)
    write("function_lists", "cut-short", contrast + resize[:100])
    write("function_lists", "resize-to-nothing", function("Resize", 59, (0, 0, 0))
          + function("Resize", 59, (-5, 7, 1)) + contrast)
    write("function_lists", "not-a-number", function("Lens", 27, (1, 2, 3),
                                                     point=(float("nan"), float("inf"))) + contrast)


def picture_lists():
    paths = ["/pictures/first.jpg", "/pictures/no extension", "relative.PNG", "/", ".hidden",
             "/folder/", "/pictures/second.jpg", "x" * 150, ""]
    write("picture_lists", "paths", b"".join(text(path, 150) for path in paths))
    write("picture_lists", "cut-short", text("/pictures/first.jpg", 150) + b"/pictures/second.tif" * 4)


def settings():
    texts = [text(each, 256) for each in ("Sample", "/home/me/pictures", "/home/me", "/tmp")]
    numbers = struct.pack("<hBh7iB", 8, 1, 0, 9600, 7200, 100, 200, 300, 400, 500, 1)
    write("settings", "ordinary", b"".join(texts) + numbers)
    write("settings", "maximized", b"".join(texts)
          + struct.pack("<hBh7iB", 17, 0, -1, -1, 2**31 - 1, -2**31, 0, 0, 0, 0, 7))
    write("settings", "longer", b"".join(texts) + numbers + b"what was there before")
    write("settings", "cut-short", b"".join(texts)[:700])


def regions():
    def block(choice, *rects):
        words = [choice, 32, 1, len(rects), 16 * len(rects), 0, 0, 0, 0]
        for rect in rects:
            words += rect
        return struct.pack(f"<{len(words)}i", *words)

    least, most = -2**31, 2**31 - 1
    write("regions", "one", block(1234, (2, 3, 20, 17)))
    write("regions", "three", block(-77, (0, 0, 9, 9), (5, 5, 20, 12), (30, 1, 31, 40)))
    write("regions", "ends-of-the-range", block(most, (least, least, most, most), (-1, -1, 1, 1)))
    write("regions", "no-area", block(7, (5, 5, 5, 9), (9, 9, 3, 3)))


def apply():
    lines = ["Contrast:Level=40", "Halftone:Radius=3,Definition=0,Intensity=9",
             "Resize:Width=40,Height=30,Keep proportions=off,Anti-Alias=no",
             "Rotate Intelligently:Degrees=-30,Antialiasing=on", "Glass:Squary=Tight",
             "Curtain:Classy=on", "Flare:X=3,Y=4,Extension=60,Intensity=200",
             "Grid:Horizontal step=20,Vertical step=20,Opacity=160,Color1=00ff7F,Force margins=on",
             "Swap RGB:Red=G,Green=B,Invert=rgb,Kill=b", "Gamma Correction:Gamma=+170",
             "Diffuse", "Fold:Horizontal factor=60,Vertical factor=30,Clean back=off"]
    for line in lines:
        write("apply", line.split(":")[0].lower().replace(" ", "-"), line)
    write("apply", "several-lines", "\n".join(lines[:6]))
    write("apply", "refused", "Contrast:Level=99999,Level=1,=,")


def filters():
    def numbers(*values):
        return b"".join(struct.pack("<Bh", 2, value) for value in values)

    def row(index, width, height, values, rects=(), flags=3, style=0, point=(5, 6), degrees=30):
        data = struct.pack("<5B", index, width - 1, height - 1, index, flags) + numbers(*values)
        data += struct.pack("<2iB", 0x0000FF, 0xC08040, style) + numbers(*point)
        data += struct.pack("<hB", degrees, len(rects))
        return data + b"".join(struct.pack("<4b", *(2 * side for side in rect)) for rect in rects)

    write("filters", "one-pixel", row(0, 1, 1, (1, 2, 3)))
    for index in range(0, 70, 3):
        write("filters", f"function-{index:02}", row(index, 17, 23, (25, 40, 60),
                                                     [(1, 1, 9, 9), (4, 3, 15, 20)]))
    write("filters", "beyond-the-sheet", row(20, 41, 40, (32767, -32768, -1), [(-9, -9, 60, 60)]))


def decoders():
    order = ("bmp cut dcx dds iff koa lmp mdl act pal pcd pcx pic pix pnm psp raw ras sgi tga tiff "
             "wal xpm gif dib-file dib").split()
    grey = bytes(v for v in range(256) for _ in range(3))

    def file(kind, name, data, colours=b""):
        colours += bytes(-len(colours) % 8)
        write("decoders", name, bytes([order.index(kind), len(colours) // 8]) + colours + data)

    def info(width, height, bits, coding=0, size=40, used=0):
        return struct.pack("<IiiHHIIiiII", size, width, height, 1, bits, coding, 0, 0, 0, used, 0)

    def bmp(header, palette, pixels):
        offset = 14 + len(header) + len(palette)
        return (b"BM" + struct.pack("<IHHI", offset + len(pixels), 0, 0, offset)
                + header + palette + pixels)

    palette = bytes(range(64))
    file("dib-file", "bmp-24", bmp(info(3, 2, 24), b"", bytes(range(24))))
    file("dib-file", "bmp-rle8", bmp(info(4, 2, 8, 1, used=16), palette,
                                     bytes([3, 1, 0, 2, 1, 0, 0, 3, 1, 2, 3, 0, 0, 1])))
    file("dib-file", "bmp-rle4", bmp(info(4, 2, 4, 2, used=16), palette,
                                     bytes([4, 0x12, 0, 0, 0, 3, 0x12, 0x30, 0, 1])))
    file("dib-file", "bmp-fields", bmp(info(2, 2, 16, 3) + struct.pack("<3I", 0xF800, 0x7E0, 0x1F),
                                       b"", bytes(range(8))))
    file("dib-file", "bmp-v4", bmp(info(2, -2, 32, 3, size=108)
                                   + struct.pack("<4I", 0xFF0000, 0xFF00, 0xFF, 0) + bytes(52),
                                   b"", bytes(range(16))))
    runs24 = struct.pack("<IiiHHI", 64, 2, 2, 1, 24, 4) + bytes(44)
    file("dib-file", "bmp-rle24", bmp(runs24, b"", bytes([2, 1, 2, 3, 0, 0, 0, 3, 4, 5, 6, 7, 8, 9, 1, 2, 3,
                                                         0, 0, 1])))

    def png_chunk(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    for depth, colour, row in ((8, 2, 7), (16, 2, 13), (16, 0, 5), (1, 0, 2)):
        png = (b"\x89PNG\r\n\x1a\n" + png_chunk(b"IHDR", struct.pack(">IIBBBBB", 2, 2, depth, colour, 0, 0, 0))
               + png_chunk(b"IDAT", zlib.compress(bytes(2 * row))) + png_chunk(b"IEND", b""))
        file("dib-file", f"bmp-of-png-{colour}-{depth}", bmp(info(2, 2, 0, 5), b"", png))
    file("dib", "dib-os2-header", struct.pack("<IHHHH", 12, 3, 2, 1, 1) + bytes(6) + bytes(8))
    file("bmp", "bmp-taken-over", bmp(info(3, 2, 24), b"", bytes(range(24))))
    colours = bytes(range(256)) * 3
    cut_line = bytes([0x83, 5, 0])
    cut = struct.pack("<HHH", 3, 1, 0) + struct.pack("<H", len(cut_line)) + cut_line
    cut_palette = (b"AH" + struct.pack("<HHBBHHHHHH", 0xE3, 0x28, 10, 0, 0x0401, 0, 9, 255, 255, 255)
                   + bytes(20) + bytes(range(60)))
    file("cut", "cut-with-colours", cut, cut_palette)
    pcx = (struct.pack("<4B4H2H", 10, 5, 1, 8, 0, 0, 3, 1, 96, 96) + bytes(48)
           + struct.pack("<BBHH", 0, 1, 4, 1) + bytes(58) + bytes([0xC4, 7, 0xC4, 9]))
    file("pcx", "pcx-8", pcx + b"\x0c" + grey)
    pcx24 = (struct.pack("<4B4H2H", 10, 5, 1, 8, 0, 0, 3, 1, 96, 96) + bytes(48)
             + struct.pack("<BBHH", 0, 3, 4, 1) + bytes(58) + bytes([0xC4, 7] * 6))
    file("pcx", "pcx-24", pcx24)
    file("dcx", "dcx", struct.pack("<III", 0x3ADE68B1, 12, 0) + pcx24)
    pixel_format = struct.pack("<II4s5I", 32, 4, b"DXT1", 0, 0, 0, 0, 0)
    dds = (b"DDS " + struct.pack("<7I", 124, 0x1007, 4, 4, 0, 0, 0) + bytes(44) + pixel_format
           + struct.pack("<5I", 0x1000, 0, 0, 0, 0))
    for name in (b"DXT1", b"DXT3", b"DXT5"):
        file("dds", "dds-" + name.decode().lower(), dds.replace(b"DXT1", name) + bytes(range(16)))
    rgb = struct.pack("<II4s5I", 32, 0x41, bytes(4), 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000)
    file("dds", "dds-rgb", dds.replace(pixel_format, rgb) + bytes(range(64)))

    file("dds", "dds-ati1", dds.replace(b"DXT1", b"ATI1") + bytes(range(8)))
    for number in (28, 87, 98):
        file("dds", f"dds-later-header-{number}", dds.replace(b"DXT1", b"DX10")
             + struct.pack("<5I", number, 3, 0, 1, 0) + bytes(range(64)))
    indexed = struct.pack("<II4s5I", 32, 0x20, bytes(4), 8, 0, 0, 0, 0)
    file("dds", "dds-indexed", dds.replace(pixel_format, indexed) + bytes(range(256)) * 4 + bytes(16))

    def chunk(name, data):
        return name + struct.pack(">I", len(data)) + data + bytes(len(data) % 2)

    def ilbm(kind, header, rest):
        return chunk(b"FORM", kind + chunk(b"BMHD", header) + rest)

    for packed, body in ((0, bytes(range(16))), (1, bytes([0xFF, 5] * 8))):
        header = struct.pack(">HHhhBBBBHBBhh", 8, 2, 0, 0, 4, 0, packed, 0, 0, 1, 1, 8, 2)
        rest = chunk(b"CMAP", bytes(range(48))) + chunk(b"BODY", body)
        file("iff", f"ilbm-{packed}", ilbm(b"ILBM", header, rest))
    header = struct.pack(">HHhhBBBBHBBhh", 8, 2, 0, 0, 6, 0, 0, 0, 0, 1, 1, 8, 2)
    file("iff", "ilbm-ham", ilbm(b"ILBM", header, chunk(b"CAMG", struct.pack(">I", 0x800))
                                 + chunk(b"CMAP", bytes(range(48))) + chunk(b"BODY", bytes(24))))
    header = struct.pack(">HHhhBBBBHBBhh", 4, 2, 0, 0, 8, 0, 0, 0, 0, 1, 1, 4, 2)
    file("iff", "pbm", ilbm(b"PBM ", header, chunk(b"CMAP", bytes(48)) + chunk(b"BODY", bytes(8))))
    deep = (chunk(b"DGBL", struct.pack(">HHHBB", 2, 2, 0, 1, 1))
            + chunk(b"DPEL", struct.pack(">I6H", 3, 1, 8, 2, 8, 3, 8))
            + chunk(b"DLOC", struct.pack(">4H", 2, 2, 0, 0)) + chunk(b"DBOD", bytes(range(12))))
    file("iff", "deep", chunk(b"FORM", b"DEEP" + deep))
    file("lmp", "lump", struct.pack("<II", 3, 2) + bytes(range(6)), colours)
    patch = struct.pack("<HHhh", 2, 4, 0, 0) + struct.pack("<II", 16, 16)
    file("lmp", "patch", patch + bytes([0, 2, 0, 5, 6, 0, 255]))
    model = b"IDPO" + struct.pack("<I", 6) + bytes(40) + struct.pack("<III", 1, 2, 2) + bytes(24)
    file("mdl", "old-model", model + struct.pack("<I", 0) + bytes(range(4)), colours)
    texture = bytes(68) + struct.pack("<III", 2, 2, 0)
    model = b"IDST" + bytes(176) + struct.pack("<II", 1, 188)
    texture = bytes(68) + struct.pack("<III", 2, 2, 188 + 80)
    file("mdl", "model", model + texture + bytes(range(4)) + grey)
    file("act", "act", grey)
    file("pal", "pal-jasc", "JASC-PAL\r\n0100\r\n3\r\n1 2 3\r\n4 5 6\r\n255 255 255\r\n".encode())
    file("pal", "pal-riff", b"RIFF" + struct.pack("<I", 32) + b"PAL data"
         + struct.pack("<IHH", 16, 0x300, 3) + bytes(range(12)))
    pic = (struct.pack(">If80s4sHHfHH", 0x5380F634, 1.0, b"", b"PICT", 2, 2, 1.0, 3, 0)
           + bytes([0, 8, 2, 0xE0]))
    file("pic", "pic", pic + bytes([129, 1, 2, 3, 1, 4, 5, 6, 7, 8, 9]))
    file("pix", "pix", struct.pack(">5H", 3, 2, 0, 0, 24) + bytes([3, 1, 2, 3, 3, 4, 5, 6]))
    for name, data in (("p1", b"P1 3 2 101010"), ("p2", b"P2 # c\n2 2 15 1 2 3 15"),
                       ("p3", b"P3 1 2 255 1 2 3 4 5 6"), ("p4", b"P4 9 2\n" + bytes(4)),
                       ("p5", b"P5 2 2 65535\n" + bytes(8)), ("p6", b"P6 2 1 255\n" + bytes(6))):
        file("pnm", name, data)

    def psp_block(number, data):
        return b"~BK\0" + struct.pack("<HI", number, len(data)) + data

    def psp_chunk(data):
        return struct.pack("<I", len(data) + 4) + data

    def psp_channel(use, channel, pixels, pack):
        packed = pack(pixels)
        head = psp_chunk(struct.pack("<IIHH", len(packed), len(pixels), use, channel))
        return psp_block(5, head + packed)

    def psp(compression, depth, channels, mixing=0, rest=b""):
        attributes = (struct.pack("<IIdBHHHIB", 2, 2, 72.0, 1, compression, depth, 1, 256, 0))
        layer = psp_chunk(struct.pack("<H", 5) + b"Layer" + struct.pack("<B8i3B", 1, 0, 0, 2, 2, 0, 0,
                                                                        2, 2, 200, mixing, 1)) + channels
        return (b"Paint Shop Pro Image File\n\x1a".ljust(32, b"\0") + struct.pack("<HH", 5, 0)
                + psp_block(0, psp_chunk(attributes)) + psp_block(3, psp_block(4, layer)) + rest)

    def plain(data):
        return data

    def runs(data):
        return bytes([128 + len(data), data[0]])

    def colours_of(pack):
        return b"".join(psp_channel(0, channel, bytes(range(4)), pack) for channel in (1, 2, 3))

    file("psp", "psp-plain", psp(0, 24, colours_of(plain) + psp_channel(1, 0, bytes(4), plain)))
    file("psp", "psp-runs", psp(1, 24, colours_of(runs)))
    file("psp", "psp-packed", psp(2, 24, colours_of(zlib.compress)))
    file("psp", "psp-4-bits", psp(0, 4, psp_channel(0, 0, bytes(8), plain))
         + psp_block(2, psp_chunk(struct.pack("<I", 3)) + bytes(12)))
    head = psp_chunk(struct.pack("<IIHHHIH", 2, 2, 24, 0, 1, 256, 0))
    whole = psp_block(17, head) + psp_block(9, psp_chunk(b"") + colours_of(plain))
    file("psp", "psp-finished", psp(0, 24, colours_of(plain), 3, psp_block(16, psp_chunk(b"") + whole)))
    file("raw", "raw", struct.pack("<IIIBB", 2, 2, 1, 3, 1) + bytes(range(12)))
    for depth, length in ((1, 4), (8, 4), (24, 12), (32, 16)):
        file("ras", f"ras-{depth}", struct.pack(">8I", 0x59A66A95, 2, 2, depth, length, 1, 0, 0)
             + bytes(range(length)))
    file("ras", "ras-packed", struct.pack(">8I", 0x59A66A95, 4, 2, 8, 6, 2, 1, 6) + bytes(6)
         + bytes([0x80, 3, 7, 0x80, 0, 1, 2, 3]))
    sgi = struct.pack(">HBBHHHHII", 474, 0, 1, 3, 2, 2, 3, 0, 255) + bytes(492)
    file("sgi", "sgi-plain", sgi + bytes(range(12)))
    file("sgi", "sgi-packed", struct.pack(">HBBHHHHII", 474, 1, 1, 2, 4, 2, 1, 0, 255) + bytes(492)
         + struct.pack(">4I", 528, 528, 3, 3) + bytes([4, 9, 0]))
    file("sgi", "sgi-16", struct.pack(">HBBHHHHII", 474, 0, 2, 3, 2, 1, 3, 0, 255) + bytes(492)
         + bytes(range(12)))
    file("sgi", "sgi-16-packed", struct.pack(">HBBHHHHII", 474, 1, 2, 2, 4, 2, 1, 0, 255) + bytes(492)
         + struct.pack(">4I", 528, 528, 6, 6) + struct.pack(">3H", 4, 0x1234, 0))
    for kind, bits, data in ((2, 24, bytes(12)), (3, 16, bytes(8)), (10, 24, bytes([0x83, 1, 2, 3])), (3, 8, bytes(4)),
                             (2, 16, bytes(8)), (10, 32, bytes([0x80, 1, 2, 3, 4, 2] + [5] * 12))):
        file("tga", f"tga-{kind}-{bits}", struct.pack("<3BHHB4H2B", 0, 0, kind, 0, 0, 0, 0, 0, 2, 2,
                                                      bits, 0x30) + data)
    file("tga", "tga-palette", struct.pack("<3BHHB4H2B", 0, 1, 1, 0, 4, 24, 0, 0, 2, 2, 8, 0x10)
         + bytes(range(12)) + bytes([0, 1, 2, 3]))
    for name, photometric, bits, samples, data in (
            ("grey", 1, 8, 1, bytes(4)), ("2-bits", 1, 2, 1, bytes([0x50, 0xA0])),
            ("ycbcr", 6, 8, 3, bytes(12)), ("inks", 5, 16, 4, bytes(range(32)))):
        entries = [(256, 4, 2), (257, 4, 2), (258, 3, bits), (259, 3, 1), (262, 3, photometric),
                   (273, 4, 134), (277, 3, samples), (278, 4, 2), (279, 4, len(data)), (530, 3, 0x10001)]
        tiff = b"II*\0" + struct.pack("<IH", 8, len(entries))
        for tag, kind, value in entries:
            count = samples if tag == 258 else 2 if tag == 530 else 1
            if tag == 258 and samples > 2:
                value = 134 + len(data)  # too many to stand in the entry itself
            tiff += struct.pack("<HHII", tag, kind, count, value)
        tiff += bytes(4)
        file("tiff", "tiff-" + name, tiff + data + struct.pack("<H", bits) * samples)
    wal = text("wall", 32) + struct.pack("<6I", 16, 16, 100, 356, 420, 436) + bytes(44)
    file("wal", "wal", wal + bytes(340))
    file("xpm", "xpm", b'/* XPM */\nstatic char* x[] = {\n"3 2 2 1",\n"a c #FF0000",\n'
         b'"b c None",\n"aba",\n"bab"};\n')
    gif = (b"GIF89a" + struct.pack("<HHBBB", 2, 2, 0x80, 0, 0) + bytes([0, 0, 0, 255, 255, 255])
           + b"\x2c" + struct.pack("<4HB", 0, 0, 2, 2, 0) + bytes([2, 3, 0x44, 0x02, 0x05, 0, 0x3B]))
    file("gif", "gif", gif)


def metafiles():
    def answers(*parts):
        data = b"".join(parts)
        return bytes([len(data)]) + data

    box = struct.pack("<4h", 0, 0, 90, 50)
    font = bytes([1, 5]) + b"Serif" + bytes([0]) + struct.pack("<hB", 700, 1)
    placeable = struct.pack("<IH4hHIH", 0x9AC6CDD7, 0, 0, 0, 900, 500, 1440, 0, 0)
    body = struct.pack("<HHHIHIH", 1, 9, 0x300, 12, 1, 3, 0) + struct.pack("<IH", 3, 0)
    write("metafiles", "wmf-placeable", b"\x01" + answers(b"\0\0", box, font, bytes(9)) + placeable + body)
    write("metafiles", "wmf-without-scale", b"\x01" + answers(bytes(12)) + placeable[:14] + bytes(8) + body)
    write("metafiles", "wmf-plain", b"\x01" + answers(b"\0\0", box, b"\0\0", bytes([1, 40, 30]),
                                                      bytes(20)) + body)

    def emf(bounds, frame, size=88, fine=b""):
        return (struct.pack("<II4i4i", 1, size, *bounds, *frame) + b" EMF"
                + struct.pack("<IIIHHII", 0x10000, 200, 2, 1, 0, 0, 0) + struct.pack("<I", 0)
                + struct.pack("<4I", 1024, 768, 320, 240) + fine)

    write("metafiles", "emf", b"\x00" + answers(struct.pack("<BBhh", 0, 0, 90, 50))
          + emf((0, 0, 90, 50), (0, 0, 2800, 1500)))
    write("metafiles", "emf-later-header", b"\x00" + answers(struct.pack("<BBhh", 0, 0, 90, 50))
          + emf((0, 0, 90, 50), (0, 0, 2800, 1500), 108,
                bytes(12) + struct.pack("<II", 320000, 240000)))
    write("metafiles", "emf-frame-beside", b"\x00" + answers(struct.pack("<BBhh", 0, 0, 90, 50))
          + emf((500, 500, 500, 550), (-900, -10, 900, 1500)))


def helper_requests():
    def requests(*parts):
        return bytes([len(parts) - 1]) + b"".join(parts)

    def read(number, extension, width, height, whole=1, memory=30, odd=9):
        return bytes([0, number, extension, memory, 1, width, height, whole, odd])

    def grant(number, block=1, size=0, file=0, odd=9):
        return bytes([2, number, block, size] + ([file] if block else []) + [odd])

    def write_picture(number, width, height, row, extension, block=1, size=0, file=0, odd=9):
        return bytes([1, number, 1, width, 1, height, row + 1, block, size, extension, file, odd])

    def photograph(number, block=1, size=0, file=0, odd=9):
        return bytes([4, number, block, size, file, odd])

    def write_with_metadata(number, count, block=2, size=0, file=0, odd=9):
        return (bytes([5, number, block, size]) + struct.pack("<i", count)
                + bytes([1, 1, file, 0, odd]))

    name = "helper_requests"
    ppm, nonsense, bmp, png = 0, 2, 4, 5
    write(name, "read", requests(read(1, ppm, 100, 90), grant(1)))
    write(name, "read-twice", requests(read(1, ppm, 100, 90), grant(1), read(2, ppm, 90, 99),
                                       grant(2, 2, 0, 1)))
    write(name, "denied", requests(read(1, ppm, 100, 90), grant(1, 0), read(2, ppm, 70, 70),
                                   grant(2)))
    write(name, "cut-short", requests(read(1, ppm, 100, 90, 0), read(2, nonsense, 9, 9)))
    write(name, "little-memory", requests(read(1, ppm, 200, 200, 1, 10), read(2, ppm, 2, 2),
                                          grant(2)))
    write(name, "small-block", requests(read(1, ppm, 200, 200), grant(1, 1, 1, 2)))
    write(name, "unsealed-block", requests(read(1, ppm, 100, 90), grant(1, 1, 0, 4)))
    write(name, "other-number", requests(read(1, ppm, 100, 90), grant(2)))
    write(name, "grant-unasked", requests(grant(1)))
    write(name, "write", requests(write_picture(1, 50, 40, 8, bmp),
                                  write_picture(2, 50, 40, 9, png)))
    write(name, "write-too-large", requests(write_picture(1, 199, 199, 8, bmp, 1, 1, 2)))
    write(name, "read-and-write", requests(read(1, ppm, 100, 90), grant(1),
                                           write_picture(2, 100, 90, 8, bmp)))
    write(name, "metadata", requests(photograph(1), grant(1), write_with_metadata(2, 100)))
    write(name, "metadata-small-block", requests(photograph(1, 1, 3, 3), grant(1)))
    write(name, "metadata-beyond-its-block", requests(write_with_metadata(1, 1 << 20)))
    write(name, "metadata-unsealed-block", requests(photograph(1, 1, 0, 4), grant(1)))
    write(name, "file-missing", requests(read(1, ppm, 100, 90, odd=1)))
    write(name, "packet-cut", requests(read(1, ppm, 100, 90, odd=2) + b"\x04"))


def journals():
    header = '{"tessarine-journal":1}\n'
    mark = '"bytes":9,"modified":1700000000000000000'
    source = '{"hash":"0f",%s,"changed":1,"device":2,"inode":3}' % mark
    done = ('{"done":"/out/1.bmp","number":1,"input":{"hex":"2fe9"},"key":"ab","sources":[%s,null],'
            '"settled":true,%s}' % (source, mark))
    write("journals", "empty", header)
    write("journals", "cut-header", header[:9])
    write("journals", "several", header + '{"begun":"/out/1.bmp"}\n' + done
          + '\n{"left":"/out/2.bmp"}\n')
    write("journals", "cut-short", header + done[:80] + "\n" + done[:150])
    write("journals", "line-done", done)
    write("journals", "line-begun", '{"begun":{"hex":"ff00"}}')
    write("journals", "no-journal", "P6 1 1 255\nxyz")
    write("journals", "later-version", header.replace("1", "2"))


def plans():
    row = '{"name":"Negative","id":51,"columns":["0","0","0","0","0","False","","0","0"]}'
    before = ('{"numbers":[0,-1,2],"colours":[255,0],"option":false,"style":"","point":[0.5,0.25],'
              '"preview":[200,174]}')
    chain = '{"rows":[%s],"degrees":-5,"invert":"g","kill":"","before":%s}' % (row, before)
    settings = ('{"tessarine-plan":1,"version":"0.1.0","to":"/tmp/","format":"bmp",'
                '"onExists":"keep","metadata":{"autoOrient":false,"keep":true,"stripLocation":true},"functions":%s}\n' % chain)
    picture = '{"number":%d,"input":"/none/%d.png","output":"/tmp/%s","files":[null]}\n'
    end = '{"summary":{"pictures":%d,"conflicts":%d}}\n'
    write("plans", "two", settings + picture % (1, 1, "1.bmp") + picture % (2, 2, "a/b/2.bmp")
          + end % (2, 0))
    write("plans", "out-of-it", settings + picture % (1, 1, "../1.bmp") + end % (1, 0))
    write("plans", "conflicts", settings + picture % (1, 1, "1.bmp") + end % (1, 1))
    write("plans", "cut-short", settings + picture % (1, 1, "1.bmp"))
    write("plans", "no-pictures", settings + end % (0, 0))
    write("plans", "changed", settings + (picture % (1, 1, "1.bmp")).replace(
        "null", '{"bytes":1,"modified":2}') + end % (1, 0))


def metadata():
    def directory(*entries, after=0):
        return struct.pack("<H", len(entries)) + b"".join(entries) + struct.pack("<I", after)

    def entry(tag, kind, count, value):
        return struct.pack("<HHI", tag, kind, count) + value.ljust(4, b"\0")

    def short(tag, number):
        return entry(tag, 3, 1, struct.pack("<H", number))

    def place(tag, number, kind=4, count=1):
        return entry(tag, kind, count, struct.pack("<I", number))

    # The first directory at 8, then 64 bytes a piece: photo, GPS, thumbnail.
    exif = (b"II*\0" + struct.pack("<I", 8)
            + directory(short(0x112, 6), place(0x8769, 64), place(0x8825, 128), after=192)).ljust(64)
    exif += directory(place(0xA002, 400), place(0xA003, 300),
                      entry(0x927C, 7, 4, b"what"), place(0x9214, 5, 3, 2)).ljust(64, b"\0")
    exif += directory(entry(1, 2, 2, b"N"), place(2, 160, 5, 1)).ljust(64, b"\0")
    exif += directory(short(0x103, 6), place(0x201, 236), place(0x202, 8)) + b"\0\0picture!"
    iptc = b"\x1c\2\5\0\7A title\x1c\2\x5a\0\4City"
    xmp = (b'<x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-'
           b'rdf-syntax-ns#"><rdf:Description rdf:about="" xmlns:tiff="http://ns.adobe.com/tiff/1.0/"'
           b' tiff:Orientation="6" xmlns:p="http://ns.adobe.com/photoshop/1.0/" p:City="Here"/>'
           b'</rdf:RDF></x:xmpmeta>')
    icc = (struct.pack(">I", 140) + b"x" * 12 + b"RGB " + b"y" * 16 + b"acsp").ljust(140, b"z")

    def segment(kind, data):
        return b"\xff" + bytes([kind]) + struct.pack(">H", len(data) + 2) + data

    def resource(number, data):
        return (b"8BIM" + struct.pack(">HHI", number, 0, len(data)) + data
                + b"\0" * (len(data) % 2))

    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data
                + struct.pack(">I", zlib.crc32(kind + data)))

    jpeg = (b"\xff\xd8" + segment(0xE1, b"Exif\0\0" + exif)
            + segment(0xE1, b"http://ns.adobe.com/xap/1.0/\0" + xmp)
            + segment(0xED, b"Photoshop 3.0\0" + resource(0x404, iptc))
            + segment(0xE2, b"ICC_PROFILE\0\1\2" + icc[:90])
            + segment(0xE2, b"ICC_PROFILE\0\2\2" + icc[90:]) + b"\xff\xda")
    resources = (resource(0x404, iptc) + resource(0x40F, icc) + resource(0x422, exif)
                 + resource(0x424, xmp))
    psd = b"8BPS".ljust(26, b"\0") + struct.pack(">II", 0, len(resources)) + resources
    png = (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 1, 1, 8, 2, 0, 0, 0))
           + chunk(b"iCCP", b"p\0\0" + zlib.compress(icc)) + chunk(b"eXIf", exif)
           + chunk(b"iTXt", b"XML:com.adobe.xmp\0\0\0\0\0" + xmp)
           + chunk(b"IDAT", zlib.compress(b"\0abc")) + chunk(b"IEND", b""))
    tiff = (b"II*\0" + struct.pack("<I", 8)
            + directory(short(0x100, 1), short(0x101, 1), short(0x112, 3), place(0x2BC, 100, 7,
                                                                               len(xmp)))
            ).ljust(100, b"\0") + xmp
    for kind, (name, file) in enumerate((("jpeg", jpeg), ("png", png), ("tiff", tiff),
                                         ("psd", psd))):
        for to in range(4):
            write("metadata", f"{name}-{to}", bytes([kind, to, 3 - to]) + file)


for make in (function_lists, picture_lists, settings, regions, apply, filters, decoders, metafiles,
             helper_answers, helper_requests, journals, metadata, plans):
    make()
