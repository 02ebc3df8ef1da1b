#!/usr/bin/env python3
"""Draws splash.svg, about.svg, banner.svg and ../icons/program.svg. Needs nothing but Python and,
for the small texts, Noto Sans (Debian: fonts-noto-core), whose outlines become paths."""

import math
import pathlib
import struct
import sys

FONT = sys.argv[1] if len(sys.argv) > 1 else "/usr/share/fonts/truetype/noto/NotoSans-Regular.ttf"
HERE = pathlib.Path(__file__).parent
NIGHT, DEEP = "#20234a", "#12142b"
AMBER, PALE = "#ffb454", "#f4f2ff"


# ---- Colours ----

def mix(a, b, t):
    t = min(1.0, max(0.0, t))
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def colour(text):
    return tuple(int(text[i:i + 2], 16) for i in (1, 3, 5))


def ramp(stops, t):
    for (a, low), (b, high) in zip(stops, stops[1:]):
        if t <= b:
            return mix(colour(low), colour(high), (t - a) / (b - a))
    return colour(stops[-1][1])


def text_of(rgb):
    return "#" + "".join("%02x" % max(0, min(255, round(c))) for c in rgb)


def chance(*key):
    """A number in 0 to 1 that depends on the key alone."""
    value = 2166136261
    for part in key:
        value = ((value ^ (part & 0xffffffff)) * 16777619) & 0xffffffff
        value ^= value >> 13
    return (value * 2654435761 & 0xffffffff) / 2 ** 32


def number(x):
    return ("%.2f" % x).rstrip("0").rstrip(".") if x else "0"


# ---- Letters ----

class Font:
    """The outlines of a TrueType font."""

    def __init__(self, path):
        self.data = pathlib.Path(path).read_bytes()
        count, = struct.unpack_from(">H", self.data, 4)
        self.tables = {}
        for i in range(count):
            tag, _, offset, _ = struct.unpack_from(">4sIII", self.data, 12 + 16 * i)
            self.tables[tag.decode()] = offset
        head = self.tables["head"]
        self.units, = struct.unpack_from(">H", self.data, head + 18)
        self.long_places, = struct.unpack_from(">h", self.data, head + 50)
        self.metrics, = struct.unpack_from(">H", self.data, self.tables["hhea"] + 34)
        self.glyphs = self.read_characters()

    def read_characters(self):
        table = self.tables["cmap"]
        count, = struct.unpack_from(">H", self.data, table + 2)
        for i in range(count):
            offset, = struct.unpack_from(">I", self.data, table + 8 + 8 * i)
            at = table + offset
            if struct.unpack_from(">H", self.data, at)[0] != 4:
                continue
            segments = struct.unpack_from(">H", self.data, at + 6)[0] // 2
            glyphs = {}
            for s in range(segments):
                end, = struct.unpack_from(">H", self.data, at + 14 + 2 * s)
                start, = struct.unpack_from(">H", self.data, at + 16 + 2 * (segments + s))
                delta, = struct.unpack_from(">H", self.data, at + 16 + 2 * (2 * segments + s))
                place = at + 16 + 2 * (3 * segments + s)
                shift, = struct.unpack_from(">H", self.data, place)
                for c in range(start, min(end, 0xfffe) + 1):
                    glyph = c
                    if shift:
                        glyph, = struct.unpack_from(">H", self.data, place + shift + 2 * (c - start))
                    if glyph or not shift:
                        glyphs[c] = (glyph + delta) & 0xffff
            return glyphs
        raise SystemExit("no such table of characters in " + FONT)

    def advance(self, glyph):
        k = min(glyph, self.metrics - 1)
        return struct.unpack_from(">H", self.data, self.tables["hmtx"] + 4 * k)[0]

    def contours(self, glyph):
        places = self.tables["loca"]
        if self.long_places:
            start, end = struct.unpack_from(">II", self.data, places + 4 * glyph)
        else:
            start, end = (2 * x for x in struct.unpack_from(">HH", self.data, places + 2 * glyph))
        if start == end:
            return []
        at = self.tables["glyf"] + start
        count, = struct.unpack_from(">h", self.data, at)
        return self.parts(at + 10) if count < 0 else self.outline(at + 10, count)

    def parts(self, at):
        result = []
        while True:
            flags, glyph = struct.unpack_from(">HH", self.data, at)
            at += 4
            dx, dy = struct.unpack_from(">hh" if flags & 1 else ">bb", self.data, at)
            at += 4 if flags & 1 else 2
            if flags & (8 | 64 | 128):
                raise SystemExit("a scaled part of a letter")
            result += [[(x + dx, y + dy, on) for x, y, on in c] for c in self.contours(glyph)]
            if not flags & 32:
                return result

    def outline(self, at, count):
        ends = struct.unpack_from(">%dH" % count, self.data, at)
        at += 2 * count
        at += 2 + struct.unpack_from(">H", self.data, at)[0]
        flags = []
        while len(flags) <= ends[-1]:
            flag = self.data[at]
            at += 1
            repeat = 1
            if flag & 8:
                repeat += self.data[at]
                at += 1
            flags += [flag] * repeat
        axes = []
        for short, same in ((2, 16), (4, 32)):
            value, values = 0, []
            for flag in flags:
                if flag & short:
                    value += self.data[at] if flag & same else -self.data[at]
                    at += 1
                elif not flag & same:
                    value += struct.unpack_from(">h", self.data, at)[0]
                    at += 2
                values.append(value)
            axes.append(values)
        points = [(x, y, bool(f & 1)) for x, y, f in zip(*axes, flags)]
        return [points[a:b + 1] for a, b in zip([0] + [e + 1 for e in ends], ends)]

    def path(self, text, x, y, size, spacing=0.0):
        """A text whose baseline begins at (x, y), as path data."""
        k = size / self.units
        data = []
        for letter in text:
            glyph = self.glyphs[ord(letter)]
            for points in self.contours(glyph):
                data.append(curve([(x + px * k, y - py * k, on) for px, py, on in points]))
            x += self.advance(glyph) * k + spacing
        return "".join(data)


def curve(points):
    """A closed contour of on-curve and off-curve points as path data."""
    full = []
    for here, after in zip(points, points[1:] + points[:1]):
        full.append(here)
        if not here[2] and not after[2]:
            full.append(((here[0] + after[0]) / 2, (here[1] + after[1]) / 2, True))
    first = next(i for i, point in enumerate(full) if point[2])
    full = full[first:] + full[:first + 1]
    data = "M%s %s" % (number(full[0][0]), number(full[0][1]))
    i = 1
    while i < len(full):
        if full[i][2]:
            data += "L%s %s" % (number(full[i][0]), number(full[i][1]))
            i += 1
        else:
            end = full[i + 1]
            data += "Q%s %s %s %s" % tuple(number(v) for v in (*full[i][:2], *end[:2]))
            i += 2
    return data + "z"


# The name's own letters, drawn with a pen, in units of an x-height of 20: path, width.
LETTERS = {
    "T": ("M0 -9H19M9.5 -9V20", 19),
    "e": ("M0.4 10H20A10 10 0 1 0 16.6 17.5", 20),
    "s": ("M12.6 3.6C11.4 1.3 9.3 0 6.8 0C3.4 0 0.9 2 0.9 5C0.9 8.2 3.6 9.2 6.9 9.9"
          "C10.6 10.7 13.3 11.8 13.3 15C13.3 18.1 10.6 20 7 20C3.8 20 1.2 18.6 0 16", 13.3),
    "a": ("M20 10A10 10 0 1 1 0 10A10 10 0 1 1 20 10M20 0V20", 20),
    "r": ("M0 0V20M0 9A9 9 0 0 1 9.5 0.1", 9.5),
    "i": ("M0 0V20", 0),
    "n": ("M0 0V20M0 9A9 9 0 0 1 18 9V20", 18),
}
GAPS = {"Te": 1.5, "es": 6.6, "ss": 6.6, "sa": 6.4, "ar": 9.5, "ri": 7.2, "in": 9.8, "ne": 8.2}


def wordmark(x, y, scale, ink=PALE, dot=AMBER):
    """The name, its x-height beginning at y; the dot of the i is a tile."""
    lines, at = [], 0.0
    word = "Tessarine"
    lines.append('<g transform="translate(%s %s) scale(%s)" fill="none" stroke="%s" '
                 'stroke-width="3.6" stroke-linecap="round" stroke-linejoin="round">'
                 % (number(x), number(y), number(scale), ink))
    for k, letter in enumerate(word):
        data, width = LETTERS[letter]
        lines.append('<path transform="translate(%s 0)" d="%s"/>' % (number(at), data))
        if letter == "i":
            lines.append('<path transform="translate(%s -8.6) rotate(45)" d="M-2.5 -2.5h5v5h-5z" '
                         'fill="%s" stroke="%s" stroke-width="1.2"/>' % (number(at), dot, dot))
        at += width + GAPS.get(word[k:k + 2], 0)
    lines.append("</g>")
    return lines


# ---- Tiles ----

def tile(cx, cy, half, roundness, fill, opacity=1.0):
    """A tile between a square (roundness 0) and a circle (1)."""
    r = half * min(1.0, max(0.0, roundness))
    shade = "" if opacity >= 0.995 else ' fill-opacity="%s"' % number(opacity)
    return '<rect x="%s" y="%s" width="%s" height="%s" rx="%s" fill="%s"%s/>' % (
        number(cx - half), number(cy - half), number(2 * half), number(2 * half), number(r),
        fill, shade)


def landscape(x, y):
    """A bay at sunset, x from 0 to the right edge and y down, both in heights of the picture."""
    horizon, sun_x = 0.60, 1.66
    distance = math.hypot(x - sun_x, y - horizon + 0.06)
    if y < horizon:
        rgb = ramp([(0, "#27307f"), (0.28, "#5a3fa6"), (0.55, "#c3539b"), (0.8, "#ff8270"),
                    (1, "#ffb777")], y / horizon)
        rgb = mix(rgb, colour("#ffd98f"), 0.8 * math.exp(-(distance / 0.42) ** 2))
        if distance < 0.27:
            rgb = mix(colour("#fff8dc"), colour("#ffe08a"), (y - horizon + 0.33) / 0.3)
        ridge = (-0.42 * math.exp(-((x - 0.55) / 0.36) ** 2)
                 - 0.17 * math.exp(-((x - 1.02) / 0.16) ** 2)
                 - 0.20 * math.exp(-((x - 2.5) / 0.24) ** 2))
        if y - horizon > ridge:
            rgb = mix(colour("#3a3787"), colour("#6a4596"), (y - horizon - ridge) / 0.3)
        return rgb
    depth = (y - horizon) / (1 - horizon)
    rgb = ramp([(0, "#e0808a"), (0.25, "#8d58a6"), (0.6, "#3c479c"), (1, "#1f276a")], depth)
    glitter = math.exp(-((x - sun_x) / (0.13 + 0.2 * depth)) ** 2) * (1.0 - 0.55 * depth)
    return mix(rgb, colour("#ffdc95"), glitter)


def mosaic(width, height, pitch, turn, opacity=lambda u: 1.0):
    """A picture of tiles that are transformed one after the other, from the left to the right:
    grey squares become coloured discs. `turn` tells where, in 0 to 1 of the width, which is also
    what `opacity` is given."""
    lines = []
    for row in range(math.ceil(height / pitch)):
        for column in range(math.ceil(width / pitch)):
            cx, cy = (column + 0.5) * pitch, (row + 0.5) * pitch
            u, v = cx / width, cy / height
            rgb = landscape(cx / height, v)
            luma = 0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2]
            grey = mix(colour("#1c1f45"), colour("#9ba0cf"), luma / 255)
            done = (u - turn) / 0.30 + 0.5 + 0.45 * (chance(column, row, 7) - 0.5)
            done = min(1.0, max(0.0, done))
            light = 0.93 + 0.14 * chance(column, row, 3)
            rgb = tuple(c * light for c in mix(grey, rgb, done))
            half = pitch * (0.455 - 0.02 * done)
            lines.append(tile(cx, cy, half, 0.12 + 0.88 * done, text_of(rgb), opacity(u)))
    return lines


def emblem(x, y, size):
    """Nine tiles on a night-blue ground; along the diagonal squares turn into discs."""
    stops = [(0, "#8fa2ff"), (0.25, "#6f7bff"), (0.5, "#c36bd8"), (0.75, "#ff7f7f"),
             (1, "#ffc15a")]
    k = size / 16
    lines = ['<g transform="translate(%s %s) scale(%s)">' % (number(x), number(y), number(k)),
             '<rect width="16" height="16" rx="2.9" fill="url(#ground)"/>',
             '<rect x="0.15" y="0.15" width="15.7" height="15.7" rx="2.75" fill="none" '
             'stroke="#ffffff" stroke-opacity="0.14" stroke-width="0.3"/>']
    for row in range(3):
        for column in range(3):
            t = (row + column) / 4
            lines.append('<rect x="%d" y="%d" width="4" height="4" rx="%s" fill="url(#tile%d)"/>'
                         % (1 + 5 * column, 1 + 5 * row, number(0.6 + 1.4 * t), row + column))
    lines.append("</g>")
    gradients = ['<linearGradient id="ground" x1="0" y1="0" x2="0" y2="1">'
                 '<stop offset="0" stop-color="#343a78"/><stop offset="1" stop-color="#171a3a"/>'
                 '</linearGradient>']
    for k in range(5):
        rgb = ramp(stops, k / 4)
        gradients.append(
            '<linearGradient id="tile%d" x1="0" y1="0" x2="0" y2="1"><stop offset="0" '
            'stop-color="%s"/><stop offset="1" stop-color="%s"/></linearGradient>'
            % (k, text_of(mix(rgb, (255, 255, 255), 0.22)), text_of(mix(rgb, (0, 0, 0), 0.06))))
    return gradients, lines


# ---- Pictures ----

def picture(path, width, height, gradients, lines):
    body = ["<defs>"] + gradients + ["</defs>"] + lines
    (HERE / path).write_text(
        '<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d" viewBox="0 0 %d %d">\n'
        % (width, height, width, height) + "\n".join(body) + "\n</svg>\n")


def shade(name, stops, across=False):
    end = 'x2="1" y2="0"' if across else 'x2="0" y2="1"'
    return '<linearGradient id="%s" x1="0" y1="0" %s>%s</linearGradient>' % (
        name, end, "".join('<stop offset="%s" stop-color="%s" stop-opacity="%s"/>' % stop
                           for stop in stops))


def words(font, text, x, y, size, fill, spacing=0.0):
    return '<path d="%s" fill="%s"/>' % (font.path(text, x, y, size, spacing), fill)


def ground(width, height):
    return '<rect width="%d" height="%d" fill="url(#night)"/>' % (width, height)


def main():
    font = Font(FONT)
    night = shade("night", [(0, NIGHT, 1), (1, DEEP, 1)])

    gradients, lines = emblem(0, 0, 16)
    (HERE / "../icons/program.svg").write_text(
        '<svg xmlns="http://www.w3.org/2000/svg" width="256" height="256" viewBox="0 0 16 16">\n'
        + "\n".join(["<defs>"] + gradients + ["</defs>"] + lines) + "\n</svg>\n")

    # Splash: the mosaic above, the name below.
    width, height = 420, 260
    lines = [ground(width, height)]
    lines += mosaic(width, 168, 12, 0.40)
    lines.append('<rect y="120" width="420" height="52" fill="url(#veil)"/>')
    lines += wordmark(30, 203, 1.22)
    lines.append(words(font, "OMBREL", 30, 177, 10.5, "#b9bdf0", 3.6))
    lines.append(words(font, "One chain of functions, every picture", 29, 248, 12, "#b9bdf0"))
    picture("splash.svg", width, height,
            [night, shade("veil", [(0, "#181b38", 0), (0.8, "#181b38", 1), (1, "#181b38", 1)])], lines)

    # About: what it is, and under which licence.
    width, height = 380, 280
    gradients, badge = emblem(28, 93, 68)
    lines = [ground(width, height)]
    lines += mosaic(width, 120, 12, 0.40)
    lines.append('<rect y="62" width="380" height="60" fill="url(#veil)"/>')
    lines += badge
    lines.append(words(font, "OMBREL", 117, 108, 10.5, "#b9bdf0", 3.6))
    lines += wordmark(116, 135, 1.16)
    lines.append(words(font, "Applies one chain of image functions", 28, 197, 15, PALE))
    lines.append(words(font, "to many pictures in one pass.", 28, 218, 15, PALE))
    lines.append(words(font, "Free software, GPL-3.0-or-later", 28, 256, 12, "#b9bdf0"))
    picture("about.svg", width, height,
            [night, shade("veil", [(0, "#1a1d3e", 0), (0.72, "#1a1d3e", 1), (1, "#1a1d3e", 1)])] + gradients, lines)

    # Banner: the name at the left, the mosaic coming in from the right.
    width, height = 300, 90
    lines = ['<rect width="300" height="90" rx="8" fill="url(#night)"/>']
    lines += mosaic(width, height, 10, 0.62, lambda u: min(1.0, max(0.0, (u - 0.33) / 0.45)))
    lines.append('<rect width="300" height="90" rx="8" fill="url(#veil)"/>')
    lines += wordmark(22, 42, 0.86)
    lines.append(words(font, "OMBREL", 22.5, 26, 8, "#b9bdf0", 2.8))
    lines.append(words(font, "One chain of functions, every picture", 22, 76, 9.2, "#d3d5f7"))
    picture("banner.svg", width, height,
            [night, shade("veil", [(0, "#1b1e40", 0.9), (0.5, "#1b1e40", 0.72),
                                   (0.8, "#1b1e40", 0)], True)], lines)


if __name__ == "__main__":
    main()
