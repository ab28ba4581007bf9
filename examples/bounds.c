/* Values with bounds: a tube of 100 x 10 from 24 quadrilaterals, three levels. docs/host_guide.md quotes this file. */
#include <math.h>
#include <stdio.h>

#include "velquor_levels.h"

enum { AROUND = 12, NNODES = 3 * AROUND, NELEMS = 2 * AROUND };

/* New nodes between A and B go onto the circle on which A lies. */
static void place_on_circle(void* context, int32_t A, int32_t B, double t, double* YZ) {
    const double* NODES = context;
    const double scale = hypot(NODES[A - 1], NODES[NNODES + A - 1]) / hypot(YZ[0], YZ[1]);
    YZ[0] *= scale, YZ[1] *= scale;
    (void)B, (void)t;
}

int main(void) {
    double NODES[2 * NNODES], PROPS[VQ_NCOLUMNS * NELEMS] = {0}, NODEOUT[3 * NNODES], ELEMOUT[48 * NELEMS];
    int32_t ELEMENTS[4 * NELEMS];
    const double degree = 3.14159265358979324 / 180;
    for (int n = 0; n < NNODES; ++n) { /* three rings, of radius 40, 45 and 50 */
        NODES[n] = (40 + 5 * (n / AROUND)) * cos(n * 360 / AROUND * degree);
        NODES[NNODES + n] = (40 + 5 * (n / AROUND)) * sin(n * 360 / AROUND * degree);
    }
    for (int e = 0; e < NELEMS; ++e) {
        const int next = e % AROUND == AROUND - 1 ? e + 2 - AROUND : e + 2;
        ELEMENTS[e] = e + 1, ELEMENTS[NELEMS + e] = e + 1 + AROUND;
        ELEMENTS[2 * NELEMS + e] = next + AROUND, ELEMENTS[3 * NELEMS + e] = next;
        PROPS[(VQ_EMOD - 1) * NELEMS + e] = 210000, PROPS[(VQ_GMOD - 1) * NELEMS + e] = 81000; /* N/mm2 */
        for (int column = VQ_COUPLING; column <= VQ_MATFLAG; ++column) PROPS[(column - 1) * NELEMS + e] = 1;
    }

    int32_t STATUS = 1, LEVELS = 3;
    double RESULT[VQ_NSLOTS] = {0}, BOUNDS[VQ_NSLOTS]; /* mode VQ_ELASTIC is 0 */
    vq_levels(&STATUS, NODES, NNODES, ELEMENTS, NELEMS, PROPS, 0, NULL, RESULT, NODEOUT, ELEMOUT, &LEVELS, BOUNDS, NULL,
              place_on_circle, NODES);
    if (STATUS != VQ_DONE) return 1;
    const double E = RESULT[VQ_EREF], G = RESULT[VQ_GREF];
    printf("A   %9.2f mm2, within %.3f\n", RESULT[VQ_EA] / E, BOUNDS[VQ_EA] / E);
    printf("I   %9.0f mm4, within %.0f\n", RESULT[VQ_I1] / E, BOUNDS[VQ_I1] / E);
    printf("It  %9.0f mm4, within %.0f\n", RESULT[VQ_GJ] / G, BOUNDS[VQ_GJ] / G);
    printf("As  %9.2f mm2, within %.2f\n", RESULT[VQ_GAY] / G, BOUNDS[VQ_GAY] / G);
    return 0;
}
