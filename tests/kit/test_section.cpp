#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <cmath>
#include <random>
#include <set>
#include <sstream>

#include "kit/section/crossings.h"
#include "kit/section/file.h"
#include "kit/section/geometry.h"
#include "kit/section/profiles.h"
#include "kit/section/shapes.h"
#include "kit/section/templates.h"
#include "kit/section/vectors.h"

namespace velquor {

namespace {

using Values = std::map<std::string, double>;

double area_of(const std::string& shape, const Values& values) {
    double area = 0;
    for (const Face& face : faces_of(shape_of(shape, ""), values, "")) area += area_of(face);
    return area;
}

// Between the sides of a corner that turns by this angle and the arc that is tangent to them.
double corner(double r, double turn) { return r * r * (std::tan(turn / 2) - turn / 2); }
const double SQUARE = corner(1, PI / 2);  // 1 - pi / 4

// Of a bent sheet: straight length along its middle without bends, less what each bend cuts off.
double sheet(double t, double r, double straight, const std::vector<double>& turns) {
    double length = straight;
    for (const double turn : turns) length -= (r + t / 2) * (2 * std::tan(turn / 2) - turn);
    return t * length;
}

const std::string STEEL = R"("materials": [{"name": "steel", "E": 210000}])";
std::string with_part(const std::string& part) { return "{" + STEEL + ", \"parts\": [{" + part + "}]}"; }
std::string with_outline(const std::string& points) { return with_part("\"outline\": [" + points + "]"); }
const std::string PLATE = R"("shape": "rectangle", "parameters": {"h": 10, "b": 20})";
std::string with_more(const std::string& keys) { return "{" + STEEL + ", \"parts\": [{" + PLATE + "}], " + keys + "}"; }
std::string with_material(const std::string& m) { return "{\"materials\": [" + m + "], \"parts\": [{" + PLATE + "}]}"; }

std::string refusal(const std::string& text) {
    try {
        read_section(text);
    } catch (const Error& error) {
        return error.what();
    }
    return "";
}

}  // namespace

TEST(Shapes, AreasOfClosedFormulas) {
    const double sl = 0.14, up = std::atan2(1, sl), bend = PI / 2, slant = std::atan2(20, 30);
    const double outstand = (110 - 8) / 2.0, mean = 10 + sl * (outstand / 2 - 27.5);
    const double n = 8, w = 2 * 3 / std::cos(PI / n);  // tube of eight sides, 3 thick
    const std::vector<std::tuple<std::string, Values, double>> cases = {
        {"rectangle", {{"h", 30}, {"b", 20}, {"r", 10}}, 600 - 400 * SQUARE},  // r = b / 2: no straight side is left
        {"circle", {{"d", 20}}, 100 * PI},
        {"ring", {{"d", 20}, {"t", 3}}, (100 - 49) * PI},
        {"hollow_rectangle",
         {{"h", 60}, {"b", 40}, {"t", 4}, {"ro", 6}, {"ri", 4}},
         2400 - 52 * 32 - (144 - 64) * SQUARE},
        {"triangle", {{"h", 30}, {"b", 20}, {"a", 15}}, 300},
        {"trapezoid", {{"h", 30}, {"b", 20}, {"bt", 12}, {"a", -3}}, 480},
        {"polygon", {{"n", n}, {"d", 50}}, n / 2 * 625 * std::sin(2 * PI / n)},
        {"polygon", {{"n", n}, {"d", 50}, {"t", 3}}, n / 8 * (2500 - (50 - w) * (50 - w)) * std::sin(2 * PI / n)},
        {"concrete_t",
         {{"h", 600}, {"b", 1000}, {"bw", 300}, {"hf", 150}, {"bv", 50}, {"hv", 40}},
         150000 + 135000 + 2000},
        {"box_girder",
         {{"h", 30}, {"b", 100}, {"bt", 60}, {"bb", 40}, {"tt", 5}, {"tb", 4}, {"tw", 3}, {"tc", 2}, {"tr", 6}},
         60 * 6 + 2 * 20 * 4 + (60 + 40) / 2.0 * 24 - (54.0 + 10 / 12.0 + 34 + 40 / 12.0) / 2 * 21},
        {"i", {{"h", 300}, {"b", 150}, {"tw", 7.1}, {"tf", 10.7}, {"r", 15}}, 3210 + 278.6 * 7.1 + 900 * SQUARE},
        {"i_sloped",
         {{"h", 200}, {"b", 110}, {"tw", 8}, {"tf", 10}, {"slope", sl}, {"r1", 7}, {"r2", 4}},
         200 * 8 + 4 * outstand * mean + 4 * (corner(7, up) - corner(4, up))},
        {"channel", {{"h", 200}, {"b", 80}, {"tw", 6}, {"tf", 11}, {"r", 13}}, 1760 + 178 * 6 + 338 * SQUARE},
        {"channel_sloped",
         {{"h", 200}, {"b", 80}, {"tw", 8}, {"tf", 11}, {"slope", sl}, {"r1", 7}, {"r2", 4}, {"e", 30}},
         200 * 8 + 2 * 72 * (11 + sl * (36 - 30)) + 2 * (corner(7, up) - corner(4, up))},
        {"i_welded",
         {{"h", 500}, {"b", 200}, {"tw", 8}, {"tf", 20}, {"b2", 300}, {"tf2", 25}, {"a", 5}},
         4000 + 7500 + 455 * 8 + 4 * 25},
        {"angle", {{"h", 100}, {"b", 65}, {"t", 9}, {"r1", 10}, {"r2", 5}}, 156 * 9 + (100 - 50) * SQUARE},
        {"tee", {{"h", 100}, {"b", 90}, {"tw", 7}, {"tf", 9}, {"r", 8}}, 810 + 91 * 7 + 128 * SQUARE},
        {"z", {{"h", 100}, {"b", 50}, {"tw", 6}, {"tf", 8}, {"r", 9}}, 800 + 84 * 6 + 162 * SQUARE},
        {"cold_c",
         {{"h", 200}, {"b", 70}, {"c", 20}, {"t", 2}, {"r", 3}},
         sheet(2, 3, 198 + 136 + 38, {bend, bend, bend, bend})},
        {"cold_c", {{"h", 200}, {"b", 70}, {"c", 0}, {"t", 2}, {"r", 0}}, sheet(2, 0, 198 + 138, {bend, bend})},
        {"cold_z",
         {{"h", 200}, {"b", 70}, {"b2", 60}, {"c", 20}, {"t", 2}, {"r", 3}},
         sheet(2, 3, 198 + 126 + 38, {bend, bend, bend, bend})},
        {"sigma",
         {{"h", 200}, {"b", 70}, {"c", 20}, {"t", 2}, {"d", 20}, {"hs", 40}, {"hi", 60}, {"r", 3}},
         sheet(2, 3, 38 + 136 + 78 + 60 + 2 * std::hypot(20, 30),
               {bend, bend, bend, bend, slant, slant, slant, slant})},
        {"hat",
         {{"h", 80}, {"b", 60}, {"bf", 30}, {"c", 12}, {"t", 2}, {"r", 3}},
         sheet(2, 3, 22 + 2 * 28 + 2 * 78 + 58, {bend, bend, bend, bend, bend, bend})},
    };
    std::map<std::string, int> seen = {{"ellipse", 1}};
    for (const auto& [shape, values, area] : cases) {
        EXPECT_NEAR(area_of(shape, values), area, 1e-11 * area) << shape;
        ++seen[shape];
    }
    EXPECT_EQ(seen.size(), shapes().size());
    for (const double b : {20.0, 2.0, 200.0})
        EXPECT_NEAR(area_of("ellipse", {{"h", 20}, {"b", b}}), 5 * b * PI, 5e-6 * b * PI);
}

TEST(Shapes, ImpossibleParametersAreNamedWithTheirLimit) {
    const std::vector<std::tuple<std::string, Values, std::string>> cases = {
        {"i",
         {{"h", 60}, {"b", 100}, {"tw", 5}, {"tf", 10}, {"r", 30}},
         "p: r = 30: must be below (h - 2 tf) / 2 = 20"},
        {"i", {{"h", 60}, {"b", 100}, {"tw", 5}}, "p: tf is missing; shape \"i\" needs it: thickness of the flanges"},
        {"i", {{"h", 60}, {"B", 100}}, "p: shape \"i\" has no parameter \"B\"; did you mean \"b\"?"},
        {"i", {{"h", 100}, {"b", 80}, {"tw", 6}, {"tf", 50}, {"r", 0}}, "p: tf = 50: must be below h / 2 = 50"},
        {"channel", {{"h", 100}, {"b", 80}, {"tw", 6}, {"tf", 50}, {"r", 0}}, "p: tf = 50: must be below h / 2 = 50"},
        {"ring", {{"d", 20}, {"t", 10}}, "p: t = 10: must be below d / 2 = 10"},
        {"circle", {{"d", -1}}, "p: d = -1: must be above 0"},
        {"circle", {{"d", NAN}}, "p: d = nan: must be a number between -1e9 and 1e9"},
        {"polygon", {{"n", 4.5}, {"d", 1}}, "p: n = 4.5: must be a whole number from 3 to 1000"},
        {"cold_c", {{"h", 100}, {"b", 9}, {"c", 0}, {"t", 2}, {"r", 3}}, "p: b = 9: must be above 2 (t + r) = 10"},
        {"i_sloped",
         {{"h", 100}, {"b", 50}, {"tw", 5}, {"tf", 6}, {"slope", 0.5}},
         "p: slope = 0.5: must be below tf / e = 0.48"},
    };
    for (const auto& [shape, values, message] : cases) try {
            faces_of(shape_of(shape, "p"), values, "p");
            ADD_FAILURE() << message;
        } catch (const Error& error) {
            EXPECT_EQ(error.what(), message);
        }
}

// A mirrored and turned channel, and the heel of an angle: quarter turns are exact.
TEST(Geometry, PartsAreMirroredThenTurnedThenMoved) {
    const Face face = {{{{{0, 0}, false, {}}, {{4, 0}, false, {}}, {{0, 2}, true, {3, 2}}}},
                       {circle_at({1, 0.5}, 0.25)}};
    const Face moved = placed(face, {true, 90, {10, 20}});
    EXPECT_EQ(moved.outer.edges[1].to.y, 10);
    EXPECT_EQ(moved.outer.edges[1].to.z, 16);
    EXPECT_EQ(moved.outer.edges[2].to.y, 8);
    EXPECT_EQ(moved.outer.edges[2].through.z, 17);
    EXPECT_NEAR(area_of(moved), area_of(face), 1e-14);
    EXPECT_NEAR(area_of(moved.outer), -area_of(face.outer), 1e-14);
}

TEST(Profiles, AreFoundInTheSectionsUnitWhateverTheirBlanks) {
    const Profile ipe = profile_of("ipe300", "cm", "");
    EXPECT_EQ(ipe.name, "IPE 300");
    EXPECT_NEAR(area_of(ipe.shape, ipe.parameters), 53.81, 0.005);  // EN 10365
    const Profile upn = profile_of(" UPN 320", "cm", "");
    EXPECT_NEAR(area_of(upn.shape, upn.parameters), 75.8, 0.05);
    const Profile w = profile_of("W 4 X 13", "mm", "");
    EXPECT_NEAR(w.parameters.at("h"), 4.16 * 25.4, 1e-12);
    for (const std::string& name : profile_names()) {
        const Profile profile = profile_of(name, "m", name);
        EXPECT_EQ(profile.name, name);  // no two are the same without blanks
        EXPECT_GT(area_of(profile.shape, profile.parameters), 0);
    }
    EXPECT_EQ(profile_of("HE 200 B", "mm", "").name + profile_of("he 1000A", "mm", "").name, "HEB 200HEA 1000");
    const std::pair<const char*, const char*> meant[] = {{"HE 305 M", "did you mean \"HEM 300\"?"},
                                                         {"L100x10", "did you mean \"L 100x100x10\"?"},
                                                         {"L4x1/2", "did you mean \"L4x4x1/2\"?"},
                                                         {"HP 12x53", ""}};
    for (const auto& [name, remedy] : meant) {
        try {
            profile_of(name, "mm", "");
            ADD_FAILURE() << name;
        } catch (const Error& error) {
            EXPECT_EQ(error.remedy, remedy) << name;
        }
    }
    EXPECT_EQ(refusal(with_part(R"("profile": "IPE 3000")")),
              "parts[0].profile: unknown profile \"IPE 3000\"; did you mean \"IPE 300\"?");
}

TEST(File, WrongOnesAreToldTheirPlaceAndWhatWouldBeRight) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {" \n", "nothing is given; it must be an object in braces"},
        {"\xff\xfe{", "not a text in UTF-8; save it as UTF-8"},
        {"{\n  \"name\": x}", "line 2, column 11: not JSON: invalid literal; last read: '\"name\": x'"},
        {with_more("\"name\": 1e999"), "name: a number is too large for 64 bits"},
        {with_more("\"name\": \"a\", \"name\": \"b\""), "key \"name\" stands twice"},
        {with_part(PLATE + ", \"group\": 1, \"group\": 2"), "parts[0]: key \"group\" stands twice"},
        {std::string(20, '['), "[0][0][0][0][0][0][0][0][0][0][0][0]: nested deeper than 12 lists and objects"},
        {"[1]", "a list is given; it must be an object in braces"},
        {"{}", "key \"materials\" is missing"},
        {with_more("\"bras\": []"), "unknown key \"bras\"; did you mean \"bars\"?"},
        {with_more(R"("units": {"length": "inch"}, "loads": [{"My": "20 kNm"}])"),
         "units.length: unknown unit \"inch\"; did you mean \"in\"?"},
        {with_more("\"units\": {\"length\": \"MM\"}"), "units.length: unknown unit \"MM\"; did you mean \"mm\"?"},
        {with_more("\"units\": {\"force\": \"ton\"}"),
         "units.force: unknown unit \"ton\"; it can be one of \"N\", \"kN\", \"MN\", \"kgf\", \"lbf\", \"kip\""},
        {with_more("\"wishes\": {\"levels\": 2.5}"),
         "wishes.levels: 2.5 is given; it must be a whole number: of refinement; 3 where it is not given"},
        {with_more("\"wishes\": {\"levels\": 9}"), "wishes.levels: 9 is given; it must be at most 6"},
        {with_more("\"bars\": [{\"at\": [0, 0]}]"),
         "bars[0]: a bar without a size; give one of \"diameter\" and \"area\""},
        {with_more("\"bars\": [{\"at\": [0, 0, 0], \"area\": 5}]"),
         "bars[0].at: a list of 3; it must have at most 2: y and z"},
        {with_more("\"bars\": [{\"at\": [0, 0], \"area\": 0}]"), "bars[0].area: 0 is given; it must be above 0"},
        {with_more("\"bars\": [{\"at\": [0, 0], \"area\": 5, \"material\": \"steal\"}]"),
         "bars[0].material: unknown material \"steal\"; did you mean \"steel\"?"},
        {with_more("\"bars\": [{\"at\": [3, 0], \"diameter\": 2}, {\"at\": [0, 0], \"diameter\": 5}]"),
         "bars[1]: overlaps bars[0]; their centres are 3 apart, and must be 3.5"},
        {with_material(R"({"name": "s", "E": 0})"), "materials[0].E: 0 is given; it must be above 0"},
        {with_material(R"({"name": "s", "E": 1, "nu": 0.3, "G": 1})"),
         "materials[0]: nu and G are both given; one follows from the other: leave one out"},
        {with_material(R"({"name": "s", "E": 1, "strength": "high"})"),
         "materials[0].strength: \"high\" is given; it must be a number or an object in braces: one value, or tension "
         "and compression, both positive"},
        {with_material(R"({"name": "s", "E": 1, "strength": {"tension": 3}})"),
         "materials[0].strength: key \"compression\" is missing"},
        {with_material(R"({"name": "s", "E": 1}, {"name": "s", "E": 2})"),
         "materials[1].name: \"s\" is the name of materials[0]; names must differ"},
        {with_material(R"({"name": "s", "E": 1}, {"name": "t", "E": 2})"),
         "parts[0]: no material is named; it can be one of \"s\", \"t\""},
        {with_part(""), "parts[0]: nothing to draw; give one of \"shape\", \"profile\" and \"outline\""},
        {with_part(PLATE + ", \"profile\": \"IPE 300\""),
         "parts[0]: drawn in several ways; give one of \"shape\", \"profile\" and \"outline\""},
        {with_part(R"("profile": "IPE 300", "parameters": {})"),
         "parts[0]: \"parameters\" without \"shape\"; leave it out"},
        {with_part(R"("shape": "rectangel")"),
         "parts[0].shape: unknown shape \"rectangel\"; did you mean \"rectangle\"?"},
        {with_part(R"("shape": "rectangle", "parameters": {"h": "10"})"),
         "parts[0].parameters.h: \"10\" is given; it must be a number"},
        {with_part(R"("shape": "rectangle", "parameters": {"h": 10, "b": 5, "r": 3})"),
         "parts[0].parameters: r = 3: must be at most b / 2 = 2.5"},
        {with_outline("[0, 0], [1, 0]"),
         "parts[0].outline: 2 edges enclose nothing; three are needed, or two with an arc"},
        {with_outline("[0, 0], [1, 0], [1, 0], [0, 1]"),
         "parts[0].outline[2]: the same point as the point before it; leave one of the two out"},
        {with_outline("[0, 0], [1, 0], [0, 1], [0, 0]"),
         "parts[0].outline[0]: the same point as the last point: outlines close by themselves; leave one of the two "
         "out"},
        {with_outline("[0, 0], [1, 0], [2, 0]"), "parts[0].outline: encloses no area"},
        {with_outline("[0, 0], [1, 0], [1, \"1\"]"), "parts[0].outline[2][1]: \"1\" is given; it must be a number"},
        {with_outline("[0, 0], [1, 0], 7"),
         "parts[0].outline[2]: 7 is given; it must be a list or an object in braces: a point [y, z], or an arc to a "
         "point, with through or with radius and turn"},
        {with_outline(R"([0, 0], [1, 0], {"arc": [0, 1], "trough": [1, 1]})"),
         "parts[0].outline[2]: unknown key \"trough\"; did you mean \"through\"?"},
        {with_outline(R"([0, 0], [1, 0], {"arc": [0, 1]})"),
         "parts[0].outline[2]: an arc without its way; give \"through\": [y, z], or \"radius\" and \"turn\""},
        {with_outline(R"([0, 0], [1, 0], {"arc": [0, 1], "radius": 1})"),
         "parts[0].outline[2]: \"radius\" without \"turn\"; give both"},
        {with_outline(R"([0, 0], [4, 0], {"arc": [4, 4], "radius": 1, "turn": "left"})"),
         "parts[0].outline[2]: radius = 1: cannot reach; must be at least half of the distance = 2"},
        {with_outline(R"([0, 0], [4, 0], {"arc": [4, 4], "radius": 3, "turn": "lef"})"),
         "parts[0].outline[2].turn: \"lef\" is unknown; did you mean \"left\"?"},
        {with_outline(R"([0, 0], [4, 0], {"arc": [4, 4], "through": [4, 2]})"),
         "parts[0].outline[2]: through lies on the line between the arc's ends; give a point [y, z] for a straight "
         "edge"},
        {with_outline(R"([0, 0], [4, 0], {"arc": [4, 4], "through": [6, 2], "radius": 3, "turn": "left"})"),
         "parts[0].outline[2]: through and radius are both given; give \"through\": [y, z], or \"radius\" and "
         "\"turn\""},
        {with_outline("[0, 0], [1, 0], [1, 2e9]"),
         "parts[0].outline[2][1]: 2000000000.0 is given; it must be at most "
         "1000000000.0"},
        {with_part(PLATE + ", \"holes\": []"), "parts[0]: \"holes\" without \"outline\"; leave it out"},
        {with_part(PLATE + ", \"factor\": 1.5"), "parts[0].factor: 1.5 is given; it must be at most 1"},
        {with_part(PLATE + "}, {" + PLATE + ", \"factor\": 0.5"),
         "parts[1].factor: 0.5 differs from that of parts[0]; a group has one factor"},
        {with_part(PLATE + ", \"name\": \"a\"}, {" + PLATE + ", \"name\": \"a\""),
         "parts[1].name: \"a\" is the name of parts[0]; names must differ"},
        {with_part(R"("shape": "circle")"), "parts[0].parameters: d is missing; shape \"circle\" needs it: diameter"},
        {with_part(R"("shape": "rectangle", "parameters": {"h": 1, "b": 1, "r": 1e-9})"),
         "parts[0].parameters: edges meet at (-0.5, -0.5); walls, gaps and radii must be above 1e-07 of the whole, or "
         "0"},
        {with_material(R"({"name": "", "E": 1})"), "materials[0].name: an empty text; a name is wanted"},
        {with_material(R"({"name": "s", "E": 1, "nu": 0.6})"), "materials[0].nu: 0.6 is given; it must be at most 0.5"},
        {with_material(R"({"name": "s", "E": 1e30, "nu": -0.9})"),
         "materials[0]: G = 5.000000000000001e+30: must be at most 1e30"},
        {with_material(""), "materials: a list of 0; it must have at least 1"},
        {"{" + STEEL + ", \"parts\": []}",
         "parts: a list of 0; it must have at least 1: a later part replaces what it covers of those before it"},
        {with_more("\"wishes\": {\"accuracy\": 1}"), "wishes.accuracy: 1 is given; it must be at most 0.5"},
        {"{\"n\xff",
         "line 1, column 4: not JSON: invalid string: ill-formed UTF-8 byte; last read: '\"n?'; expected string "
         "literal"},
    };
    for (const auto& [text, message] : cases) EXPECT_EQ(refusal(text), message) << text;
}

// As people draw a stadium. Edges keep their numbers.
TEST(File, AnArcMayEndAtTheFirstPoint) {
    const std::string hole = R"([0, 0], [100, 0], {"arc": [100, 50], "radius": 25, "turn": "left"}, [0, 50],
        {"arc": [0, 0], "through": [-25, 25]})";
    const auto part = [](const std::string& outline, const std::string& more = "") {
        return read_section("{\"materials\": [{\"name\": \"s\", \"E\": 1}], \"parts\": [{\"outline\": [" + outline +
                            "]" + more + "}]}")
            .parts[0]
            .face;
    };
    EXPECT_NEAR(area_of(part(hole)), 5000 + PI * 625, 1e-9);
    EXPECT_NEAR(area_of(part("[-50, -50], [150, -50], [150, 100], [-50, 100]", ", \"holes\": [[" + hole + "]]")),
                25000 - PI * 625, 1e-9);
    EXPECT_NEAR(area_of(part(R"([0, 0], [2, 0], {"arc": [0, 0], "radius": 1, "turn": "left"})")), PI / 2, 1e-14);
    EXPECT_EQ(refusal(with_outline(R"([0, 0], [9, 0], [9, 0], [0, 4], {"arc": [0, 0], "through": [-2, 2]})")),
              "parts[0].outline[2]: the same point as the point before it; leave one of the two out");
}

// Edges count from 0 as they stand in the file, each with the point that it leads to.
TEST(File, OutlinesCrossNeitherThemselvesNorTheirHoles) {
    const std::string CROSS = "; outlines must not cross themselves", TOUCH = "; outlines must not touch themselves";
    const std::string IN = "; holes must lie inside the outline", APART = "; holes must lie apart from one another";
    const std::vector<std::pair<std::string, std::string>> outlines = {
        {"[0, 0], [9, 4], [9, 0], [0, 6]", "[1]: crosses edge 3 at (5.4, 2.4)" + CROSS},
        {"[2, 2], [6, 6], [6, 2], [2, 6]", "[1]: crosses edge 3 at (4, 4)" + CROSS},  // an eight: no area
        {"[5, 5], [0, 0], [9, 0], [9, 9], [5, 5.00001], [0, 9]", ""},
        {"[0, 0], [9, 0], [5, 5], [9, 9], [0, 9], [5, 5]", "[0]: touches edge 2 at (5, 5)" + TOUCH},
        {"[0, 0], [9, 0], [9, 9], [5, 0], [0, 9]", "[1]: touches edge 4 at (5, 0)" + TOUCH},
        {"[0, 0], [9, 0], [4, 0], [4, 9]", "[1]: turns back on edge 2 at (9, 0)" + TOUCH},
        {"[0, 0], [9, 0], [9, 5], [6, 5], [6, 0], [3, 0], [3, 5]", "[1]: runs along edge 5 at (4.5, 0)" + TOUCH},
        // arcs and lines
        {R"([0, 0], [20, 0], [20, 5], {"arc": [0, 5], "through": [10, 0.00001]})", ""},
        {R"([0, 0], [20, 0], [20, 5], {"arc": [0, 5], "through": [10, 0]})", "[1]: touches edge 3 at (10, 0)" + TOUCH},
        {R"([0, 0], [20, 0], [20, 2.5], {"arc": [0, 2.5], "through": [10, -2.5]})",
         "[1]: crosses edge 3 at (2.5, 0)" + CROSS},
        {R"([0, 0], [20, 0], [20, 8], {"arc": [0, 8], "through": [10, -2]})",
         "[0]: turns back on edge 3 at (0, 8)" + TOUCH},
        {R"([0, 0], [8, 0], {"arc": [3, -1], "through": [5, 4]}, [0, 5])", "[1]: crosses edge 3 at (2.5, 0)" + CROSS},
        {R"([0, 0], [8, 0], {"arc": [9, 1], "radius": 1, "turn": "left"}, [9, 5])", ""},  // tangent, as fillets are
        {R"([0, 0], [8, 0], {"arc": [8, 2], "radius": 1, "turn": "left"}, {"arc": [4, 2], "through": [6, 0.5]})", ""},
        // arcs of circles of 5 about (0, 0) and (6, 0), of one circle, of circles that touch
        {R"([-5, 0], {"arc": [5, 0], "through": [0, 5]}, [11, 0], {"arc": [1, 0], "through": [6, 5]}, [1, -3])",
         "[1]: crosses edge 3 at (3, 4)" + CROSS},
        {R"({"arc": [0, 5], "through": [5, 0]}, {"arc": [-4, 3], "through": [-3, 4]}, {"arc": [0, -5], "through": [-5, 0]})",
         ""},
        {R"([0, 0], {"arc": [8, 0], "through": [4, -4]}, [8, 8], {"arc": [0, 8], "through": [4, -4]})",
         "[1]: touches edge 3 at (4, -4)" + TOUCH},
        {R"([0, -5], {"arc": [0, 5], "through": [5, 0]}, [5, 9], [10, 5], {"arc": [10, -5], "through": [5, 0]}, [5, -9])",
         "[1]: touches edge 4 at (5, 0)" + TOUCH},
        // neighbours that meet again
        {R"([0, 0], [8, 0], {"arc": [3.5, -1.5], "through": [5.5, 2.5]}, [-1, -1])",
         "[1]: crosses edge 2 at (3, 0)" + CROSS},
        {R"([0, -5], {"arc": [3, 4], "through": [5, 0]}, {"arc": [6, -5], "through": [1, 0]}, [6, -9])",
         "[1]: crosses edge 2 at (3, -4)" + CROSS},
        {R"([0, 0], {"arc": [8, 0], "through": [4, 4]}, {"arc": [4, 0], "through": [6, 2]}, [2, -3])",
         "[1]: turns back on edge 2 at (8, 0)" + TOUCH},
    };
    for (const auto& [points, message] : outlines)
        EXPECT_EQ(refusal(with_outline(points)), message.empty() ? "" : "parts[0].outline" + message) << points;

    const std::vector<std::pair<std::string, std::string>> holes = {
        {"[[1, 1], [2, 1], [2, 2]], [[3, 3], [8, 3], [8, 8]]", ""},
        {"[[1, 1], [2, 1], [2, 2]], [[5, 5], [12, 5], [6, 6]]",
         "holes[1][1]: crosses edge 2 of the outline at (9, 5)" + IN},
        {"[[0, 1], [2, 1], [2, 2]]", "holes[0][0]: touches edge 0 of the outline at (0, 1)" + IN},
        {"[[0, 1], [2, 1], [0, 2]]", "holes[0][0]: runs along edge 0 of the outline at (0, 1.5)" + IN},
        {R"([{"arc": [7, 5], "through": [8, 6]}, {"arc": [9, 5], "through": [8, 4]}])",
         "holes[0][0]: touches edge 2 of the outline at (9, 5)" + IN},
        {R"([{"arc": [2, 4], "through": [4, 6]}, {"arc": [6, 4], "through": [4, 2]}], [{"arc": [2, 4], "through": [4, 6]}, [4, 3], [6, 4]])",
         "holes[1][0]: runs along edge 0 of holes[0] at (4, 6)" + APART},
        {"[[10, 1], [12, 1], [12, 2]]", "holes[0]: lies outside of the outline" + IN},
        {"[[-1, -1], [99, -1], [4, 99]]", "holes[0]: lies outside of the outline" + IN},
        {"[[1, 1], [8, 1], [8, 8], [1, 8]], [[3, 3], [4, 3], [3, 4]]", "holes[1]: lies in holes[0]" + APART},
        {"[[3, 3], [4, 3], [3, 4]], [[1, 1], [8, 1], [8, 8], [1, 8]]", "holes[0]: lies in holes[1]" + APART},
        {"[[1, 1], [4, 1], [1, 4]], [[2, 2], [5, 2], [5, 5]]",
         "holes[1][0]: crosses edge 2 of holes[0] at (2.5, 2.5)" + APART},
    };
    for (const auto& [list, message] : holes)
        EXPECT_EQ(refusal(with_part("\"outline\": [[0, 0], [9, 0], [9, 9], [0, 9]], \"holes\": [" + list + "]")),
                  message.empty() ? "" : "parts[0]." + message)
            << list;
}

// Corners on a grid, so that they often touch: against all pairs in whole numbers.
TEST(Crossings, OfRandomPolygonsAreThoseOfAllPairs) {
    std::minstd_rand random(1);
    int crossed = 0;
    for (int trial = 0; trial < 4000; ++trial) {
        std::vector<std::array<int, 2>> p(3 + random() % 5);
        Outline outline;
        for (auto& [y, z] : p) {
            y = static_cast<int>(random() % 9), z = static_cast<int>(random() % 9);
            outline.edges.push_back({{1e5 + y * 0.1, z * 0.1}, false, {}});
        }
        const std::size_t n = p.size();
        const auto side = [&](std::size_t a, std::size_t b, std::size_t c) {
            const int s = (p[b][0] - p[a][0]) * (p[c][1] - p[a][1]) - (p[b][1] - p[a][1]) * (p[c][0] - p[a][0]);
            return (s > 0) - (s < 0);
        };
        const auto on = [&](std::size_t a, std::size_t b, std::size_t c) {
            const int reach = (p[c][0] - p[a][0]) * (p[c][0] - p[b][0]) + (p[c][1] - p[a][1]) * (p[c][1] - p[b][1]);
            return side(a, b, c) == 0 && reach <= 0;
        };
        bool expected = false, short_edge = false;
        for (std::size_t i = 0; i < n; ++i) {
            const std::size_t i1 = (i + 1) % n, i2 = (i + 2) % n;
            short_edge |= p[i] == p[i1];
            expected |= on(i, i1, i2) || on(i1, i2, i);  // neighbours that turn back
            for (std::size_t k = i + 2; k < n; ++k) {
                const std::size_t k1 = (k + 1) % n;
                if (k1 == i) continue;
                expected |= on(i, i1, k) || on(i, i1, k1) || on(k, k1, i) || on(k, k1, i1) ||
                            (side(i, i1, k) * side(i, i1, k1) < 0 && side(k, k1, i) * side(k, k1, i1) < 0);
            }
        }
        if (short_edge) continue;
        EXPECT_EQ(crossing_of(region_of({outline, {}})).has_value(), expected) << trial;
        crossed += expected;
    }
    EXPECT_GT(crossed, 1000);
    EXPECT_LT(crossed, 3500);
}

// A disc of 10 about the origin, less a bite of 5 about (10, 0) and a round hole of 3 about (-4, 0): by the distances.
TEST(Crossings, InsideIsExactForArcs) {
    const double y = 8.75, z = std::sqrt(100 - y * y);
    const Face face = {{{{{y, -z}, true, {-10, 0}}, {{y, z}, true, {5, 0}}}}, {circle_at({-4, 0}, 3)}};
    const Region region = region_of(face);
    ASSERT_FALSE(crossing_of(region));
    for (int i = -44; i <= 44; ++i)
        for (int k = -44; k <= 44; ++k) {
            const double py = i * 0.25, pz = k * 0.25, nearest = 1e-5;  // on the chords too: i = 35, k = 0
            const double far[3] = {10 - std::hypot(py, pz), std::hypot(py - 10, pz) - 5, std::hypot(py + 4, pz) - 3};
            const double least = *std::min_element(far, far + 3);
            EXPECT_EQ(inside(region, {py, pz}), least > -nearest) << py << " " << pz;
            if (least > 0) {
                EXPECT_NEAR(distance_to_boundary(region, {py, pz}), least, 1e-12);
            }
        }
    EXPECT_TRUE(inside(region, {-10 - 1e-6, 0}));  // 5e-8 of the extent
    EXPECT_FALSE(inside(region, {-10 - 4e-6, 0}));
}

TEST(File, BarsLieInPartsAndAlone) {
    const auto two = [](const std::string& bars) {
        return "{" + STEEL + R"(, "parts": [{"shape": "rectangle", "parameters": {"h": 10, "b": 20}},
            {"outline": [[10, -5], [30, -5], [30, 5], [10, 5]], "holes": [[[19, -1], [21, -1], [21, 1], [19, 1]]]}],
            "bars": [)" +
               bars + "]}";
    };
    const std::vector<std::pair<std::string, std::string>> cases = {
        {R"({"at": [0, 0], "diameter": 10})", ""},  // touches the outline
        {R"({"at": [10, 0], "diameter": 6})", ""},  // half in one part, half in the other
        {R"({"at": [30, 5], "area": 1, "as_point": true})", ""},
        {R"({"at": [0, 5.001], "area": 1, "as_point": true})", "bars[0]: lies outside of all parts"},
        {R"({"at": [20, 0], "diameter": 1})", "bars[0]: lies outside of all parts"},  // in the hole
        {R"({"at": [0, 3], "diameter": 4.01})",
         "bars[0]: its disc, of radius 2.005, reaches out of the parts; move it, or give \"as_point\": true"},
        {R"({"at": [17, 0], "diameter": 4.5})",
         "bars[0]: its disc, of radius 2.25, reaches out of the parts; move it, or give \"as_point\": true"},
        {R"({"at": [0, 0], "diameter": 1}, {"from": [-4, 3], "to": [4, 6], "count": 3, "diameter": 1})",
         "bars[1] (3rd of the row): lies outside of all parts"},
        {R"({"from": [-4, 3], "to": [4, 3], "count": 17, "diameter": 0.6})",
         "bars[0] (2nd of the row): overlaps bars[0] (1st of the row); their centres are 0.5 apart, and must be 0.6"},
        {R"({"at": [3, 0], "diameter": 2}, {"centre": [0, 0], "radius": 3, "count": 4, "diameter": 1})",
         "bars[1] (1st of the ring): overlaps bars[0]; their centres are 0 apart, and must be 1.5"},
        {R"({"diameter": 1})",
         "bars[0]: a bar without a place; give one of \"at\", \"from\" with \"to\", and \"centre\" with \"radius\""},
        {R"({"at": [0, 0], "centre": [0, 0], "radius": 3, "count": 4, "diameter": 1})",
         "bars[0]: a bar with several places; give one of \"at\", \"from\" with \"to\", and \"centre\" with "
         "\"radius\""},
        {R"({"from": [0, 0], "count": 4, "diameter": 1})", "bars[0]: \"from\" without \"to\"; give both"},
        {R"({"centre": [0, 0], "count": 4, "diameter": 1})", "bars[0]: \"centre\" without \"radius\"; give both"},
        {R"({"from": [0, 0], "to": [1, 1], "count": 1, "diameter": 1})",
         "bars[0].count: 1 is given; it must be at least 2"},
        {R"({"at": [0, 0], "count": 4, "diameter": 1})", "bars[0]: \"count\" without a row or a ring; leave it out"},
        {R"({"from": [0, 0], "to": [1, 1], "count": 4, "start": 4, "diameter": 1})",
         "bars[0]: \"start\" without a ring; leave it out"},
        {R"({"at": [0, 0], "diameter": 1, "area": 1})",
         "bars[0]: diameter and area are both given; give one of \"diameter\" and \"area\""},
        {R"({"at": [0, 0], "area": 1}, {"from": [0, 0], "to": [1, 1], "count": 10000, "area": 1})",
         "bars[1]: more than 10000 bars in all"},
    };
    for (const auto& [bars, message] : cases) EXPECT_EQ(refusal(two(bars)), message) << bars;

    const Section s = read_section(two(R"({"from": [-6, 1], "to": [3, 4], "count": 4, "area": 0.1},
        {"centre": [1, -1], "radius": 2, "count": 4, "start": 180, "area": 0.2, "as_point": true})"));
    ASSERT_EQ(s.bars.size(), 8u);
    EXPECT_EQ(s.bars[1].at.y, -3);
    EXPECT_EQ(s.bars[1].at.z, 2);
    EXPECT_EQ(s.bars[4].at.y, -1);
    EXPECT_EQ(s.bars[5].at.z, -3);  // counter-clockwise
    EXPECT_TRUE(s.bars[5].as_point);
    EXPECT_EQ(place_of_bar(s, 5), "bars[1] (2nd of the ring)");
    const Section again = read_section(write_section(s));
    EXPECT_EQ(write_section(again), write_section(s));
    EXPECT_EQ(place_of_bar(again, 5), "bars[5]");
    EXPECT_EQ(place_of_owner(s, 1), "parts[1]");
}

TEST(Templates, MakeWholeSections) {
    const Section s = section_of_shape("rc_t", {{"h", 600},
                                                {"b", 1200},
                                                {"bw", 300},
                                                {"hf", 150},
                                                {"n_top", 7},
                                                {"d_top", 12},
                                                {"n_bottom", 3},
                                                {"d_bottom", 25},
                                                {"cover", 30}});
    ASSERT_EQ(s.bars.size(), 10u);
    EXPECT_EQ(s.bars[0].at.y, -600 + 36);  // the cover is measured to the bars' edge
    EXPECT_EQ(s.bars[0].at.z, -36);
    EXPECT_EQ(s.bars[3].at.y, 0);
    EXPECT_EQ(s.bars[9].at.y, 150 - 42.5);
    EXPECT_EQ(s.bars[9].at.z, -600 + 42.5);
    EXPECT_EQ(s.bars[9].area, PI * 625 / 4);
    EXPECT_EQ(s.materials[0].compression, 30);
    EXPECT_NEAR(s.materials[0].density * 1e9, 2500, 1e-9);
    EXPECT_EQ(read_section(write_section(s)).bars.size(), 10u);

    const Section r = section_of_shape("rc_rectangle", {{"h", 500},
                                                        {"b", 300},
                                                        {"n_top", 1},
                                                        {"d_top", 20},
                                                        {"n_bottom", 2},
                                                        {"d_bottom", 20},
                                                        {"n_side", 2},
                                                        {"d_side", 10}});
    ASSERT_EQ(r.bars.size(), 7u);
    EXPECT_EQ(r.bars[0].at.y, 0);
    EXPECT_NEAR(r.bars[3].at.z, -200 + 400 / 3.0, 1e-12);
    EXPECT_EQ(r.bars[3].at.y, -105);

    const Section ring = section_of_shape("rc_circle", {{"d", 600}, {"n", 8}, {"d_bar", 20}});
    EXPECT_EQ(ring.bars[0].at.z, 250);
    EXPECT_EQ(ring.bars[2].at.y, -250);

    for (const double r1 : {0.0, 15.0}) {
        const Section c = section_of_shape("composite", {{"hc", 150},
                                                         {"bc", 2000},
                                                         {"h", 300},
                                                         {"b", 150},
                                                         {"tw", 7.1},
                                                         {"tf", 10.7},
                                                         {"r", r1},
                                                         {"n_top", 10},
                                                         {"d_top", 12}});
        const std::vector<Face> girder = faces_of(c, c.parts[0], "");
        double top = -1e9;
        for (const Edge& edge : girder[0].outer.edges) top = std::max(top, edge.to.z);
        EXPECT_EQ(top, -150) << r1;  // the girder's top touches the slab's bottom
        EXPECT_EQ(c.bars.size(), 10u);
    }

    EXPECT_EQ(section_of_shape("circle", {{"d", 10}}).materials[0].name, "S235");
    const Section w = section_of_profile("W12X26"), ipe = section_of_profile("ipe 300");
    EXPECT_EQ(w.length + w.force + w.materials[0].name, "inkipA992");
    EXPECT_EQ(section_of_profile("C10X30").materials[0].tension, 36);
    EXPECT_EQ(ipe.length + ipe.force + ipe.materials[0].name, "mmNS235");

    const std::vector<std::tuple<std::string, Values, std::string>> wrong = {
        {"rc_tee", {}, "p: unknown shape \"rc_tee\"; did you mean \"rc_t\"?"},
        {"rc_rectangle", {{"h", 500}}, "p: b is missing; shape \"rc_rectangle\" needs it: width"},
        {"rc_rectangle",
         {{"h", 500}, {"b", 300}, {"n_top", 2.5}},
         "p: n_top = 2.5: must be a whole number from 0 to 1000"},
        {"rc_rectangle", {{"h", 500}, {"b", 300}, {"n_bottom", 3}}, "p: d_bottom = 0: must be above 0"},
        {"rc_rectangle",
         {{"h", 500}, {"b", 300}, {"n_bottom", 12}, {"d_bottom", 20}},
         "p: n_bottom = 12: must be at most the width between the covers / the diameter = 11"},
        {"rc_t",  // above one another in the middle
         {{"h", 200},
          {"b", 600},
          {"bw", 300},
          {"hf", 110},
          {"n_top", 1},
          {"d_top", 20},
          {"n_bottom", 1},
          {"d_bottom", 101}},
         "p: d_bottom = 101: must be at most the height between covers and other bars = 100"},
        {"rc_circle", {{"d", 99}, {"n", 3}, {"d_bar", 10}}, "p: d_bar = 10: must be at most d / 2 - cover = 9.5"},
        {"composite",
         {{"hc", 150}, {"bc", 2000}, {"h", 300}, {"b", 150}, {"tw", 7}, {"tf", 10}, {"r", 15}, {"b2", 200}},
         "p: b2 and r are both given; a girder with fillets has equal flanges: leave one of the two out"},
    };
    for (const auto& [name, values, message] : wrong) try {
            section_of_shape(name, values, "p");
            ADD_FAILURE() << message;
        } catch (const Error& error) {
            EXPECT_EQ(error.what(), message);
        }
}

// Random parameters, the wild ones too: what a shape accepts does not cross, and touches only where it is as thin as
// nothing; what a template accepts passes the check, its bars in place.
TEST(Shapes, WithinTheirLimitsCrossNothing) {
    std::minstd_rand random(1);
    const auto share = [&] { return random() / 2147483647.0; };
    const auto values_of = [&](const std::vector<Parameter>& parameters) {
        Values values;
        for (const Parameter& p : parameters) {
            const bool large = p.name[0] == 'h' || p.name[0] == 'b' || p.name[0] == 'd';
            values[p.name] = p.kind == Kind::sides    ? 3.0 + random() % 20
                             : p.kind == Kind::bars   ? random() % 5
                             : p.kind == Kind::ratio  ? share() / 2
                             : p.kind == Kind::offset ? 3 * share() - 1.5
                             : !p.required && random() % 2 == 0
                                 ? 0
                                 : std::pow(share(), 3) * (large || random() % 2 == 0 ? 2 : 0.1) + 1e-3;
        }
        return values;
    };
    for (const Shape& shape : shapes()) {
        int accepted = 0;
        for (int trial = 0; trial < 20000 && accepted < 200; ++trial) try {
                const Values values = values_of(shape.parameters);
                for (const Face& face : shape.faces({values, ""})) {
                    const auto found = crossing_of(region_of(face));
                    EXPECT_FALSE(found && found->way == Crossing::crosses)
                        << shape.name << testing::PrintToString(values);
                }
                ++accepted;
            } catch (const Error&) {
            }
        EXPECT_EQ(accepted, 200) << shape.name;
    }
    for (const Template& t : templates()) {
        int accepted = 0;
        for (int trial = 0; trial < 20000 && accepted < 200; ++trial) {
            const Values values = values_of(t.parameters);
            Section s;
            try {
                s = t.section({values, ""});
            } catch (const Error&) {
                continue;
            }
            EXPECT_NO_THROW(check_section(s)) << t.name << testing::PrintToString(values);
            ++accepted;
        }
        EXPECT_EQ(accepted, 200) << t.name;
    }
}

TEST(Shapes, HaveSketchesWithAllParameters) {
    const auto look = [](const std::string& name, const std::vector<Parameter>& parameters, const char* sketch) {
        ASSERT_TRUE(sketch) << name;
        std::istringstream lines(sketch);
        std::set<std::string> words;
        int count = 0;
        for (std::string line; std::getline(lines, line); ++count) {
            EXPECT_LE(line.size(), 60u) << line;
            for (char& c : line) {
                EXPECT_TRUE(c >= ' ' && c <= '~') << line;
                if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_') c = ' ';
            }
            std::istringstream in(line);
            for (std::string word; in >> word;) words.insert(word);
        }
        EXPECT_LE(count, 14) << name;
        for (const Parameter& p : parameters) EXPECT_TRUE(words.count(p.name)) << name << ": " << p.name;
    };
    for (const Shape& shape : shapes()) look(shape.name, shape.parameters, shape.sketch);
    for (const Template& t : templates()) look(t.name, t.parameters, t.sketch);
}

// Lengths and depths that a hostile file may have: refused before much is allocated.
TEST(File, LargeOnesAreRefused) {
    std::string points = "[0, 0]";
    for (int i = 1; i < 100000; ++i) points += ", [0, 0]";
    EXPECT_EQ(refusal(with_outline(points)), "parts[0].outline[66664]: more than 200000 values in the file");
    EXPECT_EQ(refusal(std::string(LARGEST_TEXT + 1, ' ')), "the file has 16777217 bytes; at most 16777216 are read");
    EXPECT_EQ(refusal(std::string(1000000, '[')).substr(0, 9), "[0][0][0]");
}

TEST(File, WrittenAndReadAgainItIsTheSameSection) {
    const std::string text = R"({
        "name": "T-beam \u00e4", "units": {"length": "cm", "force": "kN"},
        "materials": [{"name": "C30", "E": 3300, "nu": 0.2, "density": 0.0024, "strength": {"tension": 0.1, "compression": 2}},
                      {"name": "steel", "E": 20000, "G": 8100, "strength": 50}],
        "parts": [{"name": "slab", "material": "C30", "shape": "rectangle", "parameters": {"h": 10, "b": 33.3}, "at": [0.1, 7],
                   "group": 2, "factor": 0.7},
                  {"material": "steel", "profile": "ipe 300", "turn": 30, "mirror": true},
                  {"material": "C30", "outline": [[0, 0], [4, 0], {"arc": [4, 4], "radius": 2.5, "turn": "left"},
                                                  {"arc": [0, 4], "through": [2, 4.3]}],
                   "holes": [[[1, 1], [2, 1], [1, 2]]]}],
        "bars": [{"at": [0, 7], "diameter": 1.6, "material": "steel"}, {"at": [3, 7], "area": 2, "material": "steel", "as_point": true}],
        "wishes": {"accuracy": 1e-5, "levels": 4, "size": 0.3}})";
    const Section first = read_section(text);
    const std::string written = write_section(first);
    const Section s = read_section(written);
    EXPECT_EQ(write_section(s), written);
    EXPECT_EQ(s.name, "T-beam \u00e4");
    EXPECT_EQ(s.length + s.force, "cmkN");
    EXPECT_EQ(s.materials[0].G, 3300 / 2.4);
    EXPECT_EQ(s.materials[0].density, 0.0024);
    EXPECT_EQ(s.materials[0].compression, 2);
    EXPECT_EQ(s.materials[1].tension, 50);
    EXPECT_EQ(s.parts[0].name + s.parts[0].shape + s.parts[1].profile, "slabrectangleipe 300");
    EXPECT_EQ(s.parts[0].parameters.at("b"), 33.3);
    EXPECT_EQ(s.parts[0].place.at.y, 0.1);
    EXPECT_EQ(s.parts[0].group, 2);
    EXPECT_EQ(s.parts[0].factor, 0.7);
    EXPECT_EQ(s.parts[1].place.angle, 30);
    EXPECT_TRUE(s.parts[1].place.mirrored);
    // A square with a bow of 1 to the right, and one of 0.3 above: segments of circles of 2.5 and of 6.8167.
    const auto segment = [](double r, double bow) { return r * r * std::acos(1 - bow / r) - 2 * (r - bow); };
    EXPECT_NEAR(area_of(s.parts[2].face), 16 + segment(2.5, 1) + segment((4 + 0.09) / 0.6, 0.3) - 0.5, 1e-13);
    EXPECT_EQ(area_of(s.parts[2].face), area_of(first.parts[2].face));
    EXPECT_EQ(s.bars[0].area, PI * 0.64);
    EXPECT_TRUE(s.bars[1].as_point);
    EXPECT_EQ(s.wishes.accuracy + s.wishes.size, 1e-5 + 0.3);
    EXPECT_EQ(s.wishes.levels, 4);
}

}  // namespace velquor
