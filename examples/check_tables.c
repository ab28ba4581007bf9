#include "check_tables.h"

#include <math.h>
#include <string.h>

/* Single precision on purpose: the library compares with these values. */
static const double MODULUSFACTOR = 1.01e-6f, MINEDGE = 1e-8f, MINEDGERATIO = 1e-5f;
static const double MINSINE = 0.08;

static const refusal TAKEN = {NULL, NULL, 0};

static refusal refuse(const char* table, int32_t row, const char* why) {
    const refusal fault = {why, table, row};
    return fault;
}

static double least(double a, double b) { return b < a ? b : a; }
static double most(double a, double b) { return b > a ? b : a; }

/* Edges of a polygon of n corners: the longest, the shortest, and the smallest of 1 and the sines of the turning angles
 * from each edge to the next. */
static void measure(int n, const double* y, const double* z, double* longest, double* shortest, double* sine) {
    double dy[4], dz[4], L[4];
    for (int i = 0; i < n; ++i) {
        dy[i] = y[(i + 1) % n] - y[i], dz[i] = z[(i + 1) % n] - z[i];
        L[i] = sqrt(dy[i] * dy[i] + dz[i] * dz[i]);
    }
    *longest = *shortest = L[0], *sine = 1.0;
    for (int i = 0; i < n; ++i) {
        const int j = (i + 1) % n;
        *longest = most(*longest, L[i]), *shortest = least(*shortest, L[i]);
        *sine = least(*sine, dy[i] / L[i] * (dz[j] / L[j]) - dz[i] / L[i] * (dy[j] / L[j]));
    }
}

static const char* fault_of_shape(int n, const double* y, const double* z) {
    const double area = n == 3 ? (y[0] - y[2]) * z[1] + (y[2] - y[1]) * z[0] + (y[1] - y[0]) * z[2]
                               : (y[0] - y[2]) * (z[1] - z[3]) - (z[0] - z[2]) * (y[1] - y[3]);
    double longest, shortest, sine;
    measure(n, y, z, &longest, &shortest, &sine);
    if (longest < MINEDGE) return "has no edge of 1e-8 or more";
    if (shortest / longest < MINEDGERATIO) return "has an edge below 1e-5 of its longest";
    if (n == 3) return area < 0.0 ? "is clockwise" : NULL; /* a triangle without area passes */
    if (!(area > 0.0)) return "is clockwise, or without area";
    return sine < MINSINE ? "has a corner below 4.6 degrees, within 4.6 degrees of straight, or re-entrant" : NULL;
}

/* Corners of element e, counted from 0: node numbers; returns how many. */
static int corners_of(const int32_t* ELEMENTS, int32_t NELEMS, int32_t e, int32_t* node) {
    for (int i = 0; i < 4; ++i) node[i] = ELEMENTS[(size_t)i * (size_t)NELEMS + (size_t)e];
    return node[2] == node[3] ? 3 : 4;
}

static int names_a_node_twice(int n, const int32_t* node) {
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < i; ++j)
            if (node[i] == node[j]) return 1;
    return 0;
}

/* Strengths are read by a plastic calculation alone. */
static int is_read(int column, double mode) {
    const int plastic = (mode >= VQ_PLASTIC && mode < VQ_PLASTIC + 1) ||
                        (mode >= VQ_PLASTIC_TWO && mode < VQ_PLASTIC_TWO + 1) ||
                        (mode >= VQ_PLASTIC_TWO_21 && mode < VQ_PLASTIC_TWO_21 + 1);
    if (column == VQ_FNEG || column == VQ_FPOS) return plastic;
    return column != VQ_CARRIED && column != VQ_TENTH;
}

static refusal find_in_properties(int32_t NGROUPS, int32_t NELEMS, const double* PROPS, double mode, double* EREF) {
    int marked = 0;
    for (int32_t e = 0; e < NELEMS; ++e) {
        double P[VQ_NCOLUMNS + 1];
        for (int k = 1; k <= VQ_NCOLUMNS; ++k) P[k] = PROPS[(size_t)(k - 1) * (size_t)NELEMS + (size_t)e];
        for (int k = 1; k <= VQ_NCOLUMNS; ++k)
            if (is_read(k, mode) && !isfinite(P[k])) return refuse("PROPS", e + 1, "holds a value that is not finite");
        if (fabs(P[VQ_GROUP]) < 1.0 || fabs(P[VQ_GROUP]) >= NGROUPS + 1.0)
            return refuse("PROPS", e + 1, "has a group outside 1 to NGROUPS");
        if (!marked && P[VQ_MATFLAG] == 1.0) *EREF = P[VQ_EMOD], marked = 1;
    }
    if (!marked) return refuse("PROPS", 0, "has no row with MATFLAG 1.0, so no reference modulus");
    return *EREF > 0.0 ? TAKEN : refuse("PROPS", 0, "has a reference modulus that is not above 0");
}

static refusal find_in_mesh(const double* NODES, int32_t NNODES, const int32_t* ELEMENTS, int32_t NELEMS,
                            const double* EMOD, double EREF, unsigned char* taken) {
    for (int32_t e = 0; e < NELEMS; ++e) {
        int32_t node[4];
        double y[4], z[4];
        const int n = corners_of(ELEMENTS, NELEMS, e, node);
        for (int i = 0; i < n; ++i) {
            if (node[i] < 1 || node[i] > NNODES) return refuse("ELEMENTS", e + 1, "names a node outside 1 to NNODES");
            y[i] = NODES[node[i] - 1], z[i] = NODES[(size_t)NNODES + (size_t)node[i] - 1];
            if (!isfinite(y[i]) || !isfinite(z[i])) return refuse("NODES", node[i], "holds a value that is not finite");
            taken[node[i] - 1] = 1;
        }
        if (EMOD[e] < EREF * MODULUSFACTOR) continue; /* so soft an element is not looked at */
        if (names_a_node_twice(n, node)) return refuse("ELEMENTS", e + 1, "names a node twice");
        const char* why = fault_of_shape(n, y, z);
        if (why) return refuse("ELEMENTS", e + 1, why);
    }
    return TAKEN;
}

static refusal find_in_bars(const double* NODES, int32_t NNODES, const int32_t* ELEMENTS, int32_t NELEMS,
                            int32_t NPOINTS, const VYZTUZE_INFO* POINTS, unsigned char* taken) {
    for (int32_t b = 0; b < NPOINTS; ++b) {
        const VYZTUZE_INFO* bar = POINTS + b;
        if (bar->NODE >= 1 && bar->EMODUL >= 2.0) { /* any other is not looked at */
            int32_t node[4];
            if (bar->NODE > NNODES) return refuse("POINTS", b + 1, "has a NODE above NNODES");
            if (taken[bar->NODE - 1]) return refuse("POINTS", b + 1, "stands on a node of an element or another bar");
            if (bar->ELEMENT < 1 || bar->ELEMENT > NELEMS)
                return refuse("POINTS", b + 1, "has an ELEMENT outside 1 to NELEMS");
            if (names_a_node_twice(corners_of(ELEMENTS, NELEMS, bar->ELEMENT - 1, node), node))
                return refuse("POINTS", b + 1, "has a host element that names a node twice");
            if (!isfinite(bar->AREA) || !isfinite(bar->EMODUL) || !isfinite(bar->GMODUL) || !isfinite(bar->BARWEIGHT))
                return refuse("POINTS", b + 1, "holds a value that is not finite");
            if (!isfinite(NODES[bar->NODE - 1]) || !isfinite(NODES[(size_t)NNODES + (size_t)bar->NODE - 1]))
                return refuse("NODES", bar->NODE, "holds a value that is not finite");
            taken[bar->NODE - 1] = 1;
        }
    }
    return TAKEN;
}

refusal find_refusal(int32_t NGROUPS, const double* NODES, int32_t NNODES, const int32_t* ELEMENTS, int32_t NELEMS,
                     const double* PROPS, int32_t NPOINTS, const VYZTUZE_INFO* POINTS, double mode,
                     unsigned char* taken) {
    double EREF = 0.0;
    if (!NODES || !ELEMENTS || !PROPS || (!POINTS && NPOINTS != 0)) return refuse("call", 0, "has a null table");
    if (NGROUPS < 0 || NNODES < 0 || NELEMS < 0 || NPOINTS < 0) return refuse("call", 0, "has a negative count");
    if (NNODES == INT32_MAX || NELEMS == INT32_MAX || NPOINTS == INT32_MAX)
        return refuse("call", 0, "has a count of 2147483647");

    refusal fault = find_in_properties(NGROUPS, NELEMS, PROPS, mode, &EREF);
    if (fault.why) return fault;
    memset(taken, 0, (size_t)NNODES);
    fault = find_in_mesh(NODES, NNODES, ELEMENTS, NELEMS, PROPS, EREF, taken);
    return fault.why ? fault : find_in_bars(NODES, NNODES, ELEMENTS, NELEMS, NPOINTS, POINTS, taken);
}

/* First node of the piece that node n belongs to. Nodes on the way are moved nearer to it. */
static int32_t first_of(int32_t* piece, int32_t n) {
    while (piece[n - 1] != n) n = piece[n - 1] = piece[piece[n - 1] - 1];
    return n;
}

int32_t find_pieces(int32_t NNODES, const int32_t* ELEMENTS, int32_t NELEMS, const double* PROPS, int32_t* piece) {
    int32_t pieces = 0;
    memset(piece, 0, (size_t)NNODES * sizeof *piece);
    for (int32_t e = 0; e < NELEMS; ++e) {
        int32_t node[4];
        const int n = corners_of(ELEMENTS, NELEMS, e, node);
        const int ties = PROPS[(size_t)(VQ_GMOD - 1) * (size_t)NELEMS + (size_t)e] != 0.0;
        if (!ties && PROPS[(size_t)(VQ_EMOD - 1) * (size_t)NELEMS + (size_t)e] == 0.0) continue;
        for (int i = 0; i < n; ++i) {
            if (piece[node[i] - 1] == 0) piece[node[i] - 1] = node[i];
            if (!ties) continue;
            const int32_t a = first_of(piece, node[0]), b = first_of(piece, node[i]);
            piece[(a < b ? b : a) - 1] = a < b ? a : b;
        }
    }
    for (int32_t n = 1; n <= NNODES; ++n) {
        if (piece[n - 1] == 0) continue;
        piece[n - 1] = first_of(piece, n);
        pieces += piece[n - 1] == n;
    }
    return pieces;
}
