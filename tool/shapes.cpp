#include <algorithm>

#include "kit/section/shapes.h"
#include "kit/section/templates.h"
#include "kit/section/words.h"
#include "tool/commands.h"
#include "tool/output.h"

namespace velquor {

namespace {

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, text.size()), ' ');
}

// Shapes of a part, and templates of a whole section, are described alike.
struct Described {
    const char *name, *meaning;
    const std::vector<Parameter>* parameters;
};
std::vector<Described> all_described() {
    std::vector<Described> all;
    for (const Shape& shape : velquor::shapes()) all.push_back({shape.name, shape.meaning, &shape.parameters});
    for (const Template& t : templates()) all.push_back({t.name, t.meaning, &t.parameters});
    return all;
}

std::string list_of_shapes() {
    std::size_t width = 0;
    for (const Described& shape : all_described()) width = std::max(width, std::string(shape.name).size());
    std::string text;
    for (const Described& shape : all_described()) {
        const std::string meaning = shape.meaning;
        text += padded(shape.name, width) + "  " + meaning.substr(0, meaning.find("; origin")) + "\n";
    }
    return text;
}

std::string description_of(const std::string& name) {
    std::vector<std::string> names;
    for (const Described& shape : all_described()) {
        names.emplace_back(shape.name);
        if (name != shape.name) continue;
        std::string text = name + ": " + shape.meaning + "\n\n";
        if (const char* const sketch = sketch_of(name)) text += std::string(sketch) + "\n";
        std::size_t width = 0;
        for (const Parameter& p : *shape.parameters) width = std::max(width, std::string(p.name).size());
        for (const Parameter& p : *shape.parameters) {
            text += "  --" + padded(p.name, width) + "  " + p.meaning;
            if (!p.required && p.standard != 0) text += "; " + text_of(p.standard) + " where it is not given";
            text += p.required ? "\n" : " (may be left out)\n";
        }
        return text;
    }
    throw Error("", "unknown shape " + in_quotes(name), did_you_mean(name, names));
}

}  // namespace

int shapes(const std::string& name) {
    write(name.empty() ? list_of_shapes() : description_of(name));
    return DONE;
}

}  // namespace velquor
