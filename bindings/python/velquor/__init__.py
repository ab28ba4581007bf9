"""Values of beam cross-sections by finite elements, each with a bound for its error.

    import velquor

    beam = velquor.section("IPE 300", units=("cm", "kN"))
    print(beam.It, beam.bounds.It, beam.unit("It"))
    beam.plot("Vz")

    for result in velquor.batch(["IPE 300", {"section": {...}, "id": "B12"}, ...]):
        if isinstance(result, velquor.SectionError):
            print(result.id, result)
        else:
            print(result.id, result.Iy)

Sections are calculated by worker processes of the command velquor, which is found by the argument `command`, else by the
environment variable VELQUOR_COMMAND, else beside this package's installation, or in build/release of its source tree, else
on the path. velquor.core is the
library on meshes of one's own, within the process. docs/python.md and docs/cluster.md tell the rest.
"""
import importlib

from .catalogue import profiles, shapes
from .front import batch, check, section
from .results import Field, Fields, Mesh, Record, Section, SectionError

__version__ = "1.1.0"
__all__ = ["Field", "Fields", "Mesh", "Record", "Section", "SectionError", "batch", "check", "core", "profiles", "section",
           "shapes"]


def __getattr__(name):  # loaded where it is asked for
    if name == "core":
        return importlib.import_module(".core", __name__)
    raise AttributeError(f"module {__name__!r} has no attribute {name!r}")


def __dir__():
    return sorted({*globals(), "core"})
