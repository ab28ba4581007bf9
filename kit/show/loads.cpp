// Load sets and their stresses, for reading.
#include "kit/section/loads.h"

#include <algorithm>
#include <cmath>

#include "kit/section/words.h"
#include "kit/show/show.h"

namespace velquor {

namespace {

constexpr int DIGITS = 4;

// The longer side of the box around all nodes.
double size_of(const LoadResult& r) {
    Point low{INFINITY, INFINITY}, high{-INFINITY, -INFINITY};
    for (const NodeStress& node : r.nodes) {
        low = {std::min(low.y, node.at.y), std::min(low.z, node.at.z)};
        high = {std::max(high.y, node.at.y), std::max(high.z, node.at.z)};
    }
    return std::max(high.y - low.y, high.z - low.z);
}

std::string peak_text(const Peak& peak, double size) {
    const auto place = [&](const Point& p) {
        return "(" + text_beside(size, p.y) + ", " + text_beside(size, p.z) + ")";
    };
    std::string value = std::isfinite(peak.value) ? text_of(peak.value, DIGITS) + " at " + place(peak.at) : "-";
    if (peak.value == 0) value = "0";
    return peak.unlimited ? "no limit at the sharp corner " + place(peak.corner) + "; elsewhere " + value : value;
}

}  // namespace

std::string load_text(const Load& load, const std::string& length, const std::string& force) {
    std::string text;
    for (const LoadKey& key : load_keys()) {
        const double value = load.*(key.value);
        if (value == 0) continue;
        text += (text.empty() ? "" : ", ") + std::string(key.name) + " = " + figures({value, 0}) + " " +
                raised(load_unit(key, length, force));
    }
    return text.empty() ? "no load" : text;
}

std::string show_load(const LoadResult& r) {
    const std::string given = load_text(r.load, r.length, r.force);
    std::string text = "\nStresses in " + raised(r.force + "/" + r.length + "2") + " under " + given;
    if (r.load.name.find('=') == std::string::npos) text += " (" + printable(r.load.name) + ")";
    text += "\n";
    const double size = size_of(r);
    for (const MaterialStresses& m : r.materials) {
        std::string indent = "  ";
        if (r.materials.size() > 1) text += "  " + printable(m.material) + "\n", indent = "    ";
        if (m.tension.value != 0 || m.compression.value != 0) {
            text += indent + "axial, largest   " + peak_text(m.tension, size) + "\n";
            text += indent + "axial, smallest  " + peak_text(m.compression, size) + "\n";
        }
        if (m.shear.value != 0) text += indent + "shear            " + peak_text(m.shear, size) + "\n";
        text += indent + "von Mises        " + peak_text(m.von_mises, size) + "\n";
        if (m.has_strength) text += indent + "of the strength  " + peak_text(m.utilisation, size) + "\n";
    }
    if (!r.warning.empty()) text += "  " + r.warning + "\n";
    return text;
}

}  // namespace velquor
