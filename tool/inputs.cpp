#include "tool/inputs.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "kit/mesh/mesh_file.h"
#include "kit/mesh/named_files.h"
#include "kit/section/drawing.h"
#include "kit/section/file.h"
#include "kit/section/loads.h"
#include "kit/section/profiles.h"
#include "kit/section/templates.h"
#include "kit/section/units.h"
#include "kit/section/words.h"
#include "tool/output.h"

namespace velquor {

namespace {

// What is given, by its option; `fallback` where it is not.
double given(const std::map<std::string, std::string>& options, const std::string& name, double fallback) {
    const auto at = options.find(name);
    return at == options.end() || at->second.empty() ? fallback : number_of(at->second, "--" + name);
}

// What the command line may say of a material; as schema.json limits it in files.
struct Limit {
    const char* name;
    double above, most;
    const char* text;
};
constexpr Limit LIMITS[] = {{"E", 0, 1e30, "must be above 0"},
                            {"nu", -1, 0.5, "must be above -1 and at most 0.5"},
                            {"density", 0, 1e30, "must be above 0"},
                            {"strength", 0, 1e30, "must be above 0"}};

// Overrides the only material with what the options give in N, mm and kg/m3.
void take_material(const std::map<std::string, std::string>& options, Section& section) {
    const auto first =
        std::find_if(options.begin(), options.end(), [](const auto& option) { return !option.second.empty(); });
    if (first == options.end()) return;
    if (section.materials.size() > 1)
        throw Error("--" + first->first, "the section has several materials",
                    "write a file: velquor schema tells its form");
    for (const Limit& limit : LIMITS) {
        const double value = given(options, limit.name, limit.most);
        if (!(value > limit.above && value <= limit.most))
            throw Error(std::string("--") + limit.name, text_of(value), limit.text);
    }
    Material& m = section.materials.front();
    const double length = size_of(lengths(), section.length, ""), force = size_of(forces(), section.force, "");
    const double stress = 1e6 * length * length / force, volume = length * length * length;  // of 1 N/mm2, of 1 m3
    const double nu = given(options, "nu", m.E / (2 * m.G) - 1);
    m.E = stress * given(options, "E", m.E / stress);
    m.G = m.E / (2 * (1 + nu));
    m.density = volume * given(options, "density", m.density / volume);
    m.tension = stress * given(options, "strength", m.tension / stress);
    m.compression = stress * given(options, "strength", m.compression / stress);
}

Section shape_given(const Inputs& inputs) {
    std::map<std::string, double> parameters;
    std::string name = inputs.shape;
    for (const auto& [parameter, text] : inputs.parameters) {
        if (text.empty()) continue;
        parameters[parameter] = number_of(text, "--" + parameter);
        name += " " + parameter + " " + text;
    }
    Section section = section_of_shape(inputs.shape, parameters);
    section.name = name;
    return section;
}

Section profile_named(const std::string& name) {
    try {
        return section_of_profile(name);
    } catch (const Error& error) {
        if (name.find('/') != std::string::npos)
            throw Error(error.place, "no such file, nor a profile",
                        error.remedy.empty() ? "velquor profiles lists all" : error.remedy);
        if (!error.remedy.empty()) throw;
        throw Error(error.place, error.fault + ", and no such file",
                    "velquor profiles lists all; names with blanks stand in quotes");
    }
}

// What a file says of materials, for a mesh or a drawing; without one all is of steel.
Section materials_given(const std::string& file, const char* lengths) {
    Section section;
    if (file.empty()) {
        section.materials = {steel_s235()};
        section.notes = {"all of " + section.materials[0].name + lengths + ": --materials FILE tells others"};
        return section;
    }
    try {
        return read_materials(text_of_file(file));
    } catch (const Error& error) {
        throw Error(file + (error.place.empty() ? "" : ": ") + error.place, error.fault, error.remedy);
    }
}

Section mesh_named(const std::string& name, const std::string& materials) {
    Section section = materials_given(materials, ", with lengths in mm");
    read_mesh(section, name);
    return section;
}

Section drawing_given(const std::string& dxf, const Inputs& inputs) {
    const double gap = given(inputs.wishes, "gap", 0);
    if (!(gap >= 0 && gap <= 1e9)) throw Error("--gap", text_of(gap), "must be from 0 to 1e9");
    Section section = materials_given(inputs.materials, "");
    if (gap > 0) section.drawing.gap = gap;
    read_drawing(section, dxf);
    return section;
}

void take_wishes(const std::map<std::string, std::string>& given_wishes, Wishes& wishes) {
    wishes.accuracy = given(given_wishes, "accuracy", wishes.accuracy);
    wishes.size = given(given_wishes, "size", wishes.size);
    const double levels = given(given_wishes, "levels", wishes.levels);
    if (!(levels >= 1 && levels <= 6 && levels == static_cast<int>(levels)))
        throw Error("--levels", text_of(levels), "must be a whole number from 1 to 6");
    if (!(wishes.accuracy >= 1e-9 && wishes.accuracy <= 0.5))
        throw Error("--accuracy", text_of(wishes.accuracy), "must be from 1e-9 to 0.5");
    if (!(wishes.size >= 0 && wishes.size <= 1e9))
        throw Error("--size", text_of(wishes.size), "must be from 0 to 1e9; 0: from the thickness of the walls");
    wishes.levels = static_cast<int>(levels);
}

// A name is that of a file, and not of a profile, of which some have a slash too: L8x8x5/8.
bool is_file(const std::string& name) {
    std::error_code none;
    return name == "-" || std::filesystem::path(name).extension() == ".json" || is_mesh_file(name) ||
           is_drawing_file(name) || std::filesystem::exists(name, none);
}

}  // namespace

bool is_drawing_file(const std::string& name) {
    return plain(std::filesystem::path(name).extension().string()) == ".dxf";
}

double number_of(const std::string& text, const std::string& option) {
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, fault] = std::from_chars(text.data(), end, value);
    if (fault != std::errc() || stop != end) throw Error(option, in_quotes(text) + " is not a number", "as in 12.5");
    return value;
}

std::size_t count_of(const Inputs& inputs) { return inputs.names.size() + (inputs.shape.empty() ? 0 : 1); }

std::string name_of(const Inputs& inputs, std::size_t number) {
    return number < inputs.names.size() ? inputs.names[number] : "--shape " + inputs.shape;
}

Section section_of(const Inputs& inputs, std::size_t number) {
    Section section;
    if (number == inputs.names.size()) {
        section = shape_given(inputs);
    } else if (is_file(inputs.names[number])) {
        const std::filesystem::path file = inputs.names[number];
        if (is_mesh_file(file)) {
            section = mesh_named(file, inputs.materials);
        } else if (const std::string text = text_of_file(file); is_drawing_file(file) || is_drawing(text)) {
            section = drawing_given(text, inputs);
        } else {
            section = read_section(text);
            read_named_files(section, file.parent_path());
        }
        if (section.name.empty() && file != "-") section.name = file.stem();
    } else {
        section = profile_named(inputs.names[number]);
    }
    take_material(inputs.material, section);
    take_wishes(inputs.wishes, section.wishes);
    for (const std::string& load : inputs.loads) section.loads.push_back(load_of(load, section, "--load"));
    return section;
}

int with_section(const Inputs& inputs, const std::function<void(const Section&)>& work) {
    const std::string input = name_of(inputs, 0);
    try {
        const Section section = section_of(inputs, 0);
        tell(input, section.notes);
        check_section(section);
        work(section);
        return DONE;
    } catch (const Error&) {
        const Failure fault = failure();
        complain(input, fault);
        return fault.status;
    }
}

}  // namespace velquor
