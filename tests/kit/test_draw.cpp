// Pictures by what they contain.
#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <set>
#include <thread>

#include "kit/analysis/loads.h"
#include "kit/draw/cells.h"
#include "kit/draw/colours.h"
#include "kit/draw/draw.h"
#include "kit/section/templates.h"

// fontconfig keeps some 300 bytes of its settings to the end of a process, however often it is asked.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig"; }

namespace velquor {
namespace {

struct Solved {
    Section section;
    Analysis analysis;

    explicit Solved(Section of) : section(std::move(of)), analysis(analyse(section, {true})) {}
    Sheet sheet(const std::vector<std::string>& fields) const {
        Sheet sheet;
        for (const std::string& field : fields) sheet.panels.push_back(panel_of(section, field, "field"));
        return sheet;
    }
    std::string svg(const std::vector<std::string>& fields) const { return draw_svg(section, analysis, sheet(fields)); }
};

std::size_t count(const std::string& text, const std::string& word) {
    std::size_t found = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + word.size())) ++found;
    return found;
}
bool says(const std::string& svg, const std::string& words) { return count(svg, ">" + words + "</text>") > 0; }

const Solved& angle() {
    static const Solved solved(section_of_shape("angle", {{"h", 100}, {"b", 50}, {"t", 8}}));
    return solved;
}

TEST(Pictures, OutlineHasAxesCentresAndDimensions) {
    const std::string svg = angle().svg({"outline"});
    for (const char* words : {"y", "z", "u", "v", "C", "M", "100", "50", "8", "centroid C", "shear centre M",
                              "principal axes u, v", "plastic axes", "dimensions in mm"})
        EXPECT_TRUE(says(svg, words)) << words;
    const Solved square(section_of_shape("rectangle", {{"h", 60}, {"b", 60}}));
    EXPECT_FALSE(says(square.svg({"outline"}), "u"));  // every axis is a principal one
}

// A linear field needs one cell an element, of colours along a line, and all of these lines are one.
TEST(Pictures, AFieldHasACellForEachElementAndItsRange) {
    const Solved beam(section_of_shape("rectangle", {{"h", 80}, {"b", 50}}));
    const std::string svg = beam.svg({"axial:My"});
    EXPECT_EQ(count(svg, "<path fill=\"url(#"), beam.analysis.mesh.elements.size());
    EXPECT_EQ(count(svg, "xlink:href"), 1u);
    EXPECT_TRUE(says(svg, "largest 18.75")) << svg;  // 6 / (b h^2), in 1e-6 N/mm2
    EXPECT_TRUE(says(svg, "smallest \u221218.75"));
    EXPECT_TRUE(says(svg, "in 10⁻⁶ N/mm²"));
    for (const char* tick : {"\u221215", "\u221210", "\u22125", "0", "5", "10", "15"}) EXPECT_TRUE(says(svg, tick));
    // Shear bends between the corners of the coarse elements.
    const Field& field = beam.analysis.field;
    Load load;
    load.T = load.My = 1;
    std::vector<double> tau, sigma;
    for (const Stress& stress : stresses_of(field, load)) {
        tau.push_back(shear(stress));
        sigma.push_back(stress.sigma);
    }
    const auto cells = [&](const std::vector<double>& value) {
        const auto [low, high] = std::minmax_element(value.begin(), value.end());
        return cells_of(beam.analysis.mesh, field, value, *high - *low, 0).size();
    };
    EXPECT_EQ(cells(sigma), beam.analysis.mesh.elements.size());
    EXPECT_GT(cells(tau), beam.analysis.mesh.elements.size());
}

TEST(Pictures, ShearEndsBesideCornersWithoutLimitAndMarksThem) {
    const Solved& s = angle();
    const std::string svg = s.svg({"shear:T"});
    Load torque;
    torque.T = 1;
    const Peak peak = result_of(s.section, s.analysis, torque).materials.front().shear;
    ASSERT_TRUE(peak.unlimited);
    const Scale scale = scale_of(0, peak.value, false);
    EXPECT_TRUE(says(svg, "largest " + shown_on(scale, peak.value)));
    EXPECT_EQ(count(svg, "no limit at the"), 1u);
    EXPECT_EQ(count(s.svg({"axial:N"}), "no limit at the"), 0u);
}

std::pair<double, double> place_of(const std::string& svg, const std::string& words) {
    const std::size_t line = svg.rfind("<text x=\"", svg.find(">" + words + "</text>"));
    return {std::stod(svg.substr(line + 9)), std::stod(svg.substr(svg.find("y=\"", line) + 3))};
}

// Filled paths of SVG that cairo wrote: the colour, and numbers and letters of the path.
std::vector<std::pair<std::string, std::string>> filled_paths(const std::string& svg) {
    std::vector<std::pair<std::string, std::string>> paths;
    for (std::size_t at = svg.find("stroke:none;"); at != std::string::npos; at = svg.find("stroke:none;", at + 1)) {
        const std::size_t fill = svg.find("fill:#", at) + 6, path = svg.find(" d=\"", at) + 4;
        paths.emplace_back(svg.substr(fill, 6), svg.substr(path, svg.find('"', path) - path));
    }
    return paths;
}

TEST(Pictures, PointTheRightWay) {
    const auto [c_x, c_y] = place_of(angle().svg({"outline"}), "C");
    const auto [m_x, m_y] = place_of(angle().svg({"outline"}), "M");
    EXPECT_GT(m_y, c_y + 60);  // the shear centre is in the corner
    EXPECT_LT(m_x, c_x);
    Section section = section_of_shape("rectangle", {{"h", 80}, {"b", 50}});
    section.bars.push_back({{0, 30}, 50, section.materials.front().name, true});
    const Solved beam(section);
    for (const bool upwards : {false, true}) {
        std::size_t arrows = 0;
        for (const auto& [colour, path] : filled_paths(beam.svg({upwards ? "shear:Vz" : "shear:Vy"})))
            for (std::size_t at = path.find("M "); at != std::string::npos && colour == "0d0f14";
                 at = path.find("M ", at + 1)) {
                double tip_x, tip_y, x, y;
                if (std::sscanf(path.c_str() + at, "M %lf %lf L %lf %lf", &tip_x, &tip_y, &x, &y) != 4) continue;
                EXPECT_GT(upwards ? y - tip_y : tip_x - x, 0) << path.substr(at, 40);
                ++arrows;
            }
        EXPECT_GT(arrows, 20u);
    }
    std::size_t red = 0;  // the bar, in tension on top
    for (const auto& [colour, path] : filled_paths(beam.svg({"axial:My"})))
        if (path.find(" C ") != std::string::npos && colour.substr(0, 2) > colour.substr(4, 2)) ++red;
    EXPECT_EQ(red, 1u);
}

TEST(Pictures, PlacesAreToldFarFromTheOriginAndPiecesHaveNoShear) {
    Section section = section_of_shape("rectangle", {{"h", 500}, {"b", 300}});
    section.parts.front().place.at = {1e6, -2e6};
    const Solved far(section);
    const std::string svg = far.svg({"outline", "axial:My"});
    EXPECT_TRUE(says(svg, "yC = 1000000, zC = \u22122000000 mm"));
    EXPECT_EQ(count(svg, "\u22121999750) mm</text>"), 1u) << svg;
    EXPECT_EQ(count(svg, "depend on the mesh"), 0u);
    section.parts.push_back(section.parts.front());
    section.parts.back().place.at.y += 400;
    const Solved pieces(section);
    EXPECT_NO_THROW(pieces.svg({"axial:My"}));
    EXPECT_THROW(pieces.svg({"shear:Vz"}), Error);
    section.parts.back().place.at.y -= 100;
    section.parts.back().place.at.z += 500;  // they touch in a corner
    const Solved hinged(section);
    EXPECT_EQ(count(hinged.svg({"axial:My"}), "depend on the mesh"), 0u);
    EXPECT_EQ(count(hinged.svg({"shear:Vz", "mises:T"}), "depend on the mesh"), 2u);
}

// Each material is clipped once, however many cells it has: a clip for each would make this file some megabytes.
TEST(Pictures, PdfOfManyHolesStaysSmall) {
#ifdef VQ_SANITIZED
    GTEST_SKIP() << "a size, for which sanitizers take a minute";
#endif
    const Solved column(section_of_shape("rc_circle", {{"d", 600}, {"cover", 40}, {"n", 40}, {"d_bar", 20}}));
    EXPECT_LT(draw_pdf(column.section, column.analysis, column.sheet({"axial:My"})).size(), 800000u);
}

TEST(Pictures, OfSeveralMaterialsStepAtTheirBorder) {
    const Solved beam(
        section_of_shape("rc_rectangle", {{"h", 300}, {"b", 200}, {"cover", 30}, {"n_bottom", 2}, {"d_bottom", 20}}));
    const std::string svg = beam.svg({"outline", "axial:N"});
    EXPECT_TRUE(says(svg, "B500"));
    EXPECT_EQ(count(svg, "class=\"cells\""), 2u);
    std::set<std::string> colours;  // of N alone each material has one
    for (std::size_t at = svg.find("<path fill=\"#"); at != std::string::npos; at = svg.find("<path fill=\"#", at + 1))
        colours.insert(svg.substr(at + 12, 7));
    EXPECT_EQ(colours.size(), 2u);
}

TEST(Pictures, LoadSetsAreFoundByName) {
    Section section = angle().section;
    section.loads.resize(2);
    section.loads[0].name = "wind";
    section.loads[1].name = "snow";
    section.loads[1].My = 3;
    EXPECT_EQ(panel_of(section, "axial", "").load.name, "wind");
    EXPECT_EQ(panel_of(section, "mises:snow", "").load.My, 3);
    EXPECT_EQ(panel_of(section, "shear:Vy", "").load.Vy, 1);
    const std::pair<const char*, const char*> wrong[] = {
        {"shaer", "at: unknown field \"shaer\"; did you mean \"shear\"?"},
        {"axial:snwo", "at: unknown load \"snwo\" of axial; did you mean \"snow\"?"},
        {"axial:Vz", "at: unknown load \"Vz\" of axial"},
        {"warping:y", "at: unknown warping \"y\""},
        {"mesh:N", "at: \"mesh:N\": mesh is of no load"}};
    for (const auto& [text, message] : wrong) try {
            panel_of(section, text, "at");
            ADD_FAILURE() << text;
        } catch (const Error& error) {
            EXPECT_EQ(std::string(error.what()).substr(0, std::strlen(message)), message);
        }
    Analysis without = angle().analysis;
    without.field = {};
    EXPECT_THROW(draw_svg(section, without, angle().sheet({"axial:N"})), Error);
}

TEST(Pictures, NamesAreEscapedAndNoLocaleTakesPart) {
    Solved s = angle();
    s.section.name = "<&>\" ü\x01";
    const std::string svg = s.svg({"outline"});
    EXPECT_TRUE(says(svg, "&lt;&amp;&gt;&quot; ü?"));
    EXPECT_EQ(count(svg, "\x01"), 0u);
    for (const char* locale : {"de_DE.UTF-8", "fr_FR.UTF-8"}) std::setlocale(LC_ALL, locale);  // where it is there
    EXPECT_EQ(s.svg({"outline"}), svg);
    std::setlocale(LC_ALL, "C");
}

cairo_status_t take(void* from, unsigned char* to, unsigned int size) {
    auto& rest = *static_cast<std::string*>(from);
    std::memcpy(to, rest.data(), size);
    rest.erase(0, size);
    return CAIRO_STATUS_SUCCESS;
}

TEST(Pictures, PixelsAreOfTheThemeAndNotBlank) {
    for (const bool dark : {false, true}) {
        Sheet sheet = angle().sheet({"shear:Vz"});
        sheet.dark = dark;
        sheet.width = 400;
        std::string png = draw_png(angle().section, angle().analysis, sheet);
        cairo_surface_t* const surface = cairo_image_surface_create_from_png_stream(take, &png);
        ASSERT_EQ(cairo_image_surface_get_width(surface), 400);
        const auto* const rows = cairo_image_surface_get_data(surface);
        std::set<std::uint32_t> colours;
        for (int k = 0; k < 400 * cairo_image_surface_get_height(surface); ++k) {
            std::uint32_t pixel;
            std::memcpy(&pixel, rows + 4 * k, 4);
            colours.insert(pixel & 0xffffff);
        }
        EXPECT_GT(colours.size(), 500u);
        EXPECT_EQ(rows[0] < 128, dark);
        cairo_surface_destroy(surface);
    }
}

// Cells reach over the arcs of their boundary, and are clipped there.
TEST(Pictures, ColoursEndAtTheBoundary) {
    const Solved disc(section_of_shape("ring", {{"d", 100}, {"t", 10}}));
    Sheet sheet = disc.sheet({"mises:N"});
    sheet.plain = true;
    sheet.width = 800;
    std::string png = draw_png(disc.section, disc.analysis, sheet);
    cairo_surface_t* const surface = cairo_image_surface_create_from_png_stream(take, &png);
    const int size = cairo_image_surface_get_width(surface);
    const auto* const rows = cairo_image_surface_get_data(surface);
    double reach = 0;
    for (int y = 0; y < std::min(size, cairo_image_surface_get_height(surface)); ++y)
        for (int x = 0; x < size; ++x)
            if (rows[y * cairo_image_surface_get_stride(surface) + 4 * x] < 250)
                reach = std::max(reach, std::hypot(x + 0.5 - size / 2.0, y + 0.5 - size / 2.0));
    EXPECT_NEAR(reach, size / 2.0 - 10, 1.5);  // 4 and 6 of margin
    cairo_surface_destroy(surface);
}

TEST(Pictures, APageKeepsItsStateAndThreadsDoNotDisturbEachOther) {
    const Sheet sheet = angle().sheet({"outline", "mesh"});
    const auto pixels = [&] {
        cairo_surface_t* const surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 300, 300);
        cairo_t* const page = cairo_create(surface);
        cairo_set_line_width(page, 7);
        draw_on(page, {50, 50, 200, 200}, angle().section, angle().analysis, sheet);
        EXPECT_EQ(cairo_get_line_width(page), 7);
        EXPECT_FALSE(cairo_has_current_point(page));
        cairo_matrix_t matrix;
        cairo_get_matrix(page, &matrix);
        EXPECT_EQ(matrix.xx, 1);
        cairo_surface_flush(surface);
        const auto* const data = reinterpret_cast<const char*>(cairo_image_surface_get_data(surface));
        std::string bytes(data, data + 4 * 300 * 300);
        EXPECT_EQ(bytes.substr(0, 4 * 300 * 50), std::string(4 * 300 * 50, '\0'));  // nothing above the box
        cairo_destroy(page);
        cairo_surface_destroy(surface);
        return bytes;
    };
    const std::string alone = pixels(), svg = draw_svg(angle().section, angle().analysis, sheet);
    std::vector<std::thread> threads;
    for (int k = 0; k < 4; ++k)
        threads.emplace_back([&] {
            EXPECT_EQ(pixels(), alone);
            EXPECT_EQ(draw_svg(angle().section, angle().analysis, sheet), svg);
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(draw_pdf(angle().section, angle().analysis, sheet), draw_pdf(angle().section, angle().analysis, sheet));
}

// Lightness as the eye weighs it: growing along amounts, alike on both sides of 0.
TEST(Pictures, ColoursGrowEvenlyAndAreAlikeOnBothSides) {
    const auto light = [](const Colour& c) {
        const auto linear = [](double x) { return x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4); };
        return std::cbrt(0.2126 * linear(c.r) + 0.7152 * linear(c.g) + 0.0722 * linear(c.b));
    };
    const Scale amounts = scale_of(0, 16, false), signs = scale_of(-4, 16, true);
    for (int k = 0; k < 16; ++k) {
        EXPECT_NEAR(light(colour_at(amounts, k + 1)) - light(colour_at(amounts, k)), 0.045, 0.03) << k;
        EXPECT_NEAR(light(colour_at(signs, k)), light(colour_at(signs, -k)), 0.03) << k;
    }
    EXPECT_EQ(signs.low, -4);
    for (const double high : {1e-12, 0.37, 1.0, 99.0, 3.3e9}) {
        const std::size_t ticks = scale_of(0, high, false).ticks.size();
        EXPECT_TRUE(ticks >= 5 && ticks <= 8) << high << " " << ticks;
    }
}

}  // namespace
}  // namespace velquor
