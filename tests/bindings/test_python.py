"""The Python binding. The library is named by VELQUOR_LIBRARY. Values and bits: tests/abi."""
import contextlib
import copy
import itertools
import math
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import warnings
from unittest import mock

import numpy as np

BINDING = pathlib.Path(__file__).parents[2] / "bindings" / "python"
sys.path.insert(0, str(BINDING))
from velquor import core  # noqa: E402

# Two quadrilaterals and two triangles of two materials; nodes 9 and 10 are those of bars.
NODES = np.array([[0, 0], [2.1, 0], [4, 0.2], [0.1, 1], [2, 1.1], [4.2, 1], [0, 3], [2, 3.3], [1, 0.5], [1.5, 1.6]])
ELEMENTS = np.array([[1, 2, 5, 4], [2, 3, 8, 5], [4, 5, 7, 7], [5, 8, 7, 7]])
PROPS = core.property_table(4, EMOD=[200, 200, 100, 90], GMOD=[80, 80, 45, 40], GROUP=[1, 1, -2, -2], FNEG=1.2,
                               FPOS=1.5, UNITWEIGHT=[3, 3, 5, 5])
BARS = core.bar_table([9, 10], [1, 4], AREA=[0.11, 0.07], EMODUL=2000, GMODUL=[700, 600], RADIUS=0.8)


def plate(rows, columns):
    """The tables of rows x columns squares."""
    z, y = np.mgrid[0:rows + 1, 0:columns + 1]
    first = (np.arange(rows)[:, None] * (columns + 1) + np.arange(columns) + 1).ravel()
    elements = np.stack([first, first + 1, first + columns + 2, first + columns + 1], axis=-1)
    props = core.property_table(len(elements), EMOD=2.5, GMOD=1, FNEG=1, FPOS=1)
    return np.stack([y.ravel(), z.ravel()], axis=-1), elements, props


def bits(section):
    """All that a call gives, as bytes."""
    return [np.asarray(value).tobytes() for value in vars(section).values()]


@contextlib.contextmanager
def answering(status):
    """In place of the library a routine that answers `status` and does nothing; its arguments."""
    arguments = []

    def vq_velquor(*given):
        arguments.extend(given)
        given[0].value = status

    with mock.patch.object(core, "load", return_value=vq_velquor):
        yield arguments


class Tables(unittest.TestCase):
    def test_every_layout_of_the_tables_gives_the_same_bits_and_stays_as_it_is(self):
        expected = bits(core.calculate(NODES, ELEMENTS, PROPS, bars=BARS))
        spread = np.zeros((2 * len(NODES), 7))  # every second row, columns backwards
        spread[::2, 5:1:-3] = NODES
        layouts = [
            (np.asfortranarray(NODES), np.asfortranarray(ELEMENTS, np.int32), PROPS, BARS),
            (np.ascontiguousarray(NODES), ELEMENTS.astype(np.int16), np.ascontiguousarray(PROPS), BARS),
            (spread[::2, 5:1:-3], np.repeat(ELEMENTS, 2, axis=0)[::2], np.repeat(PROPS, 3, axis=1)[:, ::3],
             np.ma.array(np.repeat(BARS, 2)[::2], mask=False)),
            (NODES.astype(">f8"), ELEMENTS.astype(np.uint64), PROPS.astype(np.longdouble), BARS),
            (NODES.tolist(), ELEMENTS.tolist(), PROPS.tolist(), BARS),
        ]
        for tables in layouts:
            for table in tables:
                if isinstance(table, np.ndarray):
                    table.flags.writeable = False
            before = [np.asarray(table).tobytes() for table in tables]
            self.assertEqual(bits(core.calculate(*tables[:3], bars=tables[3])), expected)
            self.assertEqual([np.asarray(table).tobytes() for table in tables], before)

    def test_tables_in_the_library_s_own_layout_are_not_copied(self):
        nodes, elements = np.asfortranarray(NODES), np.asfortranarray(ELEMENTS, np.int32)
        with answering(0) as arguments:
            core.calculate(nodes, elements, PROPS)
        for position, table in (1, nodes), (3, elements), (5, PROPS):
            self.assertTrue(np.shares_memory(arguments[position], table))

    def test_three_columns_are_triangles(self):
        three = np.array([[1, 2, 5], [1, 5, 4], [2, 3, 8], [2, 8, 5]])
        results = [bits(core.calculate(NODES, table, PROPS)) for table in (three, three[:, [0, 1, 2, 2]])]
        self.assertEqual(*results)

    def test_what_is_no_table_raises_before_the_call(self):
        tables = {"nodes": NODES, "elements": ELEMENTS, "props": PROPS}
        far = ELEMENTS.copy()
        far[2, 1] = 11
        for message, change in [
            (r"nodes: shape \(n, 2\) expected, not \(2, 10\)", {"nodes": NODES.T}),
            (r"nodes: real numbers expected, not complex", {"nodes": NODES + 1j}),
            (r"elements: shape", {"elements": ELEMENTS[:, :2]}),
            (r"elements: integers expected, not float64", {"elements": ELEMENTS * 1.0}),
            (r"elements: 11 at index \(2, 1\), expected 1 to 10", {"elements": far}),
            (r"elements: 0 at index \(0, 0\)", {"elements": ELEMENTS - 1}),
            (r"elements: 4294967297 at", {"elements": ELEMENTS + 2**32}),  # node 1 again, were it cut to 32 bits
            (r"props: 3 rows for 4 elements", {"props": PROPS[:3]}),
            (r"props: shape", {"props": PROPS[:, :9]}),
            (r"elements: .*inhomogeneous", {"elements": [[1, 2, 5, 4], [2, 3, 8]]}),
            (r"nodes: some values are masked", {"nodes": np.ma.masked_greater(NODES, 3)}),
            (r"bars: some values are masked", {"bars": np.ma.array(BARS, mask=[True, False])}),
            (r"bars: a one-dimensional array of velquor.core.BAR", {"bars": np.zeros((2, 23))}),
            (r"bars: a one-dimensional array of velquor.core.BAR", {"bars": np.zeros(2, "V184")}),
            (r"bars: a one-dimensional array of velquor.core.BAR", {"bars": BARS.astype(core.BAR.newbyteorder(">"))}),
            (r"mode: one of \(0, 1, 11, 21\) expected, not 2", {"mode": 2}),
            (r"groups: 0, expected 1", {"groups": 0}),
            (r"groups: 4294967298, expected", {"groups": 2**32 + 2}),
            (r"levels: 7, expected 1 to 6", {"levels": 7}),
            (r"levels: 0, expected", {"levels": 0}),
            (r"place: .* with levels only", {"place": lambda a, b, t, y, z: (y, z)}),
        ]:
            with self.subTest(message), self.assertRaisesRegex(ValueError, message):
                core.calculate(**{**tables, **change})
        with self.assertRaisesRegex(ValueError, r"EMOD: one value or 4 expected, not an array of \(3,\)"):
            core.property_table(4, EMOD=[1, 2, 3], GMOD=1)
        with self.assertRaisesRegex(ValueError, r"GMOD: real numbers expected, not complex"):
            core.property_table(1, EMOD=1, GMOD=np.array([1 + 1j]))
        with self.assertRaisesRegex(ValueError, r"NODE: 4294967297 at index \(0,\)"):
            core.bar_table([2**32 + 1], [1], AREA=1, EMODUL=2, GMODUL=1)

    def test_modes_choose_the_plastic_slots(self):
        by_mode = {mode: core.calculate(NODES, ELEMENTS, PROPS, mode=mode) for mode in core.MODES}
        self.assertEqual(by_mode[core.ELASTIC].PLMOD_Z, 0)
        self.assertGreater(by_mode[core.PLASTIC_TWO].PLMOD_Z, 0)
        self.assertEqual(by_mode[core.PLASTIC_TWO].PLMOD_Z_NEG, 0)
        self.assertGreater(by_mode[core.PLASTIC].PLMOD_Z_NEG, 0)
        none = core.bar_table([], [], AREA=1, EMODUL=2, GMODUL=1)
        self.assertEqual(bits(core.calculate(NODES, ELEMENTS, PROPS, bars=none)), bits(by_mode[core.PLASTIC]))
        without_strengths = core.property_table(4, EMOD=200, GMOD=80)
        self.assertEqual(core.calculate(NODES, ELEMENTS, without_strengths).PLMOD_Z, 0)


    def test_a_middle_that_ends_the_plastic_search_is_warned_of_where_check_finds_it(self):
        nodes, elements, props = plate(8, 4)
        nodes = nodes * 25.0
        apart = np.vstack([nodes + (0, 50), [(1e3, 1e3)]])  # of a node that nothing uses nothing but the origin counts
        bar = core.bar_table([len(apart)], [1], AREA=1, EMODUL=2)
        for y, bars, mode, levels in itertools.product((-50, 0, 50), (None, bar), (core.PLASTIC, core.ELASTIC), (None, 2)):
            tables = {"nodes": apart + (y, -50), "elements": elements, "props": props, "bars": bars, "mode": mode}
            found = [finding for finding in core.check(**tables) if finding.name == "MIDDLE_AT_100"]
            with warnings.catch_warnings(record=True) as told:
                warnings.simplefilter("always")
                core.calculate(**tables, levels=levels)
            self.assertEqual([(warning.category, warning.filename) for warning in told],
                             [(core.MeshWarning, __file__)] * (len(found) if levels is None else 0))
            self.assertEqual(len(found), mode == core.PLASTIC and bars is None)
        props[:, core.COLUMNS.index("FNEG")] = 0.1
        with self.assertWarns(core.MeshWarning):
            wrong = core.calculate(nodes, elements, props)
        right = core.calculate(nodes + (0, 1), elements, props)
        self.assertGreater(wrong.PLMOM_Z, 1.5 * right.PLMOM_Z)


class Levels(unittest.TestCase):
    def test_limits_lie_within_bounds_and_sharp_corners_are_told(self):
        nodes, elements, props = plate(4, 8)
        section = core.calculate(nodes, elements, props, levels=3)
        exact = 8 * 4**3 * (1 / 3 - 64 / math.pi**5 / 2 * sum(math.tanh(n * math.pi) / n**5 for n in range(1, 20, 2)))
        self.assertLess(abs(section.GJ - exact), section.bounds.GJ)
        self.assertLess(section.bounds.GJ, 1e-3 * exact)
        self.assertEqual((section.levels, section.sharp.tolist()), (3, [False] * len(nodes)))
        coarse = core.calculate(nodes, elements, props)
        self.assertEqual((coarse.bounds, coarse.levels, coarse.sharp), (None, None, None))
        # an L of the same squares has one re-entrant corner
        kept = (nodes[elements - 1].mean(axis=1) < 2).any(axis=1)
        corner = core.calculate(nodes, elements[kept], props[kept], levels=2)
        self.assertEqual((corner.levels, nodes[corner.sharp].tolist()), (2, [[2, 2]]))

    def test_new_nodes_go_where_place_says_and_what_it_raises_comes_after_the_call(self):
        angle = np.arange(12) * math.pi / 6
        nodes = np.vstack([np.stack([np.cos(angle), np.sin(angle)], axis=-1), [[0, 0]]])
        elements = [(13, n, n % 12 + 1) for n in range(1, 13)]
        props = core.property_table(12, EMOD=1, GMOD=1)
        told = set()

        def on_circle(a, b, t, y, z):
            told.add((a, b, t))
            return np.array([y, z]) / math.hypot(y, z)

        disc = core.calculate(nodes, elements, props, levels=3, place=on_circle)
        self.assertEqual(told, {(n, n % 12 + 1, t) for n in range(1, 13) for t in (0.25, 0.5, 0.75)})
        self.assertLess(abs(disc.EA - math.pi), min(disc.bounds.EA, 1e-3))
        self.assertLess(abs(disc.GJ - math.pi / 2), min(disc.bounds.GJ, 1e-2))
        for wrong, failure in (lambda *_: 1 / 0, ZeroDivisionError), (lambda *_: None, TypeError):
            with self.assertRaises(failure):
                core.calculate(nodes, elements, props, levels=2, place=wrong)
        with self.assertRaisesRegex(core.Refused, "^status 1: level 2: the refined mesh was refused: .* place"):
            core.calculate(nodes, elements, props, levels=2, place=lambda *_: (math.nan, 0))


class Failures(unittest.TestCase):
    def test_a_slot_that_is_not_there_is_told_with_the_one_that_is_near(self):
        section = core.calculate(NODES, ELEMENTS, PROPS)
        for name, near in ("PLMOM_ZZ", "PLMOM_Z"), ("warpin", "warping"), ("gj", "GJ"):
            with self.assertRaisesRegex(AttributeError, f"no slot '{name}'; did you mean '{near}'"):
                getattr(section, name)
        self.assertEqual(bits(copy.deepcopy(section)), bits(section))

    def failure(self, *tables, **others):
        with self.assertRaises(core.Error) as caught:
            core.calculate(*tables, **others)
        self.assertIn(f"status {caught.exception.status}: ", str(caught.exception))
        return type(caught.exception), caught.exception.status

    def test_each_status_has_its_exception(self):
        self.assertEqual(self.failure(NODES, ELEMENTS[:, ::-1], PROPS), (core.Refused, 1))  # clockwise
        self.assertEqual(self.failure(NODES, ELEMENTS, PROPS * np.nan), (core.Refused, 1))
        self.assertEqual(self.failure(NODES, ELEMENTS, PROPS, groups=1), (core.Refused, 1))
        flat = np.array([[0, 0], [1, 0], [1, 1], [2, 2]])  # beside a triangle one without area
        self.assertEqual(self.failure(flat, [[1, 2, 3], [1, 3, 4]], PROPS[:2]), (core.NotSolved, 2))
        with answering(3):
            self.assertEqual(self.failure(NODES, ELEMENTS, PROPS), (core.OutOfMemory, 3))

    def test_a_refusal_tells_table_row_and_reason_of_the_first_errors(self):
        turned = ELEMENTS.copy()
        turned[1] = turned[1, ::-1]
        for levels in None, 2:
            with self.assertRaisesRegex(core.Refused, "^status 1: ELEMENTS, row 2: is clockwise[^;]*$") as caught:
                core.calculate(NODES, turned, PROPS, levels=levels)
        self.assertEqual(caught.exception.findings, core.check(NODES, turned, PROPS))
        with self.assertRaisesRegex(core.Refused, "^status 1: (PROPS, row [1-3]: [^;]*; ){3}and 147 more$"):
            core.calculate(*(table if table.shape[-1] != 10 else table * (1, 1, 1, 1, 9, 1, 1, 1, 1, 1)
                                for table in plate(10, 15)), groups=1)

    def test_check_tells_errors_and_warnings_and_takes_any_node_number(self):
        far = ELEMENTS.copy()
        far[[0, 3], 1] = -2**31, 11
        self.assertEqual([(found.table, found.row, found.name, found.is_error) for found in
                          core.check(NODES, far, PROPS, bars=np.repeat(BARS, 2)[::2])],
                         [("ELEMENTS", 1, "NODE_OUTSIDE", True), ("ELEMENTS", 4, "NODE_OUTSIDE", True)])
        nodes, elements, props = plate(4, 8)
        props[5:, core.COLUMNS.index("COUPLING")] = 0
        self.assertEqual([(str(found)[:29], found.name, found.is_error) for found in core.check(nodes, elements, props)],
                         [("PROPS, row 6: has a COUPLING ", "COUPLING_ZERO", False),
                          ("PROPS, row 6: has another COU", "COUPLING_UNLIKE", False)])

    def test_the_first_refusal_is_found_behind_warnings_and_told_as_calculate_tells_it(self):
        nodes, elements, props = plate(4, 8)
        self.assertIsNone(core.find_refusal(nodes, elements, props))
        props[5, core.COLUMNS.index("COUPLING")] = 0  # a warning alone
        self.assertIsNone(core.find_refusal(nodes, elements, props))
        props[[7, 9], core.COLUMNS.index("EMOD")] = np.nan
        found = core.find_refusal(nodes, elements, props)
        self.assertEqual((found.table, found.row, found.name, found.is_error), ("PROPS", 8, "NOT_FINITE", True))
        with self.assertRaisesRegex(core.Refused, f"^status 1: {found}; PROPS, row 10"):
            core.calculate(nodes, elements, props)

    def test_without_the_second_library_the_first_does_its_own(self):
        with tempfile.TemporaryDirectory() as folder:
            alone = shutil.copy(os.environ["VELQUOR_LIBRARY"], os.path.join(folder, "libvelquor.so.1"))
            self.assertEqual(core.calculate(NODES, ELEMENTS, PROPS, library=alone).levels, None)
            with self.assertRaisesRegex(core.Refused, "status 1: the tables or the mesh were refused"):
                core.calculate(NODES, ELEMENTS[:, ::-1], PROPS, library=alone)
            for call, others in (core.calculate, {"levels": 2}), (core.check, {}):
                with self.assertRaisesRegex(OSError, f"no library {folder}/libvelquor-levels.so.1 .*install libvelquor1"):
                    call(NODES, ELEMENTS, PROPS, library=alone, **others)

    def test_a_missing_library_is_named_with_the_way_to_give_it(self):
        for name in "/missing/libvelquor.so.1", "libm.so.6":  # the latter is there, but without the routine
            with self.assertRaisesRegex(OSError, f"no library {name} .*VELQUOR_LIBRARY"):
                core.calculate(NODES, ELEMENTS, PROPS, library=name)
            with mock.patch.dict(os.environ, VELQUOR_LIBRARY=name), self.assertRaisesRegex(OSError, name):
                core.calculate(NODES, ELEMENTS, PROPS)


class Pieces(unittest.TestCase):
    def test_are_numbered_in_the_order_of_the_rows(self):
        apart = np.vstack([ELEMENTS + 8, ELEMENTS[:, [0, 1, 2, 2]], ELEMENTS + 16])  # of three copies, one in triangles
        pieces = core.find_pieces(np.zeros((24, 2)), apart)
        self.assertEqual(pieces.tolist(), [1] * 4 + [2] * 4 + [3] * 4)
        self.assertEqual(core.find_pieces(np.zeros((24, 2)), apart[[0, 4, 9, 1, 5, 8], :3]).tolist(), [1, 2, 3, 1, 2, 3])
        self.assertEqual(core.find_pieces(NODES, np.zeros((0, 4), int)).tolist(), [])
        with self.assertRaisesRegex(ValueError, r"elements: 13 at index \(0, 2\), expected 1 to 10"):
            core.find_pieces(NODES, apart)

    def test_of_a_long_strip_in_any_order_and_of_a_random_graph(self):
        order = np.random.default_rng(1).permutation(100_000)  # neighbours anywhere: a walk along them is 100,000 long
        strip = np.stack([order, order + 1, order + 100_004, order + 100_003], axis=-1)[order % 1000 != 0] + 1
        start = time.process_time()
        pieces = core.find_pieces(np.zeros((200_010, 2)), strip)
        self.assertLess(time.process_time() - start, 5)  # well under a second; a walk takes minutes
        self.assertEqual(len(np.unique(pieces)), 100)
        along = (strip[:, 0] - 1) // 1000
        self.assertEqual(len(np.unique(pieces * 100 + along)), 100)
        self.assertEqual(np.unique(pieces, return_index=True)[1].tolist(),
                         sorted(np.unique(along, return_index=True)[1].tolist()))

        corners = np.random.default_rng(2).integers(1, 1500, (400, 3))
        reached = {}  # of each node the elements that were joined to it
        for e, element in enumerate(corners.tolist()):
            joined = {e}.union(*(reached.get(n, ()) for n in element))
            for n in {m for k in joined for m in corners[k].tolist()}:
                reached[n] = joined
        pieces = core.find_pieces(np.zeros((1500, 2)), corners)
        for e in range(400):
            self.assertEqual(np.flatnonzero(pieces == pieces[e]).tolist(), sorted(reached[corners[e, 0]]))


class Threads(unittest.TestCase):
    def test_other_threads_run_during_a_call(self):
        tables = plate(500, 600)
        span = []

        def call():
            span.append(time.monotonic())
            core.calculate(*tables)
            span.append(time.monotonic())

        caller = threading.Thread(target=call)
        caller.start()
        ticks = []
        while caller.is_alive():
            ticks.append(time.monotonic())
            time.sleep(0.001)
        caller.join()
        # Were the lock held, ticks would stand before and after the call alone. A busy machine may lose some, not all.
        start, end = span
        self.assertTrue([tick for tick in ticks if 0.4 < (tick - start) / (end - start) < 0.9], f"{end - start:.2f} s")


class Example(unittest.TestCase):
    def test_prints_the_values_of_its_channel(self):
        run = subprocess.run([sys.executable, "-B", BINDING / "example.py"], capture_output=True, text=True)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        value = {name: float(number) for name, number in re.findall(r"^(\S+) +(-?[\d.e+]+) ", run.stdout, re.MULTILINE)}
        b, h, t = 80.0, 200.0, 10.0
        iy = (b * h**3 - (b - t) * (h - 2 * t)**3) / 12
        area = 2 * b * t + (h - 2 * t) * t
        self.assertIn("at Z 100", run.stdout)
        c, d = b - t / 2, h - t  # thin walls by their centre lines
        for name, expected, tolerance in [
            ("A", area, 1e-4), ("YC", (2 * b * t * b / 2 + (h - 2 * t) * t * t / 2) / area, 1e-4), ("Iy", iy, 1e-4),
            ("Wpl,y", (b * h**2 - (b - t) * (h - 2 * t)**2) / 4, 1e-4), ("mass", area * 7.85e-3, 1e-4),
            ("sigma", 10e6 * h / 2 / iy, 1e-4), ("SCY", t / 2 - 3 * c**2 / (6 * c + d), 0.03),
            ("It", (2 * c + d) * t**3 / 3, 0.03), ("Iw", t * c**3 * d**2 / 12 * (3 * c + 2 * d) / (6 * c + d), 0.03),
        ]:
            self.assertTrue(math.isclose(value[name], expected, rel_tol=tolerance), (name, value[name], expected))


if __name__ == "__main__":
    unittest.main()
