#!/usr/bin/env bash
# Lines of tests and fuzz targets beside those of all other code, what makes the validation's page and the benchmarks among
# it: fails where they are more than a third of it. Lines that are not blank, comments among them; data (JSON, corpus,
# drawings, pages) is not counted.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

lines() {
    find "$@" \( -name build -o -name node_modules \) -prune -o -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.inl' \
        -o -name '*.c' -o -name '*.py' -o -name '*.f90' -o -name '*.js' -o -name '*.mjs' -o -name '*.html' -o -name '*.css' \
        -o -name '*.sh' -o -name '*.cmake' -o -name CMakeLists.txt \) -exec cat {} + | grep -c '[^[:space:]]'
}

check=validation/check_refusals.sh
tests=$(lines tests fuzz $check)
code=$(($(lines api data section element system linalg levels kit tool page bindings examples bench cmake validation) - $(lines $check)))
echo "tests: $tests lines beside $code of other code, $((100 * tests / code)) %"
[ $((3 * tests)) -le "$code" ] || { echo "more than a third: merge tests, and drop those that restate code"; exit 1; }
