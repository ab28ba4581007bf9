"""Sections by worker processes: one, many at once, and what is wrong with one."""
import functools
import json
import math
import numbers
import operator
import os
import subprocess
from typing import Any, Dict, Iterable, Iterator, List, Mapping, Optional, Tuple, Union

from . import workers
from .places import find_command
from .requests import Source, Units, folder_of, request_of, text_of, wishes_of
from .results import Section, SectionError

Result = Union[Section, SectionError]


def section(source: Optional[Source] = None, *, shape: Optional[str] = None, materials: Any = None, units: Units = None,
            accuracy: Optional[float] = None, levels: Optional[int] = None, size: Optional[float] = None,
            values: Union[None, str, Iterable[str]] = None, mesh: str = "coarse", timeout: float = 60,
            memory: float = 2048, files: Union[None, str, "os.PathLike[str]"] = None, command: Optional[str] = None,
            **parameters: float) -> Section:
    """The values of a section.

    source     a profile's name; the path of a section file (.json), a mesh or a drawing; a dictionary in the form of a
               section file, or of a request (docs/protocol.md)
    shape      in its place a parametric shape, with its parameters in mm: section(shape="i", h=300, b=150, ...)
    materials  of a mesh or a drawing: a list as in section files, a dictionary of this and "mesh" or "drawing", or a file
    units      of the values: "cm", or of length and force ("cm", "kN"); the section's own where they are not given
    accuracy   relative bound to be reached, `levels` of refinement, `size` of the coarsest elements: in place of the
               section's wishes
    values     keys of those that are wanted; all where they are not given
    mesh       "coarse" or "finest": which one `mesh`, `fields` and `plot` of the result are of
    timeout    seconds that it may take, `memory` megabytes
    files      the folder of files that a dictionary names; where it is not given none is read. Those that a section file
               names are read from its own folder
    command    the program velquor

    SectionError: there are no values, for the reason that it tells. OSError: there are no workers.
    """
    wishes = _wishes(source, shape, parameters, mesh, units, accuracy, levels, size, values)
    request = request_of({"shape": shape, "parameters": parameters} if source is None else source, wishes, materials, True)
    if files is None and any(key in request.get("section", ()) for key in ("mesh", "drawing")):
        files = folder_of(source)  # only where it is read: workers with and without a folder are not the same
    settings = _settings(None, timeout, memory, files, command)
    return Section(answer_to(request, settings), request, settings, mesh)


def batch(sections: Iterable[Source], jobs: Optional[int] = None, timeout: float = 60, memory: float = 2048,
          client: Any = None, chunk: int = 100, values: Union[None, str, Iterable[str]] = None, *, units: Units = None,
          accuracy: Optional[float] = None, levels: Optional[int] = None, size: Optional[float] = None,
          loads: Optional[str] = None, materials: Any = None, mesh: str = "coarse",
          files: Union[None, str, "os.PathLike[str]"] = None, command: Optional[str] = None,
          retries: int = 3) -> Iterator[Result]:
    """The results of many sections as they come, in whatever order; each has the `index` of its section, from 0, and the
    `id` of its request, or the index where it has none. A section without values gives a SectionError, which is not raised.

    sections   any iterable of what `section` takes; read as workers have need of it, so that it may be endless
    jobs       worker processes; as many as processors that this process may use, where it is not given
    timeout    seconds that one section may take, `memory` megabytes; a worker that goes beyond is replaced
    client     a dask.distributed.Client: its workers calculate, `chunk` sections in a task, a task again after a worker has
               died; `jobs` are those of each Dask worker, as many as it has threads where it is not given
    retries    with a client: how often a task is repeated that ends in an exception
    values, units, accuracy, levels, size, loads, materials, mesh, command: as `section` has them and docs/protocol.md
    files      the folder of files that sections name, meshes and drawings among the paths too

    The iterator may be left at any time: what it has under way is dropped. OSError: there are no workers. What `sections`
    raises ends it.
    """
    jobs, chunk = None if jobs is None else int(operator.index(jobs)), operator.index(chunk)
    if jobs is not None and jobs < 1 or chunk < 1:
        raise ValueError("jobs, chunk: 1 or more expected")
    if isinstance(sections, (str, Mapping)):
        raise TypeError("sections: an iterable of them expected; `section` takes one")
    wishes = wishes_of(units, accuracy, levels, size, values, loads)
    requests = _requests(sections, wishes, materials)
    settings = _settings(jobs, timeout, memory, files, command)
    if client is None:
        find_command(command)  # an error is due here, and not only when the first result is asked for
        return _results(workers.stream, settings, requests, mesh)
    from .cluster import stream
    return _results(functools.partial(stream, client, chunk, retries), settings, requests, mesh)


def check(source: Optional[Source] = None, materials: Any = None, command: Optional[str] = None, *,
          shape: Optional[str] = None, units: Units = None, accuracy: Optional[float] = None, levels: Optional[int] = None,
          size: Optional[float] = None, values: Union[None, str, Iterable[str]] = None, mesh: str = "coarse",
          timeout: float = 60, memory: float = 2048, files: Union[None, str, "os.PathLike[str]"] = None,
          **parameters: float) -> List[Dict[str, Any]]:
    """What is wrong with a section, or seldom meant: a list of severity ("error", "warning"), place, message, remedy.

    Takes what `section` takes. Of a shape it tells the first error, for which it is calculated on a coarse mesh.
    """
    wishes = _wishes(source, shape, parameters, mesh, units, accuracy, levels, size, values)
    given = request_of({"shape": shape, "parameters": parameters} if source is None else source, wishes, materials, True)
    settings = _settings(None, timeout, memory, files, command)
    if "section" not in given and "name" not in given:
        try:
            answer_to({**given, "levels": 1, "values": ["A"]}, settings)
        except SectionError as error:
            if error.kind not in ("request", "refused"):
                raise
            return [{"severity": "error", "place": error.at, "message": error.message, "remedy": error.remedy}]
        return []
    name, text = given.get("name", "-"), text_of(given["section"]) if "section" in given else ""
    done = subprocess.run([find_command(command), "check", "--json", "--", name], input=text, capture_output=True,
                          encoding="utf-8", cwd=folder_of(source) or settings.files)
    try:
        return list(json.loads(done.stdout)["sections"][0]["findings"])
    except (ValueError, LookupError, TypeError):
        raise SectionError("internal", "", done.stderr.strip() or f"the command ended with {done.returncode}") from None


def answer_to(request: Mapping[str, Any], settings: workers.Settings) -> Dict[str, Any]:
    """One answer, from any pool that is there. Throws SectionError."""
    (_, answer), = workers.stream(settings, iter([(0, request)]), any_jobs=True)
    if isinstance(answer, SectionError):
        raise answer
    assert isinstance(answer, dict)
    if "error" in answer:
        raise _error(answer["error"])
    return {key: value for key, value in answer.items() if key != "id"}


def _wishes(source: Optional[Source], shape: Optional[str], parameters: Mapping[str, float], mesh: str,
            *wishes: Any) -> Dict[str, Any]:
    """Those of one section, whose arguments are such as go together."""
    if (source is None) == (shape is None):
        raise TypeError("one of source and shape expected")
    if parameters and shape is None:
        raise TypeError(f"unexpected argument {next(iter(parameters))!r}; parameters are those of a shape")
    if mesh not in ("coarse", "finest"):
        raise ValueError(f'mesh: "coarse" or "finest" expected, not {mesh!r}')
    return wishes_of(*wishes)


def _error(told: Mapping[str, str], index: Optional[int] = None, id: Any = None) -> SectionError:
    """Of an answer: the command's options by their names here."""
    remedy = told["remedy"].replace("--timeout", "timeout=").replace("--memory", "memory=")
    return SectionError(told["kind"], told["at"], told["message"], remedy, index, id)


def _settings(jobs: Optional[int], timeout: float, memory: float, files: Any, command: Optional[str]) -> workers.Settings:
    for name, value in ("timeout", timeout), ("memory", memory):
        if not (isinstance(value, numbers.Real) and 0 < value < math.inf):
            raise ValueError(f"{name}: a number above 0 expected, not {value!r}")
    return workers.Settings(os.fspath(command or ""), jobs or 0, timeout, memory,
                            None if files is None else os.path.abspath(files))


def _requests(sections: Iterable[Source], wishes: Mapping[str, Any],
              materials: Any) -> Iterator[Tuple[int, Union[Dict[str, Any], SectionError]]]:
    for index, source in enumerate(sections):
        try:
            yield index, request_of(source, wishes, materials)
        except SectionError as error:
            yield index, error


def _results(stream: Any, settings: workers.Settings, requests: Any, mesh: str) -> Iterator[Result]:
    """The stream's answers as results, each with its request, which is kept until then."""
    kept: Dict[int, Any] = {}

    def passing() -> Iterator[Any]:
        for index, request in requests:
            kept[index] = request
            yield index, request if isinstance(request, SectionError) else {**request, "id": index}

    for index, answer in stream(settings, passing()):
        request = kept.pop(index)
        id = request.get("id", index) if isinstance(request, Mapping) else index
        if isinstance(answer, SectionError):
            yield SectionError(answer.kind, answer.at, answer.message, answer.remedy, index, id)
        elif "error" in answer:
            yield _error(answer["error"], index, id)
        else:
            yield Section({**answer, "id": id}, request, settings, mesh, index, id)
