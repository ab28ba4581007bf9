/* The section of the file named on the command line, its results and bars in hexadecimal, then on two levels, and what
 * is found where it has a group too many. A host in C. */
#include <inttypes.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>
#include <velquor_levels.h>

/* Names and values as hosts have them compiled in. */
#define SLOT(name, value) NAME(name, value)
#define NAME(name, value) typedef char value_of_##name[name == value ? 1 : -1];
#define FIELD(name, value) typedef char offset_of_##name[offsetof(VYZTUZE_INFO, name) == value ? 1 : -1];
#define PART(name, value) typedef char place_of_##name[offsetof(vq_finding, name) == value ? 1 : -1];
#include "names.inc"
typedef char size_of_a_finding[sizeof(vq_finding) == 16 ? 1 : -1];
typedef char size_of_a_bar[sizeof(VYZTUZE_INFO) == 184 ? 1 : -1];

static void show(const char* name, const double* values, int count) {
    for (int i = 0; i < count; ++i) {
        uint64_t bits;
        memcpy(&bits, values + i, sizeof bits);
        printf("%s %016" PRIX64 "\n", name, bits);
    }
}

/* Bends edges, differently at each end of them, by what has no rounding. */
static void place(void* context, int32_t A, int32_t B, double t, double* YZ) {
    YZ[0] += (A + 2 * B) * t * *(double*)context;
}

static int read_reals(FILE* file, double* values, int count) {
    while (count-- > 0)
        if (fscanf(file, "%lf", values++) != 1) return 0;
    return 1;
}

int main(int argc, char** argv) {
    static double nodes[200], props[1000], nodeout[300], elemout[4800], result[VQ_NSLOTS], bar[7];
    static int32_t elements[400], sharp[100];
    static VYZTUZE_INFO points[9];
    int status, nnodes, nelems, npoints;
    FILE* file = argc == 2 ? fopen(argv[1], "r") : NULL;
    if (!file || fscanf(file, "%d %d %d %d", &status, &nnodes, &nelems, &npoints) != 4) return 1;
    if (nnodes > 100 || nelems > 100 || npoints > 9 || !read_reals(file, nodes, 2 * nnodes)) return 1;
    for (int i = 0; i < 4 * nelems; ++i)
        if (fscanf(file, "%" SCNd32, elements + i) != 1) return 1;
    if (!read_reals(file, props, VQ_NCOLUMNS * nelems)) return 1;
    for (int b = 0; b < npoints; ++b) {
        if (!read_reals(file, bar, 7)) return 1;
        points[b].NODE = (int32_t)bar[0], points[b].ELEMENT = (int32_t)bar[1];
        points[b].AREA = bar[2], points[b].EMODUL = bar[3], points[b].GMODUL = bar[4];
        points[b].RADIUS = bar[5], points[b].BARWEIGHT = bar[6];
    }
    fclose(file);
    result[VQ_MODE_SLOT] = VQ_PLASTIC;
    int32_t code = status;
    vq_velquor(&code, nodes, nnodes, elements, nelems, props, npoints, points, result, nodeout, elemout);

    printf("status %d\n", (int)code);
#undef SLOT
#undef NAME
#undef FIELD
#undef PART
#define SLOT(name, value) show(#name, result + name, 1);
#define NAME(name, value) printf("%s %d\n", #name, name);
#define FIELD(name, value) printf("%s %d\n", #name, (int)offsetof(VYZTUZE_INFO, name));
#define PART(name, value) printf("%s %d\n", #name, (int)offsetof(vq_finding, name));
#include "names.inc"
    for (int b = 0; b < npoints; ++b) {
        printf("nodes %d %d %d %d %d\n", (int)points[b].NELNODES, (int)points[b].ELNODES[0], (int)points[b].ELNODES[1],
               (int)points[b].ELNODES[2], (int)points[b].ELNODES[3]);
        show("shape", points[b].SHAPE, 4);
        show("rs", points[b].RS, 2);
        show("stress", points[b].STRESS, 4);
    }
    show("node", nodeout, 3 * nnodes);
    show("element", elemout, 48 * nelems);
    if (code != VQ_DONE) return 1;

    double bounds[VQ_NSLOTS], bend = 1.0 / 4096;
    int32_t levels = 2;
    vq_finding found[9];
    code = status, result[VQ_MODE_SLOT] = VQ_PLASTIC;
    vq_levels(&code, nodes, nnodes, elements, nelems, props, npoints, points, result, nodeout, elemout, &levels, bounds,
              sharp, place, &bend);
    printf("status %d levels %d\n", (int)code, (int)levels);
    show("result", result, VQ_NSLOTS);
    show("bounds", bounds, VQ_NSLOTS);
    for (int n = 0; n < nnodes; ++n) printf("sharp %d\n", (int)sharp[n]);
    const int count = vq_check(1, nodes, nnodes, elements, nelems, props, npoints, points, VQ_PLASTIC, 9, found);
    for (int f = 0; f < count; ++f)
        printf("found %d %d %d %d\n", (int)found[f].TABLE, (int)found[f].ROW, (int)found[f].REASON,
               (int)found[f].SEVERITY);
    return code != VQ_DONE || count < 2;
}
