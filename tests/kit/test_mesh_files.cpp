// Meshes of other programs: read in every kind, tidied, and refused with the place in the file.
#include <gmsh.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "kit/analysis/analysis.h"
#include "kit/analysis/check.h"
#include "kit/mesh/apart.h"
#include "kit/mesh/gmsh_session.h"
#include "kit/mesh/mesh_file.h"
#include "kit/section/file.h"
#include "kit/section/templates.h"
#include "kit/section/vectors.h"
#include "kit/show/show.h"

namespace velquor {
namespace {

namespace fs = std::filesystem;

struct Folder {
    fs::path path = fs::temp_directory_path() / ("velquor-test-" + std::to_string(getpid()));
    Folder() { fs::create_directories(path); }
    ~Folder() { fs::remove_all(path); }
    std::string file(const std::string& name, const std::string& text) const {
        std::ofstream(path / name, std::ios::binary) << text;
        return (path / name).string();
    }
};

Section two_materials(const std::string& mesh = "") {
    return read_materials(R"({"materials": [{"name": "steel", "E": 210000}, {"name": "timber", "E": 11000, "nu": 0.2}],
                              "mesh": {)" +
                          mesh + "}}");
}
Section one_material(const std::string& mesh = "", const std::string& more = "") {
    return read_materials(R"({"materials": [{"name": "steel", "E": 210000}], "mesh": {)" + mesh + "}" + more + "}");
}

// MSH 2.2 of nodes "x y z" numbered from 1, and elements "type physical elementary nodes" numbered from 11.
std::string msh(const std::vector<std::string>& nodes, const std::vector<std::string>& elements) {
    std::string text = "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n" + std::to_string(nodes.size()) + "\n";
    for (std::size_t i = 0; i < nodes.size(); ++i) text += std::to_string(i + 1) + " " + nodes[i] + "\n";
    text += "$EndNodes\n$Elements\n" + std::to_string(elements.size()) + "\n";
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const std::size_t blank = elements[i].find(' ');
        text += std::to_string(i + 11) + " " + elements[i].substr(0, blank) + " 2" + elements[i].substr(blank) + "\n";
    }
    return text + "$EndElements\n";
}

// A plate of 30 by 20, its lower half of quadrilaterals and property 7, its upper one of triangles and property 9.
const std::vector<std::string> PLATE = {"0 0 0", "30 0 0", "30 10 0", "0 10 0", "30 20 0", "0 20 0"};
const std::vector<std::string> ON_PLATE = {"3 7 7 1 2 3 4", "2 9 9 4 3 5", "2 9 9 4 5 6"};
const double PLATE_IY = 30 * 20 * 20 * 20 / 12.0;

std::vector<std::string> with(std::vector<std::string> list, std::size_t at, const std::string& line) {
    if (at == list.size()) list.emplace_back();
    list.at(at) = line;
    return list;
}

// The values that a mesh gives without levels, but those that are rounding beside their kind.
void expect_same(const Analysis& a, const Analysis& b, double tolerance, const std::string& what) {
    for (const int k : {VQ_ANET, VQ_YC, VQ_ZC, VQ_IYY, VQ_IZZ, VQ_EA, VQ_GJ, VQ_SCY, VQ_SCZ, VQ_IW, VQ_GAY, VQ_GAZ})
        EXPECT_NEAR(a.value[k], b.value[k], tolerance * std::max(std::abs(b.value[k]), 1e-3)) << what << ", slot " << k;
}

std::string refusal(Section section, const std::string& path) {
    try {
        read_mesh(section, path, fs::path(path).filename());
        for (const Finding& f : check(section))
            if (f.is_error) return Error(f.place, f.message, f.remedy).what();
    } catch (const Error& error) {
        return error.what();
    }
    return "";
}

// Two rectangles that touch, triangles and quadrilaterals, with physical groups, to be written as a test likes.
void make_two_rectangles(int order) {
    const int low = gmsh::model::occ::addRectangle(0, 0, 0, 30, 10),
              high = gmsh::model::occ::addRectangle(0, 10, 0, 30, 5);
    gmsh::vectorpair pieces;
    std::vector<gmsh::vectorpair> map;
    gmsh::model::occ::fragment({{2, low}}, {{2, high}}, pieces, map);
    gmsh::model::occ::synchronize();
    for (const auto& [piece, name, number] : {std::tuple{pieces[0].second, "low", 7}, {pieces[1].second, "high", 9}}) {
        gmsh::model::addPhysicalGroup(2, {piece}, number);
        gmsh::model::setPhysicalName(2, number, name);
    }
    gmsh::option::setNumber("Mesh.MeshSizeMax", 4);
    gmsh::model::mesh::setTransfiniteSurface(pieces[0].second);  // the other way to quadrilaterals leaks in Gmsh
    gmsh::model::mesh::setRecombine(2, pieces[0].second);
    gmsh::model::mesh::generate(2);
    gmsh::model::mesh::setOrder(order);
}

}  // namespace

// By groups of two materials where the kind has groups. Nastran's short fields have seven digits.
TEST(MeshFiles, EveryKindThatGmshWritesGivesTheSameValues) {
    const Folder folder;
    struct Format {
        const char* file;
        double version, binary;
        const char* groups;
        double tolerance;
    };
    const Format kinds[] = {{"a.msh", 4.1, 0, R"("low": "steel", "high": "timber")", 1e-12},
                            {"b.msh", 4.1, 1, R"("7": "steel", "9": "timber")", 1e-12},
                            {"c.msh", 2.2, 0, R"("low": "steel", "9": "timber")", 1e-12},
                            {"d.msh", 2.2, 1, R"("low": "steel", "high": "timber")", 1e-12},
                            {"e.MSH", 1, 0, R"("7": "steel", "9": "timber")", 1e-12},
                            {"f.bdf", 1, 0, R"("1": "steel", "2": {"material": "timber"})", 1e-5},
                            {"g.NAS", 1, 0, R"("1": "steel", "2": "timber")", 1e-5},
                            {"h.unv", 1, 0, R"("low": "steel", "high": "timber")", 1e-12},
                            {"i.Vtk", 1, 0, R"("7": "steel", "9": "timber")", 1e-12},
                            {"j.mesh", 1, 0, R"("1": "steel", "2": "timber")", 1e-12}};
    for (const int order : {1, 2}) {
        {
            const MeshSession session;
            make_two_rectangles(order);
            for (const Format& kind : kinds) {
                gmsh::option::setNumber("Mesh.MshFileVersion", kind.version);
                gmsh::option::setNumber("Mesh.Binary", kind.binary);
                std::string ending = fs::path(kind.file).extension();
                for (char& c : ending) c = static_cast<char>(std::tolower(c));
                gmsh::write((folder.path / ("x" + ending)).string());
                fs::rename(folder.path / ("x" + ending), folder.path / kind.file);
            }
            gmsh::option::setNumber("Mesh.MshFileVersion", 4.1);
            gmsh::option::setNumber("Mesh.Binary", 0);
        }
        std::optional<Analysis> first;
        for (const Format& kind : kinds) {
            const std::string ending = fs::path(kind.file).extension();
            if (order == 2 && (ending == ".unv" || ending == ".mesh")) continue;  // written as of first order
            Section s = two_materials("\"groups\": {" + std::string(kind.groups) + "}");
            read_mesh(s, (folder.path / kind.file).string());
            EXPECT_EQ(s.notes.size(), order == 1 ? 0u : 2u) << kind.file;
            const Analysis a = analyse(s, mesh_of(s), 1);
            if (!first) first = a;
            expect_same(a, *first, kind.tolerance, std::string(kind.file) + " of order " + std::to_string(order));
            EXPECT_NEAR(a.value[VQ_EA], 210000 * 300 + 11000 * 150, 1e-4 * a.value[VQ_EA]) << kind.file;
        }
    }
}

// With walls, triangles, and bars of another material; but the arcs, whose sides are straight in a file.
TEST(MeshFiles, WhatTheKitWritesIsReadAsItWas) {
    const Folder folder;
    Section beam = section_of_shape("rc_rectangle", {{"b", 300}, {"h", 500}, {"d_bottom", 20}, {"n_bottom", 3}});
    for (const Section& drawn : {section_of_profile("IPE 300"), beam}) {
        Mesh mesh = mesh_of(drawn);
        mesh.bows.clear();
        const std::string path = folder.file("saved.msh", show_mesh(drawn, mesh));
        Section read = drawn;
        read.parts.clear();
        read.bars.clear();
        if (drawn.materials.size() > 1) read.mesh.groups = {{"concrete", {"C30/37", 1, 1}}, {"bars", {"B500", 1, 1}}};
        read_mesh(read, path);
        EXPECT_TRUE(read.notes.empty());
        EXPECT_EQ(read.mesh.nodes.size(), mesh.nodes.size());
        EXPECT_EQ(mesh_of(read).has_corners, true);
        expect_same(analyse(read, mesh_of(read), 2), analyse(drawn, mesh, 2), 1e-10, drawn.name);
    }
}

TEST(MeshFiles, UntidyMeshesAreTidiedAndTold) {
    const Folder folder;
    const auto turned_over = [](std::vector<std::string> nodes, const char* order) {
        for (std::string& node : nodes) {
            std::istringstream words(node);
            std::string in[3], out;
            words >> in[0] >> in[1] >> in[2];
            for (const char* c = order; *c; ++c) out += (*c == '-' ? "12.5" : in[*c - 'x']) + " ";
            node = out;
        }
        return nodes;
    };
    struct Case {
        const char* mesh;
        std::vector<std::string> nodes, elements;
        const char* note;
        bool lying = false;  // by its side: Iy and Iz change their places
    };
    const Case cases[] = {
        {"", PLATE, ON_PLATE, ""},
        {"", PLATE, with(ON_PLATE, 0, "3 7 7 1 4 3 2"), "1 clockwise element turned"},
        {"", PLATE, {"3 7 7 1 4 3 2", "2 9 9 4 5 3", "2 9 9 4 5 6"}, "2 clockwise elements turned"},
        {"", with(PLATE, 6, "30 10.00001 0"), with(ON_PLATE, 1, "2 9 9 4 7 5"),
         "1 doubled node joined within 3e-05 mm"},
        {R"("join": 0.01)", with(PLATE, 6, "30 10.003 0"), with(ON_PLATE, 1, "2 9 9 4 7 5"),
         "1 doubled node joined within 0.01 mm"},
        {"", turned_over(PLATE, "-xy"), ON_PLATE,
         "lies in the plane at x = 12.5: its y and z are y and z of the section"},
        {"", turned_over(PLATE, "x-y"), ON_PLATE,
         "lies in the plane at y = 12.5: its x and z are y and z of the section"},
        {R"("plane": "zx")", turned_over(PLATE, "x-y"), with(ON_PLATE, 0, "3 7 7 1 2 3 4"),
         "lies in the plane at y = 12.5: its z and x are y and z of the section|3 clockwise elements turned", true},
        {"",
         PLATE,
         {"15 1 1 1", "1 1 1 1 2", "3 7 7 1 2 3 4", "2 9 9 4 3 5", "2 9 9 4 5 6"},
         "1 line, 1 point left out: plane elements are the section"},
        {"",
         with(PLATE, 6, "20 8 0"),
         {"3 7 7 1 2 7 4", "2 7 7 2 3 7", "2 7 7 3 4 7", "2 9 9 4 3 5", "2 9 9 4 5 6"},
         ""},
        {"",
         with(PLATE, 6, "3 2 0"),
         {"3 7 7 2 7 4 1", "3 7 7 2 3 4 7", "2 9 9 4 3 5", "2 9 9 4 5 6"},
         "1 quadrilateral with a corner that is re-entrant, straight or sharp split into triangles"},
    };
    for (const Case& c : cases) {
        Section s = one_material(c.mesh);
        ASSERT_NO_THROW(read_mesh(s, folder.file("untidy.msh", msh(c.nodes, c.elements)))) << c.note;
        std::string notes;
        for (const std::string& note : s.notes) notes += (notes.empty() ? "" : "|") + note;
        EXPECT_EQ(notes, c.note);
        const Analysis a = analyse(s, mesh_of(s), 1);
        EXPECT_NEAR(a.value[c.lying ? VQ_IYY : VQ_IZZ], 210000 * PLATE_IY, 1e-3 * 210000 * PLATE_IY) << c.note;
        EXPECT_FALSE(a.mesh.has_corners) << c.note;
        for (const Finding& f : check(s)) ADD_FAILURE() << c.note << ": " << f.message;
    }
    Section loose = one_material();
    read_mesh(loose,
              folder.file("loose.mesh",
                          "MeshVersionFormatted 2\nDimension\n3\nVertices\n5\n0 0 0 1\n3 0 0 1\n3 2 0 1\n0 2 0 1\n"
                          "9 9 9 1\nQuadrilaterals\n1\n1 2 3 4 1\nEnd\n"));
    ASSERT_EQ(loose.mesh.nodes.size(), 4u);
}

TEST(MeshFiles, CornersBarsAndLevels) {
    const Folder folder;
    // Two materials along one line have no sharp corner; an angle has; so have materials that meet in a step.
    const std::string plate = folder.file("plate.msh", msh(PLATE, ON_PLATE));
    Section s = two_materials(R"("groups": {"7": "steel", "9": "timber"})");
    read_mesh(s, plate);
    const auto four = [&](const std::string& second) {
        Section of = two_materials(R"("groups": {"7": "steel", "9": "timber"})");
        read_mesh(
            of,
            folder.file("four.msh",
                        msh({"0 0 0", "9 0 0", "30 0 0", "0 10 0", "9 10 0", "30 10 0", "0 20 0", "9 20 0", "30 20 0"},
                            {"3 7 7 1 2 5 4", "3 " + second + " 2 3 6 5", "3 9 9 4 5 8 7", "3 9 9 5 6 9 8"})));
        return mesh_of(of).has_corners;
    };
    EXPECT_FALSE(four("7 7"));
    EXPECT_TRUE(four("9 9"));
    const auto step = with(ON_PLATE, 3, "3 7 7 2 7 8 3");
    Section angle = one_material();
    read_mesh(angle, folder.file("angle.msh", msh(with(with(PLATE, 6, "40 0 0"), 7, "40 10 0"), step)));
    EXPECT_TRUE(mesh_of(angle).has_corners);

    // A bar's stiffness is added; outside of all elements it is refused, and so is a disc.
    const auto with_bar = [&](const std::string& bar) {
        Section barred = one_material("", R"(, "bars": [{"area": 10, )" + bar + "}]");
        read_mesh(barred, plate);
        return barred;
    };
    const Section barred = with_bar(R"("at": [5, 5], "as_point": true)");
    EXPECT_EQ(analyse(barred, mesh_of(barred), 1).bars.at(0).ELEMENT, 1);
    EXPECT_GT(analyse(barred, mesh_of(barred), 1).value[VQ_IZZ], 1.001 * analyse(s, mesh_of(barred), 1).value[VQ_IZZ]);
    const std::string outside = R"("at": [5, 25], "as_point": true)", disc = R"("at": [5, 5])";
    EXPECT_THROW(mesh_of(with_bar(outside)), Error);
    EXPECT_THROW(with_bar(disc), Error);

    // A mesh that is fine takes two levels, a coarse one as many as are wished.
    EXPECT_EQ(analyse(s, {false, 30}).levels, 2);
    EXPECT_GE(analyse(s).levels, 3);
    // A program's own mesh needs no file, and cannot be written without one.
    s.mesh.file.clear();
    s.mesh.numbers.clear();
    EXPECT_NO_THROW(check_section(s));
    EXPECT_THROW(write_section(s), Error);
    s.mesh.elements[1][0] = 99;
    EXPECT_THROW(check_section(s), Error);
}

TEST(MeshFiles, WrongFilesAreRefusedWithTheirPlace) {
    const Folder folder;
    const std::string bulk = "GRID,1,,0.,0.,0.\nGRID,2,,3.,0.,0.\nGRID,3,,3.,2.,0.\nGRID,4,,0.,2.,0.\n";
    const auto grid = [](const std::string& cells) {
        return "# vtk DataFile Version 3.0\nt\nASCII\nDATASET UNSTRUCTURED_GRID\nPOINTS 4 double\n0 0 0\n3 0 0\n3 2 0\n"
               "0 2 0\n" +
               cells;
    };
    const std::vector<std::string> solid = {"4 1 1 1 2 3 6"};
    auto script = folder.path / "touched";
    struct Case {
        const char* name;
        std::string text, message;
        const char* mesh = "";
        bool two = false;
    };
    const Case cases[] = {
        {"empty.msh", "", "empty.msh: the file is empty"},
        {"text.msh", "Point(1) = {0, 0, 0};\n",
         "text.msh: is no mesh: a file of this kind begins with \"$MeshFormat\""},
        {"script.msh", "SystemCall \"touch " + script.string() + "\";\n", "script.msh: is no mesh"},
        {"script.vtk", "SystemCall \"touch " + script.string() + "\";\n", "script.vtk: is no mesh"},
        {"text.bdf", "a letter\n",
         "text.bdf: has no triangles and no quadrilaterals; a mesh of plane elements is wanted"},
        {"binary.unv", std::string("\0\1\2\xff\xfe", 5), "binary.unv: has no triangles and no quadrilaterals"},
        {"other.med", "x",
         "other.med: is of a kind that is not read; .msh, .bdf, .nas, .unv, .vtk, .mesh and .stl are read"},
        {"cut.msh", msh(PLATE, ON_PLATE).substr(0, 90), "cut.msh: "},
        {"counts.msh", "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n99999999999\n", "counts.msh: "},
        {"version.msh", "$MeshFormat\n9.9 0 8\n$EndMeshFormat\n", "version.msh: "},
        {"lines.msh", msh(PLATE, {"1 1 1 1 2"}), "lines.msh: has no triangles and no quadrilaterals, but 1 line;"},
        {"solid.msh", msh(with(PLATE, 5, "0 0 9"), solid),
         "solid.msh: has no triangles and no quadrilaterals, but 1 solid"},
        {"node.msh", msh(PLATE, with(ON_PLATE, 2, "2 9 9 4 5 60")), "node.msh: Gmsh cannot read it: "},
        {"nan.msh", msh(with(PLATE, 4, "nan 20 0"), ON_PLATE), "nan.msh: node 5: has a coordinate that is no number"},
        {"far.msh", msh(with(PLATE, 4, "30 1e12 0"), ON_PLATE),
         "far.msh: node 5: has a coordinate of 1e+12; at most 1e9"},
        {"bent.msh", msh(with(PLATE, 4, "30 20 -3"), ON_PLATE),
         "bent.msh: node 5: lies 3 off the plane at z = 0; a section is plane, in x and y, in y and z or in x and z"},
        {"plane.msh", msh(PLATE, ON_PLATE), "plane.msh: node 1: lies 30 off the plane at x = 30; mesh.plane is \"yz\"",
         R"("plane": "yz")"},
        {"flat.msh", msh(with(PLATE, 4, "60 10 0"), ON_PLATE), "flat.msh: element 12: encloses no area, at (0, 10)"},
        {"eight.msh", msh(PLATE, with(ON_PLATE, 0, "3 7 7 1 3 2 6")), "eight.msh: element 11: crosses itself"},
        {"twice.msh", msh(PLATE, with(ON_PLATE, 3, "2 9 9 4 3 5")),
         "twice.msh: element 14: lies on element 12: both are on"},
        {"over.msh", msh(with(with(with(PLATE, 6, "1 1 0"), 7, "9 2 0"), 8, "5 9 0"), with(ON_PLATE, 3, "2 9 9 7 8 9")),
         "over.msh: element 14: lies on element 11, at (5, 4)"},
        {"hanging.msh", msh(with(PLATE, 6, "12 10 0"), {"3 7 7 1 2 3 4", "2 9 9 4 7 6", "2 9 9 7 3 5", "2 9 9 7 5 6"}),
         "hanging.msh: node 7: at (12, 10) lies on an edge of element 11, which does not have it; elements must share"},
        {"joined.msh", msh(PLATE, ON_PLATE),
         "joined.msh: element 11: has less than three corners; nodes within 15 mm are", R"("join": 15)"},
        {"group.msh", msh(PLATE, with(ON_PLATE, 1, "2 0 3 4 3 5")),
         "group.msh: 1 element in no physical group, others are"},
        {"cubic.msh",
         msh({"0 0 0", "3 0 0", "0 3 0", "1 0 0", "2 0 0", "2 1 0", "1 2 0", "0 2 0", "0 1 0", "1 1 0"},
             {"21 7 7 1 2 3 4 5 6 7 8 9 10"}),
         "cubic.msh: element 11: is of the kind \"Triangle 10\"; triangles and quadrilaterals of first and second "
         "order"},
        {"wish.msh", msh(PLATE, ON_PLATE), "mesh.groups: the mesh has no group \"8\"; it can be one of \"7\", \"9\"",
         R"("groups": {"8": "steel"})"},
        {"none.msh", msh(PLATE, ON_PLATE),
         "none.msh: group \"9\": has no material; name it in mesh.groups, as in {\"9\":", R"("groups": {"7": "steel"})",
         true},
        {"both.msh", msh(PLATE, {"3 7 1 1 2 3 4", "2 9 1 4 3 5", "2 9 1 4 5 6"}),
         "both.msh: surface 1 is in the groups \"7\" and \"9\"; name one of them in mesh.groups, or keep them on "
         "surfaces",
         R"("groups": {"7": "steel", "9": "timber"})", true},
        {"property.bdf", bulk + "CTRIA3,1,,1,2,3\nCTRIA3,2,,1,3,4\nENDDATA\n",
         "property.bdf: 2 of 2 elements have no property; write the number of a property into the third field"},
        {"lost.bdf", bulk + "CTRIAR,1,5,1,2,3\nCTRIA3,2,5,1,3,4\nENDDATA\n",
         "lost.bdf: Gmsh took 1 of the 2 triangles"},
        {"five.vtk", "# vtk DataFile Version 5.1\n", "five.vtk: is of version 5 of its form, which Gmsh does not read"},
        {"cells.vtk", grid("CELLS 1 5\n4 0 1 2 9\nCELL_TYPES 1\n9\n"), "cells.vtk: "},
        // Gmsh reads as many bytes as the cell says into a place that has fewer.
        {"crash.vtk",
         "# vtk DataFile Version 2.0\nt\nBINARY\nDATASET UNSTRUCTURED_GRID\nPOINTS 1 double\n" + std::string(24, '0') +
             "CELLS 1 4\n\xff\xff\xff\xff",
         "crash.vtk: the reader of meshes "},
        {"needle.msh", msh({"0 0 0", "30 0 0", "30 1e-4 0"}, {"2 1 1 1 2 3"}), "element 11: has an edge below 1e-5"},
    };
    for (const Case& c : cases) {
        const Section s = c.two ? two_materials(c.mesh) : one_material(c.mesh);
        const std::string told = refusal(s, folder.file(c.name, c.text));
        EXPECT_EQ(told.substr(0, c.message.size()), c.message) << c.name << ": " << told;
        EXPECT_GT(told.size(), c.message.size() - 1) << c.name;
    }
    EXPECT_FALSE(fs::exists(script));
    EXPECT_EQ(refusal(one_material(), (folder.path / "no.msh").string()),
              "no.msh: cannot be read: No such file or directory");
    EXPECT_EQ(refusal(one_material(), folder.path.string() + "/.msh"),
              ".msh: is of a kind that is not read; .msh, .bdf, "
              ".nas, .unv, .vtk, .mesh and .stl are read");
    // What lies beside a mesh under the name of its options is no concern of ours.
    folder.file("good.msh.opt", "SystemCall \"touch " + script.string() + "\";\n");
    EXPECT_EQ(refusal(one_material(), folder.file("good.msh", msh(PLATE, ON_PLATE))), "");
    EXPECT_FALSE(fs::exists(script));
}

TEST(MeshFiles, SectionFilesNameAMesh) {
    const std::string materials = R"({"materials": [{"name": "s", "E": 1}, {"name": "t", "E": 2}], )";
    const std::pair<const char*, const char*> cases[] = {
        {R"("mesh": {"groups": {}}})", "mesh: key \"file\" is missing"},
        {R"("mesh": {"file": "a.msh"}, "parts": [{"profile": "IPE 300", "material": "s"}]})",
         "mesh: beside parts; a section"},
        {R"("mesh": {"file": "a.msh", "groups": {"a": "u"}}})", "mesh.groups.a.material: unknown material \"u\""},
        {R"("mesh": {"file": "a.msh", "groups": {"a": {"factor": 1}}}})", "mesh.groups.a: no material is named"},
        {R"("mesh": {"file": "a.msh", "groups": {"a": {"materiel": "s"}}}})",
         "mesh.groups.a: unknown key \"materiel\"; did you mean \"material\"?"},
        {R"("mesh": {"file": "a.msh", "plane": "xx"}})", "mesh.plane: \"xx\" is unknown; "},
        {R"("mesh": {"file": "a.msh", "join": -1}})", "mesh.join: -1 is given; it must be at least 0"},
        {R"("mesh": {"file": "a.msh"}, "wishes": {"size": 3}})", "wishes.size: of a section that comes as a mesh"},
        {R"("mesh": {"file": "a.msh"}, "bars": [{"at": [0, 0], "area": 1, "material": "s"}]})",
         "bars[0]: a disc in a mesh that is given; give \"as_point\": true, or mesh the bar as a group of its own"},
        {R"("name": "x"})",
         "nothing is drawn: key \"parts\" is missing; give \"parts\", a "
         "\"drawing\", or a \"mesh\""}};
    for (const auto& [text, message] : cases) {
        std::string told;
        try {
            read_section(materials + text);
        } catch (const Error& error) {
            told = error.what();
        }
        EXPECT_EQ(told.rfind(message, 0), 0u) << told;
    }
    const Section named = read_section(
        materials +
        R"("mesh": {"file": "a.msh", "join": 0.5, "plane": "zx", "groups": {"a": {"material": "t", "group": 2,
                       "factor": 0.5}}}})");
    const std::string written = write_section(named);
    EXPECT_EQ(write_section(read_section(written)), written);
    EXPECT_EQ(named.mesh.groups.at("a").factor, 0.5);
    EXPECT_THROW(mesh_of(named), Error);  // nobody has read the file
}

TEST(Apart, WhatBecomesOfTheCopyIsTold) {
    const auto ended = [](std::string (*work)(const std::string&), const Limits& limits) -> std::string {
        try {
            return done_apart(work, "about it", limits);
        } catch (const Ended& end) {
            return end.how;
        }
    };
    Limits limits;
    limits.seconds = 20;
    limits.memory = std::size_t{1} << 28;
    EXPECT_EQ(ended([](const std::string& about) { return "all " + about + std::string(300000, '.'); }, limits),
              "all about it" + std::string(300000, '.'));
    EXPECT_EQ(ended(
                  [](const std::string&) -> std::string {
                      std::raise(SIGSEGV);
                      return "";
                  },
                  limits),
              "crashed (signal 11)");
    EXPECT_EQ(ended([](const std::string&) -> std::string { std::exit(0); }, limits),
              "ended without an answer (status 83)");
    EXPECT_EQ(ended([](const std::string&) -> std::string { throw std::runtime_error(""); }, limits),
              "failed without a reason");
    EXPECT_EQ(ended([](const std::string&) -> std::string { throw std::bad_alloc(); }, limits),
              "wanted more than 256 MB of memory");
    // Neither what is opened here nor what is printed here is written by the copy.
    EXPECT_EQ(ended([](const std::string&)
                        -> std::string { return write(2, "x", 1) == 1 && write(9, "x", 1) < 0 ? "" : "seen"; },
                    limits),
              "");
    limits.seconds = 0.2;
    EXPECT_EQ(ended(
                  [](const std::string&) -> std::string {
                      for (;;) pause();
                  },
                  limits),
              "took longer than 0 s");
    limits.answer = 10;
    EXPECT_EQ(ended([](const std::string&) { return std::string(2000000, 'x'); }, limits), "gave an answer of 1 MB");
}

}  // namespace velquor
