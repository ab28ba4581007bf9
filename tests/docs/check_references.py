"""The reference pages name all that there is, and nothing that there is not.

    check_references.py <project folder> <header> [<the command velquor>]

Pages are held against the schemas, the two headers of the library and, where the command is given, its help and its own
schemas, which list every value.
"""
import fnmatch
import json
import re
import sqlite3
import subprocess
import sys
import tempfile
from pathlib import Path

root, header = Path(sys.argv[1]), Path(sys.argv[2]).read_text()
tool = sys.argv[3] if len(sys.argv) > 3 else ""
faults, named = [], 0


def expect(holds, fault):
    global named
    named += 1
    if not holds:
        faults.append(fault)


def page(name):
    return (root / "docs" / f"{name}.md").read_text()


def section(text, heading):
    """What stands under a heading, without the code in it."""
    found = re.search(rf"^## {re.escape(heading)}\n(.*?)(?=^## |\Z)", text, re.MULTILINE | re.DOTALL)
    return re.sub(r"```.*?```", "", found[1], flags=re.DOTALL) if found else ""


def told(*arguments):
    return subprocess.run([tool, *arguments], capture_output=True, text=True, check=True).stdout


# Every key of the forms of JSON is in the page about each.
def keys_of(part):
    for key, value in part.items():
        if key in ("properties", "required"):
            yield from value
        if isinstance(value, dict):
            yield from keys_of(value)


for name, schema in (("section_file", "section/schema"), ("results", "show/result.schema"),
                     ("protocol", "requests/request.schema"), ("protocol", "requests/answer.schema")):
    for key in sorted(set(keys_of(json.loads((root / f"kit/{schema}.json").read_text())))):
        expect(f"`{key}`" in page(name), f"{name}.md: nothing of {key}")
reasons = re.findall(r'(?:return|value,) "([a-z][^"]{9,})"', (root / "kit/analysis/values.cpp").read_text())
expect(len(reasons) > 9, f"values.cpp: reasons {reasons}")
for reason in reasons:
    expect(f"`{reason}`" in page("results"), f"results.md: nothing of the reason {reason}")
if tool:
    values = json.loads(told("schema", "--result"))["definitions"]["values"]["properties"]
    table = section(page("results"), "The values")
    listed = re.findall(r"^\| `(\w+)` \|[^|]*\| ([^|]*) \| (?:`(.*)`)? ?\|$", table, re.MULTILINE)
    keys = [key for key, *_ in listed]
    expect(keys == list(values), f"results.md: values {sorted(set(keys) ^ set(values))}, or their order")
    for key, meaning, slots in listed:
        words = values.get(key, {"description": ""})["description"]
        expect(words.endswith(f": {meaning} [{slots}]" if slots else f": {meaning}"), f"results.md: {key} is {words}")


# Tests by which promises are held are there.
tests = set()
for file in sorted((root / "tests").rglob("*")):
    if file.suffix == ".cpp":
        tests |= {".".join(names) for names in re.findall(r"^TEST(?:_F)?\((\w+), (\w+)\)", file.read_text(), re.MULTILINE)}
    elif file.suffix == ".py":
        for suite, body in re.findall(r"^class (\w+)\(.*?\):\n(.*?)(?=^\S|\Z)", file.read_text(), re.MULTILINE | re.DOTALL):
            tests |= {f"{suite}.{name}" for name in re.findall(r"^    def (test_\w+)", body, re.MULTILINE)}
    elif file.name == "CMakeLists.txt":
        tests |= set(re.findall(r"(?:add_test\(NAME|add_script_test\() *([A-Z]\w+\.\w+)", file.read_text()))
held = re.findall(r"`([A-Z]\w*\.[\w*]+)((?:\.\.\.)?)`", page("reliability"))
expect(len(held) > 20, f"reliability.md: names of tests {held}")
for name, more in held:
    expect(fnmatch.filter(tests, name + "*" * bool(more)), f"reliability.md: there is no test {name}{more}")


# Every option of the command is in the page about it, under the heading of its subcommand or in the table of those that
# several take, and none else.
def options_of(text):
    """Long names of options, each with what it takes, as in "--jobs N"."""
    return {re.sub(r" +", " ", option) for option in re.findall(r"(--[A-Za-z]+(?: [A-Z]+)?)(?![\w-])", text)}


if tool:
    reference = page("command")
    offered = {}
    subcommands = re.findall(r"^  (\w+) ", told("--help").partition("Subcommands:")[2], re.MULTILINE)
    expect(len(subcommands) > 10, "velquor --help: no subcommands found")
    shared = re.findall(r"^\| ([^|]*)\|([^|]*)\|[^|]*\|$", section(reference, "Options of several commands"), re.MULTILINE)
    for command in subcommands:
        lines = re.findall(r"^  (?:-\w,)?(--\w.*?)(?:  |$)", told(command, "--help"), re.MULTILINE)
        offered[command] = options_of("\n".join(lines)) - {"--help"}
        rows = [row for row, commands in shared if command in re.findall(r"\w+", commands)]
        rows += re.findall(r"^\| (`-[^|]*)\|", section(reference, command), re.MULTILINE)
        written = options_of("\n".join(rows))
        expect(f"\n## {command}\n" in reference, f"command.md: nothing of {command}")
        expect(written == offered[command], f"command.md: {command}: {sorted(written ^ offered[command])}")
    known = {option.split()[0] for options in offered.values() for option in options} | {"--help", "--version"}
    shapes = json.loads(told("catalogue"))["shapes"]
    parameters = {f"--{parameter['name']}" for shape in shapes for parameter in shape["parameters"]}
    for name in ("command", "guide", "batch", "page", "results", "section_file"):
        prose = re.sub(r"```.*?```", "", page(name), flags=re.DOTALL)
        for option in sorted(set(re.findall(r"(?<![\w-])--[A-Za-z]\w*", prose))):
            expect(option in known | parameters, f"{name}.md: no command has {option}")

# The tables of a file of results, with every column that is no value.
if tool:
    with tempfile.TemporaryDirectory() as folder:
        many, file = root / "examples/sections/many.jsonl", f"{folder}/many.sqlite"
        subprocess.run([tool, "batch", many, "-o", file, "--quiet"])  # ends with 1, for a line of it is refused
        results = sqlite3.connect(file)
        tables = [name for name, in results.execute("SELECT name FROM sqlite_schema WHERE type IN ('table', 'view')")]
        expect(len(tables) > 4, f"velquor batch: tables {tables}")
        for table in tables:
            columns = {row[1] for row in results.execute(f"PRAGMA table_info({table})")}
            for name in [table, *sorted(columns - set(values) - {f"{value}_bound" for value in values})]:
                expect(f"`{name}`" in page("batch"), f"batch.md: nothing of {name} of the table {table}")
        results.close()

# Slots, property columns, modes and statuses as the header has them.
guide = page("host_guide")
value = {name: int(number) for name, number in re.findall(r"^    VQ_(\w+) = (\d+)", header, re.MULTILINE)}
rows = re.findall(r"^\| (\d+) (?:\| |\()`(?:VQ_)?(\w+)`(?: \||\))", guide, re.MULTILINE)
for number, name in rows:
    expect(value.get(name) == int(number), f"{name} is {value.get(name)}, not {number}")
for line in re.findall(r"^\| `(PL\w+)_\.\.\.`: [^|]*\|(.*)\|$", guide, re.MULTILINE):
    for name, number in re.findall(r"`(\w+)` (\d+)", line[1]):
        rows.append((number, f"{line[0]}_{name}"))
        expect(value.get(f"{line[0]}_{name}") == int(number), f"{line[0]}_{name} is not {number}")
listed = {int(number) for number, name in rows if name in value}
expect(listed >= set(range(value["NSLOTS"])), f"slots missing: {set(range(value['NSLOTS'])) - listed}")

# Reasons, of the second header.
for name in re.findall(r"VQ_(\w+) =", (root / "levels/velquor_levels.h").read_text().split("/* Reasons")[1]):
    expect(f"`{name}`" in guide, f"{name} is not in the guide")

for fault in faults:
    print(fault)
print(f"{named} things looked for, {len(faults)} faults")
sys.exit(1 if faults else 0)
