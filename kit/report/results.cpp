#include <algorithm>
#include <cmath>

#include "kit/analysis/extent.h"
#include "kit/report/report.h"
#include "kit/section/loads.h"
#include "kit/section/vectors.h"
#include "kit/section/words.h"
#include "kit/show/lines.h"
#include "kit/show/show.h"

namespace velquor {

namespace {

constexpr Column::Kind TEXT = Column::Kind::text, NUMBER = Column::Kind::number, SYMBOL = Column::Kind::symbol;

Table table_of_values(const Values& values) {
    Table table = {"",
                   {{SYMBOL, "Symbol", ""},
                    {NUMBER, "Value", ""},
                    {TEXT, "Bound", ""},
                    {TEXT, "Unit", ""},
                    {TEXT, "Meaning", ""},
                    {TEXT, "Slots", "of the library"}},
                   {}};
    std::string group;
    for (const Line& line : lines_of(values, false)) {
        const Quantity& q = *line.quantity;
        if (group != q.group) table.rows.push_back({{group = q.group}, true});
        table.rows.push_back({{q.symbol, line.value, line.bound == "exact" ? line.bound : "± " + line.bound, line.unit,
                               q.meaning, q.slots}});
    }
    return table;
}

Table table_of_shares(const Values& v) {
    Table table = {"What the materials take up of the section",
                   {{TEXT, "Material", ""}, {NUMBER, "Area", raised(v.length + "2")}, {NUMBER, "Mass", "kg/m"}},
                   {}};
    for (const Share& share : v.materials)
        table.rows.push_back(
            {{share.material, figures({share.area, 0}), share.mass > 0 ? figures({share.mass, 0}) : "–"}});
    return table;
}

Table table_of_missing(const std::vector<Missing>& missing) {
    Table table = {"Not given", {{TEXT, "Values", ""}, {TEXT, "Reason", ""}}, {}};
    for (const Missing& m : missing) {
        std::string symbols;
        for (const std::string& symbol : m.symbols)
            symbols += (symbols.empty() ? "" : ", ") + letter_and_index(symbol).first + letter_and_index(symbol).second;
        table.rows.push_back({{symbols, m.reason}});
    }
    return table;
}

// Stresses are told to so many digits as a check of them needs.
std::string short_figures(double value) { return figures({value, 1e-3 * std::abs(value)}); }

// What each load does at its sign.
struct Does {
    const char *key, *positive, *negative;
};
constexpr Does DOES[] = {{"N", "tension", "compression"},
                         {"My", "tension at +z", "tension at -z"},
                         {"Mz", "tension at -y", "tension at +y"},
                         {"Vy", "along +y", "along -y"},
                         {"Vz", "along +z", "along -z"},
                         {"T", "turning from y to z", "turning from z to y"},
                         {"Tw", "torque of warping, from y to z", "torque of warping, from z to y"},
                         {"B", "bimoment", "bimoment"}};

// "N = 100 kN, tension; My = -5 kN·m, tension at -z."
std::string sentence_of(const Section& s, const Load& load) {
    std::string text;
    for (const LoadKey& key : load_keys()) {
        const double value = load.*key.value;
        if (value == 0) continue;
        text += (text.empty() ? "" : "; ") + std::string(key.name) + " = " + figures({value, 0}) + " " +
                raised(load_unit(key, s.length, s.force));
        for (const Does& does : DOES)
            if (std::string(does.key) == key.name)
                text += std::string(", ") + (value > 0 ? does.positive : does.negative);
    }
    return text.empty() ? "No load acts." : text + ".";
}

double size_of(const Mesh& mesh) {
    const Extent y = extent_of(mesh, 0), z = extent_of(mesh, PI / 2);
    return std::max(y.high - y.low, z.high - z.low);
}

// Sums of the stresses over the section beside what was given. What is next to nothing beside all loads together is
// rounding.
Table table_of_resultants(const Report& report, const LoadResult& result) {
    const Section& s = report.section;
    const double length = size_of(report.analysis.mesh);
    Load given = result.load;
    given.T += given.Tw;
    double force = 0;  // of all loads
    for (const LoadKey& key : load_keys())
        force = std::max(force, std::abs(given.*key.value) / std::pow(length, key.length));
    Table table = {"Equilibrium: the loads, and the sums of the stresses over the finest mesh",
                   {{TEXT, "", ""}},
                   {{{"given"}}, {{"summed"}}}};
    for (const LoadKey& key : load_keys()) {
        if (key.value == &Load::Tw) continue;
        table.columns.push_back(
            {NUMBER, key.value == &Load::T ? "T+Tw" : key.name, raised(load_unit(key, s.length, s.force))});
        const double rounding = 1e-6 * force * std::pow(length, key.length), sum = result.resultants.*key.value;
        table.rows[0].cells.push_back(figures({given.*key.value, 0}));
        table.rows[1].cells.push_back(std::abs(sum) <= rounding ? "0" : figures({sum, 1e-5 * std::abs(sum)}));
    }
    return table;
}

Table table_of_peaks(const Section& s, const LoadResult& result, double size) {
    const auto coordinate = [&](double x) { return text_beside(size, x, 5); };
    const std::string stress = raised(s.force + "/" + s.length + "2");
    Table table = {"Largest stresses",
                   {{TEXT, "", ""},
                    {NUMBER, "Value", ""},
                    {TEXT, "Unit", ""},
                    {NUMBER, "at\u00a0y", s.length},
                    {NUMBER, "at\u00a0z", s.length},
                    {TEXT, "Remark", ""}},
                   {}};
    const auto add = [&](const char* name, const Peak& peak, const std::string& unit) {
        const bool nowhere = peak.value == 0;
        std::string remark;
        if (peak.unlimited)
            remark = "no limit at (" + coordinate(peak.corner.y) + ", " + coordinate(peak.corner.z) +
                     "), a sharp corner; this is the largest elsewhere";
        if (unit.empty() && peak.value > 1) remark = "more than its strength" + (remark.empty() ? "" : "; " + remark);
        table.rows.push_back({{name, short_figures(peak.value), unit, nowhere ? "" : coordinate(peak.at.y),
                               nowhere ? "" : coordinate(peak.at.z), remark}});
    };
    for (const MaterialStresses& m : result.materials) {
        table.rows.push_back({{m.material}, true});
        add("axial,\u00a0largest", m.tension, stress);
        add("axial,\u00a0smallest", m.compression, stress);
        add("shear", m.shear, stress);
        add("von\u00a0Mises", m.von_mises, stress);
        if (m.has_strength)
            add("utilisation", m.utilisation, "");
        else
            table.rows.push_back({{"utilisation", "–", "", "", "", "its strength is not given"}});
    }
    return table;
}

// Axial stresses in bars that are points.
Table table_of_bar_stresses(const Section& s, const LoadResult& result, double size) {
    const auto coordinate = [&](double x) { return text_beside(size, x, 5); };
    Table table = {"Axial stress in bars that are points",
                   {{TEXT, "Bar", ""},
                    {NUMBER, "y", s.length},
                    {NUMBER, "z", s.length},
                    {TEXT, "Material", ""},
                    {NUMBER, "Axial stress", raised(s.force + "/" + s.length + "2")}},
                   {}};
    std::size_t point = 0;
    for (std::size_t k = 0; k < s.bars.size(); ++k) {
        const Bar& bar = s.bars[k];
        if (!bar.as_point || point >= result.bars.size()) continue;
        table.rows.push_back({{place_of_bar(s, k), coordinate(bar.at.y), coordinate(bar.at.z), bar.material,
                               short_figures(result.bars[point++])}});
    }
    return table;
}

}  // namespace

void tell_values(const Report& report, std::vector<Block>& blocks) {
    const Values& v = report.values;
    blocks.push_back(Heading{1, "Values"});
    std::string text = "In " + v.length + " and " + v.force + "; " +
                       (std::isfinite(v.reached) ? accuracy_of(v) : "no bounds, for there was one level alone") + ". ";
    text += "Left out are values that repeat another one in this section.";
    if (v.materials.size() > 1 && !v.reference.empty())
        text += " Transformed values are by the moduli of " + in_quotes(v.reference) + ".";
    blocks.push_back(Paragraph{text});
    blocks.push_back(table_of_values(v));
    if (v.materials.size() > 1) blocks.push_back(table_of_shares(v));
    if (const auto missing = missing_of(v); !missing.empty()) blocks.push_back(table_of_missing(missing));
}

void tell_stresses(const Report& report, std::vector<Block>& blocks) {
    blocks.push_back(Heading{1, "Stresses"});
    const double size = size_of(report.analysis.mesh);
    for (const LoadResult& result : report.loads) {
        const Load& load = result.load;
        blocks.push_back(Heading{2, "Load set " + (load.name.empty() ? std::string("without a name") : load.name)});
        blocks.push_back(Paragraph{sentence_of(report.section, load)});
        blocks.push_back(table_of_peaks(report.section, result, size));
        blocks.push_back(table_of_resultants(report, result));

        if (!result.bars.empty()) blocks.push_back(table_of_bar_stresses(report.section, result, size));
        std::vector<Panel> panels;
        const auto add = [&](Shown what) {
            panels.push_back({});
            panels.back().what = what;
            panels.back().load = load;
        };
        const bool axial = load.N != 0 || load.My != 0 || load.Mz != 0 || load.B != 0;
        const bool shear = load.Vy != 0 || load.Vz != 0 || load.T != 0 || load.Tw != 0;
        if (axial) add(Shown::axial);
        if (shear) add(Shown::shear);
        if (axial && shear) add(Shown::mises);
        add_figures(report, "Stresses under " + (load.name.empty() ? std::string("this load set") : load.name), panels,
                    blocks);
    }
}

}  // namespace velquor
