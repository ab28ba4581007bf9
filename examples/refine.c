/* A host that refines its own mesh and watches the values converge, and vq_levels on the coarsest of these meshes. The
 * section is an elliptic tube, half axes 60 and 40, with a hole of the same shape, half as large. Units are N and mm.
 * docs/host_guide.md quotes this file. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "velquor_levels.h"

static const double a = 60, b = 40, hole = 0.5, pi = 3.14159265358979324, E = 210000, G = 81000;

/* The host's mesh: layers through the wall and six times as many elements around. The outline is curved, so a finer
 * mesh is made anew from the shape, all its nodes on ellipses, and not by halving the sides of a coarser one. */
typedef struct {
    int32_t layers, around, NNODES, NELEMS, *ELEMENTS;
    double *NODES, *PROPS, *NODEOUT, *ELEMOUT;
} Mesh;

static Mesh mesh_of(int32_t layers) {
    Mesh m = {layers, 6 * layers, 6 * layers * (layers + 1), 6 * layers * layers, NULL, NULL, NULL, NULL, NULL};
    const size_t nodes = (size_t)m.NNODES, elems = (size_t)m.NELEMS;
    m.ELEMENTS = malloc(4 * elems * sizeof *m.ELEMENTS);
    m.NODES = malloc((2 + 3) * nodes * sizeof *m.NODES);
    m.PROPS = malloc((VQ_NCOLUMNS + 48) * elems * sizeof *m.PROPS);
    if (!m.ELEMENTS || !m.NODES || !m.PROPS) exit(EXIT_FAILURE);
    m.NODEOUT = m.NODES + 2 * nodes, m.ELEMOUT = m.PROPS + VQ_NCOLUMNS * elems;
    for (int32_t n = 0; n < m.NNODES; ++n) { /* ring by ring, from the hole outwards */
        const double scale = hole + (1 - hole) * (n / m.around) / layers, angle = 2 * pi * (n % m.around) / m.around;
        m.NODES[n] = a * scale * cos(angle), m.NODES[m.NNODES + n] = b * scale * sin(angle);
    }
    for (int32_t e = 0; e < m.NELEMS; ++e) {
        const int32_t next = e % m.around == m.around - 1 ? e + 2 - m.around : e + 2;
        const int32_t corners[] = {e + 1, e + 1 + m.around, next + m.around, next};
        const double steel[VQ_NCOLUMNS] = {E, G, 0, 1, 1, 1, 0, 0, 0, 0};
        for (int k = 0; k < 4; ++k) m.ELEMENTS[k * m.NELEMS + e] = corners[k];
        for (int k = 0; k < VQ_NCOLUMNS; ++k) m.PROPS[k * m.NELEMS + e] = steel[k];
    }
    return m;
}

static void release(Mesh m) { free(m.ELEMENTS), free(m.NODES), free(m.PROPS); }

/* For vq_levels: a new node of the edge from A to B onto the ellipse through both. Edges across the wall are straight,
 * and stay so; of those the routine is not asked, nor of any within the section. */
static void place_on_ellipse(void* context, int32_t A, int32_t B, double t, double* YZ) {
    const Mesh* m = context;
    const double ya = m->NODES[A - 1] / a, za = m->NODES[m->NNODES + A - 1] / b;
    const double yb = m->NODES[B - 1] / a, zb = m->NODES[m->NNODES + B - 1] / b;
    const double angle = atan2(za, ya) + t * atan2(ya * zb - za * yb, ya * yb + za * zb), scale = hypot(ya, za);
    YZ[0] = a * scale * cos(angle), YZ[1] = b * scale * sin(angle);
}

int main(void) {
    /* By hand (Timoshenko and Goodier, Theory of Elasticity, art. 105 and 115): an ellipse twists without other stress
     * than along similar ellipses, so the hole takes away what stood in it. The largest stress is on the short half
     * axis. */
    const double ring = 1 - pow(hole, 4), It = pi * pow(a * b, 3) / (a * a + b * b) * ring,
                 Wt = pi * a * b * b / 2 * ring;
    double last = 0, RESULT[VQ_NSLOTS] = {0}, BOUNDS[VQ_NSLOTS];
    int32_t STATUS, LEVELS = 3;
    printf("layers  nodes    Wt, mm3  off by, %%    It, mm4  off by, %%  extrapolated  off by, %%\n");
    for (int32_t layers = 2; layers <= 32; layers *= 2) {
        Mesh m = mesh_of(layers);
        RESULT[VQ_MODE_SLOT] = VQ_ELASTIC, STATUS = 1;
        vq_velquor(&STATUS, m.NODES, m.NNODES, m.ELEMENTS, m.NELEMS, m.PROPS, 0, NULL, RESULT, m.NODEOUT, m.ELEMOUT);
        release(m);
        if (STATUS != VQ_DONE) return EXIT_FAILURE;
        const double now = RESULT[VQ_GJ] / G;
        printf("%6d %6d %10.0f %10.2f %10.0f %10.4f", (int)layers, (int)m.NNODES, RESULT[VQ_WT],
               100 * (RESULT[VQ_WT] / Wt - 1), now, 100 * (now / It - 1));
        /* Half the size leaves a quarter of the error of a stiffness: a third of the last step is still to come. Of a
         * largest corner stress, as in WT, it leaves about half, and not on coarse meshes: nothing to extrapolate. */
        if (layers > 2) printf(" %13.0f %10.5f", now + (now - last) / 3, 100 * ((now + (now - last) / 3) / It - 1));
        printf("\n");
        last = now;
    }

    Mesh m = mesh_of(2);
    RESULT[VQ_MODE_SLOT] = VQ_ELASTIC, STATUS = 1;
    vq_levels(&STATUS, m.NODES, m.NNODES, m.ELEMENTS, m.NELEMS, m.PROPS, 0, NULL, RESULT, m.NODEOUT, m.ELEMOUT, &LEVELS,
              BOUNDS, NULL, place_on_ellipse, &m);
    release(m);
    const double ours = RESULT[VQ_GJ] / G, bound = BOUNDS[VQ_GJ] / G;
    printf("vq_levels from 2 layers: It %.0f, within %.0f; Wt %.0f, within %.0f; exact %.0f and %.0f\n", ours, bound,
           RESULT[VQ_WT], BOUNDS[VQ_WT], It, Wt);
    return STATUS == VQ_DONE && fabs(ours - It) <= bound && fabs(last / It - 1) < 1e-3 ? EXIT_SUCCESS : EXIT_FAILURE;
}
