#include "section_builder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

using namespace VQ_DATA_MOD;

std::int32_t node_at(Section& section, double y, double z) {
    for (std::size_t i = 0; i < section.y.size(); ++i)
        if (std::fabs(section.y[i] - y) < 1e-9 && std::fabs(section.z[i] - z) < 1e-9)
            return static_cast<std::int32_t>(i + 1);
    section.y.push_back(y);
    section.z.push_back(z);
    return static_cast<std::int32_t>(section.y.size());
}

void add_rectangle(Section& section, double y0, double z0, double y1, double z1, int ny, int nz,
                   const Material& material) {
    section.groups = std::max(section.groups, static_cast<std::int32_t>(std::fabs(material.GROUP)));
    const auto at = [&](int i, int j) { return node_at(section, y0 + (y1 - y0) * i / ny, z0 + (z1 - z0) * j / nz); };
    for (int j = 0; j < nz; ++j) {
        for (int i = 0; i < ny; ++i) {
            section.elements.push_back({at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1)});
            section.materials.push_back(material);
        }
    }
}

VYZTUZE_INFO& add_bar(Section& section, double y, double z, std::int32_t host, double AREA, double EMODUL,
                      double GMODUL) {
    section.y.push_back(y), section.z.push_back(z);
    VYZTUZE_INFO& bar = section.bars.emplace_back();
    bar.NODE = static_cast<std::int32_t>(section.y.size()), bar.ELEMENT = host;
    bar.AREA = AREA, bar.EMODUL = EMODUL, bar.GMODUL = GMODUL;
    return bar;
}

Section section_of(const meshes::Mesh& mesh, double RADIUS) {
    Section s;
    for (std::int32_t i = 1; i <= mesh.NNODES; ++i) s.y.push_back(mesh.XY(i, 1)), s.z.push_back(mesh.XY(i, 2));
    for (std::int32_t e = 1; e <= mesh.NELEMS; ++e) {
        s.elements.push_back({mesh.ELEMNODES(e, 1), mesh.ELEMNODES(e, 2), mesh.ELEMNODES(e, 3), mesh.ELEMNODES(e, 4)});
        s.materials.push_back({mesh.EMOD(e), mesh.GMOD(e)});
    }
    s.bars = meshes::records_of(mesh.bars, RADIUS);
    return s;
}

Section as_triangles(const Section& section) {
    Section split = section;
    split.elements.clear();
    split.materials.clear();
    for (std::size_t e = 0; e < section.elements.size(); ++e) {
        const auto& n = section.elements[e];
        split.elements.push_back({n[0], n[1], n[2], n[2]});
        split.elements.push_back({n[0], n[2], n[3], n[3]});
        split.materials.insert(split.materials.end(), 2, section.materials[e]);
    }
    for (VYZTUZE_INFO& bar : split.bars) bar.ELEMENT = 2 * bar.ELEMENT - 1;
    return split;
}

Section renumbered(const Section& section) {
    Section other = section;
    const std::size_t n = section.y.size();
    std::reverse(other.y.begin(), other.y.end());
    std::reverse(other.z.begin(), other.z.end());
    for (auto& nodes : other.elements)
        for (std::int32_t& node : nodes) node = static_cast<std::int32_t>(n) + 1 - node;
    for (VYZTUZE_INFO& bar : other.bars) bar.NODE = static_cast<std::int32_t>(n) + 1 - bar.NODE;
    return other;
}

Section moved(const Section& section, double dy, double dz, double angle) {
    Section other = section;
    const double c = std::cos(angle), s = std::sin(angle);
    for (std::size_t i = 0; i < section.y.size(); ++i) {
        other.y[i] = c * section.y[i] - s * section.z[i] + dy;
        other.z[i] = s * section.y[i] + c * section.z[i] + dz;
    }
    return other;
}

Section scaled(const Section& section, double factor) {
    Section other = section;
    for (double& y : other.y) y *= factor;
    for (double& z : other.z) z *= factor;
    for (VYZTUZE_INFO& bar : other.bars) bar.AREA *= factor * factor;
    return other;
}

namespace {

VYZTUZE_INFO guard_record() {
    VYZTUZE_INFO record;
    std::memset(&record, 0x5a, sizeof record);
    return record;
}

constexpr std::int32_t NOT_SET = -77;

template <class T>
std::vector<T> guarded(std::vector<T> table, const T& guard) {
    table.insert(table.begin(), GUARD, guard);
    table.insert(table.end(), GUARD, guard);
    return table;
}

template <class T>
std::vector<T> inner_part(const std::vector<T>& table) {
    return {table.begin() + GUARD, table.end() - GUARD};
}

template <class T>
bool same_bytes(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

}  // namespace

Host host_of(const Section& section, double mode, std::int32_t LEVELS) {
    const std::size_t nnodes = section.y.size(), nelems = section.elements.size();
    Host host{section.groups, static_cast<std::int32_t>(nnodes), static_cast<std::int32_t>(nelems),
              static_cast<std::int32_t>(section.bars.size())};
    host.RESULT.assign(VQ_NSLOTS + 2 * GUARD, before);
    host.NODEOUT.assign(3 * nnodes + 2 * GUARD, before);
    host.ELEMOUT.assign(48 * nelems + 2 * GUARD, before);
    host.POINTS = guarded(section.bars, guard_record());
    host.NODES = section.y;
    host.NODES.insert(host.NODES.end(), section.z.begin(), section.z.end());
    for (std::size_t k = 0; k < 4; ++k)
        for (const auto& nodes : section.elements) host.ELEMENTS.push_back(nodes[k]);
    for (double Material::*column :
         {&Material::EMOD, &Material::GMOD, &Material::third, &Material::COUPLING, &Material::GROUP, &Material::MATFLAG,
          &Material::FNEG, &Material::FPOS, &Material::UNITWEIGHT, &Material::tenth})
        for (const Material& material : section.materials) host.PROPS.push_back(material.*column);
    host.RESULT[GUARD + VQ_MODE_SLOT] = mode;
    host.LEVELS = LEVELS;
    host.BOUNDS.assign(VQ_NSLOTS + 2 * GUARD, before);
    host.SHARP.assign(nnodes + 2 * GUARD, NOT_SET);
    return host;
}

void call(Host& host, int missing) {
    const auto given = [&](int argument, auto* table) { return argument == missing ? nullptr : table; };
    if (host.LEVELS != 0) {
        host.REACHED = host.LEVELS;
        vq_levels(given(1, &host.STATUS), given(2, host.NODES.data()), host.NNODES, given(4, host.ELEMENTS.data()),
                  host.NELEMS, given(6, host.PROPS.data()), host.NPOINTS, given(8, host.POINTS.data() + GUARD),
                  given(9, host.RESULT.data() + GUARD), given(10, host.NODEOUT.data() + GUARD),
                  given(11, host.ELEMOUT.data() + GUARD), given(12, &host.REACHED),
                  given(13, host.BOUNDS.data() + GUARD), given(14, host.SHARP.data() + GUARD), host.place,
                  host.context);
        return;
    }
    vq_velquor(given(1, &host.STATUS), given(2, host.NODES.data()), host.NNODES, given(4, host.ELEMENTS.data()),
               host.NELEMS, given(6, host.PROPS.data()), host.NPOINTS, given(8, host.POINTS.data() + GUARD),
               given(9, host.RESULT.data() + GUARD), given(10, host.NODEOUT.data() + GUARD),
               given(11, host.ELEMOUT.data() + GUARD));
}

bool same_tables(const Host& a, const Host& b) {
    return same_bytes(a.NODES, b.NODES) && same_bytes(a.PROPS, b.PROPS) && same_bytes(a.RESULT, b.RESULT) &&
           same_bytes(a.NODEOUT, b.NODEOUT) && same_bytes(a.ELEMOUT, b.ELEMOUT) && same_bytes(a.ELEMENTS, b.ELEMENTS) &&
           same_bytes(a.POINTS, b.POINTS) && same_bytes(a.BOUNDS, b.BOUNDS) && same_bytes(a.SHARP, b.SHARP);
}

bool guards_intact(const Host& host) {
    for (const auto* table : {&host.RESULT, &host.NODEOUT, &host.ELEMOUT, &host.BOUNDS})
        if (!same_bytes(*table, guarded(inner_part(*table), before))) return false;
    if (!same_bytes(host.SHARP, guarded(inner_part(host.SHARP), NOT_SET))) return false;
    return same_bytes(host.POINTS, guarded(inner_part(host.POINTS), guard_record()));
}

Results run(const Section& section, double mode) {
    Host host = host_of(section, mode);
    call(host);
    if (!guards_intact(host)) throw std::runtime_error("written outside the host's tables");
    return {host.STATUS, inner_part(host.RESULT), inner_part(host.NODEOUT), inner_part(host.ELEMOUT),
            inner_part(host.POINTS)};
}

void fill_records(const Section& section, VARIABLES_T& VARS, VELQUOR_CHAR& CHAR) {
    const Host host = host_of(section);
    INIT_VQCHAR(CHAR);
    VARS.NGROUPS = section.groups;
    VARS.NPOINTS = host.NPOINTS;
    for (auto* table : {&VARS.GROUPAREA, &VARS.GROUPZC, &VARS.GROUPYC, &VARS.GROUPDZ, &VARS.GROUPDY})
        table->allocate(section.groups);
    VARS.ELEMPROP.allocate(host.NELEMS, 10);
    std::copy(host.PROPS.begin(), host.PROPS.end(), VARS.ELEMPROP.memory());
    if (host.NELEMS > 0) CHAR.EREF = section.materials[0].EMOD, CHAR.GREF = section.materials[0].GMOD;
    std::int32_t status;
    DEFINEMESH(status, View<const double, 2>(host.NODES.data(), host.NNODES, 2),
               View<const std::int32_t, 2>(host.ELEMENTS.data(), host.NELEMS, 4), VARS, CHAR);
    for (const VYZTUZE_INFO& bar : section.bars) {
        if (bar.NODE < 1) continue;
        VARS.NODEUSED(bar.NODE) = LOGICAL_TRUE;
        VARS.XY(bar.NODE, 1) = section.y[bar.NODE - 1];
        VARS.XY(bar.NODE, 2) = section.z[bar.NODE - 1];
    }
}
