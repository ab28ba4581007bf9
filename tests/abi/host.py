"""The section of a file, its results and bars in hexadecimal, then on two levels, and what is found where it has a group
too many. A host in Python.

    host.py <binding> <names> <section> <header>...
"""
import re
import sys

import numpy as np

binding, names, section, *headers = sys.argv[1:]
sys.path.insert(0, binding)
import velquor

listed = [(kind, name, int(value)) for kind, name, value in re.findall(r"(\w+)\((\w+), (\d+)\)", open(names).read())]
declared = [found for header in headers for found in re.findall(r"\b(VQ_\w+) = (\d+)", open(header).read())]
assert {(name, int(value)) for name, value in declared} == {entry[1:] for entry in listed if entry[1].startswith("VQ_")}

# What the binding has for a name of the header.
value = {f"VQ_{name}": column for column, name in enumerate(velquor.COLUMNS, 1)}
value |= {f"VQ_{name}": getattr(velquor, name) for name in ("ELASTIC", "PLASTIC", "PLASTIC_TWO", "PLASTIC_TWO_21")}
value |= {"VQ_DONE": 0, "VQ_REFUSED": velquor.Refused.status, "VQ_NOT_SOLVED": velquor.NotSolved.status,
          "VQ_OUT_OF_MEMORY": velquor.OutOfMemory.status, "VQ_NSLOTS": len(velquor.SLOTS),
          "VQ_NCOLUMNS": len(velquor.COLUMNS), "VQ_MODE_SLOT": velquor.MODE_SLOT}
value |= {"VQ_MAXLEVELS": velquor.MAXLEVELS, "VQ_WARNING": 1, "VQ_ERROR": velquor.ERROR}
value |= {f"VQ_IN_{name}": number for number, name in enumerate(velquor.TABLES)}
value |= {f"VQ_{name}": number for number, name in enumerate(velquor.REASONS, 1)}
value |= {name: offset for record in (velquor.BAR, velquor.FINDING) for name, (_, offset) in record.fields.items()}


def show(name, values):
    for bits in np.asarray(values, np.float64).ravel().view(np.uint64):
        print(name, f"{bits:016X}")


def table(rows, columns):
    return np.array([next(numbers) for _ in range(rows * columns)]).reshape(columns, rows).T


numbers = (float(number) for number in open(section).read().split())
groups, nnodes, nelems, npoints = table(4, 1).astype(int).ravel()
nodes, elements, props = table(nnodes, 2), table(nelems, 4).astype(int), table(nelems, len(velquor.COLUMNS))
of_bars = table(7, npoints)
bars = velquor.bar_table(*of_bars[:2].astype(int), **dict(zip(("AREA", "EMODUL", "GMODUL", "RADIUS", "BARWEIGHT"),
                                                              of_bars[2:])))
result = velquor.calculate(nodes, elements, props, bars=bars, groups=groups)

print("status 0")
for kind, name, number in listed:
    if kind == "SLOT":
        assert velquor.SLOTS.index(name[3:]) == number
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
assert (velquor.BAR.itemsize, velquor.FINDING.itemsize) == (184, 16)

result = velquor.calculate(nodes, elements, props, bars=bars, groups=groups, levels=2,
                           place=lambda a, b, t, y, z: (y + (a + 2 * b) * t / 4096, z))
print("status 0 levels", result.levels)
show("result", [getattr(result, name) for name in velquor.SLOTS])
show("bounds", result.bounds)
print(*(f"sharp {int(sharp)}" for sharp in result.sharp), sep="\n")
for found in velquor.check(nodes, elements, props, bars=bars, groups=1):
    print("found", velquor.TABLES.index(found.table), found.row, velquor.REASONS.index(found.name) + 1,
          velquor.ERROR if found.is_error else 1)
