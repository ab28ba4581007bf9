"""The section of a file, its results and bars in hexadecimal. A host in Python.

    host.py <library> <header> <names> <section>
"""
import ctypes
import re
import struct
import sys
from ctypes import byref, c_double, c_int32

library, header, names, section = sys.argv[1:]
listed = [(kind, name, int(value)) for kind, name, value in re.findall(r"(\w+)\((\w+), (\d+)\)", open(names).read())]
value = {name: number for kind, name, number in listed if kind != "FIELD"}
declared = re.findall(r"^    (VQ_\w+) = (\d+)", open(header).read(), re.MULTILINE)
assert {name: int(number) for name, number in declared} == value  # no name in the header alone


class VYZTUZE_INFO(ctypes.Structure):
    _fields_ = [("NODE", c_int32), ("not_read_1", c_int32 * 2), ("ELEMENT", c_int32), ("NELNODES", c_int32),
                ("ELNODES", c_int32 * 4), ("gap", c_int32), ("AREA", c_double), ("EMODUL", c_double),
                ("GMODUL", c_double), ("RADIUS", c_double), ("not_read_2", c_double * 3), ("BARWEIGHT", c_double),
                ("SHAPE", c_double * 4), ("RS", c_double * 2), ("STRESS", c_double * 4)]


def show(name, values):
    for x in values:
        print(name, struct.pack(">d", x).hex().upper())


numbers = iter(open(section).read().split())
take = lambda count, kind: [kind(next(numbers)) for _ in range(count)]
groups, nnodes, nelems, npoints = take(4, int)
nodes = (c_double * (2 * nnodes))(*take(2 * nnodes, float))
elements = (c_int32 * (4 * nelems))(*take(4 * nelems, int))
props = (c_double * (value["VQ_NCOLUMNS"] * nelems))(*take(value["VQ_NCOLUMNS"] * nelems, float))
points = (VYZTUZE_INFO * npoints)()
for bar in points:
    bar.NODE, bar.ELEMENT = take(2, int)
    bar.AREA, bar.EMODUL, bar.GMODUL, bar.RADIUS, bar.BARWEIGHT = take(5, float)
status, result = c_int32(groups), (c_double * value["VQ_NSLOTS"])()
nodeout, elemout = (c_double * (3 * nnodes))(), (c_double * (48 * nelems))()
result[value["VQ_MODE_SLOT"]] = value["VQ_PLASTIC"]
ctypes.CDLL(library).vq_velquor(byref(status), nodes, c_int32(nnodes), elements, c_int32(nelems), props,
                                c_int32(npoints), points, result, nodeout, elemout)

print("status", status.value)
for kind, name, number in listed:
    if kind == "SLOT":
        show(name, [result[number]])
    else:
        print(name, getattr(VYZTUZE_INFO, name).offset if kind == "FIELD" else number)
for bar in points:
    print("nodes", bar.NELNODES, *bar.ELNODES)
    show("shape", bar.SHAPE)
    show("rs", bar.RS)
    show("stress", bar.STRESS)
show("node", nodeout)
show("element", elemout)
assert status.value == value["VQ_DONE"] and ctypes.sizeof(VYZTUZE_INFO) == 184
