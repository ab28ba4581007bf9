#!/usr/bin/env bash
# What the runner says of wrong files, of a value out of its tolerance, and of results that are not there.
#     check_refusals.sh RUNNER
set -euo pipefail
runner=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

good='{"about": "a", "units": "u", "section": {"name": "t", "materials": [{"name": "m", "E": 2, "G": 1}, {"name": "steel", "E": 3}],
  "parts": [{"material": "m", "outline": [[0, 0], [6, 0], [6, 2], [0, 2]]}],
  "bars": [{"at": [1, 1], "area": 0.1, "material": "steel", "as_point": true}]}, "mesh": {"size": 1,
  "parts": [{"shape": "rectangle", "from": [0, 0], "to": [4, 2]}, {"shape": "rectangle", "from": [4, 0], "to": [6, 2]}]},
 "expected": [{"name": "A", "slot": "EA", "over": "EREF", "value": 12.05, "tolerance": 1e-9, "source": "s"}]}'

# expect CODE TEXT OLD NEW: with OLD replaced by NEW the runner ends with CODE and says TEXT
expect() {
    local code=0
    printf '%s\n' "${good/"$3"/"$4"}" >"$folder/section.json"
    "$runner" "$folder/section.json" >"$folder/out" 2>&1 || code=$?
    if [ "$code" != "$1" ] || ! grep -qF -- "$2" "$folder/out"; then
        printf 'with %s: %s instead of %s, "%s"\n' "$4" "$code" "$1" "$2"
        cat "$folder/out"
        exit 1
    fi
}

expect 0 'ok' '' ''
expect 1 'OUT' '12.05' '12.06'
expect 2 'expected 1: unknown slot "AE"' '"EA"' '"AE"'
expect 2 'unknown key "unit"' '"units": "u"' '"units": "u", "unit": 1'
expect 2 'unknown key "sise"' '"units": "u"' '"units": "u", "sise": 1'
expect 2 'shape 1 (rectangle): unknown key "form"' '"from": [0, 0]' '"from": [0, 0], "form": 1'
expect 2 'shape 1: unknown shape "rectangel"' 'rectangle' 'rectangel'
expect 2 'shape 1: unknown material "n"' '"shape": "rectangle"' '"shape": "rectangle", "material": "n"'
expect 2 'section: bar 1: unknown material "stele"' '"material": "steel"' '"material": "stele"'
expect 2 'section: material 1: "E" is missing' '"E": 2, ' ''
expect 2 'columns: unknown key "EMOD"' '"size": 1,' '"size": 1, "columns": {"m": {"EMOD": 3}},'
expect 2 ': parts of one material' '"parts": [' '"parts": [{"outline": [], "group": 2}, '
expect 2 '"tolerance" is missing' '"tolerance": 1e-9, ' ''
expect 2 '"order" is not from 1 to 2' '"source": "s"' '"source": "s", "order": 3'
expect 1 'OUT' '"value": 12.05, "tolerance": 1e-9' '"value": 12, "tolerance": 0.005, "order": 1'
expect 2 'no node is near 9.0' '"slot": "EA", "over": "EREF"' '"warping": 1, "at": [9, 1]'
expect 2 'expected 1: "value" is not a number' '12.05' '"12.05"'
expect 2 'one of "slot", "stress", "bar", "warping"' '"slot": "EA"' '"slot": "EA", "bar": 1'
expect 2 '"outline" is neither true nor false' '"source": "s"' '"source": "s", "outline": 1'
expect 2 'parse error' '"size": 1,' '"size": 1'
expect 2 'touch at 4.0' '"to": [6, 2]' '"to": [6, 1.5]'
expect 2 'lies in no element' '[1, 1]' '[1, 3]'
expect 2 'no results (status 1)' '"size": 1,' '"size": 1, "columns": {"m": {"MATFLAG": 0.5}},'
