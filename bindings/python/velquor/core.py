"""The library on meshes: numpy tables in, a record of named values and arrays out.

    from velquor import core

    props = core.property_table(len(elements), EMOD=210e3, GMOD=81e3, FNEG=235, FPOS=235)
    section = core.calculate(nodes, elements, props)
    print(section.EA, section.GJ, section.TAUY[e, p, 0])

    section = core.calculate(nodes, elements, props, levels=3)  # the mesh, and twice every element in four
    print(section.GJ, section.bounds.GJ)
    for finding in core.check(nodes, elements, props):
        print(finding)  # ELEMENTS, row 5: is clockwise

Names are those of the C headers, velquor.h and velquor_levels.h, which tell everything about each value. Nodes, elements
and groups count from 1 as in C; rows, corners and load cases of numpy arrays from 0.

The library is found by the argument `library`, else by the environment variable VELQUOR_LIBRARY, else beside this
package's installation, else by the system's loader; the second one, which levels and check need, beside it. They run
without the interpreter's lock, so that calls in several threads run side by side; the tables of a call must stay as they
are until it returns.
"""
import collections
import contextlib
import ctypes
import functools
import operator
import os
import warnings
from dataclasses import dataclass, field, fields
from typing import TYPE_CHECKING, Any, Callable, List, Optional, Sequence, Union

import numpy as np

from .places import find_library
from .results import _no_attribute

Place = Callable[[int, int, float, float, float], Sequence[float]]
File = Union[None, str, "os.PathLike[str]"]

# Calculation modes: none of the plastic calculation, all four directions, or the first two of them.
ELASTIC, PLASTIC, PLASTIC_TWO, PLASTIC_TWO_21 = MODES = (0, 1, 11, 21)

# Columns of the property table, in their order.
COLUMNS = ("EMOD", "GMOD", "CARRIED", "COUPLING", "GROUP", "MATFLAG", "FNEG", "FPOS", "UNITWEIGHT", "TENTH")

# A reinforcement bar as it lies in memory. The library fills NELNODES, ELNODES, SHAPE, RS and STRESS.
BAR = np.dtype({
    "names": ["NODE", "ELEMENT", "NELNODES", "ELNODES", "AREA", "EMODUL", "GMODUL", "RADIUS", "BARWEIGHT", "SHAPE",
              "RS", "STRESS"],
    "formats": ["i4", "i4", "i4", ("i4", 4), "f8", "f8", "f8", "f8", "f8", ("f8", 4), ("f8", 2), ("f8", 4)],
    "offsets": [0, 12, 16, 20, 40, 48, 56, 64, 96, 104, 136, 152],
    "itemsize": 184})

# What vq_check finds, as it lies in memory; where a finding lies, from 0, and its reason, from 1.
FINDING = np.dtype([("TABLE", "i4"), ("ROW", "i4"), ("REASON", "i4"), ("SEVERITY", "i4")])
TABLES = ("CALL", "NODES", "ELEMENTS", "PROPS", "POINTS")
REASONS = ("NULL_TABLE", "NEGATIVE_COUNT", "COUNT_TOO_LARGE", "NOT_FINITE", "NODE_OUTSIDE", "NODE_TWICE", "CLOCKWISE",
           "EDGE_SHORT", "ELEMENT_SMALL", "CORNER_BAD", "GROUP_OUTSIDE", "NO_REFERENCE", "REFERENCE_BAD", "NODE_TAKEN",
           "HOST_OUTSIDE", "LOOSE_PIECE", "MIDDLE_AT_100", "FLAT_TRIANGLE", "OBLONG", "COUPLING_ZERO",
           "STRENGTH_MISSING", "STRENGTH_MIXED", "STRENGTH_NEGATIVE", "BAR_OUTSIDE", "HINGE",
           "COUPLING_UNLIKE")
ERROR = 2  # severity

MAXLEVELS = 6
FIRST_LINE, FIRST_STEP = 100.0, 1e-9  # a middle of the nodes as near as this to the line ends the plastic search
MODE_SLOT = 31  # of the result, holds the mode on entry
_LARGEST = 2**31 - 1  # 32-bit integer


class Error(Exception):
    """No results. `status` is the library's answer."""
    status: Optional[int] = None
    findings: Sequence["Finding"] = ()
    meaning = "unknown status"


class Refused(Error):
    """`findings` is what check() finds in the tables, of which the message names the first errors."""
    status = 1
    meaning = ("the tables or the mesh were refused: a group out of range, no element with MATFLAG 1.0, EREF not above "
               "0, a value that is not finite, a clockwise or degenerate element, or a bar without a node of its own "
               "or a host element")


class NotSolved(Error):
    status = 2
    meaning = ("an equation system could not be solved: a triangle without area, a GMOD other than 0 that vanishes beside "
               "the others, or coordinates beyond what its products can hold")


class OutOfMemory(Error):
    status = 3
    meaning = "memory could not be had, or the run found itself inconsistent (a line on the error stream says so)"


class MeshWarning(UserWarning):
    """Values of calculate() are seldom meant, for the sake of where the mesh lies: check() has the finding."""


@dataclass(frozen=True)
class Finding:
    """What check() tells of one row of a table: an error, which calculate() refuses, or a warning."""
    table: str   # one of TABLES
    row: int     # counted from 1; 0: the table as a whole
    name: str    # one of REASONS; "" for those of a later library
    reason: str  # in English
    is_error: bool

    def __str__(self) -> str:
        return f"{self.table}{f', row {self.row}' if self.row else ''}: {self.reason}"


@dataclass(eq=False)
class Section:
    """The results of a call: the slots of the C record in their order, then the tables, then what levels bring."""
    EA: float     # axial stiffness
    IYY: float    # second moment as stiffness, over the squared Y distance from the centroid
    IZZ: float    # over the squared Z distance
    DYZ: float    # over the product of both
    YC: float     # centroid
    ZC: float
    SCY: float    # shear centre
    SCZ: float
    SCU: float    # the same position vector in the principal axes
    SCV: float
    GJ: float     # torsional stiffness
    GAY: float    # shear stiffness along Y
    GAZ: float    # along Z
    IW: float     # warping constant about the shear centre
    ALPHA: float  # angle of the principal axes
    I1: float     # principal second moments
    I2: float
    GAU: float    # shear stiffness along u
    GAV: float    # along v
    GAUV: float   # coupling of both
    IWS: float    # warping constant about the centroid
    WT: float     # reciprocal of the largest corner shear stress under unit torque
    RZ: float     # skew coefficients
    RY: float
    RV: float
    RU: float
    WR1: float
    WR2: float
    ANET: float   # area of the elements with GROUP above 0
    PLAXIS_Y: float  # plastic axes in the host's system, moduli and moments
    PLAXIS_Z: float
    PLAXIS_Y_NEG: float
    PLAXIS_Z_NEG: float
    PLMOD_Z: float
    PLMOD_Y: float
    PLMOD_Z_NEG: float
    PLMOD_Y_NEG: float
    PLMOM_Z: float
    PLMOM_Y: float
    PLMOM_Z_NEG: float
    PLMOM_Y_NEG: float
    PLAXIS_U: float  # in the principal axes, from the centroid
    PLAXIS_V: float
    PLAXIS_U_NEG: float
    PLAXIS_V_NEG: float
    PLMOD_V: float
    PLMOD_U: float
    PLMOD_V_NEG: float
    PLMOD_U_NEG: float
    PLMOM_V: float
    PLMOM_U: float
    PLMOM_V_NEG: float
    PLMOM_U_NEG: float
    COUP1: float  # centre of the coupled groups
    COUP2: float
    WEIGHT: float
    EREF: float   # reference moduli
    GREF: float
    warping: np.ndarray = field(repr=False)  # (NNODES, 3)  unit twist about the shear centre, unit shear along u, v
    TAUY: np.ndarray = field(repr=False)  # (NELEMS, 4, 4)  shear stress along Y at [element, corner, load case]
    TAUZ: np.ndarray = field(repr=False)  # (NELEMS, 4, 4)  along Z; cases torque, shear along u, v, warping shear
    SIGMA: np.ndarray = field(repr=False)  # (NELEMS, 4, 4)  axial stress; cases normal force, two moments, bimoment
    bars: np.ndarray = field(repr=False)  # (NPOINTS)  the bars with their results, of dtype BAR
    bounds: Optional["Bounds"] = field(default=None, repr=False)  # of each slot: the limit lies within value -+ bound
    levels: Optional[int] = None  # that went well
    sharp: Optional[np.ndarray] = field(default=None, repr=False)  # (NNODES)  True where shear stresses have no limit

    if not TYPE_CHECKING:  # for which there are no others
        def __getattr__(self, name):  # of what is not there
            if name.startswith("_"):
                raise AttributeError(name)
            raise _no_attribute("slot", name, [slot.name for slot in fields(self)])


SLOTS = tuple(slot.name for slot in fields(Section) if slot.type is float)
Bounds = collections.namedtuple("Bounds", SLOTS)  # type: ignore[misc]


def property_table(nelems: int, *, EMOD: Any, GMOD: Any, CARRIED: Any = 0.0, COUPLING: Any = 1.0, GROUP: Any = 1.0,
                   MATFLAG: Any = 1.0, FNEG: Any = 0.0, FPOS: Any = 0.0, UNITWEIGHT: Any = 0.0,
                   TENTH: Any = 0.0) -> np.ndarray:
    """The property table of `nelems` elements; each column is one value for all of them or an array of one for each."""
    given = locals()
    table = np.empty((nelems, len(COLUMNS)), order="F")
    for column, name in enumerate(COLUMNS):
        table[:, column] = _one_for_each(name, given[name], nelems)
    return table


def bar_table(NODE: Any, ELEMENT: Any, *, AREA: Any, EMODUL: Any, GMODUL: Any = 0.0, RADIUS: Any = 0.0,
              BARWEIGHT: Any = 0.0) -> np.ndarray:
    """Bars: numbers of their nodes and elements, and for each property one value for all bars or an array.

    A GMODUL other than 0 makes torsion and warping depend on the unit of length.
    """
    given = locals()
    nodes, elements = _integers("NODE", NODE, 1), _integers("ELEMENT", ELEMENT, 1)
    if nodes.ndim != 1 or nodes.shape != elements.shape:
        raise ValueError(f"NODE, ELEMENT: two lists of one length expected, not {nodes.shape} and {elements.shape}")
    bars = np.zeros(len(nodes), BAR)
    bars["NODE"], bars["ELEMENT"] = nodes, elements
    for name in ("AREA", "EMODUL", "GMODUL", "RADIUS", "BARWEIGHT"):
        bars[name] = _one_for_each(name, given[name], len(bars))
    return bars


def calculate(nodes: Any, elements: Any, props: Any, *, bars: Optional[np.ndarray] = None, groups: Optional[int] = None,
              mode: Optional[int] = None, levels: Optional[int] = None, place: Optional[Place] = None,
              library: File = None) -> Section:
    """Calculates one section and returns a `Section`.

    nodes     (NNODES, 2)   coordinates Y, Z
    elements  (NELEMS, 4)   node numbers, counter-clockwise; a triangle repeats its third, or (NELEMS, 3), all triangles
    props     (NELEMS, 10)  properties in the order of COLUMNS: property_table()
    bars      (NPOINTS)     of dtype BAR: bar_table(); the results hold a copy of them
    groups    number of material groups; the largest of the property table if not given
    mode      one of MODES; if not given PLASTIC, or ELASTIC where all strengths FNEG and FPOS are 0
    levels    1 to MAXLEVELS: values extrapolated from so many nested meshes, each with a bound for its error
    place     place(A, B, t, y, z) gives where (y, z), a new node on the edge from node A to node B, t of the way along,
              lies on the edge's true course; what it raises is raised after the call

    Anything that numpy makes an array of will do; a table that is no column-ordered array of 64-bit reals (elements: of
    32-bit integers) is copied. None is changed. ValueError: a table is not of these shapes, or names a node that is not
    there. Refused, NotSolved, OutOfMemory: the library gave no results. OSError: there is no library. MeshWarning, by
    `warnings`: plastic values may be wrong, as check() finds by MIDDLE_AT_100.
    """
    vq_velquor = load(library)
    nodes, elements, props, bars, groups, mode = _tables(nodes, elements, props, bars, groups, mode)
    if levels is None and place is not None:
        raise ValueError("place: new nodes are placed with levels only")
    if levels is not None and not 1 <= operator.index(levels) <= MAXLEVELS:
        raise ValueError(f"levels: {levels}, expected 1 to {MAXLEVELS}")

    assert bars is not None and groups is not None
    status = ctypes.c_int32(groups)
    result = np.zeros(len(SLOTS))
    result[MODE_SLOT] = mode
    nodeout = np.empty((len(nodes), 3), order="F")
    elemout = np.empty((len(elements), 4, 12))
    tables = (status, nodes, len(nodes), elements, len(elements), props, len(bars), bars, result, nodeout, elemout)
    done = ctypes.c_int32(levels or 0)
    extra: Sequence[Any] = ()
    if levels is None:
        vq_velquor(*tables)
    else:
        bounds, sharp = np.empty(len(SLOTS)), np.empty(len(nodes), np.int32)
        raised: List[BaseException] = []
        load_levels(library).vq_levels(*tables, done, bounds, sharp, _placing(place, raised), None)
        if raised:
            raise raised[0]
        extra = Bounds(*bounds.tolist()), done.value, sharp != 0
    if status.value != 0:
        kind = next((kind for kind in (Refused, NotSolved, OutOfMemory) if kind.status == status.value), Error)
        findings = []
        if kind is Refused:
            with contextlib.suppress(OSError, OutOfMemory):  # without the second library the status alone is told
                findings = _find(library, nodes, elements, props, bars, groups, mode)
        errors = [str(finding) for finding in findings if finding.is_error]
        told = "; ".join(errors[:3] + [f"and {len(errors) - 3} more"] * (len(errors) > 3)) or kind.meaning
        if kind is Refused and done.value > 0:  # no row of the tables is at fault
            told = "the refined mesh was refused: its elements are too small, or place put them out of shape"
        error = kind(f"status {status.value}: " + f"level {done.value + 1}: " * (done.value > 0) + told)
        error.status, error.findings = status.value, findings
        raise error
    if levels is None and mode != ELASTIC and _is_middle_at_first_line(nodes, elements, bars):
        warnings.warn(f"the middle of the mesh lies at {FIRST_LINE:g} along Y or Z, where the plastic search ends at once: "
                      "PLAXIS, PLMOD and PLMOM may be wrong; move the mesh, so that its middle lies at 0, or give levels=2",
                      MeshWarning, stacklevel=2)
    return Section(*result.tolist(), nodeout, elemout[:, :, 0:8:2], elemout[:, :, 1:8:2], elemout[:, :, 8:12], bars,
                   *extra)  # type: ignore[call-arg]


def check(nodes: Any, elements: Any, props: Any, *, bars: Optional[np.ndarray] = None, groups: Optional[int] = None,
          mode: Optional[int] = None, library: File = None) -> List[Finding]:
    """What calculate() would refuse of these tables, or accept though it is seldom meant: a list of `Finding`.

    They come in the order of the tables and their rows. Arguments are those of calculate(); a node number may be any, so
    that it can be told. OSError: there is no second library.
    """
    return _find(library, *_tables(nodes, elements, props, bars, groups, mode, any_node=True))


def find_refusal(nodes: Any, elements: Any, props: Any, *, bars: Optional[np.ndarray] = None,
                 groups: Optional[int] = None, mode: Optional[int] = None, library: File = None) -> Optional[Finding]:
    """The first `Finding` for which calculate() would refuse these tables, or None. Arguments are those of check()."""
    found = check(nodes, elements, props, bars=bars, groups=groups, mode=mode, library=library)
    return next((finding for finding in found if finding.is_error), None)


def find_pieces(nodes: Any, elements: Any) -> np.ndarray:
    """For each element the number of the connected piece that it belongs to, (NELEMS), from 1 in the order of the rows.

    Elements with a node in common are connected. Shear, torsion and warping of a section of several pieces are those of
    pieces which do not hold one another. ValueError as calculate() has it. Needs no library.
    """
    nodes = _reals("nodes", nodes, 2)
    corners = np.ascontiguousarray(_element_table(elements, 1, len(nodes)))
    if len(corners) == 0:
        return np.zeros(0, np.int64)
    by_node = np.argsort(corners, axis=None, kind="stable")
    starts = np.flatnonzero(np.diff(corners.ravel()[by_node], prepend=0))  # of each node that is used
    used = np.searchsorted(corners.ravel()[by_node[starts]], corners)
    piece = np.arange(len(corners))  # the lowest element of a piece, as far as it is known
    while True:
        nearest = np.minimum.reduceat(piece[by_node // 4], starts)[used].min(axis=1)
        joined = np.flatnonzero(nearest < piece)
        if len(joined) == 0:
            return 1 + np.unique(piece, return_inverse=True)[1]
        piece[piece[joined]] = nearest[joined]  # any lower one will do
        while (piece != piece[piece]).any():
            piece = piece[piece]


def _find(library, nodes, elements, props, bars, groups, mode):
    routines, count, found = load_levels(library), 100, ()
    while count > len(found):
        found = np.zeros(count, FINDING)
        count = routines.vq_check(groups, nodes, len(nodes), elements, len(elements), props, len(bars), bars, mode,
                                  len(found), found)
    if count < 0:
        raise OutOfMemory(OutOfMemory.meaning)
    return [Finding(TABLES[table], row, "".join(REASONS[reason - 1:reason]), routines.vq_reason(reason).decode(),
                    severity == ERROR)
            for table, row, reason, severity in found[:count].tolist()]


def _is_middle_at_first_line(nodes, elements, bars):
    """Whether check() finds MIDDLE_AT_100, of tables that were calculated: nodes that nothing uses stand at the origin."""
    used = np.zeros(len(nodes), bool)
    used[elements - 1] = True
    used[bars["NODE"][(bars["NODE"] >= 1) & (bars["NODE"] <= len(nodes))] - 1] = True
    at = np.where(used[:, None] & np.isfinite(nodes).all(axis=1, keepdims=True), nodes, 0.0)
    return bool((abs(FIRST_LINE - (at.min(axis=0) + at.max(axis=0)) * 0.5) < FIRST_STEP).any())


def _placing(place, raised):
    """A C routine that calls `place` until it raises, which is then kept in `raised`."""
    def routine(_, a, b, t, yz):
        try:
            if not raised:
                y, z = place(a, b, t, yz[0], yz[1])
                yz[0], yz[1] = float(y), float(z)
        except BaseException as error:  # none may pass through the library
            raised.append(error)

    return _PLACE() if place is None else _PLACE(routine)


def _tables(nodes, elements, props, bars, groups, mode, any_node=False):
    """The arguments as the library takes them."""
    nodes, props = _reals("nodes", nodes, 2), _reals("props", props, len(COLUMNS))
    elements = _element_table(elements, *((-_LARGEST - 1, _LARGEST) if any_node else (1, len(nodes))))
    if len(elements) != len(props):
        raise ValueError(f"props: {len(props)} rows for {len(elements)} elements")
    bars = np.zeros(0, BAR) if bars is None else _unmasked("bars", bars)
    if bars.dtype != BAR or bars.ndim != 1 or len(bars) > _LARGEST:
        raise ValueError(f"bars: a one-dimensional array of velquor.core.BAR expected, not {bars.shape} of {bars.dtype}")
    if mode is None:  # without strengths no line is the plastic one
        strengths = props[:, COLUMNS.index("FNEG"):COLUMNS.index("FPOS") + 1]
        mode = PLASTIC if strengths.any() else ELASTIC
    if mode not in MODES:
        raise ValueError(f"mode: one of {MODES} expected, not {mode!r}")
    if groups is None:  # what is no group number is left for the library to refuse
        numbers = np.abs(props[:, COLUMNS.index("GROUP")])
        groups = int(numbers[numbers <= _LARGEST].max(initial=1))
    if not 1 <= operator.index(groups) <= _LARGEST:
        raise ValueError(f"groups: {groups}, expected 1 to {_LARGEST}")
    return nodes, elements, props, bars.copy(), groups, mode


def load(library: File = None) -> Any:
    """The library's routine: from the file `library`, from VELQUOR_LIBRARY, beside this package, or where the system's
    loader finds it."""
    return _routine(_file(library))


def load_levels(library: File = None) -> Any:
    """The library of vq_levels and vq_check: beside that file, libvelquor-levels.so* for libvelquor.so*, or where the
    system's loader finds it."""
    load(library)  # which the second is to call, whatever the file's name
    folder, file = os.path.split(_file(library))
    if not file.startswith("libvelquor.so"):
        folder, file = "", "libvelquor.so.1"
    return _levels(os.path.join(folder, file.replace("libvelquor", "libvelquor-levels", 1)))


def _file(library):
    return os.fspath(library or os.environ.get("VELQUOR_LIBRARY") or find_library())


def _table(dtype):
    return np.ctypeslib.ndpointer(dtype, flags=("F_CONTIGUOUS", "ALIGNED"))


_INTEGER = ctypes.c_int32
_STATUS = ctypes.POINTER(_INTEGER)
_INPUTS = [_table(np.float64), _INTEGER, _table(np.int32), _INTEGER, _table(np.float64), _INTEGER, _table(BAR)]
_OUTPUTS = [_table(np.float64), _table(np.float64),
            np.ctypeslib.ndpointer(np.float64, ndim=3, flags=("C_CONTIGUOUS", "ALIGNED"))]
_PLACE = ctypes.CFUNCTYPE(None, ctypes.c_void_p, _INTEGER, _INTEGER, ctypes.c_double, ctypes.POINTER(ctypes.c_double))


@functools.lru_cache(maxsize=None)
def _routine(name):
    try:
        routine = ctypes.CDLL(name).vq_velquor  # CDLL gives up the interpreter's lock for the time of a call
    except (OSError, AttributeError) as error:
        raise OSError(f"velquor: no library {name} ({error}); install libvelquor1, or set VELQUOR_LIBRARY to the file, "
                      "or give it as `library`") from error
    routine.argtypes, routine.restype = [_STATUS, *_INPUTS, *_OUTPUTS], None
    return routine


@functools.lru_cache(maxsize=None)
def _levels(name):
    try:
        library = ctypes.CDLL(name)
        vq_levels, vq_check, vq_reason = library.vq_levels, library.vq_check, library.vq_reason
    except (OSError, AttributeError) as error:
        raise OSError(f"velquor: no library {name} ({error}), which levels and check need; install libvelquor1, or put "
                      "it beside libvelquor.so") from error
    vq_levels.argtypes = [_STATUS, *_INPUTS, *_OUTPUTS, _STATUS, _table(np.float64), _table(np.int32), _PLACE,
                          ctypes.c_void_p]
    vq_check.argtypes = [_INTEGER, *_INPUTS, ctypes.c_double, _INTEGER, _table(FINDING)]
    vq_reason.argtypes = [_INTEGER]
    vq_levels.restype, vq_check.restype, vq_reason.restype = None, _INTEGER, ctypes.c_char_p
    return library


def _unmasked(name, values):
    if np.ma.getmask(values).tobytes().strip(b"\0"):  # a mask of bars has an entry for each field
        raise ValueError(f"{name}: some values are masked")
    try:
        return np.asarray(values)
    except ValueError as error:  # rows of unequal lengths
        raise ValueError(f"{name}: {error}") from error


def _reals(name, values, columns):
    table = _unmasked(name, values)
    if table.dtype.kind not in "fiu":
        raise ValueError(f"{name}: real numbers expected, not {table.dtype}")
    if table.ndim != 2 or table.shape[1] != columns or len(table) > _LARGEST:
        raise ValueError(f"{name}: shape (n, {columns}) expected, not {table.shape}")
    return np.require(table, np.float64, ("F", "A"))


def _integers(name, values, low, high=_LARGEST):
    table = _unmasked(name, values)
    if table.size == 0:  # an empty list has no type
        return table.astype(np.int32)
    if table.dtype.kind not in "iu":
        raise ValueError(f"{name}: integers expected, not {table.dtype}")
    outside = (table < low) | (table > high)
    if outside.any():
        first = tuple(np.argwhere(outside)[0].tolist())
        raise ValueError(f"{name}: {table[first]} at index {first}, expected {low} to {high}")
    return table


def _element_table(values, lowest, highest):
    table = _integers("elements", values, lowest, highest)
    if table.ndim != 2 or table.shape[1] not in (3, 4) or len(table) > _LARGEST:
        raise ValueError(f"elements: shape (n, 4) or (n, 3) expected, not {table.shape}")
    if table.shape[1] == 3:
        table = table[:, [0, 1, 2, 2]]
    return np.require(table, np.int32, ("F", "A"))


def _one_for_each(name, values, count):
    column = _unmasked(name, values)
    if column.dtype.kind not in "fiub" and column.size > 0:
        raise ValueError(f"{name}: real numbers expected, not {column.dtype}")
    if column.shape not in ((), (count,)):
        raise ValueError(f"{name}: one value or {count} expected, not an array of {column.shape}")
    return column
