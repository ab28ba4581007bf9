// A host of vq_levels: the tables of a mesh, and the true course of its curved edges.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mesher.h"
#include "velquor_levels.h"

// An ellipse, or a circle, with half axes a and b, the first turned from Y by `turn` radians.
struct Curve {
    point centre;
    double a, b, turn;
};

// An edge of the mesh that stands for a piece of a curve, from the eccentric angle at A to that at B.
struct CurvedEdge {
    int32_t A, B;  // A < B
    Curve curve;
    double from, to;
};

struct Host {
    std::string name;
    int32_t nnodes = 0, nelems = 0, groups = 1;
    std::vector<double> nodes, props;  // column after column, as in velquor.h
    std::vector<int32_t> elements;
    std::vector<VYZTUZE_INFO> bars;
    double mode = VQ_ELASTIC;
    std::vector<CurvedEdge> curved;  // sorted by A, then B
};

// The part of a curve that an outline follows, between two angles in radians; a full turn or more: all of it.
struct Arc {
    Curve curve;
    double from, to;
};

// Edges that one element alone has, or elements of different moduli, and whose ends stand off one of the arcs by no
// more than a share of its radius follow it: their nodes are moved onto it, and place_on_curve knows them.
void follow(Host& host, const std::vector<Arc>& arcs, double share);

// About the origin first; curves go along.
void turn_and_shift(Host& host, double radians, point by);

// For vq_levels, with the host as context: at the share t of the angle between the edge's ends. Edges that follow no
// curve stay straight.
void place_on_curve(void* host, int32_t A, int32_t B, double t, double* YZ);
