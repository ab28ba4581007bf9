#include "section_file.h"

#include <fstream>
#include <initializer_list>
#include <stdexcept>

#include "velquor.h"

using nlohmann::json;

namespace {

[[noreturn]] void wrong(const std::string& where, const std::string& what) {
    throw std::runtime_error(where + ": " + what);
}

// An object with these keys and no others.
void check_keys(const json& j, const std::string& where, std::initializer_list<const char*> required,
                std::initializer_list<const char*> optional = {}) {
    if (!j.is_object()) wrong(where, "an object is wanted");
    for (const char* key : required)
        if (!j.contains(key)) wrong(where, std::string("\"") + key + "\" is missing");
    for (const auto& item : j.items()) {
        bool known = false;
        for (const char* key : required) known = known || item.key() == key;
        for (const char* key : optional) known = known || item.key() == key;
        if (!known) wrong(where, "unknown key \"" + item.key() + "\"");
    }
}

double number(const json& j, const char* key, const std::string& where) {
    if (!j.at(key).is_number()) wrong(where, std::string("\"") + key + "\" is not a number");
    return j.at(key).get<double>();
}

double number_or(const json& j, const char* key, const std::string& where, double otherwise) {
    return j.contains(key) ? number(j, key, where) : otherwise;
}

double above_zero(const json& j, const char* key, const std::string& where) {
    const double value = number(j, key, where);
    if (!(value > 0)) wrong(where, std::string("\"") + key + "\" is not above 0");
    return value;
}

int whole(const json& j, const char* key, const std::string& where, int least, int most) {
    if (!j.at(key).is_number_integer()) wrong(where, std::string("\"") + key + "\" is not a whole number");
    const auto value = j.at(key).get<int64_t>();
    if (value < least || value > most)
        wrong(where,
              std::string("\"") + key + "\" is not from " + std::to_string(least) + " to " + std::to_string(most));
    return static_cast<int>(value);
}

std::string text(const json& j, const char* key, const std::string& where) {
    if (!j.at(key).is_string()) wrong(where, std::string("\"") + key + "\" is not a text");
    return j.at(key).get<std::string>();
}

bool flag(const json& j, const char* key, const std::string& where, bool otherwise = false) {
    if (!j.contains(key)) return otherwise;
    if (!j.at(key).is_boolean()) wrong(where, std::string("\"") + key + "\" is neither true nor false");
    return j.at(key).get<bool>();
}

point pair_of(const json& j, const char* key, const std::string& where) {
    const json& p = j.at(key);
    if (!p.is_array() || p.size() != 2 || !p[0].is_number() || !p[1].is_number())
        wrong(where, std::string("\"") + key + "\" is not a pair of numbers");
    return {p[0].get<double>(), p[1].get<double>()};
}

const json& list(const json& j, const char* key, const std::string& where) {
    if (!j.at(key).is_array()) wrong(where, std::string("\"") + key + "\" is not a list");
    return j.at(key);
}

std::string item(const std::string& where, const char* key, size_t i) {
    return where + ": " + key + " " + std::to_string(i + 1);
}

// The number of a material, from 1 on.
int number_of(const std::string& name, const std::string& where, const std::vector<Material>& materials) {
    for (size_t i = 0; i < materials.size(); ++i)
        if (materials[i].name == name) return static_cast<int>(i) + 1;
    wrong(where, "unknown material \"" + name + "\"");
}

int material_of(const json& j, const std::string& where, const std::vector<Material>& materials) {
    return j.contains("material") ? number_of(text(j, "material", where), where, materials) : 1;
}

// Materials and bars as the kit reads them, which the library's validation must do without.
Material read_material(const json& j, const std::string& where) {
    check_keys(j, where, {"name", "E"}, {"G", "nu", "density", "strength"});
    Material material = {text(j, "name", where), {0, 0, 0, 1, 1, 1, 1, 1, 0, 0}};
    const auto column = [&](int k) -> double& { return material.props[k - 1]; };
    column(VQ_EMOD) = number(j, "E", where);
    column(VQ_GMOD) = number_or(j, "G", where, column(VQ_EMOD) / (2 * (1 + number_or(j, "nu", where, 0.3))));
    column(VQ_UNITWEIGHT) = number_or(j, "density", where, 0);
    if (!j.contains("strength")) return material;
    const bool both = j["strength"].is_object();
    const json& strengths = both ? j["strength"] : j;
    column(VQ_FPOS) = number(strengths, both ? "tension" : "strength", where);
    column(VQ_FNEG) = number(strengths, both ? "compression" : "strength", where);
    return material;
}

// The property table knows coupling groups of materials, a section file those of parts.
void couple(const json& parts, const std::string& where, std::vector<Material>& materials) {
    std::vector<bool> seen(materials.size());
    for (size_t i = 0; i < parts.size(); ++i) {
        const std::string at = item(where, "part", i);
        const auto m = static_cast<size_t>(material_of(parts[i], at, materials) - 1);
        double &group = materials[m].props[VQ_GROUP - 1], &factor = materials[m].props[VQ_COUPLING - 1];
        const double own_group = number_or(parts[i], "group", at, 1), own_factor = number_or(parts[i], "factor", at, 1);
        if (seen[m] && (own_group != group || own_factor != factor))
            wrong(at, "parts of one material have one \"group\" and one \"factor\" here");
        group = own_group, factor = own_factor, seen[m] = true;
    }
}

// Columns of the property table that a section file cannot say.
void replace_columns(const json& columns, const std::string& where, std::vector<Material>& materials) {
    static const std::pair<const char*, int> COLUMNS[] = {
        {"GROUP", VQ_GROUP}, {"MATFLAG", VQ_MATFLAG}, {"FNEG", VQ_FNEG}, {"FPOS", VQ_FPOS}};
    for (const auto& own : columns.items()) {
        check_keys(own.value(), where, {}, {"GROUP", "MATFLAG", "FNEG", "FPOS"});
        double* props = materials[static_cast<size_t>(number_of(own.key(), where, materials) - 1)].props;
        for (const auto& [name, column] : COLUMNS)
            props[column - 1] = number_or(own.value(), name, where, props[column - 1]);
    }
}

void check_part(const json& j, const std::string& where) {
    if (!j.is_object() || !j.contains("shape")) wrong(where, "\"shape\" is missing");
    const std::string shape = text(j, "shape", where);
    const auto keys = [&](std::initializer_list<const char*> own, std::initializer_list<const char*> optional = {}) {
        json rest = j;
        rest.erase("shape");
        rest.erase("material");
        check_keys(rest, where + " (" + shape + ")", own, optional);
    };
    if (shape == "rectangle")
        keys({"from", "to"}, {"cells"});
    else if (shape == "patch")
        keys({"corners"}, {"bulge", "cells"});
    else if (shape == "sector")
        keys({"centre", "radii", "angles"});
    else if (shape == "triangle")
        keys({"corners", "cells"});
    else if (shape == "disc")
        keys({"centre", "axes"});
    else if (shape == "i_profile")
        keys({"h", "b", "tw", "tf", "r"}, {"b2", "tf2"});
    else if (shape == "u_profile")
        keys({"h", "b", "tw", "tf", "r"});
    else if (shape == "l_profile")
        keys({"h", "b", "t", "r1", "r2"});
    else if (shape == "hollow_profile")
        keys({"h", "b", "t", "ro", "ri"});
    else
        wrong(where, "unknown shape \"" + shape + "\"");
}

// A bar of the section file; `own` has what is not in it.
Bar read_bar(const json& j, const json& own, const std::string& where, const std::vector<Material>& materials) {
    check_keys(j, where, {"at", "area", "material"}, {"as_point"});
    const double* props = materials[material_of(j, where, materials) - 1].props;
    return {pair_of(j, "at", where),
            number(j, "area", where),
            props[VQ_EMOD - 1],
            number_or(own, "GMODUL", where, 0),
            number_or(own, "RADIUS", where, 0),
            props[VQ_UNITWEIGHT - 1]};
}

int slot_of(const json& j, const char* key, const std::string& where) {
    const std::string name = text(j, key, where);
    for (const auto& slot : slot_names())
        if (name == slot.first) return slot.second;
    wrong(where, "unknown slot \"" + name + "\"");
}

Expectation read_expectation(const json& j, const std::string& where, const SectionFile& file) {
    if (!j.is_object()) wrong(where, "an object is wanted");
    Expectation e;
    const int kinds = static_cast<int>(j.contains("slot")) + static_cast<int>(j.contains("stress")) +
                      static_cast<int>(j.contains("bar")) + static_cast<int>(j.contains("warping"));
    if (kinds != 1) wrong(where, "one of \"slot\", \"stress\", \"bar\", \"warping\" is wanted");
    json rest = j;  // without what every kind may have
    for (const char* key : {"over", "unit", "unit_name", "tolerance", "absolute", "order", "note", "outline"})
        rest.erase(key);
    if (j.contains("slot")) {
        check_keys(rest, where, {"name", "slot", "value", "source"}, {"minus"});
        e.quantity = Quantity::slot;
        e.slot = slot_of(j, "slot", where);
        if (j.contains("minus")) e.minus = slot_of(j, "minus", where);
    } else if (j.contains("stress")) {
        check_keys(rest, where, {"name", "stress", "case", "value", "source"}, {"at", "largest", "material"});
        e.quantity = Quantity::stress;
        e.stress = text(j, "stress", where);
        if (e.stress != "TAU" && e.stress != "TAUY" && e.stress != "TAUZ" && e.stress != "SIGMA")
            wrong(where, "unknown stress \"" + e.stress + "\"");
        e.load_case = whole(j, "case", where, 1, 4);
        e.largest = flag(j, "largest", where);
        if (e.largest == j.contains("at")) wrong(where, "either \"at\" or \"largest\" is wanted");
        if (!e.largest) e.at = pair_of(j, "at", where);
        if (j.contains("material")) e.material = material_of(j, where, file.materials);
    } else if (j.contains("bar")) {
        check_keys(rest, where, {"name", "bar", "case", "value", "source"});
        e.quantity = Quantity::bar;
        e.bar = whole(j, "bar", where, 1, static_cast<int>(file.bars.size()));
        e.load_case = whole(j, "case", where, 1, 4);
    } else {
        check_keys(rest, where, {"name", "warping", "at", "value", "source"});
        e.quantity = Quantity::warping;
        e.field = whole(j, "warping", where, 1, 3);
        e.at = pair_of(j, "at", where);
    }
    e.name = text(j, "name", where);
    e.source = text(j, "source", where);
    if (j.contains("note")) e.note = text(j, "note", where);
    if (j.contains("unit_name")) e.unit_name = text(j, "unit_name", where);
    if (j.contains("over")) e.over = slot_of(j, "over", where);
    if (j.contains("unit")) e.unit = above_zero(j, "unit", where);
    e.value = number(j, "value", where);
    e.absolute = flag(j, "absolute", where);
    if (file.study == j.contains("tolerance"))
        wrong(where, file.study ? "a study judges nothing: \"tolerance\" is out of place" : "\"tolerance\" is missing");
    if (!file.study) e.tolerance = above_zero(j, "tolerance", where);
    if (!file.study && !e.absolute && e.value == 0) wrong(where, "a value of 0 wants an absolute tolerance");
    e.outline = flag(j, "outline", where, true);
    if (j.contains("order")) e.order = whole(j, "order", where, 1, 2);
    if (file.study && e.order > 0) wrong(where, "a study judges nothing: \"order\" is out of place");
    return e;
}

}  // namespace

SectionFile read_section_file(const std::string& path) {
    std::ifstream stream(path);
    if (!stream) wrong(path, "cannot be read");
    json j;
    try {
        j = json::parse(stream);
    } catch (const json::parse_error& error) {
        wrong(path, error.what());
    }
    check_keys(j, path, {"about", "units", "section", "mesh", "expected"}, {"study", "refine"});
    const json &section = j["section"], &shapes = j["mesh"];
    const std::string in_section = path + ": section", in_mesh = path + ": mesh";
    check_keys(section, in_section, {"name", "materials", "parts"}, {"units", "bars", "wishes"});
    check_keys(shapes, in_mesh, {"size", "parts"}, {"wall", "turn", "shift", "triangles", "columns", "bars"});

    SectionFile file;
    file.path = path, file.section = section.dump();
    file.title = text(section, "name", in_section);
    file.about = text(j, "about", path), file.units = text(j, "units", path);
    file.study = flag(j, "study", path);
    const json& materials = list(section, "materials", in_section);
    for (size_t i = 0; i < materials.size(); ++i)
        file.materials.push_back(read_material(materials[i], item(in_section, "material", i)));
    if (file.materials.empty()) wrong(in_section, "a material at least is wanted");
    couple(list(section, "parts", in_section), in_section, file.materials);

    file.size = above_zero(shapes, "size", in_mesh);
    if (shapes.contains("wall")) file.wall = above_zero(shapes, "wall", in_mesh);
    file.turn = number_or(shapes, "turn", in_mesh, 0);
    if (shapes.contains("shift")) file.shift = pair_of(shapes, "shift", in_mesh);
    file.triangles = flag(shapes, "triangles", in_mesh);
    if (shapes.contains("columns")) replace_columns(shapes["columns"], in_mesh + ": columns", file.materials);
    const json& parts = list(shapes, "parts", in_mesh);
    for (size_t i = 0; i < parts.size(); ++i) {
        const std::string where = item(in_mesh, "shape", i);
        check_part(parts[i], where);
        file.parts.push_back(parts[i]);
        file.parts.back()["material"] = material_of(parts[i], where, file.materials);
    }
    const json own = shapes.value("bars", json::object());
    check_keys(own, in_mesh + ": bars", {}, {"GMODUL", "RADIUS"});
    for (size_t i = 0; section.contains("bars") && i < list(section, "bars", in_section).size(); ++i)
        file.bars.push_back(read_bar(section["bars"][i], own, item(in_section, "bar", i), file.materials));

    for (size_t i = 0; j.contains("refine") && i < list(j, "refine", path).size(); ++i) {
        if (!j["refine"][i].is_number_integer() || j["refine"][i] < 1 || j["refine"][i] > 64)
            wrong(path, "\"refine\" holds whole numbers from 1 to 64");
        file.refine.push_back(j["refine"][i].get<int>());
    }
    for (size_t i = 0; i < list(j, "expected", path).size(); ++i)
        file.expected.push_back(read_expectation(j["expected"][i], item(path, "expected", i), file));
    if (file.parts.empty() || file.expected.empty()) wrong(path, "a part and an expected value at least are wanted");
    return file;
}

const std::vector<std::pair<const char*, int>>& slot_names() {
#define SLOT(name) \
    { #name, VQ_##name }
    static const std::vector<std::pair<const char*, int>> NAMES = {
        SLOT(EA),          SLOT(IYY),          SLOT(IZZ),          SLOT(DYZ),          SLOT(YC),
        SLOT(ZC),          SLOT(SCY),          SLOT(SCZ),          SLOT(SCU),          SLOT(SCV),
        SLOT(GJ),          SLOT(GAY),          SLOT(GAZ),          SLOT(IW),           SLOT(ALPHA),
        SLOT(I1),          SLOT(I2),           SLOT(GAU),          SLOT(GAV),          SLOT(GAUV),
        SLOT(IWS),         SLOT(WT),           SLOT(RZ),           SLOT(RY),           SLOT(RV),
        SLOT(RU),          SLOT(WR1),          SLOT(WR2),          SLOT(ANET),         SLOT(PLAXIS_Y),
        SLOT(PLAXIS_Z),    SLOT(PLAXIS_Y_NEG), SLOT(PLAXIS_Z_NEG), SLOT(PLMOD_Z),      SLOT(PLMOD_Y),
        SLOT(PLMOD_Z_NEG), SLOT(PLMOD_Y_NEG),  SLOT(PLMOM_Z),      SLOT(PLMOM_Y),      SLOT(PLMOM_Z_NEG),
        SLOT(PLMOM_Y_NEG), SLOT(PLAXIS_U),     SLOT(PLAXIS_V),     SLOT(PLAXIS_U_NEG), SLOT(PLAXIS_V_NEG),
        SLOT(PLMOD_V),     SLOT(PLMOD_U),      SLOT(PLMOD_V_NEG),  SLOT(PLMOD_U_NEG),  SLOT(PLMOM_V),
        SLOT(PLMOM_U),     SLOT(PLMOM_V_NEG),  SLOT(PLMOM_U_NEG),  SLOT(COUP1),        SLOT(COUP2),
        SLOT(WEIGHT),      SLOT(EREF),         SLOT(GREF)};
#undef SLOT
    return NAMES;
}
