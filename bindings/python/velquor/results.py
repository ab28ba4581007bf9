"""What comes of a section: its values, what is known over its mesh, or the error in their place."""
import difflib
import json
import math
from dataclasses import dataclass
from typing import Any, Dict, Iterator, List, Mapping, Optional, Tuple

import numpy as np


class SectionError(Exception):
    """A section without values.

    kind     "request", "refused", "unsolved", "memory", "timeout", "crashed" or "internal": docs/protocol.md
    at       the place in the section, as "parts[1].outline[3]"; "" for the whole
    message  what is wrong there
    remedy   what would be right; "" where it is not known
    index    of a batch: the section's place in it, from 0
    id       of a batch: the request's id, or the index
    """

    def __init__(self, kind: str, at: str, message: str, remedy: str = "", index: Optional[int] = None, id: Any = None):
        super().__init__(kind, at, message, remedy, index, id)  # by which it is pickled
        self.kind, self.at, self.message, self.remedy = kind, at, message, remedy
        self.index, self.id = index, id

    def __str__(self) -> str:
        return "".join((f"{self.at}: " if self.at else "", self.message, f"; {self.remedy}" if self.remedy else ""))


def _unknown(kind: str, name: Any, known: Any) -> str:
    near = difflib.get_close_matches(str(name), known, 1, 0.5) or [k for k in known if k.lower() == str(name).lower()]
    all_of_them = f"; there are {', '.join(map(repr, known))}" if 0 < len(known) < 10 else ""
    return f"no {kind} {name!r}" + (f"; did you mean {near[0]!r}?" if near else all_of_them)


def _no_attribute(kind: str, name: str, known: Any) -> AttributeError:
    error = AttributeError(_unknown(kind, name, known))
    error.name, error.obj = "", None  # for which the interpreter, from 3.10 on, adds no hint of its own
    return error


class Record(Mapping[str, Any]):
    """A mapping whose entries are attributes too."""

    def __init__(self, kind: str, entries: Mapping[str, Any]):
        self._kind, self._entries = kind, dict(entries)

    def __getitem__(self, key: str) -> Any:
        if key not in self._entries:
            raise KeyError(_unknown(self._kind, key, self._entries))
        return self._entries[key]

    def __iter__(self) -> Iterator[str]:
        return iter(self._entries)

    def __len__(self) -> int:
        return len(self._entries)

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_"):  # while it is made from a pickle there are no entries
            raise AttributeError(name)
        if name not in self._entries:
            raise _no_attribute(self._kind, name, self._entries)
        return self._entries[name]

    def __dir__(self) -> List[str]:
        return sorted({*super().__dir__(), *self._entries})

    def __repr__(self) -> str:
        shown = [f"{key} {value:.6g}" if isinstance(value, float) else f"{key} {value!r}"
                 for key, value in list(self._entries.items())[:8]]
        more = f", ..., {len(self)} in all" if len(self) > 8 else ""
        return f"<{self._kind}: {', '.join(shown)}{more}>"


@dataclass(frozen=True, eq=False, repr=False)
class Mesh:
    """Elements of the section, which `core` takes as they are. Numbers of nodes count from 1."""
    nodes: np.ndarray     # (n, 2)  y, z in `length`
    elements: np.ndarray  # (m, 4)  counter-clockwise; a triangle repeats its third node
    parts: np.ndarray     # (m)     of the section's list, from 0; behind the parts each bar
    length: str           # unit, the section's own

    def __repr__(self) -> str:
        return f"<velquor.Mesh: {len(self.nodes)} nodes, {len(self.elements)} elements, in {self.length}>"


@dataclass(frozen=True, eq=False, repr=False)
class Field:
    """Stresses at the points of a mesh under a load set, or under one of the unit loads, 1 in the section's own units.

    None is what the load does not make. Shear and von Mises' stress are no numbers at sharp re-entrant corners, where they
    have no limit.
    """
    name: str
    unit: str                       # of stresses, as "N/mm2"
    axial: Optional[np.ndarray]     # (p)
    shear: Optional[np.ndarray]     # (p, 2)  along y, z
    mises: Optional[np.ndarray]     # (p)     of load sets

    def __repr__(self) -> str:
        made = {name: values for name in ("axial", "shear", "mises") if (values := getattr(self, name)) is not None}
        points = len(next(iter(made.values()), ()))
        return f"<velquor.Field {self.name!r}: {', '.join(made)} at {points} points, in {self.unit}>"


@dataclass(frozen=True, eq=False, repr=False)
class Fields(Mapping[str, Field]):
    """What is known at the points of a mesh; a field for each load by its name.

    A point is a node of one material: a node between two of them has two points.
    """
    node: np.ndarray               # (p)     of the mesh, from 1
    places: np.ndarray             # (p, 2)  y, z
    material: np.ndarray           # (p)     of the section's list, from 0
    elements: np.ndarray           # (m, 4)  those of the mesh, by points from 1
    sharp: np.ndarray              # (p)     True where shear stresses have no limit
    warping: Optional[np.ndarray]  # (p, 3)  of a unit twist, of unit shear along u, along v; on the coarse mesh alone
    columns: Dict[str, np.ndarray]  # all, as the answer names them
    unit: str

    __eq__, __hash__ = object.__eq__, object.__hash__  # arrays are not compared

    def __repr__(self) -> str:
        return f"<velquor.Fields: {len(self.node)} points, {', '.join(self)}>"

    def _names(self) -> List[str]:
        ends = (" axial", " shear y", " von Mises")
        return list(dict.fromkeys(column[:-len(end)] for column in self.columns for end in ends if column.endswith(end)))

    def __iter__(self) -> Iterator[str]:
        return (name[5:] if name.startswith("unit ") else name for name in self._names())

    def __len__(self) -> int:
        return len(self._names())

    def __getitem__(self, name: str) -> Field:
        column = next((column for column in (f"unit {name}", name) if column in self._names()), None)
        if column is None:
            raise KeyError(_unknown("load", name, self))
        axial, y, z, mises = (self.columns.get(f"{column} {end}") for end in ("axial", "shear y", "shear z", "von Mises"))
        shear = None if y is None or z is None else np.where(self.sharp[:, None], np.nan, np.stack([y, z], axis=1))
        return Field(name, self.unit, axial, shear, None if mises is None else np.where(self.sharp, np.nan, mises))


class Section:
    """The values of a section, as attributes by their keys: `velquor schema --answer` tells them.

        beam.It, beam.bounds.It, beam.unit("It")     a value, its bound, its unit

    A value that there is none of is None, and `reason` tells why. A bound is infinite where none
    is known, or no value.
    """

    def __init__(self, answer: Dict[str, Any], request: Mapping[str, Any], settings: Any, mesh: str = "coarse",
                 index: Optional[int] = None, id: Any = None):
        self._answer, self._request, self._settings, self._which = answer, request, settings, mesh
        self._kept: Dict[str, Any] = {}
        self.index, self.id = index, id

    @property
    def name(self) -> str:
        return self._answer["name"]

    @property
    def units(self) -> Record:
        """`length` and `force` of the values."""
        return Record("unit", self._answer["units"])

    @property
    def values(self) -> Record:
        return Record("value", {key: entry["value"] for key, entry in self._answer["values"].items()})

    @property
    def bounds(self) -> Record:
        """Of each value: the limit for infinitely fine meshes lies within value -+ bound; infinite where there is none."""
        return Record("value", {key: math.inf if entry["bound"] is None else entry["bound"]
                                for key, entry in self._answer["values"].items()})

    @property
    def accuracy(self) -> Record:
        """`wished` and `reached` relative bounds, whether it was `met`, `levels`, `nodes` and `elements`."""
        return Record("entry", self._answer["accuracy"])

    @property
    def notes(self) -> List[str]:
        return self._answer.get("notes", [])

    @property
    def materials(self) -> List[Dict[str, Any]]:
        """Name, area and mass of each."""
        return self._answer["materials"]

    @property
    def loads(self) -> List[Dict[str, Any]]:
        """Of each load set its largest stresses, where they are, and how much of the strength they use."""
        return self._answer.get("loads", [])

    def unit(self, key: str) -> str:
        return self._entry(key)["unit"]

    def reason(self, key: str) -> Optional[str]:
        """Why there is no such value; None where there is one."""
        return self._entry(key).get("reason")

    def to_dict(self) -> Dict[str, Any]:
        """The answer, of which all this is made, of plain types."""
        from .requests import text_of
        return json.loads(text_of(self._answer))

    @property
    def mesh(self) -> Mesh:
        """The mesh of stresses, calculated where it is first asked for."""
        return self._fetched("unit")[0]

    @property
    def fields(self) -> Fields:
        """Warping, and stresses under each unit load that the section can carry; calculated where first asked for."""
        return self._fetched("unit")[1]

    def field(self, name: str) -> Field:
        """Of a load set by its name, else of a unit load, one of N, My, Mz, B, T, Vy, Vz, Tw."""
        sets: Mapping[str, Field] = {}
        if self._load_sets():
            sets = self._fetched("sets")[1]
        if name not in sets and name not in self.fields:
            raise KeyError(_unknown("load", name, [*self.fields, *sets]))
        return sets[name] if name in sets else self.fields[name]

    def plot(self, field: Optional[str] = None, ax: Any = None, quantity: Optional[str] = None) -> Any:
        """Draws the elements, or a field of them, with matplotlib; returns the axes.

        field     a load as `field` takes it, or "warping"
        quantity  "axial", "shear" or "mises"; the first of mises, shear and axial that the load makes
        """
        from .pictures import plot
        return plot(self, field, ax, quantity)

    def _repr_html_(self) -> str:
        from .pictures import html_of
        return html_of(self)

    def __repr__(self) -> str:
        shown = [f"{key} {entry['value']:.6g} {entry['unit']}".rstrip() for key, entry in self._answer["values"].items()
                 if key in ("A", "Iy", "Iz", "It") and entry["value"] is not None]
        return f"<velquor.Section {self.name!r}{': ' if shown else ''}{', '.join(shown)}>"

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_"):
            raise AttributeError(name)
        values = self._answer["values"]
        if name not in values:
            raise _no_attribute("value", name, values)
        return values[name]["value"]

    def __dir__(self) -> List[str]:
        return sorted({*super().__dir__(), *self._answer["values"]})

    def _entry(self, key: str) -> Dict[str, Any]:
        if key not in self._answer["values"]:
            raise KeyError(_unknown("value", key, self._answer["values"]))
        return self._answer["values"][key]

    def _load_sets(self) -> List[Any]:
        section = self._request.get("section")
        return (section.get("loads") or []) if isinstance(section, Mapping) else []

    def _fetched(self, kind: str) -> Tuple[Mesh, Fields]:
        if kind not in self._kept:
            from .front import answer_to
            request = {key: value for key, value in self._request.items() if key not in ("id", "units")}
            if kind == "unit" and self._load_sets():  # without load sets fields are those of unit loads
                request["section"] = {key: value for key, value in request["section"].items() if key != "loads"}
            request.update(values=["A"], loads="none", fields=True, mesh=self._which)
            self._kept[kind] = _mesh_and_fields(answer_to(request, self._settings))
        return self._kept[kind]


def _mesh_and_fields(answer: Dict[str, Any]) -> Tuple[Mesh, Fields]:
    given, units = answer["mesh"], answer["units"]
    nodes = np.stack([np.array(given[axis], float) for axis in "yz"], axis=1)
    mesh = Mesh(nodes, np.array(given["elements"], np.int32).reshape(-1, 4), np.array(given["part"], np.int32),
                units["length"])
    given = answer["fields"]
    columns = {name: np.array(values, float) for name, values in given["columns"].items()}  # null is no number
    names = ("warping", "warping of shear along u", "warping of shear along v")
    warping = np.stack([columns[name] for name in names], axis=1) if all(name in columns for name in names) else None
    node = np.array(given["node"], np.int32)
    return mesh, Fields(node, nodes[node - 1], np.array(given["material"], np.int32),
                        np.array(given["elements"], np.int32).reshape(-1, 4), columns["sharp"] != 0, warping, columns,
                        f"{units['force']}/{units['length']}2")
