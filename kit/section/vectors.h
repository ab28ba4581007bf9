// Points as vectors of the plane.
#pragma once

#include <cmath>

#include "kit/section/section.h"

namespace velquor {

constexpr double PI = 3.14159265358979323846;

inline Point operator+(const Point& a, const Point& b) { return {a.y + b.y, a.z + b.z}; }
inline Point operator-(const Point& a, const Point& b) { return {a.y - b.y, a.z - b.z}; }
inline Point operator*(double s, const Point& a) { return {s * a.y, s * a.z}; }
inline double dot(const Point& a, const Point& b) { return a.y * b.y + a.z * b.z; }
inline double cross(const Point& a, const Point& b) { return a.y * b.z - a.z * b.y; }
inline double length(const Point& a) { return std::sqrt(dot(a, a)); }
inline double distance(const Point& a, const Point& b) { return length(a - b); }
inline Point unit(const Point& a) { return 1 / length(a) * a; }
inline Point left_of(const Point& a) { return {-a.z, a.y}; }  // turned by 90 degrees
inline Point turned(const Point& a, double angle) {
    const double c = std::cos(angle), s = std::sin(angle);
    return {c * a.y - s * a.z, s * a.y + c * a.z};
}

}  // namespace velquor
