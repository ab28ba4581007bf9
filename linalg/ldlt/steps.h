// How the factorisation works, and what its steps share.
//
// The matrices that come are a positive semidefinite stiffness K, one row for each node of a mesh, with a few rows of
// multipliers around it that hold out the null vectors of K and tie single unknowns to a handful of others. Nearly all
// of the work lies in K, and K needs no pivoting; so the border is kept apart and only the small dense rest is pivoted.
//
//   classify    sorts the unknowns. Empty rows are passed over. A positive diagonal makes the core, a zero diagonal the
//               border. A node that hangs on a multiplier alone (x_b = sum h_k x_k) is condensed together with it,
//               which is a 2 x 2 pivot (Duff and Reid) whose fill stays among the nodes h. Of every connected component
//               of the core one node is grounded, that is moved to the border: what remains of the core is positive
//               definite.
//   order       numbers the core so that its factor fills in little: approximate minimum degree (Amestoy, Davis, Duff).
//   symbolic    finds the shape of the factor before any value: elimination tree (Liu), column counts (Gilbert, Ng,
//               Peyton), supernodes, that is runs of columns with one pattern, small ones merged to save handling.
//   numeric     multifrontal elimination (Duff and Reid): each supernode gathers its columns and the update matrices of
//               its children in a dense front, eliminates its columns and leaves an update matrix to its parent.
//   border      eliminates the core from the border, the constraints as orthogonal combinations. The small dense rest
//               is indefinite and one front of the general path; what has no pivot left is undetermined and becomes 0.
//   solve       forward, border, backward, for four right-hand sides at a time.
//   refine      corrects the solution by the residual of the matrix as it was given, and judges it.
//   indefinite  the general path: takes what does not fit the picture above, any symmetric matrix, through threshold
//   front       pivoting in the fronts. Slower, seldom needed.
//
// Sources: T. A. Davis, Direct Methods for Sparse Linear Systems (2006); I. S. Duff and J. K. Reid, The multifrontal
// solution of indefinite sparse symmetric linear equations, ACM TOMS 9 (1983); J. R. Bunch and L. Kaufman, Some stable
// methods for calculating inertia and solving symmetric linear systems, Math. Comp. 31 (1977); J. R. Gilbert, E. G. Ng
// and B. W. Peyton, An efficient algorithm to compute row and column counts for sparse Cholesky factorization, SIAM J.
// Matrix Anal. Appl. 15 (1994); J. W. H. Liu, The role of elimination trees in sparse factorization, SIAM J. Matrix
// Anal. Appl. 11 (1990); P. R. Amestoy, T. A. Davis and I. S. Duff, An approximate minimum degree ordering algorithm,
// SIAM J. Matrix Anal. Appl. 17 (1996); L. Giraud, J. Langou and M. Rozloznik, The loss of orthogonality in the
// Gram-Schmidt orthogonalization process, Comput. Math. Appl. 50 (2005).
//
// Everything in this folder counts from 0. Three numberings stand side by side: unknowns, as the caller numbers them;
// core nodes 0 to nodes - 1, in the order in which they are found; and positions, the order of elimination, which ends
// with the grounded nodes. All memory belongs to the records below and ends with them; std::bad_alloc says that there
// is too little, or that an index would not fit 32 bits.
//
// An example: 3 x 3 nodes with four quadrilaterals, and a bar at node 9 in the element of nodes 0, 1, 4, 3. Unknowns 10
// to 12 are the multipliers of the three constraints, 13 is that of the bar.
//
//       6---7---8      unknown    0    1    2    3    4    5    6    7    8    9    10       11       12       13
//       |   |   |      kind       core core core core core core core core core hung primary  primary  primary  tie
//       3---4---5      place      0    1    2    3    4    5    6    7    8    0    0        1        2        0
//       | 9 |   |      position   5    6    0    7    8    4    1    3    2    -    -        -        -        -
//       0---1---2
//
// Node 4 has the largest diagonal and is grounded, so it stands at the last position, 8. The pivots are positions 0 to
// 7, the corners away from the bar first, as minimum degree has it; so few of them are one supernode. The border's
// unknowns are node 4 and the three primaries, in that order, a front of four rows. In the second system nothing ties
// the bar's node: its row touches multiplier 10 alone, so it is a second, and comes last in a front of three.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "linalg/ldlt/ldlt.h"
#include "linalg/ldlt/limits.h"
#include "linalg/memory.h"

namespace LDLT {

using LINALG::Buffer;
using LINALG::Memory;

struct Kernel;
const Kernel& kernel_of(Instructions instructions);

constexpr int LANES = 4;  // right-hand sides that are solved together; spare ones are 0

// Where the lanes of a row begin in a table (rows, LANES).
inline std::int64_t lanes_of(std::int64_t row) { return row * LANES; }

// What an unknown is. `place` is its number among its kind.
enum class Kind : std::int8_t {
    empty,    // no entry but zeros: x = 0
    core,     // positive diagonal; place counts core nodes
    primary,  // border row that touches the core, or touches many unknowns; place counts primaries
    second,   // border row that touches the border alone; place counts seconds
    hung,     // node that hangs on a tie; place counts ties
    tie       // its multiplier
};

// x_hung = (load - sum weight_k x_k) / s over core nodes; the hung node has the diagonal d and touches primaries.
struct Tie {
    std::int32_t hung, tie;
    double s, d;
};

// Rows as lists: row i has the entries start[i] to start[i + 1] - 1.
struct Lists {
    Memory* memory = nullptr;  // where its entries lie, and what is made of it
    std::vector<std::int32_t> start;
    Buffer<std::int32_t> column;
    Buffer<double> value;
};

// Turns the lengths in start into row starts, the last entry being the end, and takes memory for the entries.
void allocate(Lists& lists);
// Appends to row i; `end` begins as a copy of the row starts.
inline void append(Lists& lists, std::vector<std::int32_t>& end, std::int32_t i, std::int32_t column, double value) {
    lists.column[end[i]] = column;
    lists.value[end[i]++] = value;
}

// Calls visit(i, j, value) for every entry of A right of the diagonal that is not 0.
template <class Visit>
void for_each_entry(const Matrix& A, Visit visit) {
    for (std::int32_t i = 0; i < A.n; ++i)
        for (std::int32_t at = A.ia[i]; at < A.ia[i + 1] - 1; ++at)
            if (A.a[at] != 0) visit(i, A.ja[at] - 1, A.a[at]);
}

struct Classes {
    std::vector<Kind> kind;             // (n)
    std::vector<std::int32_t> place;    // (n)
    std::vector<std::int32_t> core;     // (nodes)      unknown of each core node
    std::vector<std::int32_t> primary;  // (primaries)  unknown of each primary
    std::vector<std::int32_t> second;   // (seconds)
    std::vector<Tie> ties;
    std::vector<std::int32_t> row;      // (n)          row in `rows`, -1 for what has none
    Lists rows;                         // full rows, by unknowns, of all but the nodes of the mesh
    Lists graph;                        // core without diagonals, both triangles, ties condensed, by core nodes
    std::vector<double> diagonal;       // (nodes)      its diagonal
    std::vector<std::int8_t> grounded;  // (nodes)      1 where the node belongs to the border
    bool negative = false;              // a negative diagonal: nothing else is filled
};

// Order of elimination and shape of the factor.
struct Symbolic {
    std::int32_t nodes = 0, pivots = 0;  // positions from `pivots` on are grounded
    std::vector<std::int32_t> node;      // (nodes)  core node at each position
    std::vector<std::int32_t> position;  // (nodes)  position of each core node
    std::int32_t supernodes = 0;
    std::vector<std::int32_t> first;       // (supernodes + 1)  first position of each supernode
    std::vector<std::int32_t> up;          // (supernodes)      parent supernode, -1 at a root
    std::vector<std::int64_t> rows_start;  // (supernodes + 1)  where in `rows` its rows below begin
    Buffer<std::int32_t> rows;             // positions of these rows, ascending
    std::vector<std::int64_t> panel;       // (supernodes + 1)  where in the factor its panel begins
    std::vector<std::int64_t> update;      // (supernodes)      where in its stack its update matrix begins
    std::vector<std::int8_t> stack;        // (supernodes)      which of the two stacks, by depth in the tree
    std::int64_t stack_size[2] = {0, 0};
    std::int32_t most_rows = 0;  // of a front
};

// The panel of a supernode with k columns and r rows below is a column-major block, the rows below last. Kernels take
// rows four at a time: rows of zeros fill the panel up to a multiple of four, and what they take beyond its last column
// is PADDING more. Update matrices are r x r with such rows.
constexpr std::int32_t PADDING = 4;
inline std::int32_t padded(std::int32_t size) { return (size + 3) & ~3; }

// What elimination of the core leaves at the grounded nodes i and j, counted from 0.
struct Remainder {
    std::int32_t i, j;
    double value;
};

struct Factor {
    Buffer<double> panels;               // L below its unit diagonal
    std::vector<double> pivot, inverse;  // (pivots)  D and 1 / D; both 0 where the pivot is null
    std::vector<std::int32_t> null;      // core nodes with a null pivot
    std::vector<Remainder> remainder;    // lower triangle
    bool negative = false;               // a negative pivot was met, the factor is not finished
};

// Kinds, ties, and the core's matrix in the caller's order.
Classes classify(const Matrix& A, Memory& memory);
// Chooses the grounded nodes, none where A must be definite, and renumbers the core where neighbours lie far apart.
void ground(Classes& c, bool definite);

// Nodes, pivots, node and position, so that the factor fills in little.
Symbolic order(const Lists& graph, const std::vector<std::int8_t>& grounded);
// That, the pivots reordered along the tree without more fill, and the rest.
Symbolic analyse(const Lists& graph, const std::vector<std::int8_t>& grounded);

// Y (blocks, nodes, LANES) by positions becomes L^-1 Y on the way, while each panel is at hand.
Factor factorise(const Classes& c, const Symbolic& S, double* Y, std::int64_t blocks, const Kernel& kernel);

// X (nodes, LANES) by positions: L^-1 X, and with the values at the grounded positions given L^-T X.
void forward(const Symbolic& S, const Factor& F, double* X, const Kernel& kernel);
void backward(const Symbolic& S, const Factor& F, double* X, const Kernel& kernel);

// A pivot of a dense front: null, of order 1, or first and second of order 2.
enum class Pivot : std::int8_t { null, single, first, second };

// A front of the general path while it is pivoted: full and symmetric, both triangles of what remains. Rows below
// `candidates` can become pivots, those below `done` are. Rows from `judged` on are no measure of a pivot.
struct OpenFront {
    std::size_t n = 0, candidates = 0, judged = 0, done = 0;
    double null = NULLGENERAL;       // size at which a column is null
    std::vector<double> F;           // (n, n)
    std::vector<std::int32_t> rows;  // (n)     what each row is
    std::vector<Pivot> block;        // (done)
};

// Takes every pivot that it can, columns that hold nothing but rounding as null ones. With `all` no candidate is left.
void pivot_front(OpenFront& f, bool all);

// What is kept of it: k pivots, then r rows.
struct IndefiniteFront {
    std::vector<std::int32_t> rows;  // (k + r)
    std::vector<double> L;           // (k + r, k)  L below the diagonal, D on it and beside it
    std::vector<Pivot> block;        // (k)
};
IndefiniteFront closed(OpenFront& f);

// X (k + r, LANES), the rows of a front: L^-1 X; D^-1 X, 0 at a null pivot, then L^-T X.
void forward(const IndefiniteFront& f, double* X);
void backward(const IndefiniteFront& f, double* X);

// Rows of a singular matrix that touch nothing but p others: at most p of them are independent, and the rest can not
// hold a pivot. Returns for each whether it stays, chosen by elimination with complete pivoting. rows (count, p), one
// after the other, is used up.
std::vector<std::int8_t> independent(std::vector<double>& rows, std::size_t count, std::size_t p);

// Multiplies the scale of every row by a power of 2, which leaves the digits as they are, so that its largest entry
// comes near 1.
//   entries(visit)  calls visit(i, j, a) for the entries, of which (j, i) may be left out
//   sets(i, j)      whether an entry (i, j) counts for row i
template <class Entries, class Sets>
void equilibrate(std::vector<double>& scale, Entries entries, Sets sets) {
    std::vector<double> largest(scale.size());
    for (int sweep = 0; sweep < SWEEPS; ++sweep) {
        std::fill(largest.begin(), largest.end(), 0.0);
        entries([&](std::size_t i, std::size_t j, double a) {
            const double size = std::fabs(a * scale[i] * scale[j]);
            if (sets(i, j)) largest[i] = std::max(largest[i], size);
            if (sets(j, i)) largest[j] = std::max(largest[j], size);
        });
        for (std::size_t i = 0; i < scale.size(); ++i)
            if (largest[i] > 0) scale[i] *= std::ldexp(1.0, -std::ilogb(largest[i]) / 2);
    }
}

// The border once the core is eliminated. Its unknowns are counted as grounded nodes, primaries, seconds.
struct Border {
    std::vector<std::int32_t> place;  // place of each border unknown in the front, -1 where it is dead
    Buffer<double> Y;                 // (blocks of 4 primaries, nodes, LANES)  L^-1 times the primaries' columns; Q of
                                      //                                        their Q R from `orthogonalise` on
    std::vector<double> R;            // (primaries, primaries)  unit upper triangle, column after column
    std::vector<double> length;  // (primaries)             of each column of Q in D^-1, of a dependent one as it was
    std::vector<std::int8_t> dependent;  // (primaries)          1 where a column depends on those before it
    std::vector<double> scale;           // (places)                of the rows of the front
    IndefiniteFront front;               //                         rows: places
    bool unfit = false;  // the core turned out indefinite, or the border too large: nothing else is filled
};

// Everything that is needed to solve. Where `dead` is set the equation is passed over and the unknown is 0, of a
// primary that among the combinations of Q.
struct System {
    Memory* memory = nullptr;
    bool general = false;  // the fronts below take all of the matrix; else the members before them
    Classes classes;
    Symbolic symbolic;
    Factor factor;
    Border border;
    std::vector<IndefiniteFront> fronts;
    std::vector<double> scale;      // (n)  powers of 2, general path
    std::vector<std::int8_t> dead;  // (n)
};

// The columns of the primaries by positions, ties condensed, four to a block, and the number of blocks.
std::int64_t primary_blocks(const Classes& c);
Buffer<double> primary_columns(const Classes& c, const Symbolic& S);

// X becomes R^-T X and R^-1 X: loads of the primaries in terms of Q, and their multipliers from those of Q. The
// entries of X stand `stride` apart.
void solve_transposed(const Border& border, double* X, std::size_t stride);
void solve_upper(const Border& border, double* X, std::size_t stride);

// Both fill `border`, its Y eliminated before, and `dead` of a system whose core is factorised, or the general members
// of an empty one.
void factorise_border(const Matrix& A, System& system);
void factorise_indefinite(const Matrix& A, System& system);

// X = A^-1 B, both (n, LANES) by unknowns. work (n, LANES).
void solve(const System& system, const double* B, double* X, double* work, const Kernel& kernel);
void solve_indefinite(const System& system, const double* B, double* X, double* work);

// How well a solution meets the equations, by lanes: its backward error, and that of rows which it passed over although
// they could be met.
struct Quality {
    double error[LANES] = {}, doubt[LANES] = {};
};

// Solves A X = B with refinement, (n, LANES).
Quality solve_refined(const Matrix& A, const System& system, const double* B, double* X, const Kernel& kernel);

}  // namespace LDLT
