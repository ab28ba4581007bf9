"""Where the libraries and the command are that this package was installed with."""
import os
import shutil
import sys
from pathlib import Path
from typing import Optional

HERE = Path(__file__).resolve().parent
IN_WHEEL = (HERE / "lib").is_dir()
INSTALLED = HERE.parts[-4:-1] == ("share", "velquor", "python") or HERE.parts[-4:-1] == ("lib", "python3", "dist-packages")
PREFIX = HERE if IN_WHEEL else HERE.parents[3] if INSTALLED else None  # None: in the sources
BUILD = HERE.parents[2] / "build" / "release" if HERE.parts[-3:-1] == ("bindings", "python") else None  # of the sources


def find_command(command: Optional[str] = None) -> str:
    """The program's path. Throws OSError where there is none."""
    wanted = os.fspath(command or os.environ.get("VELQUOR_COMMAND") or "")
    folders = os.get_exec_path()
    if IN_WHEEL:  # its own script velquor is no command
        folders = [folder for folder in folders if Path(folder).resolve() != Path(sys.prefix, "bin").resolve()]
    own = PREFIX / "bin" if PREFIX else BUILD / "tool" if BUILD else None
    beside = shutil.which(str(own / "velquor")) if own else None
    found = shutil.which(wanted) if wanted else beside or shutil.which("velquor", path=os.pathsep.join(folders))
    if not found:
        missing = f"no command {wanted or 'velquor'}"
        if IN_WHEEL and not wanted:
            missing += ", and this wheel was built without it, for want of the packages of Gmsh and others"
        raise FileNotFoundError(f"velquor: {missing}; install the package velquor, or set VELQUOR_COMMAND to the program, "
                                "or give it as `command`")
    return os.path.abspath(found)


def find_library() -> str:
    """Of libvelquor: its path where it is installed with this package, or built in its source tree, else the name by which
    the system's loader has it."""
    for folder in [PREFIX / "lib", PREFIX / "lib64"] if PREFIX else [BUILD] if BUILD else []:
        if (library := folder / "libvelquor.so.1").exists():
            return str(library)
    return "libvelquor.so.1"


def run_command() -> None:
    """The program velquor of an environment that the wheel is installed in."""
    try:
        command = find_command()
    except FileNotFoundError as error:
        sys.exit(str(error))
    os.execv(command, [command, *sys.argv[1:]])
