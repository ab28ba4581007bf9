#include "kit/section/file.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "kit/section/geometry.h"
#include "kit/section/loads.h"
#include "kit/section/parse.h"
#include "kit/section/units.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr double ROUNDING = 1e-9;  // by which half of a distance may exceed its radius

Point point_of(const json& value) { return {value[0].get<double>(), value[1].get<double>()}; }

Material material_of(const json& value, const std::string& place) {
    Material m;
    m.name = value.at("name");
    m.E = value.at("E");
    if (value.contains("nu") && value.contains("G"))
        throw Error(place, "nu and G are both given", "one follows from the other: leave one out");
    m.G = value.contains("G") ? value["G"].get<double>() : m.E / (2 * (1 + value.value("nu", 0.3)));
    m.density = value.value("density", 0.0);
    if (value.contains("strength")) {
        const json& strength = value["strength"];
        m.tension = strength.is_number() ? strength.get<double>() : strength.at("tension").get<double>();
        m.compression = strength.is_number() ? m.tension : strength.at("compression").get<double>();
    }
    return m;
}

Outline outline_of(const json& list, const std::string& place) {
    Outline outline;
    const auto to = [&](std::size_t i) { return point_of(list[i].is_array() ? list[i] : list[i].at("arc")); };
    for (std::size_t i = 0; i < list.size(); ++i) {
        const json& item = list[i];
        const std::string here = place + "[" + std::to_string(i) + "]";
        if (item.is_array()) {
            outline.edges.push_back({to(i), false, {}});
            continue;
        }
        if (item.contains("through") == item.contains("radius"))
            throw Error(here, item.contains("radius") ? "through and radius are both given" : "an arc without its way",
                        "give \"through\": [y, z], or \"radius\" and \"turn\"");
        if (item.contains("through")) {
            outline.edges.push_back({to(i), true, point_of(item["through"])});
            continue;
        }
        const Point from = to(i > 0 ? i - 1 : list.size() - 1);
        const double radius = item["radius"], half = std::hypot(to(i).y - from.y, to(i).z - from.z) / 2;
        if (radius < half * (1 - ROUNDING) || half == 0)
            throw Error(here, "radius = " + text_of(radius) + ": cannot reach",
                        half > 0 ? "must be at least half of the distance = " + text_of(half)
                                 : "an arc must end elsewhere than it begins");
        outline.edges.push_back(arc_of(from, to(i), radius, item["turn"] == "left"));
    }
    // An arc back to the first point takes the place of this, which no edge leads to.
    const auto same = [](const Point& a, const Point& b) { return a.y == b.y && a.z == b.z; };
    if (list.size() > 2 && list.front().is_array() && outline.edges.back().arc &&
        same(outline.edges.back().to, outline.edges.front().to)) {
        outline.edges.front() = outline.edges.back();
        outline.edges.pop_back();
    }
    return outline;
}

Part part_of(const json& value, const std::string& place) {
    const int ways = static_cast<int>(value.contains("shape") + value.contains("profile") + value.contains("outline"));
    if (ways != 1)
        throw Error(place, ways == 0 ? "nothing to draw" : "drawn in several ways",
                    "give one of \"shape\", \"profile\" and \"outline\"");
    for (const auto& [key, owner] : {std::pair{"parameters", "shape"}, std::pair{"holes", "outline"}})
        if (value.contains(key) && !value.contains(owner))
            throw Error(place, in_quotes(key) + " without " + in_quotes(owner), "leave it out");
    Part part;
    part.name = value.value("name", "");
    part.material = value.value("material", "");
    part.shape = value.value("shape", "");
    part.profile = value.value("profile", "");
    if (value.contains("parameters")) part.parameters = value["parameters"].get<std::map<std::string, double>>();
    if (value.contains("outline")) part.face.outer = outline_of(value["outline"], place + ".outline");
    if (value.contains("holes"))
        for (const json& hole : value["holes"]) {
            const std::string here = place + ".holes[" + std::to_string(part.face.holes.size()) + "]";
            part.face.holes.push_back(outline_of(hole, here));
        }
    part.place.mirrored = value.value("mirror", false);
    part.place.angle = value.value("turn", 0.0);
    if (value.contains("at")) part.place.at = point_of(value["at"]);
    part.group = value.value("group", 1);
    part.factor = value.value("factor", 1.0);
    return part;
}

// The places of an entry: one, those of a row with its ends, or those of a ring.
std::vector<Point> places_of(const json& value, const std::string& place) {
    const bool row = value.contains("from"), ring = value.contains("centre");
    if (value.contains("at") + row + ring != 1)
        throw Error(place, value.contains("at") || row ? "a bar with several places" : "a bar without a place",
                    "give one of \"at\", \"from\" with \"to\", and \"centre\" with \"radius\"");
    for (const auto& [key, wanted] : {std::pair{"count", row || ring}, std::pair{"start", ring}})
        if (value.contains(key) && !wanted)
            throw Error(place, in_quotes(key) + " without a " + (key[0] == 'c' ? "row or a ring" : "ring"),
                        "leave it out");
    if (value.contains("at")) return {point_of(value["at"])};
    std::vector<Point> places;
    const int count = value.at("count");
    if (row) {
        const Point a = point_of(value["from"]), b = point_of(value.at("to"));
        for (int k = 0; k < count; ++k) {
            const double share = k / (count - 1.0);
            places.push_back({a.y + share * (b.y - a.y), a.z + share * (b.z - a.z)});
        }
        places.back() = b;
    } else {
        const Point c = point_of(value["centre"]);
        const double r = value.at("radius"), start = value.value("start", 0.0);
        for (int k = 0; k < count; ++k) places.push_back(on_circle(c, r, start + 360.0 * k / count));
    }
    return places;
}

void take_bars(const json& value, const std::string& place, std::vector<Bar>& bars) {
    if (value.contains("diameter") == value.contains("area"))
        throw Error(place, value.contains("area") ? "diameter and area are both given" : "a bar without a size",
                    "give one of \"diameter\" and \"area\"");
    const double d = value.value("diameter", 0.0);
    const std::vector<Point> places = places_of(value, place);
    if (bars.size() + places.size() > MOST_BARS)
        throw Error(place, "more than " + std::to_string(MOST_BARS) + " bars in all");
    const char* pattern = value.contains("from") ? " of the row)" : " of the ring)";
    for (std::size_t k = 0; k < places.size(); ++k)
        bars.push_back({places[k], value.value("area", PI * d * d / 4), value.value("material", ""),
                        value.value("as_point", false),
                        place + (places.size() > 1 ? " (" + ordinal(k + 1) + pattern : "")});
}

Load load_of(const json& value, const std::string& place, const Section& section, std::size_t number) {
    Load load;
    load.name = value.value("name", "load " + std::to_string(number + 1));
    bool given = false;
    for (const LoadKey& key : load_keys()) {
        if (!value.contains(key.name)) continue;
        const json& v = value[key.name];
        const std::string here = place + "." + key.name;
        load.*(key.value) = v.is_number() ? v.get<double>() : load_value(v.get<std::string>(), key, section, here);
        given = true;
    }
    if (!given) throw Error(place, "a load without values", "as in {\"My\": \"20 kNm\"}");
    return load;
}

// Uses of materials by the names of groups or layers.
std::map<std::string, Use> uses_of(const json& value) {
    std::map<std::string, Use> uses;
    for (const auto& [name, use] : value.items())
        uses[name] = use.is_string() ? Use{use, 1, 1.0}
                                     : Use{use.value("material", ""), use.value("group", 1), use.value("factor", 1.0)};
    return uses;
}

ReadMesh mesh_of(const json& value) {
    ReadMesh mesh;
    mesh.file = value.value("file", "");
    mesh.join = value.value("join", mesh.join);
    mesh.plane = value.value("plane", "");
    if (value.contains("groups")) mesh.groups = uses_of(value["groups"]);
    return mesh;
}

Drawing drawing_of(const json& value) {
    Drawing drawing;
    drawing.file = value.value("file", "");
    drawing.gap = value.value("gap", 0.0);
    drawing.unit = value.value("unit", "");
    if (value.contains("layers")) drawing.layers = uses_of(value["layers"]);
    return drawing;
}

Section section_of(const json& value) {
    Section s;
    const auto each = [&](const char* key, auto take) {
        if (!value.contains(key)) return;
        for (std::size_t i = 0; i < value[key].size(); ++i)
            take(value[key][i], std::string(key) + "[" + std::to_string(i) + "]");
    };
    s.name = value.value("name", "");
    if (value.contains("units")) {
        s.length = value["units"].value("length", s.length);
        s.force = value["units"].value("force", s.force);
        size_of(lengths(), s.length, "units.length");  // loads may be in others
        size_of(forces(), s.force, "units.force");
    }
    each("materials", [&](const json& v, const std::string& at) { s.materials.push_back(material_of(v, at)); });
    if (value.contains("mesh")) {
        if (value.contains("parts") || value.contains("drawing"))
            throw Error("mesh", value.contains("parts") ? "beside parts" : "beside a drawing",
                        "a section is drawn or meshed: leave one out");
        s.mesh = mesh_of(value["mesh"]);
    }
    if (value.contains("drawing")) s.drawing = drawing_of(value["drawing"]);
    each("parts", [&](const json& v, const std::string& at) { s.parts.push_back(part_of(v, at)); });
    each("bars", [&](const json& v, const std::string& at) { take_bars(v, at, s.bars); });
    each("loads", [&](const json& v, const std::string& at) { s.loads.push_back(load_of(v, at, s, s.loads.size())); });
    if (s.materials.size() == 1) {
        const std::string& only = s.materials.front().name;
        for (Part& part : s.parts) part.material = part.material.empty() ? only : part.material;
        for (auto& [name, group] : s.mesh.groups) group.material = group.material.empty() ? only : group.material;
        for (Bar& bar : s.bars) bar.material = bar.material.empty() ? only : bar.material;
    }
    if (value.contains("wishes")) {
        const json& wishes = value["wishes"];
        s.wishes.accuracy = wishes.value("accuracy", s.wishes.accuracy);
        s.wishes.levels = wishes.value("levels", s.wishes.levels);
        s.wishes.size = wishes.value("size", s.wishes.size);
    }
    return s;
}

ordered_json pair_of(const Point& p) { return ordered_json::array({p.y, p.z}); }

ordered_json list_of(const Outline& outline) {
    ordered_json list = ordered_json::array();
    for (const Edge& edge : outline.edges)
        if (edge.arc)
            list.push_back({{"arc", pair_of(edge.to)}, {"through", pair_of(edge.through)}});
        else
            list.push_back(pair_of(edge.to));
    return list;
}

ordered_json text_of(const Material& m) {
    ordered_json text = {{"name", m.name}, {"E", m.E}, {"G", m.G}};
    if (m.density > 0) text["density"] = m.density;
    if (m.tension > 0) text["strength"] = {{"tension", m.tension}, {"compression", m.compression}};
    return text;
}

ordered_json text_of(const std::map<std::string, Use>& uses) {
    ordered_json text = ordered_json::object();
    for (const auto& [name, use] : uses) {
        text[name] = {{"group", use.group}, {"factor", use.factor}};
        if (!use.material.empty()) text[name]["material"] = use.material;
    }
    return text;
}

ordered_json text_of(const ReadMesh& mesh) {
    ordered_json text = {{"file", mesh.file}, {"groups", text_of(mesh.groups)}};
    if (mesh.join >= 0) text["join"] = mesh.join;
    if (!mesh.plane.empty()) text["plane"] = mesh.plane;
    return text;
}

ordered_json text_of(const Drawing& drawing) {
    ordered_json text = {{"file", drawing.file}, {"gap", drawing.gap}};
    if (!drawing.layers.empty()) text["layers"] = text_of(drawing.layers);
    if (!drawing.unit.empty()) text["unit"] = drawing.unit;
    return text;
}

ordered_json text_of(const Part& part) {
    ordered_json text;
    if (!part.name.empty()) text["name"] = part.name;
    text["material"] = part.material;
    if (!part.shape.empty()) {
        text["shape"] = part.shape;
        text["parameters"] = part.parameters;
    } else if (!part.profile.empty()) {
        text["profile"] = part.profile;
    } else {
        text["outline"] = list_of(part.face.outer);
        for (const Outline& hole : part.face.holes) text["holes"].push_back(list_of(hole));
    }
    text["at"] = pair_of(part.place.at);
    if (part.place.angle != 0) text["turn"] = part.place.angle;
    if (part.place.mirrored) text["mirror"] = true;
    text["group"] = part.group;
    text["factor"] = part.factor;
    return text;
}

Section section_from(const json& value, bool with_parts) {
    try {
        if (value.is_object() && value.contains("sweep"))
            throw Error("sweep", "many sections, and not one", "a sweep is for velquor batch");
        check_structure(value, section_pattern());
        Section section = section_of(value);
        for (const auto& [key, file] :
             {std::pair{"mesh", &section.mesh.file}, std::pair{"drawing", &section.drawing.file}}) {
            if (with_parts && value.contains(key) && file->empty()) throw Error(key, "key \"file\" is missing");
            if (!with_parts && (!section.parts.empty() || !file->empty()))
                throw Error(section.parts.empty() ? std::string(key) + ".file" : "parts", "beside a file that is given",
                            "leave it out: materials, mesh.groups, drawing.layers, bars, "
                            "loads and wishes are taken");
        }
        if (with_parts) check_section(section);
        return section;
    } catch (const Error&) {
        throw;
    } catch (const std::exception& error) {
        throw Error("", std::string("the file cannot be read: ") + error.what());
    }
}

}  // namespace

Section section_from(const json& value) { return section_from(value, true); }
Section materials_from(const json& value) { return section_from(value, false); }
Section read_section(std::string_view text) { return section_from(parse_text(text), true); }
Section read_materials(std::string_view text) { return section_from(parse_text(text), false); }

std::string write_section(const Section& s) {
    if (is_mesh(s) && s.mesh.file.empty())
        throw Error("mesh", "its elements stand in no file", "write them by show_mesh, and name the file");
    ordered_json text;
    if (!s.name.empty()) text["name"] = s.name;
    text["units"] = {{"length", s.length}, {"force", s.force}};
    for (const Material& m : s.materials) text["materials"].push_back(text_of(m));
    if (!s.drawing.file.empty()) text["drawing"] = text_of(s.drawing);
    if (is_mesh(s))
        text["mesh"] = text_of(s.mesh);
    else
        for (const Part& part : s.parts) text["parts"].push_back(text_of(part));
    for (const Bar& bar : s.bars)
        text["bars"].push_back(
            {{"at", pair_of(bar.at)}, {"area", bar.area}, {"material", bar.material}, {"as_point", bar.as_point}});
    for (const Load& load : s.loads) {
        ordered_json line = {{"name", load.name}};
        for (const LoadKey& key : load_keys()) line[key.name] = load.*(key.value);
        text["loads"].push_back(line);
    }
    text["wishes"] = {{"accuracy", s.wishes.accuracy}, {"levels", s.wishes.levels}, {"size", s.wishes.size}};
    return text.dump(2) + "\n";
}

}  // namespace velquor
