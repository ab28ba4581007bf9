#include <gtest/gtest.h>

#include <cmath>

#include "kit/section/file.h"
#include "kit/section/geometry.h"
#include "kit/section/profiles.h"
#include "kit/section/shapes.h"

namespace velquor {

namespace {

constexpr double PI = 3.14159265358979323846;
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
    EXPECT_EQ(refusal(with_part(R"("profile": "IPE 3000")")),
              "parts[0].profile: unknown profile \"IPE 3000\"; did you mean \"IPE 300\"?");
}

TEST(File, WrongOnesAreToldTheirPlaceAndWhatWouldBeRight) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", "line 1, column 1: not JSON: unexpected end of input; expected '[', '{', or a literal"},
        {"{\n  \"name\": x}", "line 2, column 11: not JSON: invalid literal; last read: '\"name\": x'"},
        {with_more("\"name\": 1e999"), "name: a number is too large for 64 bits"},
        {with_more("\"name\": \"a\", \"name\": \"b\""), "key \"name\" stands twice"},
        {with_part(PLATE + ", \"group\": 1, \"group\": 2"), "parts[0]: key \"group\" stands twice"},
        {std::string(20, '['), "[0][0][0][0][0][0][0][0][0][0][0][0]: nested deeper than 12 lists and objects"},
        {"[1]", "a list is given; it must be an object in braces"},
        {"{}", "key \"materials\" is missing"},
        {with_more("\"bras\": []"), "unknown key \"bras\"; did you mean \"bars\"?"},
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
    };
    for (const auto& [text, message] : cases) EXPECT_EQ(refusal(text), message) << text;
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
