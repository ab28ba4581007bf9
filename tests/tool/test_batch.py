"""Many sections at once: VELQUOR_COMMAND names the program. VELQUOR_BATCH_LINES lines of the input with faults, 20,000."""
import csv
import fcntl
import json
import os
import pathlib
import pty
import random
import re
import resource
import signal
import sqlite3
import struct
import subprocess
import tempfile
import termios
import time
import unittest

COMMAND = os.environ["VELQUOR_COMMAND"]
LINES = int(os.environ.get("VELQUOR_BATCH_LINES", "20000"))
STEEL = [{"name": "steel", "E": 210000, "density": 7.85e-6, "strength": 235}]


def circle(d, **more):
    return {"section": {"materials": STEEL, "parts": [{"shape": "circle", "parameters": {"d": d}}]}, **more}


PLATE = {"materials": STEEL, "parts": [{"shape": "rectangle", "parameters": {"b": 10, "h": 20}}], "name": "plate"}
TWO = {"materials": STEEL, "parts": [{"shape": "rectangle", "parameters": {"b": 10, "h": 20}},
                                     {"shape": "rectangle", "parameters": {"b": 20, "h": 10}, "at": [0, 15]}]}


class Folder(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        self.results = self.folder / "results.sqlite"

    def lines(self, *lines, name="in.jsonl"):
        path = self.folder / name
        path.write_bytes(b"".join((l if isinstance(l, bytes) else (l if isinstance(l, str) else json.dumps(l)).encode())
                                  + b"\n" for l in lines))
        return path

    def arguments(self, *arguments):
        return [COMMAND, *map(str, arguments)]

    def run_it(self, *arguments, **more):
        return subprocess.run(self.arguments(*arguments), capture_output=True, encoding="utf-8", timeout=100,
                              cwd=self.folder, **{"input": "", **more})

    def batch(self, *inputs, status=0, options=(), **more):
        done = self.run_it("batch", *inputs, "-o", self.results, *options, **more)
        self.assertEqual(done.returncode, status, done.stderr)
        return done.stderr

    def start(self, *inputs, options=()):
        heed = lambda: signal.signal(signal.SIGINT, signal.SIG_DFL)  # also where the tests run in the background
        return subprocess.Popen(self.arguments("batch", *inputs, "-o", self.results, *options), stderr=subprocess.PIPE,
                                encoding="utf-8", cwd=self.folder, preexec_fn=heed)

    def rows(self, query):
        with sqlite3.connect(self.results) as database:
            return database.execute(query).fetchall()

    def wait_for(self, count):
        """Until so many are kept."""
        end = time.monotonic() + 30
        while time.monotonic() < end:
            try:
                if self.results.exists() and self.rows("SELECT count(*) FROM results")[0][0] >= count:
                    return
            except sqlite3.OperationalError:  # still without tables
                pass
            time.sleep(0.005)
        self.fail("nothing is kept")


class Results(Folder):
    def test_are_those_of_calc(self):
        section = json.loads((pathlib.Path(__file__).parents[2] / "examples/sections/t_beam.json").read_text())
        section["loads"] = [{"name": "field", "My": "250 kNm", "Vz": 1e5}]
        (self.folder / "t.json").write_text(json.dumps(section, indent=2))
        self.batch(self.lines({"id": 7, "name": "IPE 300"}, {"id": "t", "section": section}, section))
        for row, name in ((0, "IPE 300"), (1, "t.json"), (2, "t.json")):
            wanted, = json.loads(self.run_it("calc", name, "--json").stdout)["sections"]
            with sqlite3.connect(self.results) as database:
                database.row_factory = sqlite3.Row
                got = database.execute("SELECT * FROM sections").fetchall()[row]
            for key, value in wanted["values"].items():
                self.assertEqual((got[key], got[key + "_bound"]), (value["value"], value["bound"]), key)
            self.run_it("export", self.results, "-o", "out.jsonl")
            answer = json.loads((self.folder / "out.jsonl").read_text().splitlines()[row])
            for key in ("name", "units", "reference", "accuracy", "values", "materials"):
                self.assertEqual(answer[key], wanted[key], key)
            for load in wanted.get("loads", ()):
                load.pop("nodes")
            self.assertEqual(answer.get("loads"), wanted.get("loads"))
        self.assertEqual(self.rows("SELECT count(*) FROM results"), [(2,)])  # the third has the second's content
        self.assertEqual(self.rows("SELECT id FROM inputs ORDER BY line"), [(7,), ("t",), (None,)])

    def test_equal_content_is_calculated_once(self):
        same = [circle(10), circle(10.0), circle(10, id=3), {**circle(10)["section"], "name": "round"}]
        unlike = [circle(11), circle(10, levels=2), circle(10, values=["A"]), circle(10, units={"length": "cm"})]
        said = self.batch(self.lines(*same, *unlike))
        self.assertIn("8 sections in", said)
        self.assertIn("5 calculated, 3 the same as others", said)
        self.assertIn("0 calculated, 8 there before", self.batch(self.folder / "in.jsonl"))
        self.lines(circle(10), circle(12))
        self.assertIn("1 calculated, 1 there before", self.batch(self.folder / "in.jsonl"))
        self.assertEqual(self.rows("SELECT line FROM inputs"), [(1,), (2,)])  # what was edited away is gone

    def test_what_is_wrong_beside_the_content_does_not_pass_on(self):
        section = circle(10)["section"]
        part = section["parts"][0]
        wrong = [circle(10, id=[1]), circle(10, id="x" * 1001), {"section": {**section, "name": 5}},
                 {"section": {**section, "parts": [{**part, "": 1}]}}]
        said = self.batch(self.lines(*wrong, circle(10, id=2**64 - 1)), status=1)
        self.assertIn("5 calculated\n", said)
        self.assertEqual(self.rows("SELECT line FROM sections WHERE error_kind IS NULL"), [(5,)])
        for form in ("jsonl", "csv"):  # an id that SQLite has no number for
            self.run_it("export", self.results, "-o", f"out.{form}")
            self.assertIn(str(2**64 - 1), (self.folder / f"out.{form}").read_text().splitlines()[5 - (form == "jsonl")])

    def test_files_that_sections_name_are_of_their_content(self):
        drawing = pathlib.Path(__file__).parents[2] / "examples/sections"
        section = json.loads((drawing / "encased.json").read_text())
        for name in ("a", "b"):
            (self.folder / name).mkdir()
            (self.folder / name / "encased.dxf").write_bytes((drawing / "encased.dxf").read_bytes())
            self.lines(section, name=f"{name}/in.jsonl")
        said = self.batch("a/in.jsonl", "b/in.jsonl")
        self.assertIn("1 calculated, 1 ", said)
        (self.folder / "b/encased.dxf").write_bytes((drawing / "encased.dxf").read_bytes() + b"\n")
        self.assertIn("1 calculated, 1 there before", self.batch("a/in.jsonl", "b/in.jsonl"))
        (self.folder / "b/encased.dxf").unlink()
        self.batch("b/in.jsonl", status=1)

    def test_lines_that_are_no_requests(self):
        wrong = ["[1, 2]", "{\"id\": 1, \"section\"", b"{\"id\": \"\xff\"}", '{"name": "IPE 300", "accuracy": 1e999}',
                 "[" * 10000, {"name": "IPE 301"}, "x" * (2**24 + 1), {"sweep": {"h": [1]}, "section": {"materials": []}}]
        self.lines({"name": "IPE 300"}, *wrong)
        with open(self.folder / "in.jsonl", "ab") as file:
            file.write(b'{"id": 3, "name": "IP')  # as a program leaves it that was killed
        said = self.batch(self.folder / "in.jsonl", status=1)
        self.assertIn("without values: 1 refused, 8 not understood\n", said)
        told = [line.split("in.jsonl:", 1)[1] for line in said.splitlines() if "in.jsonl:" in line]
        self.assertEqual([line.split(": ")[0] for line in told], ["2", "3", "4"])
        self.assertIn("2: a list is given; it must be an object in braces", told)
        rows = self.rows("SELECT line, error_kind, error_message FROM sections")
        self.assertEqual([line for line, *_ in rows], list(range(1, 11)))
        self.assertEqual([kind for _, kind, _ in rows], [None] + 5 * ["request"] + ["refused"] + 3 * ["request"])
        self.assertTrue(all(message for _, kind, message in rows if kind))

    def test_of_many_lines_one_in_a_hundred_wrong(self):
        good = [json.dumps(circle(10 + k)) for k in range(10)]
        bad = ["{", b'{"id":"\xff"}'.decode("latin1"), '{"name":1e999}', "[" * 300, '{"name":"IPE 301"}']
        with open(self.folder / "in.jsonl", "w", encoding="latin1") as file:
            for k in range(LINES):
                file.write((bad[k // 100 % 5] if k % 100 == 99 else good[k % 10]) + "\n")
        start = time.monotonic()
        said = self.batch(self.folder / "in.jsonl", status=1)
        print(f"{LINES} lines in {time.monotonic() - start:.1f} s", flush=True)
        self.assertIn(f"{LINES:,} sections in", said)
        self.assertIn("15 calculated", said)
        self.assertEqual(self.rows("SELECT error_kind, count(*) FROM inputs LEFT JOIN (SELECT key, kind AS error_kind "
                                   "FROM errors) USING (key) GROUP BY 1"),
                         [(None, LINES - LINES // 100), ("refused", LINES // 500), ("request", LINES * 4 // 500)])


class Sweeps(Folder):
    def test_product_with_the_last_name_fastest(self):
        sweep = {**PLATE, "id": "p", "sweep": {"h": [20, 30], "b": {"from": 5, "to": 6, "steps": 3},
                                               "materials[0].E": [210000]}}
        (self.folder / "s.json").write_text(json.dumps(sweep, indent=1))
        self.batch("s.json")
        rows = self.rows("SELECT id, name, parameters, A FROM sections")
        self.assertEqual([(json.loads(p)["h"], json.loads(p)["b"]) for _, _, p, _ in rows],
                         [(20, 5), (20, 5.5), (20, 6), (30, 5), (30, 5.5), (30, 6)])
        self.assertEqual(rows[1][:2], ("p h=20 b=5.5 materials[0].E=210000", "plate h 20 b 5.5 materials[0].E 210000"))
        for _, _, parameters, area in rows:
            p = json.loads(parameters)
            self.assertAlmostEqual(area, p["h"] * p["b"], 6)

    def test_places(self):
        for request, names, count in (
                ({"section": TWO}, {"parts[0].h": [20, 30], "parts[1].parameters.b": [5]}, 2),
                ({"section": TWO}, {"parts[1].at[1]": [15, 16], "parts[0].turn": [0]}, 2),
                ({"section": {**PLATE, "parts": [{}]}}, {"parts[0].profile": ["IPE 300", "HEB 200"]}, 2),
                ({}, {"name": ["IPE 300", "IPE 330"], "levels": [2, 3]}, 4),
                ({"section": PLATE}, {"wishes.size": [2, 3], "size": [1]}, 2),
                ({"shape": "i", "parameters": {"h": 300, "b": 150, "tw": 7, "tf": 10}}, {"tw": [7, 8]}, 2)):
            with self.subTest(names):
                self.lines({**request, "sweep": names})
                self.assertIn(f"{count} sections in", self.batch("in.jsonl"))

    def test_what_is_wrong_is_refused_before_anything_starts(self):
        for request, names, message in (
                (PLATE, {"hh": [1]}, 'sweep.hh: unknown name "hh"; it can be one of "h", "b", "r", "accuracy"'),
                (TWO, {"h": [1]}, "sweep.h: 2 parts have it; parts[0].h or parts[1].h"),
                (TWO, {"parts[2].h": [1]}, "parts has 2 entries"),
                (TWO, {"parts[0].hight": [1]}, 'unknown name "hight"'),
                (TWO, {"parts[0].trun": [1]}, 'did you mean "turn"?'),
                (TWO, {"parts[1].at": [1]}, "parts[1].at is no single value; name one of those in it, as parts[1].at[0]"),
                (PLATE, {"h": []}, "sweep.h: the list is empty"),
                (PLATE, {"h": [[1]]}, "sweep.h[0]: is no single value"),
                (PLATE, {"h": 5}, "sweep.h: is neither a list nor an object"),
                (PLATE, {"h": {"from": 1, "to": 2}}, 'sweep.h: key "steps" is missing'),
                (PLATE, {"h": {"from": 1, "to": 2, "steps": 1}}, "sweep.h.steps: 1; must be a whole number from 2"),
                (PLATE, {"h": {"from": 1, "to": 1, "steps": 3}}, "sweep.h: from and to are the same"),
                (PLATE, {"h": {"from": 1, "to": 2, "step": 3}}, 'unknown key "step"; did you mean "steps"?'),
                (PLATE, {"h": [1], "parts[0].h": [1]}, "sweep.parts[0].h: is the same as sweep.h"),
                ({"section": []}, {"levels": [1]}, "section: is no object"),
                ({"shape": "circle", "parameters": 5}, {"d": [1]}, "parameters: is no object"),
                ({**PLATE, "parts": [{"shape": "circle", "parameters": 5}]}, {"d": [1]}, "parts[0].parameters is no object"),
                ({**PLATE, "parts": [{"holes": [{}]}]}, {"parts[0].holes[0]": [1]}, "holes[0] is no single value"),
                (PLATE, {k: {"from": 1, "to": 2, "steps": 10**12} for k in "hb"}, "sweep: more than 9223372036854775807"),
                ({}, {"levels": [1]}, "section: is missing")):
            with self.subTest(names):
                (self.folder / "s.json").write_text(json.dumps({**request, "sweep": names}, indent=1))
                self.assertIn(message, self.batch("s.json", status=1))
                self.assertFalse(self.results.exists())


class Export(Folder):
    def test_both_forms_with_all_inputs_in_their_order(self):
        self.lines({"id": 1, "name": "IPE 301, or so"}, {**PLATE, "sweep": {"h": [30, 20], "material": [1]}},
                   {**PLATE, "sweep": {"h": [30, 20]}}, {"id": "c", "section": PLATE, "values": ["A"]})
        self.batch("in.jsonl", status=1)
        for form in ("csv", "jsonl"):
            done = self.run_it("export", self.results, "-o", f"out.{form}")
            self.assertEqual((done.returncode, done.stderr, done.stdout), (0, "", ""))
        with open(self.folder / "out.csv", newline="", encoding="utf-8") as file:
            rows = list(csv.DictReader(file))
        answers = [json.loads(line) for line in (self.folder / "out.jsonl").read_text().splitlines()]
        self.assertEqual([row["line"] for row in rows], ["1", "2", "3", "3", "4"])
        self.assertEqual([row["h"] for row in rows], ["", "", "30", "20", ""])
        self.assertEqual(rows[0]["error_message"], 'unknown profile "IPE 301, or so"')
        self.assertEqual(answers[0]["error"]["message"], rows[0]["error_message"])
        self.assertEqual(float(rows[2]["A"]), answers[2]["values"]["A"]["value"])
        self.assertEqual(list(answers[4]["values"]), ["A"])
        self.assertEqual((rows[4]["Iy"], rows[4]["id"], rows[4]["length"]), ("", "c", "mm"))

    def test_what_it_does_not_do(self):
        self.batch(self.lines({"name": "IPE 300"}))
        self.results = self.results.rename(self.folder / "results.csv")
        for arguments, message in ((["-o", "a.vtu"], "it must be .csv or .jsonl"),
                                   (["-o", "./results.csv"], "is the file of results itself"),
                                   (["-o", "a.csv", "--fine"], "results of a batch have values alone")):
            done = self.run_it("export", self.results, *arguments)
            self.assertEqual(done.returncode, 1)
            self.assertIn(message, done.stderr)
        with sqlite3.connect(self.folder / "other.sqlite") as other:
            other.execute("CREATE TABLE t (x)")
        self.assertIn("is a database, but none of results", self.run_it("export", "other.sqlite", "-o", "a.csv").stderr)
        with sqlite3.connect(self.folder / "void.sqlite") as void:
            void.executescript("CREATE TABLE t (x); DROP TABLE t")
        self.assertIn("has no results yet", self.run_it("export", "void.sqlite", "-o", "a.csv").stderr)


class Faults(Folder):
    def many(self, count):
        return self.lines(*(circle(10 + k / 8, id=k, levels=1) for k in range(count)))

    def complete(self, count):
        self.assertEqual(self.rows("SELECT count(*), count(DISTINCT i.key) FROM inputs i JOIN results USING (key)"),
                         [(count, count)])
        self.assertEqual(self.rows("SELECT count(*) FROM errors"), [(0,)])

    def test_killed_at_any_moment(self):
        count, chance = 200, random.Random(1)
        self.many(count)
        for kept in sorted(chance.sample(range(1, 150), 4)):
            with self.start("in.jsonl") as running:
                self.wait_for(kept)
                running.kill()
                running.communicate()
        before = self.rows("SELECT count(*) FROM results")[0][0]
        said = self.batch("in.jsonl")
        self.assertIn(f"{count - before} calculated, {before} there before", said)
        self.complete(count)

    def test_interrupted(self):
        self.many(300)
        for number in (signal.SIGINT, signal.SIGTERM):
            before = self.rows("SELECT count(*) FROM results")[0][0] if self.results.exists() else 0
            with self.start("in.jsonl") as running:
                self.wait_for(before + 5)
                running.send_signal(number)
                _, said = running.communicate(timeout=20)
            self.assertEqual(running.returncode, 130)
            self.assertRegex(said, r"stopped at \d+: run the same command to go on")
        asked = self.rows("SELECT count(*) FROM inputs WHERE key NOT IN (SELECT key FROM results)")
        self.assertEqual(asked, [(0,)])  # what was given out was finished
        self.batch("in.jsonl")
        self.complete(300)

    def test_two_side_by_side(self):
        self.many(200)
        running = [self.start("in.jsonl", options=["--jobs", "1"]) for _ in range(2)]
        said = [one.communicate(timeout=60)[1] for one in running]
        self.assertEqual([one.returncode for one in running], [0, 0], said)
        self.assertEqual(sum(int(re.search(r"(\d+) calculated", text)[1]) for text in said), 200)
        self.complete(200)

    def test_locked(self):
        self.many(30)
        self.batch("in.jsonl")
        self.lines({"name": "IPE 300"})
        with sqlite3.connect(self.results, isolation_level=None) as other:
            other.execute("BEGIN EXCLUSIVE")
            said = self.batch("in.jsonl", status=3, options=["--wait", "3"])
            self.assertEqual(said.count("another program has locked it; waiting up to 3 s"), 1)
            self.assertIn("close what has it open, and run the same command again", said)
            with self.start("in.jsonl") as running:
                time.sleep(0.5)
                other.execute("COMMIT")
                running.communicate(timeout=20)
            self.assertEqual(running.returncode, 0)

    def test_disk_full(self):
        self.many(500)
        small = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (800000, 800000))
        said = self.batch("in.jsonl", status=3, preexec_fn=small)
        self.assertIn("run the same command again", said)
        kept = int(re.search(r"stopped: (\d+) calculated and kept, nothing of it is lost", said)[1])
        self.assertGreater(kept, 20)
        self.assertEqual(self.rows("SELECT count(*) FROM results"), [(kept,)])
        self.assertIn(f"{500 - kept} calculated, {kept} there before", self.batch("in.jsonl"))
        self.complete(500)

    def test_files_that_are_no_results_or_damaged(self):
        self.many(100)
        self.results.write_text("a text of somebody, which is to stay")
        self.assertIn("is there and is no file of results", self.batch("in.jsonl", status=1))
        self.assertTrue(self.results.read_text().startswith("a text"))
        self.results.unlink()
        self.batch("in.jsonl")
        whole = self.results.read_bytes()
        other = self.lines({"name": "IPE 300"}, name="other.jsonl")
        late = len(whole) // 4096 * 3 // 4 * 4096  # a page that no run would look at
        for damaged in (whole[:len(whole) // 2], whole[:20], whole[:8192] + bytes(8192) + whole[16384:],
                        whole[:late] + b"\x0d" * 4096 + whole[late + 4096:]):
            self.results.write_bytes(damaged)
            said = self.batch(other, status=1)
            self.assertIn("is damaged", said)
            self.assertIn(".recover", said)
            self.assertEqual(self.results.read_bytes(), damaged)
        self.results.write_bytes(whole)
        with sqlite3.connect(self.results) as database:
            database.execute("PRAGMA user_version = 99")
        self.assertIn("was written in format 99", self.batch("in.jsonl", status=1))

    def test_wrong_uses(self):
        self.many(3)
        self.batch("in.jsonl")
        for arguments, message in ((["in.jsonl"], "--output is required"),
                                   (["no.jsonl", "-o", "r"], "no.jsonl: cannot be read: No such file"),
                                   (["in.jsonl", "./in.jsonl", "-o", "r"], "./in.jsonl: is given twice"),
                                   (["results.sqlite", "-o", "r"], "results.sqlite: is a database, and no input"),
                                   (["in.jsonl", "-o", "no/r"], "no/r: cannot be opened"),
                                   (["in.jsonl", "-o", "r", "--timeout", "0"], "--timeout: 0; must be above 0"),
                                   (["in.jsonl", "-o", "r", "--memory", "1"], "--memory: 1; must be from 64")):
            done = self.run_it("batch", *arguments)
            self.assertNotEqual(done.returncode, 0)
            self.assertIn(message, done.stderr)
        self.assertFalse((self.folder / "r").exists())
        (self.folder / "link").symlink_to("real")
        self.assertEqual(self.run_it("batch", "-", "-o", "link", input='{"name": "IPE 300"}').returncode, 0)
        self.assertTrue((self.folder / "link").is_symlink() and (self.folder / "real").exists())

    def test_too_long_is_an_error_that_is_tried_again(self):
        self.lines({"id": 1, **circle(10, levels=1)}, {"id": 2, **circle(10, levels=6, size=0.06)})
        self.assertIn("without values: 1 out of time", self.batch("in.jsonl", status=2, options=["--timeout", "1.5"]))
        self.assertIn("0 calculated, 2 there before", self.batch("in.jsonl", status=2))
        self.assertIn("1 calculated, 1 there before",
                      self.batch("in.jsonl", status=2, options=["--retry", "--timeout", "1.5"]))


class Progress(Folder):
    def shown(self, columns):
        self.lines(*(circle(10 + k / 8) for k in range(150)), *(["x"] * 3))
        master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        with subprocess.Popen(self.arguments("batch", "in.jsonl", "-o", self.results), stderr=slave, cwd=self.folder):
            os.close(slave)
            text = self.rest_of(master)
        os.close(master)
        return text.decode()

    def rest_of(self, master):
        text = b""
        try:
            while block := os.read(master, 65536):
                text += block
        except OSError:  # the end of a terminal
            pass
        return text

    def test_on_a_terminal(self):
        for columns in (80, 40):
            self.results.unlink(missing_ok=True)
            drawn = re.findall(r"\r\x1b\[K([^\r\n]+)", self.shown(columns))
            lines = [line for line in drawn if "%" in line]
            self.assertTrue(lines)
            self.assertTrue(all(len(line) < columns for line in lines), lines)
            self.assertTrue(all(re.search(r"\d+\.\d %  \d+  .*left", line) for line in lines), lines)
            self.assertEqual(any("#" in line for line in lines), columns == 80)

    def test_of_a_file_that_grows(self):
        self.lines(circle(10, levels=5, size=0.2), *(circle(10 + k) for k in range(1, 50)))
        master, slave = pty.openpty()
        with open(self.folder / "in.jsonl", "a", encoding="utf-8") as file, subprocess.Popen(
                self.arguments("batch", "in.jsonl", "-o", self.results, "--jobs", 1), stderr=slave, cwd=self.folder):
            os.close(slave)
            text = os.read(master, 65536)  # it has begun, and is at the first
            file.writelines(json.dumps(circle(10 + k)) + "\n" for k in range(50, 200))
            file.flush()
            text += self.rest_of(master)
        os.close(master)
        self.assertIn(b"200 sections in", text)
        self.assertTrue(all(float(share) <= 100 for share in re.findall(rb"([\d.]+) %", text)), text)
        self.assertNotIn(b":-", text)

    def test_without_one_and_quiet(self):
        self.lines({"name": "IPE 300"})
        self.assertNotIn("\x1b", self.batch("in.jsonl"))
        self.assertEqual(self.batch("in.jsonl", options=["--quiet"]), "")


if __name__ == "__main__":
    unittest.main()
