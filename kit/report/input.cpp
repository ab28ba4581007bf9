#include <algorithm>
#include <cmath>
#include <filesystem>

#include "kit/report/report.h"
#include "kit/section/geometry.h"
#include "kit/section/loads.h"
#include "kit/section/profiles.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"
#include "kit/show/show.h"

namespace velquor {

namespace {

constexpr Column::Kind TEXT = Column::Kind::text, NUMBER = Column::Kind::number;
constexpr int DIGITS = 7;  // of what was derived: the centre of an arc, a diameter, Poisson's ratio

std::string number(double value) { return text_of(value == 0 ? 0 : value, DIGITS); }  // -0 as 0
std::string point_text(const Point& p) { return "(" + number(p.y) + ", " + number(p.z) + ")"; }
std::string positive(double value) { return value > 0 ? number(value) : "–"; }

std::string list_of(const std::map<std::string, double>& parameters) {
    std::string text;
    for (const auto& [name, value] : parameters) text += (text.empty() ? "" : ", ") + name + " " + number(value);
    return text;
}

// Poisson's ratio of a solid that is alike in all directions; where G was given, as of timber, there may be none.
std::string poisson_text(const Material& m) {
    constexpr double ROUNDING = 1e-9;
    const double nu = m.E / (2 * m.G) - 1;
    return nu < -ROUNDING || nu > 0.5 + ROUNDING ? "–" : text_of(nu < ROUNDING ? 0 : nu, 4);
}

Table table_of_materials(const Section& s) {
    const std::string stress = raised(s.force + "/" + s.length + "2");
    Table table = {"Materials",
                   {{TEXT, "Material", ""},
                    {NUMBER, "E", stress},
                    {NUMBER, "ν", ""},
                    {NUMBER, "G", stress},
                    {NUMBER, "Density", "kg/" + raised(s.length + "3")},
                    {NUMBER, "Tensile strength", stress},
                    {NUMBER, "Compressive strength", stress}},
                   {}};
    for (const Material& m : s.materials)
        table.rows.push_back({{m.name, number(m.E), poisson_text(m), number(m.G), positive(m.density),
                               positive(m.tension), positive(m.compression)}});
    return table;
}

std::string drawn_as(const Section& s, std::size_t k) {
    const Part& part = s.parts[k];
    if (is_mesh(s)) {
        const auto elements = std::count(s.mesh.owners.begin(), s.mesh.owners.end(), static_cast<std::int32_t>(k));
        return std::to_string(elements) + (elements == 1 ? " element" : " elements") +
               (s.mesh.file.empty() ? "" : " of " + std::filesystem::path(s.mesh.file).filename().string());
    }
    if (!part.profile.empty()) {
        const Profile profile = profile_of(part.profile, s.length, "");
        return profile.name + " of " + profile.standard + ": " + list_of(profile.parameters);
    }
    if (!part.shape.empty()) return part.shape + ": " + list_of(part.parameters);
    const std::size_t points = part.face.outer.edges.size(), holes = part.face.holes.size();
    std::string text = "outline of " + std::to_string(points) + " points";
    if (holes > 0) text += ", " + std::to_string(holes) + (holes == 1 ? " hole" : " holes");
    return text;
}

std::string place_text(const Place& place) {
    std::string text = place.at.y == 0 && place.at.z == 0 ? "" : "moved to " + point_text(place.at);
    if (place.angle != 0) text = "turned by " + number(place.angle) + "°" + (text.empty() ? "" : ", ") + text;
    if (place.mirrored) text = std::string("mirrored") + (text.empty() ? "" : ", ") + text;
    return text.empty() ? "as drawn" : text;
}

// By its place, as warnings name it, and by its name; the place tells that of a group of a mesh or a drawing's layer.
std::string name_of_part(const Section& s, std::size_t k) {
    const Part& part = s.parts[k];
    return place_of_owner(s, k) + (part.name.empty() || is_mesh(s) || !part.where.empty() ? "" : " " + part.name);
}

Table table_of_parts(const Section& s) {
    Table table = {"Parts; a later one replaces what it covers of those before it",
                   {{TEXT, "Part", ""}, {TEXT, "Material", ""}, {TEXT, "Drawn as", ""}, {TEXT, "Place", s.length}},
                   {}};
    const bool grouped =
        std::any_of(s.parts.begin(), s.parts.end(), [](const Part& p) { return p.group != 1 || p.factor != 1; });
    if (grouped) {
        table.columns.push_back({NUMBER, "Group", ""});
        table.columns.push_back({NUMBER, "Coupling", ""});
    }
    for (std::size_t k = 0; k < s.parts.size(); ++k) {
        const Part& part = s.parts[k];
        table.rows.push_back({{name_of_part(s, k), part.material, drawn_as(s, k), place_text(part.place)}});
        if (!grouped) continue;
        table.rows.back().cells.push_back(std::to_string(part.group));
        table.rows.back().cells.push_back(number(part.factor));
    }
    return table;
}

bool has_arcs(const Outline& outline) {
    return std::any_of(outline.edges.begin(), outline.edges.end(), [](const Edge& edge) { return edge.arc; });
}

// The points of an outline, counted from 0 as in the file: each with the edge that leads to it, or, of a polygon,
// several in a row.
constexpr std::size_t ABREAST = 3;

void add_points(const Outline& outline, const std::string& heading, bool abreast, Table& table) {
    table.rows.push_back({{heading}, true});
    Point from = outline.edges.back().to;
    for (std::size_t k = 0; k < outline.edges.size(); ++k) {
        const Edge& edge = outline.edges[k];
        if (!abreast || k % ABREAST == 0) table.rows.push_back({});
        std::vector<std::string>& cells = table.rows.back().cells;
        for (const std::string& text : {std::to_string(k), number(edge.to.y), number(edge.to.z)}) cells.push_back(text);
        if (abreast) continue;
        const Circle circle = edge.arc ? circle_of(from, edge) : Circle{};
        cells.push_back(!edge.arc ? "line"
                        : std::isfinite(circle.radius)
                            ? "arc of radius " + number(circle.radius) + " about " + point_text(circle.centre)
                            : "arc through " + point_text(edge.through));
        from = edge.to;
    }
    table.rows.back().cells.resize(table.columns.size());
}

std::vector<std::pair<std::string, const Outline*>> outlines_of(const Section& s) {
    std::vector<std::pair<std::string, const Outline*>> outlines;
    for (std::size_t k = 0; k < s.parts.size(); ++k) {
        const Part& part = s.parts[k];
        if (!part.profile.empty() || !part.shape.empty() || is_mesh(s)) continue;
        outlines.emplace_back(name_of_part(s, k), &part.face.outer);
        for (std::size_t h = 0; h < part.face.holes.size(); ++h)
            outlines.emplace_back(place_of_owner(s, k) + ".holes[" + std::to_string(h) + "]", &part.face.holes[h]);
    }
    return outlines;
}

Table table_of_outlines(const Section& s) {
    const auto outlines = outlines_of(s);
    const bool abreast =
        std::none_of(outlines.begin(), outlines.end(), [](const auto& named) { return has_arcs(*named.second); });
    Table table = {"Points of the outlines, before their parts were placed", {}, {}};
    for (std::size_t k = 0; k < (abreast ? ABREAST : 1); ++k) {
        table.columns.push_back({k == 0 ? TEXT : NUMBER, "Point", ""});
        for (const char* const axis : {"y", "z"}) table.columns.push_back({NUMBER, axis, s.length});
    }
    if (!abreast) table.columns.push_back({TEXT, "Edge to it", s.length});
    for (const auto& [name, outline] : outlines) add_points(*outline, name, abreast, table);
    return table;
}

Table table_of_bars(const Section& s) {
    Table table = {"Bars",
                   {{TEXT, "Bar", ""},
                    {NUMBER, "y", s.length},
                    {NUMBER, "z", s.length},
                    {NUMBER, "Area", raised(s.length + "2")},
                    {NUMBER, "Diameter", s.length},
                    {TEXT, "Material", ""},
                    {TEXT, "Taken as", ""}},
                   {}};
    for (std::size_t k = 0; k < s.bars.size(); ++k) {
        const Bar& bar = s.bars[k];
        table.rows.push_back({{place_of_bar(s, k), number(bar.at.y), number(bar.at.z), number(bar.area),
                               number(std::sqrt(4 * bar.area / PI)), bar.material, bar.as_point ? "point" : "disc"}});
    }
    return table;
}

Table table_of_loads(const Section& s) {
    Table table = {"Load sets", {{TEXT, "Load set", ""}}, {}};
    for (const LoadKey& key : load_keys())
        table.columns.push_back({NUMBER, key.name, raised(load_unit(key, s.length, s.force))});
    for (const Load& load : s.loads) {
        table.rows.push_back({{load.name}});
        for (const LoadKey& key : load_keys()) table.rows.back().cells.push_back(figures({load.*key.value, 0}));
    }
    return table;
}

}  // namespace

void tell_input(const Report& report, std::vector<Block>& blocks) {
    const Section& s = report.section;
    blocks.push_back(Heading{1, "Drawing"});
    std::vector<Panel> panels(2);
    panels[1].what = Shown::mesh;
    add_figures(report, "The section with its dimensions and axes, and its coarsest mesh", panels, blocks);
    blocks.push_back(Heading{1, "Input"});
    blocks.push_back(Paragraph{"Lengths are in " + s.length + " and forces in " + s.force + ", as they were given."});
    for (const std::string& note : report.notes) blocks.push_back(Paragraph{note});
    blocks.push_back(table_of_materials(s));
    blocks.push_back(table_of_parts(s));
    if (Table outlines = table_of_outlines(s); !outlines.rows.empty()) blocks.push_back(std::move(outlines));
    if (!s.bars.empty()) blocks.push_back(table_of_bars(s));
    if (!s.loads.empty()) blocks.push_back(table_of_loads(s));
}

}  // namespace velquor
