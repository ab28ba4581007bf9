// Prints a fingerprint of every output of twenty sections and of 400 small turned ones, plain and on three levels, the
// same from every build and on every machine: `./run bits` compares them.
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "section_builder.h"

namespace {

// FNV-1a over the bytes of the tables.
template <class T>
std::uint64_t fingerprint(const std::vector<T>& table, std::uint64_t hash) {
    std::vector<unsigned char> bytes(table.size() * sizeof(T));
    if (!bytes.empty()) std::memcpy(bytes.data(), table.data(), bytes.size());
    for (const unsigned char byte : bytes) hash = (hash ^ byte) * 0x100000001b3u;
    return hash;
}

void print_fingerprint(const char* kind, int number, Section section, int mode) {
    section.groups = 2;
    for (std::size_t e = 0; e < section.materials.size(); ++e)
        section.materials[e] = e % 3 == 1 ? Material{0.7, 0.4, 0, 1, 2, 0, 2.35, 2.75, 7.85}
                                          : Material{2.6, 1, 0, 1, 1, 1, 2.35, 2.75, 7.85};
    const Results r = run(section, mode);
    std::uint64_t hash = fingerprint(r.slots, 0xcbf29ce484222325u);
    for (const auto* table : {&r.nodeout, &r.elemout}) hash = fingerprint(*table, hash);
    std::printf("%s %3d  status %d  %016" PRIx64 "\n", kind, number, r.status, fingerprint(r.bars, hash));
    if (section.y.size() > 1000) return;
    Host levels = host_of(section, mode, 3);
    call(levels);
    hash = fingerprint(levels.SHARP, fingerprint(levels.RESULT, 0xcbf29ce484222325u));
    for (const auto* table : {&levels.BOUNDS, &levels.NODEOUT, &levels.ELEMOUT}) hash = fingerprint(*table, hash);
    std::printf("%s %3d  levels %d  %016" PRIx64 "\n", kind, number, levels.REACHED, hash);
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
    Section s;
    for (int j = 0; j < height; ++j)
        for (int i = 0; i < width; ++i)
            if (inside(i, j)) add_rectangle(s, 0.3 * i, 0.4 * j, 0.3 * (i + 1), 0.4 * (j + 1), 1, 1);
    const double square = turn * turn, cosine = (1 - square) / (1 + square), sine = 2 * turn / (1 + square);
    for (std::size_t i = 0; i < s.y.size(); ++i) {
        const double y = s.y[i], z = s.z[i];
        s.y[i] = cosine * y - sine * z, s.z[i] = sine * y + cosine * z;
    }
    return triangles ? as_triangles(s) : s;
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
                const bool shuffled = nodes == 700;
                const std::uint64_t seed = static_cast<std::uint64_t>(++number);
                const meshes::Mesh mesh =
                    meshes::make_mesh({shape, nodes, shuffled ? 25 : 0, triangles, shuffled, 0.15, 1, 1, seed});
                print_fingerprint("section", number, section_of(mesh, 0.05), VQ_PLASTIC);
            }
    for (const int pieces : {2, 5})
        print_fingerprint("section", ++number,
                          section_of(meshes::make_mesh({meshes::Shape::square, 400, 0, false, false, 0.15, 1, pieces})),
                          VQ_PLASTIC_TWO);
    for (int n = 1; n <= 400; ++n) print_fingerprint("turned", n, turned(n % 3, n % 2 == 0, n / 401.0), VQ_PLASTIC);
    return 0;
}
