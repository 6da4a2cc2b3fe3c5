"""Draws time by input size as small log-log plots in one SVG file, for light and dark backgrounds.

usage: growth_plot.py FIGURES SVG

FIGURES is the JSON file that bench/compare writes.
"""
import json
import math
import pathlib
import sys
from xml.sax.saxutils import escape

COLUMNS = 4
WIDTH, HEIGHT = 230, 180  # of a panel
LEFT, RIGHT, TOP, BOTTOM = 52, 10, 26, 36  # around its plot

STYLE = """
    .paper { fill: #fff; }
    text { font: 10px sans-serif; fill: #333; }
    .title { font-weight: bold; font-size: 11px; }
    .grid { stroke: #bbb; stroke-width: 0.5; }
    .linear { stroke: #888; stroke-dasharray: 3 3; fill: none; }
    .measured { stroke: #0b62b5; stroke-width: 1.5; fill: none; }
    .point { fill: #0b62b5; }
    @media (prefers-color-scheme: dark) {
      .paper { fill: #0d1117; }
      text { fill: #ccc; }
      .grid { stroke: #555; }
      .measured { stroke: #6db3f2; }
      .point { fill: #6db3f2; }
    }
"""


def size_text(size, unit):
    if unit == "bytes":
        for name, scale in (("MiB", 1 << 20), ("KiB", 1 << 10)):
            if size >= scale:
                return f"{size / scale:.0f} {name}"
        return f"{size:.0f} B"
    return f"{size:,.0f}"


def decade_text(exponent):
    """Returns the text of 10 to the power of `exponent` nanoseconds."""
    unit = ("ns", "µs", "ms", "s")[min(exponent // 3, 3)]
    return f"{10 ** (exponent - 3 * min(exponent // 3, 3))} {unit}"


def panel(title, unit, points, x0, y0):
    left, right = math.log(points[0][0]), math.log(points[-1][0])
    times = [time for _, time in points]
    low, high = math.floor(math.log10(min(times))), math.ceil(math.log10(max(times)))

    def x(size):
        return x0 + LEFT + (math.log(size) - left) / (right - left) * (WIDTH - LEFT - RIGHT)

    def y(time):
        return y0 + HEIGHT - BOTTOM - (math.log10(time) - low) / (high - low) * (HEIGHT - TOP - BOTTOM)

    floor, ceiling = y0 + HEIGHT - BOTTOM, y0 + TOP
    lines = [f'<text class="title" x="{x0 + LEFT}" y="{y0 + 14}">{escape(title)}</text>']
    step = max(1, math.ceil((high - low) / 4))
    for exponent in range(low, high + 1, step):
        at = y(10.0 ** exponent)
        lines.append(f'<line class="grid" x1="{x0 + LEFT}" y1="{at:.1f}" x2="{x0 + WIDTH - RIGHT}" y2="{at:.1f}"/>')
        lines.append(f'<text x="{x0 + LEFT - 4}" y="{at + 3:.1f}" text-anchor="end">{decade_text(exponent)}</text>')
    sizes = [size for size, _ in points]
    for size, anchor in ((sizes[0], "start"), (sizes[len(sizes) // 2], "middle"), (sizes[-1], "end")):
        lines.append(f'<line class="grid" x1="{x(size):.1f}" y1="{ceiling}" x2="{x(size):.1f}" y2="{floor}"/>')
        lines.append(f'<text x="{x(size):.1f}" y="{floor + 12}" text-anchor="{anchor}">{size_text(size, unit)}</text>')
    middle = x0 + (LEFT + WIDTH - RIGHT) / 2
    lines.append(f'<text x="{middle}" y="{floor + 25}" text-anchor="middle">{unit}</text>')

    # Linear growth passes through the point of the largest size.
    last, latest = points[-1]
    first = max(sizes[0], last * 10.0 ** low / latest)
    lines.append(f'<line class="linear" x1="{x(first):.1f}" y1="{y(latest * first / last):.1f}" x2="{x(last):.1f}" '
                 f'y2="{y(latest):.1f}"/>')
    path = " ".join(f"{x(size):.1f},{y(time):.1f}" for size, time in points)
    lines.append(f'<polyline class="measured" points="{path}"/>')
    lines += [f'<circle class="point" cx="{x(size):.1f}" cy="{y(time):.1f}" r="1.6"/>' for size, time in points]
    return lines


def svg(panels):
    """Returns the SVG. Each panel is a title, the unit of the sizes, and a sorted list of (size, nanoseconds)."""
    rows = math.ceil(len(panels) / COLUMNS)
    width, height = COLUMNS * WIDTH, rows * HEIGHT
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" '
             f'height="{height}" role="img">', "  <title>Time by input size; the dashed lines are linear</title>",
             f"  <style>{STYLE}  </style>", f'  <rect class="paper" width="{width}" height="{height}"/>']
    for number, (title, unit, points) in enumerate(panels):
        row, column = divmod(number, COLUMNS)
        lines += ["  " + line for line in panel(title, unit, points, column * WIDTH, row * HEIGHT)]
    return "\n".join(lines + ["</svg>"]) + "\n"


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__.strip())
    figures, picture = map(pathlib.Path, sys.argv[1:])
    picture.write_text(svg(json.loads(figures.read_text())))
