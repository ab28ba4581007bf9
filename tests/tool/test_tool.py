"""The command velquor as people and programs meet it: VELQUOR_COMMAND names the program."""
import csv
import io
import json
import os
import pathlib
import resource
import signal
import subprocess
import tempfile
import time
import unittest
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).parents[2]
COMMAND = os.environ["VELQUOR_COMMAND"]
T_BEAM = str(ROOT / "examples" / "sections" / "t_beam.json")
SWEEP = str(ROOT / "examples" / "sections" / "sweep.json")
SQUARE = {"name": "square", "materials": [{"name": "steel", "E": 210000}],
          "parts": [{"outline": [[0, 0], [10, 0], [10, 10], [0, 10]]}]}
WRONG = {**SQUARE, "parts": [{"shape": "circel", "parameters": {"d": 10}}]}


def run(*arguments, text="", **more):
    return subprocess.run([COMMAND, *arguments], input=text, capture_output=True, encoding="utf-8", timeout=60, **more)


class Statuses(unittest.TestCase):
    def test_of_every_end_with_its_message(self):
        cases = (
            (["calc", "IPE 300"], 0, ""), (["calc", "l 8x8x5/8"], 0, ""),  # a profile, and no folder
            (["--version"], 0, ""), (["--help"], 0, ""), (["calc", "--help"], 0, ""), (["shapes", "i"], 0, ""),
            ([], 1, "velquor: no command"),
            (["clac", "IPE 300"], 1, 'velquor: unknown command "clac"; did you mean "calc"?'),
            (["calc"], 1, "velquor: calc: no section"),
            (["calc", "IPE 300", "--jsn"], 1, 'velquor: unknown option "--jsn"; did you mean "--json"?'),
            (["mesh", "IPE 300", "--units", "cm"], 1, 'velquor: unknown option "--units"; see velquor mesh --help'),
            (["calc", "--shape", "circle", "--d", "5", "--d", "6"], 1, "velquor: --d is given 2 times"),
            (["mesh", "IPE 300", "HEB 200"], 1, "velquor: FILE is given 2 times; mesh takes it once"),
            (["calc", "IPE 300", "--h", "300"], 1, "velquor: --h: a parameter of no shape"),
            (["calc", "IPE 300", "--csv", "--columns", "A"], 1, "velquor: --columns: of tables for reading alone"),
            (["calc", "IPE 300", "HEB 200", "--all"], 1, "velquor: --all: of one section alone"),
            (["calc", "300"], 1, 'velquor: 300: unknown profile "300", and no such file; velquor profiles lists all'),
            (["calc", "IPE 300", "--nu", "0.7"], 1, "velquor: IPE 300: --nu: 0.7; must be above -1 and at most 0.5"),
            (["calc", "IPE 300", "--density", "nan"], 1, "velquor: IPE 300: --density: nan; must be above 0"),
            (["worker", "--jobs", "1", "--timeout", "nan"], 1,
             "velquor: --timeout: nan; must be from 0.001 to 1000000 seconds"),
            (["calc", "IPE 300", "--size", "1e-9"], 1, "velquor: IPE 300: wishes.size: 1e-09 makes too many elements"),
            (["calc", "IPE 301"], 1, 'velquor: IPE 301: unknown profile "IPE 301"; did you mean "IPE 300"?'),
            (["calc", "no.json"], 1, "velquor: no.json: cannot be read: No such file or directory"),
            (["calc", "/"], 1, "velquor: /: cannot be read: Is a directory"),
            (["calc", "IPE 300", "--units", "mn"], 1, 'velquor: IPE 300: --units: unknown unit "mn"'),
            (["calc", "IPE 300", "--levels", "9"], 1, "velquor: IPE 300: --levels: 9; must be a whole number"),
            (["calc", "IPE 300", "--accuracy", "1,5"], 1, 'velquor: IPE 300: --accuracy: "1,5" is not a number'),
            (["calc", "IPE 300", "--columns", "Iyy"], 1, 'velquor: --columns: unknown value "Iyy"; did you mean'),
            (["calc", T_BEAM, "--E", "1"], 1, "--E: the section has several materials"),
            (["calc", "--shape", "i", "--h", "300"], 1, "velquor: --shape i: "),
            (["calc", "--shape", "circle", "--d", "-5"], 1, "d = -5: must be above 0"),
            (["mesh", "IPE 300", "-o", "/no/folder"], 3, "velquor: /no/folder: cannot be written"),
            (["calc", SWEEP], 1, "sweep.json: sweep: many sections, and not one; a sweep is for velquor batch"),
            (["report", "IPE 300"], 1, "velquor: --output is required; see velquor report --help"),
            (["calc", "HSS 6x4x1/4"], 1, "velquor: HSS 6x4x1/4: no such file, nor a profile; velquor profiles lists all"),
            (["calc", "L4x1/2"], 1, 'velquor: L4x1/2: no such file, nor a profile; did you mean "L4x4x1/2"?'),
            (["batch", SWEEP, "-o", "s3.csv"], 1, 'velquor: -o: "s3.csv" would be an SQLite file; give -o s3.sqlite'),
            (["draw", "IPE 300", "-o", "ipe.jpg"], 1, 'velquor: IPE 300: -o: "ipe.jpg" has an unknown ending; it must be .svg'),
            (["draw", "IPE 300", "-o", "ipe"], 1, 'velquor: IPE 300: -o: "ipe" has no ending; it must be .svg'),
            (["draw", "IPE 300", "--field", "shaer"], 1, 'velquor: IPE 300: --field: unknown field "shaer"; did you mean'),
            (["draw", "IPE 300", "--width", "5"], 1, "velquor: IPE 300: --width: 5; must be from 16 to 16000"),
            (["draw", "IPE 300", "-o", "/no/ipe.svg"], 3, "velquor: /no/ipe.svg: cannot be written"),
            (["profiles", "XYZ"], 1, 'velquor: no profile'),
        )
        for arguments, status, message in cases:
            with self.subTest(arguments):
                done = run(*arguments)
                self.assertEqual(done.returncode, status, done.stderr)
                self.assertIn(message, done.stderr)
                self.assertEqual(bool(done.stderr), bool(message))
                self.assertEqual(bool(done.stdout), status == 0)

    def test_endings_tell_the_form_and_bounds_what_limits_them(self):
        with tempfile.TemporaryDirectory() as folder:
            for ending, flag in ((".json", "--json"), (".csv", "--csv"), (".txt", "--all")):
                file = pathlib.Path(folder) / ("values" + ending)
                run("calc", "IPE 300", "-o", file, *(["--all"] if ending == ".txt" else []))
                self.assertEqual(file.read_text(encoding="utf-8"), run("calc", "IPE 300", flag).stdout)
        said = run("calc", "IPE 300", "--accuracy", "1e-6", "--levels", "2").stdout
        self.assertRegex(said, r"\(GIt\), more than the 1e-06 that was wished\n"
                               r"level 6 would have more than 300000 nodes, and is taken with --levels 6\n")
        said = run("calc", "IPE 300", "--accuracy", "1e-8", "--size", "50", "--levels", "6").stdout
        self.assertIn("\n6 levels are the most; smaller elements may help: --size tells theirs\n", said)
        square = {**SQUARE, "materials": [{"name": "steel", "E": 210000, "density": 7850}]}
        done = run("calc", "-", text=json.dumps(square))
        self.assertIn("velquor: -: warning: materials[0].density: 7850 kg/mm3 is that of no building material", done.stderr)
        self.assertEqual(done.returncode, 0)

    def test_worst_of_several_and_the_others_are_shown(self):
        done = run("calc", "IPE 300", "-", "HEB 200", text=json.dumps(WRONG))
        self.assertEqual(done.returncode, 1)
        self.assertIn('velquor: -: parts[0].shape: unknown shape "circel"; did you mean "circle"?\n', done.stderr)
        self.assertIn("IPE 300", done.stdout)
        self.assertIn("HEB 200", done.stdout)
        self.assertEqual(len(done.stdout.splitlines()), 4)

    def test_what_cannot_be_written_is_noticed(self):
        with open("/dev/full", "w") as full:
            done = subprocess.run([COMMAND, "calc", "IPE 300"], stdout=full, stderr=subprocess.PIPE, encoding="utf-8")
        self.assertEqual(done.returncode, 3)
        self.assertIn("No space left on device", done.stderr)
        self.assertEqual(run("calc", "IPE 300", "-o", "/dev/full").returncode, 3)
        reader, writer = os.pipe()
        os.close(reader)
        done = subprocess.run([COMMAND, "profiles"], stdout=writer, stderr=subprocess.PIPE, encoding="utf-8")
        os.close(writer)
        self.assertEqual((done.returncode, done.stderr), (-signal.SIGPIPE, ""))  # as velquor profiles | head

    def test_interrupt_ends_it_within_a_second(self):
        hard = {**SQUARE, "wishes": {"levels": 6, "size": 0.15}}
        heed = lambda: signal.signal(signal.SIGINT, signal.SIG_DFL)  # also where the tests run in the background
        with subprocess.Popen([COMMAND, "calc", "-"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                              preexec_fn=heed) as process:
            try:
                process.stdin.write(json.dumps(hard).encode())
                process.stdin.close()
                time.sleep(0.7)
                self.assertIsNone(process.poll(), "ended before it was interrupted")
                process.send_signal(signal.SIGINT)
                self.assertEqual(process.wait(timeout=1), -signal.SIGINT)
            finally:
                process.kill()


class Pictures(unittest.TestCase):
    def test_svg_is_well_formed_and_has_words(self):
        done = run("draw", "-", "--field", "outline", "--field", "shear:Vz", "--dark",
                   text=json.dumps({**SQUARE, "name": '<&> "Å" '}))
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        svg = xml.etree.ElementTree.fromstring(done.stdout.encode())
        space = "{http://www.w3.org/2000/svg}"
        words = [text.text for text in svg.iter(space + "text")]
        self.assertEqual((svg.get("role"), svg.find(space + "title").text), ("img", '<&> "Å" '))
        for word in ('<&> "Å" ', "y", "z", "C", "10", "Shear stress τ", "Vz = 1 N: force along z through M"):
            self.assertIn(word, words)
        named = [element.get("id") for element in svg.iter() if element.get("id")]
        self.assertEqual(len(named), len(set(named)))

    def test_without_fonts(self):
        with tempfile.TemporaryDirectory() as folder:
            settings = pathlib.Path(folder) / "fonts.conf"
            settings.write_text(f"<fontconfig><dir>{folder}</dir><cachedir>{folder}</cachedir></fontconfig>")
            done = run("draw", "IPE 300", env={**os.environ, "FONTCONFIG_FILE": str(settings)})
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("no fonts are installed, and pictures have words; install one", done.stderr)

    def test_files_of_each_form(self):
        with tempfile.TemporaryDirectory() as folder:
            name = f"{folder}/ipe"
            for ending, begin in ((".svg", b"<?xml"), (".PNG", b"\x89PNG"), (".pdf", b"%PDF")):
                done = run("draw", "IPE 300", "--field", "axial:My", "-o", name + ending)
                self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
                self.assertTrue(pathlib.Path(name + ending).read_bytes().startswith(begin))
            words = subprocess.run(["pdftotext", name + ".pdf", "-"], capture_output=True, encoding="utf-8").stdout
            for word in ("IPE 300", "Axial stress σ", "tension is positive", "My = 1 N·mm: bending about y"):
                self.assertIn(word, words)


class Forms(unittest.TestCase):
    def test_json_is_as_its_schema_and_carries_every_digit(self):
        schema = json.loads(run("schema", "--result").stdout)
        done = run("calc", "IPE 300", T_BEAM, "-", "IPE 301", "--json", text=json.dumps(SQUARE))
        result = json.loads(done.stdout)
        fits(result, schema, schema)
        self.assertEqual([s.get("name") for s in result["sections"]],
                         ["IPE 300", "T-beam of reinforced concrete", "square", None])
        self.assertEqual(result["sections"][3]["error"]["fault"], 'unknown profile "IPE 301"')
        ipe, beam, square = (s["values"] for s in result["sections"][:3])
        self.assertAlmostEqual(square["Iy"]["value"], 1e4 / 12, delta=1e-8)
        self.assertEqual(square["Mpl_y"]["reason"], "materials without strengths")
        self.assertIsNone(square["Mpl_y"]["value"])
        self.assertIsNone(beam["Wt"]["value"])
        self.assertGreater(len(str(ipe["It"]["value"])), 15)
        for broken in ({**result, "more": 1}, {"velquor": "1", "sections": [{}]}):  # the schema says no to something
            with self.assertRaises(AssertionError):
                fits(broken, schema, schema)

    def test_csv_agrees_with_json(self):
        arguments = ("calc", "IPE 300", T_BEAM, "-", "--units", "cm", "--force", "kN")
        text = json.dumps({**SQUARE, "name": 'a "square", 10 by 10'})
        rows = list(csv.DictReader(io.StringIO(run(*arguments, "--csv", text=text).stdout, newline="")))
        sections = json.loads(run(*arguments, "--json", text=text).stdout)["sections"]
        self.assertEqual(len(rows), 3)
        for row, section in zip(rows, sections):
            self.assertEqual((row["name"], row["length"]), (section["name"], "cm"))
            for key, entry in section["values"].items():
                for column, number in ((key, entry["value"]), (f"{key}_bound", entry["bound"])):
                    self.assertEqual(float(row[column]) if row[column] else None, number)

    def test_shape_is_the_profile(self):
        shape = json.loads(run("calc", "--shape", "i", "--h", "300", "--b", "150", "--tw", "7.1", "--tf", "10.7", "--r",
                               "15", "--json").stdout)["sections"][0]
        profile = json.loads(run("calc", "IPE 300", "--json").stdout)["sections"][0]
        self.assertEqual(shape["values"], profile["values"])

    def test_material_of_the_command_line_in_the_units_of_the_section(self):
        given = ["--E", "200000", "--nu", "0.25", "--density", "8000", "--strength", "300", "--json"]
        for name in ("IPE 300", "W12X26"):
            values, = json.loads(run("calc", name, *given, "--units", "mm", "--force", "N").stdout)["sections"]
            value = {key: entry["value"] for key, entry in values["values"].items()}
            for key, expected in (("Eref", 200000), ("Gref", 80000), ("mass", value["A"] * 8000e-6),
                                  ("Mpl_y", 300 * value["Wpl_y"])):
                self.assertAlmostEqual(value[key] / expected, 1, delta=1e-12)

    def test_material_of_a_file_is_kept(self):
        beam, = json.loads(run("calc", T_BEAM, "--json").stdout)["sections"]
        steel, depth = 4 * 3.1416 / 4 * 25**2 * 435, 550  # lower bars in tension, concrete of strength 17 above them
        self.assertAlmostEqual(beam["values"]["Mpl_y_neg"]["value"],
                               steel * (depth - steel / (1200 * 17) / 2), delta=0.01 * steel * depth)
        one = {**SQUARE, "materials": [{"name": "m", "E": 1, "strength": {"tension": 1, "compression": 3}}]}
        square, = json.loads(run("calc", "-", "--E", "2", "--json", text=json.dumps(one)).stdout)["sections"]
        self.assertAlmostEqual(square["values"]["Mpl_y"]["value"], 375, delta=2)  # 2 f1 f2 / (f1 + f2) b h^2 / 4

    def test_one_level_has_no_bounds(self):
        section, = json.loads(run("calc", "IPE 300", "--levels", "1", "--json").stdout)["sections"]
        self.assertEqual((section["accuracy"]["reached"], section["accuracy"]["met"]), (None, False))
        self.assertEqual((section["values"]["It"]["bound"], section["values"]["It"]["reason"]),
                         (None, "no bound from one level"))
        text = run("calc", "IPE 300", "--levels", "1").stdout
        self.assertIn("± ?", text)
        self.assertNotIn("Iu", text)  # principal axes are y and z

    def test_locale_changes_nothing(self):
        with tempfile.TemporaryDirectory() as folder:
            try:  # a decimal comma; the machine's own locales are seldom more than C
                subprocess.run(["localedef", "-i", "de_DE", "-f", "UTF-8", f"{folder}/de_DE.UTF-8"], check=True,
                               capture_output=True)
            except (OSError, subprocess.CalledProcessError):
                self.skipTest("no German locale can be made here")
            german = {**os.environ, "LOCPATH": folder, "LC_ALL": "de_DE.UTF-8"}
            for form in ([], ["--json"], ["--csv"]):
                self.assertEqual(run("calc", "IPE 300", *form).stdout, run("calc", "IPE 300", *form, env=german).stdout)
            self.assertEqual(run("calc", "--shape", "circle", "--d", "2.5", env=german).returncode, 0)

    def test_nothing_is_written_into_the_home_folder(self):
        with tempfile.TemporaryDirectory() as home:
            self.assertEqual(run("calc", "IPE 300", env={**os.environ, "HOME": home}).returncode, 0)
            self.assertEqual(os.listdir(home), [])

    def test_columns_of_the_table(self):
        self.assertEqual(run("calc", "--columns", "Iy,shape_y", "--units", "cm", "IPE 300", "UPN 200").stdout.split()[:6],
                         ["Iy", "αpl,y", "cm⁴", "IPE", "300", "8356.109"])

    def test_schema_of_sections_and_lists(self):
        self.assertEqual(json.loads(run("schema").stdout)["title"], "Cross-section of a beam")
        self.assertIn("--tw", run("shapes", "i").stdout)
        self.assertEqual(run("profiles", "heb20").stdout[:7], "HEB 200")
        self.assertIn(" h 355.6 b 368.3 ", run("profiles", "w14x90").stdout)  # of 14 and 14.5 inches

    def test_results_into_a_file(self):
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder, "values.csv")
            done = run("calc", "IPE 300", "--csv", "-o", str(file))
            self.assertEqual(done.stdout, "")
            self.assertEqual(file.read_bytes().decode(), run("calc", "IPE 300", "--csv").stdout.replace("\n", "\r\n"))
            size = file.stat().st_size
            done = run("calc", "IPE 300", "--json", "-o", str(file), preexec_fn=lambda: resource.setrlimit(
                resource.RLIMIT_FSIZE, (4096, 4096)), restore_signals=False)  # as on a full disk
            self.assertEqual((done.returncode, file.stat().st_size, os.listdir(folder)), (3, size, ["values.csv"]))


class Meshes(unittest.TestCase):
    NODES = ("0 0 0", "30 0 0", "30 10 0", "0 10 0", "30 20 0", "0 20 0")
    ELEMENTS = ("11 3 2 7 7 1 4 3 2", "12 2 2 9 9 4 3 5", "13 2 2 9 9 4 5 6")
    MATERIALS = {"units": {"length": "cm", "force": "kN"}, "mesh": {"groups": {"7": "steel", "9": {"material": "timber"}}},
                 "materials": [{"name": "steel", "E": 21000}, {"name": "timber", "E": 1100}]}

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        nodes = "\n".join(f"{k + 1} {node}" for k, node in enumerate(self.NODES))
        self.write("plate.MSH", f"$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n6\n{nodes}\n$EndNodes\n$Elements\n3\n" +
                   "\n".join(self.ELEMENTS) + "\n$EndElements\n")
        self.write("materials.json", json.dumps(self.MATERIALS))
        named = {**self.MATERIALS, "mesh": {**self.MATERIALS["mesh"], "file": "plate.MSH"}}
        self.write("section.json", json.dumps(named))

    def write(self, name, text):
        pathlib.Path(self.folder.name, name).write_text(text)

    def test_by_their_own_name_and_by_that_of_a_section(self):
        plate, materials, section = (os.path.join(self.folder.name, name)
                                     for name in ("plate.MSH", "materials.json", "section.json"))
        turned = f"velquor: {plate}: note: 1 clockwise element turned\n"
        steel = f"velquor: {plate}: note: all of S235, with lengths in mm: --materials FILE tells others\n"
        done = run("calc", plate, "--json")
        self.assertEqual((done.returncode, done.stderr), (0, steel + turned))
        schema = json.loads(run("schema", "--result").stdout)
        result = json.loads(done.stdout)
        fits(result, schema, schema)
        self.assertEqual(result["sections"][0]["notes"][1], "1 clockwise element turned")
        self.assertAlmostEqual(result["sections"][0]["values"]["EA"]["value"] / (600 * 210000), 1, delta=1e-12)
        for arguments in ([plate, "--materials", materials], [section]):  # from another folder
            done = run("calc", *arguments, "--json")
            values, = json.loads(done.stdout)["sections"]
            self.assertEqual(done.stderr, turned.replace(plate, arguments[0]))
            self.assertAlmostEqual(values["values"]["EA"]["value"] / (300 * 22100), 1, delta=1e-12)
            self.assertEqual(values["units"], {"length": "cm", "force": "kN"})
            self.assertEqual(run("check", *arguments).stdout, arguments[0] + ": nothing found\n")
            self.assertIn('2 1 "7"', run("mesh", *arguments).stdout)
        self.assertEqual(sorted(os.listdir(self.folder.name)), ["materials.json", "plate.MSH", "section.json"])

    def test_refusals(self):
        self.write("parts.json", json.dumps(SQUARE))
        self.write("more.json", json.dumps({**self.MATERIALS, "mesh": {"groups": {"7": "steel", "flang": "steel"}}}))
        for arguments, message in (
                (["calc", "no.msh"], "velquor: no.msh: cannot be read: No such file or directory"),
                (["calc", "IPE 300", "--materials", "materials.json"], "velquor: --materials: no mesh or drawing among the inputs"),
                (["check", "section.json", "--materials", "materials.json"], "velquor: --materials: no mesh or drawing among"),
                (["calc", "plate.MSH", "--materials", "parts.json"],
                 "velquor: plate.MSH: parts.json: parts: beside a file that is given; leave it out"),
                (["calc", "plate.MSH", "--materials", "more.json"],
                 'velquor: plate.MSH: mesh.groups: the mesh has no group "flang"; it can be one of "7", "9"'),
                (["calc", "plate.MSH", "--size", "3"], "velquor: plate.MSH: wishes.size: of a section that comes as a mesh")):
            with self.subTest(arguments):
                done = run(*arguments, cwd=self.folder.name)
                self.assertEqual(done.returncode, 1)
                self.assertIn(message, done.stderr)


def fits(value, schema, root):
    """Asserts that a value is as the schema has it: the keywords that the schema of results uses, and no others."""
    if "$ref" in schema:
        return fits(value, root["definitions"][schema["$ref"].split("/")[-1]], root)
    types = {"object": dict, "array": list, "string": str, "boolean": bool, "null": type(None), "integer": int,
             "number": (int, float)}
    known = {"$schema", "title", "description", "definitions", "type", "properties", "required", "items", "oneOf", "allOf",
             "additionalProperties"}
    assert set(schema) <= known, set(schema) - known
    if "type" in schema:
        wanted = schema["type"] if isinstance(schema["type"], list) else [schema["type"]]
        assert any(isinstance(value, types[name]) for name in wanted), (value, wanted)
    if isinstance(value, dict):
        assert set(schema.get("required", ())) <= set(value), schema["required"]
        properties = schema.get("properties", {})
        assert schema.get("additionalProperties", True) or set(value) <= set(properties), set(value) - set(properties)
        for key in set(value) & set(properties):
            fits(value[key], properties[key], root)
    for item in value if isinstance(value, list) else ():
        fits(item, schema.get("items", {}), root)
    for one in schema.get("allOf", ()):
        fits(value, one, root)
    if "oneOf" in schema:
        assert sum(does_fit(value, one, root) for one in schema["oneOf"]) == 1, value


def does_fit(value, schema, root):
    try:
        fits(value, schema, root)
        return True
    except AssertionError:
        return False


if __name__ == "__main__":
    unittest.main()
