#!/usr/bin/env bash
# Installs the libraries, moves the tree, where the second finds the first beside itself, and builds and runs C hosts
# against it, and a C++ host of the kit where it is built.
#   check_package.sh <cmake> <build folder> <1: with the kit, 0: without>
set -euo pipefail
cmake=$1 build=$2 kit=$3
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

"$cmake" --install "$build" --prefix "$scratch/first" >/dev/null
[ -s "$scratch/first/share/doc/velquor/copyright" ] || { echo "no licences" >&2 && exit 1; }
mv "$scratch/first" "$scratch/moved"
loaded=$(env -u LD_LIBRARY_PATH ldd "$(find "$scratch/moved" -name libvelquor-levels.so)")
grep -qF " => $scratch/moved/" <<<"$loaded" || { echo "$loaded" >&2 && exit 1; }
"$here/build_hosts.sh" "$cmake" "$scratch/moved" "$scratch/host"
[ "$kit" = 0 ] || env -u LD_LIBRARY_PATH "$here/build_kit_host.sh" "$cmake" "$scratch/moved" "$scratch/kit"
