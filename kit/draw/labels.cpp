#include "kit/draw/labels.h"

#include <algorithm>
#include <cmath>

#include "kit/section/vectors.h"

namespace velquor {

namespace {

// Whether a line passes a box: clipped against its sides.
bool passes(const Segment& s, const Rect& r) {
    double first = 0, last = 1;
    const double d[2] = {s.b.x - s.a.x, s.b.y - s.a.y}, from[2] = {s.a.x - r.x, s.a.y - r.y},
                 size[2] = {r.width, r.height};
    for (int k = 0; k < 2; ++k) {
        if (d[k] == 0) {
            if (from[k] < 0 || from[k] > size[k]) return false;
            continue;
        }
        const double t = -from[k] / d[k], u = (size[k] - from[k]) / d[k];
        first = std::max(first, std::min(t, u));
        last = std::min(last, std::max(t, u));
    }
    return first <= last;
}

}  // namespace

bool overlap(const Rect& a, const Rect& b) {
    return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height && b.y < a.y + a.height;
}

bool is_free(const Taken& taken, const Rect& box, const Rect& within) {
    const Rect r{box.x - 2, box.y - 1, box.width + 4, box.height + 2};
    return r.x >= within.x && r.y >= within.y && r.x + r.width <= within.x + within.width &&
           r.y + r.height <= within.y + within.height &&
           std::none_of(taken.boxes.begin(), taken.boxes.end(), [&](const Rect& b) { return overlap(b, r); }) &&
           std::none_of(taken.lines.begin(), taken.lines.end(), [&](const Segment& s) { return passes(s, r); });
}

void write_near(const Pen& pen, const std::string& text, const SheetPoint& at, double off, Style style, Taken& taken,
                const Rect& within) {
    const double middle = 0.36 * style.size;
    SheetPoint chosen;
    Anchor anchor = Anchor::start;
    bool found = false;
    for (const double distance : {off, 1.7 * off, 2.6 * off})
        for (const double angle : {-45, -135, 45, 135, 0, 180, -90, 90, -20, -160, 20, 160}) {
            const double c = std::cos(angle * PI / 180), s = std::sin(angle * PI / 180);
            style.anchor = c > 0.2 ? Anchor::start : c < -0.2 ? Anchor::end : Anchor::middle;
            const SheetPoint to{at.x + distance * c, at.y + distance * s + middle};
            const bool free = is_free(taken, box_of(pen, text, to, style), within);
            if (found || (!free && (distance != off || angle != -45))) continue;
            chosen = to;
            anchor = style.anchor;
            found = free;
        }
    style.anchor = anchor;
    taken.boxes.push_back(box_of(pen, text, chosen, style));
    write(pen, text, chosen, style);
}

}  // namespace velquor
