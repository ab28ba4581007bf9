#!/usr/bin/env bash
# Installs the library, moves the tree, and builds and runs a C host against it.
#   check_package.sh <cmake> <build folder>
set -euo pipefail
cmake=$1 build=$2
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

"$cmake" --install "$build" --prefix "$scratch/first" >/dev/null
[ -s "$scratch/first/share/doc/velquor/copyright" ] || { echo "no licences" >&2 && exit 1; }
mv "$scratch/first" "$scratch/moved"
"$here/build_hosts.sh" "$cmake" "$scratch/moved" "$scratch/host"
