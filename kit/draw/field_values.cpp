#include "kit/draw/field_values.h"

#include <algorithm>
#include <cmath>

#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double NO_WARPING = 1e-9;  // of the size or its square: rounding

FieldValues warping_of(const Picture& picture, const Panel& panel, double smallest) {
    FieldValues v;
    const Mesh& mesh = picture.analysis.mesh;
    const std::size_t n = mesh.nodes.size(), from = static_cast<std::size_t>(panel.direction) * n;
    const std::vector<double>& all = picture.analysis.warping;
    std::vector<double> at_nodes(all.begin() + static_cast<std::ptrdiff_t>(from),
                                 all.begin() + static_cast<std::ptrdiff_t>(from + n));
    const double size = std::max(picture.high_y - picture.low_y, picture.high_z - picture.low_z);
    const auto rounding = [&](double w) {
        return std::abs(w) <= NO_WARPING * (panel.direction == 0 ? size : 1) * size;
    };
    if (std::all_of(at_nodes.begin(), at_nodes.end(), rounding)) at_nodes.assign(n, 0);
    // Of equal ones the first.
    const auto [least, most] = std::minmax_element(at_nodes.begin(), at_nodes.end());
    v.least = *least, v.least_at = mesh.nodes[static_cast<std::size_t>(least - at_nodes.begin())];
    v.most = *most, v.most_at = mesh.nodes[static_cast<std::size_t>(most - at_nodes.begin())];
    v.signs = true;
    v.unit = picture.section.length + (panel.direction == 0 ? "2" : "");
    v.scale = scale_of(v.least, v.most, true);
    // A bimoment's stresses are E times warping, and known at the finest nodes.
    const Field& field = picture.analysis.field;
    const double Iw = picture.analysis.value[VQ_IW];
    if (panel.direction != 0 || field.elements.empty() || !(v.most > v.least)) {
        v.cells = cells_of(mesh, at_nodes);
        return v;
    }
    std::vector<double> at_spots;
    for (std::size_t i = 0; i < field.spots.size(); ++i)
        at_spots.push_back(field.unit[i][11] * Iw /
                           picture.section.materials[static_cast<std::size_t>(field.spots[i].material)].E);
    v.cells = cells_of(mesh, field, at_spots, v.most - v.least, smallest);
    v.fine = cells_of(mesh, field, at_spots, 0, smallest);
    return v;
}

FieldValues stresses_at(const Picture& picture, const Panel& panel, double smallest) {
    FieldValues v;
    const Field& field = picture.analysis.field;
    if (field.elements.empty())
        throw Error("", "no stresses were calculated for " + in_quotes(title_of(panel)),
                    "ask the analysis for stresses");
    LoadResult result = result_of(picture.section, picture.analysis, panel.load);
    bool first = true;
    for (const MaterialStresses& m : result.materials) {
        const bool axial = panel.what == Shown::axial;
        const Peak& most = axial ? m.tension : panel.what == Shown::shear ? m.shear : m.von_mises;
        const Peak& least = axial ? m.compression : most;
        if (first || most.value > v.most) v.most = most.value, v.most_at = most.at;
        if (first || least.value < v.least) v.least = least.value, v.least_at = least.at;
        v.unlimited = v.unlimited || most.unlimited;
        first = false;
    }
    if (v.unlimited)
        for (std::size_t i = 0; i < field.coarse_spots; ++i)
            if (field.sharp[i]) v.corners.push_back(field.nodes[static_cast<std::size_t>(field.spots[i].node)]);
    v.signs = panel.what == Shown::axial;
    v.unit = picture.section.force + "/" + picture.section.length + "2";
    v.scale = scale_of(v.least, v.most, v.signs);
    std::vector<double> value;
    for (const Stress& s : result.stresses)
        value.push_back(v.signs ? s.sigma : panel.what == Shown::shear ? shear(s) : von_mises(s));
    v.cells = cells_of(picture.analysis.mesh, field, value, v.scale.high - v.scale.low, smallest);
    v.fine = cells_of(picture.analysis.mesh, field, value, 0, smallest);
    v.stresses = std::move(result.stresses);
    if (panel.what != Shown::axial) v.warning = result.warning;
    if (panel.what != Shown::shear) v.bars = std::move(result.bars);
    return v;
}

}  // namespace

FieldValues values_of(const Picture& picture, const Panel& panel, double smallest) {
    return panel.what == Shown::warping ? warping_of(picture, panel, smallest) : stresses_at(picture, panel, smallest);
}

}  // namespace velquor
