#include "shapes.h"

#include <cmath>
#include <functional>

namespace {

constexpr double PI = 3.14159265358979324;
constexpr double E = 2.6, G = 1;

// Saint-Venant's series (S. Timoshenko, J. N. Goodier, Theory of Elasticity, art. 109) for the long side b and the
// thickness t: torsion constant, and largest stress over G t twist.
double strip_constant(double b, double t) {
    double sum = 0;
    for (int n = 1; n < 400; n += 2) sum += std::tanh(n * PI * b / (2 * t)) / std::pow(n, 5);
    return b * t * t * t / 3 * (1 - 192 * t / (std::pow(PI, 5) * b) * sum);
}
double strip_edge(double b, double t) {
    double sum = 0;
    for (int n = 1; n < 400; n += 2) sum += 1 / (n * n * std::cosh(n * PI * b / (2 * t)));
    return 1 - 8 / (PI * PI) * sum;
}

Host host_of(const std::string& name, mesh& m) {
    end_mesh(&m);
    Host host;
    host.name = name, host.nnodes = m.nnodes, host.nelems = m.nelems;
    host.nodes.resize(2 * static_cast<size_t>(m.nnodes)), host.elements.resize(4 * static_cast<size_t>(m.nelems));
    fill_tables(&m, host.nodes.data(), host.elements.data());
    release_mesh(&m);
    for (const double value : {E, G, 0.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 0.0})
        host.props.insert(host.props.end(), static_cast<size_t>(host.nelems), value);
    return host;
}

// Adds a shape once of quadrilaterals and once of triangles; turned and moved where asked, so that its axes are not
// those of the host.
void add(std::vector<Shape>& shapes, const std::string& name, double size, const std::function<void(mesh*)>& draw,
         const std::vector<Arc>& arcs, bool turned, const std::vector<Exact>& exact = {}) {
    for (const bool triangles : {false, true}) {
        mesh m = begin_mesh(size, 1);
        draw(&m);
        join_nodes(&m, 0);
        if (triangles) split_in_triangles(&m);
        Shape shape = {host_of(name + (triangles ? ", triangles" : ", quadrilaterals"), m), exact};
        follow(shape.host, arcs, 0.15);  // the mesher's arcs enclose the true area
        if (turned) turn_and_shift(shape.host, 0.35, {3, -7});
        shapes.push_back(shape);
    }
}

// A quarter circle of a fillet or a rounding; `quarter` counts from that between Y and Z.
Arc rounding(double y, double z, double r, int quarter) {
    return {{{y, z}, r, r, 0}, quarter * PI / 2, (quarter + 1) * PI / 2};
}
Arc full(double a, double b) { return {{{0, 0}, a, b, 0}, 0, 2 * PI}; }

// Four-sided parts around the middle of a convex polygon, one at each corner, each of n x n elements.
void add_polygon(mesh* m, const std::vector<point>& corners, int n) {
    point c = {0, 0};
    for (const point& p : corners) c.y += p.y / corners.size(), c.z += p.z / corners.size();
    const auto middle = [](point p, point q) { return point{(p.y + q.y) / 2, (p.z + q.z) / 2}; };
    for (size_t i = 0; i < corners.size(); ++i) {
        const point p = corners[i], before = corners[(i + corners.size() - 1) % corners.size()];
        const point patch[4] = {c, middle(before, p), p, middle(p, corners[(i + 1) % corners.size()])};
        const double straight[4] = {0};
        add_patch(m, patch, straight, n, n);
    }
}

void add_four(mesh* m, point p, point q, point r, point s, int n1, int n2) {
    const point corners[4] = {p, q, r, s};
    const double straight[4] = {0};
    add_patch(m, corners, straight, n1, n2);
}

void add_rectangles(std::vector<Shape>& shapes) {
    for (const double b : {1.0, 2.0, 5.0, 12.0})
        add(shapes, "rectangle " + std::to_string(static_cast<int>(b)) + " : 1", 0.5,
            [b](mesh* m) {
                add_rectangle(m, {0, 0}, {b, 1});
            },
            {}, b > 1, {{VQ_GJ, strip_constant(b, 1)}});
}

void add_rounds(std::vector<Shape>& shapes) {
    const double a = 3, b = 2, a2 = a * a, b2 = b * b;
    const double sine = (a2 - b2) / (a2 + b2);
    add(shapes, "ellipse 3 : 2", 1.1,
        [=](mesh* m) {
            add_disc(m, {0, 0}, a, b);
        },
        {full(a, b)}, true,
        {{VQ_GJ, PI * a2 * a * b2 * b / (a2 + b2)}, {VQ_IW, E * PI * a2 * a * b2 * b / 24 * sine * sine}});
    add(shapes, "circle", 0.5, [](mesh* m) { add_disc(m, {0, 0}, 1, 1); }, {full(1, 1)}, false, {{VQ_GJ, PI / 2}});
    add(shapes, "tube, radii 4 and 3", 0.5,
        [](mesh* m) {
            add_sector(m, {0, 0}, 3, 4, 0, 360);
        },
        {full(4, 4), full(3, 3)}, false, {{VQ_GJ, PI / 2 * (256 - 81)}});
    add(
        shapes, "open tube, 300 degrees", 0.5,
        [](mesh* m) {
            add_sector(m, {0, 0}, 3, 4, 0, 300);
        },
        {full(4, 4), full(3, 3)}, true);
    add(
        shapes, "half tube, radii 2 and 1", 0.5,
        [](mesh* m) {
            add_sector(m, {0, 0}, 1, 2, 0, 180);
        },
        {full(2, 2), full(1, 1)}, true);
}

void add_polygons(std::vector<Shape>& shapes) {
    add(
        shapes, "trapezoid", 0.5,
        [](mesh* m) {
            add_four(m, {0, 0}, {3, 0}, {2, 1.2}, {0.4, 1}, 5, 2);
        },
        {}, false);
    add(
        shapes, "wedge", 0.5,
        [](mesh* m) {
            add_four(m, {0, 0}, {6, 0}, {6, 0.6}, {0, 1.2}, 12, 2);
        },
        {}, true);
    add(shapes, "equilateral triangle", 0.5,
        [](mesh* m) {
            add_polygon(m, {{0, 0}, {2, 0}, {1, std::sqrt(3.0)}}, 2);
        },
        {}, false, {{VQ_GJ, std::sqrt(3.0) / 80 * 16}});
    add(
        shapes, "pentagon", 0.5,
        [](mesh* m) {
            add_polygon(m, {{0, 0}, {2.2, 0.2}, {2.6, 1.4}, {1.2, 2.4}, {-0.4, 1.2}}, 2);
        },
        {}, true);
}

void add_ipe300(std::vector<Shape>& shapes, double size) {
    const double h = 300, b = 150, tw = 7.1, tf = 10.7, r = 15;
    const double fy = tw / 2 + r, fz = h / 2 - tf - r;
    const std::vector<Arc> fillets = {rounding(fy, fz, r, 1), rounding(-fy, fz, r, 0), rounding(-fy, -fz, r, 3),
                                      rounding(fy, -fz, r, 2)};
    add(
        shapes, "IPE 300", size, [=](mesh* m) { add_i_profile(m, h, b, tw, tf, r, b, tf); }, fillets, true);
}

void add_rolled(std::vector<Shape>& shapes) {
    add_ipe300(shapes, 4.6);
    add(
        shapes, "UPE 200", 4.5, [](mesh* m) { add_u_profile(m, 200, 80, 6, 11, 13); },
        {rounding(19, 76, 13, 1), rounding(19, -76, 13, 2)}, true);
    add(
        shapes, "L 100x65x10", 5, [](mesh* m) { add_l_profile(m, 100, 65, 10, 10, 5); },
        {rounding(20, 20, 10, 2), rounding(60, 5, 5, 0), rounding(5, 95, 5, 0)}, false);
    std::vector<Arc> corners;
    for (int k = 0; k < 4; ++k) {
        const double side = k == 0 || k == 3 ? 1 : -1, up = k < 2 ? 1 : -1;
        corners.push_back(rounding(side * 38, up * 88, 12, k));
        corners.push_back(rounding(side * 34, up * 84, 8, k));
    }
    add(
        shapes, "RHS 200x100x8", 4, [](mesh* m) { add_hollow_profile(m, 200, 100, 8, 12, 8); }, corners, true);
}

// Walls between lines across: kept where `solid` says so of the strips along Y and Z, each of some cells.
struct Strip {
    double width;
    int cells;
};
void add_strips(mesh* m, const std::vector<Strip>& y, const std::vector<Strip>& z,
                const std::function<bool(int, int)>& solid) {
    double y0 = 0;
    for (size_t i = 0; i < y.size(); y0 += y[i++].width) {
        double z0 = 0;
        for (size_t j = 0; j < z.size(); z0 += z[j++].width)
            if (solid(static_cast<int>(i), static_cast<int>(j)))
                add_four(m, {y0, z0}, {y0 + y[i].width, z0}, {y0 + y[i].width, z0 + z[j].width}, {y0, z0 + z[j].width},
                         y[i].cells, z[j].cells);
    }
}

// Angle, channel, I, T and box with walls of 1; `layers` elements through them, each `oblong` times as long where the
// wall goes on.
std::vector<Shape> walls(int layers, double oblong) {
    std::vector<Shape> shapes;
    const Strip wall = {1, layers};
    const auto free = [&](double width) {
        return Strip{width, static_cast<int>(std::lround(width * layers / oblong))};
    };
    add(
        shapes, "angle", 1,
        [&](mesh* m) {
            add_strips(m, {wall, free(8)}, {wall, free(12)}, [](int i, int j) { return i == 0 || j == 0; });
        },
        {}, false);
    add(
        shapes, "channel", 1,
        [&](mesh* m) {
            add_strips(m, {wall, free(8)}, {wall, free(16), wall}, [](int i, int j) { return i == 0 || j != 1; });
        },
        {}, true);
    add(
        shapes, "I", 1,
        [&](mesh* m) {
            add_strips(m, {free(4), wall, free(4)}, {wall, free(12), wall},
                       [](int i, int j) { return i == 1 || j != 1; });
        },
        {}, true);
    add(
        shapes, "T", 1,
        [&](mesh* m) {
            add_strips(m, {free(4), wall, free(4)}, {free(8), wall}, [](int i, int j) { return i == 1 || j == 1; });
        },
        {}, false);
    add(
        shapes, "box", 1,
        [&](mesh* m) {
            add_strips(m, {wall, free(8), wall}, {wall, free(12), wall}, [](int i, int j) { return i != 1 || j != 1; });
        },
        {}, true);
    return shapes;
}

}  // namespace

std::vector<Shape> smooth_shapes() {
    std::vector<Shape> shapes;
    add_rectangles(shapes);
    add_rounds(shapes);
    add_polygons(shapes);
    add_rolled(shapes);
    return shapes;
}

std::vector<Shape> sharp_shapes() { return walls(2, 1); }

Host rolled_profile(double size, bool triangles) {
    std::vector<Shape> both;
    add_ipe300(both, size);
    return both[triangles ? 1 : 0].host;
}

Host plate(int n, bool triangles) {
    std::vector<Shape> both;
    add(
        both, "plate", 1,
        [n](mesh* m) {
            add_four(m, {0, 0}, {9, 0}, {8, 6}, {1, 7}, n, n);
        },
        {}, true);
    return both[triangles ? 1 : 0].host;
}

std::vector<Shape> oblong_shapes() {
    std::vector<Shape> shapes;
    for (const double b : {12.0, 40.0})
        add(shapes, "strip " + std::to_string(static_cast<int>(b)) + " : 1", 1,
            [b](mesh* m) {
                add_four(m, {0, 0}, {b, 0}, {b, 1}, {0, 1}, static_cast<int>(b / 4), 1);
            },
            {}, b > 12, {{VQ_GJ, strip_constant(b, 1)}});
    for (Shape& shape : walls(1, 4)) shapes.push_back(shape);
    return shapes;
}

Shape strip_40(int layers, bool triangles) {
    std::vector<Shape> both;
    add(both, "strip 40 : 1", 1.0 / layers,
        [](mesh* m) {
            add_rectangle(m, {0, 0}, {40, 1});
        },
        {}, false, {{VQ_GJ, strip_constant(40, 1)}});
    return both[triangles ? 1 : 0];
}

double strip_40_stress() { return strip_edge(40, 1) / strip_constant(40, 1); }
