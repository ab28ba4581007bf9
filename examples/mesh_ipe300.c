/* The quarter Y, Z >= 0 is meshed and mirrored twice. It has two parts, drawn here with the counts of elements:
 *
 *      5 s  +----+------+--------+------- ... ---+
 *           |    |      |        |               |    core: the rows and columns of a rectangular grid down to the
 *      3 s  +----+------B--------+------- ... ---+          staircase A - C - B
 *           |    |      |      strip             |
 *      4 s  +----A------C    . -----------...----+    strip: s layers between that staircase and the outline, along
 *           |    | strip  .                                  web, root fillet and flange
 *           |    |      |
 *     70 s  |    |      |
 *           ...
 *             s    3 s      5 s         32 s
 *
 * Five elements meet at A and at B, three at C, four at every other inner node. The counts are chosen for this outline:
 * with others the smoothing ends in longer elements. */
#include "mesh_ipe300.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

static const double H = 150.0, B = 75.0;    /* half height, half width */
static const double TW = 3.55, TF = 10.7;   /* half web, flange */
static const double R = 15.0;               /* root radius */
static const double YR = 18.55, ZR = 124.3; /* centre of the root fillet: TW + R, H - TF - R */
static const double QUARTER_TURN = 1.57079632679489662;

/* What the smoothing leaves as it is at a node. */
enum { FREE = 0, HOLD_Y = 1, HOLD_Z = 2, HOLD = HOLD_Y | HOLD_Z, HOLD_RADIUS = 4 };

typedef struct node {
    double y, z, oldy, oldz; /* place now and before the last sweep */
    double sumy, sumz;       /* places that the elements ask for */
    int count, hold;         /* elements at the node; what it keeps */
} node;

typedef struct quarter {
    int s, cols, rows, path; /* columns and rows of the core, steps of its staircase */
    int32_t nnodes, nelems;  /* numbers count from 0 here */
    int32_t *core, *strip;   /* (rows + 1, cols + 1), (s + 1, path + 1)  node numbers row by row; -1: no such node */
    double *y, *z;           /* grid lines of the core */
    node* nodes;
    int32_t (*corners)[4];
} quarter;

static int32_t add_node(quarter* q, double y, double z, int hold) {
    q->nodes[q->nnodes] = (node){.y = y, .z = z, .oldy = y, .oldz = z, .hold = hold};
    return q->nnodes++;
}

static void add_element(quarter* q, int32_t a, int32_t b, int32_t c, int32_t d) {
    const int32_t corners[4] = {a, b, c, d};
    for (int i = 0; i < 4; ++i) ++q->nodes[corners[i]].count;
    memcpy(q->corners[q->nelems++], corners, sizeof corners);
}

/* Cuts the range from x[from] up to `value` at x[to] into equal parts. */
static void divide(double* x, int from, int to, double value) {
    const double first = x[from];
    for (int i = from + 1; i <= to; ++i) x[i] = first + (value - first) * (i - from) / (to - from);
}

/* First places of the nodes, and the elements. The smoothing takes the two blocks of web and flange next to the fillet
 * with it; the rest of them is regular and stays so. */
static void fill_quarter(quarter* q) {
    const int s = q->s, foot = 70 * s, toe = 9 * s; /* the fillet reaches from row foot to column toe */
    const int jA = 74 * s, jB = 77 * s, iC = 4 * s;
    const double out = (R + TW / 2) * sqrt(0.5); /* from the fillet's centre to C, along Y and along Z */

    q->y[0] = q->z[0] = 0.0;
    divide(q->y, 0, s, TW / 2), divide(q->y, s, iC, YR - out), divide(q->y, iC, toe, YR);
    divide(q->y, toe, q->cols, B);
    divide(q->z, 0, foot, ZR), divide(q->z, foot, jA, ZR + out), divide(q->z, jA, jB, H - TF * 5 / 6);
    divide(q->z, jB, q->rows, H);

    for (int j = 0; j <= q->rows; ++j) {
        for (int i = 0; i <= q->cols; ++i) {
            const int inside = i <= s || j >= jB || (i <= iC && j >= jA);
            const int regular = j <= foot - 2 * s || i >= toe + 2 * s;
            const int hold = regular ? HOLD : (i == 0 ? HOLD_Y : FREE) | (j == q->rows ? HOLD_Z : FREE);
            q->core[j * (q->cols + 1) + i] = inside ? add_node(q, q->y[i], q->z[j], hold) : -1;
        }
    }

    /* The nodes of the outline stand a little outside the arc, so that the chords enclose the arc's area. */
    const int chords = q->path - foot - (q->cols - toe);
    const double step = QUARTER_TURN / chords, radius = R * sqrt(step / sin(step));
    for (int t = 0, i = s, j = 0; t <= q->path; ++t) {
        const int on_web = t <= foot, on_flange = t >= foot + chords, end = t == foot || t == foot + chords;
        const double yo = on_web ? TW : on_flange ? q->y[i] : YR - radius * cos((t - foot) * step);
        const double zo = on_web ? q->z[j] : on_flange ? H - TF : ZR + radius * sin((t - foot) * step);
        const int regular = j <= foot - 2 * s || i >= toe + 2 * s;
        const int hold = on_web ? HOLD_Y : on_flange ? HOLD_Z : HOLD_RADIUS;

        const int32_t n = q->strip[t] = q->core[j * (q->cols + 1) + i];
        const double y = q->nodes[n].y, z = q->nodes[n].z;
        for (int l = 1; l <= s; ++l)
            q->strip[l * (q->path + 1) + t] = add_node(q, y + (yo - y) * l / s, z + (zo - z) * l / s,
                                                       regular || (end && l == s) ? HOLD
                                                       : l == s                   ? hold
                                                                                  : FREE);
        if (j < jA || (i == iC && j < jB))
            ++j;
        else
            ++i;
    }

    for (int j = 0; j < q->rows; ++j) {
        for (int i = 0; i < q->cols; ++i) {
            const int32_t *low = q->core + j * (q->cols + 1) + i, *high = low + q->cols + 1;
            if (low[1] >= 0) add_element(q, low[0], low[1], high[1], high[0]);
        }
    }
    for (int l = 0; l < s; ++l) {
        for (int t = 0; t < q->path; ++t) {
            const int32_t *in = q->strip + l * (q->path + 1) + t, *outer = in + q->path + 1;
            add_element(q, in[0], outer[0], outer[1], in[1]);
        }
    }
}

/* Makes the elements as nearly square as they can be. Each asks its corners to the square that is next to it, about the
 * same centre, and a node goes to the mean of the places it is asked to; it keeps most of its last move besides, which
 * saves sweeps. */
static void smooth(quarter* q) {
    const double keep = 1.0 - 0.3 / q->s;
    for (int sweep = 0; sweep < 200 * q->s; ++sweep) {
        for (int32_t e = 0; e < q->nelems; ++e) {
            node* p[4];
            for (int c = 0; c < 4; ++c) p[c] = q->nodes + q->corners[e][c];
            const double y = (p[0]->y + p[1]->y + p[2]->y + p[3]->y) / 4;
            const double z = (p[0]->z + p[1]->z + p[2]->z + p[3]->z) / 4;
            /* from the centre of the square to its corner 0; a quarter turn leads to the next corner */
            const double dy = (p[0]->y - p[2]->y + p[1]->z - p[3]->z) / 4;
            const double dz = (p[0]->z - p[2]->z - p[1]->y + p[3]->y) / 4;
            p[0]->sumy += y + dy, p[0]->sumz += z + dz;
            p[1]->sumy += y - dz, p[1]->sumz += z + dy;
            p[2]->sumy += y - dy, p[2]->sumz += z - dz;
            p[3]->sumy += y + dz, p[3]->sumz += z - dy;
        }
        for (node* p = q->nodes; p < q->nodes + q->nnodes; ++p) {
            const double y = p->y, z = p->z;
            if (!(p->hold & HOLD_Y)) p->y = p->sumy / p->count + keep * (y - p->oldy);
            if (!(p->hold & HOLD_Z)) p->z = p->sumz / p->count + keep * (z - p->oldz);
            if (p->hold & HOLD_RADIUS) {
                const double scale = hypot(y - YR, z - ZR) / hypot(p->y - YR, p->z - ZR);
                p->y = YR + (p->y - YR) * scale, p->z = ZR + (p->z - ZR) * scale;
            }
            p->oldy = y, p->oldz = z, p->sumy = p->sumz = 0.0;
        }
    }
}

/* The four images of the quarter: bit 0 of k mirrors Y, bit 1 mirrors Z. The image of a node on an axis is the node
 * that is there already, found by its number; one mirror alone turns the corners clockwise, so they are taken
 * backwards. */
static int mirror(const quarter* q, ipe300_mesh* mesh) {
    int32_t(*image)[4] = malloc((size_t)q->nnodes * sizeof *image);
    if (!image) return -1;
    for (int32_t n = 0; n < q->nnodes; ++n)
        for (int k = 0; k < 4; ++k)
            image[n][k] = (k & 1) && q->nodes[n].y == 0.0   ? image[n][k - 1]
                          : (k & 2) && q->nodes[n].z == 0.0 ? image[n][k - 2]
                                                            : ++mesh->nnodes;
    mesh->nelems = 4 * q->nelems;

    const size_t nnodes = (size_t)mesh->nnodes, nelems = (size_t)mesh->nelems;
    mesh->nodes = malloc(2 * nnodes * sizeof *mesh->nodes);
    mesh->elements = malloc(4 * nelems * sizeof *mesh->elements);
    const int failed = !mesh->nodes || !mesh->elements;
    for (int k = 0; k < 4 && !failed; ++k) {
        for (int32_t n = 0; n < q->nnodes; ++n) {
            double* row = mesh->nodes + image[n][k] - 1;
            row[0] = k & 1 ? 0.0 - q->nodes[n].y : q->nodes[n].y; /* 0.0 - y: no negative zero on the axis */
            row[nnodes] = k & 2 ? 0.0 - q->nodes[n].z : q->nodes[n].z;
        }
        for (int32_t e = 0; e < q->nelems; ++e) {
            int32_t* row = mesh->elements + k * q->nelems + e;
            for (int c = 0; c < 4; ++c) row[(size_t)c * nelems] = image[q->corners[e][k == 1 || k == 2 ? 3 - c : c]][k];
        }
    }
    free(image);
    return failed ? -1 : 0;
}

int mesh_ipe300(int s, ipe300_mesh* mesh) {
    quarter q = {.s = s, .cols = 41 * s, .rows = 82 * s, .path = 117 * s};
    const size_t grid = (size_t)(q.cols + 1) * (size_t)(q.rows + 1);
    const size_t layers = (size_t)(s + 1) * (size_t)(q.path + 1);
    const size_t most = grid + layers; /* bound of the nodes and of the elements */
    int failed = -1;

    memset(mesh, 0, sizeof *mesh);
    q.core = malloc(most * sizeof *q.core);
    q.y = malloc((size_t)(q.cols + q.rows + 2) * sizeof *q.y);
    q.nodes = malloc(most * sizeof *q.nodes);
    q.corners = malloc(most * sizeof *q.corners);
    if (q.core && q.y && q.nodes && q.corners) {
        q.strip = q.core + grid;
        q.z = q.y + q.cols + 1;
        fill_quarter(&q);
        smooth(&q);
        failed = mirror(&q, mesh);
    }
    free(q.core);
    free(q.y);
    free(q.nodes);
    free(q.corners);
    if (failed) release_mesh(mesh);
    return failed;
}

void release_mesh(ipe300_mesh* mesh) {
    free(mesh->nodes);
    free(mesh->elements);
    memset(mesh, 0, sizeof *mesh);
}
