#!/usr/bin/env python3
"""Draws what grows, from the figures of `./run bench`.

plots.py MEASUREMENTS.json FOLDER   writes an SVG for each plot into the folder

What should stay flat is drawn over a logarithmic axis, and what should grow in proportion over a linear one.
"""
import json
import math
import os
import statistics
import sys
from dataclasses import dataclass

import measure

WIDTH, HEIGHT = 480, 300
LEFT, RIGHT, TOP, BOTTOM = 64, 120, 36, 48
COLOURS = ("#1b6ca8", "#c8553d", "#3b8b5a", "#7a5195")


@dataclass
class Plot:
    """Lines over the numbers of something; each line has a name for each number."""

    file: str
    title: str
    across: str
    up: str
    numbers: tuple
    lines: dict
    figure: str = "real_time"
    grows: bool = False  # in proportion


PLOTS = [
    Plot("filters", "A section, by open section filters", "filters", "ns a section", (1, 10, 100, 1000),
         {f"{bytes_} B, {on}": f"sections/ours/cpus:{cpus}/filters:{{}}/bytes:{bytes_}/real_time"
          for cpus, on in ((1, "one CPU"), (2, "two CPUs")) for bytes_ in (1024, 4096)}),
    Plot("browsers", "A round trip, by connected browsers", "browsers", "us a round trip", (1, 8, 64),
         {"one CPU": "browsers/browsers:{}/real_time"}, "p50_us"),
    Plot("listeners", "A round trip, by listeners of its event", "listeners", "us a round trip", (1, 10, 100),
         {"one CPU": "listeners/listeners:{}/real_time"}, "p50_us", grows=True),
    Plot("services", "The reference service's memory, by services", "services", "KiB", (1, 10, 100),
         {"anonymous": "memory/services:{}"}, "kib", grows=True),
]


def round_up(value):
    """To a number whose quarters are short."""
    power = 10 ** math.floor(math.log10(value))
    return next(step * power for step in (1, 2, 4, 6, 8, 10) if step * power >= value)


class Canvas:
    def __init__(self, plot, most):
        self.plot = plot
        self.most = most
        self.parts = []

    def x(self, number):
        place = (lambda count: count) if self.plot.grows else math.log10
        least, most = place(self.plot.numbers[0]), place(self.plot.numbers[-1])
        return LEFT + (place(number) - least) / (most - least) * (WIDTH - LEFT - RIGHT)

    def y(self, value):
        return HEIGHT - BOTTOM - value / self.most * (HEIGHT - TOP - BOTTOM)

    def text(self, x, y, text, anchor="middle", extra=""):
        self.parts.append(f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}"{extra}>{text}</text>')

    def line(self, points, colour, width):
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        self.parts.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="{width}"/>')

    def axes(self):
        self.text(LEFT, 20, self.plot.title, "start", ' font-weight="bold"')
        for step in range(5):
            value = self.most * step / 4
            self.line([(LEFT, self.y(value)), (WIDTH - RIGHT, self.y(value))], "#dddddd", 1)
            self.text(LEFT - 8, self.y(value) + 4, f"{value:g}", "end")
        for number in self.plot.numbers:
            self.text(self.x(number), HEIGHT - BOTTOM + 18, number)
        self.text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 10, self.plot.across)
        middle = (TOP + HEIGHT - BOTTOM) / 2
        self.text(16, middle, self.plot.up, extra=f' transform="rotate(-90 16 {middle})"')

    def curve(self, name, values, colour, label_y):
        points = [(self.x(number), self.y(value)) for number, value in zip(self.plot.numbers, values)]
        self.line(points, colour, 2)
        self.parts += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{colour}"/>' for x, y in points]
        self.text(WIDTH - RIGHT + 10, label_y, name, "start", f' fill="{colour}"')

    def svg(self):
        return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" '
                f'viewBox="0 0 {WIDTH} {HEIGHT}" font-family="sans-serif" font-size="12">\n'
                f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>\n' + "\n".join(self.parts) + "\n</svg>\n")


def drawn(plot, figures):
    """The plot as SVG; nothing if something of it was not measured."""
    lines = {}
    for name, measurement in plot.lines.items():
        values = [figures.get((measurement.format(number), plot.figure)) for number in plot.numbers]
        if not all(values):
            return None
        lines[name] = [statistics.median(each) for each in values]
    canvas = Canvas(plot, round_up(max(max(values) for values in lines.values())))
    canvas.axes()
    # Names beside the lines' ends, far enough apart to be read.
    label_y = HEIGHT
    for colour, (name, values) in zip(COLOURS, sorted(lines.items(), key=lambda line: line[1][-1])):
        label_y = min(canvas.y(values[-1]) + 4, label_y - 16)
        canvas.curve(name, values, colour, label_y)
    return canvas.svg()


def main(arguments):
    measurements, folder = arguments
    with open(measurements, encoding="utf-8") as file:
        figures = measure.figures_of(json.load(file))
    for plot in PLOTS:
        svg = drawn(plot, figures)
        if svg:
            with open(os.path.join(folder, f"{plot.file}.svg"), "w", encoding="utf-8") as file:
                file.write(svg)


if __name__ == "__main__":
    main(sys.argv[1:])
