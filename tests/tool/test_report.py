"""Reports and exports as people file them and other programs read them: VELQUOR_COMMAND names the program."""
import csv
import html.parser
import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

import meshio
import numpy

COMMAND = os.environ["VELQUOR_COMMAND"]
T_BEAM = str(pathlib.Path(__file__).parents[2] / "examples" / "sections" / "t_beam.json")
ODD = '<b>&"steel" Ø</b>' + 60 * "x"
POLYGON = [[(100 + 20 * (k % 2)) * numpy.cos(k * numpy.pi / 30), (70 + 20 * (k % 2)) * numpy.sin(k * numpy.pi / 30)]
           for k in range(60)]
LARGE = {"name": ODD, "materials": [{"name": "M", "E": 210000}, {"name": "spare", "E": 1}],
         "parts": [{"name": ODD, "material": "M", "outline": POLYGON}],
         "bars": [{"from": [-60, z], "to": [60, z], "count": 70, "diameter": 1, "material": "M", "as_point": True}
                  for z in (-20, 0, 20)]}
VOID = {"meta", "br", "wbr", "hr", "img", "link", "input"}


def run(*arguments, text="", wanted=0, **more):
    done = subprocess.run([COMMAND, *arguments], input=text, capture_output=True, encoding="utf-8", timeout=120, **more)
    if done.returncode != wanted:
        raise AssertionError(f"{arguments}: {done.returncode}: {done.stderr}")
    return done


def words_of(pdf, *options):
    return subprocess.run(["pdftotext", *options, pdf, "-"], capture_output=True, encoding="utf-8", check=True).stdout


class Page(html.parser.HTMLParser):
    """Elements closed in order; the rows of all tables, and every attribute that could load something."""

    def __init__(self, text):
        super().__init__()
        self.open, self.rows, self.loads, self.tags, self.words = [], [], [], set(), ""
        self.feed(text)
        self.close()
        assert not self.open, self.open

    def handle_starttag(self, tag, attributes):
        self.tags.add(tag)
        if tag not in VOID:
            self.open.append(tag)
        if tag == "tr":
            self.rows.append([])
        elif tag in ("td", "th"):
            self.rows[-1].append("")
        self.loads += [value for name, value in attributes
                       if name in ("src", "href", "xlink:href", "data", "srcset", "action") and value[:1] != "#"]

    def handle_startendtag(self, tag, attributes):
        self.handle_starttag(tag, attributes)
        if tag not in VOID:
            self.open.pop()

    def handle_endtag(self, tag):
        assert self.open.pop() == tag, tag

    def handle_data(self, data):
        self.words += data
        if "tr" in self.open and self.rows[-1]:
            self.rows[-1][-1] += data


class Folder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = lambda name: os.path.join(folder.name, name)


class Reports(Folder):
    def html(self, *arguments, text=""):
        file = self.path("report.html")
        run("report", *arguments, "-o", file, text=text)
        with open(file, encoding="utf-8") as opened:
            return opened.read()

    def test_html_stands_alone_and_tells_the_values_of_the_table(self):
        text = self.html(T_BEAM, "--load", "dead: My=-50kNm Vz=30kN", "--units", "cm")
        page = Page(text)
        self.assertEqual(page.loads, [])
        self.assertNotRegex(text, r"https?:|@import|url\((?!#)")
        self.assertFalse({"script", "link", "iframe", "img", "object"} & page.tags)
        self.assertEqual(text.count("<svg"), 2)
        self.assertIn('<html lang="en">', text)
        table = run("calc", T_BEAM, "--units", "cm").stdout
        lines = re.findall(r"^  (\S+) +([-\d.e]+) (?:±|  )? *(\S+) +(\S+)  ", table, re.M)
        self.assertGreater(len(lines), 30)
        told = {row[0]: row[1:] for row in page.rows if len(row) == 6}
        for symbol, value, bound, unit in lines:
            if symbol.startswith("αpl"):
                continue  # which has no unit
            with self.subTest(symbol):
                row = told[re.sub("^(.),", r"\1", symbol)]  # the comma before an index is not set
                self.assertEqual((row[0], row[1].replace("±\u00a0", ""), row[2]), (value, bound, unit))
        given, summed = (next(row[1:] for row in page.rows if row[:1] == [name]) for name in ("given", "summed"))
        self.assertEqual(len(given), 7)
        for load, sum_of_stresses in zip(map(float, given), map(float, summed)):
            self.assertAlmostEqual(sum_of_stresses, load, delta=5e-3 * abs(load) if load else 1e3)
        self.assertIn("My = -50e6 N·mm, tension at -z; Vz = 30000 N, along +z.", page.words)
        for word in ("B500", "no limit at (150, -150), a sharp corner", "more than its strength", "several materials"):
            self.assertIn(word, page.words)

    def test_meshes_and_drawings_are_told_with_what_was_done_to_them(self):
        mesh = self.path("beam.msh")
        run("mesh", T_BEAM, "-o", mesh)
        page = Page(self.html(mesh, "--load", "N=1"))
        self.assertRegex(page.words, r"\d+ elements of \S*beam.msh")
        self.assertIn("all of S235", page.words)
        self.assertIn("all of S235", run("draw", mesh).stderr)
        self.assertIn("all of S235", run("export", mesh, "-o", self.path("beam.csv")).stderr)
        drawing = str(pathlib.Path(T_BEAM).with_name("encased.json"))
        self.assertIn("passed over, for no material is given for them: layers NOTES", Page(self.html(drawing)).words)

    def test_names_are_words_and_an_input_gives_one_file(self):
        page = Page(self.html("-", "--project", "<i>&", text=json.dumps(LARGE)))
        self.assertIn(ODD, page.words)
        self.assertIn("<i>&", page.words)
        self.assertFalse({"b", "i"} & page.tags)
        self.assertIn('"spare" is used by nothing', page.words)
        for form in ("html", "pdf"):
            files = [self.path(f"{k}.{form}") for k in "ab"]
            for file in files:
                run("report", "IPE 300", "-o", file)
            self.assertEqual(*(pathlib.Path(file).read_bytes() for file in files))

    def test_pdf_is_on_a4_with_heads_on_every_page_and_whole_rows(self):
        file = self.path("report.pdf")
        run("report", "-", "--by", "A. Smith", "--load", "N=1", "-o", file, text=json.dumps(LARGE))
        info = subprocess.run(["pdfinfo", file], capture_output=True, encoding="utf-8", check=True).stdout
        self.assertIn("(A4)", info)
        self.assertNotIn("CreationDate", info)
        pages = words_of(file, "-layout").rstrip("\f").split("\f")
        self.assertEqual(int(re.search(r"Pages: +(\d+)", info)[1]), len(pages))
        rows = {}
        for number, page in enumerate(pages, 1):
            self.assertRegex(page, rf"{number} / {len(pages)}\s*$")
            found = re.findall(r"^ *bars\[(\d)\] \((\d+)\w\w of the row\) +[-\d.]+ +[-\d.]+ +0.7853982 +1 +M +point$",
                               page, re.M)
            rows.update((70 * int(row) + int(bar), number) for row, bar in found)
            if found:
                self.assertRegex(page, r"Bar +y +z +Area +Diameter +Material +Taken as")
        self.assertEqual(list(rows), list(range(1, 211)))
        self.assertGreater(len(set(rows.values())), 3)
        words = words_of(file)
        for word in ("A. Smith", "Checks and warnings", "How it was calculated", "second moment, bending about y"):
            self.assertIn(word, words)
        self.assert_nothing_ends_with_its_beginning(pages)

    # The last line of a page, above its number, is no heading, nor the sentence between a heading and its table.
    def assert_nothing_ends_with_its_beginning(self, pages):
        for page in pages:
            last = [line.strip() for line in page.splitlines() if line.strip()][-2]
            self.assertNotRegex(last, r"^((Drawing|Input|Values|Stresses|Checks and warnings|How it was calculated)$|"
                                      r"Load set |Lengths are|In mm and|Transformed|repeat|My = )")

    def test_pages_of_a_wide_section_break_where_they_may(self):
        section = {"name": "Composite", "units": {"length": "mm", "force": "kN"},
                   "materials": [{"name": "C30/37", "E": 33, "nu": 0.2, "strength": {"tension": 3e-3, "compression": 0.03}},
                                 {"name": "S355", "E": 210, "strength": 0.355},
                                 {"name": "B500", "E": 200, "strength": 0.5}, {"name": "GL24", "E": 11, "G": 0.69}],
                   "parts": [{"name": "slab", "material": "C30/37",
                              "outline": [[-1150, 300], [1150, 300], [1150, 450], [-1150, 450]]},
                             {"material": "S355", "profile": "IPE 600"}],
                   "bars": [{"from": [-1090, 415], "to": [1090, 415], "count": 13, "diameter": 12, "material": "B500"}],
                   "loads": [{"name": "first", "My": -250e3}, {"name": "second", "My": -6e5, "Vz": 320}]}
        source, file = self.path("wide.json"), self.path("wide.pdf")
        pathlib.Path(source).write_text(json.dumps(section), encoding="utf-8")
        run("report", source, "-o", file)
        pages = words_of(file, "-layout").rstrip("\f").split("\f")
        self.assertIn("Outline and axes", pages[0])
        for page in pages[:-1]:  # none is left almost empty, for a picture did not fit
            self.assertGreater(len([line for line in page.splitlines() if line.strip()]), 15)
        self.assert_nothing_ends_with_its_beginning(pages)
        told = "\n".join(pages)
        self.assertIn("Input: wide.json, in", told)
        self.assertRegex(told, r"GL24 +11 +– +0.69")
        run("report", "IPE 300", "--load", "My=-20kNm Vz=30kN", "-o", file)  # whose pictures are set a little smaller
        self.assertEqual(words_of(file).count("\f"), 4)
        for place in (r"parts\[0\] slab +C30/37", r"parts\[1\] +S355", r"bars\[0\] \(13th of the row\) +1090"):
            self.assertRegex(told, place)

    def test_refusals(self):
        cases = (
            (["report", "IPE 300", "-o", "x.doc"], '-o: "x.doc" has an unknown ending; it must be .html, .htm or .pdf'),
            (["report", "IPE 300"], "--output is required"),
            (["export", "IPE 300", "-o", "x"], '-o: "x" has no ending; it must be .vtu, .msh or .csv'),
            (["export", "IPE 300", "--case", "N,N", "-o", "x.csv"], '--case: "N" is given twice; once is enough'),
            (["calc", "IPE 300", "--csv", "--load", "N=1"], "--load: a table of several sections"),
            (["export", "IPE 300", "--case", "N,vy", "-o", "x.csv"], '--case: unknown unit load "vy"; did you mean "Vy"?'))
        for arguments, message in cases:
            self.assertIn(message, run(*arguments, wanted=1).stderr)
        without = self.path("fonts.conf")
        pathlib.Path(without).write_text("<fontconfig><dir>/no/fonts</dir></fontconfig>", encoding="utf-8")
        done = run("report", "IPE 300", "-o", self.path("x.pdf"), wanted=1, env={**os.environ, "FONTCONFIG_FILE": without})
        self.assertIn("no fonts are installed", done.stderr)


class Exports(Folder):
    def test_forms_hold_the_same_numbers(self):
        files = {form: self.path("t." + form) for form in ("vtu", "msh", "csv")}
        for file in files.values():
            run("export", T_BEAM, "--load", "snow: N=1000 Vz=-2000", "-o", file)
        with open(files["csv"], newline="", encoding="utf-8") as opened:
            lines = list(csv.DictReader(opened))
        vtu, msh = meshio.read(files["vtu"]), meshio.read(files["msh"])
        self.assertEqual(len(lines), len(vtu.points))
        numpy.testing.assert_array_equal(vtu.points[:, :2], [[float(line["y"]), float(line["z"])] for line in lines])
        names = {"warping", "warping of shear along u", "warping of shear along v", "sharp", "snow axial", "snow shear",
                 "snow shear amount", "snow von Mises"}
        self.assertEqual(set(vtu.point_data), names)
        for name in names - {"snow shear"}:
            numpy.testing.assert_array_equal(vtu.point_data[name], [float(line[name]) for line in lines])
        for k, axis in enumerate("yz"):
            numpy.testing.assert_array_equal(vtu.point_data["snow shear"][:, k],
                                             [float(line["snow shear " + axis]) for line in lines])
        # a node between concrete and a bar is two points, whose axial stresses are as their moduli
        sides = {}
        for line in lines:
            sides.setdefault(line["node"], {})[line["material"]] = float(line["snow axial"])
        both = [side for side in sides.values() if len(side) == 2]
        self.assertGreater(len(both), 20)
        for side in both:
            self.assertAlmostEqual(side["B500"] / side["C30/37"], 200000 / 33000, delta=0.05)
        # cells: area and material of each, and a force that comes back
        force = 0
        for block, materials in zip(vtu.cells, vtu.cell_data["material"]):
            for cell, material in zip(block.data, materials):
                self.assertEqual({lines[p]["material"] for p in cell}, {("C30/37", "B500")[material]})
            a, b, c = (vtu.points[block.data[:, k]] for k in (0, 1, 2))
            means = vtu.point_data["snow axial"][block.data].mean(axis=1)
            d = vtu.points[block.data[:, -1]]
            force += (0.5 * numpy.cross(c - a, d - b)[:, 2] * means).sum() if block.data.shape[1] == 4 else (
                0.5 * numpy.cross(b - a, c - a)[:, 2] * means).sum()
        self.assertAlmostEqual(force, 1000, delta=5)  # less what discs lose as polygons
        self.assertEqual(sum(len(block.data) for block in msh.cells), sum(len(block.data) for block in vtu.cells))
        # a view has at each element's corners what the table has at these nodes
        view = pathlib.Path(files["msh"]).read_text(encoding="utf-8").split('"snow axial"')[1].split("$End")[0]
        rows = [row.split() for row in view.splitlines()[7:]]
        cells = [cell for block in msh.cells for cell in block.data]
        self.assertEqual(len(rows), len(cells))
        known = {(int(line["node"]), float(line["snow axial"])) for line in lines}
        for row, cell in zip(rows, cells):
            self.assertLessEqual({(n + 1, float(value)) for n, value in zip(cell, row[2:])}, known)

    def test_bars_that_are_points_unit_loads_and_the_finest_mesh(self):
        file = self.path("x.vtu")
        run("export", "-", "--case", "N,T", "-o", file, text=json.dumps(LARGE))
        vtu = meshio.read(file)
        self.assertEqual({name for name in vtu.point_data if name.startswith("unit")},
                         {"unit N axial", "unit T shear", "unit T shear amount"})
        self.assertEqual(sum(len(block.data) for block in vtu.cells if block.type == "vertex"), 210)
        run("export", "IPE 300", "--fine", "-o", file)
        coarse = int(re.search(r"(\d+) nodes", run("calc", "IPE 300").stdout)[1])
        vtu = meshio.read(file)
        self.assertGreater(len(vtu.points), 12 * coarse)  # 16 but for the edges
        self.assertNotIn("warping", vtu.point_data)
        run("export", "--shape", "circle", "--d", "10", "-o", file)  # which carries no bimoment
        self.assertNotIn("unit B axial", meshio.read(file).point_data)


if __name__ == "__main__":
    unittest.main()
