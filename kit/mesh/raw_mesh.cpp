#include "kit/mesh/raw_mesh.h"

#include <gmsh.h>
#include <stdlib.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "kit/mesh/apart.h"
#include "kit/mesh/gmsh_session.h"
#include "kit/mesh/mesh_file.h"
#include "kit/mesh/scan.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

namespace fs = std::filesystem;

// Kinds of files, with what each begins with, if anything: Gmsh takes a .msh that begins otherwise for a script.
struct Kind {
    const char *ending, *begin, *other;
};
constexpr Kind KINDS[] = {{".msh", "$MeshFormat", "$NOD"}, {".bdf", "", ""},  {".nas", "", ""}, {".unv", "", ""},
                          {".vtk", "# vtk DataFile", ""},  {".mesh", "", ""}, {".stl", "", ""}};
constexpr const char* NO_REASON = "no reason is told";
constexpr std::size_t MOST_WARNINGS = 200;  // letters, after which no more are taken
constexpr const char* ALL_KINDS = ".msh, .bdf, .nas, .unv, .vtk, .mesh and .stl are read";

// Known as meshes, so that they are not taken for something else.
constexpr const char* OTHERS[] = {".cgns", ".inp", ".med", ".meshb", ".off", ".ply", ".su2", ".vtu", ".xdmf"};

std::string ending_of(const std::string& path) {
    std::string ending = fs::path(path).extension().string();
    for (char& c : ending) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ending;
}

const Kind* kind_of(const std::string& path) {
    const std::string ending = ending_of(path);
    for (const Kind& kind : KINDS)
        if (ending == kind.ending) return &kind;
    return nullptr;
}

// Plain values and lists of them, one after the other.
template <class T>
void put(std::string& text, const T& value) {
    text.append(reinterpret_cast<const char*>(&value), sizeof value);
}
template <class List>
void put_list(std::string& text, const List& list) {
    put(text, std::uint64_t{list.size()});
    if (!list.empty()) text.append(reinterpret_cast<const char*>(list.data()), list.size() * sizeof list[0]);
}

struct Taken {
    const std::string& text;
    std::size_t at = 0;

    const char* next(std::uint64_t size) {
        if (size > text.size() - at) throw std::out_of_range("an answer that ends too soon");
        at += size;
        return text.data() + at - size;
    }
    template <class T>
    T one() {
        T value;
        std::memcpy(&value, next(sizeof value), sizeof value);
        return value;
    }
    template <class List>
    List list() {
        const auto count = one<std::uint64_t>();
        constexpr std::size_t size = sizeof(typename List::value_type);
        if (count > text.size() / size) throw std::out_of_range("an answer that ends too soon");
        List values(count, typename List::value_type{});
        const char* const from = next(count * size);
        if (count > 0) std::memcpy(values.data(), from, count * size);
        return values;
    }
    std::uint64_t count() { return one<std::uint64_t>(); }
};

std::string text_of_mesh(const RawMesh& mesh) {
    std::string text;
    put_list(text, mesh.numbers);
    put_list(text, mesh.places);
    put(text, std::uint64_t{mesh.blocks.size()});
    for (const RawMesh::Block& block : mesh.blocks) {
        put(text, block.surface);
        put(text, block.type);
        put_list(text, block.name);
        put_list(text, block.numbers);
        put_list(text, block.nodes);
    }
    put(text, std::uint64_t{mesh.surfaces.size()});
    for (const RawMesh::Surface& surface : mesh.surfaces) {
        put(text, surface.number);
        put(text, std::uint64_t{surface.groups.size()});
        for (const auto& [number, name] : surface.groups) {
            put(text, number);
            put_list(text, name);
        }
    }
    for (const std::uint64_t count : {mesh.points, mesh.lines, mesh.solids}) put(text, count);
    put_list(text, mesh.complaint);
    put_list(text, mesh.warnings);
    return text;
}

RawMesh mesh_of_text(const std::string& text) {
    Taken from{text};
    RawMesh mesh;
    mesh.numbers = from.list<std::vector<std::uint64_t>>();
    mesh.places = from.list<std::vector<double>>();
    for (auto k = from.count(); k > 0; --k) {
        RawMesh::Block block;
        block.surface = from.one<std::int32_t>();
        block.type = from.one<std::int32_t>();
        block.name = from.list<std::string>();
        block.numbers = from.list<std::vector<std::uint64_t>>();
        block.nodes = from.list<std::vector<std::uint64_t>>();
        mesh.blocks.push_back(std::move(block));
    }
    for (auto k = from.count(); k > 0; --k) {
        RawMesh::Surface surface;
        surface.number = from.one<std::int32_t>();
        for (auto g = from.count(); g > 0; --g) {
            const auto number = from.one<std::int32_t>();
            surface.groups.emplace_back(number, from.list<std::string>());
        }
        mesh.surfaces.push_back(std::move(surface));
    }
    for (std::uint64_t* const count : {&mesh.points, &mesh.lines, &mesh.solids}) *count = from.count();
    mesh.complaint = from.list<std::string>();
    mesh.warnings = from.list<std::string>();
    return mesh;
}

void collect(RawMesh& mesh) {
    std::vector<std::size_t> numbers;
    std::vector<double> none;
    gmsh::model::mesh::getNodes(numbers, mesh.places, none);
    mesh.numbers.assign(numbers.begin(), numbers.end());
    gmsh::vectorpair entities;
    gmsh::model::getEntities(entities);
    for (const auto& [dimension, entity] : entities) {
        std::vector<int> types;
        std::vector<std::vector<std::size_t>> elements, nodes;
        gmsh::model::mesh::getElements(types, elements, nodes, dimension, entity);
        if (dimension == 2 && !types.empty()) {
            RawMesh::Surface surface{entity, {}};
            std::vector<int> groups;
            gmsh::model::getPhysicalGroupsForEntity(2, entity, groups);
            for (const int group : groups) {
                std::string name;
                gmsh::model::getPhysicalName(2, group, name);
                surface.groups.emplace_back(group, name);
            }
            mesh.surfaces.push_back(surface);
        }
        for (std::size_t k = 0; k < types.size(); ++k) {
            std::uint64_t* const counts[] = {&mesh.points, &mesh.lines, nullptr, &mesh.solids};
            if (dimension != 2) {
                *counts[dimension] += elements[k].size();
                continue;
            }
            RawMesh::Block block{entity, types[k], "", {}, {}};
            int of, order, count, first;
            gmsh::model::mesh::getElementProperties(types[k], block.name, of, order, count, none, first);
            block.numbers.assign(elements[k].begin(), elements[k].end());
            block.nodes.assign(nodes[k].begin(), nodes[k].end());
            mesh.blocks.push_back(std::move(block));
        }
    }
}

// In the copy. What Gmsh throws is told in its log too, or is nothing that it could say.
std::string read_here(const std::string& path) {
    RawMesh mesh;
    std::vector<std::string> log;
    gmsh::option::setNumber("General.Verbosity", 2);
    gmsh::logger::start();
    try {
        gmsh::merge(path);
        collect(mesh);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        mesh.complaint = NO_REASON;
    }
    gmsh::logger::get(log);
    for (const std::string& line : log) {
        const bool error = line.rfind("Error: ", 0) == 0, warning = line.rfind("Warning: ", 0) == 0;
        if (error && (mesh.complaint.empty() || mesh.complaint == NO_REASON)) mesh.complaint = line.substr(7);
        if (warning && mesh.warnings.size() < MOST_WARNINGS)
            mesh.warnings += (mesh.warnings.empty() ? "" : "; ") + line.substr(9);
    }
    return text_of_mesh(mesh);
}

// A folder with the file under a name that is known, and nothing beside it.
struct Link {
    fs::path folder, file;
    Link(const std::string& path, const char* ending) {
        std::string name = (fs::temp_directory_path() / "velquor-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
            throw fs::filesystem_error("a folder for temporary files", name,
                                       std::error_code(errno, std::generic_category()));
        folder = name;
        file = folder / ("mesh" + std::string(ending));
        fs::create_symlink(fs::absolute(path), file);
    }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;
    ~Link() {
        std::error_code none;
        fs::remove(file, none);
        fs::remove(folder, none);
    }
};

// Throws Error where the file is none that Gmsh may see.
void check_file(const std::string& path, const Kind& kind, const std::string& place) {
    std::error_code fault;
    const fs::file_status status = fs::status(path, fault);
    if (!fs::exists(status)) throw Error(place, "cannot be read: " + std::string(std::strerror(ENOENT)));
    if (!fs::is_regular_file(status)) throw Error(place, "cannot be read: it is no file");
    const std::uint64_t size = fs::file_size(path, fault);
    if (size > LARGEST_MESH_FILE)
        throw Error(place, "the file has " + std::to_string(size >> 20) + " MB",
                    "at most " + std::to_string(LARGEST_MESH_FILE >> 20) + " are read");
    std::string begin(24, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(begin.data(), static_cast<std::streamsize>(begin.size()));
    if (!file && file.gcount() == 0) {
        if (size > 0) throw Error(place, "cannot be read: " + std::string(std::strerror(errno)));
        throw Error(place, "the file is empty");
    }
    if (begin.rfind("# vtk DataFile Version 5", 0) == 0)
        throw Error(place, "is of version 5 of its form, which Gmsh does not read",
                    "write it in version 4.2 or before, or as .msh");
    const auto begins = [&](const char* with) { return begin.rfind(with, 0) == 0; };
    if (!begins(kind.begin) && (*kind.other == '\0' || !begins(kind.other)))
        throw Error(place, "is no mesh: a file of this kind begins with " + in_quotes(kind.begin));
}

}  // namespace

bool is_mesh_file(const std::string& name) {
    const std::string ending = ending_of(name);
    return kind_of(name) != nullptr || std::find(std::begin(OTHERS), std::end(OTHERS), ending) != std::end(OTHERS);
}

RawMesh raw_mesh(const std::string& path, const std::string& place, double seconds) {
    Limits limits;
    limits.seconds = seconds;
    const Kind* const kind = kind_of(path);
    if (kind == nullptr) throw Error(place, "is of a kind that is not read", ALL_KINDS);
    check_file(path, *kind, place);
    try {
        const Link link(path, kind->ending);
        const MeshSession session;
        RawMesh mesh = mesh_of_text(done_apart(read_here, link.file.string(), limits));
        if (!mesh.complaint.empty()) {
            std::string told = printable(mesh.complaint);  // of the link
            if (const auto at = told.find(link.file.string()); at != std::string::npos)
                told.replace(at, link.file.string().size(), fs::path(path).filename().string());
            throw Error(place, "Gmsh cannot read it: " + told);
        }
        if (kind->ending == std::string(".vtk")) take_cell_data(path, mesh);
        if (kind->ending == std::string(".bdf") || kind->ending == std::string(".nas"))
            check_bulk_data(path, mesh, place);
        return mesh;
    } catch (const Ended& ended) {
        throw Error(place, "the reader of meshes " + ended.how,
                    "the file is damaged, or unlike what Gmsh expects of this kind: write it anew, or as another kind");
    } catch (const std::system_error& error) {
        throw Error(place, std::string("cannot be read: ") + error.what());
    } catch (const std::out_of_range& error) {
        throw Error(place, std::string("the reader of meshes gave ") + error.what());
    }
}

}  // namespace velquor
