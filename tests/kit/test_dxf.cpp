// Drawings: what is read of them is what is drawn, and what cannot be read is said.
#include <gtest/gtest.h>

#include <cmath>
#include <locale>
#include <random>

#include "kit/analysis/analysis.h"
#include "kit/analysis/values.h"
#include "kit/section/drawing.h"
#include "kit/section/file.h"
#include "kit/section/geometry.h"
#include "kit/section/templates.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {
namespace {

using Texts = std::vector<std::string>;

std::string group(int code, const std::string& value) { return "  " + std::to_string(code) + "\n" + value + "\n"; }
std::string group(int code, double value) { return group(code, text_of(value)); }
std::string at(const Point& p, int first = 10) { return group(first, p.y) + group(first + 10, p.z); }
std::string entity(const std::string& kind, const std::string& layer = "STEEL") {
    return group(0, kind) + group(8, layer);
}
std::string line(const Point& a, const Point& b, const std::string& layer = "STEEL") {
    return entity("LINE", layer) + at(a) + at(b, 11);
}
std::string arc(const Point& c, double r, double begin, double end) {
    return entity("ARC") + at(c) + group(40, r) + group(50, begin) + group(51, end);
}
std::string circle(const Point& c, double r, const std::string& layer = "STEEL") {
    return entity("CIRCLE", layer) + at(c) + group(40, r);
}
std::string ellipse(const Point& c, const Point& major, double ratio, double begin = 0, double end = 2 * PI) {
    return entity("ELLIPSE") + at(c) + at(major, 11) + group(40, ratio) + group(41, begin) + group(42, end);
}
std::string insert(const std::string& block, const Point& p, const std::string& more = "") {
    return entity("INSERT") + group(2, block) + at(p) + more;
}

struct Vertex {
    Point p;
    double bulge = 0;
};
std::string polyline(const std::vector<Vertex>& vertices, bool closed = true, const std::string& layer = "STEEL") {
    std::string text =
        entity("LWPOLYLINE", layer) + group(90, std::to_string(vertices.size())) + group(70, closed ? "1" : "0");
    for (const Vertex& v : vertices) text += at(v.p) + (v.bulge != 0 ? group(42, v.bulge) : "");
    return text;
}
std::string old_polyline(const std::vector<Vertex>& vertices, const std::string& flags = "1") {
    std::string text = entity("POLYLINE") + group(66, "1") + at({}) + group(70, flags);
    for (const Vertex& v : vertices) text += entity("VERTEX") + at(v.p) + (v.bulge != 0 ? group(42, v.bulge) : "");
    return text + group(0, "SEQEND");
}
std::string box(const Point& low, const Point& high, const std::string& layer = "STEEL") {
    return polyline({{low}, {{high.y, low.z}}, {high}, {{low.y, high.z}}}, true, layer);
}

std::string part(const char* name, const std::string& inner) {
    return group(0, "SECTION") + group(2, name) + inner + group(0, "ENDSEC");
}
std::string layer(const std::string& name, int flags = 0, int colour = 7) {
    return group(0, "LAYER") + group(2, name) + group(70, std::to_string(flags)) + group(62, std::to_string(colour));
}
std::string block(const std::string& name, const std::string& inner, const Point& base = {}) {
    return group(0, "BLOCK") + group(8, "0") + group(2, name) + at(base) + inner + group(0, "ENDBLK");
}
std::string file(const std::string& entities, const std::string& layers = "", const std::string& blocks = "",
                 const std::string& unit = "4") {
    return part("HEADER", group(9, "$ACADVER") + group(1, "AC1015") + group(9, "$INSUNITS") + group(70, unit)) +
           part("TABLES", group(0, "TABLE") + group(2, "LAYER") + layers + group(0, "ENDTAB")) +
           part("BLOCKS", blocks) + part("ENTITIES", entities) + group(0, "EOF");
}

Section steel() {
    Section section;
    section.materials = {steel_s235()};
    return section;
}
Section drawn(const std::string& dxf, Section section = steel()) {
    read_drawing(section, dxf);
    return section;
}
double area_in(const Section& section) {
    double area = 0;
    for (const Part& p : section.parts) area += area_of(p.face);
    return area;
}
std::string all_notes(const Section& section) {
    std::string all;
    for (const std::string& note : section.notes) all += note + "\n";
    return all;
}

// The entities of an I of h, b, tw, tf, r, one after another from its left lower corner.
Texts lines_of_i(double h, double b, double tw, double tf, double r) {
    const double y = b / 2, w = tw / 2, c = w + r, z = h / 2, t = z - tf, s = t - r;
    return {line({-y, -z}, {y, -z}), line({y, -z}, {y, -t}),     line({y, -t}, {c, -t}),   arc({c, -s}, r, 180, 270),
            line({w, -s}, {w, s}),   arc({c, s}, r, 90, 180),    line({c, t}, {y, t}),     line({y, t}, {y, z}),
            line({y, z}, {-y, z}),   line({-y, z}, {-y, t}),     line({-y, t}, {-c, t}),   arc({-c, s}, r, 0, 90),
            line({-w, s}, {-w, -s}), arc({-c, -s}, r, 270, 360), line({-c, -t}, {-y, -t}), line({-y, -t}, {-y, -z})};
}
std::vector<Vertex> vertices_of_i(double h, double b, double tw, double tf, double r) {
    const double y = b / 2, w = tw / 2, c = w + r, z = h / 2, t = z - tf, s = t - r, q = std::tan(PI / 8);
    return {{{-y, -z}}, {{y, -z}}, {{y, -t}}, {{c, -t}, -q}, {{w, -s}}, {{w, s}, -q},   {{c, t}},   {{y, t}},
            {{y, z}},   {{-y, z}}, {{-y, t}}, {{-c, t}, -q}, {{-w, s}}, {{-w, -s}, -q}, {{-c, -t}}, {{-y, -t}}};
}

std::string joined(const Texts& texts) {
    std::string all;
    for (const std::string& text : texts) all += text;
    return all;
}

// However it is drawn it is the profile: lines and arcs in any order, polylines of either kind, a block that is turned,
// mirrored and scaled back, the drawing seen from behind, lines ended in another way.
TEST(Drawing, ProfileInAllWays) {
    const Section profile = section_of_profile("IPE 300");
    const Values wanted = values_of(profile, analyse(profile));
    Texts shuffled = lines_of_i(300, 150, 7.1, 10.7, 15);
    std::shuffle(shuffled.begin(), shuffled.end(), std::minstd_rand(7));
    const auto vertices = vertices_of_i(300, 150, 7.1, 10.7, 15);
    const auto tenth = vertices_of_i(30, 15, 0.71, 1.07, 1.5);
    std::string dos;
    for (const char c : file(polyline(vertices))) dos += c == '\n' ? "\r\n" : std::string(1, c);
    const std::string turned = group(41, -10) + group(42, 10) + group(50, 90);
    const std::vector<std::pair<const char*, std::string>> ways = {
        {"lines", file(joined(shuffled))},
        {"polyline", dos},
        {"old", part("ENTITIES", old_polyline(vertices)) + group(0, "EOF")},
        {"block", file(insert("b", {5, 7}, turned), "", block("B", polyline(tenth, true, "0"), {3, 4}))},
        {"behind", file(polyline(vertices) + group(210, "0") + group(220, "0") + group(230, "-1.0"))},
        {"cm", file(polyline(tenth), "", "", "5")}};
    for (const auto& [way, dxf] : ways) {
        const Section section = drawn(dxf);
        const Values values = values_of(section, analyse(section));
        ASSERT_EQ(section.parts.size(), 1u) << way;
        EXPECT_EQ(section.parts[0].name, "STEEL");
        EXPECT_NEAR(area_in(section), 5381.2, 0.05) << way;
        const bool lies = std::string(way) == "block";
        for (const auto& [key, same] :
             {std::pair{"A", "A"}, std::pair{"Iy", lies ? "Iz" : "Iy"}, std::pair{"It", "It"}})
            EXPECT_NEAR(values[key].value.value, wanted[same].value.value,
                        1e-6 * wanted[same].value.value + values[key].value.bound + wanted[same].value.bound)
                << way << " " << key;
    }
}

// Between its edges and an ellipse lies no more than is stated; the arcs are tangent to one another.
TEST(Drawing, EllipsesByArcs) {
    for (const auto& [a, ratio] : {std::pair{100.0, 0.5}, std::pair{30.0, 0.05}, std::pair{7.0, 0.97}}) {
        const Section section = drawn(file(ellipse({10, 20}, {0.6 * a, 0.8 * a}, ratio)));
        const double area = PI * a * a * ratio, off = 1e-5 * a;
        EXPECT_NEAR(area_in(section), area, 4 * a * off);
        EXPECT_NE(all_notes(section).find("1 ellipse drawn by"), std::string::npos) << all_notes(section);
        const auto& edges = section.parts[0].face.outer.edges;
        for (std::size_t i = 0; i < edges.size(); ++i) {
            const Edge &edge = edges[i], &next = edges[(i + 1) % edges.size()];
            const Point d = 1 / a *
                            Point{0.6 * (edge.through.y - 10) + 0.8 * (edge.through.z - 20),
                                  (0.6 * (edge.through.z - 20) - 0.8 * (edge.through.y - 10)) / ratio};
            EXPECT_NEAR(length(d), 1, 1.01e-5 / ratio);
            const Point& from = edges[i > 0 ? i - 1 : edges.size() - 1].to;
            const Point one = circle_of(from, edge).centre - edge.to, other = circle_of(edge.to, next).centre - edge.to;
            EXPECT_LT(std::abs(cross(unit(one), unit(other))), 1e-7);
        }
    }
    // Half of one, closed by a line, and a circle that its block makes one.
    EXPECT_NEAR(area_in(drawn(file(ellipse({}, {100, 0}, 0.5, 0, PI) + line({-100, 0}, {100, 0})))), PI * 2500, 0.1);
    const Section flat = drawn(file(insert("B", {}, group(41, 2)), "", block("B", circle({}, 50))));
    EXPECT_NEAR(area_in(flat), PI * 5000, 0.1);
    const Values values = values_of(flat, analyse(flat));
    EXPECT_NEAR(values["Iy"].value.value, PI / 4 * 100 * 125000, PI / 4 * 100 * 125000 * 5e-5);
}

TEST(Drawing, HolesAndIslands) {
    const Section ring = drawn(file(circle({}, 50) + circle({}, 40)));
    ASSERT_EQ(ring.parts.size(), 1u);
    EXPECT_NEAR(area_in(ring), PI * 900, 1e-9);
    const Section islands = drawn(file(circle({}, 40) + box({-10, -10}, {10, 10}) + box({-100, -100}, {100, 100}) +
                                       circle({70, 70}, 5) + circle({}, 5)));
    ASSERT_EQ(islands.parts.size(), 2u);
    EXPECT_EQ(islands.parts[0].name, "STEEL 2");  // the larger one, as they were drawn
    EXPECT_NEAR(area_in(islands), 40000 - PI * 1600 + 400 - PI * 50, 1e-9);
}

// What lies in another part comes after it, whatever the order of the layers; else the table's order holds.
TEST(Drawing, LayersAreMaterials) {
    const char* const materials = R"({"units": {"length": "cm"}, "materials": [{"name": "S", "E": 21000},
        {"name": "C", "E": 3000}], "drawing": {"layers": {"steel": "S", "CORE": {"material": "C", "group": 2, "factor": 0.5}}},
        "bars": [{"at": [2, 2], "diameter": 1, "material": "S"}]})";
    const std::string inner = polyline(vertices_of_i(300, 150, 7.1, 10.7, 15)),
                      core = box({-200, -200}, {200, 200}, "Core");
    const Section section = drawn(file(inner + core + entity("TEXT", "NOTES") + at({}), layer("STEEL") + layer("CORE")),
                                  read_materials(materials));
    ASSERT_EQ(section.parts.size(), 2u);
    EXPECT_EQ(section.parts[0].name, "CORE");
    EXPECT_EQ(section.parts[0].material, "C");
    EXPECT_EQ(section.parts[0].group, 2);
    EXPECT_NEAR(area_of(section.parts[0].face), 1600, 1e-9);
    EXPECT_EQ(section.parts[1].material, "S");
    EXPECT_EQ(all_notes(section), "passed over, for no material is given for them: layers NOTES\n");
    const Section beside =
        drawn(file(box({10, 0}, {20, 10}, "B") + box({0, 0}, {10, 10}, "A"), layer("A") + layer("B")));
    EXPECT_EQ(beside.parts[0].name, "A");
}

// Lines may end apart by what is allowed; what stands twice, off, or is no outline is told and left out.
TEST(Drawing, WhatIsPutRightIsSaid) {
    const Texts open = {line({0, 0}, {100, 0}), line({100.3, 0}, {100, 50}), line({0, 50}, {100, 50.1}),
                        line({0, 50}, {0, 0})};
    Section section = steel();
    section.drawing.gap = 0.3;
    section = drawn(file(joined(open) + line({100, 0}, {0, 0}) + line({100, 50}, {100, 50}) + entity("TEXT") + at({}) +
                             entity("DIMENSION") + entity("TEXT") + circle({}, 5, "OFF") + circle({}, 5, "FROZEN") +
                             circle({0, 0}, 1) + group(67, "1"),
                         layer("OFF", 0, -7) + layer("FROZEN", 1)),
                    section);
    EXPECT_NEAR(area_in(section), 5000, 20);
    EXPECT_EQ(all_notes(section),
              "passed over: 1 DIMENSION, 2 TEXT\n"
              "passed over: 1 in paper space, or invisible\n"
              "passed over, for they are off or frozen: layers OFF, FROZEN\n"
              "layer STEEL: 1 entity without length left out\n"
              "layer STEEL: 2 gaps closed, the widest of 0.3 mm at (100, 0)\n"
              "layer STEEL: 1 line or outline that is drawn twice taken once\n");
}

// A decimal comma, and dots between thousands.
struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};
TEST(Drawing, NoLocaleChangesIt) {
    const std::locale was = std::locale::global(std::locale(std::locale(), new Comma));
    const Section section = drawn(file(box({0.125, 0}, {1234567.25, 1e6})));
    std::locale::global(was);
    EXPECT_EQ(section.parts[0].face.outer.edges[2].to.y, 0.125);
    EXPECT_EQ(section.parts[0].face.outer.edges[1].to.y, 1234567.25);
}

TEST(Drawing, WhatIsWrongIsNamed) {
    const std::string square = box({0, 0}, {10, 10});
    const std::vector<std::pair<std::string, std::string>> faults = {
        {"", "nothing is drawn; it must be a DXF file"},
        {"AC1015\nx", "a DWG file; save it as DXF, in ASCII"},
        {std::string("AutoCAD Binary\0", 15), "not a text; save it as DXF in ASCII, not as a binary"},
        {"{\"materials\": []}\n",
         "line 1: \"{\"materials\": []}\" is no group code; a DXF file has lines in pairs, a "
         "whole number and then a value"},
        {"0\nSECTION\n2\n", "line 3: a group code without a value; was the file cut off?"},
        {part("ENTITIES", square), "line 30: the file ends without 0, EOF; was it cut off?"},
        {"0\nEOF\n", "no SECTION is in the file; it must be a DXF file"},
        {file(""),
         "no outline is drawn; it must have lines, arcs, circles, ellipses or polylines, on layers that are "
         "on and in model space"},
        {file(entity("LINE") + at({1, 2})), "line 38: LINE without its group 11"},
        {file(entity("CIRCLE") + at({1, 2}) + group(40, "2,5")),
         "line 46: \"2,5\" is no number; a group of code 40 has one, as in 12.5"},
        {file(circle({1, 2e9}, 1)), "line 44: a number of 2e+09; must be between -1e9 and 1e9"},
        {file(entity("VERTEX") + at({})), "line 38: a VERTEX without its POLYLINE"},
        {file(square, "", "", "13"),
         "the drawing is in a unit, $INSUNITS 13, that is not read; draw it in mm, cm, dm, m, "
         "in or ft, or give its \"unit\""},
        {file(square + entity("SPLINE") + at({12, 30})),
         "SPLINE on layer STEEL at (12, 30): not read; convert it to arcs or a polyline"},
        {file(square + entity("3DFACE", "") + at({1, 1})),
         "3DFACE on layer 0 at (1, 1): not read; draw lines, arcs or polylines in its place"},
        {file(old_polyline({{{0, 0}}, {{10, 0}}, {{5, 9}}}, "5")),
         "POLYLINE fitted by a spline on layer STEEL at (0, 0): not read; convert it to a polyline of lines and arcs"},
        {file(line({0, 0}, {10, 0}) + group(31, 5)),
         "LINE on layer STEEL at (0, 0): leaves the plane of x and y; draw the section in that plane"},
        {file(square + circle({50, 0}, 5) + group(30, 7)),
         "CIRCLE on layer STEEL at (55, 0): lies 7 above or below what else is drawn; draw all of the section in one "
         "plane"},
        {file(circle({0, 0}, 5) + group(220, 0.5)),
         "CIRCLE on layer STEEL at (5, 0): leaves the plane of x and y; draw the section in that plane"},
        {file(circle({3, 4}, 0)), "CIRCLE on layer STEEL at (3, 4): a radius of 0; leave it out, or give it a size"},
        {file(ellipse({}, {10, 0}, 1e-7)),
         "ELLIPSE on layer STEEL at (10, 0): too flat for an ellipse of arcs; convert it to lines and arcs"},
        {file(line({0, 0}, {100, 0}) + line({100.3, 0}, {0, 80}) + line({0, 80}, {0, 0})),
         "layer STEEL: open at (100, 0), 0.3 mm to the next end at (100.3, 0); close it, or allow a gap of 0.3"},
        {file(line({0, 0}, {100, 0}) + line({100, 0}, {0, 80})),
         "layer STEEL: open at (0, 0), 80 mm to the next end at (0, 80); draw what is missing, or name the layers that "
         "are "
         "to be read"},
        {file(square + line({0, 20}, {5, 20}) + line({5, 20}, {9, 30}) + line({5, 20}, {0, 30})),
         "layer STEEL: 3 ends of lines meet at (5, 20); draw each face by itself, as a closed polyline"},
        {file(polyline({{{0, 0}}, {{10, 10}}, {{10, 0}}, {{0, 8}}})),
         "layer STEEL: lines cross at (4.444444, 4.444444); the outline of a face must not cross or touch itself or "
         "its "
         "holes"},
        {file(square + circle({10, 10}, 3)),
         "layer STEEL: lines cross at (10, 7); the outline of a face must not cross or "
         "touch itself or its holes"},
        {file(square + box({5, 0}, {15, 10})),
         "layer STEEL: outlines overlap at (5, 5); those of one layer must lie in one another, or apart"},
        {file(square + box({0, 2}, {5, 5})),
         "layer STEEL: lines touch at (0, 2); the outline of a face "
         "must not cross or touch itself or its holes"},
        {file(polyline({{{0, 0}}, {{10, 0}}})),
         "layer STEEL: what closes at (0, 0) has 2 edges; three enclose something, or two with an arc"},
        {file(insert("NONE", {1, 2})),
         "INSERT on layer STEEL at (1, 2): block \"none\" is not in the file; write it into the drawing as its own "
         "block"},
        {file(insert("A", {1, 2}), "", group(0, "BLOCK") + group(2, "A") + group(70, "4") + group(0, "ENDBLK")),
         "INSERT on layer STEEL at (1, 2): block \"a\" is not in the file; write it into the drawing as its own block"},
        {file(insert("A", {1, 2}), "", block("A", insert("A", {}))),
         "INSERT on layer STEEL at (1, 2): blocks nested deeper than 16; a block must not hold itself"},
        {file(insert("A", {1, 2}, group(41, "0")), "", block("A", square)),
         "INSERT on layer STEEL at (1, 2): scaled by 0; give the block another scale"},
        {file(insert("A", {1, 2}, group(70, "5000") + group(71, "5000")), "", block("A", square)),
         "more than 10000 lines and arcs; name the layers that are to be read"},
    };
    for (const auto& [text, message] : faults) try {
            drawn(text);
            ADD_FAILURE() << "read: " << message;
        } catch (const Error& error) {
            EXPECT_EQ(std::string(error.what()), message);
        }
}

// What a section file says of a drawing, and messages about its parts.
TEST(Drawing, WhatAFileSaysOfIt) {
    const auto fault = [](const std::string& drawing, const std::string& rest = "") {
        try {
            Section section = read_section(
                R"({"materials": [{"name": "S", "E": 1}, {"name": "C", "E": 1}], "drawing": )" + drawing + rest + "}");
            read_drawing(section, file(box({0, 0}, {10, 10}) + circle({}, 1, "OFF"), layer("OFF", 1)));
        } catch (const Error& error) {
            return std::string(error.what());
        }
        return std::string("none");
    };
    const std::string named = R"({"file": "x.dxf", "layers": {"Steel": "S"}})";
    EXPECT_EQ(fault(named), "none");
    EXPECT_EQ(fault(named, R"(, "bars": [{"at": [5, 5], "diameter": 1, "material": "C"}])"), "none");
    EXPECT_EQ(fault(named, R"(, "bars": [{"at": [50, 5], "diameter": 1, "material": "C"}])"),
              "bars[0]: lies outside of all parts");
    EXPECT_EQ(fault(named, R"(, "parts": [{"material": "D", "shape": "circle", "parameters": {"d": 1}}])"),
              "parts[0].material: unknown material \"D\"; it can be one of \"S\", \"C\"");
    EXPECT_EQ(fault("{}"), "drawing: key \"file\" is missing");
    EXPECT_EQ(
        fault(R"({"file": "x.dxf"})"),
        "layer STEEL: no material has its name; name the layers that are to be read, each with its material; it can "
        "be one of \"S\", \"C\"");
    EXPECT_EQ(fault(R"({"file": "x.dxf", "layers": {"STEL": "S"}})"),
              "drawing.layers: no layer \"STEL\" in the drawing; did you mean \"STEEL\"?");
    EXPECT_EQ(fault(R"({"file": "x.dxf", "layers": {"OFF": "S"}})"),
              "drawing.layers: \"OFF\" is off or frozen in the drawing; put it on there, or leave it out here");
    EXPECT_EQ(fault(R"({"file": "x.dxf", "layers": {"STEEL": "T"}})"),
              "layer STEEL.material: unknown material \"T\"; it can be one of \"S\", \"C\"");
    EXPECT_EQ(
        fault(R"({"file": "x.dxf", "layers": {"STEEL": 5}})"),
        "drawing.layers.STEEL: 5 is given; it must be a text in double quotes or an object in braces: of a group of "
        "a mesh or a layer of a drawing: its "
        "material, or an object with it; it may be left out where there is only one");
    EXPECT_EQ(fault(R"({"file": "x.dxf", "unit": "mn"})"), "drawing.unit: unknown unit \"mn\"; did you mean \"mm\"?");
    EXPECT_EQ(fault(R"({"file": "x.dxf", "layers": {"STEEL": "S"}, "gap": 5})"),
              "layer STEEL: a gap of 5 mm may be closed, and all of it is 10 wide; allow less than a tenth of that");
    Section inches = steel();
    inches.length = "in";
    EXPECT_NEAR(area_in(drawn(file(box({0, 0}, {10, 10})), inches)), 100 / 25.4 / 25.4, 1e-12);
}

}  // namespace
}  // namespace velquor
