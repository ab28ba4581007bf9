// The study of vq_levels: how near its values come, and whether its bounds hold.
//
//     levels_study [--random N] [--worst] [--only ROW] FOLDER      FOLDER: the sections of the validation
//
// Prints a table in Markdown; all of it but the times is the same in every run. ROW is one of smooth, sharp, bounds,
// oblong, stress, time, random. --worst adds the values that are furthest off.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "rows.h"

namespace {

constexpr size_t WORST = 20;

// Sorts by what `amount` tells, the largest first.
template <class Amount>
void print_worst(const char* title, std::vector<Value> values, Amount amount) {
    if (values.empty()) return;
    std::stable_sort(values.begin(), values.end(),
                     [&](const Value& a, const Value& b) { return amount(a) > amount(b); });
    std::printf("\n%s\n", title);
    for (size_t i = 0; i < std::min(WORST, values.size()); ++i) {
        const Value& v = values[i];
        std::printf("%-34s seed %4d %-9s ratio %7.3f error %.1e  levels", v.section.c_str(), static_cast<int>(v.seed),
                    name_of(v.slot), ratio_of(v), v.relative_error());
        for (const double value : v.of_level) std::printf(" %.9g", value);
        std::printf("  value %.9g bound %.3g reference %.9g +- %.1g\n", v.value, v.bound, v.reference,
                    v.reference_bound);
    }
    // values of each slot that fail, and values with a slot at all
    std::vector<int> fails(VQ_NSLOTS), all(VQ_NSLOTS);
    for (const Value& v : values) ++all[v.slot], fails[v.slot] += verdict_of(v) == Verdict::fails;
    std::printf("fail:");
    for (int k = 0; k < VQ_NSLOTS; ++k)
        if (fails[k] > 0) std::printf(" %s %d of %d", name_of(k), fails[k], all[k]);
    std::printf("\n");
}

int usage() {
    std::fputs("usage: levels_study [--random N] [--worst] [--only ROW] FOLDER\n", stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    int meshes = 1000;
    bool worst = false;
    std::string only, folder;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--worst")
            worst = true;
        else if (argument == "--random" && i + 1 < argc)
            meshes = std::atoi(argv[++i]);
        else if (argument == "--only" && i + 1 < argc)
            only = argv[++i];
        else if (argument[0] != '-' && folder.empty())
            folder = argument;
        else
            return usage();
    }
    if (folder.empty() || meshes < 1) return usage();
    const auto wanted = [&](const char* row) { return only.empty() || only == row; };
    const auto by_error = [](const Value& v) { return v.relative_error(); };
    try {
        std::vector<Value> smooth, sharp, bounds, random;
        std::printf("| what | goal | must | measured |\n| --- | --- | --- | --- |\n");
        if (wanted("smooth"))
            for (const Row& row : smooth_rows(smooth)) print(row);
        if (wanted("sharp")) print(sharp_row(sharp));
        if (wanted("bounds"))
            for (const Row& row : bound_rows(folder, bounds)) print(row);
        if (wanted("oblong")) print(oblong_row(bounds));
        if (wanted("stress")) print(stress_row());
        if (wanted("time"))
            for (const Row& row : time_rows()) print(row);
        if (wanted("random")) print(random_row(meshes, random));
        if (worst) {
            print_worst("smooth outlines, by error", smooth, by_error);
            print_worst("sharp corners, by error", sharp, by_error);
            print_worst("sections and 200 random meshes, by error over bound", bounds, ratio_of);
            print_worst("random meshes, by error over bound", random, ratio_of);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "levels_study: %s\n", error.what());
        return 2;
    }
    return 0;
}
