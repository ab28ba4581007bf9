#pragma once

#include <vector>

#include "levels/velquor_levels.h"
#include "tests/section_builder.h"

// All that vq_check finds in the tables of a call.
inline std::vector<vq_finding> check(const Host& host) {
    const auto look = [&](std::int32_t CAPACITY, vq_finding* FINDINGS) {
        return vq_check(host.STATUS, host.NODES.data(), host.NNODES, host.ELEMENTS.data(), host.NELEMS,
                        host.PROPS.data(), host.NPOINTS, &host.POINTS[GUARD], host.RESULT[GUARD + VQ_MODE_SLOT],
                        CAPACITY, FINDINGS);
    };
    std::vector<vq_finding> findings(static_cast<std::size_t>(look(-1, nullptr)));
    look(static_cast<std::int32_t>(findings.size()), findings.data());
    return findings;
}
