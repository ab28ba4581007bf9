#include "kit/draw/cells.h"

#include <algorithm>
#include <cmath>

#include "kit/draw/svg.h"
#include "kit/section/vectors.h"

namespace velquor {

namespace {

// Shares of the field's range.
constexpr double MISSED = 0.02;   // by which a cell may be wrong between its corners
constexpr double FITTED = 0.016;  // by which colours along a line may miss a corner
constexpr double FLAT = 0.004;    // within which a cell has one colour

constexpr int DEEPEST = 2;        // times that an element is cut in four
constexpr double GROWN = 0.4;     // units of the sheet by which cells overlap, so that no gap shows between them
constexpr double MOST_GROWN = 3;  // times as far corners may go, where they are pointed

int corners(const std::array<std::int32_t, 4>& element) { return element[2] == element[3] ? 3 : 4; }

// How far arcs lie beside the straight edges of an element.
double bulge_of(const Mesh& mesh, const std::array<std::int32_t, 4>& element) {
    double most = 0;
    const auto n = static_cast<std::size_t>(corners(element));
    for (std::size_t i = 0; i < n; ++i) {
        Point centre;
        const double sweep = sweep_of(mesh, element[i], element[(i + 1) % n], centre);
        if (sweep == 0) continue;
        most = std::max(
            most, distance(mesh.nodes[static_cast<std::size_t>(element[i] - 1)], centre) * (1 - std::cos(sweep / 2)));
    }
    return most;
}

// The finest element whose corner is corner `k` of a part: of the part'th of those that an element became after `depth`
// cuts, each of which gives the part of corner k the number k.
std::size_t finest_at(std::size_t part, std::size_t k, int depth, int deepest) {
    for (int d = depth; d < deepest; ++d) part = 4 * part + k;
    return part;
}

struct Descent {
    const Field& field;
    const std::vector<double>& value;
    double range;
    double smallest;  // edges of cells that are not cut
    int deepest;      // cuts between the coarse and the finest mesh
    std::vector<Cell>& cells;

    std::int32_t spot(std::size_t part, std::size_t k, int depth) const {
        return field.elements[finest_at(part, k, depth, deepest)][k];
    }
    double at(std::size_t part, std::size_t k, int depth) const {
        return value[static_cast<std::size_t>(spot(part, k, depth))];
    }

    Point place(std::size_t part, std::size_t k, int depth) const {
        return field.nodes[static_cast<std::size_t>(field.spots[static_cast<std::size_t>(spot(part, k, depth))].node)];
    }
    double longest(std::size_t part, int depth, std::size_t n) const {
        double most = 0;
        for (std::size_t k = 0; k < n; ++k)
            most = std::max(most, distance(place(part, k, depth), place(part, (k + 1) % n, depth)));
        return most;
    }

    // What a cut adds, beside what lies halfway between the corners.
    double missed(std::size_t part, int depth, std::size_t n) const {
        double most = 0, middle = 0;
        for (std::size_t k = 0; k < n; ++k) {
            const double next = at(part, (k + 1) % n, depth);
            middle += at(part, k, depth) / static_cast<double>(n);
            most = std::max(most, std::abs(at(4 * part + k, (k + 1) % n, depth + 1) - (at(part, k, depth) + next) / 2));
        }
        return n == 3 ? most : std::max(most, std::abs(at(4 * part, 2, depth + 1) - middle));
    }

    void add(std::size_t element, std::size_t part, int depth, std::size_t n, double bulge) {
        if (depth < std::min(deepest, DEEPEST) && longest(part, depth, n) > smallest &&
            missed(part, depth, n) > MISSED * range) {
            for (std::size_t k = 0; k < 4; ++k) add(element, 4 * part + k, depth + 1, n, bulge / 4);
            return;
        }
        Cell cell;
        cell.corners = static_cast<int>(n);
        cell.element = element;
        cell.bulge = bulge;
        for (std::size_t k = 0; k < n; ++k) {
            cell.at[k] = place(part, k, depth);
            cell.value[k] = at(part, k, depth);
        }
        cells.push_back(cell);
    }
};

// Moves every edge of a convex cell outwards.
std::array<SheetPoint, 4> grown(const std::array<SheetPoint, 4>& at, std::size_t n, double by) {
    double area = 0;
    for (std::size_t k = 0; k < n; ++k) area += at[k].x * at[(k + 1) % n].y - at[k].y * at[(k + 1) % n].x;
    std::array<SheetPoint, 4> moved = at;
    for (std::size_t k = 0; k < n; ++k) {
        const SheetPoint &p = at[(k + n - 1) % n], &q = at[k], &r = at[(k + 1) % n];
        const double a = std::hypot(q.x - p.x, q.y - p.y), b = std::hypot(r.x - q.x, r.y - q.y);
        if (a == 0 || b == 0) continue;
        // Between the normals of both edges, farther the more the corner is pointed.
        const double sign = area > 0 ? 1 : -1;
        const double x = sign * ((q.y - p.y) / a + (r.y - q.y) / b), y = -sign * ((q.x - p.x) / a + (r.x - q.x) / b);
        const double square = std::max(x * x + y * y, 2 / MOST_GROWN);
        moved[k].x += by * 2 * x / square;
        moved[k].y += by * 2 * y / square;
    }
    return moved;
}

// The linear field next to the values at the corners: value + slope . (at - middle).
struct Fit {
    SheetPoint middle;
    double value = 0, slope_x = 0, slope_y = 0, worst = 0;
};
Fit fit_of(const std::array<SheetPoint, 4>& at, const std::array<double, 4>& value, std::size_t n) {
    Fit f;
    for (std::size_t k = 0; k < n; ++k) {
        f.middle.x += at[k].x / static_cast<double>(n);
        f.middle.y += at[k].y / static_cast<double>(n);
        f.value += value[k] / static_cast<double>(n);
    }
    double xx = 0, xy = 0, yy = 0, xv = 0, yv = 0;
    for (std::size_t k = 0; k < n; ++k) {
        const double x = at[k].x - f.middle.x, y = at[k].y - f.middle.y, v = value[k] - f.value;
        xx += x * x, xy += x * y, yy += y * y, xv += x * v, yv += y * v;
    }
    const double determinant = xx * yy - xy * xy;
    if (determinant > 1e-12 * (xx + yy) * (xx + yy)) {
        f.slope_x = (xv * yy - yv * xy) / determinant;
        f.slope_y = (yv * xx - xv * xy) / determinant;
    }
    for (std::size_t k = 0; k < n; ++k)
        f.worst = std::max(f.worst, std::abs(f.value + f.slope_x * (at[k].x - f.middle.x) +
                                             f.slope_y * (at[k].y - f.middle.y) - value[k]));
    return f;
}

struct Filler {
    const Pen& pen;
    const Scale& scale;
    double range;

    void fill(const std::array<SheetPoint, 4>& at, const std::array<double, 4>& value, std::size_t n, double by) const {
        const auto [low, high] = std::minmax_element(value.begin(), value.begin() + static_cast<std::ptrdiff_t>(n));
        const Fit f = fit_of(at, value, n);
        const double steep = f.slope_x * f.slope_x + f.slope_y * f.slope_y;
        const bool flat = *high - *low <= FLAT * range || steep == 0;
        if (!flat && n == 4 && f.worst > FITTED * range) {
            for (std::size_t k = 0; k < 4; ++k) {
                const std::size_t next = (k + 1) % 4;
                fill({at[k], at[next], f.middle, f.middle}, {value[k], value[next], f.value, f.value}, 3, by);
            }
            return;
        }
        const auto corner = grown(at, n, by);
        // Where the field has a value, on the line through the middle along its slope.
        const auto place = [&](double v) {
            const double t = (v - f.value) / steep;
            return SheetPoint{f.middle.x + t * f.slope_x, f.middle.y + t * f.slope_y};
        };
        if (pen.svg) {
            const auto [first, last] = ends_of(scale);
            if (flat)
                add_cell(*pen.svg, corner.data(), n, colour_at(scale, f.value));
            else
                add_cell(*pen.svg, corner.data(), n, place(first), place(last));
            return;
        }
        if (flat) {
            set(pen, colour_at(scale, f.value));
        } else {
            const SheetPoint a = place(*low), b = place(*high);
            const std::unique_ptr<cairo_pattern_t, void (*)(cairo_pattern_t*)> pattern(
                cairo_pattern_create_linear(a.x, a.y, b.x, b.y), cairo_pattern_destroy);
            for (const Stop& stop : stops_between(scale, *low, *high))
                cairo_pattern_add_color_stop_rgb(pattern.get(), stop.share, stop.colour.r, stop.colour.g,
                                                 stop.colour.b);
            cairo_set_source(pen.cairo, pattern.get());
        }
        cairo_move_to(pen.cairo, corner[0].x, corner[0].y);
        for (std::size_t k = 1; k < n; ++k) cairo_line_to(pen.cairo, corner[k].x, corner[k].y);
        cairo_close_path(pen.cairo);
        cairo_fill(pen.cairo);
    }
};

double range_of(const Scale& scale) { return std::max(scale.high - scale.low, 1e-300); }

// The line of a value through a triangle, if it passes it.
void add_level(const Pen& pen, const View& view, double level, const std::array<Point, 3>& at,
               const std::array<double, 3>& value) {
    std::array<SheetPoint, 2> ends;
    std::size_t count = 0;
    for (std::size_t k = 0; k < 3 && count < 2; ++k) {
        const std::size_t next = (k + 1) % 3;
        if ((value[k] < level) == (value[next] < level)) continue;
        ends[count++] = view(at[k] + (level - value[k]) / (value[next] - value[k]) * (at[next] - at[k]));
    }
    if (count < 2) return;
    cairo_move_to(pen.cairo, ends[0].x, ends[0].y);
    cairo_line_to(pen.cairo, ends[1].x, ends[1].y);
}

}  // namespace

std::vector<Cell> cells_of(const Mesh& mesh, const std::vector<double>& at_nodes) {
    std::vector<Cell> cells;
    for (std::size_t e = 0; e < mesh.elements.size(); ++e) {
        Cell cell;
        cell.corners = corners(mesh.elements[e]);
        cell.element = e;
        cell.bulge = bulge_of(mesh, mesh.elements[e]);
        for (std::size_t k = 0; k < static_cast<std::size_t>(cell.corners); ++k) {
            const auto node = static_cast<std::size_t>(mesh.elements[e][k] - 1);
            cell.at[k] = mesh.nodes[node];
            cell.value[k] = at_nodes[node];
        }
        cells.push_back(cell);
    }
    return cells;
}

std::vector<Cell> cells_of(const Mesh& mesh, const Field& field, const std::vector<double>& at_spots, double range,
                           double smallest) {
    std::vector<Cell> cells;
    int deepest = 0;
    for (std::size_t n = mesh.elements.size(); n < field.elements.size(); n *= 4) ++deepest;
    Descent descent{field, at_spots, range, smallest, deepest, cells};
    for (std::size_t e = 0; e < mesh.elements.size(); ++e)
        descent.add(e, e, 0, static_cast<std::size_t>(corners(mesh.elements[e])), bulge_of(mesh, mesh.elements[e]));
    return cells;
}

void draw_cells(const Picture& picture, const Pen& pen, const View& view, const Scale& scale,
                const std::vector<Cell>& cells) {
    const Filler filler{pen, scale, range_of(scale)};
    for (int material = 0; material < picture.materials.kinds; ++material) {
        cairo_save(pen.cairo);
        // On other forms than SVG cells make a group that is clipped as a whole: PDF would write the clip with each
        // cell.
        if (pen.svg) {
            trace(pen, view, picture.materials, material);
            begin_cells(*pen.svg, pen.cairo, scale);
        } else {
            cairo_push_group(pen.cairo);
        }
        for (const Cell& cell : cells) {
            if (picture.material[cell.element] != material) continue;
            std::array<SheetPoint, 4> at;
            for (std::size_t k = 0; k < 4; ++k) at[k] = view(cell.at[k]);
            filler.fill(at, cell.value, static_cast<std::size_t>(cell.corners), GROWN + view.scale * cell.bulge);
        }
        if (pen.svg) {
            end_cells(*pen.svg);
        } else {
            cairo_pop_group_to_source(pen.cairo);
            trace(pen, view, picture.materials, material);
            cairo_clip(pen.cairo);
            cairo_paint(pen.cairo);
        }
        cairo_restore(pen.cairo);
    }
}

void draw_levels(const Picture& picture, const Pen& pen, const View& view, const Scale& scale,
                 const std::vector<Cell>& cells) {
    for (int material = 0; material < picture.materials.kinds; ++material) {
        cairo_save(pen.cairo);
        trace(pen, view, picture.materials, material);
        cairo_clip(pen.cairo);
        for (const bool zero : {false, true}) {
            for (const double level : scale.ticks) {
                if ((std::abs(level) <= 1e-9 * range_of(scale)) != zero) continue;
                for (const Cell& cell : cells) {
                    if (picture.material[cell.element] != material) continue;
                    const auto& [a, b, c, d] = cell.at;
                    const auto& [p, q, r, s] = cell.value;
                    if (cell.corners == 3) {
                        add_level(pen, view, level, {a, b, c}, {p, q, r});
                        continue;
                    }
                    const Point o = 0.25 * (a + b + c + d);
                    const double m = 0.25 * (p + q + r + s);
                    add_level(pen, view, level, {a, b, o}, {p, q, m});
                    add_level(pen, view, level, {b, c, o}, {q, r, m});
                    add_level(pen, view, level, {c, d, o}, {r, s, m});
                    add_level(pen, view, level, {d, a, o}, {s, p, m});
                }
            }
            // Colours lie between the lines on either paper, so the lines are dark on both.
            const bool strong = zero && scale.diverging;
            cairo_set_source_rgba(pen.cairo, 0.05, 0.06, 0.08, strong ? 0.8 : 0.28);
            cairo_set_line_width(pen.cairo, strong ? 0.9 : 0.6);
            cairo_stroke(pen.cairo);
        }
        cairo_restore(pen.cairo);
    }
}

}  // namespace velquor
