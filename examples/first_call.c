/* The first call: an unequal angle 100 x 60 x 10 without fillets, from its mesh to its values and stresses. Units are
 * N, mm and kg. docs/host_guide.md goes through this file. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "velquor_levels.h"

/* Square cells of 5 mm, two through each leg. A cell is part of the angle when it lies in the leg along Z (the first
 * two columns of cells) or in the leg along Y (the first two rows). */
enum { STEP = 5, COLUMNS = 60 / STEP, ROWS = 100 / STEP, LAYERS = 10 / STEP };
static int is_inside(int i, int j) { return i < LAYERS || j < LAYERS; }

int main(void) {
    /* A number from 1 on for each corner of each cell: cells that touch share the number. */
    int32_t number[ROWS + 1][COLUMNS + 1] = {{0}}, NNODES = 0, NELEMS = 0;
    for (int j = 0; j < ROWS; ++j) {
        for (int i = 0; i < COLUMNS; ++i) {
            if (!is_inside(i, j)) continue;
            ++NELEMS;
            for (int corner = 0; corner < 4; ++corner) {
                int32_t* n = &number[j + corner / 2][i + corner % 2];
                if (*n == 0) *n = ++NNODES;
            }
        }
    }

    /* The host owns every table. */
    const size_t nodes = (size_t)NNODES, elems = (size_t)NELEMS;
    double* NODES = malloc(nodes * 2 * sizeof *NODES);
    int32_t* ELEMENTS = malloc(elems * 4 * sizeof *ELEMENTS);
    double* PROPS = calloc(elems * VQ_NCOLUMNS, sizeof *PROPS);
    double* NODEOUT = malloc(nodes * 3 * sizeof *NODEOUT);
    double* ELEMOUT = malloc(elems * 48 * sizeof *ELEMOUT);
    double RESULT[VQ_NSLOTS] = {0};
    if (!NODES || !ELEMENTS || !PROPS || !NODEOUT || !ELEMOUT) return EXIT_FAILURE;

    /* Column after column: all Y, then all Z; all first nodes, then all second ones. Nodes of an element run
     * counter-clockwise. */
    for (int j = 0; j <= ROWS; ++j) {
        for (int i = 0; i <= COLUMNS; ++i) {
            if (number[j][i] == 0) continue;
            const size_t n = (size_t)number[j][i] - 1;
            NODES[n] = STEP * i;
            NODES[nodes + n] = STEP * j;
        }
    }
    size_t e = 0;
    for (int j = 0; j < ROWS; ++j) {
        for (int i = 0; i < COLUMNS; ++i) {
            if (!is_inside(i, j)) continue;
            ELEMENTS[e] = number[j][i];
            ELEMENTS[elems + e] = number[j][i + 1];
            ELEMENTS[2 * elems + e] = number[j + 1][i + 1];
            ELEMENTS[3 * elems + e] = number[j + 1][i];
            ++e;
        }
    }

    /* The property columns count from 1, so column k begins at (k - 1) * NELEMS. */
    for (e = 0; e < elems; ++e) {
        PROPS[(VQ_EMOD - 1) * elems + e] = 210000.0;      /* N/mm2 */
        PROPS[(VQ_GMOD - 1) * elems + e] = 81000.0;       /* N/mm2 */
        PROPS[(VQ_COUPLING - 1) * elems + e] = 1.0;       /* one section, not groups that bend by themselves */
        PROPS[(VQ_GROUP - 1) * elems + e] = 1.0;          /* counts in the net area and the weight: above 0 */
        PROPS[(VQ_MATFLAG - 1) * elems + e] = 1.0;        /* reference material, and counts in the plastic sums */
        PROPS[(VQ_FNEG - 1) * elems + e] = 235.0;         /* N/mm2 */
        PROPS[(VQ_FPOS - 1) * elems + e] = 235.0;         /* N/mm2 */
        PROPS[(VQ_UNITWEIGHT - 1) * elems + e] = 7.85e-6; /* kg/mm3 */
    }

    /* What the status would not tell. Errors and warnings never come together. */
    static const char* const TABLES[] = {"call", "NODES", "ELEMENTS", "PROPS", "POINTS"};
    enum { CAPACITY = 20 };
    const int32_t NGROUPS = 1;
    vq_finding FINDINGS[CAPACITY];
    const int32_t found =
        vq_check(NGROUPS, NODES, NNODES, ELEMENTS, NELEMS, PROPS, 0, NULL, VQ_PLASTIC, CAPACITY, FINDINGS);
    for (int32_t k = 0; k < found && k < CAPACITY; ++k)
        fprintf(stderr, "%s, row %d: %s\n", TABLES[FINDINGS[k].TABLE], (int)FINDINGS[k].ROW,
                vq_reason(FINDINGS[k].REASON));
    if (found < 0 || (found > 0 && FINDINGS[0].SEVERITY == VQ_ERROR)) return EXIT_FAILURE;

    /* Two values go in where results come out; set both again before every call. */
    int32_t STATUS = NGROUPS;
    RESULT[VQ_MODE_SLOT] = VQ_PLASTIC;
    vq_velquor(&STATUS, NODES, NNODES, ELEMENTS, NELEMS, PROPS, 0, NULL, RESULT, NODEOUT, ELEMOUT);
    if (STATUS != VQ_DONE) {
        fprintf(stderr, "status %d\n", (int)STATUS);
        return EXIT_FAILURE;
    }

    /* Stiffnesses over the reference moduli are areas and moments. */
    const double E = RESULT[VQ_EREF], G = RESULT[VQ_GREF], degree = 3.14159265358979324 / 180;
    printf("A   %10.1f mm2    centroid     %7.3f %7.3f mm\n", RESULT[VQ_EA] / E, RESULT[VQ_YC], RESULT[VQ_ZC]);
    printf("I1  %10.4g mm4    shear centre %7.3f %7.3f mm\n", RESULT[VQ_I1] / E, RESULT[VQ_SCY], RESULT[VQ_SCZ]);
    printf("I2  %10.4g mm4    ALPHA        %7.3f degrees\n", RESULT[VQ_I2] / E, RESULT[VQ_ALPHA] / degree);
    printf("It  %10.4g mm4    shear areas  %7.1f %7.1f mm2 along u, v\n", RESULT[VQ_GJ] / G, RESULT[VQ_GAU] / G,
           RESULT[VQ_GAV] / G);
    printf("Iw  %10.4g mm6    Wpl          %7.0f %7.0f mm3 about Y, Z\n", RESULT[VQ_IW] / E, RESULT[VQ_PLMOD_Z],
           RESULT[VQ_PLMOD_Y]);

    /* Stresses at the toe of the leg along Y: element 12, corner 2, under a torque of 10 N m, a force of 5 kN along u
     * and a moment of 1 kN m about v. Counted from 0, the twelve values of corner p of element e begin at
     * 48 (e - 1) + 12 (p - 1). */
    const double* corner = ELEMOUT + 48 * (COLUMNS - 1) + 12 * (2 - 1);
    const double tauy = 10e3 * corner[0] + 5e3 * corner[2], tauz = 10e3 * corner[1] + 5e3 * corner[3];
    const double sigma = 1e6 * corner[10];
    printf("at (%g, %g): tau %.2f N/mm2, sigma %.2f N/mm2\n", NODES[ELEMENTS[elems + COLUMNS - 1] - 1],
           NODES[nodes + (size_t)ELEMENTS[elems + COLUMNS - 1] - 1], hypot(tauy, tauz), sigma);

    free(NODES);
    free(ELEMENTS);
    free(PROPS);
    free(NODEOUT);
    free(ELEMOUT);
    return EXIT_SUCCESS;
}
