#!/usr/bin/env python3
"""Writes docs/validation.md, and its plots, from a run of the validation.

    report.py RUNNER                writes the page and, with matplotlib, the plots in docs/drawings
    report.py --check RUNNER        fails where the page is not what a run gives; plots and what rests on meshes of the
                                    kit are left alone

The text around the tables is page.md. A line there that starts with @ stands for a part of the page:

    @overview                       a table of all sections
    @sections NAME...               these sections; every section has its place in one such line
    @study PLOT | VALUE | NAME: label | NAME: label ...
                                    differences of a value in studies, by levels of refinement, and their plot
    @study PLOT | NAME              the same of all values in one study
    @rows VALUE, VALUE | NAME: label | ...
                                    values in studies without refinement, a line for each study
"""
import difflib
import json
import math
import re
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
DOCS = HERE.parent / "docs"


def run(runner, folder):
    files = sorted((HERE / folder).glob("*.json"))
    sections = json.loads(subprocess.check_output([runner, "--json", *map(str, files)]))
    for section in sections:
        section["name"] = Path(section["path"]).stem
        section["file"] = json.loads((HERE / folder / f"{section['name']}.json").read_text())
    return {section["name"]: section for section in sections}


def number(x, digits=6):
    """So many digits, without an exponent where one can read it without."""
    if x == 0:
        return "0"
    power = math.floor(math.log10(abs(x)))
    if not -5 <= power < 8:
        return f"{x:.{digits - 1}e}"
    text = f"{x:.{max(0, digits - 1 - power)}f}"
    return text.rstrip("0").rstrip(".") if "." in text else text


def of_value(e, ours):
    return (ours - e["theirs"]) / abs(e["theirs"]) if e["relative"] else ours - e["theirs"]


def difference(e, ours):
    """Two digits; rounding, which another machine may do otherwise, counts as nothing."""
    d = of_value(e, ours)
    nothing = max(1e-9 if e["relative"] else 0.0, (e["tolerance"] or 0.0) * (1e-3 if e["relative"] else 1e-2))
    if abs(d) <= nothing:
        return "0"
    if e["relative"]:
        return f"{'+' if d > 0 else '-'}{number(100 * abs(d), 2)} %"
    return f"{'+' if d > 0 else '-'}{number(abs(d), 2)}"


def tolerance(e):
    text = f"{number(100 * e['tolerance'], 2)} %" if e["relative"] else number(e["tolerance"], 2)
    return text + ("", ", h", ", h²")[e["order"]]


def judged(text, ok):
    return text if ok else text + " **out**"


def ours(e, value):
    return number(e["theirs"] if difference(e, value) == "0" and not e["relative"] else value)


def table(head, rows):
    marks = ["---"] + ["---:"] * (len(head) - 1)
    return ["| " + " | ".join(row) + " |" for row in [head, marks, *rows]]


def escaped(text):
    return re.sub(r"([*_<>|])", r"\\\1", text)


def size_text(section):
    outline = section["outline"]
    text = f"{section['nodes']} nodes, {section['elements']} elements"
    text += f", {section['layers']} layers through the wall" if "layers" in section else ""
    return text + f"; from the outline {outline['nodes']} nodes, {outline['elements']} elements, {outline['levels']} levels"


def plotted(section):
    """Names of the values whose difference, over theirs, moves with the mesh."""
    for i, e in enumerate(section["expected"]):
        levels = [abs(of_value(e, level["ours"][i])) for level in section.get("levels", [])]
        if e["relative"] and levels and max(levels) > 1e-6 and max(levels) > 1.1 * min(levels):
            yield i, e["name"]


def anchor(heading):
    """By which links reach a heading, on sites that render Markdown."""
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def overview(sections):
    rows = [[f"[{escaped(s['title'])}](#{anchor(s['title'])})", str(s["elements"]), str(s.get("layers", "")),
             str(len(s["expected"]))] for s in sections.values()]
    values = [e for s in sections.values() for e in s["expected"]]
    out = sum(not e["ok"] for e in values)
    outlines = [e["outline"] for e in values if "outline" in e]
    missed = sum(not e["ok"] for e in outlines)
    return [f"{len(sections)} sections, {len(values)} values, {out or 'none'} outside the tolerance; from outlines "
            f"{len(outlines)} values, {missed or 'none'} outside. Layers are those of elements through the thinnest wall.",
            "", *table(["Section", "elements", "layers", "values"], rows)]


def unit_of_length(units):
    return next((unit for unit in units.replace(",", " ").split() if unit in ("mm", "cm", "m", "in")), "any unit of length")


def extent(part):
    """Points on the edges of a part, so that those furthest along Y and Z are among them, before it is turned."""
    y, z = part.get("at", [0, 0]) if "turn" not in part else [0, 0]
    if "outline" in part:
        for edge in part["outline"]:
            for at in (edge["arc"], edge["through"]) if isinstance(edge, dict) else (edge,):
                yield at[0] + y, at[1] + z
    else:
        parameters = part["parameters"]
        b, h = (parameters.get(key, parameters.get("d")) for key in "bh")
        b = max(b, parameters.get("b2", b))
        yield from ((y - b / 2, z - h / 2), (y + b / 2, z + h / 2))


def caption_of_section(s):
    """What the picture of a section shows, from its file: dimensions, units, what hatches and discs are."""
    section, mesh = s["file"]["section"], s["file"]["mesh"]
    parts, unit, single = section["parts"], unit_of_length(s["file"]["units"]), len(section["parts"]) == 1
    if single and "outline" not in parts[0]:
        part, shape = parts[0], mesh["parts"][0]
        name, given = (part["profile"], shape) if "profile" in part else (part["shape"].replace("_", " "), part["parameters"])
        text = ", ".join([name, *(f"{key} {number(x)}" for key, x in given.items() if key not in ("shape", "material"))])
    else:
        sizes = [number(max(along) - min(along), 4) for along in zip(*(at for part in parts for at in extent(part)))]
        text = f"{sizes[0]} along Y by {sizes[1]} along Z"
        text += f", thinnest wall {number(mesh['wall'])}" if "wall" in mesh else ""
    text += f", in {unit}"
    text += f", turned by {number(parts[0]['turn'])}°" if parts[0].get("turn") else ""
    used = [m["name"] for m in section["materials"] if m["name"] in {part.get("material") for part in parts}]
    text += f"; plain: {used[0]}; hatched: {', '.join(used[1:])}" if len(used) > 1 else ""
    if areas := list(dict.fromkeys(number(bar["area"], 4) for bar in section.get("bars", []))):
        text += f"; discs: bars of {' and '.join(areas)} {unit}², to scale"
    return f"*Outline: {escaped(text)}. Dot: centroid.*"


def caption_of_plot(section):
    sizes = [number(level["size"], 3) for level in section["levels"]]
    return f"*Amount of the difference in % against the size of elements, {sizes[0]} to {sizes[-1]} in " \
           f"{unit_of_length(section['units'])}, both by powers of ten; grey: the first and the second power of the size.*"


def section_part(s):
    sources, notes, rows = [], {}, []
    finer = any(e["order"] for e in s["expected"])
    for e in s["expected"]:
        if e["source"] not in sources:
            sources.append(e["source"])
        if e["note"]:
            notes.setdefault(e["note"], []).append(e["name"])
        half = [difference(e, e["theirs"] + e["finer"] * (abs(e["theirs"]) if e["relative"] else 1))
                if e["order"] else ""] if finer else []
        outline = [ours(e, e["outline"]["ours"]), judged(difference(e, e["outline"]["ours"]), e["outline"]["ok"])] \
            if "outline" in e else ["", ""]
        rows.append([escaped(e["name"]), e["unit_name"], ours(e, e["ours"]), number(e["theirs"], 8),
                     judged(difference(e, e["ours"]), e["ok"]), *half, *outline, tolerance(e),
                     str(sources.index(e["source"]) + 1)])
    head = ["", "unit", "ours", "theirs", "difference", *(["at half the size"] if finer else []), "from the outline",
            "difference", "tolerance", "source"]
    if not any(row[1] for row in rows):
        head, rows = [head[0], *head[2:]], [[row[0], *row[2:]] for row in rows]
    lines = [f"### {escaped(s['title'])}", "",
             f"![{escaped(s['title'])}](pictures/sections/{s['name']}.svg)", "",
             caption_of_section(s), "",
             f"{escaped(s['about'])} (`{s['name']}.json`, {s['units']}; {size_text(s)})", "", *table(head, rows), "",
             "Sources: " + "; ".join(f"({i}) {escaped(source)}" for i, source in enumerate(sources, 1)) + "."]
    if notes:
        lines += [""] + [f"- {escaped(', '.join(names))}: {escaped(note)}" for note, names in notes.items()]
    if any(plotted(s)):
        lines += ["", f"![differences against the element size](drawings/validation_{s['name']}.svg)", "",
                  caption_of_plot(s)]
    return lines + [""]


def labelled(parts, studies):
    for part in parts:
        name, label = (text.strip() for text in part.split(":", 1))
        yield studies[name], label


def study_curves(parts, studies):
    """Study, place of the value in it, and label."""
    if len(parts) == 1:
        return [(studies[parts[0]], i, e["name"]) for i, e in enumerate(studies[parts[0]]["expected"])]
    return [(s, [e["name"] for e in s["expected"]].index(parts[0]), label) for s, label in labelled(parts[1:], studies)]


def study(plot, curves):
    rows = [[str(level["refine"]), *(difference(s["expected"][i], s["levels"][k]["ours"][i]) for s, i, _ in curves)]
            for k, level in enumerate(curves[0][0]["levels"])]
    return [*table(["refinement", *(label for _, _, label in curves)], rows), "",
            f"![differences against the element size](drawings/validation_{plot}.svg)", "",
            caption_of_plot(curves[0][0])]


def study_rows(values, parts, studies):
    rows = []
    for s, label in labelled(parts, studies):
        row = [label]
        for value in values:
            e = next(e for e in s["expected"] if e["name"] == value)
            row += [f"{number(e['ours'])} {e['unit_name']}".rstrip(), difference(e, e["ours"])]
        rows.append(row)
    return table(["", *(text for value in values for text in (value, "difference"))], rows)


def page(sections, studies):
    """The page's text, and of each plot its file and curves (label, sizes, differences)."""
    template = (HERE / "page.md").read_text().splitlines()
    named = [name for line in template if line.startswith("@sections") for name in line.split()[1:]]
    if sorted(named) != sorted(sections):
        sys.exit(f"page.md and the files differ in {sorted(set(named) ^ set(sections))}")
    if without := [name for name, s in sections.items() if "outline" not in s]:
        sys.exit(f"without outlines: {without}: the kit is not built")
    sections = {name: sections[name] for name in named}
    lines, plots = [], {}
    for line in template:
        command, _, rest = line.partition(" ")
        parts = [part.strip() for part in rest.split("|")]
        if command == "@overview":
            lines += overview(sections)
        elif command == "@sections":
            for name in rest.split():
                lines += section_part(sections[name])
        elif command == "@study":
            curves = study_curves(parts[1:], studies)
            lines += study(parts[0], curves)
            plots[f"validation_{parts[0]}"] = [curve(*c) for c in curves]
        elif command == "@rows":
            lines += study_rows([value.strip() for value in parts[0].split(",")], parts[1:], studies)
        else:
            lines.append(line)
    for s in sections.values():
        if any(plotted(s)):
            plots[f"validation_{s['name']}"] = [curve(s, i, name) for i, name in plotted(s)]
    return "\n".join(lines).rstrip() + "\n", plots


def curve(s, i, label):
    levels = s["levels"]
    return label, [l["size"] for l in levels], [abs(of_value(s["expected"][i], l["ours"][i])) for l in levels]


def draw(name, curves):
    import matplotlib

    matplotlib.use("svg")
    from matplotlib import pyplot

    # The same file from the same numbers: no date, no random names; text stays text.
    pyplot.rcParams.update({"svg.hashsalt": name, "svg.fonttype": "none", "font.family": "sans-serif", "font.size": 10})
    figure, axes = pyplot.subplots(figsize=(7.2, 4.2), layout="constrained")
    for (label, sizes, values), marker in zip(curves, "osD^vP*Xhd<>p" * 3):
        points = [(x, 100 * y) for x, y in zip(sizes, values) if y > 1e-12]
        axes.loglog(*zip(*points), marker=marker, markersize=5, linewidth=1.3, label=label)
    sizes = curves[0][1]
    bottom, top = axes.get_ylim()
    for power, style in ((1, ":"), (2, "--")):
        start = top / 1.5
        axes.loglog(sizes, [start * (x / sizes[0]) ** power for x in sizes], style, color="0.45", linewidth=1,
                    label=f"slope {power}", zorder=0)
    axes.set_ylim(bottom, top)
    axes.set_xticks(sizes, [number(x, 3) for x in sizes])
    axes.minorticks_off()
    axes.set_xlabel("element size")
    axes.set_ylabel("difference, %")
    axes.grid(True, color="0.9")
    axes.spines[["top", "right"]].set_visible(False)
    axes.legend(frameon=False, fontsize=9, loc="center left", bbox_to_anchor=(1.0, 0.5))
    path = DOCS / "drawings" / f"{name}.svg"
    figure.savefig(path, metadata={"Date": None, "Creator": None})
    pyplot.close(figure)
    path.write_text("\n".join(line.rstrip() for line in path.read_text().splitlines()) + "\n")


def settled(text):
    """Without what rests on the kit's meshes, which the last bits of a machine's C library may change: values from
    outlines are judged by the tests of their sections."""
    text = re.sub(r"; from the outline \d+ nodes, \d+ elements, \d+ levels", "", text)
    lines, columns = [], None
    for line in text.splitlines():
        cells = line.split("|")
        if not line.startswith("|"):
            columns = None
        elif columns is None:
            at = [i for i, cell in enumerate(cells) if cell.strip() == "from the outline"]
            columns = [at[0], at[0] + 1] if at else []
        lines.append("|".join(cell for i, cell in enumerate(cells) if not columns or i not in columns))
    return lines


def main():
    check = sys.argv[1:2] == ["--check"]
    runner = sys.argv[-1]
    text, plots = page(run(runner, "sections"), run(runner, "studies"))
    target = DOCS / "validation.md"
    if check:
        old = target.read_text()
        differences = list(difflib.unified_diff(settled(old), settled(text), "committed", "this run", lineterm=""))
        print("\n".join(differences))
        if differences:
            sys.exit("docs/validation.md is not what this run gives: ./run docs writes it anew")
        return
    (DOCS / "drawings").mkdir(exist_ok=True)
    target.write_text(text)
    for name, curves in plots.items():
        draw(name, curves)


if __name__ == "__main__":
    main()
