// Prints a fingerprint of every output of twenty sections and of 400 small turned ones, the same from every build and
// on every machine: `./run bits` compares them.
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "api/velquor.h"
#include "bench/meshes.h"

namespace {

// FNV-1a over the bytes of the tables.
template <class T>
std::uint64_t fingerprint(const std::vector<T>& table, std::uint64_t hash) {
    std::vector<unsigned char> bytes(table.size() * sizeof(T));
    if (!bytes.empty()) std::memcpy(bytes.data(), table.data(), bytes.size());
    for (const unsigned char byte : bytes) hash = (hash ^ byte) * 0x100000001b3u;
    return hash;
}

struct Section {
    std::vector<double> nodes;           // (NNODES, 2)
    std::vector<std::int32_t> elements;  // (NELEMS, 4)
    std::vector<VYZTUZE_INFO> bars;
};

void print_fingerprint(const char* kind, int number, Section section, int mode) {
    const std::size_t NNODES = section.nodes.size() / 2, NELEMS = section.elements.size() / 4;
    std::vector<double> props(NELEMS * VQ_NCOLUMNS);
    for (std::size_t e = 0; e < NELEMS; ++e) {
        const bool soft = e % 3 == 1;
        const double row[] = {
            soft ? 0.7 : 2.6, soft ? 0.4 : 1.0, 0, 1, soft ? 2.0 : 1.0, soft ? 0.0 : 1.0, 2.35, 2.75, 7.85, 0};
        for (std::size_t k = 0; k < VQ_NCOLUMNS; ++k) props[k * NELEMS + e] = row[k];
    }
    std::vector<double> result(VQ_NSLOTS), nodeout(3 * NNODES), elemout(48 * NELEMS);
    result[VQ_MODE_SLOT] = mode;
    std::int32_t status = 2;
    vq_velquor(&status, section.nodes.data(), static_cast<std::int32_t>(NNODES), section.elements.data(),
               static_cast<std::int32_t>(NELEMS), props.data(), static_cast<std::int32_t>(section.bars.size()),
               section.bars.data(), result.data(), nodeout.data(), elemout.data());
    std::uint64_t hash = fingerprint(result, 0xcbf29ce484222325u);
    hash = fingerprint(nodeout, hash);
    hash = fingerprint(elemout, hash);
    hash = fingerprint(section.bars, hash);
    std::printf("%s %3d  status %d  %016" PRIx64 "\n", kind, number, status, hash);
}

Section meshed(const meshes::Plan& plan) {
    const meshes::Mesh mesh = meshes::make_mesh(plan);
    return {{mesh.XY.memory(), mesh.XY.memory() + 2L * mesh.NNODES},
            {mesh.ELEMNODES.memory(), mesh.ELEMNODES.memory() + 4L * mesh.NELEMS},
            meshes::records_of(mesh.bars, 0.05)};
}

// A tee, an angle of unequal legs or an unsymmetric shape, cells of one lattice, in quadrilaterals or triangles. It is
// turned by 2 atan(turn), of which cosine and sine follow without the C library: the same nodes on any machine.
Section turned(int shape, bool triangles, double turn) {
    constexpr int width = 7, height = 9;
    const auto inside = [shape](int i, int j) {
        if (shape == 0) return i == 3 || j == height - 1;
        if (shape == 1) return i == 0 || j == 0;
        return i == 2 || (j == 0 && i > 2) || (j > 6 && i < 5);
    };
    const double square = turn * turn, c = (1 - square) / (1 + square), s = 2 * turn / (1 + square);
    std::vector<double> y, z;
    std::vector<std::vector<std::int32_t>> corners;
    for (int j = 0; j <= height; ++j) {
        for (int i = 0; i <= width; ++i) {
            y.push_back(c * (0.3 * i) - s * (0.4 * j));
            z.push_back(s * (0.3 * i) + c * (0.4 * j));
            const auto n = static_cast<std::int32_t>(y.size());
            if (i == width || j == height || !inside(i, j)) continue;
            const std::int32_t right = n + 1, above = n + width + 1, beyond = above + 1;
            if (triangles) {
                corners.push_back({n, right, beyond, beyond});
                corners.push_back({n, beyond, above, above});
            } else {
                corners.push_back({n, right, beyond, above});
            }
        }
    }
    Section section;
    section.nodes = y;
    section.nodes.insert(section.nodes.end(), z.begin(), z.end());
    for (std::size_t k = 0; k < 4; ++k)
        for (const auto& element : corners) section.elements.push_back(element[k]);
    return section;
}

// What the C library makes of its own atan2, cos and sin, which it chooses by the processor.
void print_c_library() {
    std::vector<double> values;
    for (int n = 1; n <= 30000; ++n) {
        const double x = n / 20000.0;
        values.insert(values.end(), {std::atan2(x, 0.7), std::cos(x), std::sin(x)});
    }
    std::printf("C library  %016" PRIx64 "\n", fingerprint(values, 0xcbf29ce484222325u));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], "c-library") == 0) {
        print_c_library();
        return 0;
    }
    int number = 0;
    for (const meshes::Shape shape : {meshes::Shape::square, meshes::Shape::angle, meshes::Shape::hollow})
        for (const bool triangles : {false, true})
            for (const int nodes : {40, 700, 9000}) {
                meshes::Plan plan;
                plan.shape = shape;
                plan.triangles = triangles;
                plan.nodes = nodes;
                plan.shuffled = nodes == 700;
                plan.bars = nodes == 700 ? 25 : 0;
                plan.seed = static_cast<std::uint64_t>(++number);
                print_fingerprint("section", number, meshed(plan), VQ_PLASTIC);
            }
    for (const int pieces : {2, 5}) {
        meshes::Plan plan;
        plan.nodes = 400;
        plan.pieces = pieces;
        print_fingerprint("section", ++number, meshed(plan), VQ_PLASTIC_TWO);
    }
    for (int n = 1; n <= 400; ++n) print_fingerprint("turned", n, turned(n % 3, n % 2 == 0, n / 401.0), VQ_PLASTIC);
    return 0;
}
