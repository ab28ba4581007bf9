"""Hands the comments of a header to doxygen: plain ones become documentation, their tables stay as they are laid out.

    comments.py <header>
"""
import re
import sys

text = open(sys.argv[1], encoding="utf-8").read()


def as_documentation(lines):
    """The text of a comment; lines further in than the rest are a table and keep their layout."""
    out, table = [], False
    for line in lines:
        if line.startswith("  ") != table:
            table = not table
            out.append("@verbatim" if table else "@endverbatim")
        out.append(line)
    return out + ["@endverbatim"] * table


def block(lines, indent, first):
    lines = as_documentation(lines)
    if first:
        lines[0] = "@file\n" + indent + "/// " + lines[0]
    return "".join(f"{indent}/// {line}".rstrip() + "\n" for line in lines)


# /* ... */ on lines of its own, and behind a declaration.
def c_block(match):
    lines = [re.sub(r"^\s*\* ?", "", line) for line in match[2].split("\n")]
    return block([line.rstrip() for line in lines], match[1], match.start() == 0)


text = re.sub(r"^([ ]*)/\* (.*?) ?\*/\n", c_block, text, flags=re.DOTALL | re.MULTILINE)
text = re.sub(r"(\S[ ]+)/\* (?=[^\n]*\S)", r"\1/**< ", text)

# // likewise. A comment that a blank line parts from what follows belongs to no declaration.
out, lines, indent, start = [], [], "", 0
for number, line in enumerate(text.split("\n") + [""]):
    full = re.match(r"([ ]*)// ?(?!/)(.*)$", line)
    if full and len(full[1]) < 20:
        if not lines:
            indent, start = full[1], number
        lines.append(full[2])
        continue
    if lines:
        if start == 0 or line.strip():
            out.append(block(lines, indent, start == 0).rstrip("\n"))
        lines = []
    line = re.sub(r"^([ ]{20,})// ", r"\1///< ", line)
    out.append(re.sub(r"([^\s}][ ]+)// (?!/)", r"\1///< ", line))
print("\n".join(out))
