#include "kit/mesh/scan.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <map>

#include "kit/section/section.h"

namespace velquor {

namespace {

std::string upper(std::string text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

// The third field of a card: of eight columns, of sixteen where the first ends with a star, or between commas.
std::string property_of(const std::string& line) {
    std::string field;
    if (const std::size_t first = line.find(','); first != std::string::npos) {
        const std::size_t second = line.find(',', first + 1);
        if (second != std::string::npos) field = line.substr(second + 1, line.find(',', second + 1) - second - 1);
    } else {
        const bool wide = line.substr(0, 8).find('*') != std::string::npos;
        if (line.size() > (wide ? 24 : 16)) field = line.substr(wide ? 24 : 16, wide ? 16 : 8);
    }
    field.erase(std::remove_if(field.begin(), field.end(), [](char c) { return c == ' ' || c == '\t' || c == '\r'; }),
                field.end());
    return field;
}

bool is_whole(const std::string& type) {
    const auto is = [&](const char* name) { return type == name; };
    return is("INT") || is("UNSIGNED_INT") || is("LONG") || is("UNSIGNED_LONG") || is("SHORT") ||
           is("UNSIGNED_SHORT") || is("CHAR") || is("UNSIGNED_CHAR") || type.rfind("VTKTYPEINT", 0) == 0;
}

// The values of an array of one whole number for each cell; those of another are passed over.
bool take_array(std::istream& file, const std::string& type, std::size_t parts, std::size_t count,
                std::vector<std::int32_t>& values) {
    const bool wanted = is_whole(type) && parts == 1;
    std::string word;
    for (std::size_t k = 0; k < parts * count && file >> word; ++k) {
        std::int32_t value = 0;
        if (!wanted) continue;
        if (std::from_chars(word.data(), word.data() + word.size(), value).ec != std::errc()) return false;
        values.push_back(value);
    }
    return wanted && values.size() == count;
}

// Groups of all cells in their order; none where the file has no such array.
std::vector<std::int32_t> cell_data_of(const std::string& path, std::size_t cells) {
    std::ifstream file(path);
    std::string line, word;
    std::getline(file, line);
    std::getline(file, line);
    std::getline(file, line);
    if (upper(line).rfind("ASCII", 0) != 0) return {};
    std::size_t count = 0;
    while (file >> word && upper(word) != "CELL_DATA") {
    }
    if (!(file >> count) || count != cells) return {};
    std::vector<std::int32_t> values;
    while (values.empty() && file >> word && upper(word) != "POINT_DATA") {
        if (upper(word) == "SCALARS") {
            std::string name, type, rest;
            std::size_t parts = 1;
            file >> name >> type;
            std::getline(file, rest);
            if (rest.find_first_of("23456789") != std::string::npos) parts = std::stoul("0" + rest.substr(1));
            if (!(file >> word >> word)) return {};  // the name of its table of colours
            if (!take_array(file, upper(type), parts, count, values)) values.clear();
        } else if (upper(word) == "FIELD") {
            std::size_t arrays = 0, parts = 0, tuples = 0;
            file >> word >> arrays;
            for (; arrays > 0 && values.empty(); --arrays) {
                std::string type;
                if (!(file >> word >> parts >> tuples >> type) || tuples > cells || parts > 100) return {};
                if (!take_array(file, upper(type), parts, tuples, values) || tuples != cells) values.clear();
            }
        }
    }
    return values;
}

}  // namespace

void check_bulk_data(const std::string& path, const RawMesh& mesh, const std::string& place) {
    std::size_t cards = 0, without = 0, read = 0;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        const std::string begin = upper(line.substr(0, 5));
        if (begin != "CTRIA" && begin != "CQUAD") continue;
        ++cards;
        if (property_of(line).empty()) ++without;
    }
    for (const RawMesh::Block& block : mesh.blocks) read += block.numbers.size();
    if (without > 0)
        throw Error(place, std::to_string(without) + " of " + std::to_string(cards) + " elements have no property",
                    "write the number of a property into the third field of each, as in CTRIA3,1,7,1,2,3");
    if (read < cards)
        throw Error(place,
                    "Gmsh took " + std::to_string(read) + " of the " + std::to_string(cards) +
                        " triangles and quadrilaterals of the file",
                    "CTRIA3, CTRIA6, CQUAD4, CQUAD8 and CQUAD9 are read: write the file anew");
}

void take_cell_data(const std::string& path, RawMesh& mesh) {
    std::size_t cells = mesh.points + mesh.lines + mesh.solids;
    for (const RawMesh::Block& block : mesh.blocks) cells += block.numbers.size();
    const std::vector<std::int32_t> groups = cell_data_of(path, cells);
    if (groups.empty()) return;
    std::map<std::pair<std::int32_t, std::int32_t>, RawMesh::Block> blocks;  // by group and type
    for (const RawMesh::Block& block : mesh.blocks) {
        const std::size_t n = block.numbers.empty() ? 0 : block.nodes.size() / block.numbers.size();
        for (std::size_t e = 0; e < block.numbers.size(); ++e) {
            if (block.numbers[e] < 1 || block.numbers[e] > groups.size()) return;  // not counted as cells are
            const std::int32_t group = groups[block.numbers[e] - 1];
            RawMesh::Block& to = blocks[{group, block.type}];
            to.surface = group;
            to.type = block.type;
            to.name = block.name;
            to.numbers.push_back(block.numbers[e]);
            for (std::size_t k = 0; k < n; ++k) to.nodes.push_back(block.nodes[n * e + k]);
        }
    }
    mesh.blocks.clear();
    mesh.surfaces.clear();
    for (auto& [key, block] : blocks) {
        if (mesh.surfaces.empty() || mesh.surfaces.back().number != key.first) mesh.surfaces.push_back({key.first, {}});
        mesh.blocks.push_back(std::move(block));
    }
}

}  // namespace velquor
