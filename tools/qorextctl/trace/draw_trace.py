#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Draws a timeline of `qorextctl trace`, or a part of it, as an SVG picture.

    draw_trace.py TRACE.json PICTURE.svg [FROM_US TO_US]

The layout is that of Perfetto's viewer: one row per track, inner slices below outer ones, instants
as marks, arrows from requests to replies. Without times the picture shows the whole timeline.
"""

import json
import math
import sys
from html import escape

LEFT, RIGHT, TOP = 150, 14, 34
WIDTH = 960  # of the time axis
SLICE, GAP, MARKS = 18, 10, 16
TICKS = 10
COLORS = ("#7fb3d5", "#f0b27a", "#82c99b", "#c39bd3", "#f1948a", "#a3b8c2", "#d7bf72")
CHARACTER = 5.6  # width of a character of the font


def text(x, y, content, anchor="start", color="#333", size=10):
    return (f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{color}" '
            f'font-size="{size}">{escape(content)}</text>')


def line(x1, y1, x2, y2, color):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{color}"/>'


def round_step(minimum):
    """Returns the next number of 1, 2, 5, 10, 20, ..."""
    power = 10 ** math.floor(math.log10(minimum))
    return next(power * factor for factor in (1, 2, 5, 10) if power * factor >= minimum)


def with_depths(slices):
    """Returns the slices, each with the number of slices around it."""
    ends = []
    for slice_ in slices:
        while ends and ends[-1] <= slice_["ts"]:
            ends.pop()
        yield slice_, len(ends)
        ends.append(slice_["ts"] + slice_["dur"])


class Picture:
    def __init__(self, events, begin, end):
        self.events = [event for event in events if event["ph"] != "M"]
        self.tracks = {event["tid"]: event["args"]["name"]
                       for event in events if event["name"] == "thread_name"}
        self.begin, self.end = begin, end
        self.parts = []
        self.tops = {}  # y of the slices, by track

    def x_of(self, time):
        return LEFT + WIDTH * (time - self.begin) / (self.end - self.begin)

    def events_of(self, track, phase):
        return [event for event in self.events if event["tid"] == track and event["ph"] == phase]

    def is_visible(self, event):
        return event["ts"] + event.get("dur", 0) >= self.begin and event["ts"] <= self.end

    def draw_axis(self, height):
        step = round_step((self.end - self.begin) / TICKS)
        for i in range(int((self.end - self.begin) / step) + 1):
            x = self.x_of(self.begin + i * step)
            self.parts += [line(x, TOP - 6, x, height, "#e5e5e5"),
                           text(x, TOP - 12, f"{i * step / 1000:g} ms", "middle", "#777")]

    def draw_slice(self, event, y):
        left = max(self.x_of(event["ts"]), LEFT)
        right = min(self.x_of(event["ts"] + event["dur"]), LEFT + WIDTH)
        width = max(right - left, 1.5)
        color = COLORS[sum(map(ord, event["name"])) % len(COLORS)]
        self.parts.append(f'<rect x="{left:.1f}" y="{y}" width="{width:.1f}" '
                          f'height="{SLICE - 2}" fill="{color}"><title>{escape(event["name"])}'
                          '</title></rect>')
        room = int((width - 4) / CHARACTER)
        if room >= 4:
            name = event["name"] if len(event["name"]) <= room else event["name"][:room - 1] + "…"
            self.parts.append(text(left + 3, y + 12, name))

    def draw_instant(self, event, y):
        x = self.x_of(event["ts"])
        self.parts.append(f'<path d="M{x:.1f} {y} l4 10 l-8 0 z" fill="#5d6d7e">'
                          f'<title>{escape(event["name"])}</title></path>')

    def draw_track(self, track, y):
        """Returns the top of the next track."""
        slices = [(event, depth) for event, depth in with_depths(self.events_of(track, "X"))
                  if self.is_visible(event)]
        instants = [event for event in self.events_of(track, "i") if self.is_visible(event)]
        self.tops[track] = y + (MARKS if instants else 0)
        rows = max((depth + 1 for _, depth in slices), default=0)
        bottom = max(self.tops[track] + rows * SLICE, y + MARKS) + GAP
        self.parts += [line(0, bottom - GAP / 2, LEFT + WIDTH + RIGHT, bottom - GAP / 2, "#ccc"),
                       text(10, y + 12, self.tracks[track], size=12)]
        for event in instants:
            self.draw_instant(event, y)
        for event, depth in slices:
            self.draw_slice(event, self.tops[track] + depth * SLICE)
        return bottom

    def draw_arrows(self):
        stops = {}
        for event in self.events:
            if event["ph"] in "stf" and self.is_visible(event):
                stops.setdefault(event["id"], []).append(event)
        for arrow in stops.values():
            for start, end in zip(arrow, arrow[1:]):
                x1, y1 = self.x_of(start["ts"]), self.tops[start["tid"]] + SLICE / 2
                x2, y2 = self.x_of(end["ts"]), self.tops[end["tid"]] + SLICE / 2
                bend = max(20, (x2 - x1) / 3)
                self.parts.append(
                    f'<path d="M{x1:.1f} {y1} C{x1 + bend:.1f} {y1} {x2 - bend:.1f} {y2} '
                    f'{x2:.1f} {y2}" fill="none" stroke="#1b4f72" stroke-width="1.3" '
                    'marker-end="url(#head)"/>')

    def draw(self):
        y = TOP + 4
        for track in sorted(self.tracks):
            y = self.draw_track(track, y)
        self.draw_arrows()
        tracks, self.parts = self.parts, []
        self.draw_axis(y - GAP / 2)
        width = LEFT + WIDTH + RIGHT
        return "\n".join([
            f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{y:.0f}" '
            'font-family="sans-serif"><rect width="100%" height="100%" fill="white"/>',
            '<marker id="head" viewBox="0 0 8 8" refX="7" refY="4" markerWidth="7" '
            'markerHeight="7" orient="auto"><path d="M0 0 L8 4 L0 8 z" fill="#1b4f72"/></marker>',
            *self.parts, *tracks, "</svg>\n"])


def main():
    if len(sys.argv) not in (3, 5):
        sys.exit(__doc__)
    with open(sys.argv[1], encoding="utf-8") as file:
        events = json.load(file)["traceEvents"]
    times = [event["ts"] + event.get("dur", 0) for event in events if "ts" in event]
    begin, end = map(float, sys.argv[3:]) if len(sys.argv) == 5 else (0, max(times))
    with open(sys.argv[2], "w", encoding="utf-8") as file:
        file.write(Picture(events, begin, end).draw())


if __name__ == "__main__":
    main()
