#include "system/sparsematrix.h"

namespace SPARSEMATRIX_MOD {

void RELEASESPARSEMATRIX(SPARSEMATRIX& M) {
    M.IA.release();
    M.JA.release();
    M.A.release();
    M.N = 0;
}

}  // namespace SPARSEMATRIX_MOD
