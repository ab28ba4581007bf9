// CPU time and memory of a whole vq_velquor call beside those of the two OD_PARDISO2 calls within it.
//
//   bench_run [largest number of nodes, 300000 by default]
//
// The solver is timed inside the run: the linker puts a clock around it. The least of several runs counts.
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

#include "api/velquor.h"
#include "bench/bordered_systems.h"
#include "bench/meshes.h"
#include "system/sparsematrix.h"

// Names given by `LINKER:--wrap` (see the build file), so that calls of the library's objects come here.
#define VQ_SOLVER_ARGUMENTS                                                                                    \
    std::int64_t *handle, const std::int32_t *maxfct, const std::int32_t *mnum, const std::int32_t *mtype,     \
        const std::int32_t *phase, const std::int32_t *n, const double *a, const std::int32_t *ia,             \
        const std::int32_t *ja, const std::int32_t *perm, const std::int32_t *nrhs, const std::int32_t *iparm, \
        const std::int32_t *msglvl, double *b, double *x, std::int32_t *error
void real_solver(VQ_SOLVER_ARGUMENTS) asm("__real_" VQ_SOLVER_SYMBOL);
void timed_solver(VQ_SOLVER_ARGUMENTS) asm("__wrap_" VQ_SOLVER_SYMBOL);

namespace {

double cpu_seconds() {
    std::timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

double seconds_in_solver = 0;

struct Host {
    std::vector<double> nodes, props, result, nodeout, elemout;
    std::vector<std::int32_t> elements;
    std::vector<VYZTUZE_INFO> bars;
    std::int32_t NNODES, NELEMS;
};

Host host_of(const meshes::Plan& plan, double FPOS = 275) {
    const meshes::Mesh mesh = meshes::make_mesh(plan);
    Host host;
    host.NNODES = mesh.NNODES;
    host.NELEMS = mesh.NELEMS;
    host.nodes.assign(mesh.XY.memory(), mesh.XY.memory() + 2L * mesh.NNODES);
    host.elements.assign(mesh.ELEMNODES.memory(), mesh.ELEMNODES.memory() + 4L * mesh.NELEMS);
    const double steel[VQ_NCOLUMNS] = {2.6, 1, 0, 1, 1, 1, 235, FPOS, 1, 0};
    for (double value : steel) host.props.insert(host.props.end(), mesh.NELEMS, value);
    host.bars = meshes::records_of(mesh.bars, 0.01);
    host.result.assign(VQ_NSLOTS, 0);
    host.nodeout.assign(3L * mesh.NNODES, 0);
    host.elemout.assign(48L * mesh.NELEMS, 0);
    return host;
}

void call(Host& host, int mode) {
    std::int32_t status = 1;
    host.result[VQ_MODE_SLOT] = mode;
    vq_velquor(&status, host.nodes.data(), host.NNODES, host.elements.data(), host.NELEMS, host.props.data(),
               static_cast<std::int32_t>(host.bars.size()), host.bars.data(), host.result.data(), host.nodeout.data(),
               host.elemout.data());
    if (status != VQ_DONE) {
        std::fprintf(stderr, "vq_velquor returned %d\n", static_cast<int>(status));
        std::exit(1);
    }
}

struct Times {
    double run, solver;
};

// The run with the least ratio of several: noise only ever adds.
Times measure(Host& host, int mode) {
    Times best{1e30, 1};
    const int runs = std::clamp(600000 / host.NNODES, 3, 400);
    for (int r = 0; r < runs; ++r) {
        seconds_in_solver = 0;
        const double start = cpu_seconds();
        call(host, mode);
        const Times now{cpu_seconds() - start, seconds_in_solver};
        if (now.run < best.run) best = now;
    }
    return best;
}

long status_kilobytes(const char* field) {
    std::FILE* file = std::fopen("/proc/self/status", "r");
    char line[256];
    long value = 0;
    while (file && std::fgets(line, sizeof line, file))
        if (std::strncmp(line, field, std::strlen(field)) == 0) value = std::atol(line + std::strlen(field));
    if (file) std::fclose(file);
    return value;
}

// Peak of the resident memory while `work` runs, beyond what stood before, in a process of its own.
template <class Prepare, class Work>
double peak_megabytes(Prepare prepare, Work work) {
    int channel[2];
    if (pipe(channel) != 0) return 0;
    if (fork() == 0) {
        auto prepared = prepare();
        malloc_trim(0);  // what the preparation freed is not to serve the work
        if (std::FILE* file = std::fopen("/proc/self/clear_refs", "w")) {  // forget the peak of the preparation
            std::fputs("5", file);
            std::fclose(file);
        }
        const long before = status_kilobytes("VmRSS:");
        work(prepared);
        const long growth = status_kilobytes("VmHWM:") - before;
        _exit(write(channel[1], &growth, sizeof growth) == sizeof growth ? 0 : 1);
    }
    long growth = 0;
    if (read(channel[0], &growth, sizeof growth) != sizeof growth) growth = 0;
    wait(nullptr);
    close(channel[0]);
    close(channel[1]);
    return 1e-3 * static_cast<double>(growth);
}

// The solver's call alone needs its own memory and the tables that it is given: matrix, loads and solution.
double tables_megabytes(const meshes::System& system) {
    const double entries = static_cast<double>(system.M.JA.extent(1)), N = system.M.N;
    return 1e-6 * (12 * entries + 4 * N + 2 * 3 * 8 * N);
}
void solve(meshes::System& system) {
    Table<double, 2> X;
    X.allocate(system.M.N, 3);
    Integer<2> ERR;
    SPARSEMATRIX_FCN::SOLVESYSTEMEQUATIONSYM_NPD(ERR, system.M, system.B, X);
}

// A channel of unequal flanges and walls, 20 high and 10 wide as if in centimetres: no axis is a line of symmetry, so
// that every plastic search runs to its end, and some lines run along a wall. What mode 1 takes beyond mode 0 are the
// searches.
void print_channel(int largest) {
    std::printf("\nunsymmetric channel of quadrilaterals\n%10s %-14s %10s %10s %10s\n", "nodes", "FNEG, FPOS",
                "mode 0 ms", "mode 1 ms", "beyond ms");
    for (int nodes : {165, 2960, 31100}) {
        if (nodes > largest) break;
        for (double FPOS : {235.0, 275.0}) {
            meshes::Plan plan;
            plan.shape = meshes::Shape::channel;
            plan.nodes = nodes;
            plan.aspect = 0.5;
            plan.jitter = 0;
            Host host = host_of(plan, FPOS);
            for (double& coordinate : host.nodes) coordinate *= 20;
            const double elastic = measure(host, VQ_ELASTIC).run, plastic = measure(host, VQ_PLASTIC).run;
            std::printf("%10d %-14s %10.3f %10.3f %10.3f\n", static_cast<int>(host.NNODES),
                        FPOS == 235 ? "equal" : "unequal", 1e3 * elastic, 1e3 * plastic, 1e3 * (plastic - elastic));
        }
    }
}

}  // namespace

void timed_solver(VQ_SOLVER_ARGUMENTS) {
    const double start = cpu_seconds();
    real_solver(handle, maxfct, mnum, mtype, phase, n, a, ia, ja, perm, nrhs, iparm, msglvl, b, x, error);
    seconds_in_solver += cpu_seconds() - start;
}

int main(int argc, char** argv) {
    const int largest = argc > 1 ? std::atoi(argv[1]) : 300000;
    std::printf("whole call over its two solver calls\n%10s %-14s %4s %10s %10s %6s %6s %6s\n", "nodes", "mesh", "mode",
                "call ms", "solver ms", "ratio", "target", "limit");
    for (int nodes : {3000, 30000, 300000}) {
        if (nodes > largest) break;
        for (bool triangles : {false, true}) {
            meshes::Plan plan;
            plan.shape = meshes::Shape::angle;  // unsymmetric, so that the plastic axes are searched to the end
            plan.nodes = nodes;
            plan.triangles = triangles;
            Host host = host_of(plan);
            for (int mode : {VQ_ELASTIC, VQ_PLASTIC}) {
                const Times t = measure(host, mode);
                std::printf("%10d %-14s %4d %10.2f %10.2f %6.2f %6.1f %6.1f\n", static_cast<int>(host.NNODES),
                            triangles ? "triangles" : "quadrilaterals", mode, 1e3 * t.run, 1e3 * t.solver,
                            t.run / t.solver, mode == VQ_PLASTIC ? 1.6 : 1.4, mode == VQ_PLASTIC ? 2.2 : 1.8);
            }
        }
    }

    print_channel(largest);

    meshes::Plan plan;
    plan.nodes = std::min(largest, 100000);
    Host plain = host_of(plan);
    plan.bars = 500;
    Host reinforced = host_of(plan);
    const Times without = measure(plain, VQ_ELASTIC), with = measure(reinforced, VQ_ELASTIC);
    std::printf("\n500 bars on %d elements: %.1f ms with, %.1f ms without, outside the solver %.1f and %.1f ms\n",
                static_cast<int>(plain.NELEMS), 1e3 * with.run, 1e3 * without.run, 1e3 * (with.run - with.solver),
                1e3 * (without.run - without.solver));
    plan.bars = 0;
    plan.nodes = largest;
    for (bool triangles : {false, true}) {
        plan.triangles = triangles;
        const double whole = peak_megabytes([&] { return host_of(plan); }, [](Host& host) { call(host, VQ_ELASTIC); });
        const double tables = tables_megabytes(meshes::base_system(meshes::make_mesh(plan)));
        const double alone = tables +
                             peak_megabytes([&] { return meshes::base_system(meshes::make_mesh(plan)); }, solve) -
                             24e-6 * plan.nodes;
        std::printf(
            "peak memory at %d nodes, %s: call %.0f MB beyond the host's tables, solver call alone %.0f MB, ratio "
            "%.2f\n",
            largest, triangles ? "triangles" : "quadrilaterals", whole, alone, whole / alone);
    }
    return 0;
}
