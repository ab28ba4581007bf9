// The look through the text of a DXF file, group by group: lines in pairs, a code and its value.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "kit/section/dxf.h"
#include "kit/section/file.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

constexpr std::size_t LONGEST_NAME = 255;
constexpr double LARGEST = 1e9;     // coordinate
constexpr int MOST_COPIES = 10000;  // columns or rows of a block

struct Group {
    int code = 0;
    std::string_view value;
    std::size_t line = 0;  // of the value, from 1
};

// All groups from one of code 0 to the next.
struct Record {
    std::string_view kind;
    std::size_t line = 0;
    std::vector<Group> groups;

    const Group* find(int code) const {
        for (const Group& group : groups)
            if (group.code == code) return &group;
        return nullptr;
    }
};

std::string at_line(std::size_t line) { return "line " + std::to_string(line); }

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t\r");
    return begin == std::string_view::npos ? "" : text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

template <class Number>
bool reads(std::string_view text, Number& value) {
    if (!text.empty() && text[0] == '+') text.remove_prefix(1);
    const auto [stop, fault] = std::from_chars(text.data(), text.data() + text.size(), value);
    return fault == std::errc() && stop == text.data() + text.size();
}

double real_of(const Group& group) {
    double value = 0;
    if (!reads(group.value, value) || !std::isfinite(value))
        throw Error(at_line(group.line), in_quotes(group.value) + " is no number",
                    "a group of code " + std::to_string(group.code) + " has one, as in 12.5");
    if (!(std::abs(value) <= LARGEST))
        throw Error(at_line(group.line), "a number of " + text_of(value), "must be between -1e9 and 1e9");
    return value;
}

int whole_of(const Group& group) {
    int value = 0;
    if (!reads(group.value, value))
        throw Error(at_line(group.line), in_quotes(group.value) + " is no whole number",
                    "a group of code " + std::to_string(group.code) + " has one");
    return value;
}

// No decimal point, which some locales read as another thing: 12.5 is 125e-1.
std::string without_point(double value) {
    char text[40];
    std::string digits(text, std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr);
    const std::size_t e = digits.find('e'), point = digits.find('.');
    int exponent = 0;
    reads(std::string_view(digits).substr(e + 1), exponent);
    if (point != std::string::npos) exponent -= static_cast<int>(e - point - 1);
    digits.resize(e);
    digits.erase(std::remove(digits.begin(), digits.end(), '.'), digits.end());
    return digits + "e" + std::to_string(exponent);
}

std::vector<Record> records_of(std::string_view text) {
    std::vector<Record> records;
    std::size_t line = 0;
    const auto next = [&](std::string_view& found) {
        if (text.empty()) return false;
        const std::size_t end = std::min(text.find('\n'), text.size());
        found = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        ++line;
        return true;
    };
    for (std::string_view code, value; next(code);) {
        Group group;
        if (code.empty() && text.find_first_not_of(" \t\r\n") == std::string_view::npos) break;
        if (!reads(code, group.code))
            throw Error(at_line(line), in_quotes(code) + " is no group code",
                        "a DXF file has lines in pairs, a whole number and then a value");
        if (!next(value)) throw Error(at_line(line), "a group code without a value", "was the file cut off?");
        group.value = value;
        group.line = line;
        if (group.code == 0)
            records.push_back({value, line, {}});
        else if (!records.empty())
            records.back().groups.push_back(group);
        else if (group.code != 999)
            throw Error(at_line(line), "a group before the first record", "a DXF file begins with 0, SECTION");
        if (group.code == 0 && value == "EOF") return records;
    }
    if (records.empty()) throw Error("", "nothing is drawn", "it must be a DXF file");
    throw Error(at_line(line), "the file ends without 0, EOF", "was it cut off?");
}

// The kinds that dxflib is given, and the groups that each must have: what is missing would be read as 0.
struct Kind {
    const char* name;
    std::array<int, 6> needs;
};
constexpr Kind KINDS[] = {{"LINE", {10, 20, 11, 21}}, {"ARC", {10, 20, 40, 50, 51}},
                          {"CIRCLE", {10, 20, 40}},   {"ELLIPSE", {10, 20, 11, 21, 40}},
                          {"LWPOLYLINE", {10, 20}},   {"POLYLINE", {}},
                          {"VERTEX", {10, 20}},       {"SEQEND", {}},
                          {"INSERT", {2, 10, 20}}};
constexpr const char* PASSED_OVER[] = {
    "TEXT",     "MTEXT",     "ARCALIGNEDTEXT", "ATTRIB",   "ATTDEF", "DIMENSION", "LEADER", "MLEADER",    "MULTILEADER",
    "POINT",    "HATCH",     "TOLERANCE",      "VIEWPORT", "XLINE",  "RAY",       "IMAGE",  "WIPEOUT",    "UNDERLAY",
    "OLEFRAME", "OLE2FRAME", "ACAD_TABLE",     "LIGHT",    "SUN",    "CAMERA",    "RTEXT",  "PDFUNDERLAY"};

struct Look {
    explicit Look(const std::vector<Record>& all) {
        std::string_view section;
        bool any = false;
        for (const Record& record : all) {
            if (record.kind == "SECTION") {
                const Group* name = record.find(2);
                section = name ? name->value : "";
                any = true;
                if (section == "HEADER") take_header(record);
            } else if (record.kind == "ENDSEC") {
                end_block();
                section = "";
            } else if (section == "TABLES" && record.kind == "LAYER") {
                begin(record);
                take(record, {2, 62, 70});
            } else if (section == "BLOCKS" && record.kind == "BLOCK") {
                end_block();
                begin(record);
                take(record, {2, 10, 20, 70});
                const Group* name = record.find(2);
                if (!name || name->value.empty()) throw Error(at_line(record.line), "a BLOCK without its name");
                block = folded(printable(name->value));
            } else if (section == "BLOCKS" && record.kind == "ENDBLK") {
                end_block();
            } else if (section == "BLOCKS" || section == "ENTITIES") {
                take_entity(record);
            }
        }
        if (!any) throw Error("", "no SECTION is in the file", "it must be a DXF file");
        found.text += "0\nEOF\n";
    }
    Looked found;

    void put(int code, const std::string& value) { found.text += std::to_string(code) + "\n" + value + "\n"; }

    void begin(const Record& record) {
        put(0, std::string(record.kind));
        last = record.kind;
    }

    void end_block() {
        if (!block.empty()) put(0, "ENDBLK");
        block.clear();
    }

    void put(const Group& group) {
        const int code = group.code;
        if (code < 10) {
            if (group.value.size() > LONGEST_NAME)
                throw Error(at_line(group.line), "a name of " + std::to_string(group.value.size()) + " letters",
                            "at most " + std::to_string(LONGEST_NAME) + " are read");
            put(code, printable(group.value));
        } else if (code >= 60 && code < 100) {
            put(code, std::to_string(whole_of(group)));
        } else {
            put(code, without_point(real_of(group)));
        }
    }

    void take(const Record& record, std::initializer_list<int> codes) {
        for (const Group& group : record.groups)
            if (std::find(codes.begin(), codes.end(), group.code) != codes.end()) put(group);
    }

    void take_header(const Record& record) {
        for (std::size_t i = 0; i + 1 < record.groups.size(); ++i)
            if (record.groups[i].code == 9 && record.groups[i].value == "$INSUNITS") {
                put(9, "$INSUNITS");
                put(70, std::to_string(whole_of(record.groups[i + 1])));
            }
    }

    void take_entity(const Record& record) {
        const auto is = [&](int code) {
            const Group* group = record.find(code);
            return group && whole_of(*group) != 0;
        };
        const bool hidden = is(67) || is(60);
        const auto* const kind =
            std::find_if(std::begin(KINDS), std::end(KINDS), [&](const Kind& k) { return k.name == record.kind; });
        const bool vertex = record.kind == "VERTEX" || record.kind == "SEQEND";
        if (kind == std::end(KINDS)) {
            add_other(record, hidden);
            last = record.kind;
            return;
        }
        if (vertex && in_hidden) return;  // of a polyline that is hidden
        in_hidden = hidden;
        if (hidden) {
            ++found.hidden;
            return;
        }
        if (record.kind == "VERTEX" && last != "POLYLINE" && last != "VERTEX")
            throw Error(at_line(record.line), "a VERTEX without its POLYLINE");
        if (const Group* flags = record.find(70); flags && record.kind == "VERTEX" && (whole_of(*flags) & 16) != 0)
            return;  // a point of the frame about a fitted line, not of the line
        for (const int code : kind->needs)
            if (code != 0 && !record.find(code))
                throw Error(at_line(record.line),
                            std::string(record.kind) + " without its group " + std::to_string(code));
        if (record.kind == "INSERT")
            for (const int code : {70, 71})
                if (const Group* copies = record.find(code); copies && std::abs(whole_of(*copies)) > MOST_COPIES)
                    throw Error(at_line(copies->line), std::string(copies->value) + " copies of a block",
                                "at most " + std::to_string(MOST_COPIES) + " are read");
        begin(record);
        if (record.kind == "LWPOLYLINE") {
            take(record, {8, 38, 70, 210, 220, 230});
            take_vertices(record);
        } else {
            take(record, {2, 8, 10, 20, 30, 11, 21, 31, 40, 41, 42, 43, 44, 45, 50, 51, 70, 71, 210, 220, 230});
        }
    }

    // Their number as it is, and each vertex from its first coordinate on.
    void take_vertices(const Record& record) {
        const auto& groups = record.groups;
        const auto is_first = [](const Group& g) { return g.code == 10; };
        put(90, std::to_string(std::count_if(groups.begin(), groups.end(), is_first)));
        for (auto at = std::find_if(groups.begin(), groups.end(), is_first); at != groups.end();) {
            const auto end = std::find_if(at + 1, groups.end(), is_first);
            const auto second = std::find_if(at, end, [](const Group& g) { return g.code == 20; });
            if (second == end) throw Error(at_line(at->line), "a vertex without its group 20");
            put(*at);
            put(*second);
            for (; at != end; ++at)
                if (at->code == 42) put(*at);
        }
    }

    void add_other(const Record& record, bool hidden) {
        Other other;
        other.block = block;
        other.kind = printable(record.kind.substr(0, LONGEST_NAME));
        if (const Group* layer = record.find(8)) other.layer = printable(layer->value.substr(0, LONGEST_NAME));
        if (other.layer.empty()) other.layer = "0";
        for (const auto& [code, coordinate] : {std::pair{10, &other.at.y}, std::pair{20, &other.at.z}})
            if (const Group* group = record.find(code))
                if (!reads(group->value, *coordinate)) *coordinate = 0;
        other.passed_over =
            std::find(std::begin(PASSED_OVER), std::end(PASSED_OVER), record.kind) != std::end(PASSED_OVER);
        other.hidden = hidden;
        found.others.push_back(std::move(other));
    }

    std::string block;
    std::string_view last;
    bool in_hidden = false;
};

}  // namespace

Looked looked_through(std::string_view dxf) {
    if (dxf.size() > LARGEST_TEXT)
        throw Error("", "the file has more than " + std::to_string(LARGEST_TEXT) + " bytes",
                    "leave out of the drawing what is no section");
    if (dxf.substr(0, 3) == "\xef\xbb\xbf") dxf.remove_prefix(3);
    const std::string_view first = trimmed(dxf.substr(0, std::min(dxf.find('\n'), dxf.size())));
    if (first.substr(0, 4) == "AC10") throw Error("", "a DWG file", "save it as DXF, in ASCII");
    if (dxf.find('\0') != std::string_view::npos)
        throw Error("", "not a text", "save it as DXF in ASCII, not as a binary");
    return Look(records_of(dxf)).found;
}

}  // namespace velquor
