#include "kit/section/shapes.h"

#include <algorithm>

#include "kit/section/words.h"
#include "tool/commands.h"
#include "tool/output.h"

namespace velquor {

namespace {

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, text.size()), ' ');
}

std::string list_of_shapes() {
    std::size_t width = 0;
    for (const Shape& shape : velquor::shapes()) width = std::max(width, std::string(shape.name).size());
    std::string text;
    for (const Shape& shape : velquor::shapes()) {
        const std::string meaning = shape.meaning;
        text += padded(shape.name, width) + "  " + meaning.substr(0, meaning.find("; origin")) + "\n";
    }
    return text;
}

std::string description_of(const Shape& shape) {
    std::string text = std::string(shape.name) + ": " + shape.meaning + "\n\n";
    for (const Parameter& p : shape.parameters) {
        text += "  --" + padded(p.name, 6) + " " + p.meaning;
        if (!p.required && p.standard != 0) text += " (" + text_of(p.standard) + " where it is not given)";
        text += p.required ? "\n" : ", may be left out\n";
    }
    return text;
}

}  // namespace

int shapes(const std::string& name) {
    write(name.empty() ? list_of_shapes() : description_of(shape_of(name, "")));
    return DONE;
}

}  // namespace velquor
