#!/usr/bin/env bash
# The Fortran example compiles without a warning and prints the values of its rectangle.
#   check_fortran.sh <library> <bindings>
set -euo pipefail
library=$1 source=$2/fortran
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

gfortran -std=f2018 -Wall -Wextra -Werror -J "$scratch" "$source/velquor.f90" "$source/example.f90" \
    -o "$scratch/example" "$library" -Wl,-rpath,"$(dirname "$library")"
"$scratch/example" | tee "$scratch/printed"
awk '
    function expect(name, exact, tolerance) {
        if (value[name] !~ /^[-+.0-9E]+$/ || (value[name] / exact - 1)^2 > tolerance^2) {
            print name ": " value[name] ", expected " exact
            failed = 1
        }
    }
    { value[$1] = $2 }
    END {
        b = 120; h = 200; pi = atan2(0, -1)
        for (n = 1; n < 20; n += 2) {  # series of Saint-Venant
            x = exp(-n * pi * h / b)
            series += (1 - x) / (1 + x) / n^5
        }
        expect("A", b * h, 1e-6)
        expect("Iy", b * h^3 / 12, 1e-6)
        expect("It", h * b^3 * (1 / 3 - 64 / pi^5 * b / h * series), 1e-3)
        expect("Asz", 5 / 6 * b * h, 1e-3)
        expect("sig", 1e6 * 6 / (b * h^2), 1e-4)
        exit failed
    }' "$scratch/printed"
