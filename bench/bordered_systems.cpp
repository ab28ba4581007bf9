#include "bench/bordered_systems.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace meshes {

namespace {

// A sample of the quadrature rule: shape values, gradients, and determinant times weight.
struct Sample {
    double N[4], dNdy[4], dNdz[4], weight;
};

// The four samples of a quadrilateral. Gradients belong to the point opposite to that of the shape values.
void sample_quad(const double (&y)[4], const double (&z)[4], Sample (&samples)[4]) {
    const double g = 0.5773502691896258;
    for (int p = 0; p < 4; ++p) {
        const double r = p == 1 || p == 2 ? g : -g, s = p >= 2 ? g : -g;
        const double C[4][4] = {
            {0, 1 + s, r - s, -1 - r}, {-1 - s, 0, 1 - r, r + s}, {s - r, r - 1, 0, 1 - s}, {1 + r, -r - s, s - 1, 0}};
        Sample& sample = samples[p] = {
            {(1 - s) * (1 - r) / 4, (1 - s) * (1 + r) / 4, (1 + r) * (1 + s) / 4, (1 - r) * (1 + s) / 4}, {}, {}, 0};
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) {
                sample.dNdy[i] += 0.125 * C[i][j] * z[j];
                sample.dNdz[i] -= 0.125 * C[i][j] * y[j];
            }
        for (int i = 0; i < 4; ++i) sample.weight += y[i] * sample.dNdy[i];
        for (int i = 0; i < 4; ++i) {
            sample.dNdy[i] /= sample.weight;
            sample.dNdz[i] /= sample.weight;
        }
    }
}

// The one sample of a triangle, at its centroid.
void sample_triangle(const double (&y)[4], const double (&z)[4], Sample& sample) {
    sample = {{1.0 / 3, 1.0 / 3, 1.0 / 3, 0}, {}, {}, 0};
    sample.weight = ((z[1] - z[2]) * y[0] + (z[2] - z[0]) * y[1] + (z[0] - z[1]) * y[2]) / 2;
    for (int i = 0; i < 3; ++i) {
        sample.dNdy[i] = (z[(i + 1) % 3] - z[(i + 2) % 3]) / (2 * sample.weight);
        sample.dNdz[i] = (y[(i + 2) % 3] - y[(i + 1) % 3]) / (2 * sample.weight);
    }
}

bool is_triangle(const Mesh& mesh, std::int32_t e) { return mesh.ELEMNODES(e, 3) == mesh.ELEMNODES(e, 4); }

void create_structure(const Mesh& mesh, SPARSEMATRIX& KG) {
    std::vector<std::vector<std::int32_t>> rows(static_cast<std::size_t>(mesh.NNODES) + 1);
    for (std::int32_t i = 1; i <= mesh.NNODES; ++i) rows[i] = {i};
    for (std::int32_t e = 1; e <= mesh.NELEMS; ++e)
        for (int c = 1; c <= 4; ++c)
            for (int d = 1; d <= 4; ++d) {
                const std::int32_t i = mesh.ELEMNODES(e, c), j = mesh.ELEMNODES(e, d);
                if (i < j && std::find(rows[i].begin(), rows[i].end(), j) == rows[i].end()) rows[i].push_back(j);
            }
    KG.N = mesh.NNODES;
    KG.IA.allocate(KG.N + 1);
    KG.IA(1) = 1;
    for (std::int32_t i = 1; i <= KG.N; ++i) KG.IA(i + 1) = KG.IA(i) + static_cast<std::int32_t>(rows[i].size());
    KG.JA.allocate(KG.IA(KG.N + 1) - 1);
    KG.A.allocate(KG.IA(KG.N + 1) - 1);
    for (std::int32_t i = 1; i <= KG.N; ++i) {
        std::sort(rows[i].begin(), rows[i].end());
        std::copy(rows[i].begin(), rows[i].end(), KG.JA.memory() + KG.IA(i) - 1);
    }
}

double& entry(SPARSEMATRIX& M, std::int32_t i, std::int32_t j) {
    std::int32_t q = M.IA(i);
    while (M.JA(q) != j) ++q;
    return M.A(q);
}

// The bars' rows are assigned, then each of the first columns is divided by its largest magnitude.
void finish_constraints(const Mesh& mesh, Table<double, 2>& C) {
    for (const Bar& bar : mesh.bars) {
        const double w = bar.EMODUL * bar.AREA;
        C(bar.NODE, 1) = w;
        C(bar.NODE, 2) = w * mesh.XY(bar.NODE, 1);
        C(bar.NODE, 3) = w * mesh.XY(bar.NODE, 2);
    }
    for (int k = 1; k <= 3; ++k) {
        double largest = 0;
        for (std::int32_t i = 1; i <= mesh.NNODES; ++i) largest = std::max(largest, std::fabs(C(i, k)));
        for (std::int32_t i = 1; i <= mesh.NNODES; ++i) C(i, k) /= largest;
    }
}

// KG bordered by columns of the constraints and, where tie is set, by the bars' rows.
SPARSEMATRIX bordered(const Mesh& mesh, const Warping& warping, int constraints, bool tie) {
    struct Entry {
        std::int32_t j;
        double value;
    };
    std::vector<std::vector<Entry>> border(static_cast<std::size_t>(mesh.NNODES) + 1);
    std::vector<double> diagonal(border.size(), 0.0);
    std::int32_t j = mesh.NNODES + constraints;
    for (const Bar& bar : mesh.bars) {
        if (!tie) break;
        ++j;
        for (int c = 1; c <= (is_triangle(mesh, bar.ELEMENT) ? 3 : 4); ++c)
            border[mesh.ELEMNODES(bar.ELEMENT, c)].push_back({j, bar.SHAPE(c)});
        border[bar.NODE].push_back({j, -1.0});
        diagonal[bar.NODE] = bar.GMODUL * 0.9 * bar.AREA;
    }
    SPARSEMATRIX M;
    M.N = j;
    M.IA.allocate(M.N + 1);
    M.IA(1) = 1;
    for (std::int32_t i = 1; i <= M.N; ++i) {
        std::int32_t length = 1;
        if (i <= mesh.NNODES)
            length =
                warping.KG.IA(i + 1) - warping.KG.IA(i) + constraints + static_cast<std::int32_t>(border[i].size());
        M.IA(i + 1) = M.IA(i) + length;
    }
    M.JA.allocate(M.IA(M.N + 1) - 1);
    M.A.allocate(M.IA(M.N + 1) - 1);
    std::int32_t q = 0;
    const auto put = [&](std::int32_t column, double value) {
        M.JA(++q) = column;
        M.A(q) = value;
    };
    for (std::int32_t i = 1; i <= mesh.NNODES; ++i) {
        for (std::int32_t p = warping.KG.IA(i); p < warping.KG.IA(i + 1); ++p)
            put(warping.KG.JA(p), warping.KG.A(p) + (warping.KG.JA(p) == i ? diagonal[i] : 0.0));
        for (int k = 1; k <= constraints; ++k) put(mesh.NNODES + k, warping.CONSTRAINT(i, k));
        for (const Entry& b : border[i]) put(b.j, b.value);
    }
    for (std::int32_t i = mesh.NNODES + 1; i <= M.N; ++i) put(i, 0.0);
    return M;
}

}  // namespace

Warping assemble(const Mesh& mesh, const double* q) {
    Warping warping;
    create_structure(mesh, warping.KG);
    warping.RIGHTSIDE.allocate(mesh.NNODES, 3);
    warping.RIGHTSIDEQ.allocate(mesh.NNODES);
    warping.CONSTRAINT.allocate(mesh.NNODES, 3);
    for (std::int32_t e = 1; e <= mesh.NELEMS; ++e) {
        const bool triangle = is_triangle(mesh, e);
        const int n = triangle ? 3 : 4;
        std::int32_t node[4];
        double y[4], z[4];
        for (int c = 0; c < 4; ++c) {
            node[c] = mesh.ELEMNODES(e, c + 1);
            y[c] = mesh.XY(node[c], 1);
            z[c] = mesh.XY(node[c], 2);
        }
        Sample samples[4];
        if (triangle)
            sample_triangle(y, z, samples[0]);
        else
            sample_quad(y, z, samples);
        for (int p = 0; p < (triangle ? 1 : 4); ++p) {
            const Sample& at = samples[p];
            const double wG = mesh.GMOD(e) * at.weight, wE = mesh.EMOD(e) * at.weight;
            double yp = 0, zp = 0, qp = 0;
            for (int i = 0; i < n; ++i) {
                yp += at.N[i] * y[i];
                zp += at.N[i] * z[i];
                if (q != nullptr) qp += at.N[i] * q[node[i] - 1];
            }
            for (int i = 0; i < n; ++i) {
                for (int j = 0; j < n; ++j)
                    if (node[i] <= node[j])
                        entry(warping.KG, node[i], node[j]) += (at.dNdz[i] * at.dNdz[j] + at.dNdy[i] * at.dNdy[j]) * wG;
                warping.RIGHTSIDE(node[i], 1) -= (yp * at.dNdz[i] - zp * at.dNdy[i]) * wG;
                warping.RIGHTSIDE(node[i], 2) -= at.dNdy[i] * wG;
                warping.RIGHTSIDE(node[i], 3) -= at.dNdz[i] * wG;
                warping.RIGHTSIDEQ(node[i]) -= at.N[i] * wE * qp;
                warping.CONSTRAINT(node[i], 1) += at.N[i] * wE;
                warping.CONSTRAINT(node[i], 2) += at.N[i] * (wE * yp);
                warping.CONSTRAINT(node[i], 3) += at.N[i] * (wE * zp);
            }
        }
    }
    return warping;
}

System base_system(const Mesh& mesh) {
    Warping warping = assemble(mesh, nullptr);
    finish_constraints(mesh, warping.CONSTRAINT);
    System system{bordered(mesh, warping, 3, true), {}};
    system.B.allocate(system.M.N, 3);
    for (int k = 1; k <= 3; ++k) std::copy_n(warping.RIGHTSIDE.column(k), mesh.NNODES, system.B.column(k));
    return system;
}

System second_system(const Mesh& mesh, const double* q) {
    Warping warping = assemble(mesh, q);
    // The constraints are normalised, and the bars' rows assigned, once for each pass of a run's assembly.
    finish_constraints(mesh, warping.CONSTRAINT);
    finish_constraints(mesh, warping.CONSTRAINT);
    System system{bordered(mesh, warping, 1, false), {}};
    system.B.allocate(system.M.N, 2);
    std::copy_n(warping.RIGHTSIDEQ.memory(), mesh.NNODES, system.B.column(1));
    std::copy_n(warping.RIGHTSIDE.column(1), mesh.NNODES, system.B.column(2));
    return system;
}

}  // namespace meshes
