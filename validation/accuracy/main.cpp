// The study of the kit: how near values from outlines come, whether their bounds hold, and how long it takes.
//
//     accuracy_study [--worst] [--only ROW] [--command VELQUOR] FOLDER      FOLDER: the outlines of the validation
//     accuracy_study --meshes N [FIRST]                                     meshes N random outlines from seed FIRST on
//
// Prints a table in Markdown; all of it but the times is the same in every run. ROW is one of errors, bounds, wish,
// stresses, times, process. --worst adds the values that are furthest off. With --meshes each mesh is checked, and the
// seed is told on the error stream before, for the case that the mesher ends the process.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "kit/mesh/mesh.h"
#include "mesh_check.h"
#include "random_section.h"
#include "rows.h"

namespace {

constexpr int OUTLINES = 200;
constexpr std::size_t WORST = 30;

template <class Amount>
void print_worst(const char* title, std::vector<Value> values, Amount amount) {
    std::stable_sort(values.begin(), values.end(),
                     [&](const Value& a, const Value& b) { return amount(a) > amount(b); });
    std::printf("\n%s\n", title);
    for (std::size_t i = 0; i < std::min(WORST, values.size()); ++i) {
        const Value& v = values[i];
        std::printf("%-28s %-12s ratio %7.3f error %.1e  value %.9g bound %.3g reference %.9g +- %.1g\n",
                    v.section.c_str(), name_of(v.slot), ratio_of(v), v.relative_error(), v.value, v.bound, v.reference,
                    v.reference_bound);
    }
}

int mesh_random(int meshes, std::uint64_t first) {
    int wrong = 0;
    std::size_t largest = 0;
    for (std::uint64_t seed = first; seed < first + static_cast<std::uint64_t>(meshes); ++seed) {
        std::fprintf(stderr, "\r%llu", static_cast<unsigned long long>(seed));
        std::fflush(stderr);
        std::string fault;
        try {
            const velquor::Section section = random_section(seed);
            const velquor::Mesh mesh = velquor::mesh_of(section);
            fault = fault_of(section, mesh, areas_of_parts(section));
            largest = std::max(largest, mesh.nodes.size());
        } catch (const std::exception& error) {
            fault = error.what();
        }
        if (fault.empty()) continue;
        ++wrong;
        std::printf("seed %llu: %s\n", static_cast<unsigned long long>(seed), fault.c_str());
        std::fflush(stdout);
    }
    std::fprintf(stderr, "\n");
    std::printf("%d random outlines meshed, %d wrong, largest mesh %zu nodes\n", meshes, wrong, largest);
    return wrong == 0 ? 0 : 1;
}

int usage() {
    std::fputs(
        "usage: accuracy_study [--worst] [--only ROW] [--command VELQUOR] FOLDER\n"
        "   or  accuracy_study --meshes N [FIRST]\n",
        stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    bool worst = false;
    std::string only, folder, command;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--meshes" && i == 1 && (argc == 3 || argc == 4))
            return mesh_random(std::atoi(argv[2]), argc == 4 ? std::strtoull(argv[3], nullptr, 10) : 1);
        if (argument == "--worst")
            worst = true;
        else if (argument == "--only" && i + 1 < argc)
            only = argv[++i];
        else if (argument == "--command" && i + 1 < argc)
            command = argv[++i];
        else if (argument[0] != '-' && folder.empty())
            folder = argument;
        else
            return usage();
    }
    if (folder.empty()) return usage();
    const auto wanted = [&](const char* row) { return only.empty() || only == row; };
    try {
        const std::vector<Case> sections = outlines(folder), others = shapes_and_profiles();
        std::vector<Beside> validation, all;
        if (wanted("errors") || wanted("bounds") || wanted("wish"))
            for (const Case& c : sections) validation.push_back(beside_reference(c));
        all = validation;
        if (wanted("errors") || wanted("wish"))
            for (const Case& c : others) all.push_back(beside_reference(c));
        std::vector<Value> errors, bounds;
        std::printf("| what | goal | must | measured |\n| --- | --- | --- | --- |\n");
        if (wanted("errors"))
            for (const Row& row : error_rows(all, errors)) print(row);
        if (wanted("bounds"))
            for (const Row& row : bound_rows(validation, OUTLINES, bounds)) print(row);
        if (wanted("wish"))
            for (const Row& row : wish_rows(all)) print(row);
        if (wanted("stresses"))
            for (const Row& row : stress_rows(others)) print(row);
        if (wanted("times"))
            for (const Row& row : catalogue_rows()) print(row);
        if (wanted("process") && !command.empty()) print(process_row(command));
        if (worst) {
            print_worst("by error", errors, [](const Value& v) { return v.relative_error(); });
            print_worst("by error over bound", bounds, ratio_of);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "accuracy_study: %s\n", error.what());
        return 2;
    }
    return 0;
}
