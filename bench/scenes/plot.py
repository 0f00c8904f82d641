"""Draws the ratios of the times as bars on a logarithmic scale, as SVG."""
import math
from xml.sax.saxutils import escape

ROW, LEFT, WIDTH, TOP = 24, 100, 640, 48
FASTER, SLOWER, NONE = "#2a7f62", "#b5483a", "#8a8a8a"


def scale(low, high):
    span = math.log10(high / low)
    return lambda ratio: LEFT + WIDTH * math.log10(ratio / low) / span


def row_of(line, y, place):
    scene, ratio = escape(line["scene"]), line["ratio"]
    label = f'<text x="{LEFT - 8}" y="{y + 16}" text-anchor="end">{scene}</text>'
    ours, other = line["ours"], line["other"]
    if math.isnan(ratio):
        who = "only ours holds" if ours else "only another holds" if other else "none holds"
        colour = FASTER if ours else SLOWER if other else NONE
        return label + f'<text x="{place(1) + 6:.1f}" y="{y + 16}" fill="{colour}">{who}</text>'
    from_x, to_x = sorted((place(1), place(ratio)))
    colour = FASTER if ratio <= 1 else SLOWER
    note = escape(f"{ratio:.3g}  {ours.variant} / {other.name}")
    return (label + f'<rect x="{from_x:.1f}" y="{y + 4}" width="{max(to_x - from_x, 1):.1f}" '
            f'height="{ROW - 8}" fill="{colour}"/>'
            f'<text x="{LEFT + WIDTH + 12}" y="{y + 16}">{note}</text>')


def write(path, lines):
    ratios = [line["ratio"] for line in lines if not math.isnan(line["ratio"])] + [0.1, 10]
    low = 10 ** math.floor(math.log10(min(ratios)))
    high = 10 ** math.ceil(math.log10(max(ratios)))
    place = scale(low, high)
    bottom = TOP + ROW * len(lines)
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{LEFT + WIDTH + 330}" '
             f'height="{bottom + 40}" font-family="sans-serif" font-size="13">',
             '<rect width="100%" height="100%" fill="white"/>',
             f'<text x="{LEFT}" y="24" font-size="15">Time of Halcyr over that of the fastest other '
             'engine, both at acceptable quality</text>']
    for power in range(round(math.log10(low)), round(math.log10(high)) + 1):
        x = place(10 ** power)
        parts.append(f'<line x1="{x:.1f}" y1="{TOP}" x2="{x:.1f}" y2="{bottom}" '
                     f'stroke="{"#000" if power == 0 else "#ddd"}"/>'
                     f'<text x="{x:.1f}" y="{bottom + 18}" text-anchor="middle">'
                     f'{10.0 ** power:g}</text>')
    parts += [row_of(line, TOP + ROW * i, place) for i, line in enumerate(lines)]
    parts.append("</svg>\n")
    with open(path, "w", encoding="utf-8") as file:
        file.write("\n".join(parts))
