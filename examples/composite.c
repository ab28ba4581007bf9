/* Two materials: a welded steel girder under a slab of concrete. Units are N, mm and kg. Each value is printed beside
 * the one by hand and has to meet it. docs/host_guide.md quotes this file. */
#include <math.h>
#include <stdio.h>

#include "velquor.h"

/* Cells of 5 mm in a frame of 500 x 400: below 300 mm the girder, flanges 200 x 20 and a web of 10 (two cells), above
 * it the slab of 100. Cells of both materials share the nodes between them: that is the bond. */
enum { STEP = 5, NY = 100, NZ = 80, MOST_NODES = (NY + 1) * (NZ + 1), MOST_ELEMENTS = NY * NZ };
enum { NOTHING, STEEL, CONCRETE };
static int material_of(int i, int j) {
    if (j >= 60) return CONCRETE;
    const int reach = j < 4 || j >= 56 ? 20 : 1; /* half of the flange's width, of the web's */
    return i >= NY / 2 - reach && i < NY / 2 + reach ? STEEL : NOTHING;
}

static int32_t number[NZ + 1][NY + 1], ELEMENTS[4 * MOST_ELEMENTS];
static double NODES[2 * MOST_NODES], PROPS[VQ_NCOLUMNS * MOST_ELEMENTS];
static double NODEOUT[3 * MOST_NODES], ELEMOUT[48 * MOST_ELEMENTS];

static int wrong;
static void compare(const char* name, double value, double by_hand) {
    printf("%-42s %10.6g   by hand %10.6g\n", name, value, by_hand);
    if (!(fabs(value - by_hand) <= 1e-9 * fabs(by_hand))) wrong = 1;
}

int main(void) {
    /* Steel is the reference: its MATFLAG is 1. That of concrete is 0.5, so that it counts in the plastic sums and
     * never becomes the reference, whichever element comes first. FNEG is the strength in compression here, FPOS that
     * in tension: neither may be 0. */
    static const double materials[3][VQ_NCOLUMNS] = {
        {0}, {210000, 81000, 0, 1, 1, 1, 355, 355, 7.85e-6, 0}, {33000, 13750, 0, 1, 1, 0.5, 17, 1.9, 2.5e-6, 0}};
    int32_t NNODES = 0, NELEMS = 0;
    for (int j = 0; j < NZ; ++j)
        for (int i = 0; i < NY; ++i) NELEMS += material_of(i, j) != NOTHING;
    for (int j = 0, e = 0; j < NZ; ++j) {
        for (int i = 0; i < NY; ++i) {
            if (material_of(i, j) == NOTHING) continue;
            for (int k = 0; k < 4; ++k) { /* (0, 0), (1, 0), (1, 1), (0, 1): counter-clockwise */
                int32_t* n = &number[j + k / 2][i + (k == 1 || k == 2)];
                if (*n == 0) *n = ++NNODES;
                ELEMENTS[k * NELEMS + e] = *n;
            }
            for (int k = 0; k < VQ_NCOLUMNS; ++k) PROPS[k * NELEMS + e] = materials[material_of(i, j)][k];
            ++e;
        }
    }
    for (int j = 0; j <= NZ; ++j) {
        for (int i = 0; i <= NY; ++i) {
            if (number[j][i] == 0) continue;
            NODES[number[j][i] - 1] = STEP * i, NODES[NNODES + number[j][i] - 1] = STEP * j;
        }
    }

    int32_t STATUS = 1;
    double RESULT[VQ_NSLOTS] = {0};
    RESULT[VQ_MODE_SLOT] = VQ_PLASTIC;
    vq_velquor(&STATUS, NODES, NNODES, ELEMENTS, NELEMS, PROPS, 0, NULL, RESULT, NODEOUT, ELEMOUT);
    if (STATUS != VQ_DONE) return 1;

    /* By hand: areas over n = Es / Ec, then as for one material; a stress is that of the steel, over n in concrete. */
    const double E = RESULT[VQ_EREF], n = 210000. / 33000, As = 2 * 200 * 20 + 260 * 10, Ac = 500 * 100, M = 200e6;
    const double A = As + Ac / n, zs = (As * 150 + Ac / n * 350) / A;
    const double Is = (200 * pow(300, 3) - 190 * pow(260, 3)) / 12, Ic = 500 * pow(100, 3) / 12;
    const double I = Is + As * pow(zs - 150, 2) + (Ic + Ac * pow(350 - zs, 2)) / n;
    compare("A, of steel, mm2", RESULT[VQ_EA] / E, A);
    compare("centroid from below, mm", RESULT[VQ_ZC], zs);
    compare("I about Y, of steel, mm4", RESULT[VQ_IZZ] / E, I);

    /* A node in the joint has two stresses, one in each material. So stresses come by element and corner: here of the
     * slab's first element, and of the girder's last, at (250, 300) and (350, 300). M_Y = -1 pulls at the bottom. */
    const double* slab = ELEMOUT + 48 * (NELEMS - NY * 20) + 12 * 0;
    const double* girder = ELEMOUT + 48 * (NELEMS - NY * 20 - 1) + 12 * 2;
    compare("slab, lower face, -200 kNm, N/mm2", slab[9] * -M, -(300 - zs) * M / I / n);
    compare("girder, upper face, -200 kNm, N/mm2", girder[9] * -M, -(300 - zs) * M / I);

    /* Plastic, tension below (direction -2): the line lies in the web, x below the flange, where 17 Ac + 355 (4000 + 10
     * x) balances half of 17 Ac + 355 As; rectangular stress blocks as in EN 1994-1-1, 6.2.1.2. */
    const double x = ((17 * Ac + 355 * As) / 2 - 17 * Ac - 355 * 4000) / 3550, line = 280 - x;
    const double Mpl =
        17 * Ac * (350 - line) + 355 * (4000 * (290 - line) + 5 * x * x + 4000 * (line - 10) + 5 * pow(line - 20, 2));
    compare("plastic axis, tension below, mm", RESULT[VQ_PLAXIS_Z_NEG], line);
    compare("plastic moment, kNm", RESULT[VQ_PLMOM_Z_NEG] / 1e6, Mpl / 1e6);
    return wrong;
}
