#include "kit/section/templates.h"

#include <algorithm>
#include <cmath>

#include "kit/section/file.h"
#include "kit/section/geometry.h"
#include "kit/section/profiles.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr double CUBIC_METRE = 1e9;   // in mm3
constexpr double POUND = 0.45359237;  // in kg
constexpr double CUBIC_FOOT = 1728;   // in cubic inches

Material material(const char* name, double E, double nu, double density, double tension, double compression) {
    return {name, E, E / (2 * (1 + nu)), density, tension, compression};
}

Part part(const char* name, const char* material, const char* shape, std::map<std::string, double> parameters,
          const Point& at = {}) {
    Part result;
    result.name = name;
    result.material = material;
    result.shape = shape;
    result.parameters = std::move(parameters);
    result.place.at = at;
    return result;
}

double area_of_bar(double d) { return PI * d * d / 4; }

// Names of the parameters of a row of bars along y.
struct Row {
    const char *count, *diameter;
};
constexpr Row TOP = {"n_top", "d_top"}, BOTTOM = {"n_bottom", "d_bottom"};

// Where a row has bars, its diameter is needed, and so is room for them: `width` wide with the cover on both sides,
// `height` high with the cover above and below and `others` beside it.
void check_row(const Given& p, const Row& row, double width, double height, double others) {
    const double n = p(row.count), d = p(row.diameter), clear = width - 2 * p("cover");
    if (n == 0) return;
    p.above(row.diameter, "0", 0);
    p.at_most(row.diameter, "the height between covers and other bars", height - 2 * p("cover") - others);
    p.at_most(row.diameter, "the width between the covers", clear);
    p.at_most(row.count, "the width between the covers / the diameter", std::floor(clear / d * (1 + 1e-12)));
}

double diameter_if_any(const Given& p, const Row& row) { return p(row.count) > 0 ? p(row.diameter) : 0; }

void check_rows(const Given& p, double width_top, double width_bottom, double height) {
    check_row(p, BOTTOM, width_bottom, height, 0);
    check_row(p, TOP, width_top, height, diameter_if_any(p, BOTTOM));
}

// Bars of a row that is `width` wide with the cover on both sides; a single one stands in the middle.
void take_row(Section& s, const Given& p, const Row& row, double width, double z) {
    const int n = static_cast<int>(p(row.count));
    const double d = p(row.diameter), reach = width / 2 - p("cover") - d / 2;
    for (int k = 0; k < n; ++k)
        s.bars.push_back({{n > 1 ? reach * (2.0 * k / (n - 1) - 1) : 0, z}, area_of_bar(d), "B500"});
}

// Rows below the top and above the bottom, by the cover and half of a bar.
void take_rows(Section& s, const Given& p, double width_top, double width_bottom, double top, double bottom) {
    take_row(s, p, TOP, width_top, top - p("cover") - p("d_top") / 2);
    take_row(s, p, BOTTOM, width_bottom, bottom + p("cover") + p("d_bottom") / 2);
}

Section reinforced(const char* shape, std::map<std::string, double> parameters) {
    Section s;
    s.materials = {concrete_c30(), reinforcement_b500()};
    s.parts = {part("concrete", "C30/37", shape, std::move(parameters))};
    return s;
}

Section rc_rectangle(const Given& p) {
    const double h = p("h"), b = p("b"), side = p("n_side") > 0 ? p("d_side") : 0;
    check_rows(p, b, b, h);
    Section s = reinforced("rectangle", {{"h", h}, {"b", b}});
    take_rows(s, p, b, b, h / 2, -h / 2);
    // Those at the sides stand between the two rows, at equal distances from their middles.
    const int n = static_cast<int>(p("n_side"));
    if (n == 0) return s;
    p.above("d_side", "0", 0);
    p.at_most("d_side", "half of the width between the covers", b / 2 - p("cover"));
    const double low = -h / 2 + p("cover") + p("d_bottom") / 2, high = h / 2 - p("cover") - p("d_top") / 2;
    const double step = (high - low) / (n + 1), widest = std::max({side, p("d_top"), p("d_bottom")});
    p.at_most("n_side", "the height between the rows / the widest bar, less 1",
              std::floor((high - low) / widest * (1 + 1e-12)) - 1);
    for (int k = 1; k <= n; ++k)
        for (const double sign : {-1.0, 1.0})
            s.bars.push_back({{sign * (b / 2 - p("cover") - side / 2), low + k * step}, area_of_bar(side), "B500"});
    return s;
}

Section rc_t(const Given& p) {
    const double h = p("h"), b = p("b"), bw = p("bw");
    Section s = reinforced("concrete_t", {{"h", h}, {"b", b}, {"bw", bw}, {"hf", p("hf")}});
    faces_of(shape_of("concrete_t", ""), s.parts[0].parameters, p.place);
    check_row(p, BOTTOM, bw, h, diameter_if_any(p, TOP));
    check_row(p, TOP, b, p("hf"), 0);
    take_rows(s, p, b, bw, 0, -h);
    return s;
}

Section rc_circle(const Given& p) {
    const double d = p("d"), db = p("d_bar"), r = d / 2 - p("cover") - db / 2;
    const int n = static_cast<int>(p("n"));
    Section s = reinforced("circle", {{"d", d}});
    if (n == 0) return s;
    p.above("d_bar", "0", 0);
    p.at_most("d_bar", "d / 2 - cover", d / 2 - p("cover"));
    if (n > 1) p.at_most("d_bar", "the distance of two bars", 2 * r * std::sin(PI / n));
    for (int k = 0; k < n; ++k) s.bars.push_back({on_circle({}, r, 90 + 360.0 * k / n), area_of_bar(db), "B500"});
    return s;
}

Section composite(const Given& p) {
    const double hc = p("hc"), bc = p("bc"), h = p("h"), r = p("r");
    if (r > 0) {
        for (const char* lower : {"b2", "tf2"})
            if (p(lower) > 0)
                throw Error(p.place, std::string(lower) + " and r are both given",
                            "a girder with fillets has equal flanges: leave one of the two out");
    }
    Section s;
    s.materials = {steel_s235(), concrete_c30()};
    std::map<std::string, double> girder = {{"h", h}, {"b", p("b")}, {"tw", p("tw")}, {"tf", p("tf")}};
    if (r > 0)
        girder["r"] = r;
    else
        girder.insert({{"b2", p("b2")}, {"tf2", p("tf2")}});
    s.parts = {part("girder", "S235", r > 0 ? "i" : "i_welded", girder, {0, -hc - h / 2}),
               part("slab", "C30/37", "rectangle", {{"h", hc}, {"b", bc}}, {0, -hc / 2})};
    faces_of(shape_of(s.parts[0].shape, ""), girder, p.place);
    check_rows(p, bc, bc, hc);
    take_rows(s, p, bc, bc, 0, -hc);
    if (!s.bars.empty()) s.materials.push_back(reinforcement_b500());
    return s;
}

}  // namespace

Material concrete_c30() { return material("C30/37", 33000, 0.2, 2500 / CUBIC_METRE, 2.9, 30); }
Material reinforcement_b500() { return material("B500", 200000, 0.3, 7850 / CUBIC_METRE, 500, 500); }
Material steel_s235() { return material("S235", 210000, 0.3, 7850 / CUBIC_METRE, 235, 235); }

const std::vector<Template>& templates() {
    const Kind optional = Kind::optional_length;
    const Parameter cover = {"cover", "cover of the bars, from the surface to their edge", optional, false, 40};
    const Parameter h = {"h", "overall height"};
    const Parameter n_top = {"n_top", "number of bars in the upper row", Kind::bars, false};
    const Parameter d_top = {"d_top", "their diameter", optional, false};
    const Parameter n_bottom = {"n_bottom", "number of bars in the lower row", Kind::bars, false};
    const Parameter d_bottom = {"d_bottom", "their diameter", optional, false};
    static const std::vector<Template> all = [&] {
        std::vector<Template> table = {
            {"rc_rectangle",
             "rectangle of C30/37 with bars of B500; origin: centre",
             {h,
              {"b", "width"},
              cover,
              n_top,
              d_top,
              n_bottom,
              d_bottom,
              {"n_side", "number of bars at each side, between the rows", Kind::bars, false},
              {"d_side", "their diameter", optional, false}},
             rc_rectangle},
            {"rc_t",
             "beam with a slab of C30/37, bars of B500 in the slab and in the web; origin: middle of the slab's top",
             {h,
              {"b", "width of the slab"},
              {"bw", "width of the web"},
              {"hf", "thickness of the slab"},
              cover,
              n_top,
              d_top,
              n_bottom,
              d_bottom},
             rc_t},
            {"rc_circle",
             "circle of C30/37 with a ring of bars of B500, the first on top; origin: centre",
             {{"d", "diameter"},
              cover,
              {"n", "number of bars", Kind::bars, false},
              {"d_bar", "their diameter", optional, false}},
             rc_circle},
            {"composite",
             "slab of C30/37 on an I of S235, welded or with fillets, with bars of B500; origin: middle of the slab's "
             "top",
             {{"hc", "thickness of the slab"},
              {"bc", "width of the slab"},
              {"h", "height of the girder"},
              {"b", "width of the upper flange"},
              {"tw", "thickness of the web"},
              {"tf", "thickness of the upper flange"},
              {"b2", "width of the lower flange; 0: b", optional, false},
              {"tf2", "thickness of the lower flange; 0: tf", optional, false},
              {"r", "radius of the fillets of a rolled girder; 0: welded", optional, false},
              cover,
              n_top,
              d_top,
              n_bottom,
              d_bottom},
             composite},
        };
        for (Template& t : table) t.sketch = sketch_of(t.name);
        return table;
    }();
    return all;
}

Section section_of_shape(const std::string& name, const std::map<std::string, double>& parameters,
                         const std::string& place) {
    std::vector<std::string> names;
    Section s;
    for (const Template& t : templates()) {
        names.emplace_back(t.name);
        if (t.name != name) continue;
        s = t.section({all_values("shape " + in_quotes(name), t.parameters, parameters, place), place});
        s.name = name;
        check_section(s);
        return s;
    }
    for (const Shape& shape : shapes()) names.emplace_back(shape.name);
    if (std::find(names.begin(), names.end(), name) == names.end())
        throw Error(place, "unknown shape " + in_quotes(name), did_you_mean(name, names));
    faces_of(shape_of(name, place), parameters, place);
    s.name = name;
    s.materials = {steel_s235()};
    s.parts = {part("", "S235", name.c_str(), parameters)};
    check_section(s);
    return s;
}

Section section_of_profile(const std::string& name, const std::string& place) {
    const Profile profile = profile_of(name, "mm", place);
    Section s;
    s.name = profile.name;
    s.materials = {steel_s235()};
    if (profile.unit == "in") {
        const double density = 490 * POUND / CUBIC_FOOT;
        s.length = "in";
        s.force = "kip";
        s.materials = {profile.family == "W" ? material("A992", 29000, 0.3, density, 50, 50)
                                             : material("A36", 29000, 0.3, density, 36, 36)};
    }
    Part one;
    one.material = s.materials[0].name;
    one.profile = profile.name;
    s.parts = {one};
    check_section(s);
    return s;
}

}  // namespace velquor
