#include "section_run.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace {

point node(const SectionRun& run, int32_t n) { return {run.nodes[n - 1], run.nodes[run.nnodes + n - 1]}; }

int32_t corner(const SectionRun& run, int32_t e, int c) { return run.elements[c * run.nelems + e - 1]; }

// The element in which a point lies; on an edge the one of lowest number.
int32_t element_at(const SectionRun& run, point p) {
    for (int32_t e = 1; e <= run.nelems; ++e) {
        bool inside = true;
        for (int c = 0; c < 4 && inside; ++c) {
            const point a = node(run, corner(run, e, c)), b = node(run, corner(run, e, (c + 1) % 4));
            const double area = (b.y - a.y) * (p.z - a.z) - (b.z - a.z) * (p.y - a.y);
            inside = area >= -1e-9 * ((b.y - a.y) * (b.y - a.y) + (b.z - a.z) * (b.z - a.z));
        }
        if (inside) return e;
    }
    throw std::runtime_error("the bar at " + std::to_string(p.y) + ", " + std::to_string(p.z) + " lies in no element");
}

void place_bars(const SectionFile& file, SectionRun& run) {
    for (size_t i = 0; i < file.bars.size(); ++i) {
        const Bar& bar = file.bars[i];
        VYZTUZE_INFO info = {};
        info.NODE = run.mesh_nodes + static_cast<int32_t>(i) + 1;
        run.nodes[info.NODE - 1] = bar.at.y, run.nodes[run.nnodes + info.NODE - 1] = bar.at.z;
        info.ELEMENT = element_at(run, bar.at);
        info.AREA = bar.AREA, info.EMODUL = bar.EMODUL, info.GMODUL = bar.GMODUL;
        info.RADIUS = bar.RADIUS, info.BARWEIGHT = bar.BARWEIGHT;
        run.bars.push_back(info);
    }
}

double stress_of(const Expectation& e, double ty, double tz, double sigma) {
    return e.stress == "TAUY" ? ty : e.stress == "TAUZ" ? tz : e.stress == "TAU" ? std::hypot(ty, tz) : sigma;
}

// The node next to a point: of the mesh, and of a material where one is wanted.
int32_t nearest_node(const SectionRun& run, point p, int material) {
    int32_t nearest = 0;
    double least = HUGE_VAL;
    for (int32_t e = 1; e <= run.nelems; ++e) {
        if (material > 0 && run.materials[e - 1] != material) continue;
        for (int c = 0; c < 4; ++c) {
            const int32_t n = corner(run, e, c);
            const double distance = std::hypot(node(run, n).y - p.y, node(run, n).z - p.z);
            if (distance < least || (distance == least && n < nearest)) least = distance, nearest = n;
        }
    }
    if (!(least <= 0.5 * run.size / run.refine))
        throw std::runtime_error("no node is near " + std::to_string(p.y) + ", " + std::to_string(p.z));
    return nearest;
}

// Either the largest amount at any corner, or the means of the components over the corners at one node.
double corner_stress(const Expectation& e, const SectionRun& run) {
    const int32_t n = e.largest ? 0 : nearest_node(run, e.at, e.material);
    double largest = 0, ty = 0, tz = 0, sigma = 0, count = 0;
    for (int32_t i = 1; i <= run.nelems; ++i) {
        if (e.material > 0 && run.materials[i - 1] != e.material) continue;
        const bool triangle = corner(run, i, 2) == corner(run, i, 3);
        for (int c = 0; c < (triangle ? 3 : 4); ++c) {
            const double* values = run.elemout.data() + 48 * static_cast<size_t>(i - 1) + 12 * static_cast<size_t>(c);
            const double y = values[2 * (e.load_case - 1)], z = values[2 * (e.load_case - 1) + 1];
            const double s = values[8 + e.load_case - 1];
            largest = std::max(largest, std::fabs(stress_of(e, y, z, s)));
            if (corner(run, i, c) == n) ty += y, tz += z, sigma += s, count += 1;
        }
    }
    return e.largest ? largest : stress_of(e, ty / count, tz / count, sigma / count);
}

}  // namespace

SectionRun run_section(const SectionFile& file, int refine) {
    mesh m = make_mesh(file, refine);
    SectionRun run;
    run.refine = refine, run.size = file.size;
    run.nelems = m.nelems, run.mesh_nodes = m.nnodes;
    run.nnodes = m.nnodes + static_cast<int32_t>(file.bars.size());
    std::vector<double> mesh_nodes(2 * static_cast<size_t>(m.nnodes));
    run.elements.resize(4 * static_cast<size_t>(m.nelems));
    fill_tables(&m, mesh_nodes.data(), run.elements.data());
    run.materials.assign(m.materials, m.materials + m.nelems);
    release_mesh(&m);

    run.nodes.assign(2 * static_cast<size_t>(run.nnodes), 0.0);
    for (int column = 0; column < 2; ++column)
        std::copy_n(mesh_nodes.begin() + column * run.mesh_nodes, run.mesh_nodes,
                    run.nodes.begin() + column * run.nnodes);
    int32_t status = 1;  // in: the number of groups
    run.props.resize(VQ_NCOLUMNS * static_cast<size_t>(run.nelems));
    for (int32_t e = 0; e < run.nelems; ++e) {
        const Material& material = file.materials[run.materials[e] - 1];
        for (int k = 0; k < VQ_NCOLUMNS; ++k) run.props[static_cast<size_t>(k) * run.nelems + e] = material.props[k];
        status = std::max(status, static_cast<int32_t>(std::fabs(material.props[VQ_GROUP - 1])));
    }
    place_bars(file, run);
    run.result.assign(VQ_NSLOTS, 0.0);
    run.result[VQ_MODE_SLOT] = VQ_PLASTIC;
    run.nodeout.resize(3 * static_cast<size_t>(run.nnodes));
    run.elemout.resize(48 * static_cast<size_t>(run.nelems));

    vq_velquor(&status, run.nodes.data(), run.nnodes, run.elements.data(), run.nelems, run.props.data(),
               static_cast<int32_t>(run.bars.size()), run.bars.data(), run.result.data(), run.nodeout.data(),
               run.elemout.data());
    if (status != VQ_DONE)
        throw std::runtime_error(file.path + ": the library gives no results (status " + std::to_string(status) + ")");
    return run;
}

double value_of(const Expectation& e, const SectionRun& run) {
    double value = 0;
    switch (e.quantity) {
        case Quantity::slot: value = run.result[e.slot] - (e.minus < 0 ? 0 : run.result[e.minus]); break;
        case Quantity::stress: value = corner_stress(e, run); break;
        case Quantity::bar: value = run.bars[e.bar - 1].STRESS[e.load_case - 1]; break;
        case Quantity::warping:
            value = run.nodeout[static_cast<size_t>(e.field - 1) * run.nnodes + nearest_node(run, e.at, 0) - 1];
            break;
    }
    return value / (e.over < 0 ? 1 : run.result[e.over]) / e.unit;
}

double difference_of(const Expectation& e, double ours) {
    return e.absolute || e.value == 0 ? ours - e.value : (ours - e.value) / std::fabs(e.value);
}

Outcome compare(const SectionFile& file) {
    Outcome out;
    out.run = run_section(file, 1);
    const bool twice =
        std::any_of(file.expected.begin(), file.expected.end(), [](const Expectation& e) { return e.order > 0; });
    const SectionRun finer = twice ? run_section(file, 2) : SectionRun();
    for (const Expectation& e : file.expected) {
        Comparison c = {value_of(e, out.run), 0, std::numeric_limits<double>::quiet_NaN(), true};
        c.difference = difference_of(e, c.ours);
        if (e.tolerance >= 0) c.ok = std::fabs(c.difference) <= e.tolerance;  // false where ours is not a number
        if (e.order > 0) {
            c.finer = difference_of(e, value_of(e, finer));
            c.ok = c.ok && std::fabs(c.finer) <= std::ldexp(e.tolerance, -e.order);
        }
        out.values.push_back(c);
    }
    return out;
}
