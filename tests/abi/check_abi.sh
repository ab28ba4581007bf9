#!/usr/bin/env bash
# The headers are strict C99 and C++11. Hosts in C, Fortran and Python agree with them on every offset, name and value, and
# get the same bits for the same section; those in Fortran and Python use the bindings.
#   check_abi.sh <library> <library of levels> <python with numpy>
set -euo pipefail
library=$1 levels=$2 python=$3
here=$(cd "$(dirname "$0")" && pwd)
headers=("$here"/../../{api/velquor.h,levels/velquor_levels.h}) bindings=$here/../../bindings
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

strict=(-Wall -Wextra -Wpedantic -Werror -I "$here/../../api" -I "$here/../../levels" -I "$here")
echo '#include <velquor_levels.h>' >"$scratch/alone.c"
cc -std=c99 "${strict[@]}" -fsyntax-only "$scratch/alone.c"
c++ -std=c++11 "${strict[@]}" -fsyntax-only -x c++ "$scratch/alone.c"

link=("$library" "$levels" -Wl,-rpath,"$(dirname "$library")")
cc -std=c99 "${strict[@]}" "$here/host.c" -o "$scratch/host_c" "${link[@]}"
gfortran -std=f2018 -Wall -Wextra -Werror -J "$scratch" -c "$bindings/fortran/velquor.f90" -o "$scratch/velquor.o"
gfortran -std=f2018 -cpp -ffree-line-length-none -J "$scratch" -I "$here" "$here/host.f90" "$scratch/velquor.o" \
    -o "$scratch/host_f" "${link[@]}"
"$scratch/host_c" "$here/section.txt" >"$scratch/c"
"$scratch/host_f" "$here/section.txt" >"$scratch/fortran"
VELQUOR_LIBRARY=$library "$python" -B "$here/host.py" "$bindings/python" "$here/names.inc" "$here/section.txt" \
    "${headers[@]}" >"$scratch/python"
cmp "$scratch/c" "$scratch/fortran"
cmp "$scratch/c" "$scratch/python"
echo "$(wc -l <"$scratch/c") lines alike from C, Fortran and Python"
