"""The pages quote what they say they quote: code, output, slot numbers; and their links lead somewhere.

    check_pages.py <project folder> <folder of the example programs> <header>
"""
import re
import subprocess
import sys
from pathlib import Path

root, programs, header = Path(sys.argv[1]), Path(sys.argv[2]), Path(sys.argv[3]).read_text()
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
print(f"{len(pages)} pages, {len(blocks)} quotes, {links} links, {len(rows)} numbers")
sys.exit(1 if faults else 0)
