// The validation: sections with values from elsewhere, against the library.
//
//     validate FILE...              a table for each file; fails where a value is out of its tolerance, on the mesh of
//                                   the file or from the section's outline
//     validate --json FILE...       the same, and the runs of "refine", as JSON
//     validate --tables FILE [n]    mesh and results of a section as JSON, with all counts of cells times n
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "outline_run.h"
#include "section_run.h"

using nlohmann::json;

namespace {

void print_line(const Expectation& e, const Comparison& c) {
    const bool relative = !(e.absolute || e.value == 0);
    const double scale = relative ? 100 : 1;
    const char* percent = relative ? "%" : " ";
    std::printf("  %-33s %8s %14.7g %14.7g %+10.4g %s ", e.name.c_str(), e.unit_name.c_str(), c.ours, e.value,
                scale * c.difference, percent);
    if (std::isnan(c.finer))
        std::printf("%12s ", "");
    else
        std::printf("%+10.4g %s ", scale * c.finer, percent);
    if (e.tolerance < 0)
        std::printf("%10s\n", "-");
    else
        std::printf("%8.3g %s %s\n", scale * e.tolerance, percent, c.ok ? "ok" : "OUT");
}

bool print_section(const SectionFile& file) {
    const Outcome out = compare(file);
    std::printf("%s\n%s: %d nodes, %d elements\n", file.title.c_str(), file.path.c_str(), out.run.nnodes,
                out.run.nelems);
    std::printf("  %-42s %14s %14s %12s %12s %10s\n", "", "ours", "theirs", "difference", "half size", "tolerance");
    bool good = true;
    for (size_t i = 0; i < out.values.size(); ++i) {
        print_line(file.expected[i], out.values[i]);
        good = good && out.values[i].ok;
    }
    const auto outline = compare_outline(file);
    if (!outline) return good;
    std::printf("from the outline: %d nodes, %d elements, %d levels\n", outline->run.nnodes, outline->run.nelems,
                outline->levels);
    for (size_t i = 0; i < outline->values.size(); ++i) {
        if (!file.expected[i].outline) continue;
        print_line(file.expected[i], outline->values[i]);
        good = good && outline->values[i].ok;
    }
    return good;
}

json as_json(const SectionFile& file) {
    json out = {{"path", file.path},   {"title", file.title}, {"about", file.about},
                {"units", file.units}, {"study", file.study}, {"size", file.size}};
    if (file.wall > 0) out["layers"] = static_cast<int>(std::lround(file.wall / file.size));
    const Outcome outcome = compare(file);
    const auto outline = compare_outline(file);
    if (outline)
        out["outline"] = {
            {"nodes", outline->run.nnodes}, {"elements", outline->run.nelems}, {"levels", outline->levels}};
    out["nodes"] = outcome.run.nnodes, out["elements"] = outcome.run.nelems, out["bars"] = outcome.run.bars.size();
    for (size_t i = 0; i < outcome.values.size(); ++i) {
        const Expectation& e = file.expected[i];
        const Comparison& c = outcome.values[i];
        json line = {{"name", e.name},
                     {"unit_name", e.unit_name},
                     {"source", e.source},
                     {"note", e.note},
                     {"ours", c.ours},
                     {"theirs", e.value},
                     {"difference", c.difference},
                     {"finer", nullptr},
                     {"order", e.order},
                     {"tolerance", nullptr},
                     {"ok", c.ok},
                     {"relative", !(e.absolute || e.value == 0)}};
        if (e.order > 0) line["finer"] = c.finer;
        if (e.tolerance >= 0) line["tolerance"] = e.tolerance;
        if (outline && e.outline) line["outline"] = {{"ours", outline->values[i].ours}, {"ok", outline->values[i].ok}};
        out["expected"].push_back(line);
    }
    for (const int refine : file.refine) {
        const SectionRun finer = run_section(file, refine);
        json values = json::array();
        for (const Expectation& e : file.expected) values.push_back(value_of(e, finer));
        out["levels"].push_back({{"refine", refine},
                                 {"size", file.size / refine},
                                 {"nodes", finer.nnodes},
                                 {"elements", finer.nelems},
                                 {"ours", values}});
    }
    return out;
}

json tables(const SectionFile& file, int refine) {
    const SectionRun run = run_section(file, refine);
    json out = {{"title", file.title}, {"units", file.units}};
    const auto rows = [](const auto& table, size_t count, size_t columns) {
        json list = json::array();
        for (size_t i = 0; i < count; ++i) {
            json row = json::array();
            for (size_t k = 0; k < columns; ++k) row.push_back(table[k * count + i]);
            list.push_back(row);
        }
        return list;
    };
    const auto nnodes = static_cast<size_t>(run.nnodes), nelems = static_cast<size_t>(run.nelems);
    out["nodes"] = rows(run.nodes, nnodes, 2);        // y, z
    out["elements"] = rows(run.elements, nelems, 4);  // node numbers from 1
    out["materials"] = run.materials;                 // of each element, from 1
    out["nodeout"] = rows(run.nodeout, nnodes, 3);
    out["elemout"] = json::array();  // for each element the 48 values of the library
    for (size_t e = 0; e < nelems; ++e)
        out["elemout"].push_back(std::vector<double>(run.elemout.begin() + 48 * e, run.elemout.begin() + 48 * (e + 1)));
    out["bars"] = json::array();
    for (const VYZTUZE_INFO& bar : run.bars)
        out["bars"].push_back(
            {{"NODE", bar.NODE}, {"ELEMENT", bar.ELEMENT}, {"AREA", bar.AREA}, {"STRESS", bar.STRESS}});
    for (const auto& slot : slot_names()) out["result"][slot.first] = run.result[slot.second];
    return out;
}

int usage() {
    std::fputs("usage: validate [--json] FILE...   or   validate --tables FILE [n]\n", stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    int first = 1;
    const std::string option = argc > 1 && argv[1][0] == '-' ? argv[first++] : "";
    if (first == argc || (!option.empty() && option != "--json" && option != "--tables")) return usage();
    int refine = 1;
    if (option == "--tables" && argc == 4) refine = std::atoi(argv[--argc]);
    if ((option == "--tables" && argc != 3) || refine < 1 || refine > 64) return usage();
    bool good = true;
    try {
        json all = json::array();
        for (int i = first; i < argc; ++i) {
            const SectionFile file = read_section_file(argv[i]);
            if (option == "--tables")
                std::printf("%s\n", tables(file, refine).dump().c_str());
            else if (option == "--json")
                all.push_back(as_json(file));
            else
                good = print_section(file) && good;
        }
        if (option == "--json") std::printf("%s\n", all.dump(1).c_str());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "validate: %s\n", error.what());
        return 2;
    }
    return good ? 0 : 1;
}
