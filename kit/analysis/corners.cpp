#include "kit/analysis/corners.h"

#include <algorithm>
#include <limits>
#include <map>

#include "kit/section/vectors.h"

namespace velquor {

namespace {

constexpr double SHARE = 0.5;  // of the thickness
constexpr double BEHIND = 3;   // as many times further along the outline than straight: on the wall's other side
constexpr double INFINITE = std::numeric_limits<double>::infinity();

// Where a node of the outline lies on its closed line.
struct OnLine {
    std::int32_t line;
    double along, whole;
};

// By node, from 1. Of a node in which lines touch the first counts.
std::map<std::int32_t, OnLine> outline_of(const Mesh& mesh) {
    std::map<std::pair<std::int32_t, std::int32_t>, int> edges;
    for (const auto& c : mesh.elements)
        for (int k = 0; k < 4; ++k)
            if (c[k] != c[(k + 1) % 4]) ++edges[std::minmax(c[k], c[(k + 1) % 4])];
    std::map<std::int32_t, std::int32_t> next;
    for (const auto& c : mesh.elements)
        for (int k = 0; k < 4; ++k)
            if (c[k] != c[(k + 1) % 4] && edges[std::minmax(c[k], c[(k + 1) % 4])] == 1)
                next.emplace(c[k], c[(k + 1) % 4]);
    std::map<std::int32_t, OnLine> on;
    std::int32_t line = 0;
    for (const auto& [first, unused] : next) {
        if (on.count(first) > 0) continue;
        std::vector<std::int32_t> nodes;
        double along = 0;
        for (std::int32_t node = first; on.count(node) == 0;) {
            on[node] = {line, along, 0};
            nodes.push_back(node);
            const auto to = next.find(node);
            if (to == next.end()) break;
            along += length(mesh.nodes[to->second - 1] - mesh.nodes[node - 1]);
            node = to->second;
        }
        for (const std::int32_t node : nodes) on[node].whole = along;
        ++line;
    }
    return on;
}

}  // namespace

std::vector<double> reach_of_corners(const Mesh& mesh, const std::vector<std::int32_t>& sharp) {
    std::vector<double> reach(mesh.nodes.size(), 0);
    if (std::find(sharp.begin(), sharp.end(), 1) == sharp.end()) return reach;
    const std::map<std::int32_t, OnLine> outline = outline_of(mesh);
    for (std::size_t i = 0; i < reach.size(); ++i) {
        if (!sharp[i]) continue;
        const auto here = outline.find(static_cast<std::int32_t>(i + 1));
        double thickness = INFINITE;
        for (const auto& [node, at] : outline) {
            const double straight = length(mesh.nodes[node - 1] - mesh.nodes[i]);
            double along = INFINITE;
            if (here != outline.end() && here->second.line == at.line) {
                const double one_way = std::abs(at.along - here->second.along);
                along = std::min(one_way, at.whole - one_way);
            }
            if (straight > 0 && along >= BEHIND * straight) thickness = std::min(thickness, straight);
        }
        if (thickness < INFINITE) reach[i] = SHARE * thickness;
    }
    for (const auto& c : mesh.elements)
        for (int k = 0; k < 4; ++k)
            for (const std::int32_t node : {c[k], c[(k + 1) % 4]})
                if (sharp[node - 1])
                    reach[node - 1] =
                        std::max(reach[node - 1], length(mesh.nodes[c[k] - 1] - mesh.nodes[c[(k + 1) % 4] - 1]));
    return reach;
}

}  // namespace velquor
