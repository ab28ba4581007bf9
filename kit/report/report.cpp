#include "kit/report/report.h"

#include <cmath>

#include "kit/analysis/extent.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"
#include "kit/show/lines.h"
#include "kit/show/show.h"

namespace velquor {

namespace {

const char* const METHOD =
    "Warping of torsion and of shear is found by two-dimensional finite elements on the section's own mesh; areas, "
    "moments and plastic values follow from the same elements and from the outlines themselves. The section is "
    "calculated on several levels, each with every element of the one before cut in four, and from the levels follow "
    "each value on an infinitely fine mesh and a bound: the distance within which that value should lie.";

const char* const BOUNDS =
    "A bound is an estimate that rests on how the values of the levels approach each other; it is not a proof, and "
    "says "
    "nothing of how well the section that was entered describes the real one. \"exact\" stands where nothing but "
    "rounding is left.";

const char* const AXES =
    "y points to the right and z upwards, x towards the viewer; u and v are the principal axes, u the one about which "
    "the second moment is greater, at the angle α from y, counter-clockwise. Iy belongs to bending about y, under "
    "loads "
    "along z.";

const char* const FORCES =
    "N acts at the centroid C, and tension is positive. My and Mz turn about the axes through C by the right-hand "
    "rule: "
    "My > 0 pulls at +z, Mz > 0 presses at +y. Vy and Vz act along +y and +z through the shear centre M. T is the "
    "torque "
    "of free twist and Tw that of restrained warping, both from y to z; B is the bimoment. Axial stresses are positive "
    "in tension; shear stresses act on the face towards the viewer. Von Mises' stress is √(σ² + 3 τ²).";

void tell_findings(const Report& report, std::vector<Block>& blocks) {
    blocks.push_back(Heading{1, "Checks and warnings"});
    Table table = {"Found; places are those of the file, counted from 0, as in the tables of the input",
                   {{Column::Kind::text, "Place", ""}, {Column::Kind::text, "Warning", ""}},
                   {}};
    for (const Finding& finding : report.findings) {
        std::string message = finding.message;
        if (!finding.remedy.empty()) message += "; " + finding.remedy;
        table.rows.push_back({{finding.place.empty() ? "the section" : finding.place, message}});
    }
    for (const LoadResult& result : report.loads) {
        for (const MaterialStresses& m : result.materials)
            if (m.has_strength && m.utilisation.value > 1)
                table.rows.push_back(
                    {{"load set " + result.load.name,
                      "stresses in " + in_quotes(m.material) + " are more than its strength, by linear elasticity"}});
        if (!result.warning.empty()) table.rows.push_back({{"load set " + result.load.name, result.warning}});
    }
    const bool unlimited = report.analysis.mesh.has_corners;
    if (unlimited)
        table.rows.push_back({{"corners",
                               "sharp re-entrant corners, or corners where materials meet: shear stresses "
                               "have no limit there, and no mesh gives it; draw the fillets where there are "
                               "some"}});
    if (!report.values.met && std::isfinite(report.values.reached))
        table.rows.push_back({{"accuracy", accuracy_of(report.values)}});
    if (table.rows.empty())
        blocks.push_back(Paragraph{"Outlines, parts, bars, materials and the mesh were checked; nothing was found."});
    else
        blocks.push_back(std::move(table));
}

void tell_method(const Report& report, std::vector<Block>& blocks) {
    const Values& v = report.values;
    blocks.push_back(Heading{1, "How it was calculated"});
    blocks.push_back(Paragraph{METHOD});
    blocks.push_back(Paragraph{BOUNDS});
    Table table = {"", {{Column::Kind::text, "", ""}, {Column::Kind::text, "", ""}}, {}};
    table.rows.push_back(
        {{"Coarsest mesh", std::to_string(v.nodes) + " nodes, " + std::to_string(v.elements) + " elements"}});
    table.rows.push_back({{"Levels", std::to_string(v.levels)}});
    table.rows.push_back({{"Accuracy wished", text_of(v.wished) + " of a value's natural size"}});
    table.rows.push_back({{"Accuracy reached", std::isfinite(v.reached) ? bound_text({1, v.reached}) +
                                                                              ", the largest bound, that of " + v.worst
                                                                        : "no bound from one level"}});
    table.rows.push_back({{"Program", "Velquor " + version_text() + ", in 64-bit numbers; meshed by Gmsh"}});
    blocks.push_back(std::move(table));
    blocks.push_back(Heading{2, "Axes and signs"});
    blocks.push_back(Paragraph{AXES});
    blocks.push_back(Paragraph{FORCES});
}

}  // namespace

void add_figures(const Report& report, const std::string& caption, const std::vector<Panel>& panels,
                 std::vector<Block>& blocks) {
    constexpr double WIDE = 2.4;  // as in sheets, whose columns are then one
    const Extent y = extent_of(report.analysis.mesh, 0), z = extent_of(report.analysis.mesh, PI / 2);
    const bool apart = y.high - y.low > WIDE * (z.high - z.low);
    const auto add = [&](std::vector<Panel> of, bool last) {
        Figure figure = {last ? caption : "", {std::move(of)}};
        figure.sheet.named = false;
        blocks.push_back(std::move(figure));
    };
    if (!apart && !panels.empty()) return add(panels, true);
    for (std::size_t k = 0; k < panels.size(); ++k) add({panels[k]}, k + 1 == panels.size());
}

Report report_on(const Section& section, const Analysis& analysis, const std::string& length,
                 const std::string& force) {
    Report report = {
        section, analysis, values_of(section, analysis), check(section, analysis.mesh), {}, section.notes, "", "",
        "",      ""};
    report.values =
        in_units(report.values, length.empty() ? section.length : length, force.empty() ? section.force : force);
    for (const Load& load : section.loads) report.loads.push_back(result_of(section, analysis, load));
    return report;
}

Document document_of(const Report& report) {
    Document d;
    d.title = report.section.name.empty() ? "Section" : printable(report.section.name);
    d.subtitle = "Values of a cross-section. Input: " + report.input + ", in " + report.section.length + " and " +
                 report.section.force;
    d.fields = {{"Project", report.project}, {"Prepared by", report.by}, {"Checked by", ""}, {"Date", report.date}};
    d.producer = "Velquor " + version_text();
    d.section = &report.section;
    d.analysis = &report.analysis;
    tell_input(report, d.blocks);
    tell_values(report, d.blocks);
    if (!report.loads.empty()) tell_stresses(report, d.blocks);
    tell_findings(report, d.blocks);
    tell_method(report, d.blocks);
    return d;
}

}  // namespace velquor
