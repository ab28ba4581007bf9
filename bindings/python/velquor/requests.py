"""What a caller means by a section, as a request of docs/protocol.md."""
import difflib
import json
import os
from pathlib import Path
from typing import Any, Dict, Iterable, List, Mapping, Optional, Sequence, Tuple, Union

from .results import Section, SectionError

Source = Union[str, "os.PathLike[str]", Mapping[str, Any]]  # a profile's name, a file, a section or a request
Units = Union[None, str, Sequence[str], Mapping[str, str]]

MESHES = (".msh", ".bdf", ".nas", ".unv", ".vtk", ".mesh", ".stl")
FILES = (".json", ".dxf", *MESHES)
OF_SECTIONS = ("materials", "parts", "mesh", "drawing", "bars")  # keys by which a section is told from a request
OF_REQUESTS = ("id", "name", "values", "levels", "size", "accuracy", "parameters", "fields")
FORCES = ("N", "kN", "MN", "kgf", "lbf", "kip")


def is_file(source: Optional[Source]) -> bool:
    return isinstance(source, os.PathLike) or isinstance(source, str) and source.lower().endswith(FILES)


def folder_of(source: Optional[Source]) -> Optional[Path]:
    """Of a path of a file."""
    return Path(os.fspath(source)).parent if isinstance(source, (str, os.PathLike)) and is_file(source) else None


def read(path: Union[str, "os.PathLike[str]"]) -> Any:
    try:
        return json.loads(Path(path).read_text(encoding="utf-8-sig"), object_pairs_hook=_each_once)
    except OSError as error:
        raise SectionError("refused", "", f"{path}: cannot be read: {error.strerror}") from None
    except (ValueError, RecursionError) as error:
        raise SectionError("refused", "", f"{path}: {error}", "a section file is JSON") from None


def _each_once(entries: List[Tuple[str, Any]]) -> Dict[str, Any]:
    found = dict(entries)
    if len(found) < len(entries):
        keys = [key for key, _ in entries]
        raise ValueError(f'key "{next(key for key in keys if keys.count(key) > 1)}" stands twice')
    return found


def request_of(source: Source, wishes: Mapping[str, Any], materials: Any = None, relative: bool = False) -> Dict[str, Any]:
    """The request, which has the wishes where the source has none of its own.

    A file's path stands in the request as it was given, or, if `relative`, without its folder.
    """
    if isinstance(source, Section) or isinstance(source, Mapping) and isinstance(source.get("values"), Mapping):
        raise SectionError("request", "", "that is an answer, and no section", "give the section that it was made of")
    if isinstance(source, Mapping):
        return {**wishes, **source} if _is_request(source) else {**wishes, "section": source}
    if not isinstance(source, (str, os.PathLike)):
        raise SectionError("request", "", f"{type(source).__name__} is no section",
                           "give a profile's name, a file's path or a dictionary")
    if not is_file(source):
        return {**wishes, "name": source}
    path = Path(os.fspath(source))
    if path.suffix.lower() == ".json":
        section = read(path)
    else:
        given = read(materials) if isinstance(materials, (str, os.PathLike)) else materials
        if given is None:
            raise SectionError("refused", "materials", "a mesh or a drawing has none",
                               "give materials=, a list as in section files, or such a file's path")
        given = dict(given) if isinstance(given, Mapping) else {"materials": given}
        kind = "drawing" if path.suffix.lower() == ".dxf" else "mesh"
        section = {**given, kind: {**given.get(kind, {}), "file": path.name if relative else str(path)}}
    if isinstance(section, dict) and "name" not in section:
        section = {"name": path.stem, **section}
    return {**wishes, "section": section}


def _is_request(source: Mapping[str, Any]) -> bool:
    """By its keys; where none of them tells, misspelt ones are taken for those of a section."""
    if "section" in source or "shape" in source:
        return True
    near = [key for key in source if key not in OF_REQUESTS and difflib.get_close_matches(str(key), OF_SECTIONS, 1, 0.7)]
    return not near and any(key in source for key in OF_REQUESTS)


def wishes_of(units: Units = None, accuracy: Optional[float] = None, levels: Optional[int] = None,
              size: Optional[float] = None, values: Union[None, str, Iterable[str]] = None,
              loads: Optional[str] = None) -> Dict[str, Any]:
    """The keys of a request that say how, of those that are given."""
    if isinstance(units, str):
        units = {"length": units}
    elif units is not None and not isinstance(units, Mapping):
        if not 1 <= len(units) <= 2:
            raise ValueError(f'units: of length, or of length and force, ("cm", "kN"), expected, not {units!r}')
        if units[0] in FORCES:
            raise ValueError(f'units: of length first, then of force, ("cm", "kN"), expected, not {units!r}')
        units = dict(zip(("length", "force"), units))
    if values is not None:
        values = [values] if isinstance(values, str) else list(values)
    given = {"units": units, "accuracy": accuracy, "levels": levels, "size": size, "values": values, "loads": loads}
    return {key: value for key, value in given.items() if value is not None}


def text_of(value: Mapping[str, Any]) -> str:
    """One line of JSON. Throws SectionError where it cannot be."""
    try:
        text = json.dumps(value, ensure_ascii=False, allow_nan=False, default=_plain)
        text.encode("utf-8")
        return text
    except (TypeError, ValueError, RecursionError) as error:
        told = "is not a finite number" if str(error).startswith("Out of range float") else f"cannot be written as JSON: {error}"
        raise SectionError("request", _fault_in(value), told, "numbers are finite, keys and texts are Unicode") from None


def _fault_in(value: Any, depth: int = 20) -> str:
    """Where, in a section or request, the innermost entry stands that cannot be written; "" where it has no place."""
    value = value.tolist() if hasattr(value, "tolist") else value
    is_record = isinstance(value, Mapping)
    for key, entry in value.items() if is_record else enumerate(value if isinstance(value, (list, tuple)) else ()):
        try:
            json.dumps(entry, ensure_ascii=False, allow_nan=False, default=_plain).encode("utf-8")
        except (TypeError, ValueError, RecursionError):
            inner = _fault_in(entry, depth - 1) if depth > 0 else ""
            if is_record and key == "section":
                return inner
            return (f"{key}" if is_record else f"[{key}]") + ("." if inner[:1] not in ("", "[") else "") + inner
    return ""


def _plain(value: Any) -> Any:
    if isinstance(value, Mapping):
        return dict(value)
    if hasattr(value, "tolist"):  # of numpy
        return value.tolist()
    if isinstance(value, os.PathLike):
        return os.fspath(value)
    raise TypeError(f"{type(value).__name__} is none of JSON's types")
