"""Runs the commands of docs/pictures.md, and puts the pictures that they make into a folder; into its folder sections/
small ones of the sections of the validation.

    pictures.py <folder of the command velquor> <folder for the pictures>
"""
import json
import re
import subprocess
import sys
from pathlib import Path

docs = Path(__file__).resolve().parent
tool, folder = Path(sys.argv[1]).resolve(), Path(sys.argv[2])
(folder / "sections").mkdir(parents=True, exist_ok=True)
commands = re.findall(r"^\$ velquor (draw .* -o )(\S+)$", (docs / "pictures.md").read_text(), re.MULTILINE)
for command, name in commands:
    subprocess.run(["bash", "-c", f'"$0" {command}"$1"', tool / "velquor", folder.resolve() / name], check=True, cwd=docs.parent)
for file in sorted((docs.parent / "validation" / "sections").glob("*.json")):
    section = json.dumps(json.loads(file.read_text())["section"])
    subprocess.run([tool / "velquor", "draw", "-", "--plain", "-o", folder / "sections" / f"{file.stem}.svg"],
                   input=section, text=True, check=True)
for known in folder.glob("*.*"):
    if known.name not in {name for _, name in commands}:
        known.unlink()
