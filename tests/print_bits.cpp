// Prints a fingerprint of every output of twenty sections, the same from every build: `./run bits` compares builds.
#include <cinttypes>
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

std::uint64_t fingerprint_of(const meshes::Plan& plan, int mode) {
    const meshes::Mesh mesh = meshes::make_mesh(plan);
    const std::vector<double> nodes(mesh.XY.memory(), mesh.XY.memory() + 2L * mesh.NNODES);
    const std::vector<std::int32_t> elements(mesh.ELEMNODES.memory(), mesh.ELEMNODES.memory() + 4L * mesh.NELEMS);
    const auto NELEMS = static_cast<std::size_t>(mesh.NELEMS);
    std::vector<double> props(NELEMS * VQ_NCOLUMNS);
    for (std::size_t e = 0; e < NELEMS; ++e) {
        const bool soft = e % 3 == 1;
        const double row[] = {
            soft ? 0.7 : 2.6, soft ? 0.4 : 1.0, 0, 1, soft ? 2.0 : 1.0, soft ? 0.0 : 1.0, 2.35, 2.75, 7.85, 0};
        for (std::size_t k = 0; k < VQ_NCOLUMNS; ++k) props[k * NELEMS + e] = row[k];
    }
    std::vector<VYZTUZE_INFO> bars = meshes::records_of(mesh.bars, 0.05);
    std::vector<double> result(VQ_NSLOTS), nodeout(3 * static_cast<std::size_t>(mesh.NNODES)), elemout(48 * NELEMS);
    result[VQ_MODE_SLOT] = mode;
    std::int32_t status = 2;
    vq_velquor(&status, nodes.data(), mesh.NNODES, elements.data(), mesh.NELEMS, props.data(),
               static_cast<std::int32_t>(bars.size()), bars.data(), result.data(), nodeout.data(), elemout.data());
    std::uint64_t hash = fingerprint(std::vector<std::int32_t>{status}, 0xcbf29ce484222325u);
    hash = fingerprint(result, hash);
    hash = fingerprint(nodeout, hash);
    hash = fingerprint(elemout, hash);
    return fingerprint(bars, hash);
}

}  // namespace

int main() {
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
                std::printf("section %2d  %016" PRIx64 "\n", number, fingerprint_of(plan, VQ_PLASTIC));
            }
    for (const int pieces : {2, 5}) {
        meshes::Plan plan;
        plan.nodes = 400;
        plan.pieces = pieces;
        std::printf("section %2d  %016" PRIx64 "\n", ++number, fingerprint_of(plan, VQ_PLASTIC_TWO));
    }
    return 0;
}
