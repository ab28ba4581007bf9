#!/usr/bin/env bash
# Makes a source archive that can be configured, and of it and a built tree a wheel; installs it into a virtual environment,
# and calculates there with nothing set; then does without the command, as where the kit's packages were missing.
#   check_wheel.sh <python> <build folder> <version> <1: with the command, 0: without>
set -euo pipefail
python=$1 build=$2 version=$3 command=$4
cd "$(dirname "$0")/../.."
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { echo "$1" >&2 && exit 1; }
expect() { [ "$2" = "$3" ] || fail "$1: $2, expected: $3"; }
unset VELQUOR_COMMAND VELQUOR_LIBRARY LD_LIBRARY_PATH PYTHONPATH

VELQUOR_BUILD=$build "$python" -m build --no-isolation --outdir "$scratch" . >"$scratch/log" 2>&1 ||
    fail "$(tail -n 30 "$scratch/log")"
wheel=$(echo "$scratch"/*.whl)
expect "the wheel" "$(basename "$wheel")" "velquor-$version-py3-none-linux_$(uname -m).whl"
tar -C "$scratch" -xf "$scratch/velquor-$version.tar.gz"
cmake -S "$scratch/velquor-$version" -B "$scratch/configured" -DVQ_BUILD_TESTS=OFF >"$scratch/log" 2>&1 ||
    fail "$(tail -n 30 "$scratch/log")"
"$python" -m venv --system-site-packages "$scratch/environment"
inside=$scratch/environment/bin
"$inside/pip" install --quiet --no-index "$wheel"
told() { (cd / && "$inside/python" -c "$1" 2>&1 | tail -n 1); }
package=$(told 'import velquor; print(*velquor.__path__)')
[[ $package == "$scratch"/environment/* ]] || fail "another package: $package"
expect "what it declares" "$(told 'from importlib.metadata import requires, version
print(version("velquor"), requires("velquor")[0])')" "$version numpy"
expect "the library on a mesh" "$(told 'from velquor import core
print(core.calculate([(0, 0), (2, 0), (2, 4), (0, 4)], [(1, 2, 3, 4)], core.property_table(1, EMOD=1, GMOD=1), levels=2).EA)')" 8.0
if [ "$command" = 1 ]; then
    expect "a profile" "$(told 'import velquor; print(velquor.section("IPE 300", values=["A"]))')" \
        "<velquor.Section 'IPE 300': A 5381.2 mm2>"
    expect "the command" "$(cd / && "$inside/velquor" --version | head -n 1)" "velquor $version"
    rm "$package/bin/velquor"
fi
without=$(cd / && PATH=$inside "$inside/python" -c 'import velquor; velquor.section("IPE 300")' 2>&1 || true)
[[ $without == *"this wheel was built without it"* ]] || fail "nothing told of the command that is missing: $without"
without=$(cd / && PATH=$inside "$inside/velquor" --version 2>&1 && fail "a command that is missing" || true)
[[ $without == "velquor: no command"* ]] || fail "nothing told of the command that is missing: $without"
