// Natural coordinates of a point in an element.
#include <algorithm>
#include <cmath>

#include "element/suportbase.h"
#include "system/vq_system_mod.h"

namespace VQ_SYSTEM_MOD {

namespace {

// A point is outside an edge when its triangle over it is below this share of the element.
constexpr double OUTSIDE = -1e-12;

double area_of(double ay, double az, double by, double bz, double cy, double cz) {
    return ((by - ay) * (cz - az) - (cy - ay) * (bz - az)) / 2.0;
}

// Signed area of the triangle over the edge from node a to node b, its apex the point (y, z).
double over_edge(const Real<4>& Y, const Real<4>& Z, int a, int b, double y, double z) {
    return area_of(Y(a), Z(a), Y(b), Z(b), y, z);
}

void locate_in_quadrilateral(const Real<4>& Y, const Real<4>& Z, double y, double z, Real<3>& rst) {
    double area;
    PLOCHA4(Y, Z, area);
    const double threshold = OUTSIDE * area;
    double a41 = over_edge(Y, Z, 4, 1, y, z), a12 = over_edge(Y, Z, 1, 2, y, z);
    double a23 = over_edge(Y, Z, 2, 3, y, z), a34 = over_edge(Y, Z, 3, 4, y, z);
    const double A124 = over_edge(Y, Z, 1, 2, Y(4), Z(4)), A234 = over_edge(Y, Z, 2, 3, Y(4), Z(4));
    const bool f41 = a41 < threshold, f12 = a12 < threshold, f23 = a23 < threshold, f34 = a34 < threshold;
    if (f41) a41 = std::fabs(a41);
    if (f12) a12 = std::fabs(a12);
    if (f23) a23 = std::fabs(a23);
    if (f34) a34 = std::fabs(a34);

    double r, s;
    if ((a23 + a34) / A234 <= (a41 + a12) / A124) {
        r = 1.0 - 2.0 * (a23 / A234);
        s = 1.0 - 2.0 * (a34 / A234);
    } else {
        r = 2.0 * (a41 / A124) - 1.0;
        s = 2.0 * (a12 / A124) - 1.0;
    }
    r = std::min(std::max(r, -1.0), 1.0);
    s = std::min(std::max(s, -1.0), 1.0);
    if (f41) r = -1.0;
    if (f12) s = -1.0;
    if (f23) r = 1.0;
    if (f34) s = 1.0;
    rst = {{r, s, 0.0}};
}

void locate_in_triangle(const Real<4>& Y, const Real<4>& Z, double y, double z, Real<3>& rst) {
    double area;
    PLOCHA3({{Y(1), Y(2), Y(3)}}, {{Z(1), Z(2), Z(3)}}, area);
    const double threshold = OUTSIDE * area;
    const double A = over_edge(Y, Z, 1, 2, Y(3), Z(3));
    const double a23 = over_edge(Y, Z, 2, 3, y, z);
    double a31 = over_edge(Y, Z, 3, 1, y, z), a12 = over_edge(Y, Z, 1, 2, y, z);
    const bool f23 = a23 < threshold, f31 = a31 < threshold, f12 = a12 < threshold;
    if (f31) a31 = std::fabs(a31);
    if (f12) a12 = std::fabs(a12);

    double r = std::min(std::max(a31 / A, 0.0), 1.0), s = std::min(std::max(a12 / A, 0.0), 1.0);
    if (f23) {
        const double onto_edge = 1.0 / (r + s);
        r *= onto_edge;
        s *= onto_edge;
    }
    if (f31) r = 0.0;
    if (f12) s = 0.0;
    rst = {{r, s, 0.0}};
}

// The corners of the natural element close in on the nearest one, halving their distance in each step.
void bisect(std::int32_t dimension, std::int32_t count, const Real<3>& point, const Real<4>& X, const Real<4>& Y,
            const Real<4>& Z, double tolerance, Real<3>& rst, std::int32_t& steps) {
    Real<4> r{{-1.0, 1.0, 1.0, -1.0}}, s{{-1.0, -1.0, 1.0, 1.0}}, t{{0.0, 0.0, 0.0, 0.0}};
    if (count == 3) {
        r = {{0.0, 1.0, 0.0, 0.0}};
        s = {{0.0, 0.0, 1.0, 0.0}};
    }
    int best;
    bool moved;
    do {
        ++steps;
        best = 1;
        double nearest = 1e30;
        for (int c = 1; c <= count; ++c) {
            Real<4> N;
            SUPORTBASE::GETBASEN(r(c), s(c), N);
            double dx = -point(1), dy = -point(2), dz = -point(3);
            for (int i = 1; i <= count; ++i) {
                dx += N(i) * X(i);
                dy += N(i) * Y(i);
                dz += N(i) * Z(i);
            }
            const double distance = std::sqrt(dx * dx + dy * dy + dz * dz);
            if (distance < nearest) {
                nearest = distance;
                best = c;
            }
        }
        moved = false;
        for (int c = 1; c <= count; ++c) {
            for (Real<4>* coordinate : {&r, &s, &t}) {
                const double before = (*coordinate)(c);
                (*coordinate)(c) = before + ((*coordinate)(best)-before) * 0.5;
                moved = moved || (*coordinate)(c) != before;
            }
        }
        // No tolerance is too small: corners that cannot come nearer end the bisection too.
    } while (moved && !(std::fabs(r(3) - r(1)) <= tolerance && std::fabs(s(3) - s(1)) <= tolerance &&
                        std::fabs(t(count) - t(1)) <= tolerance));
    rst = {{r(best), s(best), dimension == 3 ? t(best) : 0.0}};
}

}  // namespace

void PLOCHA3(const Real<3>& y, const Real<3>& z, double& area) {
    area = ((z(3) - z(1)) * y(2) + (z(1) - z(2)) * y(3) + (z(2) - z(3)) * y(1)) * 0.5;
}

void PLOCHA4(const Real<4>& y, const Real<4>& z, double& area) {
    const double a = y(3) - y(1), b = z(3) - z(1), c = z(4) - z(2), d = y(4) - y(2);
    area = ((a - d) * (b + c) - (b - c) * (a + d)) * 0.25;
}

void RST_ITER(std::int32_t dimension, std::int32_t count, const Real<3>& point, const Real<4>& X, const Real<4>& Y,
              const Real<4>& Z, double tolerance, Real<3>& rst, std::int32_t& steps) {
    rst = {};
    steps = 0;
    if (count != 3 && count != 4) return;
    if (dimension != 2)
        bisect(dimension, count, point, X, Y, Z, tolerance, rst, steps);
    else if (count == 4)
        locate_in_quadrilateral(X, Y, point(1), point(2), rst);
    else
        locate_in_triangle(X, Y, point(1), point(2), rst);
}

}  // namespace VQ_SYSTEM_MOD
