#include "kit/analysis/analysis.h"

#include <algorithm>
#include <cmath>

#include "kit/analysis/check.h"
#include "kit/analysis/corners.h"
#include "kit/analysis/extent.h"
#include "kit/analysis/recovery.h"
#include "kit/analysis/tables.h"
#include "kit/section/file.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double NO_WARPING = 1e-8;  // of the natural size of IW
constexpr double ROUNDING = 1e-16;   // of the same: what is left where nothing warps, in squares of warping

// The true courses of a call's edges.
struct Course {
    const Mesh* mesh;
    const Tables* tables;
};

// A vq_place: new nodes of edges that stand for arcs go onto these.
void place_on_arc(void* context, std::int32_t A, std::int32_t B, double t, double* YZ) {
    const auto& [mesh, tables] = *static_cast<const Course*>(context);
    const auto [a, b] = std::minmax(A, B);
    const auto bow = std::lower_bound(mesh->bows.begin(), mesh->bows.end(), std::make_pair(a, b),
                                      [](const Mesh::Bow& of, const std::pair<std::int32_t, std::int32_t>& key) {
                                          return of.a != key.first ? of.a < key.first : of.b < key.second;
                                      });
    if (bow == mesh->bows.end() || bow->a != a || bow->b != b) return;
    const Point c = bow->centre, from = mesh->nodes[A - 1] - c, to = mesh->nodes[B - 1] - c;
    const double sweep = std::atan2(cross(from, to), dot(from, to));
    const Point p = c + turned(from, t * sweep) - tables->origin;
    YZ[0] = p.y * tables->scale;
    YZ[1] = p.z * tables->scale;
}

// Slots along principal axes. These may lie anywhere where both second moments are equal.
bool is_principal(int slot) {
    return slot == VQ_SCU || slot == VQ_SCV || slot == VQ_ALPHA || (slot >= VQ_GAU && slot <= VQ_GAUV) ||
           slot == VQ_RV || slot == VQ_RU || (slot >= VQ_PLAXIS_U && slot <= VQ_COUP2);
}

// Where nothing warps, as in a circle, WR1 and WR2 are one rounding error over another.
void without_warping(Analysis& a) {
    const double size = natural_sizes(a.value)[VQ_IW];
    for (const int k : {VQ_IW, VQ_IWS}) a.bound[k] = std::max(a.bound[k], ROUNDING * size);
    if (a.value[VQ_IW] > NO_WARPING * size && a.value[VQ_IWS] > NO_WARPING * size) return;
    a.warps = false;
    for (const int k : {VQ_WR1, VQ_WR2}) a.value[k] = a.bound[k] = 0;
}

void measure(Analysis& a, double wished) {
    const Slots sizes = natural_sizes(a.value);
    const bool any_axes = a.bound[VQ_ALPHA] > 0.5;
    for (int k = 0; k < VQ_NSLOTS; ++k) {
        if ((any_axes && is_principal(k)) || k == VQ_WT || !std::isfinite(a.bound[k]) || sizes[k] == 0) continue;
        const double relative = a.bound[k] / sizes[k];
        if (relative > a.reached) a.reached = relative, a.worst = k;
    }
    a.met = a.reached <= wished;
}

// A level has some four times the nodes of the one before.
bool fits(const Mesh& mesh, int levels, const Effort& effort) {
    return static_cast<std::int64_t>(mesh.nodes.size()) << (2 * levels - 2) <= effort.most_nodes;
}

// Of a section and a mesh that were checked.
Analysis calculated(const Section& section, const Mesh& mesh, int levels, bool stresses) {
    Tables t = tables_of(section, mesh);
    Analysis a;
    a.mesh = mesh;
    a.warping.resize(3 * static_cast<std::size_t>(t.nodes));
    a.stress.resize(48 * static_cast<std::size_t>(t.elements));
    a.sharp.resize(t.nodes);
    a.value[VQ_MODE_SLOT] = t.mode;
    std::int32_t status = t.groups, done = levels;
    Course course = {&mesh, &t};
    Recovery recovery;
    if (stresses) recovery = recovery_of(section, mesh);
    vq_levels_watched(&status, t.NODES.data(), t.nodes, t.ELEMENTS.data(), t.elements, t.PROPS.data(),
                      static_cast<std::int32_t>(t.bars.size()), t.bars.data(), a.value.data(), a.warping.data(),
                      a.stress.data(), &done, a.bound.data(), a.sharp.data(), place_on_arc, &course,
                      stresses ? recover_level : nullptr, &recovery);
    if (status == VQ_OUT_OF_MEMORY) throw std::bad_alloc();
    if (status == VQ_NOT_SOLVED) throw Unsolved("", "the equations of the section could not be solved");
    if (status != VQ_DONE) {
        for (const Finding& f : check(section, mesh))
            if (f.is_error) throw Error(f.place, f.message, f.remedy);
        throw Error("", "the library refused the mesh");
    }
    bring_back(t, a.value, a.bound);
    bring_back(t, a.warping, a.stress, t.bars);
    // The nodes of bars, behind those of the mesh, have no warping.
    const auto nodes = static_cast<std::ptrdiff_t>(mesh.nodes.size());
    for (const std::ptrdiff_t field : {1, 2})
        std::copy_n(a.warping.begin() + field * t.nodes, nodes, a.warping.begin() + field * nodes);
    a.warping.resize(3 * mesh.nodes.size());
    a.sharp.resize(mesh.nodes.size());
    a.bars = t.bars;
    a.reference = t.reference->name;
    a.levels = done;
    a.plastic = t.mode != VQ_ELASTIC;
    a.strengths = t.strengths;
    if (mesh.has_corners) a.bound[VQ_WT] = std::numeric_limits<double>::infinity();
    without_warping(a);
    const std::vector<int> pieces = pieces_of(mesh);
    a.pieces = 1 + *std::max_element(pieces.begin(), pieces.end());
    measure(a, section.wishes.accuracy);
    if (stresses) a.field = field_of(recovery, t, reach_of_corners(mesh, a.sharp), a.warps);
    return a;
}

}  // namespace

Analysis analyse(const Section& section, const Mesh& mesh, int levels, bool stresses) {
    check_section(section);
    check_fits(section, mesh);
    if (levels < 1 || levels > VQ_MAXLEVELS)
        throw Error("levels", text_of(levels), "must be from 1 to " + text_of(VQ_MAXLEVELS));
    return calculated(section, mesh, levels, stresses);
}

Analysis analyse(const Section& section, const Effort& effort) {
    const Mesh mesh = mesh_of(section, 1, effort.stresses);
    int levels = section.wishes.levels;
    // Stresses converge behind the values: a further level, unless another number than the usual is wished.
    if (effort.stresses && !effort.quick && levels == Wishes().levels && fits(mesh, levels + 1, effort)) ++levels;
    // A mesh that is given may be fine already. Two levels are the fewest that tell a bound.
    while (is_mesh(section) && levels > 2 && !fits(mesh, levels, effort)) --levels;
    Analysis a = calculated(section, mesh, levels, effort.stresses);
    while (!a.met && a.levels == levels && levels < VQ_MAXLEVELS) {
        if (!fits(mesh, levels + 1, effort)) break;
        a = calculated(section, mesh, ++levels, effort.stresses);
    }
    return a;
}

void check_fits(const Section& section, const Analysis& a) {
    check_section(section);
    if (a.levels < 1) throw Error("analysis", "nothing was calculated", "analyse gives one");
    check_fits(section, a.mesh);
    const auto points =
        std::count_if(section.bars.begin(), section.bars.end(), [](const Bar& b) { return b.as_point; });
    const auto in_list = [&](const Field::Spot& s) {
        return static_cast<std::size_t>(s.material) < section.materials.size();
    };
    if (static_cast<std::ptrdiff_t>(a.bars.size()) != points || a.warping.size() != 3 * a.mesh.nodes.size() ||
        !std::all_of(a.field.spots.begin(), a.field.spots.end(), in_list))
        throw Error("analysis", "is one of another section", "analyse this one");
}

}  // namespace velquor
