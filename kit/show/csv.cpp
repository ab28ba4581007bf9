#include <cmath>

#include "kit/section/words.h"
#include "kit/show/fields.h"
#include "kit/show/show.h"

namespace velquor {

namespace {

std::string cell(const Entry& entry, double value) { return entry.given && std::isfinite(value) ? text_of(value) : ""; }

}  // namespace

std::string csv_cell(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

std::string show_csv(const std::vector<Outcome>& outcomes) {
    std::string text = "name,length,force";
    for (const Quantity& q : quantities()) text += std::string(",") + q.key + "," + q.key + "_bound";
    text += "\r\n";
    for (const Outcome& outcome : outcomes) {
        if (outcome.failure) continue;
        const Values& v = outcome.values;
        text += csv_cell(v.name.empty() ? outcome.input : v.name) + "," + v.length + "," + v.force;
        for (const Entry& entry : v.entries)
            text += "," + cell(entry, entry.value.value) + "," + cell(entry, entry.value.bound);
        text += "\r\n";
    }
    return text;
}

std::string show_csv(const Section& section, const Fields& fields) {
    std::string text = "node,y,z,material";
    for (const Fields::Column& column : fields.columns)
        if (column.components == 1)
            text += "," + csv_cell(column.name);
        else
            text += "," + csv_cell(column.name + " y") + "," + csv_cell(column.name + " z");
    text += "\r\n";
    for (std::size_t i = 0; i < fields.points.size() + fields.bars.size(); ++i) {
        const bool is_node = i < fields.points.size();
        const auto node = is_node ? static_cast<std::size_t>(fields.points[i].node) : 0;
        const Bar* const bar = is_node ? nullptr : &section.bars[fields.bars[i - fields.points.size()]];
        const Point& at = bar ? bar->at : fields.mesh.nodes[node];
        const std::string& material =
            bar ? bar->material : section.materials[static_cast<std::size_t>(fields.points[i].material)].name;
        text += (bar ? "" : std::to_string(node + 1)) + "," + text_of(at.y) + "," + text_of(at.z) + "," +
                csv_cell(material);
        for (const Fields::Column& column : fields.columns)
            for (std::size_t k = 0; k < column.components; ++k)
                text += "," + text_of(column.values[i * column.components + k]);
        text += "\r\n";
    }
    return text;
}

}  // namespace velquor
