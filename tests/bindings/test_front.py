"""The Python package in front of the command, which VELQUOR_COMMAND names: values, errors, fields, pictures, batches."""
import base64
import contextlib
import html.parser
import io
import itertools
import json
import math
import os
import pathlib
import pickle
import re
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import warnings

import numpy as np

ROOT = pathlib.Path(__file__).parents[2]
sys.path.insert(0, str(ROOT / "bindings" / "python"))
import velquor  # noqa: E402
from velquor import workers  # noqa: E402

COMMAND = os.environ["VELQUOR_COMMAND"]
SECTIONS = ROOT / "examples" / "sections"
QUICK = {"levels": 1, "values": ["A", "Iy"]}
L_SHAPE = [[0, 0], [100, 0], [100, 10], [10, 10], [10, 80], [0, 80]]
STEEL = {"name": "steel", "E": 210000, "density": 7.85e-6, "strength": 235}


def plate(width=10.0, height=20.0, **more):
    outline = [[0, 0], [width, 0], [width, height], [0, height]]
    return {"materials": [STEEL], "parts": [{"outline": outline}], **more}


def calculated(*arguments):
    done = subprocess.run([COMMAND, "calc", *map(str, arguments), "--json"], capture_output=True, check=True)
    return json.loads(done.stdout)["sections"][0]


def children():
    """Processes of this one that live, or that nobody has waited for."""
    found = []
    for status in pathlib.Path("/proc").glob("[0-9]*/stat"):
        with contextlib.suppress(OSError):
            if int(status.read_text().rpartition(")")[2].split()[1]) == os.getpid():
                found.append(int(status.parent.name))
    return found


def python(script, **more):
    """Runs a script that has `velquor`, with every warning an error."""
    begin = "import os, signal, sys, threading, time\n"
    begin += f"sys.path.insert(0, {str(ROOT / 'bindings' / 'python')!r})\nimport velquor\n"
    return subprocess.run([sys.executable, "-B", "-X", "dev", "-W", "error", "-c", begin + script], timeout=60,
                          capture_output=True, encoding="utf-8", **more)


@contextlib.contextmanager
def program(text):
    """A command of our own in the place of velquor."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "velquor"
        path.write_text(f"#!{sys.executable} -B\nimport json, os, signal, sys, time\n" + text)
        path.chmod(path.stat().st_mode | stat.S_IXUSR)
        yield str(path)


class Values(unittest.TestCase):
    def test_are_those_of_the_command_bit_for_bit(self):
        shape = {"h": 300, "b": 150, "tw": 7.1, "tf": 10.7, "r": 15}
        cases = (
            (velquor.section("IPE 300"), ["IPE 300"]),
            (velquor.section("IPE 300", units=("cm", "kN"), levels=2),
             ["IPE 300", "--units", "cm", "--force", "kN", "--levels", 2]),
            (velquor.section(SECTIONS / "t_beam.json", accuracy=0.05, units="cm"),
             [SECTIONS / "t_beam.json", "--accuracy", 0.05, "--units", "cm"]),
            (velquor.section(str(SECTIONS / "encased.json"), size=40), [SECTIONS / "encased.json", "--size", 40]),
            (velquor.section(shape="i", **shape), ["--shape", "i", *(x for k, v in shape.items() for x in (f"--{k}", v))]),
        )
        for section, arguments in cases:
            with self.subTest(arguments):
                expected = calculated(*arguments)
                given = section.to_dict()
                for key in "values", "accuracy", "units", "materials":
                    self.assertEqual(given[key], expected[key])
                for key, entry in expected["values"].items():
                    self.assertEqual((getattr(section, key), section.values[key], section.unit(key), section.reason(key)),
                                     (entry["value"], entry["value"], entry["unit"], entry.get("reason")))
                    bound = math.inf if entry["bound"] is None else entry["bound"]
                    self.assertEqual(getattr(section.bounds, key), bound)
                self.assertEqual(section.accuracy.levels, expected["accuracy"]["levels"])
                again = pickle.loads(pickle.dumps(section))
                self.assertEqual((again.to_dict(), again.name), (given, section.name))

    def test_a_key_that_is_not_there_is_told_with_the_one_that_is_near(self):
        section = velquor.section("IPE 300", values=["It", "Wpl_y"], levels=1)
        self.assertEqual((list(section.values), dir(section.values)[-1]), (["It", "Wpl_y"], "values"))
        self.assertIn("Wpl_y", dir(section))
        for ask, failure, message in (
                (lambda: section.Wpl_x, AttributeError, "no value 'Wpl_x'; did you mean 'Wpl_y'"),
                (lambda: section.it, AttributeError, "did you mean 'It'"),
                (lambda: section.bounds.Itt, AttributeError, "did you mean 'It'"),
                (lambda: section.bounds["Itt"], KeyError, "no value 'Itt'; did you mean 'It'"),
                (lambda: section.unit("A"), KeyError, "no value 'A'"),
                (lambda: section.field("Tv"), KeyError, "no load 'Tv'; did you mean 'T")):
            with self.assertRaisesRegex(failure, message):
                ask()
        done = python("velquor.section('IPE 300', values=['It'], levels=1).Itt")  # to which the interpreter adds nothing
        self.assertEqual(done.stderr.splitlines()[-1], "AttributeError: no value 'Itt'; did you mean 'It'?")

    def test_names_are_those_of_the_command(self):
        for text in "", "he b2", "nothing":
            done = subprocess.run([COMMAND, "profiles", text], capture_output=True, encoding="utf-8")
            lines, names = done.stdout.splitlines(), velquor.profiles(text)
            self.assertEqual(len(names), len(lines))
            self.assertEqual([name for name, line in zip(names, lines) if not line.startswith(f"{name} ")], [])
        self.assertEqual(velquor.shapes()["rectangle"]["r"], "radius of the corners, optional")
        done = subprocess.run([COMMAND, "--version"], capture_output=True, encoding="utf-8")
        self.assertEqual(done.stdout.splitlines()[0], f"velquor {velquor.__version__}")
        with self.assertRaisesRegex(OSError, "/bin/true has no catalogue"):
            velquor.profiles(command="/bin/true")

    def test_no_key_is_hidden_by_an_attribute(self):
        hidden = set(velquor.section("IPE 300", levels=1).values) & ({*dir(velquor.Section)} | {"index", "id"})
        self.assertEqual(hidden, set())

    def test_meshes_and_drawings_have_their_materials_beside_them(self):
        drawing = SECTIONS / "encased.dxf"
        whole = json.loads((SECTIONS / "encased.json").read_text())
        given = {"materials": whole["materials"], "drawing": {"layers": whole["drawing"]["layers"]}, "bars": whole["bars"]}
        options = {"values": ["A", "It"], "levels": 1}
        expected = velquor.section(SECTIONS / "encased.json", **options).values
        self.assertEqual(velquor.section(drawing, materials=given, **options).values, expected)
        self.assertEqual(velquor.section(whole, files=SECTIONS, **options).values, expected)
        with self.assertRaisesRegex(velquor.SectionError, "^drawing.file: no files are read here"):
            velquor.section(whole)
        with self.assertRaisesRegex(velquor.SectionError, "^materials: a mesh or a drawing has none; give materials="):
            velquor.section(drawing)
        with tempfile.TemporaryDirectory() as folder:
            mesh = pathlib.Path(folder) / "plate.msh"
            subprocess.run([COMMAND, "mesh", "-", "-o", mesh], input=json.dumps(plate()).encode(), check=True)
            self.assertAlmostEqual(velquor.section(mesh, materials=[STEEL]).A, 200)
            result, = velquor.batch(["plate.msh"], materials=[STEEL], files=folder, values=["A"])
            self.assertAlmostEqual(result.A, 200)


class Errors(unittest.TestCase):
    def test_tell_kind_place_message_and_remedy(self):
        circle = {"materials": [STEEL], "parts": [{"shape": "circel", "parameters": {"d": 10}}]}
        for source, expected in (
                ("IPE 301", ("refused", "name", 'unknown profile "IPE 301"', 'did you mean "IPE 300"?')),
                (circle, ("refused", "parts[0].shape", 'unknown shape "circel"', 'did you mean "circle"?')),
                ({"name": "IPE 300", "value": []}, ("request", "", 'unknown key "value"', 'did you mean "values"?')),
                ({"material": [], "part": []}, ("refused", "", 'unknown key "material"', 'did you mean "materials"?')),
                ({"name": "a", "matrials": []}, ("refused", "", 'unknown key "matrials"', 'did you mean "materials"?')),
                ({}, ("refused", "", 'key "materials" is missing', "")),
                ({"levels": 2}, ("request", "", "no section", "")),
                (velquor.section("IPE 300", **QUICK).to_dict(), ("request", "", "that is an answer", "give the section")),
                (velquor.section("IPE 300", **QUICK), ("request", "", "that is an answer", "give the section")),
                (plate(math.nan), ("request", "parts[0].outline[1][0]", "is not a finite number", "")),
                (plate(name="\ud800"), ("request", "name", "cannot be written as JSON: ", "")),
                (plate(name=object()), ("request", "name", "cannot be written as JSON: object", "")),
                ({"section": plate(bars=np.array([1, math.nan]))}, ("request", "bars[1]", "is not a finite number", "")),
                (7, ("request", "", "int is no section", "give a profile")),
                ("missing.json", ("refused", "", "missing.json: cannot be read: No such file", ""))):
            with self.subTest(expected), self.assertRaises(velquor.SectionError) as raised:
                velquor.section(source)
            error = pickle.loads(pickle.dumps(raised.exception))
            self.assertEqual((error.kind, error.at), expected[:2])
            self.assertTrue(error.message.startswith(expected[2]) and error.remedy.startswith(expected[3]), repr(error))
        self.assertEqual(str(velquor.SectionError("refused", "parts[0]", "a", "b")), "parts[0]: a; b")
        with self.assertRaisesRegex(velquor.SectionError, "allow it more by timeout=, or"):
            velquor.section("IPE 300", timeout=0.001, levels=6)
        done = python("velquor.section('missing.json')")
        self.assertEqual(done.stderr.count("Traceback"), 1)

    def test_of_files_are_those_of_the_command(self):
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "plate.json"
            file.write_text("\ufeff" + json.dumps(plate()), encoding="utf-8")
            self.assertAlmostEqual(velquor.section(file, **QUICK).A, 200)
            file.write_text(json.dumps(plate())[:-1] + ', "name": "a", "name": "b"}')
            with self.assertRaisesRegex(velquor.SectionError, 'plate.json: key "name" stands twice'):
                velquor.section(file)

    def test_of_lines_without_a_readable_id_are_those_of_their_sections(self):
        deep = [0.0]
        for _ in range(100):
            deep = [deep]
        wrong = {3: plate(name="a" * (1 << 24)), 4: plate(bars=deep), 9: plate(10**400)}
        sections = [wrong.get(k, plate(10 + k)) for k in range(40)]
        results = {result.index: result for result in velquor.batch(sections, **QUICK)}
        self.assertEqual(sorted(results), list(range(40)))
        for k, result in results.items():
            if k in wrong:
                self.assertEqual(result.kind, "request", repr(result))
            else:
                self.assertAlmostEqual(result.A, 20 * (10 + k))

    def test_of_the_call_itself(self):
        for call, failure in ((lambda: velquor.section(), TypeError), (lambda: velquor.section("IPE 300", h=3), TypeError),
                              (lambda: velquor.section("IPE 300", mesh="fine"), ValueError),
                              (lambda: velquor.batch("IPE 300"), TypeError), (lambda: velquor.batch([], jobs=0), ValueError),
                              (lambda: velquor.section("IPE 300", units=("cm", "kN", "s")), ValueError),
                              (lambda: velquor.section("IPE 300", units=("kN", "cm")), ValueError),
                              (lambda: velquor.check("IPE 300", h=3), TypeError), (lambda: velquor.check(), TypeError),
                              (lambda: velquor.section("IPE 300", timeout=None), ValueError),
                              (lambda: velquor.section("IPE 300", memory=math.nan), ValueError)):
            self.assertRaises(failure, call)

    def test_without_workers(self):
        with self.assertRaisesRegex(OSError, "no command /missing; install .*VELQUOR_COMMAND"):
            velquor.batch([], command="/missing")
        with program("sys.exit('velquor: unknown')") as command, self.assertRaisesRegex(OSError, "unknown; is it velquor,"):
            velquor.section("IPE 300", command=command)
        with self.assertRaisesRegex(OSError, "ended with status 0; is it velquor, of this package's version"):
            velquor.section("IPE 300", command="/bin/true")
        with self.assertRaisesRegex(OSError, "embedded null byte"):  # what nobody thought of is told, and not waited for
            next(velquor.batch(["IPE 300"], files="\0"))
        with program("print('hello', flush=True)\nsys.stdin.read()") as command, self.assertRaisesRegex(OSError, "no answers"):
            velquor.section("IPE 300", command=command)

    def test_in_a_source_tree_its_own_build_is_found_where_nothing_else_is_named(self):
        with tempfile.TemporaryDirectory() as folder:
            tree = pathlib.Path(folder).resolve()
            shutil.copytree(ROOT / "bindings" / "python", tree / "bindings" / "python")
            (tree / "build" / "release" / "tool").mkdir(parents=True)
            ask = "from velquor import places\nprint(places.find_library())\nprint(places.find_command({!r}))"
            own = {"PYTHONPATH": str(tree / "bindings" / "python"), "PATH": "/usr/bin:/bin"}

            def found(command="", **variables):
                return subprocess.run([sys.executable, "-B", "-c", ask.format(command)], env={**own, **variables}, cwd=folder,
                                      capture_output=True, encoding="utf-8").stdout.splitlines()

            library, command = tree / "build/release/libvelquor.so.1", tree / "build/release/tool/velquor"
            self.assertEqual(found()[:1], ["libvelquor.so.1"])
            for path in library, command:
                path.touch(0o755)
            self.assertEqual(found(), [str(library), str(command)])
            self.assertEqual(found(VELQUOR_COMMAND="/bin/true")[1], "/bin/true")
            self.assertEqual(found("/bin/false", VELQUOR_COMMAND="/bin/true")[1], "/bin/false")

    def test_findings_are_those_of_the_command(self):
        self.assertEqual(velquor.check(plate()), [])
        wrong = {**plate(), "parts": [{"shape": "circel", "parameters": {"d": 1}}]}
        error, = velquor.check(wrong)
        self.assertEqual((error["severity"], error["place"], error["remedy"]),
                         ("error", "parts[0].shape", 'did you mean "circle"?'))
        done = subprocess.run([COMMAND, "check", "-"], input=json.dumps(wrong), capture_output=True, encoding="utf-8")
        self.assertEqual(done.stdout, f"-: {error['place']}: {error['message']}; {error['remedy']}\n")
        for given in {"shape": "circel", "d": 10}, {"source": {"shape": "circle", "parameters": {"d": -10}}}:
            with self.assertRaises(velquor.SectionError) as raised:
                velquor.section(**given)
            error, = velquor.check(**given)
            self.assertEqual((error["place"], error["message"]), (raised.exception.at, raised.exception.message))
        self.assertEqual(velquor.check(shape="circle", d=10, accuracy=0.01, units=("cm", "kN")), [])
        self.assertEqual(velquor.check(json.loads((SECTIONS / "encased.json").read_text()), files=SECTIONS), [])
        self.assertIn("unknown profile", velquor.check("--help")[0]["message"])
        self.assertEqual(velquor.check(SECTIONS / "encased.json"), velquor.check(str(SECTIONS / "encased.json")))


class OverTheMesh(unittest.TestCase):
    def integral(self, section, values):
        """Of what the points have, by the mean of corners and the area of each element, cut in two triangles."""
        y, z = np.moveaxis(section.fields.places[section.fields.elements - 1], 2, 0)
        cut = [(0, 1, 2), (0, 2, 3)]
        areas = [0.5 * ((y[:, b] - y[:, a]) * (z[:, c] - z[:, a]) - (y[:, c] - y[:, a]) * (z[:, b] - z[:, a]))
                 for a, b, c in cut]
        corners = values[section.fields.elements - 1]
        return sum((corners[:, list(t)].mean(axis=1) * area).sum() for t, area in zip(cut, areas))

    def test_sums_of_stresses_are_their_loads(self):
        for which in "coarse", "finest":
            section = velquor.section("IPE 300", mesh=which, units=("cm", "kN"))
            mesh, fields = section.mesh, section.fields
            area, iy = section.A * 1e2, section.Iy * 1e4  # fields are in the section's own units
            self.assertEqual((mesh.length, fields.unit), ("mm", "N/mm2"))
            self.assertEqual((mesh.nodes.shape[1], mesh.elements.shape, len(mesh.parts)),
                             (2, (len(fields.elements), 4), len(fields.elements)))
            ones = np.ones(len(fields.node))
            self.assertAlmostEqual(self.integral(section, ones) / area, 1, delta=0.003)  # straight sides in arcs
            np.testing.assert_allclose(fields["N"].axial, 1 / area, rtol=1e-4)
            np.testing.assert_allclose(np.abs(fields["My"].axial), np.abs(fields.places[:, 1]) / iy, rtol=1e-4, atol=1e-11)
            self.assertAlmostEqual(self.integral(section, fields["Vz"].shear[:, 1]), 1, 2)
            self.assertAlmostEqual(self.integral(section, fields["Vz"].shear[:, 0]), 0, 3)
            y, z = fields.places.T
            torque = self.integral(section, y * fields["T"].shear[:, 1] - z * fields["T"].shear[:, 0])
            self.assertAlmostEqual(torque, 1, delta=0.1 if which == "coarse" else 0.01)  # one element through the web
            self.assertIsNone(fields["T"].axial)
            self.assertEqual(sorted(fields), sorted(["N", "My", "Mz", "Vy", "Vz", "T", "Tw", "B"]))
            np.testing.assert_array_equal(mesh.nodes[fields.node - 1], fields.places)
        self.assertGreater(len(mesh.nodes), 4000)  # the finest
        again = pickle.loads(pickle.dumps(section))
        np.testing.assert_array_equal(again.fields["T"].shear, fields["T"].shear)

    def test_the_mesh_is_one_that_core_takes(self):
        if "VELQUOR_LIBRARY" not in os.environ:
            self.skipTest("VELQUOR_LIBRARY names no library")
        section = velquor.section("IPE 300")
        props = velquor.core.property_table(len(section.mesh.elements), EMOD=2.0, GMOD=1.0)
        again = velquor.core.calculate(section.mesh.nodes, section.mesh.elements, props, levels=3)
        self.assertAlmostEqual(again.GJ / section.It, 1, delta=0.02)  # straight sides in arcs

    def test_sharp_corners_and_load_sets(self):
        section = velquor.section({"materials": [STEEL], "parts": [{"outline": L_SHAPE}],
                                   "loads": [{"name": "snow T", "N": 1000, "Vz": 2000, "T": 3000}, {"name": "Tw", "N": 3}]})
        fields, snow = section.fields, section.field("snow T")
        self.assertEqual(np.unique(fields.places[fields.sharp], axis=0).tolist(), [[10, 10]])
        self.assertTrue(np.isnan(fields["Vz"].shear[fields.sharp]).all())
        self.assertTrue(np.isfinite(fields["Vz"].shear[~fields.sharp]).all())
        expected = 1000 * fields["N"].axial
        np.testing.assert_allclose(snow.axial, expected, rtol=1e-9)
        shear = 2000 * fields["Vz"].shear + 3000 * fields["T"].shear
        np.testing.assert_allclose(snow.shear, shear, rtol=1e-9, atol=1e-9)
        np.testing.assert_allclose(snow.mises, np.sqrt(expected**2 + 3 * (shear**2).sum(axis=1)), rtol=1e-9)
        self.assertEqual(section.loads[0]["name"], "snow T")
        np.testing.assert_allclose(section.field("Tw").axial, 3 * fields["N"].axial, rtol=1e-9)  # the set of this name
        self.assertRaises(KeyError, section.field, "snow")
        self.assertEqual((fields, {fields}), (section.fields, {section.fields}))
        self.assertRegex(repr(fields), "^<velquor.Fields: [0-9]+ points, N, My, ")
        self.assertRegex(repr(snow), "^<velquor.Field 'snow T': axial, shear, mises at [0-9]+ points, in N/mm2>$")
        self.assertLess(len(repr(section.values)), 300)


class Pictures(unittest.TestCase):
    def test_of_fields_have_units_equal_axes_and_neither_diagonals_nor_sharp_corners(self):
        try:
            import matplotlib
        except ImportError:
            self.skipTest("no matplotlib")
        matplotlib.use("agg")
        import matplotlib.pyplot as plt
        from velquor.pictures import _triangles
        section = velquor.section({"materials": [STEEL], "parts": [{"outline": L_SHAPE}]})
        for field in None, "Vz", "N", "warping":
            ax = section.plot(field)
            self.assertEqual((ax.get_aspect(), ax.get_xlabel(), ax.get_ylabel()), (1.0, "y [mm]", "z [mm]"))
            self.assertEqual(len(ax.figure.axes), 1 if field is None else 2)
            ax.figure.savefig(io.BytesIO())
            low, high = sorted(ax.get_xlim())
            self.assertTrue(-20 < low < 0 and 100 < high < 120, (low, high))
        self.assertEqual(ax.figure.axes[1].get_ylabel(), "warping of a unit twist [mm²]")
        with self.assertRaisesRegex(ValueError, "no quantity 'axail'; did you mean 'axial'"):
            section.plot("N", quantity="axail")
        plt.close("all")
        fields = section.fields
        shear = np.hypot(*fields["Vz"].shear.T)
        for values in shear, fields["N"].axial:
            places, colours, triangles = _triangles(fields, values)
            y, z = np.moveaxis(places[triangles], 2, 0)
            areas = (y[:, 1] - y[:, 0]) * (z[:, 2] - z[:, 0]) - (y[:, 2] - y[:, 0]) * (z[:, 1] - z[:, 0])
            self.assertTrue((areas > 0).all() and np.isfinite(colours[triangles]).all())
            drawn = np.unique(triangles[:, 2]) - len(values)  # a centre for each element
            self.assertEqual([e for e in range(len(fields.elements)) if e not in drawn],
                             np.flatnonzero(~np.isfinite(values[fields.elements - 1]).all(axis=1)).tolist())
        self.assertAlmostEqual(areas.sum() / 2, section.A, 6)  # nothing is left out, nor drawn twice
        self.assertGreater(np.isnan(shear).sum(), 0)

    def test_without_matplotlib_its_package_is_named(self):
        done = python("sys.modules['matplotlib'] = None\n"
                      "try: velquor.section('IPE 300').plot()\nexcept ImportError as error: print(error)")
        self.assertIn("python3-matplotlib", done.stdout)

    def test_the_table_of_a_notebook_escapes_what_it_shows(self):
        evil = '<script>alert("1")</script>&'
        text = velquor.section(plate(name=evil))._repr_html_()
        events = []

        class Reader(html.parser.HTMLParser):
            def handle_starttag(self, tag, attributes):
                events.append(tag)
                if tag == "img":
                    events.extend(value for key, value in attributes if key == "src")

            def handle_endtag(self, tag):
                events.append("/" + tag)

        Reader().feed(text)
        self.assertNotIn("script", events)
        self.assertIn("&lt;script&gt;", text)
        for tag in "div", "table", "tr", "td", "sup":
            self.assertTrue(events.count(tag) == events.count("/" + tag) > 0, tag)
        picture, = (event for event in events if event.startswith("data:"))
        self.assertIn(b"<svg", base64.b64decode(picture.partition("base64,")[2]))
        concrete = velquor.section(SECTIONS / "t_beam.json", levels=2)._repr_html_()
        text = re.sub("<[^>]*>", " ", concrete)
        self.assertRegex(text, "Wpl_y  [^W]*plastic modulus, tension on top +Wpl_y_neg [^W]*tension at the bottom")
        self.assertIn("Mpl_y_neg", text)
        self.assertNotIn("Wpl_z_neg", text)  # as Wpl_z
        self.assertRegex(text, "Not given +stresses grow without limit[^:]*: Wt ")
        self.assertNotIn("Not given", velquor.section("IPE 300", levels=2)._repr_html_())
        self.assertIn("exact", velquor.section("IPE 300", values=["z_max"])._repr_html_())
        self.assertRegex(velquor.section("IPE 300", values=["y_M"])._repr_html_(), ">0</td>.*± ")


class Batches(unittest.TestCase):
    def test_give_every_section_once_with_its_index_and_id_and_errors_among_them(self):
        sections = [f"IPE {300 + k % 2}" if k % 3 else {"section": plate(1 + k), "id": f"B{k}", **QUICK} for k in range(60)]
        sections[5], sections[6] = plate(math.inf), {"name": "IPE 200", "id": np.int64(65), "levels": 1}
        results = list(velquor.batch(sections, values=["A", "It"], levels=1, units="cm", jobs=3))
        self.assertEqual(sorted(result.index for result in results), list(range(60)))
        for result in results:
            k = result.index
            if k in (5, 6):
                self.assertEqual(result.id, {5: 5, 6: 65}[k])
                if k == 6:
                    self.assertEqual(json.dumps(result.to_dict()["id"]), "65")
            elif k % 3 == 0:
                self.assertEqual((result.id, list(result.values)), (f"B{k}", ["A", "Iy"]))  # its own wishes hold
                self.assertAlmostEqual(result.A, 0.2 * (1 + k))
            elif k % 2:
                self.assertEqual((result.id, result.kind, result.remedy), (k, "refused", 'did you mean "IPE 300"?'))
            else:
                self.assertEqual((result.id, result.unit("A")), (k, "cm2"))
        self.assertEqual({type(result) for result in results}, {velquor.Section, velquor.SectionError})

    def test_read_as_much_as_workers_need_and_can_be_left(self):
        read = itertools.count()
        endless = ({"name": "IPE 80", "id": next(read), **QUICK} for _ in itertools.repeat(None))
        iterator = velquor.batch(endless, jobs=2)
        self.assertEqual(next(read), 0)  # nothing is read before the first is asked for
        first = [next(iterator) for _ in range(30)]
        self.assertEqual(len({result.index for result in first}), 30)
        iterator.close()
        pool, = workers._pools.values()
        self.assertEqual((pool.users, pool._jobs), (0, {}))
        self.assertLess(next(read), 50)
        supervisor = children()
        start = time.monotonic()
        self.assertEqual([result.name for result in velquor.batch(["IPE 300"], jobs=2, **QUICK)], ["IPE 300"])
        self.assertLess(time.monotonic() - start, 20)
        self.assertEqual(children(), supervisor)

    def test_what_the_source_raises_ends_it(self):
        iterator = velquor.batch(("IPE 80" if k < 3 else 1 / 0 for k in itertools.count()), **QUICK)
        with self.assertRaises(ZeroDivisionError):
            list(iterator)
        self.assertGreater(velquor.section("IPE 300", **QUICK).A, 5000)

    def test_threads_get_their_own(self):
        wrong = []

        def run(width):
            for result in velquor.batch([plate(width, k) for k in range(1, 20)], jobs=2, **QUICK):
                if abs(result.A - width * (result.index + 1)) > 1e-6:
                    wrong.append(result)
            if abs(velquor.section(plate(width, 7), **QUICK).A - 7 * width) > 1e-6:
                wrong.append(width)

        threads = [threading.Thread(target=run, args=(10.0 * n,)) for n in range(1, 7)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(wrong, [])
        self.assertEqual(len(children()), 1)

    def test_survive_the_end_of_the_supervisor(self):
        iterator = velquor.batch((plate(10 + k) for k in range(80)), jobs=2, levels=4, values=["A"])
        results = [next(iterator)]
        killed, = children()
        inner = [int(p) for p in pathlib.Path(f"/proc/{killed}/task/{killed}/children").read_text().split()]
        self.assertEqual(len(inner), 2)
        results += [next(iterator) for _ in range(20)]  # at each of which more is handed over
        os.kill(killed, signal.SIGKILL)
        results += iterator
        self.assertEqual(sorted(result.index for result in results), list(range(80)))
        for result in results:
            self.assertAlmostEqual(result.A, 20 * (10 + result.index))
        self.assertEqual(len(children()), 1)  # the new one; the other has been waited for
        self.assertNotIn(killed, children())
        self.assertFalse([p for p in inner if os.path.exists(f"/proc/{p}/exe")])

    def test_a_section_that_ends_the_supervisor_twice_is_told(self):
        with program("for line in sys.stdin:\n  asked = json.loads(line)\n"
                     "  if asked['name'] == 'evil': os.kill(os.getpid(), signal.SIGKILL)\n"
                     "  print(json.dumps({'id': asked['id'], 'name': '', 'values': {}}), flush=True)\n"
                     "  time.sleep(0.01)\n") as command:
            results = list(velquor.batch(["good", "evil", *["good"] * 20], jobs=1, command=command))
        self.assertEqual(sorted(result.index for result in results), list(range(22)))
        errors = {result.index: result.kind for result in results if isinstance(result, velquor.SectionError)}
        self.assertEqual(errors.pop(1), "crashed")
        self.assertLessEqual(set(errors.values()), {"crashed"})

    def test_leave_neither_process_nor_descriptor(self):
        def count():
            return len(os.listdir("/proc/self/fd")), threading.active_count(), len(children())

        velquor.section("IPE 80", timeout=50, **QUICK)
        before = count()
        for timeout in range(40, 45):  # another pool each time, in the place of the one before
            velquor.section("IPE 80", timeout=timeout, **QUICK)
        self.assertEqual(count(), before)

    def test_another_process_has_workers_of_its_own(self):
        iterator = velquor.batch(["IPE 80"] * 50, **QUICK)
        area = next(iterator).A
        pool, = workers._pools.values()
        pipes = {os.fstat(fd).st_ino for fd in (*pool._wake, pool._process.stdin.fileno(), pool._process.stdout.fileno())}
        told, telling = os.pipe()
        child = os.fork()
        if child == 0:  # nothing of the tests may run on here
            try:
                held = {os.stat(f"/proc/self/fd/{fd}").st_ino for fd in os.listdir("/proc/self/fd")
                        if os.path.exists(f"/proc/self/fd/{fd}")}
                told_of = {"pipes": len(held & pipes)}
                try:
                    next(iterator)
                except RuntimeError as error:
                    told_of["iterator"] = str(error)
                told_of["area"] = velquor.section("IPE 80", **QUICK).A
                del iterator
                os.write(telling, json.dumps(told_of).encode())
            finally:
                workers._close_all()
                os._exit(0)
        os.close(telling)
        with open(told, "rb") as answer:
            told_of = json.loads(answer.read())
        os.waitpid(child, 0)
        self.assertEqual(told_of["area"], area)
        self.assertIn("in the process that began it", told_of["iterator"])
        self.assertEqual(len(list(iterator)), 49)
        self.assertEqual((len(pipes), told_of["pipes"]), (3, 0))


    def test_may_be_dropped_by_the_collector_while_the_thread_has_the_locks(self):
        done = python("import faulthandler, itertools\n"
                      "faulthandler.dump_traceback_later(20, exit=True)\n"
                      "dropped, other = (velquor.batch(itertools.repeat('IPE 301'), jobs=2) for _ in range(2))\n"
                      "next(dropped), next(other)\n"
                      "pool, = velquor.workers._pools.values()\n"
                      "with velquor.workers._guard, pool._lock: dropped = None\n"
                      "print(pool.users, next(other).kind)")
        self.assertEqual((done.stdout, done.stderr), ("1 refused\n", ""))


class Ends(unittest.TestCase):
    LONG = "many = velquor.batch(({'name': 'HEB 300', 'levels': 5} for _ in range(10**6)), jobs=2)\nnext(many)\n"
    SHOW = ("pool, = velquor.workers._pools.values()\nprint(pool._process.pid, flush=True)\n")

    def check_gone(self, pid, tries=200):
        """The supervisor, and whatever it had: all of its group that is more than an entry nobody has read."""
        for _ in range(tries):
            group = []
            for status in pathlib.Path("/proc").glob("[0-9]*/stat"):
                with contextlib.suppress(OSError):
                    state, _, of = status.read_text().rpartition(")")[2].split()[:3]
                    group += [status.parent.name] if int(of) == int(pid) and state != "Z" else []
            if not group:
                return
            time.sleep(0.05)
        self.fail(f"workers are left: {group}")

    def test_at_exit_in_the_middle_nothing_is_left_and_nothing_said(self):
        thread = "threading.Thread(target=lambda: next(velquor.batch(['IPE 80'])), daemon=True).start()\n"
        for last in "", thread, "del many\n":
            start = time.monotonic()
            done = python(self.LONG + self.SHOW + last)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertLess(time.monotonic() - start, 30)
            self.check_gone(done.stdout, 10)  # at once, whatever they are at

    def test_killed_itself_its_workers_end(self):
        done = python(self.LONG + self.SHOW + "os.kill(os.getpid(), signal.SIGKILL)")
        self.assertEqual(done.returncode, -signal.SIGKILL)
        self.check_gone(done.stdout)

    def test_an_interrupt_ends_the_batch_and_leaves_the_pool(self):
        done = python(self.LONG.replace("5}", "3}") + self.SHOW + "threading.Timer(0.5, lambda: os.killpg(0, signal.SIGINT)).start()\n"
                      "try:\n    for result in many: pass\nexcept KeyboardInterrupt: print('interrupted')\n"
                      "del many\nprint(velquor.section('IPE 300', levels=1).A > 5000)\n"
                      "print(list(velquor.workers._pools.values()) == [pool] and pool._process.pid)", start_new_session=True)
        pid, *rest = done.stdout.split()
        self.assertEqual((rest, done.stderr), (["interrupted", "True", pid], ""))


if __name__ == "__main__":
    warnings.simplefilter("error", ResourceWarning)
    unittest.main()
