// CPU time and memory of OD_PARDISO2 on the bordered base system of a section, beside CHOLMOD on the same KG with one
// node held: analysis, factorisation and solution of the three load columns, settings as that library starts with.
//
//   bench_solver [largest number of nodes, 1000000 by default] [nodes from which on a case is measured, 0 by default]
//
// Both sides run in turn within one process, and the least of their times in it counts for each, so that a ratio means
// something on a noisy machine. How memory happens to be laid out in a process can slow an optimised BLAS down by half:
// there are several, and what is printed are the least and the largest of their times and ratios. CPU time is that of
// the whole process with all its threads. CHOLMOD's time depends on the BLAS that the machine has; name an optimised
// one by the usual means of the system.
#include <cholmod.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iterator>
#include <vector>

#include "bench/bordered_systems.h"
#include "bench/meshes.h"
#include "linalg/ondrel64.h"

namespace {

using meshes::Mesh;
using meshes::Plan;
using meshes::Shape;
using meshes::System;

double cpu_seconds() {
    std::timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

void solve(const System& system, Table<double, 2>& X) {
    std::int64_t handle[64] = {};
    std::int32_t iparm[64] = {};
    iparm[0] = 1;
    const std::int32_t one = 1, mtype = -2, phase = 13, none = 0;
    const auto nrhs = static_cast<std::int32_t>(system.B.extent(2));
    std::int32_t error = 0;
    // b is not written to, as iparm(6) is 0
    OD_PARDISO2(handle, &one, &one, &mtype, &phase, &system.M.N, system.M.A.memory(), system.M.IA.memory(),
                system.M.JA.memory(), &none, &nrhs, iparm, &none, const_cast<double*>(system.B.memory()), X.memory(),
                &error);
    if (error != 0) {
        std::fprintf(stderr, "OD_PARDISO2 returned %d\n", static_cast<int>(error));
        std::exit(1);
    }
}

// KG without the bars' nodes and without the last node of the mesh, for CHOLMOD. The upper triangle by rows is the
// lower one by columns.
struct Held {
    std::vector<int> p, i;
    std::vector<double> x, b;
};

Held hold_one_node(const Mesh& mesh, const meshes::Warping& warping) {
    std::vector<int> number(static_cast<std::size_t>(mesh.NNODES) + 1, 0);
    for (const meshes::Bar& bar : mesh.bars) number[bar.NODE] = -1;
    std::int32_t held = mesh.NNODES;
    while (number[held] < 0) --held;
    number[held] = -1;
    int n = 0;
    for (std::int32_t i = 1; i <= mesh.NNODES; ++i)
        if (number[i] == 0) number[i] = n++;
    Held h;
    h.p.push_back(0);
    for (std::int32_t i = 1; i <= mesh.NNODES; ++i) {
        if (number[i] < 0) continue;
        for (std::int32_t q = warping.KG.IA(i); q < warping.KG.IA(i + 1); ++q) {
            const int j = number[warping.KG.JA(q)];
            if (j < 0) continue;
            h.i.push_back(j);
            h.x.push_back(warping.KG.A(q));
        }
        h.p.push_back(static_cast<int>(h.i.size()));
    }
    for (int k = 1; k <= 3; ++k)
        for (std::int32_t i = 1; i <= mesh.NNODES; ++i)
            if (number[i] >= 0) h.b.push_back(warping.RIGHTSIDE(i, k));
    return h;
}

void solve_by_cholmod(Held& h, cholmod_common& common) {
    const std::size_t n = h.p.size() - 1;
    cholmod_sparse A{};
    A.nrow = A.ncol = n;
    A.nzmax = h.i.size();
    A.p = h.p.data();
    A.i = h.i.data();
    A.x = h.x.data();
    A.stype = -1;
    A.itype = CHOLMOD_INT;
    A.xtype = CHOLMOD_REAL;
    A.dtype = CHOLMOD_DOUBLE;
    A.sorted = A.packed = 1;
    cholmod_dense b{};
    b.nrow = b.d = n;
    b.ncol = 3;
    b.nzmax = h.b.size();
    b.x = h.b.data();
    b.xtype = CHOLMOD_REAL;
    b.dtype = CHOLMOD_DOUBLE;
    cholmod_factor* L = cholmod_analyze(&A, &common);
    cholmod_factorize(&A, L, &common);
    cholmod_dense* x = cholmod_solve(CHOLMOD_A, L, &b, &common);
    if (x == nullptr || common.status != CHOLMOD_OK) {
        std::fprintf(stderr, "CHOLMOD returned %d\n", common.status);
        std::exit(1);
    }
    cholmod_free_dense(&x, &common);
    cholmod_free_factor(&L, &common);
}

struct Times {
    std::int32_t nodes;
    double ours, theirs;
};

// Runs work in a process of its own, which begins with nothing left over from other cases, and returns its result.
template <class Result, class Work>
Result in_child(const Work& work) {
    Result result{};
    int channel[2];
    if (pipe(channel) != 0) std::exit(1);
    const pid_t child = fork();
    if (child == 0) {
        result = work();
        const bool sent = write(channel[1], &result, sizeof result) == sizeof result;
        _exit(sent ? 0 : 1);
    }
    close(channel[1]);
    const bool received = child > 0 && read(channel[0], &result, sizeof result) == sizeof result;
    close(channel[0]);
    if (child > 0) waitpid(child, nullptr, 0);
    if (!received) std::exit(1);
    return result;
}

// The least CPU seconds of one solution by each side. A sample repeats short solutions until it lasts a millisecond.
Times measure_in_turn(const Plan& plan) {
    const Mesh mesh = meshes::make_mesh(plan);
    const System system = meshes::base_system(mesh);
    Held held = hold_one_node(mesh, meshes::assemble(mesh, nullptr));
    Table<double, 2> X;
    X.allocate(system.M.N, 3);
    cholmod_common common;
    cholmod_start(&common);

    const auto sample = [](int repeats, const auto& run) {
        const double start = cpu_seconds();
        for (int r = 0; r < repeats; ++r) run();
        return (cpu_seconds() - start) / repeats;
    };
    const auto ours = [&] { solve(system, X); };
    const auto theirs = [&] { solve_by_cholmod(held, common); };
    Times least{mesh.NNODES, sample(1, ours), sample(1, theirs)};
    const double both = least.ours + least.theirs;
    const int repeats = std::max(1, static_cast<int>(1e-3 / both));
    const int samples = std::clamp(static_cast<int>(0.5 / (both * repeats)), 2, 200);
    for (int s = 0; s < samples; ++s) {
        least.ours = std::min(least.ours, sample(repeats, ours));
        least.theirs = std::min(least.theirs, sample(repeats, theirs));
    }
    cholmod_finish(&common);
    return least;
}

std::vector<Times> measure(const Plan& plan) {
    std::vector<Times> all(plan.nodes < 100000 ? 5 : 3);
    for (Times& t : all) t = in_child<Times>([&] { return measure_in_turn(plan); });
    return all;
}

struct Range {
    double least = INFINITY, largest = 0;
};
template <class Of>
Range range(const std::vector<Times>& all, const Of& of) {
    Range r;
    for (const Times& t : all) r = {std::min(r.least, of(t)), std::max(r.largest, of(t))};
    return r;
}

// Peak memory in bytes of a process that does nothing but solve the system of a plan, its matrix and loads included.
double peak_memory(const Plan& plan) {
    const System system = meshes::base_system(meshes::make_mesh(plan));
    Table<double, 2> X;
    X.allocate(system.M.N, 3);
    if (std::FILE* reset = std::fopen("/proc/self/clear_refs", "w")) {  // forget the peak of the assembly
        std::fputs("5", reset);
        std::fclose(reset);
    }
    solve(system, X);
    double peak = NAN;
    if (std::FILE* status = std::fopen("/proc/self/status", "r")) {
        char line[256];
        while (std::fgets(line, sizeof line, status) != nullptr)
            if (std::strncmp(line, "VmHWM:", 6) == 0) peak = 1024 * std::atof(line + 6);
        std::fclose(status);
    }
    return peak;
}

struct Size {
    std::int32_t nodes;
    double target, limit;  // of the ratio: aimed at, and not to be passed
};
constexpr Size SIZES[] = {
    {300, 1.2, 1.8}, {3000, 0.85, 1.3}, {30000, 0.55, 0.85}, {300000, 0.6, 0.85}, {1000000, 0.8, 1.0}};

struct Kind {
    const char* name;
    Shape shape;
    bool triangles, shuffled;
    double jitter = 0, aspect = 1, bars = 0;  // bars for each node
};
constexpr Kind KINDS[] = {
    {"quadrilaterals", Shape::square, false, false},
    {"quadrilaterals", Shape::square, false, true},
    {"triangles, jittered", Shape::square, true, false, 0.2},
    {"triangles, jittered", Shape::square, true, true, 0.2},
};
constexpr Kind OTHER_KINDS[] = {
    {"quadrilaterals, jittered", Shape::square, false, true, 0.2},
    {"quadrilaterals 8 : 1", Shape::square, false, false, 0, 8},
    {"angle, quadrilaterals", Shape::angle, false, true},
    {"angle, triangles", Shape::angle, true, false, 0.2},
    {"hollow, quadrilaterals", Shape::hollow, false, false},
    {"hollow, triangles", Shape::hollow, true, true, 0.2},
    {"quadrilaterals, 1 % bars", Shape::square, false, true, 0, 1, 0.01},
    {"triangles, 1 % bars", Shape::square, true, false, 0.2, 1, 0.01},
};

Plan plan_of(const Kind& kind, std::int32_t nodes) {
    return {kind.shape,  nodes,      static_cast<std::int32_t>(kind.bars * nodes), kind.triangles, kind.shuffled,
            kind.jitter, kind.aspect};
}

Times measure_and_print(const Kind& kind, std::int32_t nodes, const Size* size) {
    const std::vector<Times> all = measure(plan_of(kind, nodes));
    const Range ours = range(all, [](const Times&t) { return t.ours; }),
                theirs = range(all, [](const Times&t) { return t.theirs; }),
                ratio = range(all, [](const Times&t) { return t.ours / t.theirs; });
    std::printf("%8d  %-25s %-8s %10.4f %10.4f  %10.4f %10.4f  %5.2f %5.2f", static_cast<int>(all[0].nodes), kind.name,
                kind.shuffled ? "random" : "natural", 1e3 * ours.least, 1e3 * ours.largest, 1e3 * theirs.least,
                1e3 * theirs.largest, ratio.least, ratio.largest);
    if (size != nullptr) std::printf("  %5.2f  %5.2f", size->target, size->limit);
    std::printf("\n");
    std::fflush(stdout);
    return {all[0].nodes, ours.least, theirs.least};
}

}  // namespace

int main(int argc, char** argv) {
    const double largest = argc > 1 ? std::atof(argv[1]) : 1e6, smallest = argc > 2 ? std::atof(argv[2]) : 0;

    for (const Size& size : SIZES) {
        if (size.nodes < 300000 || size.nodes > largest || size.nodes < smallest) continue;
        for (const Kind& kind : KINDS) {
            std::printf("%8d  %-25s %-8s peak memory %5.0f MB", static_cast<int>(size.nodes), kind.name,
                        kind.shuffled ? "random" : "natural",
                        1e-6 * in_child<double>([&] { return peak_memory(plan_of(kind, size.nodes)); }));
            std::printf(size.nodes == 1000000 ? "  (at most 1300)\n" : "\n");
            std::fflush(stdout);
        }
    }

    std::printf(
        "   nodes  mesh                      numbers        ours, ms, to        CHOLMOD, ms, to     ratio to target  "
        "limit\n");
    for (const std::int32_t nodes : {4, 25}) {
        if (smallest > nodes) continue;
        for (const Kind& kind : KINDS) measure_and_print(kind, nodes, nullptr);
        std::printf("          (at most %s ms)\n", nodes == 4 ? "0.015" : "0.030");
    }
    Times at_3000[std::size(KINDS)] = {};
    for (const Size& size : SIZES) {
        if (size.nodes > largest || size.nodes < smallest) continue;
        for (std::size_t k = 0; k < std::size(KINDS); ++k) {
            const Times t = measure_and_print(KINDS[k], size.nodes, &size);
            if (size.nodes == 3000) at_3000[k] = t;
            if (size.nodes == 1000000 && at_3000[k].nodes > 0)
                std::printf(
                    "          time grows from 3000 nodes on with their number to the power %.2f (at most 1.25)\n",
                    std::log(t.ours / at_3000[k].ours) / std::log(static_cast<double>(t.nodes) / at_3000[k].nodes));
        }
        if (size.nodes == 3000 || size.nodes == 30000)
            for (const Kind& kind : OTHER_KINDS) measure_and_print(kind, size.nodes, &size);
    }
    return 0;
}
