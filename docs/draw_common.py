"""What the drawings share: the library's results, meshes, and shapes on the paper."""
import io
import re
import sys
from pathlib import Path

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt
import numpy as np
from matplotlib.patches import Arc, FancyArrowPatch, PathPatch, Polygon, Rectangle
from matplotlib.path import Path as Outline

sys.path.insert(0, str(Path(__file__).parent.parent / "bindings" / "python"))
from velquor import core  # noqa: E402

LIBRARY, FOLDER = Path(sys.argv[1]).resolve(), Path(sys.argv[2])  # as draw.py is called

INK, GREY, PALE = "#22303c", "#8a97a3", "#e9edf0"
BLUE, RED, GREEN, SAND = "#2c6fb3", "#c2442d", "#3b8056", "#b9852b"
TINT = {BLUE: "#dbe7f3", RED: "#f6dfda", GREEN: "#dcebe1", SAND: "#f3e8d3", GREY: PALE}
plt.rcParams.update({
    "svg.hashsalt": "velquor", "svg.fonttype": "path", "font.family": "DejaVu Sans", "font.size": 9,
    "text.color": INK, "axes.edgecolor": INK, "axes.labelcolor": INK, "xtick.color": INK, "ytick.color": INK,
    "savefig.facecolor": "white", "savefig.bbox": "tight", "savefig.pad_inches": 0.08, "path.simplify": True})


def settled(table):
    """The table to nine digits of the largest value in each of its last columns, and no zero with a sign."""
    largest = np.abs(table).max(axis=tuple(range(table.ndim - 1)))
    size = [10.0 ** np.floor(np.log10(float(f"{x:.6g}"))) if x > 0 else 1 for x in largest]
    return np.round(table / size, 9) * size + 0.0


def calculate(nodes, elements, **given):
    """One call for a section of steel; a name in capitals sets its column, for all elements or for each.

    The last digits are rounded off: they decide between contours through zeros, and the names of paths in a file."""
    material = {"EMOD": 210e3, "GMOD": 81e3, "FNEG": 235, "FPOS": 235} | given
    r = core.calculate(nodes, elements, core.property_table(len(elements), **material), library=LIBRARY)
    for name in core.SLOTS:
        setattr(r, name, float(f"{round(getattr(r, name), 9):.9g}") + 0.0)
    r.warping, r.TAUY, r.TAUZ, r.SIGMA = map(settled, (r.warping, r.TAUY, r.TAUZ, r.SIGMA))
    return r


def colours(count):
    """So many of the map from blue to red, each from the middle of its share."""
    return plt.get_cmap("RdBu_r")((np.arange(count) + 0.501) / count)


def shear_stress(section, case):
    """(e, corner, Y or Z) of a load case, from 0."""
    return np.stack([section.TAUY[:, :, case], section.TAUZ[:, :, case]], axis=-1)


def grid(step, columns, rows, is_inside=lambda i, j: True, y0=0.0, z0=0.0):
    """Square cells row by row, as examples/first_call.c makes them: nodes (n, 2) and elements (e, 4) from 1."""
    number, nodes, elements = {}, [], []
    cells = [(i, j) for j in range(rows) for i in range(columns) if is_inside(i, j)]
    for i, j in cells:
        for corner in range(4):
            key = (j + corner // 2, i + corner % 2)
            if key not in number:
                number[key] = len(number) + 1
                nodes.append((y0 + step * key[1], z0 + step * key[0]))
    for i, j in cells:
        elements.append([number[j, i], number[j, i + 1], number[j + 1, i + 1], number[j + 1, i]])
    return np.array(nodes), np.array(elements)


def angle(step):
    """The unequal angle 100 x 60 x 10 of the first call."""
    wall = round(10 / step)
    return grid(step, round(60 / step), round(100 / step), lambda i, j: i < wall or j < wall)


def save(name):
    """Coordinates are kept to a hundredth of a point; scales of letters are not coordinates."""
    text = io.StringIO()
    plt.savefig(text, format="svg", metadata={"Date": None})
    plt.close()
    short = lambda match: f"{float(match[0]):.2f}".rstrip("0").rstrip(".")
    shorter = lambda match: match[0] if "scale" in match[0] else re.sub(r"-?\d+\.\d{3,}", short, match[0])
    svg = re.sub(r'\b(d|x|y|transform|width|height)="[^"]*"', shorter, text.getvalue())
    (FOLDER / f"{name}.svg").write_text("\n".join(line.rstrip() for line in svg.splitlines()) + "\n")


def section_axes(ax, nodes, title=None, margin=0.12):
    size = np.ptp(nodes, axis=0).max() * margin
    ax.set_aspect("equal")
    ax.set_xlim(nodes[:, 0].min() - size, nodes[:, 0].max() + size)
    ax.set_ylim(nodes[:, 1].min() - size, nodes[:, 1].max() + size)
    ax.axis("off")
    if title:
        ax.set_title(title, fontsize=9)


def fill(ax, polygons, face, edge="none", width=0.0):
    """Polygons as one path, which keeps the file small."""
    paths = [Outline(np.vstack([corners, corners[:1]]), closed=True) for corners in polygons]
    ax.add_patch(PathPatch(Outline.make_compound_path(*paths), facecolor=face, edgecolor=edge, linewidth=width))


def draw_mesh(ax, nodes, elements, width=0.5, face=PALE, edge=GREY):
    fill(ax, [nodes[element - 1] for element in elements], face, edge, width)


def outline(ax, corners, face=PALE):
    ax.add_patch(Polygon(corners, facecolor=face, edgecolor=INK, linewidth=1.1))


ANGLE_OUTLINE = [(0, 0), (60, 0), (60, 10), (10, 10), (10, 100), (0, 100)]


def arrow(ax, start, end, color=INK, width=1.2, style="-|>", scale=10, **kind):
    ax.add_patch(FancyArrowPatch(start, end, arrowstyle=style, mutation_scale=scale, linewidth=width, color=color,
                                 shrinkA=0, shrinkB=0, **kind))


def turn(ax, centre, radius, color, start=-60, end=200, width=1.4):
    """An arc with its head at the end: counter-clockwise when end is above start."""
    a, b = np.radians([start, end])
    ax.add_patch(Arc(centre, 2 * radius, 2 * radius, theta1=min(start, end), theta2=max(start, end), color=color,
                     linewidth=width))
    tip, back = np.radians(end), np.radians(end - np.sign(end - start) * 14)
    point = lambda t: (centre[0] + radius * np.cos(t), centre[1] + radius * np.sin(t))
    arrow(ax, point(back), point(tip), color, width)


def strip(ax, x, y, labels, width, height=0.8, color=GREY, size=8):
    """Cells of memory side by side; returns where the strip ends."""
    for k, label in enumerate(labels):
        gap = label == "..."
        if not gap:
            ax.add_patch(Rectangle((x + k * width, y), width, height, facecolor=TINT[color], edgecolor=color,
                                   linewidth=0.8))
        ax.text(x + (k + 0.5) * width, y + height / 2, label, ha="center", va="center", fontsize=size)
    return x + len(labels) * width


def blank(width, height, xlim, ylim):
    figure, ax = plt.subplots(figsize=(width, height))
    ax.set_xlim(*xlim)
    ax.set_ylim(*ylim)
    ax.axis("off")
    return ax
