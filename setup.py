"""The wheel holds the package, the two libraries and, where the kit's packages are there to build it, the command.

CMake builds them in build/wheel; or they are taken from the build folder that the environment variable VELQUOR_BUILD names.
"""
import os
import re
import shlex
import shutil
import subprocess
import tempfile
from pathlib import Path

from setuptools import setup
from setuptools.command.build_py import build_py
from setuptools.dist import Distribution
from wheel.bdist_wheel import bdist_wheel

root = Path(__file__).resolve().parent
built = os.environ.get("VELQUOR_BUILD")
build = Path(built or root / "build/wheel").resolve()
work = build / "python"  # of setuptools
work.mkdir(parents=True, exist_ok=True)


class BuildWithLibraries(build_py):
    def run(self):
        super().run()
        if not built:
            subprocess.run(["cmake", "-S", root, "-B", build, "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_INSTALL_LIBDIR=lib",
                            "-DVQ_BUILD_TESTS=OFF", "-DVQ_BUILD_EXAMPLES=OFF",
                            *shlex.split(os.environ.get("CMAKE_ARGS", ""))], check=True)
            subprocess.run(["cmake", "--build", build, "--parallel", str(os.cpu_count())], check=True)
        has_command = (build / "tool/velquor").exists()
        with tempfile.TemporaryDirectory() as tree:
            subprocess.run(["cmake", "--install", build, "--prefix", tree, "--strip", "--component",
                            "tools" if has_command else "runtime"], check=True, stdout=subprocess.DEVNULL)
            files = ["lib/libvelquor.so.1", "lib/libvelquor-levels.so.1"] + ["bin/velquor"] * has_command
            for file in files:  # wheels hold no links: each library under the name that the loader asks for
                target = Path(self.build_lib, "velquor", file)
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy2(Path(tree, file), target)
        if not has_command:
            print("velquor: a wheel without the command, for want of the kit's packages: CMake has named them")


class WheelOfThisMachine(bdist_wheel):
    """Of any Python 3, as the libraries are called by ctypes; of one system and processor."""

    def get_tag(self):
        return ("py3", "none", super().get_tag()[2])


class WithLibraries(Distribution):
    def has_ext_modules(self):
        return True


header = (root / "api/velquor.h").read_text()
setup(version=".".join(re.findall(r"#define VQ_VERSION_\w+ (\d+)", header)), distclass=WithLibraries,
      cmdclass={"build_py": BuildWithLibraries, "bdist_wheel": WheelOfThisMachine},
      options={"egg_info": {"egg_base": str(work)}, "build": {"build_base": str(work)}})
