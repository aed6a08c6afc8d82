# SPDX-License-Identifier: Apache-2.0
"""The latency distributions of daemon and limit program as an SVG picture."""

import math

from places import NAMES, SPREADS

WIDTH, HEIGHT = 220, 160  # of one diagram
LEFT, TOP, GAP = 50, 50, 45
COLORS = {"daemon": "#c0392b", "limit": "#2c3e50"}
MAX_SHOWN = 2.5  # times the limit's median; above is the noise of the machine


def text(x, y, content, anchor="middle", color="#333", size=11):
    return (f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{color}" '
            f'font-size="{size}">{content}</text>')


def line(x1, y1, x2, y2, color="#ddd"):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{color}"/>'


def ticks(high):
    """Returns about four round numbers up to `high`."""
    step = 10 ** math.floor(math.log10(high))
    while high / step < 3:
        step /= 2
    return [step * i for i in range(int(high / step) + 1)]


def diagram(x, y, title, found):
    """Draws the share of the requests (upwards) that took at most a time (to the right)."""
    high = MAX_SHOWN * found["limit"]["p50_us"]
    shown = {who: [time for time in found[who]["points_us"] if time <= high] for who in COLORS}

    def across(time):
        return x + WIDTH * time / high

    parts = [text(x + WIDTH / 2, y - 8, title)]
    for share in (0, 0.5, 1):
        parts += [line(x, y + HEIGHT * (1 - share), x + WIDTH, y + HEIGHT * (1 - share)),
                  text(x - 6, y + HEIGHT * (1 - share) + 4, f"{share:.0%}", "end", size=10)]
    for time in ticks(high):
        parts += [line(across(time), y, across(time), y + HEIGHT),
                  text(across(time), y + HEIGHT + 14, f"{time:g}", size=10)]
    for who, points in shown.items():
        steps = len(found[who]["points_us"]) - 1
        path = " ".join(f"{across(time):.1f},{y + HEIGHT * (1 - i / steps):.1f}"
                        for i, time in enumerate(points))
        parts.append(f'<polyline fill="none" stroke="{COLORS[who]}" stroke-width="1.5" '
                     f'points="{path}"/>')
    return parts


def picture(latency):
    width = LEFT + len(NAMES) * (WIDTH + GAP)
    height = TOP + len(SPREADS) * (HEIGHT + GAP) + 10
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
             'font-family="sans-serif"><rect width="100%" height="100%" fill="white"/>',
             text(LEFT, 18, "From request to reply: share of requests served within so many "
                  "microseconds", "start", size=13)]
    for i, (who, color) in enumerate(COLORS.items()):
        parts.append(text(width - 130 + 60 * i, 18, who, "start", color, 13))
    for row_number, (spread, where) in enumerate(SPREADS.items()):
        for column, (name, what) in enumerate(NAMES.items()):
            parts += diagram(LEFT + column * (WIDTH + GAP), TOP + row_number * (HEIGHT + GAP),
                             f"{what}, {where}", latency[spread][name])
    return "\n".join(parts) + "\n</svg>\n"
