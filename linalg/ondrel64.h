// The sparse direct solver: one function with the sixteen arguments of the PARDISO interface, all by reference.
//
// It solves A X = B for a real symmetric A of which the upper triangle is given in compressed rows counted from 1;
// every row holds its diagonal first, stored also where it is 0, then its columns in strictly ascending order.
//
//   mtype   -2 symmetric indefinite, as a stiffness bordered by constraints; 2 symmetric positive definite
//   phase   13 does everything: orders, factorises, solves; all memory is taken and released within that call.
//           -1 has nothing left to release
//   n, nrhs order of A, columns of b and x (n, nrhs), which follow each other in memory
//   error   0 done; -1 inconsistent arguments, ia or ja not as above; -2 out of memory, or indices beyond 32 bits;
//           -4 a not finite, X beyond all reals, no X found that meets the equations (backward error above 1e-6), or A
//           not positive definite where mtype says so.
//           x is undefined unless error is 0
//
// The first word of handle may hold the address of a LINALG::Memory, in which one call leaves memory to the next; it is
// 0 otherwise. maxfct, mnum, perm, iparm and msglvl are not read: there is nothing to choose or to print. a, ia, ja and
// b are not modified; x must not overlap them.
//
// A column of b that is not finite gives a column of x that is not a number; the others are solved as ever.
//
// With mtype -2 a singular matrix is no error. An unknown whose row is empty, or whose pivot is nothing but rounding,
// is 0 and its equation is passed over; all other equations are solved. The result does not depend on threads, on the
// processor or on the other columns of b: each column has the same bits in every company.
#pragma once

#include <cstdint>

constexpr std::int32_t OD_OUT_OF_MEMORY = -2;

void OD_PARDISO2(std::int64_t* handle, const std::int32_t* maxfct, const std::int32_t* mnum, const std::int32_t* mtype,
                 const std::int32_t* phase, const std::int32_t* n, const double* a, const std::int32_t* ia,
                 const std::int32_t* ja, const std::int32_t* perm, const std::int32_t* nrhs, const std::int32_t* iparm,
                 const std::int32_t* msglvl, double* b, double* x, std::int32_t* error);
