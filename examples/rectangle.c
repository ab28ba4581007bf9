/* A rectangle 100 x 200 by the bare call. Units are N and mm. examples/rectangle.cpp is the same with the kit, and
 * docs/host_guide.md has both side by side. */
#include <stdio.h>

#include "velquor.h"

/* Lines are short enough to stand beside others. */
/* clang-format off */
enum { NY = 10, NZ = 20, W = NY + 1 }; /* squares of 10 */
enum { NNODES = W * (NZ + 1), NELEMS = NY * NZ };
static double NODES[2 * NNODES], NODEOUT[3 * NNODES];
static double PROPS[10 * NELEMS], ELEMOUT[48 * NELEMS];
static int32_t ELEMENTS[4 * NELEMS];

int main(void) {
    const double steel[] = {210e3, 81e3, 0, 1, 1, 1};
    for (int n = 0; n < NNODES; ++n) {
        NODES[n] = 10 * (n % W);
        NODES[NNODES + n] = 10 * (n / W);
    }
    for (int e = 0; e < NELEMS; ++e) {
        const int32_t a = e / NY * W + e % NY + 1;
        ELEMENTS[e] = a;
        ELEMENTS[NELEMS + e] = a + 1;
        ELEMENTS[2 * NELEMS + e] = a + 1 + W;
        ELEMENTS[3 * NELEMS + e] = a + W;
        for (int k = 0; k < 6; ++k)
            PROPS[k * NELEMS + e] = steel[k];
    }

    int32_t STATUS = 1; /* one group */
    double R[VQ_NSLOTS] = {0}; /* mode VQ_ELASTIC */
    vq_velquor(&STATUS, NODES, NNODES, ELEMENTS,
               NELEMS, PROPS, 0, NULL, R,
               NODEOUT, ELEMOUT);
    if (STATUS != VQ_DONE) return 1;

    const double E = R[VQ_EREF], G = R[VQ_GREF];
    printf("A = %.7g\n", R[VQ_EA] / E);
    printf("Iy = %.7g\n", R[VQ_IZZ] / E);
    printf("It = %.7g\n", R[VQ_GJ] / G);
    return 0;
}
