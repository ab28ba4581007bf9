/* A reinforced rectangle: concrete 300 x 500 with three bars of 20 below and two of 12 above. Units are N, mm and kg.
 * Each value is printed beside the one by hand and has to meet it. docs/host_guide.md quotes this file. */
#include <math.h>
#include <stdio.h>

#include "velquor.h"

enum { B = 300, H = 500, STEP = 25, NY = B / STEP, NZ = H / STEP, NELEMS = NY * NZ };
enum { NBARS = 5, NMESH = (NY + 1) * (NZ + 1), NNODES = NMESH + NBARS };
static double NODES[2 * NNODES], PROPS[VQ_NCOLUMNS * NELEMS], NODEOUT[3 * NNODES], ELEMOUT[48 * NELEMS];
static int32_t ELEMENTS[4 * NELEMS];

static int wrong;
static void compare(const char* name, double value, double by_hand, double tolerance) {
    printf("%-34s %12.7g   by hand %12.7g\n", name, value, by_hand);
    if (!(fabs(value - by_hand) <= tolerance * fabs(by_hand))) wrong = 1;
}

int main(void) {
    const double pi = 3.14159265358979324, Ec = 33000, Gc = 13750, Es = 200000;
    for (int n = 0; n < NMESH; ++n) NODES[n] = STEP * (n % (NY + 1)), NODES[NNODES + n] = STEP * (n / (NY + 1));
    for (int e = 0; e < NELEMS; ++e) {
        const int32_t first = e / NY * (NY + 1) + e % NY + 1,
                      corners[] = {first, first + 1, first + NY + 2, first + NY + 1};
        for (int k = 0; k < 4; ++k) ELEMENTS[k * NELEMS + e] = corners[k];
        /* Bars displace concrete: what they add is their excess over the reference and over the first element's weight.
         * So the concrete is the reference, and the first element. */
        const double concrete[VQ_NCOLUMNS] = {Ec, Gc, 0, 1, 1, 1, 20, 20, 2.4e-6, 0};
        for (int k = 0; k < VQ_NCOLUMNS; ++k) PROPS[k * NELEMS + e] = concrete[k];
    }

    /* A bar has a node of its own, after those of the mesh, and an element in which it lies. On the edge of two
     * elements either will do. A GMODUL of 0 keeps it out of torsion, where its share would depend on the unit of
     * length. RADIUS stays 0: stresses in the concrete are then those of concrete, also beside a bar. */
    const double at[NBARS][3] = {{45, 45, 20}, {150, 45, 20}, {255, 45, 20}, {45, 455, 12}, {255, 455, 12}};
    VYZTUZE_INFO POINTS[NBARS] = {{0}};
    for (int b = 0; b < NBARS; ++b) {
        NODES[NMESH + b] = at[b][0], NODES[NNODES + NMESH + b] = at[b][1];
        POINTS[b].NODE = NMESH + b + 1;
        POINTS[b].ELEMENT = (int32_t)(at[b][1] / STEP) * NY + (int32_t)(at[b][0] / STEP) + 1;
        POINTS[b].AREA = pi * at[b][2] * at[b][2] / 4;
        POINTS[b].EMODUL = Es; /* below 2.0 a bar is left out: in N/mm2 no danger, in MN/mm2 steel would have 0.2 */
        POINTS[b].BARWEIGHT = 7.85e-6;
    }

    int32_t STATUS = 1;
    double RESULT[VQ_NSLOTS] = {0};
    vq_velquor(&STATUS, NODES, NNODES, ELEMENTS, NELEMS, PROPS, NBARS, POINTS, RESULT, NODEOUT, ELEMOUT);
    if (STATUS != VQ_DONE) return 1;

    /* By hand, transformed section: A = b h + (n - 1) As, n = Es / Ec; I = b h^3 / 12 + b h (zs - h/2)^2 + (n - 1) sum
     * of As (z - zs)^2. A fibre has the stress E z M / (E I): Ec for concrete, Es for a bar. */
    const double n = Es / Ec, low = 3 * pi * 100, high = 2 * pi * 36, M = 100e6; /* N mm */
    const double A = B * H + (n - 1) * (low + high);
    const double zs = (B * H * 250.0 + (n - 1) * (45 * low + 455 * high)) / A;
    const double I =
        B * H * (H * H / 12.0 + pow(250 - zs, 2)) + (n - 1) * (low * pow(45 - zs, 2) + high * pow(455 - zs, 2));
    compare("A, of concrete, mm2", RESULT[VQ_EA] / Ec, A, 1e-9);
    compare("centroid from below, mm", RESULT[VQ_ZC], zs, 1e-9);
    compare("I about Y, of concrete, mm4", RESULT[VQ_IZZ] / Ec, I, 1e-9);
    compare("weight, kg/m", RESULT[VQ_WEIGHT] * 1000, (B * H * 2.4e-6 + (low + high) * (7.85e-6 - 2.4e-6)) * 1000,
            1e-9);

    /* u is Y here, as I1 belongs to bending about Y: STRESS[1] and the tenth value of a corner are those of M_Y = 1,
     * positive at the top. Three below and two above let M_Y be negative where the lower bars are to pull. */
    compare("lower bar at -100 kNm, N/mm2", POINTS[0].STRESS[1] * -M, Es * (zs - 45) * M / (Ec * I), 1e-9);
    const double* top = ELEMOUT + 48 * (NELEMS - 1) + 12 * 2; /* last element, third corner: at (300, 500) */
    compare("concrete on top at -100 kNm, N/mm2", top[9] * -M, -(H - zs) * M / I, 1e-9);

    /* Torsion is that of the concrete alone. Series of Saint-Venant (Timoshenko and Goodier, Theory of Elasticity, art.
     * 109); the mesh is 0.3 % above it. */
    double series = 0;
    for (int k = 1; k < 40; k += 2) series += tanh(k * pi * H / (2.0 * B)) / pow(k, 5);
    compare("It, mm4", RESULT[VQ_GJ] / Gc, H * pow(B, 3) / 3 * (1 - 192 / pow(pi, 5) * B / H * series), 5e-3);
    return wrong;
}
