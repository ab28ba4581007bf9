/* Groups with a partial coupling: a timber T of two planks, 200 x 60 on 80 x 240, that slip on their screws. Units are
 * N and mm. Each value is printed beside the one by hand and has to meet it. docs/host_guide.md quotes this file. */
#include <math.h>
#include <stdio.h>

#include "velquor.h"

/* Cells of 20 mm: the web in columns 3 to 6 of rows 0 to 11, the flange above it, in all ten columns of three rows. */
enum { STEP = 20, NY = 10, WEB = 12, NZ = WEB + 3, MOST_NODES = (NY + 1) * (NZ + 1), MOST_ELEMENTS = NY * NZ };
static int is_inside(int i, int j) { return j >= WEB || (i >= 3 && i < 7); }

static int wrong;
static void compare(const char* name, double value, double by_hand) {
    printf("%-42s %10.6g   by hand %10.6g\n", name, value, by_hand);
    if (!(fabs(value - by_hand) <= 1e-9 * fabs(by_hand))) wrong = 1;
}

int main(void) {
    /* How much of the bending about the common axis passes the joint: gamma of EN 1995-1-1, B.2, from the screws' slip
     * modulus K and distance s and the beam's span. 0 would be two loose planks, 1 glued ones. A section of groups
     * knows no span: the host makes a factor of it, and a new call for another span. */
    const double pi = 3.14159265358979324, E = 11000, G = 690, K = 2000, s = 80, span = 5000;
    const double Af = 200 * 60, Aw = 80 * 240, gamma = 1 / (1 + pi * pi * E * Af * s / (K * span * span));

    int32_t number[NZ + 1][NY + 1] = {{0}}, ELEMENTS[4 * MOST_ELEMENTS], NNODES = 0, NELEMS = 0;
    double NODES[2 * MOST_NODES], PROPS[VQ_NCOLUMNS * MOST_ELEMENTS], NODEOUT[3 * MOST_NODES],
        ELEMOUT[48 * MOST_ELEMENTS];
    for (int j = 0; j < NZ; ++j)
        for (int i = 0; i < NY; ++i) NELEMS += is_inside(i, j);
    for (int j = 0, e = 0; j < NZ; ++j) {
        for (int i = 0; i < NY; ++i) {
            if (!is_inside(i, j)) continue;
            for (int k = 0; k < 4; ++k) { /* (0, 0), (1, 0), (1, 1), (0, 1): counter-clockwise */
                int32_t* n = &number[j + k / 2][i + (k == 1 || k == 2)];
                if (*n == 0) *n = ++NNODES;
                ELEMENTS[k * NELEMS + e] = *n;
            }
            /* Group 1 is the web, whose factor is 1; group 2 the flange. All elements of a group have the same factor.
             */
            const int in_flange = j >= WEB;
            const double timber[VQ_NCOLUMNS] = {E, G, 0, in_flange ? gamma : 1, in_flange ? 2 : 1, 1, 24, 24, 0, 0};
            for (int k = 0; k < VQ_NCOLUMNS; ++k) PROPS[k * NELEMS + e] = timber[k];
            ++e;
        }
    }
    /* In a coupled section what would count from the centroid counts from the origin: so it lies on the axis of
     * symmetry. */
    for (int j = 0; j <= NZ; ++j) {
        for (int i = 0; i <= NY; ++i) {
            if (number[j][i] == 0) continue;
            NODES[number[j][i] - 1] = STEP * (i - NY / 2), NODES[NNODES + number[j][i] - 1] = STEP * j;
        }
    }

    int32_t STATUS = 2; /* groups */
    double RESULT[VQ_NSLOTS] = {0};
    vq_velquor(&STATUS, NODES, NNODES, ELEMENTS, NELEMS, PROPS, 0, NULL, RESULT, NODEOUT, ELEMOUT);
    if (STATUS != VQ_DONE) return 1;

    /* By hand, EN 1995-1-1, B.2 and B.3: the common centre lies aw above the middle of the web, at 120 mm, and af below
     * that of the flange, at 270 mm; (EI)ef = E (If + gamma Af af^2 + Iw + Aw aw^2); stresses of a part are those of
     * its normal force, sigma = gamma E a M / (EI)ef, and those of its own bending, sigma_m = E h / 2 M / (EI)ef. */
    const double M = 10e6, aw = gamma * Af * 150 / (gamma * Af + Aw), af = 150 - aw;
    const double EI = E * (200 * pow(60, 3) / 12 + gamma * Af * af * af + 80 * pow(240, 3) / 12 + Aw * aw * aw);
    printf("gamma %.4f\n", gamma);
    compare("EI about Y, kNm2", RESULT[VQ_IZZ] / 1e9, EI / 1e9);
    compare("common centre from below, mm", RESULT[VQ_COUP2], 120 + aw);

    /* M_Y = -1 pulls at the bottom. Across the joint the strain jumps: that is the slip. The nodes are common, for
     * torsion and shear, which are those of glued planks whatever the factor. */
    const double* below = ELEMOUT;                               /* first element, corner 1: (-40, 0) */
    const double* joint = ELEMOUT + 48 * (4 * WEB - 1) + 12 * 2; /* web's last one, corner 3: (40, 240) */
    const double* flange = ELEMOUT + 48 * (NELEMS - 3 * NY);     /* flange's first one, corner 1: (-100, 240) */
    const double* above = ELEMOUT + 48 * (NELEMS - 1) + 12 * 2;  /* last element, corner 3: (100, 300) */
    compare("web, lower edge, -10 kNm, N/mm2", below[9] * -M, E * (aw + 120) * M / EI);
    compare("web, at the joint, -10 kNm, N/mm2", joint[9] * -M, E * (aw - 120) * M / EI);
    compare("flange, at the joint, -10 kNm, N/mm2", flange[9] * -M, E * (-gamma * af + 30) * M / EI);
    compare("flange, upper edge, -10 kNm, N/mm2", above[9] * -M, E * (-gamma * af - 30) * M / EI);
    return wrong;
}
