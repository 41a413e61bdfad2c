"""Draws panels of curves and of bars, on logarithmic axes, as one SVG."""

import math
from html import escape

INK, GREY, LIGHT = "#222", "#888", "#e4e4e4"
COLOURS = ["#888888", "#1b6ca8", "#c8553d", "#3a7d44"]
WIDTH, HEIGHT = 460, 300  # Of a panel.
LEFT, TOP, RIGHT, BOTTOM = 62, 56, 18, 48


def text(x, y, words, anchor="start", colour=INK, weight="normal", turn=None):
    turned = f' transform="rotate({turn} {x:.1f} {y:.1f})"' if turn else ""
    return (f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{colour}" font-weight="{weight}"{turned}>'
            f"{escape(words)}</text>\n")


def short(value):
    """1000000 as 1 M."""
    for size, letter in ((1e9, " G"), (1e6, " M"), (1e3, " k")):
        if value >= size:
            return f"{value / size:g}{letter}"
    return f"{value:g}"


def around(low, high):
    """Round numbers from below `low` to above `high`: powers of ten, and within few of them their doubles and halves."""
    powers = range(math.floor(math.log10(low)), math.ceil(math.log10(high)) + 1)
    marks = [10.0**i * step for i in powers for step in ((1, 2, 5) if len(powers) < 4 else (1,))]
    return [mark for i, mark in enumerate(marks)
            if marks[min(i + 1, len(marks) - 1)] > low and (i == 0 or marks[i - 1] < high)]


class Axis:
    """Maps values to pixels by their logarithm; `marks` are where it is labelled."""

    def __init__(self, values, begin, end, marks=None):
        low, high = min(values), max(values)
        self.marks = marks or around(low, high)
        self.low = math.log10(min(low, self.marks[0]))
        self.high = max(math.log10(max(high, self.marks[-1])), self.low + 0.1)
        self.begin, self.end = begin, end

    def __call__(self, value):
        return self.begin + (math.log10(value) - self.low) / (self.high - self.low) * (self.end - self.begin)


def curves(title, horizontal, vertical, lines):
    """A panel: lines is name to a list of (x, y)."""
    points = [point for line in lines.values() for point in line]
    xs = sorted({x for x, _ in points})
    right, bottom = WIDTH - RIGHT, HEIGHT - BOTTOM
    x_axis = Axis(xs, LEFT, right, xs)
    y_axis = Axis([y for _, y in points], bottom, TOP)
    body = text(LEFT, 20, title, weight="bold")
    for mark in y_axis.marks:
        body += f'<path d="M{LEFT} {y_axis(mark):.1f}H{right}" stroke="{LIGHT}"/>'
        body += text(LEFT - 6, y_axis(mark) + 4, short(mark), "end", GREY)
    for mark in xs:
        body += f'<path d="M{x_axis(mark):.1f} {bottom}v4" stroke="{GREY}"/>'
        body += text(x_axis(mark), bottom + 17, short(mark), "middle", GREY)
    body += text((LEFT + right) / 2, bottom + 36, horizontal, "middle")
    body += text(14, (TOP + bottom) / 2, vertical, "middle", turn=-90)
    key = LEFT
    for (name, line), colour in zip(lines.items(), COLOURS):
        track = " ".join(f"{x_axis(x):.1f},{y_axis(y):.1f}" for x, y in line)
        body += f'<polyline points="{track}" fill="none" stroke="{colour}" stroke-width="2"/>'
        body += "".join(f'<circle cx="{x_axis(x):.1f}" cy="{y_axis(y):.1f}" r="3" fill="{colour}"/>' for x, y in line)
        body += f'<path d="M{key} 38h16" stroke="{colour}" stroke-width="3"/>' + text(key + 21, 42, name)
        key += 34 + 6.8 * len(name)
    return body


def bars(title, horizontal, rows):
    """A panel: rows is name to a value."""
    left, right, bottom = 190, WIDTH - 66, HEIGHT - BOTTOM
    axis = Axis(rows.values(), left, right)
    body = text(LEFT, 20, title, weight="bold")
    for mark in axis.marks:
        body += f'<path d="M{axis(mark):.1f} {TOP - 16}V{bottom}" stroke="{LIGHT}"/>'
        body += text(axis(mark), bottom + 17, short(mark), "middle", GREY)
    step = (bottom - TOP + 16) / len(rows)
    for i, (name, value) in enumerate(rows.items()):
        y = TOP - 16 + step * i
        colour = COLOURS[0 if "bare" in name else 1 if "library" in name else 2]
        body += text(left - 8, y + step / 2 + 4, name, "end")
        body += f'<rect x="{left}" y="{y + 4:.1f}" width="{max(1, axis(value) - left):.1f}" height="{step - 8:.1f}" fill="{colour}"/>'
        body += text(max(left, axis(value)) + 5, y + step / 2 + 4, f"{value:,.3g}" if value < 100 else f"{value:,.0f}", colour=GREY)
    body += text((left + right) / 2, bottom + 36, horizontal, "middle")
    return body


def page(panels, columns=2):
    rows = math.ceil(len(panels) / columns)
    width, height = columns * WIDTH, rows * HEIGHT
    body = "".join(f'<g transform="translate({i % columns * WIDTH} {i // columns * HEIGHT})">{panel}</g>\n'
                   for i, panel in enumerate(panels))
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" font-family="sans-serif" '
            f'font-size="12"><rect width="{width}" height="{height}" fill="white"/>\n{body}</svg>\n')
