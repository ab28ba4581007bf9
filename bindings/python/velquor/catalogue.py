"""What the command knows by name: rolled profiles, parametric shapes, values."""
import functools
import json
import subprocess
from typing import Any, Dict, List, Optional

from .places import find_command


def profiles(text: str = "", command: Optional[str] = None) -> List[str]:
    """The names of rolled profiles that contain the text, whatever its blanks and capitals."""
    names = (profile[0] for family in catalogue_of(find_command(command))["families"] for profile in family["profiles"])
    return [name for name in names if _plain(text) in _plain(name)]


def shapes(command: Optional[str] = None) -> Dict[str, Dict[str, str]]:
    """The parametric shapes by their names: for each parameter what it means, "optional" where a shape does without."""
    return {shape["name"]: {parameter["name"]: parameter["meaning"] + ("" if parameter["required"] else ", optional")
                            for parameter in shape["parameters"]}
            for shape in catalogue_of(find_command(command))["shapes"]}


@functools.lru_cache(maxsize=4)
def catalogue_of(command: str) -> Dict[str, Any]:
    """As `velquor catalogue` writes it; not to be changed. Throws OSError where the program has none."""
    done = subprocess.run([command, "catalogue"], capture_output=True, encoding="utf-8")
    try:
        return dict(json.loads(done.stdout))
    except ValueError:
        raise OSError(f"velquor: {command} has no catalogue; is it velquor, of this package's version?") from None


def _plain(name: str) -> str:
    return "".join(name.split()).lower()
