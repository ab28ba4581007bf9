#include "mesher.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

static const double PI = 3.14159265358979324;

mesh begin_mesh(double size, int refine) {
    mesh m = {.size = size, .refine = refine, .material = 1};
    if (!(size > 0.0) || refine < 1 || refine > 1000) m.size = 1.0, m.refine = 1, m.failed = 1;
    return m;
}

void release_mesh(mesh* m) {
    free(m->nodes);
    free(m->elements);
    free(m->materials);
    memset(m, 0, sizeof *m);
}

int cells_along(const mesh* m, double length) {
    const double n = length / m->size;
    return m->refine * (!(n >= 1.5) ? 1 : n > 1e6 ? 1000000 : (int)lround(n));
}

/* Room for so many more nodes and elements; 0 where it can be had. */
static int make_room(mesh* m, int64_t nodes, int64_t elements) {
    const int64_t n = m->nnodes + nodes, e = m->nelems + elements;
    if (m->failed || nodes < 0 || elements < 0 || n > 100000000 || e > 100000000) return m->failed = 1;
    if (n > m->node_room) {
        const int64_t room = n + n / 2;
        point* grown = realloc(m->nodes, (size_t)room * sizeof *grown);
        if (!grown) return m->failed = 1;
        m->nodes = grown, m->node_room = (int32_t)room;
    }
    if (e > m->element_room) {
        const int64_t room = e + e / 2;
        int32_t(*grown)[4] = realloc(m->elements, (size_t)room * sizeof *grown);
        if (grown) m->elements = grown;
        int32_t* materials = realloc(m->materials, (size_t)room * sizeof *materials);
        if (materials) m->materials = materials;
        if (!grown || !materials) return m->failed = 1;
        m->element_room = (int32_t)room;
    }
    return 0;
}

static void add_node(mesh* m, double y, double z) { m->nodes[m->nnodes++] = (point){y, z}; }

static void add_element(mesh* m, int32_t a, int32_t b, int32_t c, int32_t d) {
    const int32_t corners[4] = {a, b, c, d};
    m->materials[m->nelems] = m->material;
    memcpy(m->elements[m->nelems++], corners, sizeof corners);
}

/* Elements of a grid of (n1 + 1) (n2 + 1) nodes from `first` on, row by row. */
static void add_grid(mesh* m, int32_t first, int n1, int n2, int clockwise) {
    for (int j = 0; j < n2; ++j) {
        for (int i = 0; i < n1; ++i) {
            const int32_t a = first + j * (n1 + 1) + i, d = a + n1 + 1;
            if (clockwise)
                add_element(m, a, d, d + 1, a + 1);
            else
                add_element(m, a, a + 1, d + 1, d);
        }
    }
}

/* Where the inner nodes of an arc of n chords of this angle stand, over its radius: the ends stay on the arc, and the
 * polygon has the sector's area. Around a full circle all nodes are alike. */
static double arc_scale(int n, double step, int closed) {
    const double s = sin(step);
    if (closed) return sqrt(step / s);
    return n < 2 ? 1.0 : n == 2 ? step / s : (sqrt(s * s + (n - 2) * s * n * step) - s) / ((n - 2) * s);
}

/* Point i of n + 1 on a side from p to q. */
static point on_side(point p, point q, double bulge, int i, int n) {
    const double t = (double)i / n;
    const point straight = {p.y + (q.y - p.y) * t, p.z + (q.z - p.z) * t};
    if (bulge == 0.0 || i == 0 || i == n) return straight;

    const double half = 2 * atan(bulge), angle = (2 * t - 1) * half; /* from the middle of the arc */
    const double scale = arc_scale(n, fabs(2 * half) / n, 0);
    const double along = scale * sin(angle) / (2 * sin(half)); /* over the chord */
    const double right = (scale * cos(angle) - cos(half)) / (2 * sin(half));
    return (point){(p.y + q.y) / 2 + (q.y - p.y) * along + (q.z - p.z) * right,
                   (p.z + q.z) / 2 + (q.z - p.z) * along - (q.y - p.y) * right};
}

void add_patch(mesh* m, const point corners[4], const double bulge[4], int n1, int n2) {
    if (n1 < 1 || n2 < 1 || make_room(m, (int64_t)(n1 + 1) * (n2 + 1), (int64_t)n1 * n2)) {
        m->failed = 1;
        return;
    }
    const point p = corners[0], q = corners[1], r = corners[2], s = corners[3];
    const int32_t first = m->nnodes;
    for (int j = 0; j <= n2; ++j) {
        const double v = (double)j / n2;
        const point left = on_side(s, p, bulge[3], n2 - j, n2), right = on_side(q, r, bulge[1], j, n2);
        for (int i = 0; i <= n1; ++i) {
            const double u = (double)i / n1;
            const point low = on_side(p, q, bulge[0], i, n1), high = on_side(r, s, bulge[2], n1 - i, n1);
            const double P = (1 - u) * (1 - v), Q = u * (1 - v), R = u * v, S = (1 - u) * v;
            add_node(
                m,
                (1 - v) * low.y + v * high.y + (1 - u) * left.y + u * right.y - P * p.y - Q * q.y - R * r.y - S * s.y,
                (1 - v) * low.z + v * high.z + (1 - u) * left.z + u * right.z - P * p.z - Q * q.z - R * r.z - S * s.z);
        }
    }
    const double area = (r.y - p.y) * (s.z - q.z) - (s.y - q.y) * (r.z - p.z);
    add_grid(m, first, n1, n2, area < 0.0);
}

void add_rectangle(mesh* m, point from, point to) {
    const point corners[4] = {from, {to.y, from.z}, to, {from.y, to.z}};
    const double straight[4] = {0};
    add_patch(m, corners, straight, cells_along(m, fabs(to.y - from.y)), cells_along(m, fabs(to.z - from.z)));
}

void add_triangle(mesh* m, const point corners[3], int n) {
    if (n < 1 || make_room(m, (int64_t)(n + 1) * (n + 2) / 2, (int64_t)n * n)) {
        m->failed = 1;
        return;
    }
    const point p = corners[0], q = corners[1], r = corners[2];
    const double area = (q.y - p.y) * (r.z - p.z) - (r.y - p.y) * (q.z - p.z);
    int32_t row = m->nnodes; /* first node of the row, which has n + 1 - j of them */
    for (int j = 0; j <= n; row += n + 1 - j, ++j) {
        for (int i = 0; i + j <= n; ++i) {
            const double u = (double)i / n, v = (double)j / n;
            add_node(m, p.y + (q.y - p.y) * u + (r.y - p.y) * v, p.z + (q.z - p.z) * u + (r.z - p.z) * v);
        }
        for (int i = 0; i + j < n; ++i) {
            const int32_t a = row + i, b = a + 1, c = a + n + 1 - j;
            for (int up = 1; up >= 0; --up) {
                if (!up && i + j + 1 >= n) break;
                const int32_t one = up ? a : b, two = up ? b : c + 1, three = c;
                if (area > 0.0)
                    add_element(m, one, two, three, three);
                else
                    add_element(m, one, three, two, two);
            }
        }
    }
}

void add_sector(mesh* m, point centre, double inner, double outer, double from, double to) {
    const double first_angle = from * PI / 180, angle = (to - from) * PI / 180;
    const int n1 = cells_along(m, outer - inner), closed = to - from >= 360.0;
    int n2 = cells_along(m, angle * (inner + outer) / 2);
    if (closed && n2 < 8) n2 = 8;
    if (make_room(m, (int64_t)(n1 + 1) * (n2 + 1), (int64_t)n1 * n2)) return;
    const int32_t first = m->nnodes;
    const double scale = arc_scale(n2, angle / n2, closed);
    for (int j = 0; j <= n2; ++j) {
        const double phi = first_angle + angle * j / n2, f = closed || (j > 0 && j < n2) ? scale : 1.0;
        for (int i = 0; i <= n1; ++i) {
            const double radius = f * (inner + (outer - inner) * i / n1);
            add_node(m, centre.y + radius * cos(phi), centre.z + radius * sin(phi));
        }
    }
    add_grid(m, first, n1, n2, 0);
}

/* A square core with slightly round sides and four patches around it, in the unit circle; then stretched. */
void add_disc(mesh* m, point centre, double a, double b) {
    static const double ring[4] = {0.41421356237309505, 0, -0.14, 0}, core[4] = {0.14, 0.14, 0.14, 0.14};
    const int ny = cells_along(m, 1.2 * a), nz = cells_along(m, 1.2 * b), layers = cells_along(m, (a + b) / 4);
    const int32_t first = m->nnodes, first_element = m->nelems;
    point in[4], out[4];
    for (int k = 0; k < 4; ++k) {
        out[k].y = (k == 1 || k == 2 ? 1 : -1) * sqrt(0.5), out[k].z = (k >= 2 ? 1 : -1) * sqrt(0.5);
        in[k].y = 0.56 * out[k].y, in[k].z = 0.56 * out[k].z;
    }
    add_patch(m, in, core, ny, nz);
    for (int k = 0; k < 4; ++k) {
        const int next = (k + 1) % 4;
        const point corners[4] = {out[k], out[next], in[next], in[k]};
        add_patch(m, corners, ring, k % 2 ? nz : ny, layers);
    }
    for (int32_t n = first; n < m->nnodes; ++n)
        m->nodes[n] = (point){centre.y + a * m->nodes[n].y, centre.z + b * m->nodes[n].z};
    join_nodes(m, first);
    smooth_mesh(m, first_element, 20);
}

void split_in_triangles(mesh* m) {
    const int32_t count = m->nelems, material = m->material;
    if (make_room(m, 0, count)) return;
    for (int32_t e = 0; e < count; ++e) {
        int32_t* c = m->elements[e];
        if (c[2] == c[3]) continue;
        m->material = m->materials[e];
        add_element(m, c[0], c[2], c[3], c[3]);
        c[3] = c[2];
    }
    m->material = material;
}

void turn_and_shift(mesh* m, double angle, point by) {
    const double c = cos(angle * PI / 180), s = sin(angle * PI / 180);
    for (int32_t n = 0; n < m->nnodes; ++n) {
        const point p = m->nodes[n];
        m->nodes[n] = (point){c * p.y - s * p.z + by.y, s * p.y + c * p.z + by.z};
    }
}

/* Sorted along a direction that no side of a mesh is likely to cross at a right angle: few nodes have the same place.
 */
typedef struct place {
    double along;
    int32_t node;
} place;

static int by_place(const void* a, const void* b) {
    const place *p = a, *q = b;
    return p->along != q->along ? (p->along > q->along ? 1 : -1) : (p->node > q->node) - (p->node < q->node);
}

void join_nodes(mesh* m, int32_t first) {
    const int32_t count = m->nnodes - first;
    if (m->failed || count <= 0) return;
    place* places = malloc((size_t)count * sizeof *places);
    int32_t* number = malloc((size_t)count * sizeof *number);
    if (!places || !number) {
        m->failed = 1;
    } else {
        const double near = 1e-6 * m->size / m->refine;
        for (int32_t n = 0; n < count; ++n) {
            places[n] = (place){0.8121 * m->nodes[first + n].y + 0.5835 * m->nodes[first + n].z, n};
            number[n] = n;
        }
        qsort(places, (size_t)count, sizeof *places, by_place);
        for (int32_t i = 0; i < count; ++i) { /* each joins the one of lowest number near it */
            const point p = m->nodes[first + places[i].node];
            for (int32_t j = i + 1; j < count && places[j].along - places[i].along < 2 * near; ++j) {
                const int32_t a = number[places[i].node], b = places[j].node;
                const point q = m->nodes[first + b];
                if (fabs(p.y - q.y) < near && fabs(p.z - q.z) < near) {
                    const int32_t low = a < number[b] ? a : number[b];
                    number[places[i].node] = number[b] = low;
                }
            }
        }
        int32_t kept = 0;
        for (int32_t n = 0; n < count; ++n) { /* a node that joins one of a lower number finds it renumbered */
            if (number[n] == n) {
                m->nodes[first + kept] = m->nodes[first + n];
                number[n] = kept++;
            } else {
                number[n] = number[number[n]];
            }
        }
        for (int32_t e = 0; e < m->nelems; ++e)
            for (int c = 0; c < 4; ++c)
                if (m->elements[e][c] >= first) m->elements[e][c] = first + number[m->elements[e][c] - first];
        m->nnodes = first + kept;
    }
    free(places);
    free(number);
}

/* Angle at corner c of element e, radians. */
static double corner_angle(const mesh* m, int32_t e, int c) {
    const int32_t* n = m->elements[e];
    const int last = n[2] == n[3] ? 3 : 4;
    const point p = m->nodes[n[c]], q = m->nodes[n[(c + 1) % last]], r = m->nodes[n[(c + last - 1) % last]];
    return atan2((q.y - p.y) * (r.z - p.z) - (q.z - p.z) * (r.y - p.y),
                 (q.y - p.y) * (r.y - p.y) + (q.z - p.z) * (r.z - p.z));
}

typedef struct moved {
    point sum;    /* places that the elements ask for */
    double angle; /* of the quadrilaterals around the node; a full turn: it may move */
    int32_t count, material;
} moved;

/* Each element asks its corners to the square that is next to it, about the same centre, and a node goes to the mean
 * of the places it is asked to. */
void smooth_mesh(mesh* m, int32_t first, int sweeps) {
    moved* nodes = m->failed || m->nnodes == 0 ? NULL : calloc((size_t)m->nnodes, sizeof *nodes);
    if (!nodes) {
        m->failed = 1;
        return;
    }
    for (int32_t e = first; e < m->nelems; ++e) {
        for (int c = 0; c < 4 && m->elements[e][2] != m->elements[e][3]; ++c) {
            moved* node = nodes + m->elements[e][c];
            const int mixed = node->count++ > 0 && node->material != m->materials[e];
            node->angle += mixed ? -10 * PI : corner_angle(m, e, c);
            node->material = m->materials[e];
        }
    }
    for (int sweep = 0; sweep < sweeps; ++sweep) {
        for (int32_t e = first; e < m->nelems; ++e) {
            const int32_t* n = m->elements[e];
            if (n[2] == n[3]) continue;
            const point p = m->nodes[n[0]], q = m->nodes[n[1]], r = m->nodes[n[2]], s = m->nodes[n[3]];
            const double y = (p.y + q.y + r.y + s.y) / 4, z = (p.z + q.z + r.z + s.z) / 4;
            /* from the centre of the square to its corner 0; a quarter turn leads to the next corner */
            const double dy = (p.y - r.y + q.z - s.z) / 4, dz = (p.z - r.z - q.y + s.y) / 4;
            nodes[n[0]].sum.y += y + dy, nodes[n[0]].sum.z += z + dz;
            nodes[n[1]].sum.y += y - dz, nodes[n[1]].sum.z += z + dy;
            nodes[n[2]].sum.y += y - dy, nodes[n[2]].sum.z += z - dz;
            nodes[n[3]].sum.y += y + dz, nodes[n[3]].sum.z += z - dy;
        }
        for (int32_t n = 0; n < m->nnodes; ++n) {
            if (nodes[n].angle > 2 * PI - 1e-6)
                m->nodes[n] = (point){nodes[n].sum.y / nodes[n].count, nodes[n].sum.z / nodes[n].count};
            nodes[n].sum = (point){0, 0};
        }
    }
    free(nodes);
}

int end_mesh(mesh* m) {
    static const double STRAIGHT = 2.6; /* 149 degrees */
    join_nodes(m, 0);
    const int32_t count = m->nelems, material = m->material;
    for (int32_t e = 0; e < count && !m->failed; ++e) {
        for (int c = 0; c < 4 && m->elements[e][2] != m->elements[e][3]; ++c) {
            if (corner_angle(m, e, c) < STRAIGHT || make_room(m, 0, 1)) continue;
            int32_t n[4];
            for (int k = 0; k < 4; ++k) n[k] = m->elements[e][(c + k) % 4];
            m->material = m->materials[e];
            add_element(m, n[0], n[2], n[3], n[3]);
            n[3] = n[2];
            memcpy(m->elements[e], n, sizeof n);
        }
    }
    m->material = material;
    return m->failed ? -1 : 0;
}

void fill_tables(const mesh* m, double* nodes, int32_t* elements) {
    for (int32_t n = 0; n < m->nnodes; ++n) {
        nodes[n] = m->nodes[n].y;
        nodes[(size_t)m->nnodes + (size_t)n] = m->nodes[n].z;
    }
    for (int32_t e = 0; e < m->nelems; ++e)
        for (int c = 0; c < 4; ++c) elements[(size_t)c * (size_t)m->nelems + (size_t)e] = m->elements[e][c] + 1;
}
