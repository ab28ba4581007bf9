#include "kit/mesh/mesh_file.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "kit/mesh/raw_mesh.h"
#include "kit/mesh/tidy.h"
#include "kit/section/file.h"
#include "kit/section/words.h"

namespace velquor {

namespace {

// A group of the file, and its surfaces.
struct FileGroup {
    std::int32_t number;
    std::string name;  // its number where it has none
    std::set<std::int32_t> surfaces;
};

std::string counted(std::uint64_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

void check_kinds(const RawMesh& raw, const std::string& place, std::vector<std::string>& notes) {
    std::string others;
    for (const auto& [count, what] :
         {std::pair{raw.solids, "solid element"}, {raw.lines, "line"}, {raw.points, "point"}})
        if (count > 0) others += (others.empty() ? "" : ", ") + counted(count, what);
    if (raw.blocks.empty())
        throw Error(place, "has no triangles and no quadrilaterals" + (others.empty() ? "" : ", but " + others),
                    "a mesh of plane elements is wanted");
    if (!others.empty()) notes.push_back(others + " left out: plane elements are the section");
}

// Physical groups where there are any, else the surfaces themselves, as properties are read.
std::vector<FileGroup> groups_of(const RawMesh& raw, const std::string& place) {
    std::map<std::int32_t, FileGroup> groups;
    const bool physical =
        std::any_of(raw.surfaces.begin(), raw.surfaces.end(), [](const auto& s) { return !s.groups.empty(); });
    std::size_t without = 0;
    std::set<std::int32_t> bare;
    for (const RawMesh::Surface& s : raw.surfaces) {
        if (!physical) groups[s.number] = {s.number, std::to_string(s.number), {s.number}};
        for (const auto& [number, name] : s.groups) {
            FileGroup& group = groups[number];
            group.number = number;
            group.name = name.empty() ? std::to_string(number) : printable(name);
            group.surfaces.insert(s.number);
        }
        if (physical && s.groups.empty()) bare.insert(s.number);
    }
    for (const RawMesh::Block& block : raw.blocks)
        if (bare.count(block.surface) > 0) without += block.numbers.size();
    if (without > 0)
        throw Error(place, counted(without, "element") + " in no physical group, others are in one",
                    "give every surface a group");
    std::vector<FileGroup> list;
    for (auto& [number, group] : groups) {
        for (FileGroup& other : list)
            if (other.name == group.name) group.name += " (" + std::to_string(number) + ")";
        list.push_back(std::move(group));
    }
    return list;
}

// The group by which a key of mesh.groups goes: by its name first. Throws Error where there is none.
const FileGroup& group_named(const std::vector<FileGroup>& groups, const std::string& key) {
    for (const FileGroup& group : groups)
        if (group.name == key) return group;
    for (const FileGroup& group : groups)
        if (std::to_string(group.number) == key) return group;
    std::vector<std::string> names;
    for (const FileGroup& group : groups) names.push_back(group.name);
    throw Error("mesh.groups", "the mesh has no group " + in_quotes(key), did_you_mean(key, names));
}

// Of each surface the group that counts. Where it is in several, the one that mesh.groups names; without any wish the
// first, for then all are of one material.
std::map<std::int32_t, std::int32_t> choose(const RawMesh& raw, const std::vector<FileGroup>& groups,
                                            const ReadMesh& wish, const std::string& place) {
    std::set<std::int32_t> wished;
    for (const auto& [key, unused] : wish.groups) wished.insert(group_named(groups, key).number);
    std::map<std::int32_t, std::int32_t> chosen;
    for (const RawMesh::Surface& surface : raw.surfaces) {
        std::vector<const FileGroup*> of, named;
        for (const FileGroup& group : groups)
            if (group.surfaces.count(surface.number) > 0) {
                of.push_back(&group);
                if (wished.count(group.number) > 0) named.push_back(&group);
            }
        if (named.size() > 1)
            throw Error(place,
                        "surface " + std::to_string(surface.number) + " is in the groups " + in_quotes(named[0]->name) +
                            " and " + in_quotes(named[1]->name),
                        "name one of them in mesh.groups, or keep them on surfaces of their own");
        chosen[surface.number] = (named.empty() ? of : named)[0]->number;
    }
    return chosen;
}

Part part_of(const FileGroup& group, const Section& section, const std::string& place) {
    Part part;
    part.name = group.name;
    std::vector<std::string> names;
    for (const Material& m : section.materials) {
        names.push_back(m.name);
        if (m.name == group.name || section.materials.size() == 1) part.material = m.name;
    }
    for (const auto& [key, wish] : section.mesh.groups) {
        if (key != group.name && key != std::to_string(group.number)) continue;
        if (!wish.material.empty()) part.material = wish.material;
        part.group = wish.group;
        part.factor = wish.factor;
        if (key == group.name) break;
    }
    if (part.material.empty())
        throw Error(place + (place.empty() ? "" : ": ") + "group " + in_quotes(group.name), "has no material",
                    "name it in mesh.groups, as in {" + in_quotes(group.name) + ": " + in_quotes(names.front()) + "}");
    return part;
}

double extent_of(const Loose& mesh) {
    Point low{INFINITY, INFINITY}, high{-INFINITY, -INFINITY};
    for (const auto& e : mesh.elements)
        for (const std::int32_t node : e.corners) {
            const Point& p = mesh.nodes[static_cast<std::size_t>(node)];
            low = {std::min(low.y, p.y), std::min(low.z, p.z)};
            high = {std::max(high.y, p.y), std::max(high.z, p.z)};
        }
    return std::max(high.y - low.y, high.z - low.z);
}

}  // namespace

void read_mesh(Section& section, const std::string& path, const std::string& place, double seconds) {
    if (section.materials.empty()) throw Error("materials", "no material is given", "give one at least");
    const RawMesh raw = raw_mesh(path, place, seconds);
    std::vector<std::string> notes;
    if (!raw.warnings.empty()) notes.push_back("Gmsh warns: " + printable(raw.warnings));
    check_kinds(raw, place, notes);
    const std::vector<FileGroup> groups = groups_of(raw, place);
    const auto chosen = choose(raw, groups, section.mesh, place);

    Loose loose = in_plane(raw, section.mesh.plane, place, notes);
    const double distance = section.mesh.join >= 0 ? section.mesh.join : JOIN * extent_of(loose);
    join(loose, distance, section.length, place, notes);
    straighten(loose, place, notes);
    check_fit(loose, distance, place);
    renumber(loose);

    ReadMesh& mesh = section.mesh;
    mesh.file = mesh.file.empty() ? path : mesh.file;
    mesh.nodes = loose.nodes;
    mesh.elements.clear();
    mesh.owners.clear();
    mesh.numbers.clear();
    section.parts.clear();
    std::map<std::int32_t, std::int32_t> owner;  // by the group's number
    for (const FileGroup& group : groups) {
        if (std::none_of(chosen.begin(), chosen.end(), [&](const auto& c) { return c.second == group.number; }))
            continue;
        owner[group.number] = static_cast<std::int32_t>(section.parts.size());
        section.parts.push_back(part_of(group, section, place));
    }
    for (const Loose::Element& e : loose.elements) {
        std::array<std::int32_t, 4> corners{};
        std::transform(e.corners.begin(), e.corners.end(), corners.begin(), [](std::int32_t node) { return node + 1; });
        mesh.elements.push_back(corners);
        mesh.owners.push_back(owner.at(chosen.at(e.surface)));
        mesh.numbers.push_back(e.number);
    }
    section.notes.insert(section.notes.end(), notes.begin(), notes.end());
    check_section(section);
}

}  // namespace velquor
