#!/usr/bin/env bash
# The dynamic symbol table of the library defines vq_velquor and nothing else.
set -euo pipefail
symbols=$(nm -D --defined-only "$1" | awk '$2 != "A" {print $NF}')
echo "exported: $symbols"
[ "$symbols" = vq_velquor ]
