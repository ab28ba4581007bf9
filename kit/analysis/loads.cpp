#include "kit/analysis/loads.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kit/analysis/tables.h"
#include "kit/section/loads.h"
#include "kit/section/units.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double SAME = 1e-4;    // relative difference of stresses whose places are as good
constexpr double UNSURE = 5e-3;  // relative bound of a stiffness, from which on stresses are worse than theirs
constexpr double INF = std::numeric_limits<double>::infinity();

// The first of these that the load has; null where it has none.
const LoadKey* any_of(const Load& load, std::initializer_list<double Load::*> of) {
    for (const LoadKey& key : load_keys())
        if (load.*key.value != 0 && std::find(of.begin(), of.end(), key.value) != of.end()) return &key;
    return nullptr;
}

bool is_coupled(const Section& s) {
    return std::any_of(s.parts.begin(), s.parts.end(), [](const Part& p) { return p.factor < 1; });
}

// Refuses what the section cannot carry, or of which nothing is known.
void check_load(const Section& section, const Analysis& a, const Load& load) {
    const std::string place = "load " + in_quotes(load.name);
    check_values(load, place);
    if (a.field.elements.empty()) throw Error(place, "no stresses were calculated", "ask the analysis for stresses");
    const LoadKey* const warping = any_of(load, {&Load::B, &Load::Tw});
    const LoadKey* const held = any_of(load, {&Load::Vy, &Load::Vz, &Load::T, &Load::B, &Load::Tw});
    if (!a.warps && warping)
        throw Error(place, std::string(warping->name) + " on a section that does not warp", "leave it out");
    if (a.pieces > 1 && held)
        throw Error(place, std::string(held->name) + " on a section in pieces that do not touch",
                    "join them, or calculate each by itself");
    if (!a.bars.empty() && is_coupled(section))
        throw Error(place, "bars that are points, where groups of parts slip on each other: their stress is not known",
                    "leave \"as_point\" out");
}

// How much of its strength a material uses: by von Mises where both strengths are one, else by the principal stresses.
double utilisation(const Stress& s, const Material& m) {
    if (m.tension == m.compression) return von_mises(s) / m.tension;
    const double middle = s.sigma / 2, radius = std::hypot(middle, shear(s));
    return std::max((middle + radius) / m.tension, (radius - middle) / m.compression);
}

// A stress of the material that is looked at, and where it is. Too near to a sharp corner its shear is left out, and
// `in_shear` false.
struct Taken {
    Stress stress;
    Point at;
    bool in_shear = true;
};

// The largest of a value, or with `sign` -1 the smallest; of places that hardly differ the first, or the furthest from
// the centroid, where a flange's end says more than any of its nodes.
template <class Of>
Peak peak_of(const std::vector<Taken>& taken, bool in_shear, const Point* centroid, const Of& of, double sign = 1) {
    Peak peak;
    peak.value = -sign * INF;
    for (const Taken& t : taken)
        if (t.in_shear || !in_shear) peak.value = sign * std::max(sign * peak.value, sign * of(t.stress));
    const double least = sign * peak.value - SAME * std::abs(peak.value);
    double furthest = -1;
    for (const Taken& t : taken) {
        if ((in_shear && !t.in_shear) || sign * of(t.stress) < least) continue;
        const double away = centroid ? length(t.at - *centroid) : 0;
        if (away > furthest * (1 + SAME)) furthest = away, peak.at = t.at;
    }
    return peak;
}

MaterialStresses peaks_of(const Material& material, std::int32_t index, const Analysis& a, const LoadResult& result,
                          const std::vector<std::size_t>& bars, const Section& section) {
    const Field& f = a.field;
    const bool limit = has_shear(result.load);
    MaterialStresses m;
    std::vector<Taken> taken;
    bool unlimited = false;
    Point corner;
    for (std::size_t i = 0; i < f.spots.size(); ++i) {
        if (f.spots[i].material != index) continue;
        const Point& at = f.nodes[f.spots[i].node];
        const Stress& s = result.stresses[i];
        const bool near = limit && f.near_sharp[i];
        taken.push_back({{s.sigma, near ? 0 : s.tau_y, near ? 0 : s.tau_z}, at, !near});
        if (limit && f.sharp[i] && !unlimited) unlimited = true, corner = at;
    }
    for (std::size_t k = 0; k < bars.size(); ++k)
        if (const Bar& bar = section.bars[bars[k]]; bar.material == material.name)
            taken.push_back({{result.bars[k], 0, 0}, bar.at});
    m.material = material.name;
    m.has_strength = material.tension > 0 && material.compression > 0;
    const auto axial = [](const Stress& s) { return s.sigma; };
    const Point centre = {a.value[VQ_YC], a.value[VQ_ZC]}, *const centroid = limit ? nullptr : &centre;
    m.tension = peak_of(taken, false, &centre, axial);
    m.compression = peak_of(taken, false, &centre, axial, -1);
    m.shear = peak_of(taken, true, nullptr, shear);
    m.von_mises = peak_of(taken, false, centroid, von_mises);
    if (m.has_strength)
        m.utilisation = peak_of(taken, false, centroid, [&](const Stress& s) { return utilisation(s, material); });
    for (Peak* peak : {&m.shear, &m.von_mises, &m.utilisation}) peak->unlimited = unlimited, peak->corner = corner;
    return m;
}

// Forces of the stresses over the section, linear in each triangle and bilinear in each quadrilateral.
Load resultants_of(const Section& section, const Analysis& a, const LoadResult& r,
                   const std::vector<std::size_t>& bars) {
    const Field& f = a.field;
    const Point c = {a.value[VQ_YC], a.value[VQ_ZC]}, s = {a.value[VQ_SCY], a.value[VQ_SCZ]};
    Load sum;
    Point normal;  // where a unit normal force acts
    const auto add = [&](double area, const Point& p, const Stress& q, double warping) {
        sum.N += area * q.sigma;
        sum.My += area * q.sigma * (p.z - c.z);
        sum.Mz -= area * q.sigma * (p.y - c.y);
        sum.B += area * q.sigma * warping;
        sum.Vy += area * q.tau_y;
        sum.Vz += area * q.tau_z;
        sum.T += area * (q.tau_z * (p.y - s.y) - q.tau_y * (p.z - s.z));
    };
    // A quadrilateral by the four points of Gauss; a triangle by the middles of its sides, its third corner twice.
    constexpr double GAUSS = 0.577350269189625764;
    for (const std::array<std::int32_t, 4>& e : f.elements) {
        const bool triangle = e[2] == e[3];
        for (int k = 0; k < (triangle ? 3 : 4); ++k) {
            std::array<double, 4> share{};
            double area = 0;
            const auto at = [&](int corner) { return f.nodes[f.spots[e[corner]].node]; };
            if (triangle) {
                share[k] = share[(k + 1) % 3] = 0.5;
                area = cross(at(1) - at(0), at(2) - at(0)) / 6;
            } else {
                const double x = (k == 0 || k == 3 ? -1 : 1) * GAUSS, y = (k < 2 ? -1 : 1) * GAUSS;
                share = {(1 - x) * (1 - y) / 4, (1 + x) * (1 - y) / 4, (1 + x) * (1 + y) / 4, (1 - x) * (1 + y) / 4};
                const Point along = 0.25 * ((1 - y) * (at(1) - at(0)) + (1 + y) * (at(2) - at(3)));
                const Point across = 0.25 * ((1 - x) * (at(3) - at(0)) + (1 + x) * (at(2) - at(1)));
                area = cross(along, across);
            }
            Point p;
            Stress q;
            double warping = 0, of_unit = 0;
            for (int corner = 0; corner < 4; ++corner) {
                const auto spot = static_cast<std::size_t>(e[corner]);
                p = p + share[corner] * at(corner);
                of_unit += share[corner] * f.unit[spot][8];
                q.sigma += share[corner] * r.stresses[spot].sigma;
                q.tau_y += share[corner] * r.stresses[spot].tau_y;
                q.tau_z += share[corner] * r.stresses[spot].tau_z;
                warping +=
                    share[corner] * f.unit[spot][11] * a.value[VQ_IW] / section.materials[f.spots[spot].material].E;
            }
            normal = normal + area * of_unit * p;
            add(area, p, q, std::isfinite(warping) ? warping : 0);
        }
    }
    for (std::size_t k = 0; k < bars.size(); ++k) {
        const VYZTUZE_INFO& bar = a.bars[k];
        const double excess = 1 - a.value[VQ_EREF] / bar.EMODUL;
        const double warping = bar.STRESS[3] * a.value[VQ_IW] / bar.EMODUL;
        const double by_warping = r.load.B != 0 ? r.load.B * bar.STRESS[3] : 0;
        const Point& at = section.bars[bars[k]].at;
        add(bar.AREA * excess, at, {r.bars[k] - by_warping, 0, 0}, 0);
        // Warping takes the whole bar, and nothing off what it displaces.
        add(bar.AREA, at, {by_warping, 0, 0}, 0);
        if (std::isfinite(warping)) sum.B += bar.AREA * r.bars[k] * warping;
    }
    if (is_coupled(section)) {  // each group has its share of the normal force in its own centre
        sum.My -= sum.N * (normal.z - c.z);
        sum.Mz += sum.N * (normal.y - c.y);
    }
    return sum;
}

// What makes shear stresses uncertain, which have no bounds of their own.
std::string warning_of(const Analysis& a) {
    if (a.levels == 1) return "one level: shear stresses may be some per cent off";
    if (!std::isfinite(a.bound[VQ_GJ]))
        return "the section hangs together in points: its shear stresses depend on the mesh";
    double largest = a.bound[VQ_GJ] / std::abs(a.value[VQ_GJ]);
    for (const int k : {VQ_GAY, VQ_GAZ})  // without a limit where bars are points
        if (std::isfinite(a.bound[k])) largest = std::max(largest, a.bound[k] / (a.value[VQ_GAY] + a.value[VQ_GAZ]));
    if (largest <= UNSURE) return "";
    const std::string known = largest < 1 ? "known within " + text_of(100 * largest, 1) + " %" : "not known";
    return "too few elements: shear stresses may be far off, the stiffnesses behind them are " + known;
}

}  // namespace

LoadResult result_of(const Section& section, const Analysis& a, const Load& load) {
    check_fits(section, a);
    check_load(section, a, load);
    LoadResult r;
    r.load = load;
    r.length = section.length;
    r.force = section.force;
    if (has_shear(load)) r.warning = warning_of(a);
    r.stresses = stresses_of(a.field, load);
    std::vector<std::size_t> bars;  // in the section's list, those of Analysis::bars
    for (std::size_t i = 0; i < section.bars.size(); ++i)
        if (section.bars[i].as_point) bars.push_back(i);
    const double cos = std::cos(a.value[VQ_ALPHA]), sin = std::sin(a.value[VQ_ALPHA]);
    const double along_u = cos * load.My + sin * load.Mz, along_v = cos * load.Mz - sin * load.My;
    for (const VYZTUZE_INFO& bar : a.bars) {
        double sigma = 0;
        const double loads[4] = {load.N, along_u, along_v, load.B};
        for (int k = 0; k < 4; ++k)
            if (loads[k] != 0) sigma += loads[k] * bar.STRESS[k];
        r.bars.push_back(sigma);
    }
    for (std::size_t m = 0; m < section.materials.size(); ++m) {
        MaterialStresses peaks = peaks_of(section.materials[m], static_cast<std::int32_t>(m), a, r, bars, section);
        if (std::isfinite(peaks.tension.value)) r.materials.push_back(std::move(peaks));
    }
    r.resultants = resultants_of(section, a, r, bars);
    for (std::size_t i = 0; i < a.field.coarse_spots; ++i) {
        const Field::Spot& spot = a.field.spots[i];
        r.nodes.push_back({a.field.nodes[spot.node], section.materials[spot.material].name, r.stresses[i],
                           a.field.sharp[i] != 0 && has_shear(load)});
    }
    for (std::size_t k = 0; k < bars.size(); ++k)
        r.nodes.push_back({section.bars[bars[k]].at, section.bars[bars[k]].material, {r.bars[k], 0, 0}, false});
    return r;
}

LoadResult in_units(LoadResult r, const std::string& length, const std::string& force) {
    const double l = size_of(lengths(), r.length, "units.length") / size_of(lengths(), length, "--units");
    const double f = size_of(forces(), r.force, "units.force") / size_of(forces(), force, "--force");
    const double stress = f / (l * l);
    const auto move = [&](Point& p) { p = l * p; };
    const auto scale = [&](Stress& s) { s = {stress * s.sigma, stress * s.tau_y, stress * s.tau_z}; };
    for (const LoadKey& key : load_keys())
        for (Load* load : {&r.load, &r.resultants}) load->*(key.value) *= f * std::pow(l, key.length);
    for (Stress& s : r.stresses) scale(s);
    for (double& s : r.bars) s *= stress;
    for (NodeStress& node : r.nodes) move(node.at), scale(node.stress);
    for (MaterialStresses& m : r.materials) {
        for (Peak* peak : {&m.tension, &m.compression, &m.shear, &m.von_mises}) peak->value *= stress;
        for (Peak* peak : {&m.tension, &m.compression, &m.shear, &m.von_mises, &m.utilisation})
            move(peak->at), move(peak->corner);
    }
    r.length = length;
    r.force = force;
    return r;
}

}  // namespace velquor
