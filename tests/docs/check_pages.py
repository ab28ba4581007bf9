"""The pages quote what they say they quote, code and output; links lead somewhere, and to each page; what they name is there.

    check_pages.py <project folder> <folder of the example programs> [<folder of the command velquor>]

A page quotes a file behind <!-- quotes examples/first_call.c -->: the blocks that follow such a line are the whole of the
file, in its order, or, behind <!-- quotes from examples/first_call.c -->, pieces of it. What the program of an example
prints stands behind <!-- quotes the output of first_call -->, to the letter where it is in C.

Blocks of the kind `console` show commands, each behind "$ ", on several lines where they end with a backslash, and what these
print: they are run, a page's one after the other in a folder of the page, in which stand the examples and the files that the
page shows under their names (<!-- file beam.json -->), which it has to tell. Programs in Python find the package, those in C
the library; without Dask its page is left out. A line "..." stands for any lines. Words are compared; numbers, which depend
on the mesh, to PRECISION; bounds and counts of nodes not at all.
"""
import operator
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

PRECISION = 2e-3

root, programs = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
tool = sys.argv[3] and str(Path(sys.argv[3]).resolve()) if len(sys.argv) > 3 else ""  # without it no command is run
pages = sorted([*root.glob("*.md"), *(root / "docs").glob("*.md"), root / "bindings/README.md"])
faults = []


def blocks_of(page, label):
    mark = f"<!-- quotes {label} -->"
    found = re.findall(rf"{re.escape(mark)}\n```\w*\n(.*?)\n```", page.read_text(), re.DOTALL)
    expect(len(found) == page.read_text().count(mark), f"{page.name}: no block behind a mark: {mark}")
    return found


def expect(holds, fault):
    if not holds:
        faults.append(fault)


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


def shows(quoted, printed, same=alike):
    if not quoted:
        return not printed
    if quoted[0].strip() == "...":
        return any(shows(quoted[1:], printed[k:], same) for k in range(len(printed) + 1))
    return bool(printed) and same(quoted[0], printed[0]) and shows(quoted[1:], printed[1:], same)


def run(command, folder):
    path = os.pathsep.join((tool, "/usr/bin", os.environ["PATH"]))  # the interpreter that has Debian's packages
    environment = {**os.environ, "PATH": path, "PYTHONPATH": str(root / "bindings/python"), "PYTHONDONTWRITEBYTECODE": "1",
                   "PKG_CONFIG_PATH": str(folder), "VELQUOR_LIBRARY": str(programs / "libvelquor.so.1")}
    return subprocess.run(["bash", "-c", command], cwd=folder, env=environment, encoding="utf-8",
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60).stdout.splitlines()


# Examples. What a page quotes of one is its text, part after part, and all of it unless the label says "from".
quotes = 0
for page in pages:
    labels = re.findall(r"<!-- quotes (from )?(examples/\S+) -->", page.read_text())
    for choice, name in dict.fromkeys(labels):
        rest = (root / name).read_text() if (root / name).exists() else ""
        for part in blocks_of(page, f"{choice}{name}"):
            quotes += 1
            before, found, rest = rest.partition(part + "\n")
            expect(found and (choice or not before.strip()), f"{page.name}: not the next part of {name}:\n{part}")
        expect(choice or not rest.strip(), f"{page.name}: not quoted of {name}: {rest.strip()}")
    for name in re.findall(r"<!-- quotes the output of (\S+) -->", page.read_text()):
        if not (programs / name).exists():
            expect(not tool, f"{page.name}: there is no program {name}")
            continue
        output = subprocess.run([programs / name], capture_output=True, text=True, check=True).stdout
        # Those in C make the same mesh anywhere.
        same = operator.eq if (root / "examples" / f"{name}.c").exists() else alike
        for quoted in blocks_of(page, f"the output of {name}"):
            quotes += 1
            expect(shows(quoted.split("\n"), output.splitlines(), same), f"{page.name}: {name} prints\n{output}")


commands = 0
for page in pages if tool else ():
    if page.name == "cluster.md" and not shutil.which("dask-worker"):
        continue
    with tempfile.TemporaryDirectory() as folder:
        (Path(folder) / "examples").symlink_to(root / "examples")
        (Path(folder) / "velquor.pc").write_text(
            f"Name: velquor\nDescription: as it is built\nVersion: 1\nCflags: -I{root / 'api'}\n"
            f"Libs: -L{programs} -Wl,-rpath,{programs} -lvelquor\n")
        block = r"(?:<!-- file (\S+) -->\n)?```(c|json|python|console)\n(.*?)\n```"
        for name, kind, text in re.findall(block, page.read_text(), re.DOTALL):
            if name:
                (Path(folder) / name).write_text(text + "\n")
                expect(f"`{name}`" in page.read_text(), f"{page.name}: does not tell readers the name {name}")
            elif kind == "console":
                for part in re.split(r"^\$ ", text, flags=re.MULTILINE)[1:]:
                    command, quoted = re.fullmatch(r"((?:[^\n]*\\\n)*[^\n]*)\n?(.*)", part.rstrip("\n"), re.DOTALL).groups()
                    printed = run(command, folder)
                    commands += 1
                    expect(shows(quoted.splitlines(), printed), f"{page.name}: {command} prints\n" + "\n".join(printed))

        # Pictures are those that stand in the documentation: their words, and about as many cells of colour.
        for drawn in Path(folder).glob("*.svg") if page.name == "pictures.md" else ():
            one, other = drawn.read_text(), (root / "docs" / "pictures" / drawn.name).read_text()
            words = [re.findall(r"<text[^>]*>(.*?)</text>", svg) for svg in (one, other)]
            cells = [svg.count("<path fill=") for svg in (one, other)]
            expect(len(words[0]) == len(words[1]) and all(map(alike, *words)) and abs(cells[0] - cells[1]) <= 0.1 * cells[1],
                   f"docs/pictures/{drawn.name} is not what its command draws; ./run docs")


# Links and pictures, with their headings as sites that render Markdown name them.
def anchors(page):
    headings = re.findall(r"^#+ (.*)$", re.sub(r"```.*?```", "", page.read_text(), flags=re.DOTALL), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


# A target is one between parentheses, of a link or a picture, or of the HTML that Markdown may hold.
links, reached = 0, {}
for page in pages:
    text = re.sub(r"```.*?```", "", page.read_text(), flags=re.DOTALL)
    for target in re.findall(r'\]\(([^)\s]+)\)|(?:src|href)="([^"]+)"', text):
        target = "".join(target)
        if re.match(r"[a-z]+:", target):
            continue
        links += 1
        path, _, anchor = target.partition("#")
        file = (page.parent / path).resolve() if path else page
        reached.setdefault(file, set()).add(page)
        expect(file.exists(), f"{page.name}: no {target}")
        if anchor and file.suffix == ".md" and file.exists():
            expect(anchor in anchors(file), f"{page.name}: no heading for {target}")

# A picture has a caption below that tells what it shows, with dimensions and units.
UNITS = r"(?<![a-z])(?:mm|cm|m|ft|k?N|kips?|bytes|nodes|elements)(?![a-z])|[°%]|any unit"
for page in pages:
    for picture, below in re.findall(r"^(!\[[^\]]*\]\(.*\)|<img .*>)\n+((?:.+\n?)*)", page.read_text(), re.MULTILINE):
        told = re.search(r"\d", below) and re.search(UNITS, below) or "no scale" in below.lower()
        expect(re.match(r"\*\w", below) and told, f"{page.name}: no caption with dimensions and units below {picture}")

# Options of CMake and Debian packages of the page about building are those of the build, headers of the kit are there.
building = (root / "docs/building.md").read_text()
build = "".join(file.read_text() for file in (root / "CMakeLists.txt", *(root / "cmake").glob("*.cmake")))
for option in sorted(set(re.findall(r"\bVQ_[A-Z_]+", building))):
    expect(re.search(rf"(?:option|set)\({option}\b", build), f"building.md: there is no option {option}")
asked = set(re.findall(r"[a-z0-9][\w.+-]+", "".join((root / file).read_text() for file in ("debian/control", "run"))))
needed = "".join(re.findall(r"^\| [^|]* \| (.*) \|$", building.partition("## Building")[0], re.MULTILINE))
words = [word for code in re.findall(r"`([^`]+)`", needed.replace("`-G Ninja`", "")) for word in code.split()]
named = {*words, *re.findall(r"`((?:lib|python3-)[a-z0-9-]+|[a-z0-9-]+-dev)`", building)} - {"debian/control"}
for name in sorted(named):
    expect(name in asked, f"building.md: nothing asks for the package {name}")
expect(len(named) > 20, f"building.md: packages {named}")
headers = re.findall(r"^\| (`kit/.*?) \|", (root / "docs/kit.md").read_text(), re.MULTILINE)
for header in (Path(name) for row in headers for name in re.findall(r"`([\w./]+\.h)`", row)):
    folder = header.parent if len(header.parts) > 1 else folder  # those that follow in a row are beside the first
    expect((root / folder / header.name).exists(), f"kit.md: there is no {folder / header.name}")
expect(len(headers) > 15, "kit.md: no table of headers")

# Every page and every picture is linked to from another page.
pictures = [file for folder in ("docs", "docs/drawings", "docs/pictures") for ending in ("svg", "png", "jpg")
            for file in (root / folder).glob(f"*.{ending}")]
for file in (*pages, *pictures):
    expect(file == root / "README.md" or reached.get(file, set()) - {file}, f"{file.name}: no other page links to it")

for fault in faults:
    print(fault)
print(f"{len(pages)} pages, {quotes} quotes, {commands} commands, {links} links")
sys.exit(1 if faults else 0)
