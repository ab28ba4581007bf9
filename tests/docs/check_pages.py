"""The pages quote what they say they quote: code, output, slot numbers; and their links lead somewhere.

    check_pages.py <project folder> <folder of the example programs> <header> [<folder of the command velquor>]

Blocks of the kind `console` show commands, each behind "$ ", and what these print: they are run, a page's one after the
other in a folder of the page, in which stand the examples and the files that the page shows under their names
(<!-- file beam.json -->). Programs in Python find the package; without Dask its page is left out. A line "..." stands for
any lines. Words are compared; numbers, which depend on the mesh, to PRECISION; bounds and counts of nodes not at all.
"""
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

PRECISION = 2e-3

root, programs, header = Path(sys.argv[1]), Path(sys.argv[2]), Path(sys.argv[3]).read_text()
tool = sys.argv[4] if len(sys.argv) > 4 else None  # without it no command is run, and no example of the kit
pages = sorted([*root.glob("*.md"), *(root / "docs").glob("*.md")])
faults = []


def quotes(page, label):
    return re.findall(rf"<!-- quotes {re.escape(label)} -->\n```\w*\n(.*?)\n```", page.read_text(), re.DOTALL)


def expect(holds, fault):
    if not holds:
        faults.append(fault)


guide = root / "docs" / "host_guide.md"

# The blocks of the guide are the whole of each example, in its order.
blocks = []
for example in ("first_call", "bounds"):
    rest = (root / "examples" / f"{example}.c").read_text()
    parts = quotes(guide, f"examples/{example}.c")
    for part in parts:
        rest = rest.lstrip("\n")
        expect(rest.startswith(part + "\n"), f"not the next part of {example}.c:\n{part}")
        rest = rest[len(part):]
    expect(parts and not rest.strip(), f"not quoted of {example}.c: {rest.strip()}")
    output = subprocess.run([programs / example], capture_output=True, text=True, check=True).stdout
    expect(quotes(guide, f"the output of {example}") == [output.rstrip("\n")], f"{example} prints\n{output}")
    blocks += parts


# Commands, and what they print.
def alike(quoted, printed):
    """Whether two lines are the same but for digits that depend on the mesh."""
    varying = ((r"± *\S+|\bexact\b", "±"), (r"\d+ nodes, \d levels; bounds up to \S+ \(\w+\)", "nodes"),
               (r'("bound"|"reached"|"nodes"|"elements"|"levels"): [^,]+', r"\1"), (r"bound of \S+", "bound"))
    for pattern, instead in varying:
        quoted, printed = re.sub(pattern, instead, quoted), re.sub(pattern, instead, printed)
    words = quoted.split(), printed.split()
    return len(words[0]) == len(words[1]) and all(a == b or near(a, b) for a, b in zip(*words))


def near(a, b):
    number = r"([-+]?\d+(?:\.\d+)?(?:e[-+]?\d+)?)([,%]*)"
    a, b = re.fullmatch(number, a), re.fullmatch(number, b)
    return bool(a and b) and a[2] == b[2] and abs(float(a[1]) - float(b[1])) <= PRECISION * abs(float(a[1]))


def shows(quoted, printed):
    if not quoted:
        return not printed
    if quoted[0].strip() == "...":
        return any(shows(quoted[1:], printed[k:]) for k in range(len(printed) + 1))
    return bool(printed) and alike(quoted[0], printed[0]) and shows(quoted[1:], printed[1:])


def run(command, folder):
    path = os.pathsep.join((tool, "/usr/bin", os.environ["PATH"]))  # the interpreter that has Debian's packages
    environment = {**os.environ, "PATH": path, "PYTHONPATH": str(root / "bindings/python"), "PYTHONDONTWRITEBYTECODE": "1"}
    return subprocess.run(["bash", "-c", command], cwd=folder, env=environment, encoding="utf-8",
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60).stdout.splitlines()


commands = 0
for page in pages if tool else ():
    if page.name == "cluster.md" and not shutil.which("dask-worker"):
        continue
    with tempfile.TemporaryDirectory() as folder:
        (Path(folder) / "examples").symlink_to(root / "examples")
        block = r"(?:<!-- file (\S+) -->\n)?```(json|python|console)\n(.*?)\n```"
        for name, kind, text in re.findall(block, page.read_text(), re.DOTALL):
            if name:
                (Path(folder) / name).write_text(text + "\n")
            elif kind == "console":
                for part in re.split(r"^\$ ", text, flags=re.MULTILINE)[1:]:
                    command, *quoted = part.rstrip("\n").split("\n")
                    printed = run(command, folder)
                    commands += 1
                    expect(shows(quoted, printed), f"{page.name}: {command} prints\n" + "\n".join(printed))

        # Pictures are those that stand in the documentation: their words, and about as many cells of colour.
        for drawn in Path(folder).glob("*.svg") if page.name == "pictures.md" else ():
            one, other = drawn.read_text(), (root / "docs" / "pictures" / drawn.name).read_text()
            words = [re.findall(r"<text[^>]*>(.*?)</text>", svg) for svg in (one, other)]
            cells = [svg.count("<path fill=") for svg in (one, other)]
            expect(len(words[0]) == len(words[1]) and all(map(alike, *words)) and abs(cells[0] - cells[1]) <= 0.1 * cells[1],
                   f"docs/pictures/{drawn.name} is not what its command draws; ./run docs")

# The example of the kit.
if tool:
    example = (root / "examples/section.cpp").read_text().rstrip("\n")
    for page in (root / "README.md", root / "docs/kit.md"):
        blocks += quotes(page, "examples/section.cpp")
        expect(quotes(page, "examples/section.cpp") == [example], f"{page.name}: not the whole of section.cpp")
    output = subprocess.run([programs / "section_example"], capture_output=True, text=True, check=True).stdout
    quoted, = quotes(page, "the output of section_example")
    expect(shows(quoted.split("\n"), output.splitlines()), f"section.cpp prints\n{output}")

# Every key of section files is in the page about them.
schema = json.loads((root / "kit/section/schema.json").read_text())


def keys_of(part):
    for key, value in part.items():
        if key == "properties":
            yield from value
        if isinstance(value, dict):
            yield from keys_of(value)


form = (root / "docs/section_file.md").read_text()
for key in sorted(set(keys_of(schema))):
    expect(f"`{key}`" in form, f"section_file.md: nothing of {key}")

# Slots, property columns, modes and statuses as the header has them.
value = {name: int(number) for name, number in re.findall(r"^    VQ_(\w+) = (\d+)", header, re.MULTILINE)}
rows = re.findall(r"^\| (\d+) (?:\| |\()`(?:VQ_)?(\w+)`(?: \||\))", guide.read_text(), re.MULTILINE)
for number, name in rows:
    expect(value.get(name) == int(number), f"{name} is {value.get(name)}, not {number}")
for line in re.findall(r"^\| `(PL\w+)_\.\.\.`: [^|]*\|(.*)\|$", guide.read_text(), re.MULTILINE):
    for name, number in re.findall(r"`(\w+)` (\d+)", line[1]):
        rows.append((number, f"{line[0]}_{name}"))
        expect(value.get(f"{line[0]}_{name}") == int(number), f"{line[0]}_{name} is not {number}")
listed = {int(number) for number, name in rows if name in value}
expect(listed >= set(range(value["NSLOTS"])), f"slots missing: {set(range(value['NSLOTS'])) - listed}")

# Reasons, of the second header.
for name in re.findall(r"VQ_(\w+) =", (root / "levels/velquor_levels.h").read_text().split("/* Reasons")[1]):
    expect(f"`{name}`" in guide.read_text(), f"{name} is not in the guide")


# Links and pictures, with their headings as sites that render Markdown name them.
def anchors(page):
    headings = re.findall(r"^#+ (.*)$", re.sub(r"```.*?```", "", page.read_text(), flags=re.DOTALL), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


links = 0
for page in pages:
    text = re.sub(r"```.*?```", "", page.read_text(), flags=re.DOTALL)
    for target in re.findall(r"\]\(([^)\s]+)\)", text):
        if "://" in target:
            continue
        links += 1
        path, _, anchor = target.partition("#")
        file = (page.parent / path) if path else page
        expect(file.exists(), f"{page.name}: no {target}")
        if anchor and file.exists():
            expect(anchor in anchors(file), f"{page.name}: no heading for {target}")
shown = {name for page in pages for name in re.findall(r"\]\((?:docs/)?drawings/(\S+)\)", page.read_text())}
drawn = {file.name for file in (root / "docs" / "drawings").glob("*.svg")}
expect(drawn == shown, f"drawings that no page shows, or that are missing: {sorted(drawn ^ shown)}")

for fault in faults:
    print(fault)
print(f"{len(pages)} pages, {len(blocks)} quotes, {commands} commands, {links} links, {len(rows)} numbers")
sys.exit(1 if faults else 0)
