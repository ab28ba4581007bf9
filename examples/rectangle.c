/* A rectangle 100 x 200 by the bare call. Units are N and mm. examples/rectangle.cpp is the same with the kit, and
 * docs/host_guide.md has both side by side. */
#include <stdio.h>

#include "velquor.h"

enum { NY = 10, NZ = 20, W = NY + 1 };
enum { NNODES = W * (NZ + 1), NELEMS = NY * NZ };
static double NODES[2 * NNODES], PROPS[10 * NELEMS];
static double NODEOUT[3 * NNODES], ELEMOUT[48 * NELEMS];
static int32_t ELEMENTS[4 * NELEMS];

int main(void) {
    const double steel[] = {210e3, 81e3, 0, 1, 1, 1, 0, 0, 0, 0};
    for (int n = 0; n < NNODES; ++n) { /* squares of 10 */
        NODES[n] = 10 * (n % W);
        NODES[NNODES + n] = 10 * (n / W);
    }
    for (int e = 0; e < NELEMS; ++e) { /* counter-clockwise */
        const int32_t a = e / NY * W + e % NY + 1, b = a + W;
        ELEMENTS[e] = a, ELEMENTS[NELEMS + e] = a + 1;
        ELEMENTS[2 * NELEMS + e] = b + 1;
        ELEMENTS[3 * NELEMS + e] = b;
        for (int k = 0; k < 10; ++k) PROPS[k * NELEMS + e] = steel[k];
    }

    int32_t STATUS = 1;        /* one group of elements */
    double R[VQ_NSLOTS] = {0}; /* and the mode VQ_ELASTIC */
    vq_velquor(&STATUS, NODES, NNODES, ELEMENTS, NELEMS, PROPS, 0, NULL, R, NODEOUT, ELEMOUT);
    if (STATUS != VQ_DONE) return 1;

    printf("A = %.7g\n", R[VQ_EA] / R[VQ_EREF]);
    printf("Iy = %.7g\n", R[VQ_IZZ] / R[VQ_EREF]);
    printf("It = %.7g\n", R[VQ_GJ] / R[VQ_GREF]);
    return 0;
}
