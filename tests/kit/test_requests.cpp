// Requests and answers: what a line gives, what wrong lines give, and that any line gives an answer of one line.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "kit/requests/answer.h"
#include "kit/section/parse.h"
#include "kit/section/templates.h"
#include "kit/show/json.h"

namespace {

using namespace velquor;
using nlohmann::json;

const char* const SQUARE = R"({"materials":[{"name":"steel","E":210000,"strength":235}],)"
                           R"("parts":[{"outline":[[0,0],[10,0],[10,10],[0,10]]}],"loads":[{"name":"pull","N":300}])";

// An answer is one line, and as its schema has it.
json answered(const std::string& request, const std::optional<std::string>& folder = {}) {
    static const Pattern pattern(answer_schema());
    const std::string line = answer_to(request, folder);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    json answer = json::parse(line);
    EXPECT_NO_THROW(check_structure(answer, pattern)) << line.substr(0, 1000);
    return answer;
}

TEST(Requests, AnswersAreWhatTheKitGives) {
    const Section section = section_of_profile("HEB 200");
    const Values values = in_units(values_of(section, analyse(section)), "cm", "kN");
    const json expected = json::parse(json_of(values, {}).dump());
    json answer = answered(R"({"id":"\"a\"","name":"heb200","units":{"length":"cm","force":"kN"}})");
    EXPECT_EQ(answer["id"], "\"a\"");
    answer.erase("id");
    EXPECT_EQ(answer, expected);

    answer = answered(
        R"({"id":7.5,"name":"HEB 200","values":["A","It"],"units":{"length":"cm"},"levels":2,"accuracy":0.1})");
    EXPECT_EQ(answer["id"], 7.5);
    EXPECT_EQ(answer["accuracy"]["levels"], 2);
    EXPECT_EQ(answer["values"].size(), 2U);
    EXPECT_EQ(answer["values"]["A"]["unit"], "cm2");
    EXPECT_EQ(answered(R"({"shape":"rectangle","parameters":{"b":20,"h":30}})")["values"]["A"]["unit"], "mm2");
}

TEST(Requests, MeshFieldsAndLoadsComeWhereTheyAreWanted) {
    const std::string square = std::string(SQUARE) + "}";
    json answer = answered(R"({"section":)" + square + "}");
    EXPECT_NEAR(answer["loads"][0]["materials"][0]["axial_largest"]["value"].get<double>(), 3, 1e-9);
    EXPECT_FALSE(answer["loads"][0].contains("nodes") || answer.contains("mesh") || answer.contains("fields"));
    EXPECT_FALSE(answered(R"({"loads":"none","section":)" + square + "}").contains("loads"));
    EXPECT_TRUE(answered(R"({"loads":"nodes","section":)" + square + "}")["loads"][0].contains("nodes"));

    std::size_t coarse = 0;
    for (const char* which : {"coarse", "finest"}) {
        answer = answered(std::string(R"({"mesh":")") + which + R"(","fields":["N","T"],"section":)" + square + "}");
        const json &mesh = answer["mesh"], &fields = answer["fields"];
        const auto nodes = mesh["y"].size(), points = fields["node"].size();
        EXPECT_EQ(mesh["z"].size(), nodes);
        EXPECT_EQ(mesh["part"].size(), mesh["elements"].size());
        EXPECT_EQ(fields["elements"].size(), mesh["elements"].size());
        EXPECT_EQ(fields["columns"].contains("warping"), coarse == 0);
        for (const auto& [name, column] : fields["columns"].items()) EXPECT_EQ(column.size(), points) << name;
        for (const json& sigma : fields["columns"]["unit N axial"]) EXPECT_NEAR(sigma.get<double>(), 0.01, 1e-12);
        double area = 0;
        for (std::size_t e = 0; e < mesh["elements"].size(); ++e) {
            for (int c = 0; c < 4; ++c) {
                const std::size_t node = mesh["elements"][e][c], next = mesh["elements"][e][(c + 1) % 4],
                                  point = fields["elements"][e][c];
                EXPECT_EQ(fields["node"].at(point - 1), node);
                area += (mesh["y"].at(node - 1).get<double>() * mesh["z"].at(next - 1).get<double>() -
                         mesh["y"].at(next - 1).get<double>() * mesh["z"].at(node - 1).get<double>()) /
                        2;
            }
        }
        EXPECT_NEAR(area, 100, 1e-9);
        EXPECT_GT(nodes, coarse);
        coarse = nodes;
    }
    EXPECT_TRUE(answered(R"({"mesh":"coarse","name":"IPE 80","values":["A"]})").contains("mesh"));
}

TEST(Requests, WrongLinesAreToldByKindPlaceAndRemedy) {
    const std::string deep(10000, '['), pieces = R"({"id":1,"section":{"materials":[{"name":"s","E":1}],"parts":[)";
    const struct {
        std::string line, id, kind, at, told;
    } cases[] = {
        {"junk", "null", "request", "column 1", "not JSON"},
        {R"({"id":1,"name":"IPE 3)", "null", "request", "column 22", "not JSON"},
        {"", "null", "request", "", "nothing is given"},
        {"[]", "null", "request", "", "a list is given"},
        {deep, "null", "request", "[0][0][0][0][0][0][0][0][0][0][0][0][0]", "nested deeper"},
        {"{\"id\":1,\"name\":\"\xff\"}", "null", "request", "column 17", "UTF-8"},
        {R"({"id":1,"size":1e999})", "null", "request", "size", "too large for 64 bits"},
        {R"({"id":1,"id":2,"name":"IPE 80"})", "null", "request", "", "\"id\" stands twice"},
        {R"({"id":1,"nme":"IPE 80"})", "1", "request", "", "did you mean \"name\"?"},
        {R"({"id":[1],"name":"IPE 80"})", "null", "request", "id", "a list is given"},
        {R"({"id":1})", "1", "request", "", "no section"},
        {R"({"id":1,"name":"IPE 80","section":{}})", "1", "request", "", "several sections"},
        {R"({"id":1,"name":"IPE 80","parameters":{"h":1}})", "1", "request", "parameters", "without \"shape\""},
        {R"({"id":1,"name":"IPE 80","values":["A","Itt"]})", "1", "request", "values[1]", "unknown value \"Itt\""},
        {R"({"id":1,"name":"IPE 80","fields":["X"]})", "1", "request", "fields[0]", "unknown unit load \"X\""},
        {R"({"id":1,"name":"IPE 80","units":{"length":"cmm"}})", "1", "request", "units.length", "unknown unit"},
        {R"({"id":1,"name":"IPE 80","levels":7})", "1", "request", "levels", "at most 6"},
        {R"({"id":"x","name":"IPE 81"})", "\"x\"", "refused", "name", "did you mean \"IPE 80\"?"},
        {R"({"id":1,"shape":"circle","parameters":{"r":2}})", "1", "refused", "shape", "r"},
        {pieces + R"({"shape":"circle","parameters":{"d":-1}}]}})", "1", "refused", "parts[0].parameters",
         "d = -1: must be above 0"},
        {pieces + R"({"outline":[[0,0],[1,1],[1,0],[0,1]]}]}})", "1", "refused", "parts[0].outline[1]", "crosses"},
        {pieces + R"({"outline":[[0,0],[1e-300,0],[0,1]]}]}})", "1", "refused", "parts[0].outline[1]", ""},
        {R"({"id":1,"section":{"materials":[{"name":"s","E":1}],"mesh":{"file":"/etc/passwd"}}})", "1", "refused",
         "mesh.file", "no files are read here"},
        {R"({"id":1,"section":{"materials":[{"name":"s","E":1}],"drawing":{"file":"a.dxf"}}})", "1", "refused",
         "drawing.file", "no files are read here"},
    };
    for (const auto& c : cases) {
        const json answer = answered(c.line), error = answer["error"];
        SCOPED_TRACE(c.line.substr(0, 200) + "\n" + answer.dump());
        EXPECT_EQ(answer["id"].dump(), c.id);
        ASSERT_TRUE(error.is_object());
        EXPECT_EQ(error["kind"], c.kind);
        EXPECT_EQ(error["at"], c.at);
        const std::string told = error["message"].get<std::string>() + "; " + error["remedy"].get<std::string>();
        EXPECT_NE(told.find(c.told), std::string::npos);
    }
    EXPECT_EQ(answered(std::string(LONGEST_REQUEST + 1, ' '))["error"]["kind"], "request");
}

TEST(Requests, FilesAreReadFromTheFolderThatIsGiven) {
    const std::filesystem::path folder = testing::TempDir();
    std::ofstream(folder / "square.mesh")
        << "MeshVersionFormatted 2\nDimension 3\nVertices\n9\n0 0 0 0\n1 0 0 0\n2 0 0 0\n0 1 0 0\n1 1 0 0\n2 1 0 0\n"
           "0 2 0 0\n1 2 0 0\n2 2 0 0\nQuadrilaterals\n4\n1 2 5 4 1\n2 3 6 5 1\n4 5 8 7 1\n5 6 9 8 1\nEnd\n";
    const std::string line = R"({"section":{"materials":[{"name":"s","E":1}],"mesh":{"file":"square.mesh"}}})";
    EXPECT_NEAR(answered(line, folder.string())["values"]["A"]["value"].get<double>(), 4, 1e-9);
    EXPECT_EQ(answered(line, (folder / "none").string())["error"]["kind"], "refused");
    const json zero =
        answered(R"({"section":{"materials":[{"name":"s","E":1}],"mesh":{"file":"/dev/zero"}}})", folder.string());
    EXPECT_EQ(zero["error"]["message"], "\"/dev/zero\" is no regular file");
}

// Bytes put in, taken away and changed at random: any line has an answer.
TEST(Requests, AnyLineHasAnAnswer) {
    const std::string seeds[] = {
        R"({"id":1,"section":)" + std::string(SQUARE) + R"(},"values":["A","Iy"],"loads":"peaks"})",
        R"({"id":"x","name":"IPE 80","units":{"length":"cm","force":"kN"},"levels":1,"mesh":"coarse"})",
        R"({"shape":"circle","parameters":{"d":10},"fields":["T","N"],"accuracy":0.1,"size":5,"id":null})"};
    const char alphabet[] = "{}[]\",:0123456789eE+-.truefalsnd\\\x80\xff\n ";
    std::uint32_t random = 12345;
    const auto below = [&](std::size_t limit) {
        random = random * 1664525 + 1013904223;
        return static_cast<std::size_t>(random >> 8) % limit;
    };
    int values = 0, errors = 0;
    for (int k = 0; k < 400; ++k) {
        std::string line = seeds[below(3)];
        for (std::size_t n = 1 + below(2); n > 0; --n) {
            const std::size_t at = below(line.size());
            const char letter = alphabet[below(sizeof alphabet - 1)];
            switch (below(3)) {
                case 0: line[at] = letter; break;
                case 1: line.insert(at, 1, letter); break;
                default: line.erase(at, 1); break;
            }
        }
        SCOPED_TRACE(line);
        const json answer = answered(line);
        ++(answer.contains("error") ? errors : values);
        EXPECT_FALSE(answer.contains("error") && answer["error"]["kind"] == "internal");
    }
    EXPECT_GT(values, 10);
    EXPECT_GT(errors, 100);
}

}  // namespace
