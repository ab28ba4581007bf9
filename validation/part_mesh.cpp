// The mesh of a section from the parts of its file.
#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "section_file.h"

using nlohmann::json;

namespace {

std::vector<double> numbers(const json& part, const char* key, size_t count) {
    const json& j = part.at(key);
    if (!j.is_array() || j.size() != count)
        throw std::runtime_error(std::string("\"") + key + "\" is not a list of " + std::to_string(count));
    std::vector<double> values;
    for (const json& value : j) values.push_back(value.get<double>());
    return values;
}

point pair_of(const json& part, const char* key) {
    const auto values = numbers(part, key, 2);
    return {values[0], values[1]};
}

std::vector<point> points(const json& part, const char* key, size_t count) {
    const json& j = part.at(key);
    if (!j.is_array() || j.size() != count)
        throw std::runtime_error(std::string("\"") + key + "\" is not a list of " + std::to_string(count) + " points");
    std::vector<point> values;
    for (const json& p : j) values.push_back({p.at(0).get<double>(), p.at(1).get<double>()});
    return values;
}

double measure(const json& part, const char* key, bool zero = false) {
    const double value = part.at(key).get<double>();
    if (!(value > 0) && !(zero && value == 0)) throw std::runtime_error(std::string("\"") + key + "\" is too small");
    return value;
}

void want(bool good, const char* what) {
    if (!good) throw std::runtime_error(what);
}

// Cells that the file asks for, or as many as the mean length of opposite sides gives.
void add_four_sides(mesh* m, const json& part, const std::vector<point>& p, const std::vector<double>& bulge) {
    int n[2];
    for (int i = 0; i < 2; ++i) {
        double length = 0;
        for (int k = i; k < 4; k += 2) {
            const point q = p[k], r = p[(k + 1) % 4];
            const double half = 2 * std::atan(bulge[k]);
            length += std::hypot(r.y - q.y, r.z - q.z) * (half == 0 ? 1 : half / std::sin(half)) / 2;
        }
        n[i] = cells_along(m, length);
    }
    if (part.contains("cells")) {
        const auto cells = numbers(part, "cells", 2);
        for (int i = 0; i < 2; ++i) {
            want(cells[i] >= 1 && cells[i] <= 10000 && cells[i] == std::floor(cells[i]),
                 "\"cells\" are whole numbers from 1");
            n[i] = static_cast<int>(cells[i]) * m->refine;
        }
    }
    add_patch(m, p.data(), bulge.data(), n[0], n[1]);
}

void add_part(mesh* m, const json& part) {
    const auto shape = part.at("shape").get<std::string>();
    m->material = part.at("material").get<int>();
    if (shape == "rectangle") {
        const point a = pair_of(part, "from"), b = pair_of(part, "to");
        want(a.y < b.y && a.z < b.z, "\"from\" is the lower corner, \"to\" the upper one");
        add_four_sides(m, part, {a, {b.y, a.z}, b, {a.y, b.z}}, {0, 0, 0, 0});
    } else if (shape == "patch") {
        const auto bulge = part.contains("bulge") ? numbers(part, "bulge", 4) : std::vector<double>(4, 0.0);
        add_four_sides(m, part, points(part, "corners", 4), bulge);
    } else if (shape == "sector") {
        const auto radii = numbers(part, "radii", 2), angles = numbers(part, "angles", 2);
        want(radii[0] > 0 && radii[0] < radii[1], "\"radii\" are above 0 and rise; a full circle is a disc");
        want(angles[0] < angles[1] && angles[1] - angles[0] <= 360, "\"angles\" rise, by 360 at most");
        add_sector(m, pair_of(part, "centre"), radii[0], radii[1], angles[0], angles[1]);
    } else if (shape == "triangle") {
        const int cells = part.at("cells").get<int>();
        want(cells >= 1 && cells <= 10000, "\"cells\" is a whole number from 1");
        add_triangle(m, points(part, "corners", 3).data(), cells * m->refine);
    } else if (shape == "disc") {
        const auto axes = numbers(part, "axes", 2);
        want(axes[0] > 0 && axes[1] > 0, "\"axes\" are above 0");
        add_disc(m, pair_of(part, "centre"), axes[0], axes[1]);
    } else if (shape == "i_profile" || shape == "u_profile") {
        const double h = measure(part, "h"), b = measure(part, "b"), tw = measure(part, "tw"), tf = measure(part, "tf");
        const double r = measure(part, "r", true);
        const double b2 = part.value("b2", b), tf2 = part.value("tf2", tf);
        const double half = shape == "i_profile" ? 2 : 1;
        want(std::min(b, b2) > tw + half * r && h > tf + tf2 + 2 * r && tf2 > 0, "the profile's measures do not fit");
        if (shape == "i_profile")
            add_i_profile(m, h, b, tw, tf, r, b2, tf2);
        else
            add_u_profile(m, h, b, tw, tf, r);
    } else if (shape == "l_profile") {
        const double h = measure(part, "h"), b = measure(part, "b"), t = measure(part, "t");
        const double r1 = measure(part, "r1", true), r2 = measure(part, "r2", true);
        want(std::min(h, b) > t + r1 + r2 && r2 < t, "the profile's measures do not fit");
        add_l_profile(m, h, b, t, r1, r2);
    } else {
        const double h = measure(part, "h"), b = measure(part, "b"), t = measure(part, "t");
        const double ro = measure(part, "ro"), ri = measure(part, "ri");
        want(std::min(h, b) > 2 * std::max(ro, t + ri), "the profile's measures do not fit");
        add_hollow_profile(m, h, b, t, ro, ri);
    }
}

// Sides of two parts that touch without sharing their nodes leave a node on somebody's edge. Edges of one element alone
// are looked at.
void check_seams(const mesh& m) {
    struct Edge {
        int32_t low, high;
        bool operator<(const Edge& e) const { return low != e.low ? low < e.low : high < e.high; }
        bool operator==(const Edge& e) const { return low == e.low && high == e.high; }
    };
    std::vector<Edge> edges, outline;
    for (int32_t e = 0; e < m.nelems; ++e) {
        for (int c = 0; c < 4; ++c) {
            const int32_t a = m.elements[e][c], b = m.elements[e][(c + 1) % 4];
            if (a != b) edges.push_back({std::min(a, b), std::max(a, b)});
        }
    }
    std::sort(edges.begin(), edges.end());
    for (size_t i = 0; i < edges.size(); ++i)
        if (!(i > 0 && edges[i - 1] == edges[i]) && !(i + 1 < edges.size() && edges[i + 1] == edges[i]))
            outline.push_back(edges[i]);
    for (const Edge& edge : outline) {
        const point p = m.nodes[edge.low], q = m.nodes[edge.high];
        const double dy = q.y - p.y, dz = q.z - p.z, square = dy * dy + dz * dz;
        for (const Edge& other : outline) {
            const point r = m.nodes[other.low];
            const double along = ((r.y - p.y) * dy + (r.z - p.z) * dz) / square;
            const double across = ((r.z - p.z) * dy - (r.y - p.y) * dz) / square;
            if (along > 0.01 && along < 0.99 && std::fabs(across) < 0.001)
                throw std::runtime_error("parts touch at " + std::to_string(r.y) + ", " + std::to_string(r.z) +
                                         " and do not share their nodes there");
        }
    }
}

}  // namespace

mesh make_mesh(const SectionFile& file, int refine) {
    mesh m = begin_mesh(file.size, refine);
    try {
        for (size_t i = 0; i < file.parts.size(); ++i) {
            try {
                add_part(&m, file.parts[i]);
            } catch (const std::exception& error) {
                throw std::runtime_error("shape " + std::to_string(i + 1) + ": " + error.what());
            }
        }
        if (end_mesh(&m) != 0) throw std::runtime_error("the mesh is too large");
        if (refine == 1) check_seams(m);
        if (file.triangles) split_in_triangles(&m);
        turn_and_shift(&m, file.turn, file.shift);
        if (m.failed) throw std::runtime_error("the mesh is too large");
    } catch (const std::exception& error) {
        release_mesh(&m);
        throw std::runtime_error(file.path + ": " + error.what());
    }
    return m;
}
