"""What doxygen reads in place of a file. Plain comments of a header become documentation, their tables stay as they are
laid out. Pages and their headings get names, by which links reach them also where the folder's name has a blank;
formulas get doxygen's marks.

    doxygen_input.py <header or page>
"""
import re
import sys
from pathlib import Path


def slug(heading):
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def page(text, path):
    def name(file):
        file = file.resolve().relative_to(Path.cwd())
        return "index" if file == Path("README.md") else re.sub(r"\W", "_", str(file))

    seen = {}

    def named(match):
        count = seen[match[1]] = seen.get(match[1], -1) + 1
        return f"{match[0]} {{#{name(path)}-{slug(match[1])}{f'-{count}' * (count > 0)}}}"

    def link(match):
        file = path.parent / match[1] if match[1] else path
        return f"](#{name(file)}{f'-{match[2]}' if match[2] else ''})"

    parts = re.split(r"(^```.*?^```$)", text, flags=re.DOTALL | re.MULTILINE)  # code stays as it is
    for k in range(0, len(parts), 2):
        if name(path) != "index":  # the name that doxygen gives its main page
            parts[k] = re.sub(r"^# .*$", rf"\g<0> {{#{name(path)}}}", parts[k], flags=re.MULTILINE)
        parts[k] = re.sub(r"^##+ (.*)$", named, parts[k], flags=re.MULTILINE)
        parts[k] = re.sub(r"\]\((?!\w+:)([\w./]*\.md|)(?:#([\w-]+))?\)", link, parts[k])
        parts[k] = re.sub(r"\$\$(.+?)\$\$", r"@f[\1@f]", parts[k], flags=re.DOTALL)
        parts[k] = re.sub(r"\$([^$\n]+)\$", r"@f$\1@f$", parts[k])
    return "".join(parts)


def block(lines, indent, first):
    """A comment; lines further in than the rest are a table."""
    out, table = [], False
    for line in lines:
        if line.startswith("  ") != table:
            table = not table
            out.append("@verbatim" if table else "@endverbatim")
        out.append(line)
    out = ["@file"] * first + out + ["@endverbatim"] * table
    return indent + "/** " + "\n".join(out) + " */"


def header(text):
    # /* ... */ on lines of its own, and behind a declaration
    def c_block(match):
        lines = [re.sub(r"^\s*\* ?", "", line).rstrip() for line in match[2].rstrip("* \n").split("\n")]
        return block(lines, match[1], match.start() == 0) + "\n"

    text = re.sub(r"^([ ]*)/\* (.*?)\*/\n", c_block, text, flags=re.DOTALL | re.MULTILINE)
    text = re.sub(r"(\S[ ]+)/\* (?=[^\n]*\S)", r"\1/**< ", text)

    # // likewise. A comment that a blank line parts from what follows belongs to no declaration.
    out, lines, indent, start = [], [], "", 0
    for number, line in enumerate(text.split("\n")):
        alone = re.match(r"([ ]{0,19})// ?(?!/)(.*)$", line)
        if alone:
            if not lines:
                indent, start = alone[1], number
            lines.append(alone[2])
            continue
        if lines and (start == 0 or line.strip()):
            out.append(block(lines, indent, start == 0))
        lines = []
        line = re.sub(r"^([ ]{20,})// ", r"\1///< ", line)  # goes on with the line above
        out.append(re.sub(r"([^\s}][ ]+)// (?!/)", r"\1///< ", line))
    return "\n".join(out)


file = Path(sys.argv[1])
text = file.read_text(encoding="utf-8")
print(page(text, file) if file.suffix == ".md" else header(text), end="")
