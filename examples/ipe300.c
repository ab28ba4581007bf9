/* A rolled IPE 300 from mesh to section values: how a host program calls the library.
 *
 *     ipe300 [layers]     layers of elements through the web, a multiple of 4 from 4 to 40; 4 if not given
 *
 * It is built with the mesher beside it:
 *
 *     cc ipe300.c mesher.c profiles.c $(pkg-config --cflags --libs velquor) -lm -o ipe300
 *
 * Units are the host's choice, and the results follow from them. Here they are N, mm and kg: moduli and strengths are
 * in N/mm2 and the unit weight is in kg/mm3, so that the weight comes out in kg for each mm of the beam. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "mesher.h"
#include "velquor.h"

/* The steel of every element. Property columns count from 1 and lie one after the other; those that are not set here
 * are read by no calculation. */
static const struct {
    int column;
    double value;
} STEEL[] = {
    {VQ_EMOD, 210000.0},      /* N/mm2 */
    {VQ_GMOD, 80769.23},      /* N/mm2, Poisson's ratio 0.3 */
    {VQ_COUPLING, 1.0},       /* all groups bend as one section */
    {VQ_GROUP, 1.0},          /* there is one */
    {VQ_MATFLAG, 1.0},        /* reference material, so that EREF and GREF are the two moduli above */
    {VQ_FNEG, 235.0},         /* N/mm2, the same strength in compression ... */
    {VQ_FPOS, 235.0},         /* ... and in tension */
    {VQ_UNITWEIGHT, 7.85e-6}, /* kg/mm3 */
};

/* A line of the report. Most results are stiffnesses: over the reference modulus they become areas and moments. */
enum { AS_IS = -1 };
typedef struct row {
    int slot;
    const char *name, *meaning;
    int over;    /* slot of the modulus to divide by, or AS_IS */
    double unit; /* one of the printed unit, in N, mm, kg and rad */
    const char* unit_name;
    double handbook; /* 0 where the handbooks have none */
} row;

static const double DEGREE = 0.0174532925199432958;
#define CM2 1e2, "cm2"
#define CM3 1e3, "cm3"
#define CM4 1e4, "cm4"
#define CM6 1e6, "cm6"
#define MM 1.0, "mm"
#define NMM2 1.0, "N/mm2"
#define KNM 1e6, "kNm"

/* Handbooks call the strong axis y and the web's direction z. The strong moment sums over the squared Z: IZZ. */
static const row ELASTIC[] = {
    {VQ_EREF, "EREF", "reference elastic modulus", AS_IS, NMM2, 0},
    {VQ_GREF, "GREF", "reference shear modulus", AS_IS, NMM2, 0},
    {VQ_EA, "EA/EREF", "area A", VQ_EREF, CM2, 53.81},
    {VQ_ANET, "ANET", "net area", AS_IS, CM2, 53.81},
    {VQ_WEIGHT, "WEIGHT", "mass of the beam", AS_IS, 1e-3, "kg/m", 42.2},
    {VQ_YC, "YC", "centroid, Y", AS_IS, MM, 0},
    {VQ_ZC, "ZC", "centroid, Z", AS_IS, MM, 0},
    {VQ_COUP1, "COUP1", "centre of the coupled groups, Y", AS_IS, MM, 0},
    {VQ_COUP2, "COUP2", "centre of the coupled groups, Z", AS_IS, MM, 0},
    {VQ_IZZ, "IZZ/EREF", "second moment Iy, over squared Z", VQ_EREF, CM4, 8356},
    {VQ_IYY, "IYY/EREF", "second moment Iz, over squared Y", VQ_EREF, CM4, 603.8},
    {VQ_DYZ, "DYZ/EREF", "product moment", VQ_EREF, CM4, 0},
    {VQ_ALPHA, "ALPHA", "angle of the principal axes u, v", AS_IS, DEGREE, "deg", 0},
    {VQ_I1, "I1/EREF", "first principal moment", VQ_EREF, CM4, 8356},
    {VQ_I2, "I2/EREF", "second principal moment", VQ_EREF, CM4, 603.8},
};

/* The two senses of bending differ where FNEG and FPOS do. */
static const row PLASTIC[] = {
    {VQ_PLAXIS_Z, "PLAXIS_Z", "plastic axis, Z", AS_IS, MM, 0},
    {VQ_PLAXIS_Z_NEG, "PLAXIS_Z_NEG", "  other sense", AS_IS, MM, 0},
    {VQ_PLAXIS_Y, "PLAXIS_Y", "plastic axis, Y", AS_IS, MM, 0},
    {VQ_PLAXIS_Y_NEG, "PLAXIS_Y_NEG", "  other sense", AS_IS, MM, 0},
    {VQ_PLMOD_Z, "PLMOD_Z", "plastic modulus Wpl,y", AS_IS, CM3, 628.4},
    {VQ_PLMOD_Z_NEG, "PLMOD_Z_NEG", "  other sense", AS_IS, CM3, 628.4},
    {VQ_PLMOD_Y, "PLMOD_Y", "plastic modulus Wpl,z", AS_IS, CM3, 125.2},
    {VQ_PLMOD_Y_NEG, "PLMOD_Y_NEG", "  other sense", AS_IS, CM3, 125.2},
    {VQ_PLMOM_Z, "PLMOM_Z", "plastic moment Mpl,y", AS_IS, KNM, 0},
    {VQ_PLMOM_Z_NEG, "PLMOM_Z_NEG", "  other sense", AS_IS, KNM, 0},
    {VQ_PLMOM_Y, "PLMOM_Y", "plastic moment Mpl,z", AS_IS, KNM, 0},
    {VQ_PLMOM_Y_NEG, "PLMOM_Y_NEG", "  other sense", AS_IS, KNM, 0},
    {VQ_PLAXIS_V, "PLAXIS_V", "plastic axis, v", AS_IS, MM, 0},
    {VQ_PLAXIS_V_NEG, "PLAXIS_V_NEG", "  other sense", AS_IS, MM, 0},
    {VQ_PLAXIS_U, "PLAXIS_U", "plastic axis, u", AS_IS, MM, 0},
    {VQ_PLAXIS_U_NEG, "PLAXIS_U_NEG", "  other sense", AS_IS, MM, 0},
    {VQ_PLMOD_V, "PLMOD_V", "plastic modulus along v", AS_IS, CM3, 628.4},
    {VQ_PLMOD_V_NEG, "PLMOD_V_NEG", "  other sense", AS_IS, CM3, 628.4},
    {VQ_PLMOD_U, "PLMOD_U", "plastic modulus along u", AS_IS, CM3, 125.2},
    {VQ_PLMOD_U_NEG, "PLMOD_U_NEG", "  other sense", AS_IS, CM3, 125.2},
    {VQ_PLMOM_V, "PLMOM_V", "plastic moment along v", AS_IS, KNM, 0},
    {VQ_PLMOM_V_NEG, "PLMOM_V_NEG", "  other sense", AS_IS, KNM, 0},
    {VQ_PLMOM_U, "PLMOM_U", "plastic moment along u", AS_IS, KNM, 0},
    {VQ_PLMOM_U_NEG, "PLMOM_U_NEG", "  other sense", AS_IS, KNM, 0},
};

static const row WARPING[] = {
    {VQ_GJ, "GJ/GREF", "torsion constant It", VQ_GREF, CM4, 20.12},
    {VQ_WT, "WT", "torsion modulus", AS_IS, CM3, 0},
    {VQ_IW, "IW/EREF", "warping constant Iw", VQ_EREF, CM6, 125.9e3},
    {VQ_IWS, "IWS/EREF", "warping constant about the centroid", VQ_EREF, CM6, 0},
    {VQ_SCY, "SCY", "shear centre, Y", AS_IS, MM, 0},
    {VQ_SCZ, "SCZ", "shear centre, Z", AS_IS, MM, 0},
    {VQ_SCU, "SCU", "shear centre, u", AS_IS, MM, 0},
    {VQ_SCV, "SCV", "shear centre, v", AS_IS, MM, 0},
    {VQ_GAY, "GAY/GREF", "shear area along Y", VQ_GREF, CM2, 0},
    {VQ_GAZ, "GAZ/GREF", "shear area along Z", VQ_GREF, CM2, 0},
    {VQ_GAU, "GAU/GREF", "shear area along u", VQ_GREF, CM2, 0},
    {VQ_GAV, "GAV/GREF", "shear area along v", VQ_GREF, CM2, 0},
    {VQ_GAUV, "GAUV/GREF", "coupling of the shear areas", VQ_GREF, CM2, 0},
    {VQ_RY, "RY", "skew coefficient, Y", AS_IS, MM, 0},
    {VQ_RZ, "RZ", "skew coefficient, Z", AS_IS, MM, 0},
    {VQ_RU, "RU", "skew coefficient, u", AS_IS, MM, 0},
    {VQ_RV, "RV", "skew coefficient, v", AS_IS, MM, 0},
    {VQ_WR1, "WR1", "skew coefficient of warping, centroid", AS_IS, 1.0, "-", 0},
    {VQ_WR2, "WR2", "skew coefficient of warping, shear centre", AS_IS, 1.0, "-", 0},
};

static void print_rows(const char* title, const row* rows, size_t count, const double* result) {
    printf("\n%-57s %12s %-6s %10s %10s\n", title, "value", "unit", "handbook", "difference");
    for (size_t i = 0; i < count; ++i) {
        const row* line = rows + i;
        const double modulus = line->over == AS_IS ? 1.0 : result[line->over];
        double value = result[line->slot] / modulus / line->unit;
        if (fabs(value) < 0.0005) value = 0.0; /* rounding around zero is not worth a sign */
        printf("%-13s %-43s %12.3f ", line->name, line->meaning, value);
        if (line->handbook > 0.0)
            printf("%-6s %10.6g %+8.3f %%\n", line->unit_name, line->handbook, 100.0 * (value / line->handbook - 1.0));
        else
            printf("%s\n", line->unit_name);
    }
}

/* The element table: 48 reals for each element, 12 for each of its corners, of which the first two are the shear
 * stresses along Y and Z under a unit torque. The largest of them all is 1/WT. */
static void print_largest_torsion(const mesh* m, const double* result, const double* elemout) {
    double largest = -1.0;
    point where = {0, 0};
    for (int32_t e = 0; e < m->nelems; ++e) {
        for (int p = 0; p < 4; ++p) {
            const double* corner = elemout + 48 * (size_t)e + 12 * (size_t)p;
            const double tau = hypot(corner[0], corner[1]);
            if (tau > largest) largest = tau, where = m->nodes[m->elements[e][p]];
        }
    }
    printf("\nLargest shear stress under a torque of 1 kNm: %.2f N/mm2, at Y %.2f mm, Z %.2f mm\n", 1e6 / result[VQ_WT],
           where.y, where.z);
}

static const char* in_words(int32_t status) {
    switch (status) {
        case VQ_REFUSED: return "the tables or the mesh were refused";
        case VQ_NOT_SOLVED: return "an equation system could not be solved";
        case VQ_OUT_OF_MEMORY: return "memory could not be had, or the run found itself inconsistent";
        default: return "unknown status";
    }
}

/* Fills the host's tables, makes the call and prints the results. */
static int calculate(const mesh* m, double* nodes, int32_t* elements, double* props, double* nodeout, double* elemout) {
    fill_tables(m, nodes, elements);
    for (size_t i = 0; i < sizeof STEEL / sizeof *STEEL; ++i) {
        double* column = props + (size_t)(STEEL[i].column - 1) * (size_t)m->nelems;
        for (int32_t e = 0; e < m->nelems; ++e) column[e] = STEEL[i].value;
    }

    /* Two values go in where results come out: the number of groups and the mode. Both are set before every call. There
     * are no bars, so the table of bars may be null. */
    int32_t status = 1;
    double result[VQ_NSLOTS] = {0};
    result[VQ_MODE_SLOT] = VQ_PLASTIC;
    vq_velquor(&status, nodes, m->nnodes, elements, m->nelems, props, 0, NULL, result, nodeout, elemout);
    if (status != VQ_DONE) {
        fprintf(stderr, "ipe300: %s (status %d)\n", in_words(status), (int)status);
        return EXIT_FAILURE;
    }

    printf("IPE 300, %d nodes, %d elements\n", (int)m->nnodes, (int)m->nelems);
    print_rows("Elastic", ELASTIC, sizeof ELASTIC / sizeof *ELASTIC, result);
    print_rows("Plastic", PLASTIC, sizeof PLASTIC / sizeof *PLASTIC, result);
    if (result[VQ_GJ] > 0.0) {
        print_rows("Torsion, warping and shear", WARPING, sizeof WARPING / sizeof *WARPING, result);
        print_largest_torsion(m, result, elemout);
    }
    return EXIT_SUCCESS;
}

int main(int argc, char** argv) {
    char* end = "";
    const long layers = argc > 1 ? strtol(argv[1], &end, 10) : 4;
    if (argc > 2 || *end != '\0' || layers < 4 || layers > 40 || layers % 4 != 0) {
        fprintf(stderr, "usage: ipe300 [layers]   layers of elements through the web: 4, 8, 12 ... 40\n");
        return EXIT_FAILURE;
    }

    /* h 300, b 150, tw 7.1, tf 10.7, root radius 15 mm; elements a quarter of the web thick, or that divided further */
    mesh m = begin_mesh(7.1 / 4, (int)layers / 4);
    add_i_profile(&m, 300, 150, 7.1, 10.7, 15, 150, 10.7);
    double *nodes = NULL, *props = NULL, *nodeout = NULL, *elemout = NULL;
    int32_t* elements = NULL;
    if (end_mesh(&m) == 0) {
        const size_t nnodes = (size_t)m.nnodes, nelems = (size_t)m.nelems;
        nodes = malloc(nnodes * 2 * sizeof *nodes);
        elements = malloc(nelems * 4 * sizeof *elements);
        props = calloc(nelems * VQ_NCOLUMNS, sizeof *props);
        nodeout = malloc(nnodes * 3 * sizeof *nodeout);
        elemout = malloc(nelems * 48 * sizeof *elemout);
    }
    int code = EXIT_FAILURE;
    if (nodes && elements && props && nodeout && elemout)
        code = calculate(&m, nodes, elements, props, nodeout, elemout);
    else
        fprintf(stderr, "ipe300: memory could not be had\n");
    free(nodes);
    free(elements);
    free(props);
    free(nodeout);
    free(elemout);
    release_mesh(&m);
    return code;
}
