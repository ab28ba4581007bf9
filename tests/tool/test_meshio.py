"""Meshes that meshio writes, by the command: VELQUOR_COMMAND names the program."""
import json
import os
import pathlib
import subprocess
import tempfile
import unittest

import meshio
import numpy

# A plate of 30 by 20: two quadrilaterals of steel below, triangles of timber above, a line that is no part of it.
POINTS = [[0, 0], [15, 0], [30, 0], [0, 10], [15, 10], [30, 10], [0, 20], [15, 20], [30, 20]]
CELLS = [("line", [[0, 1]]), ("quad", [[0, 1, 4, 3], [1, 2, 5, 4]]),
         ("triangle", [[3, 4, 6], [4, 7, 6], [4, 5, 7], [5, 8, 7]])]
GROUPS = [[5], [7, 7], [9, 9, 9, 9]]
MATERIALS = {"materials": [{"name": "steel", "E": 200000}, {"name": "timber", "E": 10000}],
             "mesh": {"groups": {"7": "steel", "9": "timber"}}}
EA, EI = 300 * (200000 + 10000), 30 * 20**3 / 12 * 105000


class Meshio(unittest.TestCase):
    def test_what_it_writes_is_read(self):
        data = {key: [numpy.array(groups) for groups in GROUPS] for key in ("gmsh:physical", "gmsh:geometrical")}
        points = numpy.array([[y, z, 0.0] for y, z in POINTS])
        mesh = meshio.Mesh(points, [(kind, numpy.array(cells)) for kind, cells in CELLS], cell_data=data)
        plain = meshio.Mesh(points, [(kind, numpy.array(cells)) for kind, cells in CELLS[1:]])
        both = meshio.Mesh(points, mesh.cells[1:], cell_data={"medit:ref": [numpy.array(g) for g in GROUPS[1:]]})
        cases = (
            ("text.msh", mesh, {"file_format": "gmsh22", "binary": False}, ""),
            ("binary.msh", mesh, {"file_format": "gmsh22", "binary": True}, ""),
            ("medit.mesh", both, {"file_format": "medit"}, ""),
            ("text.vtk", mesh, {"file_format": "vtk42", "binary": False}, ""),
            ("five.vtk", mesh, {"file_format": "vtk", "binary": True}, "is of version 5 of its form"),
            ("plain.bdf", plain, {"file_format": "nastran"}, "6 of 6 elements have no property"),
        )
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            (folder / "materials.json").write_text(json.dumps(MATERIALS))
            for file, written, form, fault in cases:
                with self.subTest(file):
                    meshio.write(folder / file, written, **form)
                    done = subprocess.run([os.environ["VELQUOR_COMMAND"], "calc", file, "--materials", "materials.json",
                                           "--json"], cwd=folder, capture_output=True, encoding="utf-8", timeout=60)
                    section, = json.loads(done.stdout)["sections"]
                    if fault:
                        self.assertIn(fault, section["error"]["fault"])
                        continue
                    self.assertEqual(done.returncode, 0, done.stderr)
                    self.assertAlmostEqual(section["values"]["EA"]["value"] / EA, 1, delta=1e-9)
                    ei = EI - EA * (10 - section["values"]["z_C"]["value"])**2
                    self.assertLess(abs(section["values"]["EIy"]["value"] / ei - 1), 1e-6)


if __name__ == "__main__":
    unittest.main()
