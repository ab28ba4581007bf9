"""The section of a file, its results and bars in hexadecimal, then on two levels, and what is found where it has a group
too many. A host in Python.

    host.py <binding> <names> <section> <header>...
"""
import re
import sys

import numpy as np

binding, names, section, *headers = sys.argv[1:]
sys.path.insert(0, binding)
from velquor import core

listed = [(kind, name, int(value)) for kind, name, value in re.findall(r"(\w+)\((\w+), (\d+)\)", open(names).read())]
declared = [found for header in headers for found in re.findall(r"\b(VQ_\w+) = (\d+)", open(header).read())]
assert {(name, int(value)) for name, value in declared} == {entry[1:] for entry in listed if entry[1].startswith("VQ_")}

# What the binding has for a name of the header.
value = {f"VQ_{name}": column for column, name in enumerate(core.COLUMNS, 1)}
value |= {f"VQ_{name}": getattr(core, name) for name in ("ELASTIC", "PLASTIC", "PLASTIC_TWO", "PLASTIC_TWO_21")}
value |= {"VQ_DONE": 0, "VQ_REFUSED": core.Refused.status, "VQ_NOT_SOLVED": core.NotSolved.status,
          "VQ_OUT_OF_MEMORY": core.OutOfMemory.status, "VQ_NSLOTS": len(core.SLOTS),
          "VQ_NCOLUMNS": len(core.COLUMNS), "VQ_MODE_SLOT": core.MODE_SLOT}
value |= {"VQ_MAXLEVELS": core.MAXLEVELS, "VQ_WARNING": 1, "VQ_ERROR": core.ERROR}
value |= {f"VQ_IN_{name}": number for number, name in enumerate(core.TABLES)}
value |= {f"VQ_{name}": number for number, name in enumerate(core.REASONS, 1)}
value |= {name: offset for record in (core.BAR, core.FINDING) for name, (_, offset) in record.fields.items()}


def show(name, values):
    for bits in np.asarray(values, np.float64).ravel().view(np.uint64):
        print(name, f"{bits:016X}")


def table(rows, columns):
    return np.array([next(numbers) for _ in range(rows * columns)]).reshape(columns, rows).T


numbers = (float(number) for number in open(section).read().split())
groups, nnodes, nelems, npoints = table(4, 1).astype(int).ravel()
nodes, elements, props = table(nnodes, 2), table(nelems, 4).astype(int), table(nelems, len(core.COLUMNS))
of_bars = table(7, npoints)
bars = core.bar_table(*of_bars[:2].astype(int), **dict(zip(("AREA", "EMODUL", "GMODUL", "RADIUS", "BARWEIGHT"),
                                                              of_bars[2:])))
result = core.calculate(nodes, elements, props, bars=bars, groups=groups)

print("status 0")
for kind, name, number in listed:
    if kind == "SLOT":
        assert core.SLOTS.index(name[3:]) == number
        show(name, getattr(result, name[3:]))
    else:
        print(name, value[name])
for bar in result.bars:
    print("nodes", bar["NELNODES"], *bar["ELNODES"])
    show("shape", bar["SHAPE"])
    show("rs", bar["RS"])
    show("stress", bar["STRESS"])
for k in range(3):
    show("node", result.warping[:, k])
shear = np.stack([result.TAUY, result.TAUZ], axis=-1).reshape(nelems, 4, 8)
show("element", np.concatenate([shear, result.SIGMA], axis=-1))
assert (core.BAR.itemsize, core.FINDING.itemsize) == (184, 16)

result = core.calculate(nodes, elements, props, bars=bars, groups=groups, levels=2,
                           place=lambda a, b, t, y, z: (y + (a + 2 * b) * t / 4096, z))
print("status 0 levels", result.levels)
show("result", [getattr(result, name) for name in core.SLOTS])
show("bounds", result.bounds)
print(*(f"sharp {int(sharp)}" for sharp in result.sharp), sep="\n")
for found in core.check(nodes, elements, props, bars=bars, groups=1):
    print("found", core.TABLES.index(found.table), found.row, core.REASONS.index(found.name) + 1,
          core.ERROR if found.is_error else 1)
