"""Draws the ratios as a chart: a dot for each median, a line for the middle half, on a logarithmic scale."""

import math
from html import escape

WIDTH = 1070
LABEL_WIDTH = 400
ROW_HEIGHT = 17
HEAD_HEIGHT = 44
LOWEST, HIGHEST = 0.1, 200
TICKS = (0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100, 200)
COLOURS = ("#0b62a4", "#d9541a", "#2f8f4e", "#8a4fa3", "#a07800")
STYLE = ("text{font:12px sans-serif;fill:#222}.head{font-weight:bold;font-size:14px}.tick{fill:#666;font-size:11px}"
         ".grid{stroke:#ddd}.even{stroke:#222}.slower{fill:#fbeeee}")


def x_of(ratio):
    share = math.log(min(max(ratio, LOWEST), HIGHEST) / LOWEST) / math.log(HIGHEST / LOWEST)
    return LABEL_WIDTH + share * (WIDTH - LABEL_WIDTH - 20)


def text(x, y, content, attributes=""):
    return f'<text x="{x:.1f}" y="{y:.1f}"{attributes}>{escape(content)}</text>'


def draw_scale(top, bottom):
    shapes = [f'<rect class="slower" x="{LABEL_WIDTH}" y="{top}" width="{x_of(1) - LABEL_WIDTH:.1f}" '
              f'height="{bottom - top}"/>']
    for tick in TICKS:
        x = x_of(tick)
        shapes.append(f'<line class="{"even" if tick == 1 else "grid"}" x1="{x:.1f}" x2="{x:.1f}" y1="{top}" '
                      f'y2="{bottom}"/>')
        for y in (top - 5, bottom + 14):
            shapes.append(text(x, y, f"{tick:g}", ' class="tick" text-anchor="middle"'))
    return shapes


def draw_group(program, ratios, top):
    """A heading with the peers' colours, and a row for each operation. Also gives the lower edge."""
    colours = dict(zip(dict.fromkeys(ratio["peer"] for ratio in ratios), COLOURS * 3))
    shapes = [text(10, top + 28, program, ' class="head"')]
    x = LABEL_WIDTH
    for peer, colour in colours.items():
        shapes.append(f'<circle cx="{x + 5}" cy="{top + 24}" r="4" fill="{colour}"/>')
        shapes.append(text(x + 13, top + 28, peer))
        x += 28 + 7 * len(peer)
    y = top + HEAD_HEIGHT
    for what in dict.fromkeys(ratio["what"] for ratio in ratios):
        shapes.append(text(LABEL_WIDTH - 10, y + 4, what, ' text-anchor="end"'))
        for ratio in (ratio for ratio in ratios if ratio["what"] == what):
            colour = colours[ratio["peer"]]
            title = escape(f'{what}, {ratio["peer"]}: {ratio["median"]:.2f} '
                           f'({ratio["lower"]:.2f} to {ratio["upper"]:.2f})')
            shapes.append(f'<g><title>{title}</title><line x1="{x_of(ratio["lower"]):.1f}" '
                          f'x2="{x_of(ratio["upper"]):.1f}" y1="{y}" y2="{y}" stroke="{colour}" stroke-width="2"/>'
                          f'<circle cx="{x_of(ratio["median"]):.1f}" cy="{y}" r="4" fill="{colour}"/></g>')
        y += ROW_HEIGHT
    return shapes, y


def draw(ratios):
    top = 66
    groups, bottom = [], top
    for program in dict.fromkeys(ratio["program"] for ratio in ratios):
        shapes, bottom = draw_group(program, [ratio for ratio in ratios if ratio["program"] == program], bottom)
        groups += shapes
    height = bottom + 24
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height}" width="{WIDTH}" height="{height}">',
        f"<style>{STYLE}</style>",
        f'<rect width="{WIDTH}" height="{height}" fill="#fff"/>',
        text(10, 24, "Times as fast as the peer: medians of interleaved pairs, lines from quartile to quartile",
             ' class="head"'),
        text(10, 42, "To the right of 1 Zelto is faster. The scale is logarithmic; what lies beyond its ends is drawn "
                     "at them."),
        *draw_scale(top, bottom),
        *groups,
        "</svg>",
    ]) + "\n"
