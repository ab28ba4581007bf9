"""Sections from Python by the command velquor: a description in, a dictionary of values out.

    import velquor_section as vs

    result = vs.calc("IPE 300", units="cm")
    print(result["values"]["It"]["value"], result["values"]["It"]["bound"])

    result = vs.calc({"materials": [...], "parts": [...]})   # as velquor schema has it
    for finding in vs.check(description):
        print(finding["place"], finding["message"])

The form of a result is that of `velquor schema --result`. Needs the command, and nothing but Python's own library. The
command is found by the argument `command`, else by the environment variable VELQUOR_COMMAND, else on the path.
"""
import json
import os
import subprocess


class SectionError(Exception):
    """A section without values: `place` in the description, `fault`, `remedy`; `status` 1 refused, 2 not solved."""

    def __init__(self, place, fault, remedy="", status=1):
        super().__init__("".join((f"{place}: " if place else "", fault, f"; {remedy}" if remedy else "")))
        self.place, self.fault, self.remedy, self.status = place, fault, remedy, status


def calc(section, units=None, force=None, accuracy=None, levels=None, command=None):
    """The values of a section: a description as a dictionary, a file's path, or a profile's name."""
    options = (("--units", units), ("--force", force), ("--accuracy", accuracy), ("--levels", levels))
    result = _run("calc", section, command, *(str(x) for pair in options if pair[1] is not None for x in pair))
    if "error" in result:
        raise SectionError(**result["error"])
    return result


def check(section, command=None):
    """What is wrong with a section, or seldom meant: a list of severity ("error", "warning"), place, message, remedy."""
    return _run("check", section, command)["findings"]


def _run(what, section, command, *options):
    is_text = isinstance(section, (str, os.PathLike))
    name = os.fspath(section) if is_text else "-"
    program = os.fspath(command or os.environ.get("VELQUOR_COMMAND") or "velquor")
    done = subprocess.run([program, what, name, "--json", *options], capture_output=True, encoding="utf-8",
                          input="" if is_text else json.dumps(section, allow_nan=False))
    if not done.stdout:  # the command line itself was refused, or an internal fault
        raise SectionError("", done.stderr.strip() or f"{program} ended with {done.returncode}", status=done.returncode)
    return json.loads(done.stdout)["sections"][0]
