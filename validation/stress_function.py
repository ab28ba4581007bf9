#!/usr/bin/python3
"""Torsion constants by Prandtl's stress function: the independent reference of some sections.

    stress_function.py RUNNER FILE [n...]      refinements 1, 2 and 4 if none are given

On the meshes of the runner, but with the other formulation: - div grad f = 2, f = 0 on the outer side and constant
along each hole, J = 2 int f (holes included). A stress field in equilibrium, so J comes from below, where the library's
warping field comes from above; the last line extrapolates the two finest with the square of the element size. For
sections of one material. Needs numpy and scipy; no test runs it, its results stand in the files.
"""
import json
import subprocess
import sys

import numpy as np
import scipy.sparse
import scipy.sparse.linalg


def mesh(runner, path, n):
    tables = json.loads(subprocess.check_output([runner, "--tables", path, str(n)]))
    return np.array(tables["nodes"]), np.array(tables["elements"]) - 1


def loops(elements):
    """The closed lines of edges that one element alone has, along its sense."""
    edges = {(a, b) for e in elements for a, b in zip(e, np.roll(e, -1)) if a != b}
    after = {a: b for a, b in edges if (b, a) not in edges}
    while after:
        start, node = after.popitem()
        line = [start]
        while node != start:
            line.append(node)
            node = after.pop(node)
        yield line


def triangles(elements):
    """Every quadrilateral in two, and once more along its other diagonal; each counts half."""
    quads, single = elements[elements[:, 2] != elements[:, 3]], elements[elements[:, 2] == elements[:, 3]]
    halves = [quads[:, c] for c in ([0, 1, 2], [0, 2, 3], [1, 2, 3], [1, 3, 0])] + [single[:, :3]] * 2
    return np.concatenate(halves)


def torsion_constant(nodes, elements):
    count = len(nodes)
    t = triangles(elements)
    y, z = nodes[t, 0], nodes[t, 1]
    dy, dz = np.roll(y, 1, 1) - np.roll(y, -1, 1), np.roll(z, -1, 1) - np.roll(z, 1, 1)
    area = ((y[:, 1] - y[:, 0]) * (z[:, 2] - z[:, 0]) - (z[:, 1] - z[:, 0]) * (y[:, 2] - y[:, 0])) / 2
    gradients = (dy[:, :, None] * dy[:, None, :] + dz[:, :, None] * dz[:, None, :]) / (8 * area)[:, None, None]
    rows, columns = np.repeat(t, 3, axis=1), np.tile(t, (1, 3))
    matrix = scipy.sparse.coo_matrix((gradients.ravel(), (rows.ravel(), columns.ravel())), (count, count))
    load = np.zeros(count)
    np.add.at(load, t, (area / 6)[:, None].repeat(3, axis=1))

    # Unknowns: a node inside has its own, all nodes of a hole share one, the outer side has none.
    unknown, next_hole = np.arange(count), count
    holes = []
    for line in loops(elements):
        p, q = nodes[line], nodes[np.roll(line, -1)]
        enclosed = np.sum(p[:, 0] * q[:, 1] - p[:, 1] * q[:, 0]) / 2
        unknown[line] = -1 if enclosed > 0 else next_hole
        if enclosed < 0:
            holes.append(-enclosed)
            next_hole += 1
    numbers = np.unique(unknown[unknown >= 0])
    place = np.searchsorted(numbers, unknown)
    kept = unknown >= 0
    gather = scipy.sparse.coo_matrix((np.ones(kept.sum()), (np.nonzero(kept)[0], place[kept])), (count, len(numbers)))
    force = gather.T @ load
    force[len(numbers) - len(holes) :] += holes
    f = scipy.sparse.linalg.spsolve((gather.T @ matrix @ gather).tocsc(), force)
    return 4 * (force @ f)


def main():
    runner, path, *levels = sys.argv[1:]
    levels = [int(n) for n in levels] or [1, 2, 4]
    values = []
    for n in levels:
        nodes, elements = mesh(runner, path, n)
        values.append(torsion_constant(nodes, elements))
        print(f"{n:3d} {len(nodes):8d} nodes {values[-1]:.8g}")
    if len(levels) > 1:
        ratio = (levels[-1] / levels[-2]) ** 2
        print(f"extrapolated       {values[-1] + (values[-1] - values[-2]) / (ratio - 1):.8g}")


main()
