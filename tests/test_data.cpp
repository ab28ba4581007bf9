#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "findings.h"
#include "section_builder.h"

using namespace VQ_DATA_MOD;

namespace {

double below(double x) { return std::nextafter(x, -INFINITY); }
constexpr double EDGE = 9.99999993922529e-09, RATIO = 9.999999747378752e-06, FACTOR = 1.0100000054080738e-06;

// Elements with corners of their own, given as Y1 .. Y4, Z1 .. Z4; a triangle repeats the third.
Section separate(const std::vector<Real<8>>& corners, int count = 4) {
    Section s;
    for (const Real<8>& Q : corners) {
        const auto first = static_cast<std::int32_t>(s.y.size());
        s.y.insert(s.y.end(), Q.data, Q.data + 4);
        s.z.insert(s.z.end(), Q.data + 4, Q.data + 8);
        s.elements.push_back({first + 1, first + 2, first + 3, first + count});
        s.materials.emplace_back();
    }
    return s;
}

std::int32_t checked(const Section& s, double EREF = 1) {
    VARIABLES_T VARS;
    VELQUOR_CHAR CHAR;
    fill_records(s, VARS, CHAR);
    CHAR.EREF = EREF;
    std::int32_t STATUS = -99;
    CHECKMESH(STATUS, VARS, CHAR);
    // A host's check finds the same first, where the modulus is that of the table.
    const std::vector<vq_finding> found = check(host_of(s));
    const std::int32_t row = found.empty() || found[0].SEVERITY == VQ_WARNING ? 0 : found[0].ROW;
    EXPECT_TRUE(s.elements.empty() || EREF != s.materials[0].EMOD || row == STATUS) << row;
    return STATUS;
}

std::int32_t judged(const Real<8>& Q) {
    const std::int32_t fault = TESTQUADGEO(Q);
    EXPECT_EQ(checked(separate({Q})), fault == 0 ? 0 : 1);
    return fault;
}

Real<8> rectangle(double y, double z) { return {{0, y, y, 0, 0, 0, z, z}}; }

}  // namespace

TEST(Mesh, RefusesNodeNumbersOutsideTheTable) {
    const double nodes[8] = {};
    for (const std::int32_t number : {5, 0, INT32_MIN}) {
        const std::int32_t elements[4] = {1, 2, number, 4};
        std::int32_t STATUS = 0;
        VARIABLES_T VARS;
        DEFINEMESH(STATUS, View<const double, 2>(nodes, 4, 2), View<const std::int32_t, 2>(elements, 1, 4), VARS, {});
        EXPECT_EQ(STATUS, -3);
        EXPECT_FALSE(VARS.XY.allocated() || VARS.NODEUSED.allocated() || VARS.ELEMNODES.allocated());
    }
    EXPECT_EQ(checked(Section{}), 0);
}

TEST(Mesh, JudgesQuadrilaterals) {
    const double degree = std::acos(-1.0) / 180;
    for (const double a : {3 * degree, 5 * degree, std::asin(0.0799999), std::asin(0.0800001)}) {
        for (const double c : {std::cos(a), -std::cos(a)}) {  // rhombus with sharp corners 1 and 3, then 2 and 4
            EXPECT_EQ(judged({{0, 1, 1 + c, c, 0, 0, std::sin(a), std::sin(a)}}), std::sin(a) < 0.08 ? 2 : 0);
        }
    }
    EXPECT_EQ(judged(rectangle(EDGE, EDGE)), 0);
    EXPECT_EQ(judged(rectangle(1, RATIO)), 0);
    for (const Real<8>& Q :
         {rectangle(below(EDGE), below(EDGE)), rectangle(0, 0), rectangle(below(RATIO), 1),
          Real<8>{{0, 2, 1, 0, 0, 0, 1.0524, 2}},                                  // 3 degrees from straight
          Real<8>{{0, 2, 1, 0, 0, 0, 0.9, 2}},                                     // re-entrant, and clockwise as well
          Real<8>{{0, 0, 1, 2, 0, 2, 0.9, 0}}, Real<8>{{0, 1, 1, 0, 0, 1, 0, 1}},  // bow-ties, with and without an area
          Real<8>{{0, 1, 0, 1, 0, 0, 1.5, 1}}})
        EXPECT_EQ(judged(Q), 2);
    EXPECT_EQ(judged({{0, 2, 1, 0, 0, 0, 1.0875, 2}}), 0);  // 5 degrees from straight
    EXPECT_EQ(judged({{0, 0, 2, 2, 0, 1, 1, 0}}), 1);       // clockwise
}

TEST(Mesh, JudgesTriangles) {
    const double good[][4] = {
        {1, 0, 0, 1}, {1, 0.001, 0, 0.001}, {1, 0.5, 0, 0}, {1, RATIO, 0, 0}, {EDGE, EDGE / 2, 0, 0}};
    const double bad[][4] = {{0, 1, 1, 0}, {1, below(RATIO), 0, 0}, {below(EDGE), EDGE / 2, 0, 0}, {0, 0, 0, 0}};
    for (const auto& [y2, y3, z2, z3] : good) EXPECT_EQ(checked(separate({{{0, y2, y3, 0, 0, z2, z3, 0}}}, 3)), 0);
    for (const auto& [y2, y3, z2, z3] : bad) EXPECT_EQ(checked(separate({{{0, y2, y3, 0, 0, z2, z3, 0}}}, 3)), 1);
}

TEST(Mesh, NamesTheFirstBadElementAboveTheModulusLimit) {
    const Real<8> good = rectangle(1, 1), clockwise{{0, 0, 1, 1, 0, 1, 1, 0}};
    Section s = separate({good, clockwise, good, clockwise});
    EXPECT_EQ(checked(s), 2);
    const double EREF = 210000;
    s.materials[1].EMOD = EREF * FACTOR;
    EXPECT_EQ(checked(s, EREF), 2);
    s.materials[1].EMOD = below(EREF * FACTOR);  // skipped, the elements behind it are not
    s.materials[3].EMOD = EREF;
    EXPECT_EQ(checked(s, EREF), 4);
    s.materials[3].EMOD = -1;
    EXPECT_EQ(checked(s, EREF), 0);
    EXPECT_EQ(checked(s, 0), 2);
}

TEST(Records, ReleaseWhateverExists) {
    VARIABLES_T VARS;
    VELQUOR_CHAR CHAR;
    RELEASEVQDATA(VARS);
    fill_records(separate({rectangle(1, 1)}), VARS, CHAR);
    VARS.GROUPZC.release();
    RELEASEVQDATA(VARS);
    EXPECT_FALSE(VARS.XY.allocated() || VARS.ELEMNODES.allocated() || VARS.NODEUSED.allocated() ||
                 VARS.ELEMPROP.allocated() || VARS.ELEMAREA.allocated() || VARS.GROUPDY.allocated());
}

// Both files stand at fixed names, here in a directory of the test's own.
TEST(Dump, WritesTheMeshInFieldsOfFixedWidth) {
    char directory[] = "/tmp/vq_dump_XXXXXX";
    ASSERT_TRUE(mkdtemp(directory));
    const std::filesystem::path home = std::filesystem::current_path();
    std::filesystem::current_path(directory);
    const auto text = [](const char* path) {
        std::ifstream file(path);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    const char *bulk = "c:\\temp\\vq.nas", *material = "c:\\temp\\mat.dat";

    VARIABLES_T VARS;
    VARS.NNODES = 4, VARS.NELEMS = 2;
    const double xy[8] = {0, -123.45678, 9.999999996, 1e99, 123456789.5, -1e-101, -0.5, NAN};
    VARS.XY.allocate(4, 2);
    std::copy_n(xy, 8, VARS.XY.memory());
    const std::int32_t elements[8] = {1, 123456789, 2, 12345678, 3, -12345678, 3, -1234567};
    VARS.ELEMNODES.allocate(2, 4);
    std::copy_n(elements, 8, VARS.ELEMNODES.memory());
    const double properties[6] = {210000, -1, 420000, -2, 630000, -3};
    VARS.ELEMPROP.allocate(2, 10);
    std::copy_n(properties, 6, VARS.ELEMPROP.memory());

    std::filesystem::create_directory(material);  // cannot be opened: an end without a message
    WRITEMESHFORDEBUG(VARS);
    EXPECT_EQ(text(bulk), "");
    std::filesystem::remove(material);
    WRITEMESHFORDEBUG(VARS);
    EXPECT_EQ(text(bulk),
              "begin bulk\n"
              "GRID,         1, ,0.00000000E+00 , 0.12345679E+09 , 0.\n"
              "GRID,         2, ,-.12345678E+03 , -.10000000-100 , 0.\n"
              "GRID,         3, ,0.10000000E+02 , -.50000000E+00 , 0.\n"
              "GRID,         4, ,0.10000000+100 ,            NaN , 0.\n"
              "CTRIA3,       1,1 ,       1 ,        2 ,        3\n"
              "CQUAD4,       2,1 ,******** , 12345678 , ******** , -1234567\n"
              "end data\n");
    EXPECT_EQ(text(material),
              "0.21000000E+06   0.42000000E+06  0.63000000E+06\n-.10000000E+01   -.20000000E+01  -.30000000E+01\n");
    std::filesystem::current_path(home);
    std::filesystem::remove_all(directory);
}
