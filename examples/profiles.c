#include <math.h>
#include <stddef.h>

#include "mesher.h"

static const double QUARTER = 1.57079632679489662; /* of a turn */

/* A corner of a profile: its outer point, and the two ways along the walls that meet there. */
typedef struct frame {
    point origin, x, y; /* x and y of length 1, at a right angle, in either sense */
} frame;

/* A patch given in the frame, where the members y, z of a point stand for x, y; no bulges: straight sides. */
static void patch(mesh* m, const frame* f, const point corners[4], const double* bulges, int n1, int n2) {
    const double sense = f->x.y * f->y.z - f->x.z * f->y.y;
    point outside[4];
    double turned[4] = {0};
    for (int i = 0; i < 4; ++i) {
        const point p = corners[i];
        outside[i].y = f->origin.y + p.y * f->x.y + p.z * f->y.y;
        outside[i].z = f->origin.z + p.y * f->x.z + p.z * f->y.z;
        if (bulges) turned[i] = sense * bulges[i];
    }
    if (n1 > 0 && n2 > 0) add_patch(m, outside, turned, n1, n2);
}

static void box(mesh* m, const frame* f, double x0, double y0, double x1, double y1, int n1, int n2) {
    const point corners[4] = {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}};
    patch(m, f, corners, NULL, n1, n2);
}

/* A point of the quarter circle from (offset, offset + r) to (offset + r, offset), round towards the origin. */
static point on_arc(double offset, double r, double part) {
    const double centre = offset + r, phi = QUARTER * part;
    return (point){part > 0 ? centre - r * cos(phi) : offset, part < 1 ? centre - r * sin(phi) : offset};
}

/* Layers of elements through a wall, two at least. */
static int layers(const mesh* m, double t) {
    const int n = cells_along(m, t);
    return n < 2 * m->refine ? 2 * m->refine : n;
}

static int at_least(int least, double n) { return n > least ? (int)lround(n) : least; }

/* The meeting of a wall of thickness W (along y, w layers) and one of thickness T (along x, t layers), with a root
 * fillet between them, up to where the fillet ends:
 *
 *        0 +---+------+--------+  x      One of the layers runs along the outline. The others go on to the outer sides,
 *          |   |      |        |         and a block b - d - a - c of k by k cells fills the rest. Five elements meet
 *          +---d------b--------+         at a and at b, three at c, four at every other inner node; smoothing makes
 *          |   |      |        |         them square.
 *          |   a------c   . ---+
 *          |   |    .
 *          +---+---+
 *          y
 */
static void fillet_corner(mesh* m, const frame* f, double W, double T, double r, int w, int t) {
    if (r <= 0.0) {
        box(m, f, 0, 0, W, T, w, t);
        return;
    }
    const int s = m->refine;                        /* counts are multiples of it */
    const double edge = fmin(W * s / w, T * s / t); /* of an unrefined element */
    const int k = at_least(1, 0.29 * (r / edge + 1)), chords = at_least(2 * k + 2, 1.13 * QUARTER * r / edge);
    const int e2 = (chords - 2 * k + 1) / 2, e1 = chords - 2 * k - e2; /* of the fillet, towards T and towards W */
    const int parts[4] = {e1, k, k, e2};

    const double xi = W - W * s / w, yi = T - T * s / t, c = r - (r + edge) * sqrt(0.5);
    const double xb = xi + (W + r - xi) * k / (k + e2), ya = yi + (T + r - yi) * k / (k + e1);
    const point inner[5] = {{xi, T + r}, {xi, ya}, {W + c, T + c}, {xb, yi}, {W + r, yi}};
    const point block[4] = {{xi, yi}, inner[3], inner[2], inner[1]};

    box(m, f, 0, 0, xi, yi, w - s, t - s);
    box(m, f, 0, yi, xi, ya, w - s, k * s);
    box(m, f, 0, ya, xi, T + r, w - s, e1 * s);
    box(m, f, xi, 0, xb, yi, k * s, t - s);
    box(m, f, xb, 0, W + r, yi, e2 * s, t - s);
    patch(m, f, block, NULL, k * s, k * s);
    for (int i = 0, done = 0; i < 4; done += parts[i], ++i) {
        point from = on_arc(0, r, (double)done / chords), to = on_arc(0, r, (double)(done + parts[i]) / chords);
        const point corners[4] = {{W + from.y, T + from.z}, {W + to.y, T + to.z}, inner[i + 1], inner[i]};
        const double bulges[4] = {tan(QUARTER * parts[i] / chords / 4)};
        patch(m, f, corners, bulges, parts[i] * s, s);
    }
}

static void finish(mesh* m, int32_t first_node, int32_t first_element) {
    join_nodes(m, first_node);
    smooth_mesh(m, first_element, 100 * m->refine);
}

void add_i_profile(mesh* m, double h, double b, double tw, double tf, double r, double b2, double tf2) {
    const int32_t first_node = m->nnodes, first_element = m->nelems;
    const int w = cells_along(m, tw / 2);
    for (int k = 0; k < 4; ++k) {
        const int up = k < 2;
        const double B = up ? b : b2, T = up ? tf : tf2;
        const frame f = {{0, up ? h / 2 : -h / 2}, {k % 2 ? 1 : -1, 0}, {0, up ? -1 : 1}};
        fillet_corner(m, &f, tw / 2, T, r, w, layers(m, T));
        box(m, &f, tw / 2 + r, 0, B / 2, T, cells_along(m, B / 2 - tw / 2 - r), layers(m, T));
    }
    const point low = {-tw / 2, tf2 + r - h / 2}, high = {tw / 2, h / 2 - tf - r};
    const point web[4] = {low, {high.y, low.z}, high, {low.y, high.z}};
    const double straight[4] = {0};
    add_patch(m, web, straight, 2 * w, cells_along(m, high.z - low.z));
    finish(m, first_node, first_element);
}

void add_u_profile(mesh* m, double h, double b, double tw, double tf, double r) {
    const int32_t first_node = m->nnodes, first_element = m->nelems;
    const int w = layers(m, tw), t = layers(m, tf);
    for (int up = 0; up < 2; ++up) {
        const frame f = {{0, up ? h / 2 : -h / 2}, {1, 0}, {0, up ? -1 : 1}};
        fillet_corner(m, &f, tw, tf, r, w, t);
        box(m, &f, tw + r, 0, b, tf, cells_along(m, b - tw - r), t);
    }
    const frame middle = {{0, 0}, {1, 0}, {0, 1}};
    box(m, &middle, 0, tf + r - h / 2, tw, h / 2 - tf - r, w, cells_along(m, h - 2 * (tf + r)));
    finish(m, first_node, first_element);
}

/* A leg from x on to its end at b, the inner edge there rounded. Some of the n layers end at the straight part of the
 * face, the others on the arc. The arc's halves are two sides of a patch: the element between them, nearly straight
 * at the arc's middle, is split at the end. */
static void leg(mesh* m, const frame* f, double x, double b, double t, double r, int n) {
    box(m, f, x, 0, b - r, t, cells_along(m, b - r - x), n);
    if (r <= 0.0) return;
    const int s = m->refine, upper = s * at_least(1, n / s * QUARTER / 2 * r / (t - r + QUARTER / 2 * r));
    const int lower = n - upper, along = cells_along(m, 0.9 * r);
    const double out = r * sqrt(0.5), bulge = tan(QUARTER / 8);
    const point inside = {b - r, t * lower / n}, low = {b, t - r}, middle = {b - r + out, t - r + out};
    const point face[4] = {{b - r, 0}, {b, 0}, low, inside}, arc[4] = {inside, low, middle, {b - r, t}};
    const double bulges[4] = {0, bulge, bulge, 0};
    patch(m, f, face, NULL, along, lower);
    patch(m, f, arc, bulges, along, upper);
}

void add_l_profile(mesh* m, double h, double b, double t, double r1, double r2) {
    const int32_t first_node = m->nnodes, first_element = m->nelems;
    const frame f = {{0, 0}, {1, 0}, {0, 1}}, mirrored = {{0, 0}, {0, 1}, {1, 0}};
    const int n = layers(m, t);
    fillet_corner(m, &f, t, t, r1, n, n);
    leg(m, &f, t + r1, b, t, r2, n);
    leg(m, &mirrored, t + r1, h, t, r2, n);
    finish(m, first_node, first_element);
}

/* One rounding is longer than the other, which goes on straight at both ends. `gap` of them is cut off the longer. */
void add_hollow_profile(mesh* m, double h, double b, double t, double ro, double ri) {
    const int32_t first_node = m->nnodes, first_element = m->nelems;
    const int n = layers(m, t), outer_long = ro > t + ri;
    const double end = outer_long ? ro : t + ri, gap = fabs(ro - t - ri);
    const int count = cells_along(m, QUARTER * (ro + ri) / 2 + gap), s = m->refine;
    const double share = gap / (QUARTER * (outer_long ? ri : ro) + 2 * gap);
    const int cut = gap > 1e-6 * t ? s * at_least(1, count / s * share) : 0, arc = count - 2 * cut;
    const int parts[3] = {cut, arc, cut};
    for (int k = 0; k < 4; ++k) {
        const double side = k % 2 ? 1 : -1, up = k < 2 ? 1 : -1;
        const frame f = {{side * b / 2, up * h / 2}, {-side, 0}, {0, -up}};
        for (int i = 0, done = 0; i < 3; done += parts[i], ++i) {
            point curved[2], straight[2]; /* of the longer and of the shorter rounding */
            const double offset = outer_long ? 0 : t, other = t - offset, r = outer_long ? ri : ro;
            for (int j = 0; j < 2; ++j) {
                curved[j] = on_arc(offset, outer_long ? ro : ri, (double)(done + j * parts[i]) / count);
                straight[j] = i + j == 0   ? (point){other, end}
                              : i + j == 1 ? (point){other, other + r}
                              : i + j == 2 ? (point){other + r, other}
                                           : (point){end, other};
            }
            const point corners[4] = {curved[0], curved[1], straight[1], straight[0]};
            const double bulges[4] = {tan(QUARTER * parts[i] / count / 4), 0, i == 1 ? -tan(QUARTER / 4) : 0, 0};
            patch(m, &f, corners, bulges, parts[i], n);
        }
    }
    const frame middle = {{0, 0}, {1, 0}, {0, 1}};
    const double y = b / 2, z = h / 2;
    const int ny = cells_along(m, b - 2 * end), nz = cells_along(m, h - 2 * end);
    for (int side = -1; side <= 1; side += 2) {
        box(m, &middle, end - y, side * (z - t), y - end, side * z, ny, n);
        box(m, &middle, side * (y - t), end - z, side * y, z - end, n, nz);
    }
    join_nodes(m, first_node);
    smooth_mesh(m, first_element, 10);
}
