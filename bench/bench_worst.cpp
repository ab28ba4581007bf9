// Sections made to take long, each at two sizes: CPU time of the whole call and the exponent with which it grows. No
// section may take a time that grows faster than about n^1.5.
//
//   bench_worst [scale, 1 by default: sizes are multiplied by it]
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <vector>

#include "api/velquor.h"
#include "bench/meshes.h"

namespace {

struct Tables {
    std::vector<double> y, z;
    std::vector<std::vector<std::int32_t>> elements;
    std::vector<VYZTUZE_INFO> bars;
    double FNEG = 235, FPOS = 275, GMOD = 1;
    std::vector<double> GMODS;  // of each element, where they differ
};

std::int32_t add_node(Tables& t, double y, double z) {
    t.y.push_back(y);
    t.z.push_back(z);
    return static_cast<std::int32_t>(t.y.size());
}

void add_grid(Tables& t, double y0, double z0, double dy, double dz, int ny, int nz) {
    const std::int32_t first = static_cast<std::int32_t>(t.y.size()) + 1;
    for (int j = 0; j <= nz; ++j)
        for (int i = 0; i <= ny; ++i) add_node(t, y0 + dy * i, z0 + dz * j);
    for (int j = 0; j < nz; ++j)
        for (int i = 0; i < ny; ++i) {
            const std::int32_t a = first + i + j * (ny + 1);
            t.elements.push_back({a, a + 1, a + ny + 2, a + ny + 1});
        }
}

void add_bar(Tables& t, double y, double z, std::int32_t host, double RADIUS, double GMODUL) {
    VYZTUZE_INFO bar{};
    bar.NODE = add_node(t, y, z);
    bar.ELEMENT = host;
    bar.AREA = 1e-4;
    bar.EMODUL = 10;
    bar.GMODUL = GMODUL;
    bar.RADIUS = RADIUS;
    t.bars.push_back(bar);
}

// A bar in every n-th element, from the first on, between its first and third node.
void add_bars(Tables& t, std::int32_t n, double RADIUS, double GMODUL) {
    const auto elements = static_cast<std::int32_t>(t.elements.size());
    for (std::int32_t e = 1; e <= elements; e += n) {
        const std::int32_t a = t.elements[e - 1][0] - 1, c = t.elements[e - 1][2] - 1;
        add_bar(t, (t.y[a] + t.y[c]) / 2, (t.z[a] + t.z[c]) / 2, e, RADIUS, GMODUL);
    }
}

struct Outcome {
    double seconds;
    int status;
};

Outcome call(const Tables& t) {
    std::vector<double> nodes = t.y, props;
    nodes.insert(nodes.end(), t.z.begin(), t.z.end());
    std::vector<std::int32_t> elements;
    for (std::size_t k = 0; k < 4; ++k)
        for (const auto& e : t.elements) elements.push_back(e[k]);
    for (double value : {2.6, t.GMOD, 0.0, 1.0, 1.0, 1.0, t.FNEG, t.FPOS, 1.0, 0.0})
        props.insert(props.end(), t.elements.size(), value);
    std::copy(t.GMODS.begin(), t.GMODS.end(), props.begin() + static_cast<std::ptrdiff_t>(t.elements.size()));
    std::vector<VYZTUZE_INFO> bars = t.bars;
    std::vector<double> result(VQ_NSLOTS), nodeout(3 * t.y.size()), elemout(48 * t.elements.size());
    result[VQ_MODE_SLOT] = VQ_PLASTIC;
    std::int32_t status = 1;
    std::timespec start{}, end{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &start);
    vq_velquor(&status, nodes.data(), static_cast<std::int32_t>(t.y.size()), elements.data(),
               static_cast<std::int32_t>(t.elements.size()), props.data(), static_cast<std::int32_t>(bars.size()),
               bars.data(), result.data(), nodeout.data(), elemout.data());
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &end);
    return {static_cast<double>(end.tv_sec - start.tv_sec) + 1e-9 * static_cast<double>(end.tv_nsec - start.tv_nsec),
            static_cast<int>(status)};
}

Tables square(int n, double size = 1) {
    Tables t;
    const int side = static_cast<int>(std::sqrt(n));
    add_grid(t, 0, 0, size / side, size / side, side, side);
    return t;
}

Tables shuffled(int n) {
    meshes::Plan plan;
    plan.nodes = n;
    plan.shuffled = true;
    const meshes::Mesh mesh = meshes::make_mesh(plan);
    Tables t;
    for (std::int32_t i = 1; i <= mesh.NNODES; ++i) add_node(t, mesh.XY(i, 1), mesh.XY(i, 2));
    for (std::int32_t e = 1; e <= mesh.NELEMS; ++e)
        t.elements.push_back({mesh.ELEMNODES(e, 1), mesh.ELEMNODES(e, 2), mesh.ELEMNODES(e, 3), mesh.ELEMNODES(e, 4)});
    return t;
}

void measure(const char* name, int n, const std::function<Tables(int)>& make) {
    const Tables small = make(n / 4), large = make(n);
    const Outcome a = call(small), b = call(large);
    std::printf("%-58s %9zu nodes %9zu bars %9.3f s  status %d  exponent %.2f\n", name, large.y.size(),
                large.bars.size(), b.seconds, b.status, std::log(b.seconds / a.seconds) / std::log(4.0));
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    const double scale = argc > 1 ? std::atof(argv[1]) : 1;
    const auto size = [scale](int n) { return static_cast<int>(n * scale); };

    measure("plastic balance that is flat: a gap in the middle", size(100000), [](int n) {
        const int side = static_cast<int>(std::sqrt(n / 2));
        Tables t;
        add_grid(t, 0, 0, 1.0 / side, 1.0 / side, side, side);
        add_grid(t, 0, 1e3, 1.0 / side, 1.0 / side, side, side);
        t.FNEG = t.FPOS = 1e-3;
        return t;
    });
    measure("strengths of which one is 0", size(100000), [](int n) {
        Tables t = square(n);
        t.FNEG = 0;
        return t;
    });
    measure("coordinates of 1e8", size(100000), [](int n) { return square(n, 1e8); });
    measure("coordinates of 1e150", size(100000), [](int n) { return square(n, 1e150); });
    measure("pieces of one element that do not touch", size(40000), [](int n) {
        Tables t;
        for (int p = 0; p < n / 4; ++p) add_grid(t, 2.0 * (p % 97), 2.0 * (p / 97), 1, 1, 1, 1);
        return t;
    });
    measure("pieces of four elements that do not touch", size(36000), [](int n) {
        Tables t;
        for (int p = 0; p < n / 9; ++p) add_grid(t, 3.0 * (p % 97), 3.0 * (p / 97), 1, 1, 2, 2);
        return t;
    });
    measure("all bars in one element", size(20000), [](int n) {
        Tables t = square(n / 2);
        for (int b = 0; b < n / 2; ++b) add_bar(t, 1e-3 * (b + 1) / n, 1e-3 * (b % 7 + 1) / 8, 1, 0.1, 4);
        return t;
    });
    measure("a bar in every second element, all radii over the section", size(20000), [](int n) {
        Tables t = square(n / 2);
        add_bars(t, 2, 10, 4);
        return t;
    });
    measure("bars without shear modulus", size(20000), [](int n) {
        Tables t = square(n * 4 / 5);
        add_bars(t, 4, 0, 0);
        return t;
    });
    measure("a node of all elements: a star of triangles", size(50000), [](int n) {
        Tables t;
        const std::int32_t centre = add_node(t, 0, 0);
        for (int i = 0; i < n; ++i) add_node(t, std::cos(2 * M_PI * i / n), std::sin(2 * M_PI * i / n));
        for (int i = 0; i < n; ++i) t.elements.push_back({centre, i + 2, (i + 1) % n + 2, (i + 1) % n + 2});
        return t;
    });
    measure("a strip of one element in thickness", size(400000), [](int n) {
        Tables t;
        add_grid(t, 0, 0, 1, 1, n / 2, 1);
        return t;
    });
    measure("shear moduli of 0", size(100000), [](int n) {
        Tables t = square(n);
        t.GMOD = 0;
        return t;
    });
    measure("shear moduli below 0", size(20000), [](int n) {
        Tables t = square(n);
        t.GMOD = -1;
        return t;
    });
    for (const double contrast : {1e-6, 1e-10})
        measure(contrast == 1e-6 ? "stiff inclusions at 1e6, one shear modulus below 0"
                                 : "stiff inclusions at 1e10, one shear modulus below 0",
                size(20000), [contrast](int n) {
                    Tables t = square(n);
                    const auto side = static_cast<std::size_t>(std::sqrt(n));
                    for (std::size_t e = 0; e < t.elements.size(); ++e)
                        t.GMODS.push_back(e / side % 8 < 4 && e % side % 8 < 4 ? 1 : contrast);
                    t.GMODS[side / 2] = -1;
                    return t;
                });
    for (const double filler : {1e-13, 1e-16})
        measure(filler == 1e-13 ? "stiff inclusions at 1e13, one shear modulus below 0"
                                : "stiff inclusions at 1e16, none below 0",
                size(filler == 1e-13 ? 20000 : 160000), [filler](int n) {
                    Tables t = square(n);
                    const auto side = static_cast<std::size_t>(std::sqrt(n));
                    for (std::size_t e = 0; e < t.elements.size(); ++e)
                        t.GMODS.push_back(e / side % 4 < 2 && e % side % 4 < 2 ? 1 : filler);
                    if (filler == 1e-13) t.GMODS[side / 2] = -1;
                    return t;
                });
    measure("shear moduli below 0 on every other element, at random", size(100000), [](int n) {
        Tables t = square(n);
        meshes::Random random{7};
        for (std::size_t e = 0; e < t.elements.size(); ++e) t.GMODS.push_back(meshes::below(random, 2) == 0 ? 1 : -1);
        return t;
    });
    measure("numbers at random", size(1000000), shuffled);
    return 0;
}
