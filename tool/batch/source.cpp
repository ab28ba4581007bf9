#include "tool/batch/source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>

#include "kit/requests/answer.h"
#include "kit/section/parse.h"
#include "kit/section/section.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

// Whether more lines may belong to the object that begins with this one.
bool is_begun(const std::string& line) {
    if (line.find_first_not_of(" \t\r") == std::string::npos || line[line.find_first_not_of(" \t\r")] != '{')
        return false;
    try {
        parse_text(line);
        return false;
    } catch (const Error& error) {
        return error.fault.find("unexpected end of input") != std::string::npos;
    }
}

bool begins_an_object(const std::string& line) {
    const std::size_t at = line.find_first_not_of(" \t\r");
    return at != std::string::npos && line[at] == '{';
}

// Whether the line ends inside of a list or an object.
bool goes_on(const std::string& line) {
    const std::size_t at = line.find_last_not_of(" \t\r");
    return at != std::string::npos && std::strchr(",[{", line[at]);
}

// A section file is a request of its section.
json request_of(json value) {
    if (!value.contains("materials") || value.contains("section")) return value;
    json request = json::object();
    for (const char* key : {"id", "sweep"})
        if (value.contains(key)) {
            request[key] = std::move(value[key]);
            value.erase(key);
        }
    request["section"] = std::move(value);
    return request;
}

std::string name_of(const json& request) {
    const json& owner = request.contains("section") && request["section"].is_object() ? request["section"] : request;
    return owner.contains("name") && owner["name"].is_string() ? owner["name"].get<std::string>() : "";
}

bool is_id(const json& id) { return id.is_number() || id.is_string(); }

std::string text_of_id(const json& id) { return id.is_string() ? id.get<std::string>() : id.dump(); }

}  // namespace

Source::Source(const std::string& file) {
    const bool standard = file == "-";
    const int descriptor = standard ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) throw Error("", std::string("cannot be read: ") + std::strerror(errno));
    lines = std::make_unique<InputLines>(descriptor);
    struct stat status = {};
    if (fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode))
        throw Error("", std::string("cannot be read: ") + std::strerror(EISDIR));
    if (S_ISREG(status.st_mode)) size = static_cast<std::uint64_t>(status.st_size);
    folder.path = standard ? "." : std::filesystem::path(file).parent_path().string();
    if (folder.path.empty()) folder.path = ".";

    // One object over several lines, or a line for each.
    InputLine first, second;
    if (lines->next(first, true) == Next::END) return;
    if (!is_begun(first.text) || lines->next(second, true) == Next::END) {
        begun = {first};
    } else if (begins_an_object(second.text) && !goes_on(second.text)) {
        begun = {second, first};
    } else {
        InputLine all = first;
        InputLine more = second;
        do {
            if (more.of_too_long || all.text.size() + more.text.size() >= LONGEST_REQUEST)
                throw Error("", "one object of more than " + std::to_string(LONGEST_REQUEST) + " bytes",
                            "write a request into each line");
            all.text +=
                std::string(more.number - std::count(all.text.begin(), all.text.end(), '\n') - first.number, '\n');
            all.text += more.text;
        } while (lines->next(more, true) != Next::END);
        is_whole = true;
        begun = {};
        const json request = request_of(parse_text(all.text));
        if (request.contains("sweep")) take_sweep(request, ordered_json::parse(all.text)["sweep"]);
        item.line = first.number;
        if (!sweep) {
            all.text.erase(std::remove(all.text.begin(), all.text.end(), '\n'), all.text.end());
            take(all);
        }
        has_item = true;
    }
    // A sweep that is all of the input is refused before anything is calculated.
    if (begun.size() == 1 && lines->read() == size && size > 0 && !first.of_too_long) {
        const InputLine only = begun.front();
        json value;
        try {
            value = parse_text(only.text);
        } catch (const Error&) {
            return;
        }
        if (!value.is_object() || !value.contains("sweep")) return;
        is_whole = true;
        begun = {};
        take_sweep(request_of(std::move(value)), ordered_json::parse(only.text)["sweep"]);
        item.line = only.number;
        has_item = true;
    }
}

void Source::take_sweep(json request, const ordered_json& axes) {
    request.erase("sweep");
    id = request.contains("id") ? request["id"] : json();
    if (!id.is_null() && !is_id(id)) throw Error("id", "is neither a number nor a text");
    sweep = std::make_unique<Sweep>(sweep_of(std::move(request), axes));
    if (!sweep->request.contains("section") && !sweep->request.contains("shape") && !sweep->request.contains("name") &&
        std::none_of(sweep->axes.begin(), sweep->axes.end(), [](const auto& axis) { return axis.name == "name"; }))
        throw Error("section", "is missing", "give a section, a shape, or the name of a rolled profile");
}

// What the line asks for. What is no request is left to a worker to refuse, so that there is one way to do so.
void Source::take(const InputLine& line) {
    item = {};
    item.line = line.number;
    if (line.of_too_long) {
        item.key = *line.of_too_long;
        item.answer = error_answer("", ErrorKind::REQUEST, "",
                                   "a line of more than " + std::to_string(LONGEST_REQUEST) + " bytes",
                                   "a section has no need of so much");
        return;
    }
    item.request = line.text;
    json value;
    try {
        value = parse_text(line.text);
    } catch (const Error&) {
        item.key = key_of(line.text);
        return;
    }
    if (!value.is_object()) {
        item.key = key_of(line.text);
        return;
    }
    const bool is_bare = value.contains("materials") && !value.contains("section");
    json request = request_of(std::move(value));
    if (request.contains("sweep")) {
        try {
            take_sweep(request, ordered_json::parse(line.text)["sweep"]);
        } catch (const Error& error) {
            item.key = key_of(line.text);
            if (request.contains("id") && is_id(request["id"])) item.id = request["id"];
            item.answer = error_answer("", ErrorKind::REQUEST, error.place, error.fault, error.remedy);
        }
        return;
    }
    item.name = name_of(request);
    if (request.contains("id") && is_id(request["id"])) item.id = request["id"];
    item.key = key_of(request, folder);
    if (is_bare) item.request = request.dump();
}

Item Source::step() {
    if (!sweep) {
        has_item = false;
        return std::move(item);
    }
    Item one;
    one.line = item.line;
    one.ordinal = item.ordinal++;
    one.is_last = item.ordinal == sweep->count;
    one.parameters = set_section(*sweep, one.ordinal);
    const std::string values = told(one.parameters, " ", "=");
    one.id = id.is_null() ? values : text_of_id(id) + " " + values;
    one.name = sweep->request.contains("shape") ? values : name_of(sweep->request);
    one.key = key_of(sweep->request, folder);
    sweep->request.erase("id");
    one.request = sweep->request.dump();
    if (one.is_last) {
        sweep.reset();
        has_item = false;
    }
    return one;
}

Next Source::next(Item& one) {
    if (!has_item) {
        InputLine line;
        if (!begun.empty()) {
            line = std::move(begun.back());
            begun.pop_back();
        } else {
            before = lines->read();
            if (const Next next = lines->next(line); next != Next::HERE) return next;
        }
        take(line);
        has_item = true;
    }
    one = step();
    return Next::HERE;
}

std::uint64_t Source::count() const { return is_whole && sweep ? sweep->count : 0; }

double Source::share() const {
    if (size == 0 || lines->read() > size) return std::nan("");  // of a file that grows, nobody knows how far
    const auto all = static_cast<double>(size), start = static_cast<double>(is_whole ? 0 : before);
    const auto end = static_cast<double>(lines->read());
    const double part = !has_item ? 1
                        : !sweep  ? 0
                                  : static_cast<double>(item.ordinal) / static_cast<double>(sweep->count);
    return (start + (end - start) * part) / all;
}

}  // namespace velquor
