#!/usr/bin/env bash
# The dynamic symbol table of the library defines vq_velquor and nothing else, and asks the C library for no function that
# rounds as the processor has it.
set -euo pipefail
symbols=$(nm -D --defined-only "$1" | awk '$2 != "A" {print $NF}')
echo "exported: $symbols"
[ "$symbols" = vq_velquor ]
! nm -D --undefined-only "$1" | grep -Ew 'a?(sin|cos|tan)h?|atan2|sincos|exp(2|10|m1)?|log(2|10|1p)?|pow|cbrt|hypot'
