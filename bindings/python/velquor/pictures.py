"""Pictures of a section: its mesh and fields by matplotlib, and a table with a drawing for notebooks."""
import base64
import html
import math
import os
import subprocess
from typing import Any, Dict, List, Optional, Tuple

import numpy as np

from .catalogue import catalogue_of
from .places import find_command
from .requests import text_of
from .results import Field, Fields, Section, SectionError, _unknown

MAIN = ("A", "A_tr", "mass", "Iy", "Iz", "alpha", "Wel_y", "Wel_z", "It", "Wt", "Iw", "y_M", "z_M", "As_y", "As_z", "Wpl_y",
        "Wpl_z", "Mpl_y", "Mpl_z")
FILLS = ("#dbe7f3", "#f3e8d3", "#dcebe1", "#f6dfda", "#e9edf0")  # of materials
INK, GREY = "#22303c", "#8a97a3"
QUANTITIES = {"mises": "von Mises' stress", "shear": "shear stress", "axial": "axial stress"}


def plot(section: Section, field: Optional[str], ax: Any, quantity: Optional[str]) -> Any:
    try:
        import matplotlib.pyplot as plt
        from matplotlib.collections import LineCollection, PolyCollection
        from matplotlib.tri import Triangulation
    except ImportError as error:
        raise ImportError("plot: matplotlib is needed; on Debian it is the package python3-matplotlib") from error

    mesh, fields = section.mesh, section.fields
    values, label = (None, "") if field is None else _values(section, field, quantity)
    if ax is None:
        ax = plt.subplots()[1]
    if values is None:
        material = fields.material[fields.elements - 1].min(axis=1)  # all corners are points of the element's own
        ax.add_collection(PolyCollection(mesh.nodes[mesh.elements - 1], edgecolors=GREY, linewidths=0.4,
                                         facecolors=[FILLS[m % len(FILLS)] for m in material]))
    else:
        places, colours, triangles = _triangles(fields, values)
        if len(triangles):
            top = np.abs(colours[triangles]).max()
            low = -top if (colours[triangles] < 0).any() else 0
            filled = ax.tripcolor(Triangulation(*places.T, triangles), np.nan_to_num(colours), shading="gouraud",
                                  cmap="RdBu_r" if low < 0 else "viridis", vmin=low, vmax=top)
            ax.figure.colorbar(filled, ax=ax, label=label)
    ax.add_collection(LineCollection(mesh.nodes[_edges(fields) - 1], colors=INK, linewidths=0.9))
    ax.set_aspect("equal")
    ax.autoscale_view()
    ax.margins(0.05)
    ax.set_xlabel(f"y [{mesh.length}]")
    ax.set_ylabel(f"z [{mesh.length}]")
    ax.set_title(": ".join(filter(None, (section.name, field))))
    return ax


def _values(section: Section, name: str, quantity: Optional[str]) -> Tuple[np.ndarray, str]:
    """At each point, and what they are."""
    if name == "warping":
        if section.fields.warping is None:
            raise ValueError("warping: not of pieces that do not touch, and on the coarse mesh alone")
        return section.fields.warping[:, 0], f"warping of a unit twist [{section.mesh.length}²]"
    field: Field = section.field(name)
    made: Dict[str, Optional[np.ndarray]] = {
        "mises": field.mises, "shear": None if field.shear is None else np.hypot(*field.shear.T), "axial": field.axial}
    known = [key for key, values in made.items() if values is not None]
    wanted = quantity or known[0]
    if wanted not in known:
        raise ValueError(f"{_unknown('quantity', wanted, known)}: {name} makes {' and '.join(known)}")
    return made[wanted], f"{QUANTITIES[wanted]} [{field.unit.replace('2', '²')}]"  # type: ignore[return-value]


def _triangles(fields: Fields, values: np.ndarray) -> Tuple[np.ndarray, np.ndarray, np.ndarray]:
    """Places, values and triangles, four about the centre of each element: either diagonal alone would show.

    Elements with a corner that has no value, a re-entrant sharp one, are left out.
    """
    corners = fields.elements - 1
    places = np.vstack([fields.places, fields.places[corners].mean(axis=1)])
    colours = np.append(values, values[corners].mean(axis=1))
    centre = len(values) + np.arange(len(corners))
    triangles = np.stack([corners, np.roll(corners, -1, axis=1), np.repeat(centre[:, None], 4, axis=1)], axis=2).reshape(-1, 3)
    triangles = triangles[triangles[:, 0] != triangles[:, 1]]  # the repeated corner of an element that is one itself
    return places, colours, triangles[np.isfinite(colours[triangles[:, 2]])]


def _edges(fields: Fields) -> np.ndarray:
    """(k, 2) nodes from 1 of the edges of one element alone, and between materials: outlines."""
    corners = fields.elements - 1
    sides = np.stack([corners, np.roll(corners, -1, axis=1)], axis=2).reshape(-1, 2)  # by points: unlike between materials
    sides = sides[sides[:, 0] != sides[:, 1]]
    sides = np.sort(sides, axis=1)
    alone, count = np.unique(sides, axis=0, return_counts=True)
    return fields.node[alone[count == 1]]


def html_of(section: Section) -> str:
    """A table of the main values, or of all where few were wanted, beside the drawing; every text is escaped.

    Moduli against the usual direction are shown where they are others. What is missing is told below.
    """
    entries, meanings = section._answer["values"], _meanings(section)
    keys = list(entries) if len(entries) <= len(MAIN) else [
        key for main in MAIN for key in (main, f"{main}_neg") if key in entries and (key == main or _differ(section, main, key))]
    rows, missing = [], {}  # type: ignore[var-annotated]
    for key in keys:
        value, bound, unit = entries[key]["value"], section.bounds[key], html.escape(entries[key]["unit"])
        if value is None:
            missing.setdefault(entries[key].get("reason", "not known"), []).append(key)
        texts = [key, *(("–", "") if value is None else _texts(value, bound))]
        cells = "".join(f'<td style="text-align:{side}">{html.escape(text)}</td>' for side, text in
                        zip(("left", "right", "left"), texts))
        unit = unit[:-1] + f'<sup style="line-height:0">{unit[-1]}</sup>' if unit[-1:].isdigit() else unit
        rows.append(f'<tr>{cells}<td style="text-align:left">{unit}</td>'
                    f'<td style="text-align:left">{html.escape(meanings.get(key, ""))}</td></tr>')
    picture = _drawing(section)
    shown = "" if not picture else (f'<img style="max-width:480px;height:auto;background:#fff" alt="{html.escape(section.name)}" '
                                    f'src="data:image/svg+xml;base64,{base64.b64encode(picture).decode()}">')
    heads = "".join(f'<th style="text-align:{side}">{text}</th>' for side, text in
                    (("left", "value"), ("right", ""), ("left", "bound"), ("left", "unit"), ("left", "")))
    reasons = "".join(f"<br>{html.escape(reason)}: {', '.join(keys)}" for reason, keys in missing.items())
    return (f'<div><strong>{html.escape(section.name)}</strong><div style="display:flex;flex-wrap:wrap;gap:2em;'
            f'align-items:flex-start"><div><table><thead><tr>{heads}</tr></thead><tbody>{"".join(rows)}</tbody></table>'
            f'{f"<div>Not given{reasons}</div>" if missing else ""}</div>{shown}</div></div>')


def _differ(section: Section, one: str, other: str) -> bool:
    """By more than their bounds and rounding allow, as `velquor calc` tells them apart."""
    a, b = section.values[one], section.values[other]
    if a is None or b is None:
        return b is not None
    bounds = [bound for bound in (section.bounds[one], section.bounds[other]) if math.isfinite(bound)]
    return bool(abs(a - b) > sum(bounds) + 1e-9 * (abs(a) + abs(b)))


def _meanings(section: Section) -> Dict[str, str]:
    try:
        return {value["key"]: value["meaning"] for value in catalogue_of(find_command(section._settings.command))["values"]}
    except OSError:  # of a result that has come from another machine
        return {}


def _texts(value: float, bound: float) -> Tuple[str, str]:
    """Six digits at most, and none behind the first of the bound."""
    if bound == 0 or math.isinf(bound):
        return f"{value:.6g}", "± ?" if bound else "exact"
    return f"{round(value, -math.floor(math.log10(bound))) + 0.0:.6g}", f"± {bound:.1g}"


def _drawing(section: Section) -> bytes:
    """By velquor draw; nothing where there is no command, or it cannot."""
    request, settings = section._request, section._settings
    if "drawing" in section._kept:
        return section._kept["drawing"]
    shape: List[str] = []
    for name, value in request.get("parameters", {}).items():
        shape += [f"--{name}", repr(float(value))]
    what = ["-"]
    if "section" not in request:
        what = [request["name"]] if "name" in request else ["--shape", request["shape"], *shape]
    try:
        done = subprocess.run([find_command(settings.command), "draw", *what, "--field", "outline"], capture_output=True,
                              input=text_of(request["section"]).encode() if "section" in request else b"",
                              timeout=settings.timeout, cwd=settings.files or os.sep, check=True)
        picture = done.stdout
    except (OSError, SectionError, subprocess.SubprocessError):
        picture = b""
    section._kept["drawing"] = picture
    return picture
