#!/usr/bin/env bash
# The pages as HTML with their pictures, which link one another, by pandoc; formulas are MathML. Nothing else is loaded.
#   docs/html/make.sh <folder to be made>
set -euo pipefail
output=$(realpath -m "$1")
cd "$(dirname "$0")/../.."
rm -rf "$output"
mkdir -p "$output"
pages=(README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md bindings/README.md docs/*.md)
export PAGES="${pages[*]}"
for page in "${pages[@]}"; do
    made=$output/${page%.md}.html
    [ "$(basename "$page")" != README.md ] || made=$output/$(dirname "$page")/index.html
    root=$([ "$(dirname "$page")" = . ] || echo ../)
    mkdir -p "$(dirname "$made")"
    pandoc --from gfm+tex_math_dollars --to html5 --mathml --no-highlight --wrap=preserve --fail-if-warnings \
        --template docs/html/page.html --variable root="$root" --lua-filter docs/html/links.lua \
        --output "$made" "$page"
done
cp docs/html/page.css "$output"
find docs -type f \( -name '*.svg' -o -name '*.png' \) -exec cp --parents {} "$output" \;
