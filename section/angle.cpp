// Sums and products with their rounding error, after T. J. Dekker, A floating-point technique for extending the
// available precision, Numerische Mathematik 18 (1971), and D. E. Knuth, The Art of Computer Programming 2, 4.2.2.
#include "section/angle.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace BASICCHAR_MOD {

namespace {

// The number hi + lo; hi is it rounded to nearest.
struct Pair {
    double hi, lo;
};

constexpr Pair HALFPI{0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54};
constexpr double HALFPIREST = -0x1.f1976b7ed8fbcp-110;  // pi/2 - HALFPI
constexpr double TINY = 0x1p-60;                        // t^2 / 3 of a tangent t below this is lost in 100 bits

// |a| >= |b|
constexpr Pair ordered_sum(double a, double b) {
    const double s = a + b;
    return {s, b - (s - a)};
}

constexpr Pair sum(double a, double b) {
    const double s = a + b, v = s - a;
    return {s, (a - (s - v)) + (b - v)};
}

constexpr Pair product(double a, double b) {
    constexpr double SPLITTER = 134217729.0;  // 2^27 + 1: halves of 26 bits, whose products are exact
    const double ta = SPLITTER * a, ah = ta - (ta - a), al = a - ah;
    const double tb = SPLITTER * b, bh = tb - (tb - b), bl = b - bh;
    const double p = a * b;
    return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
}

constexpr Pair operator-(Pair a) { return {-a.hi, -a.lo}; }
constexpr Pair operator+(Pair a, Pair b) {
    const Pair s = sum(a.hi, b.hi);
    return ordered_sum(s.hi, s.lo + (a.lo + b.lo));
}
constexpr Pair operator-(Pair a, Pair b) { return a + -b; }
constexpr Pair operator*(Pair a, Pair b) {
    const Pair p = product(a.hi, b.hi);
    return ordered_sum(p.hi, p.lo + (a.hi * b.lo + a.lo * b.hi));
}

constexpr Pair reciprocal(double n) {
    const Pair p = product(1.0 / n, n);
    return {1.0 / n, ((1.0 - p.hi) - p.lo) / n};
}

constexpr Pair ONE{1.0, 0.0};
// The series of (sin r)/r in r^2, -+ 1/(2k + 1)!, so far as it needs more than 53 bits.
constexpr Pair SINE[] = {ONE,
                         -reciprocal(6.0),
                         reciprocal(120.0),
                         -reciprocal(5040.0),
                         reciprocal(362880.0),
                         -reciprocal(39916800.0),
                         reciprocal(6227020800.0),
                         -reciprocal(1307674368000.0)};

// For 0 <= angle <= pi.
void sine_and_cosine(double angle, Pair& sine, Pair& cosine) {
    const int quarters = (angle > 0.5 * HALFPI.hi) + (angle > 1.5 * HALFPI.hi);
    // Products of these few quarters are exact, and so is the first difference: r to 100 bits, in -pi/4 to pi/4.
    const Pair r = Pair{angle - quarters * HALFPI.hi, 0.0} - Pair{quarters * HALFPI.lo, quarters * HALFPIREST};
    const Pair square = r * r;

    double end = 0.0;
    for (int n = 29; n > 17; n -= 2) end = (1.0 - end) * square.hi / (n * (n - 1));
    Pair series{(1.0 - end) / 355687428096000.0, 0.0};
    for (int k = 7; k >= 0; --k) series = SINE[k] + square * series;
    sine = r * series;
    const Pair rest = ONE - sine * sine;
    const double root = std::sqrt(rest.hi);
    cosine = ordered_sum(root, (rest - product(root, root)).hi / (2.0 * root));
    for (int n = 0; n < quarters; ++n) {
        std::swap(sine, cosine);
        cosine = -cosine;
    }
}

// The angle of x >= 0, y >= 0.
Pair angle_in_first_quadrant(double y, double x) {
    if (y == 0.0) return {0.0, 0.0};
    if (std::isinf(y)) {
        x = std::isinf(x) ? 1.0 : 0.0;
        y = 1.0;
    }
    if (y < TINY * x) return {y / x, 0.0};
    int exponent;
    std::frexp(std::max(x, y), &exponent);
    x = std::ldexp(x, -exponent);
    y = std::ldexp(y, -exponent);

    // In 53 bits by the series, the angle of the smaller ratio halved three times; then one step of Newton's method.
    double t = x < y ? x / y : y / x;
    for (int n = 0; n < 3; ++n) t /= 1.0 + std::sqrt(1.0 + t * t);
    double series = 0.0;
    for (int n = 15; n > 0; n -= 2) series = 1.0 / n - t * t * series;
    const double guess = x < y ? HALFPI.hi - 8.0 * t * series : 8.0 * t * series;
    Pair s, c;
    sine_and_cosine(guess, s, c);
    const Pair excess = Pair{y, 0.0} * c - Pair{x, 0.0} * s;
    return ordered_sum(guess, excess.hi / (x * c.hi + y * s.hi));
}

}  // namespace

double angle_of(double y, double x) {
    if (std::isnan(x) || std::isnan(y)) return x + y;
    const Pair angle = angle_in_first_quadrant(std::fabs(y), std::fabs(x));
    return std::copysign(std::signbit(x) ? (HALFPI + HALFPI - angle).hi : angle.hi, y);
}

Direction direction_of(double angle) {
    if (!(std::fabs(angle) <= 2.0 * HALFPI.hi)) return {NAN, NAN};
    Pair sine, cosine;
    sine_and_cosine(std::fabs(angle), sine, cosine);
    return {cosine.hi, std::copysign(sine.hi, angle)};  // sin of the largest angle, pi rounded down, is above 0
}

}  // namespace BASICCHAR_MOD
