#!/usr/bin/env bash
# The dynamic symbol tables of the two libraries define the routines of their headers and nothing else, the second takes
# from the first its one routine, and the first asks the C library for no function that rounds as the processor has it.
#   check_exports.sh <library> <library of levels>
set -euo pipefail

# check <library> <names for others> <names that no language runtime has>
check() {
    exported=$(nm -D --defined-only "$1" | awk '$2 != "A" {print $NF}' | sort | xargs)
    imported=$(nm -D --undefined-only "$1" | awk '$1 == "U" && $2 !~ /@/ {print $2}' | xargs)
    echo "exported: $exported, imported: $imported"
    [ "$exported" = "$2" ]
    [ "$imported" = "$3" ]
}
check "$1" vq_velquor ""
check "$2" "vq_check vq_levels vq_levels_watched vq_reason" vq_velquor
! nm -D --undefined-only "$1" | grep -Ew 'a?(sin|cos|tan)h?|atan2|sincos|exp(2|10|m1)?|log(2|10|1p)?|pow|cbrt|hypot'
