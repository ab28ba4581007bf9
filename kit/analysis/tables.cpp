#include "kit/analysis/tables.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>

#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr int EXTENT = 10;   // lengths are scaled so that the section is 512 to 1024 across
constexpr int MODULUS = 18;  // moduli so that the reference is 131072 to 262144

double power_of_two_towards(double value, int exponent) {
    int e = 0;
    std::frexp(value, &e);
    return std::ldexp(1.0, exponent - e);
}

std::size_t material_named(const Section& s, const std::string& name) {
    for (std::size_t k = 0; k < s.materials.size(); ++k)
        if (s.materials[k].name == name) return k;
    throw Error("", "no material has the name " + name);
}

// The element that a point lies in, numbered from 1, or the nearest one: points near an arc may lie outside of all.
std::int32_t element_at(const Mesh& mesh, const Point& p) {
    std::int32_t nearest = 0;
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        double outside =
            -std::numeric_limits<double>::infinity();  // distance from the edge that it lies furthest beyond
        for (int k = 0; k < 4; ++k) {
            const Point &a = mesh.nodes[mesh.elements[e][k] - 1], &b = mesh.nodes[mesh.elements[e][(k + 1) % 4] - 1];
            if (length(b - a) > 0) outside = std::max(outside, cross(p - a, unit(b - a)));
        }
        if (outside < least) least = outside, nearest = static_cast<std::int32_t>(e + 1);
        if (least <= 0) break;
    }
    return nearest;
}

// Of each bar that is a point the element in which it lies, all of one material; 0 of the others.
std::vector<std::int32_t> hosts_of(const Section& section, const Mesh& mesh) {
    std::vector<std::int32_t> hosts(section.bars.size(), 0);
    std::size_t first = hosts.size();
    for (std::size_t i = 0; i < hosts.size(); ++i) {
        if (!section.bars[i].as_point) continue;
        hosts[i] = element_at(mesh, section.bars[i].at);
        first = std::min(first, i);
        const std::string &here = section.materials[material_of(section, mesh, hosts[i])].name,
                          &there = section.materials[material_of(section, mesh, hosts[first])].name;
        if (here != there)
            throw Error(
                place_of_bar(section, i),
                "lies in " + in_quotes(here) + ", and " + place_of_bar(section, first) + " in " + in_quotes(there),
                "bars that are points must all lie in one material: leave \"as_point\" out");
    }
    return hosts;
}

}  // namespace

void check_fits(const Section& section, const Mesh& mesh) {
    const char* const remedy = "mesh_of gives the mesh of a section";
    if (mesh.elements.empty()) throw Error("mesh", "has no elements", remedy);
    if (mesh.owners.size() != mesh.elements.size())
        throw Error("mesh", "elements and owners are not equally many", remedy);
    const std::size_t nodes = mesh.nodes.size(), owners = section.parts.size() + section.bars.size();
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        const auto& element = mesh.elements[e];
        const std::string place = "mesh.elements[" + std::to_string(e) + "]";
        if (std::any_of(element.begin(), element.end(),
                        [&](auto node) { return node < 1 || static_cast<std::size_t>(node) > nodes; }))
            throw Error(place, "has a node that there is not", remedy);
        if (mesh.owners[e] < 0 || static_cast<std::size_t>(mesh.owners[e]) >= owners)
            throw Error(place, "belongs to a part that there is not", remedy);
    }
    for (std::size_t i = 0; i < nodes; ++i)
        if (!std::isfinite(mesh.nodes[i].y) || !std::isfinite(mesh.nodes[i].z))
            throw Error("mesh.nodes[" + std::to_string(i) + "]", "has a coordinate that is no number", remedy);
}

std::size_t material_of(const Section& section, const Mesh& mesh, std::int32_t element) {
    const auto owner = static_cast<std::size_t>(mesh.owners[element - 1]), parts = section.parts.size();
    return material_named(section,
                          owner < parts ? section.parts[owner].material : section.bars[owner - parts].material);
}

std::map<std::int32_t, std::size_t> parts_of_owners(const Section& section, const Mesh& mesh) {
    std::map<std::int32_t, std::size_t> part_at, part_of;  // by node, by owner
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        const auto owner = static_cast<std::size_t>(mesh.owners[e]);
        if (owner >= section.parts.size()) continue;
        part_of.emplace(mesh.owners[e], owner);
        for (const std::int32_t node : mesh.elements[e]) part_at.emplace(node, owner);
    }
    for (std::size_t e = 0; e < mesh.elements.size(); ++e)
        for (const std::int32_t node : mesh.elements[e])
            if (const auto at = part_at.find(node); at != part_at.end()) part_of.emplace(mesh.owners[e], at->second);
    return part_of;
}

Tables tables_of(const Section& section, const Mesh& mesh) {
    Tables t;
    const bool coupled =
        std::any_of(section.parts.begin(), section.parts.end(), [](const Part& p) { return p.factor < 1; });
    Point low = mesh.nodes.front(), high = low;
    for (const Point& p : mesh.nodes) {
        low = {std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    if (!coupled) t.origin = 0.5 * (low + high);
    t.scale = power_of_two_towards(std::max(high.y - low.y, high.z - low.z), EXTENT);
    const auto material_at = [&](std::int32_t e) -> const Material& {
        return section.materials[material_of(section, mesh, e)];
    };
    const std::vector<std::int32_t> hosts = hosts_of(section, mesh);
    const std::int32_t host = hosts.empty() ? 0 : *std::max_element(hosts.begin(), hosts.end());
    t.reference =
        host > 0 ? &material_at(host) : &section.materials[material_named(section, section.parts.front().material)];
    t.modulus = power_of_two_towards(t.reference->E, MODULUS);
    t.displaced = t.reference->density - material_at(1).density;

    std::vector<Point> nodes = mesh.nodes;
    for (std::size_t i = 0; i < section.bars.size(); ++i) {
        const Bar& bar = section.bars[i];
        if (!bar.as_point) continue;
        const Material& m = section.materials[material_named(section, bar.material)];
        VYZTUZE_INFO info{};
        info.ELEMENT = hosts[i];
        nodes.push_back(bar.at);
        info.NODE = static_cast<std::int32_t>(nodes.size());
        info.AREA = bar.area * t.scale * t.scale;
        info.EMODUL = m.E * t.modulus;
        if (info.EMODUL <= 2)
            throw Error(place_of_bar(section, i),
                        "its modulus is too small beside that of " + in_quotes(t.reference->name) + " around it",
                        "leave \"as_point\" out");
        info.BARWEIGHT = (m.density - t.displaced) / (t.scale * t.scale * t.scale);
        t.bars.push_back(info);
    }
    t.nodes = static_cast<std::int32_t>(nodes.size());
    t.elements = static_cast<std::int32_t>(mesh.elements.size());
    t.NODES.resize(2 * nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        t.NODES[i] = (nodes[i].y - t.origin.y) * t.scale;
        t.NODES[nodes.size() + i] = (nodes[i].z - t.origin.z) * t.scale;
    }

    std::set<std::string> used;
    for (std::size_t e = 0; e < mesh.elements.size(); ++e)
        used.insert(material_at(static_cast<std::int32_t>(e + 1)).name);
    t.strengths = std::all_of(used.begin(), used.end(), [&](const std::string& name) {
        return section.materials[material_named(section, name)].tension > 0;
    });
    const bool plastic = t.strengths || used.size() == 1;
    t.mode = plastic ? VQ_PLASTIC : VQ_ELASTIC;
    const std::map<std::int32_t, std::size_t> part_of = parts_of_owners(section, mesh);

    const std::size_t n = mesh.elements.size();
    t.ELEMENTS.resize(4 * n);
    t.PROPS.assign(VQ_NCOLUMNS * n, 0);
    for (std::size_t e = 0; e < n; ++e) {
        for (int k = 0; k < 4; ++k) t.ELEMENTS[k * n + e] = mesh.elements[e][k];
        const Part& group = section.parts[part_of.at(mesh.owners[e])];
        const Material& m = material_at(static_cast<std::int32_t>(e + 1));
        const auto set = [&](int column, double value) { t.PROPS[(column - 1) * n + e] = value; };
        set(VQ_EMOD, m.E * t.modulus);
        set(VQ_GMOD, m.G * t.modulus);
        set(VQ_COUPLING, group.factor);
        set(VQ_GROUP, group.group);
        set(VQ_MATFLAG, &m == t.reference ? 1.0 : 0.75);  // EREF is that of the first 1.0; all count in plastic sums
        set(VQ_FNEG, t.strengths ? m.compression * t.modulus : plastic);
        set(VQ_FPOS, t.strengths ? m.tension * t.modulus : plastic);
        set(VQ_UNITWEIGHT, m.density / (t.scale * t.scale * t.scale));
        t.groups = std::max(t.groups, group.group);
    }
    return t;
}

void bring_back(const Tables& t, Slots& value, Slots& bound) {
    const double force = t.modulus * t.scale * t.scale;
    for (int k = 0; k < VQ_NSLOTS; ++k) {
        const Dimension d = slots()[k].dimension;
        const double factor = std::pow(t.scale, -d.length) * std::pow(force, -d.force);
        value[k] *= factor;
        bound[k] *= factor;
    }
    const Point to = t.origin;
    for (const int k : {VQ_YC, VQ_SCY}) value[k] += to.y;
    for (const int k : {VQ_ZC, VQ_SCZ}) value[k] += to.z;
    if (t.mode != VQ_ELASTIC) {
        for (const int k : {VQ_PLAXIS_Y, VQ_PLAXIS_Y_NEG}) value[k] += to.y;
        for (const int k : {VQ_PLAXIS_Z, VQ_PLAXIS_Z_NEG}) value[k] += to.z;
    }
    const double c = std::cos(value[VQ_ALPHA]), s = std::sin(value[VQ_ALPHA]);
    value[VQ_SCU] += c * to.y + s * to.z;
    value[VQ_SCV] += c * to.z - s * to.y;
    value[VQ_COUP1] += c * to.y - s * to.z;
    value[VQ_COUP2] += c * to.z + s * to.y;
}

void bring_back(const Tables& t, std::vector<double>& nodeout, std::vector<double>& elemout,
                std::vector<VYZTUZE_INFO>& bars) {
    // The moduli's scale cancels: unit loads are in the same force as the stresses.
    const double L = t.scale, area = L * L, moment = area * L, bimoment = moment * L;
    const std::size_t nodes = nodeout.size() / 3;
    for (std::size_t i = 0; i < nodeout.size(); ++i) nodeout[i] /= i < nodes ? area : L;
    // TAUY and TAUZ of a torque, of forces along both axes and of a warping torque; SIGMA of a normal force, of both
    // moments and of a bimoment.
    const double factors[12] = {moment, moment, area, area, area, area, moment, moment, area, moment, moment, bimoment};
    for (std::size_t i = 0; i < elemout.size(); ++i) elemout[i] *= factors[i % 12];
    for (VYZTUZE_INFO& bar : bars) {
        bar.AREA /= area;
        bar.EMODUL /= t.modulus;
        bar.BARWEIGHT = bar.BARWEIGHT * moment + t.displaced;
        for (int q = 0; q < 4; ++q) bar.STRESS[q] *= factors[8 + q];
    }
}

Slots natural_sizes(const Slots& r) {
    Slots sizes;
    for (int k = 0; k < VQ_NSLOTS; ++k) sizes[k] = std::abs(r[k]);
    const double moments = r[VQ_IYY] + r[VQ_IZZ], radius = std::sqrt(moments / r[VQ_EA]);
    const double shear = r[VQ_GAY] + r[VQ_GAZ];
    for (const int k :
         {VQ_YC,       VQ_ZC,       VQ_SCY,          VQ_SCZ,          VQ_SCU,      VQ_SCV,          VQ_RZ,
          VQ_RY,       VQ_RV,       VQ_RU,           VQ_PLAXIS_Y,     VQ_PLAXIS_Z, VQ_PLAXIS_Y_NEG, VQ_PLAXIS_Z_NEG,
          VQ_PLAXIS_U, VQ_PLAXIS_V, VQ_PLAXIS_U_NEG, VQ_PLAXIS_V_NEG, VQ_COUP1,    VQ_COUP2})
        sizes[k] = std::max(sizes[k], radius);
    for (const int k : {VQ_IYY, VQ_IZZ, VQ_DYZ, VQ_I1, VQ_I2}) sizes[k] = moments;
    for (const int k : {VQ_GAY, VQ_GAZ, VQ_GAU, VQ_GAV, VQ_GAUV}) sizes[k] = shear;
    sizes[VQ_IW] = sizes[VQ_IWS] = moments * radius * radius;
    sizes[VQ_ALPHA] = 1;
    sizes[VQ_WR1] = std::max(sizes[VQ_WR1], moments / std::sqrt(r[VQ_EA] * r[VQ_IW]));
    sizes[VQ_WR2] = std::max(sizes[VQ_WR2], moments / std::sqrt(r[VQ_EA] * r[VQ_IWS]));
    return sizes;
}

}  // namespace velquor
