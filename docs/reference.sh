#!/usr/bin/env bash
# Writes the reference by doxygen into <folder>/html; fails on any warning.
#   reference.sh <folder>
set -euo pipefail
mkdir -p "$1"
folder=$(cd "$1" && pwd)
cd "$(dirname "${BASH_SOURCE[0]}")/.."
{
    cat docs/Doxyfile
    printf 'OUTPUT_DIRECTORY = "%s"\n' "$folder"
} | doxygen -
