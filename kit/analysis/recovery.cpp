#include "kit/analysis/recovery.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

#include "kit/analysis/patch.h"
#include "kit/section/vectors.h"

namespace velquor {

namespace {

constexpr int RINGS = 4;                  // of elements, by which a patch grows until it tells a polynomial
constexpr double FRESH = 0.125;           // of the largest stress, by which two levels may differ without a third
constexpr double SECOND_ORDER = 1 / 3.0;  // of the difference of two levels, what is left of the finer one's error

int corners_of(const std::array<std::int32_t, 4>& element) { return element[2] == element[3] ? 3 : 4; }

// Spots of a level: those of the level before, then a new one for each node in each zone that an element brings.
void take_spots(const RecoveredLevel* coarser, const std::vector<std::int32_t>& zones, const std::int32_t* ELEMENTS,
                std::size_t NELEMS, RecoveredLevel& level) {
    std::vector<std::int32_t> first(level.nodes.size(), -1), next;  // of each node and on from each spot
    const auto add = [&](std::int32_t node, std::int32_t zone) {
        const auto spot = static_cast<std::int32_t>(level.node.size());
        level.node.push_back(node);
        level.zone.push_back(zone);
        next.push_back(first[node]);
        return first[node] = spot;
    };
    for (std::size_t i = 0; coarser && i < coarser->node.size(); ++i) add(coarser->node[i], coarser->zone[i]);
    level.elements.resize(NELEMS);
    const std::size_t parts = NELEMS / zones.size();
    for (std::size_t e = 0; e < NELEMS; ++e)
        for (std::size_t k = 0; k < 4; ++k) {
            const std::int32_t node = ELEMENTS[k * NELEMS + e] - 1, zone = zones[e / parts];
            std::int32_t spot = first[node];
            while (spot >= 0 && level.zone[spot] != zone) spot = next[spot];
            level.elements[e][k] = spot >= 0 ? spot : add(node, zone);
        }
}

// Warping at the spots in the host's axes: of a unit twist, and of unit shear strains along Y and Z.
std::vector<std::array<double, 3>> warping_of(const RecoveredLevel& level, const double* RESULT,
                                              const double* NODEOUT) {
    const double c = std::cos(RESULT[VQ_ALPHA]), s = std::sin(RESULT[VQ_ALPHA]);
    const std::size_t nodes = level.nodes.size();
    std::vector<std::array<double, 3>> warping(level.node.size());
    for (std::size_t i = 0; i < warping.size(); ++i) {
        const auto node = static_cast<std::size_t>(level.node[i]);
        const double u = NODEOUT[nodes + node], v = NODEOUT[2 * nodes + node];
        warping[i] = {NODEOUT[node], c * u - s * v, s * u + c * v};
    }
    return warping;
}

// What comes from the corners of elements: their mean shear stress of the warping torque, and the axial stresses,
// which are the same in all elements of a zone; those of moments turned into the host's axes.
void take_corners(const double* RESULT, const double* ELEMOUT, const Neighbours& around, RecoveredLevel& level) {
    const double c = std::cos(RESULT[VQ_ALPHA]), s = std::sin(RESULT[VQ_ALPHA]);
    for (std::size_t i = 0; i < level.unit.size(); ++i) {
        std::array<double, 12>& unit = level.unit[i];
        const std::int32_t begin = around.begin[i], end = around.begin[i + 1];
        for (std::int32_t k = begin; k < end; ++k) {
            const auto e = static_cast<std::size_t>(around.element[k]);
            const std::array<std::int32_t, 4>& corners = level.elements[e];
            const auto corner = std::find(corners.begin(), corners.end(), static_cast<std::int32_t>(i));
            const double* stress = ELEMOUT + 48 * e + 12 * static_cast<std::size_t>(corner - corners.begin());
            unit[6] += stress[6] / (end - begin);
            unit[7] += stress[7] / (end - begin);
            const double* sigma = stress + 8;
            unit[8] = sigma[0];
            unit[9] = c * sigma[1] - s * sigma[2];
            unit[10] = s * sigma[1] + c * sigma[2];
            unit[11] = sigma[3];
        }
    }
}

// Spots on the border of their zone: there the elements around begin and end.
std::vector<char> border_of(const RecoveredLevel& level) {
    std::vector<std::int64_t> turn(level.node.size());
    for (const std::array<std::int32_t, 4>& c : level.elements) {
        const int n = corners_of(c);
        for (int k = 0; k < n; ++k) turn[c[k]] += c[(k + 1) % n] - c[(k + n - 1) % n];
    }
    std::vector<char> border(turn.size());
    for (std::size_t i = 0; i < turn.size(); ++i) border[i] = turn[i] != 0;
    return border;
}

// The polynomials of the warping fields at a spot, from a patch that grows until it tells them. On borders, where it
// lies on one side, a cubic takes the place of the quadratic one.
std::array<Fit, 3> fits_at(const RecoveredLevel& level, const Neighbours& around, std::int32_t spot, bool border,
                           const std::vector<std::array<double, 3>>& fields) {
    std::array<Fit, 3> fits;
    std::vector<Point> points;
    std::vector<double> values;
    Patch patch{{spot}, {}};
    for (int ring = 1; ring <= RINGS; ++ring) {
        grow(around, level.elements, patch);
        points.clear();
        values.clear();
        for (const std::int32_t i : patch.spots) {
            points.push_back(level.nodes[level.node[i]]);
            values.insert(values.end(), fields[i].begin(), fields[i].end());
        }
        if (fit(border ? 3 : 2, points.front(), points, values, 3, false, fits.data())) return fits;
    }
    fit(2, points.front(), points, values, 3, true, fits.data());
    return fits;
}

RecoveredLevel recovered(const Recovery& recovery, const double* NODES, std::size_t NNODES,
                         const std::int32_t* ELEMENTS, std::size_t NELEMS, const double* PROPS, const double* RESULT,
                         const double* NODEOUT, const double* ELEMOUT) {
    RecoveredLevel level;
    level.nodes.resize(NNODES);
    for (std::size_t i = 0; i < NNODES; ++i) level.nodes[i] = {NODES[i], NODES[NNODES + i]};
    take_spots(recovery.levels.empty() ? nullptr : &recovery.levels.back(), recovery.zones, ELEMENTS, NELEMS, level);
    level.unit.resize(level.node.size());

    std::vector<double> G(recovery.materials.size());  // of each zone
    const std::size_t parts = NELEMS / recovery.zones.size();
    for (std::size_t e = 0; e < NELEMS; ++e) G[recovery.zones[e / parts]] = PROPS[(VQ_GMOD - 1) * NELEMS + e];
    const std::vector<std::array<double, 3>> warping = warping_of(level, RESULT, NODEOUT);

    // Unit forces along Y and Z by their strains: the inverse of the stiffnesses in these axes.
    const double c = std::cos(RESULT[VQ_ALPHA]), s = std::sin(RESULT[VQ_ALPHA]);
    const double KY = RESULT[VQ_GAY], KZ = RESULT[VQ_GAZ];
    const double KYZ = c * s * (RESULT[VQ_GAU] - RESULT[VQ_GAV]) + (c * c - s * s) * RESULT[VQ_GAUV];
    const double D = KY * KZ - KYZ * KYZ, torsion = RESULT[VQ_GJ];
    const Point centre = {RESULT[VQ_SCY], RESULT[VQ_SCZ]};

    level.border = border_of(level);
    const Neighbours around = neighbours_of(level.elements, level.node.size());
    take_corners(RESULT, ELEMOUT, around, level);
    for (std::size_t i = 0; i < level.node.size(); ++i) {
        const auto spot = static_cast<std::int32_t>(i);
        const Point at = level.nodes[level.node[i]];
        const std::array<Fit, 3> w = fits_at(level, around, spot, level.border[i], warping);
        const double g = G[level.zone[i]];
        const Point r = at - centre;
        std::array<double, 12>& unit = level.unit[i];
        unit[0] = g / torsion * (w[0].slope_y - r.z);
        unit[1] = g / torsion * (w[0].slope_z + r.y);
        const double yy = g * (w[1].slope_y + 1), yz = g * w[1].slope_z, zy = g * w[2].slope_y,
                     zz = g * (w[2].slope_z + 1);
        unit[2] = (KZ * yy - KYZ * zy) / D;
        unit[3] = (KZ * yz - KYZ * zz) / D;
        unit[4] = (KY * zy - KYZ * yy) / D;
        unit[5] = (KY * zz - KYZ * yz) / D;
    }
    return level;
}

// What the finest level's stresses are to be corrected by: for spots of the level before it from both, for those of
// the finest alone from the corners of the element in which they are new.
std::vector<std::array<double, 12>> corrections(const std::vector<RecoveredLevel>& levels) {
    const RecoveredLevel& fine = levels.back();
    std::vector<std::array<double, 12>> to(fine.unit.size());
    if (levels.size() < 2) return to;
    const RecoveredLevel& coarse = levels[levels.size() - 2];
    const RecoveredLevel* first = levels.size() > 2 ? &levels[levels.size() - 3] : nullptr;
    // Corner stresses of triangles are of first order, and on borders their mean is too.
    std::vector<char> first_order(coarse.unit.size());
    for (const std::array<std::int32_t, 4>& c : coarse.elements)
        for (const std::int32_t spot : c) first_order[spot] |= corners_of(c) == 3 && coarse.border[spot];
    // Pairs of shear stresses, then axial ones, each as one thing that falls or does not.
    constexpr int ENDS[] = {0, 2, 4, 6, 8, 9, 10, 11, 12};
    const auto change = [&](std::size_t i, int k, const RecoveredLevel& of, const RecoveredLevel* since) {
        double sum = 0;
        for (int j = ENDS[k]; j < ENDS[k + 1]; ++j) {
            const double d = of.unit[i][j] - (since ? since->unit[i][j] : 0);
            sum += d * d;
        }
        return std::sqrt(sum);
    };
    for (int k = 0; k < 8; ++k) {
        double largest = 0;
        for (std::size_t i = 0; i < fine.unit.size(); ++i) largest = std::max(largest, change(i, k, fine, nullptr));
        for (std::size_t i = 0; i < coarse.unit.size(); ++i) {
            const double before = first && i < first->unit.size() ? change(i, k, coarse, first) : FRESH * largest;
            if (change(i, k, fine, &coarse) > before) continue;
            for (int j = ENDS[k]; j < ENDS[k + 1]; ++j)
                to[i][j] = (k == 3 && first_order[i] ? 1 : SECOND_ORDER) * (fine.unit[i][j] - coarse.unit[i][j]);
        }
    }
    std::vector<char> done(to.size());
    std::fill_n(done.begin(), coarse.unit.size(), 1);
    const auto halfway = [&](std::int32_t spot, std::initializer_list<std::int32_t> ends) {
        if (done[spot]) return;
        done[spot] = 1;
        for (const std::int32_t end : ends)
            for (std::size_t j = 0; j < 12; ++j) to[spot][j] += to[end][j] / static_cast<double>(ends.size());
    };
    for (std::size_t e = 0; e < coarse.elements.size(); ++e) {
        const std::array<std::int32_t, 4>& c = coarse.elements[e];
        const int n = corners_of(c);
        for (int k = 0; k < n; ++k) {
            const std::array<std::int32_t, 4>& part = fine.elements[4 * e + k];
            halfway(part[(k + 1) % n], {c[k], c[(k + 1) % n]});
            if (n == 4) halfway(part[(k + 2) % 4], {c[0], c[1], c[2], c[3]});
        }
    }
    return to;
}

}  // namespace

Recovery recovery_of(const Section& section, const Mesh& mesh) {
    Recovery r;
    const std::map<std::int32_t, std::size_t> part_of = parts_of_owners(section, mesh);
    std::map<std::tuple<std::int32_t, int, double>, std::int32_t> known;
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        const Part& part = section.parts[part_of.at(mesh.owners[e])];
        const auto material = static_cast<std::int32_t>(material_of(section, mesh, static_cast<std::int32_t>(e + 1)));
        const bool alone = part.factor < 1;
        const auto zone = static_cast<std::int32_t>(r.materials.size());
        const auto [at, is_new] = known.try_emplace({material, alone ? part.group : 0, alone ? part.factor : 1}, zone);
        if (is_new) r.materials.push_back(material);
        r.zones.push_back(at->second);
    }
    return r;
}

void recover_level(void* recovery, const double* NODES, std::int32_t NNODES, const std::int32_t* ELEMENTS,
                   std::int32_t NELEMS, const double* PROPS, const double* RESULT, const double* NODEOUT,
                   const double* ELEMOUT) {
    auto& r = *static_cast<Recovery*>(recovery);
    if (r.failed) return;
    try {
        r.levels.push_back(recovered(r, NODES, static_cast<std::size_t>(NNODES), ELEMENTS,
                                     static_cast<std::size_t>(NELEMS), PROPS, RESULT, NODEOUT, ELEMOUT));
    } catch (...) {
        r.failed = std::current_exception();
    }
}

Field field_of(const Recovery& r, const Tables& tables, const std::vector<double>& reach, bool warps) {
    if (r.failed) std::rethrow_exception(r.failed);
    const RecoveredLevel &first = r.levels.front(), &finest = r.levels.back();
    Field f;
    f.unit = corrections(r.levels);
    const double L = tables.scale, area = L * L, moment = area * L;
    const double factors[12] = {moment, moment, area, area,   area,   area,
                                moment, moment, area, moment, moment, moment * L};
    for (std::size_t i = 0; i < f.unit.size(); ++i)
        for (std::size_t j = 0; j < 12; ++j) f.unit[i][j] = factors[j] * (finest.unit[i][j] + f.unit[i][j]);
    for (std::array<double, 12>& unit : f.unit)
        if (!warps) unit[6] = unit[7] = unit[11] = 0;
    f.elements = finest.elements;
    f.coarse = first.elements;
    f.coarse_spots = first.node.size();
    // Without the nodes that no element has: those of bars.
    std::vector<std::int32_t> number(finest.nodes.size(), -1);
    for (const std::int32_t node : finest.node) number[node] = 0;
    for (std::size_t i = 0; i < number.size(); ++i) {
        if (number[i] < 0) continue;
        number[i] = static_cast<std::int32_t>(f.nodes.size());
        f.nodes.push_back(1 / L * finest.nodes[i] + tables.origin);
        if (i < first.nodes.size()) f.coarse_nodes = f.nodes.size();
    }
    f.sharp.resize(finest.node.size());
    f.near_sharp.resize(finest.node.size());
    for (std::size_t i = 0; i < finest.node.size(); ++i) {
        const std::int32_t node = finest.node[i];
        f.spots.push_back({number[node], r.materials[finest.zone[i]]});
        f.sharp[i] = static_cast<std::size_t>(node) < reach.size() && reach[node] > 0;
    }
    const std::size_t parts = f.elements.size() / f.coarse.size();
    for (std::size_t n = 0; n < reach.size(); ++n) {
        if (reach[n] == 0) continue;
        const Point corner = 1 / L * first.nodes[n] + tables.origin;
        for (std::size_t e = 0; e < f.coarse.size(); ++e) {
            const auto is_near = [&](std::int32_t spot) {
                return length(f.nodes[f.spots[spot].node] - corner) <= reach[n];
            };
            if (std::none_of(f.coarse[e].begin(), f.coarse[e].end(), is_near)) continue;
            for (std::size_t part = e * parts; part < (e + 1) * parts; ++part)
                for (const std::int32_t spot : f.elements[part]) f.near_sharp[spot] |= is_near(spot);
        }
    }
    return f;
}

}  // namespace velquor
