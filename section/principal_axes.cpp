// Principal axes of the second moments, and the move of the mesh to the centroid.
#include <cmath>

#include "section/angle.h"
#include "section/basicchar.h"

namespace BASICCHAR_MOD {

namespace {

constexpr double MINPRODUCT = 0.0001;     // a product moment below this share of IYY + IZZ counts as none
constexpr double NEARLYONE = 0.9999999f;  // single precision on purpose: compared as 0.9999998807907104
constexpr double RIGHTANGLE = 1.5707963267948966;

}  // namespace

void SOLVEMAJORCOORDINATESYSTEM(LOGICAL& OK, const VARIABLES_T&, VELQUOR_CHAR& CHAR, Real<2, 2>& TRANS) {
    OK = VQ_DATA_MOD::LOGICAL_TRUE;
    const double S = CHAR.IYY + CHAR.IZZ;
    if (MINPRODUCT * S > std::fabs(CHAR.DYZ)) {
        // Equal moments, as of a circle, keep the axes.
        if (CHAR.IZZ > NEARLYONE * CHAR.IYY) {
            CHAR.I1 = CHAR.IZZ;
            CHAR.I2 = CHAR.IYY;
            CHAR.ALPHA = 0.0;
            TRANS = {{1.0, 0.0, 0.0, 1.0}};
        } else {
            CHAR.I1 = CHAR.IYY;
            CHAR.I2 = CHAR.IZZ;
            CHAR.ALPHA = RIGHTANGLE;
            TRANS = {{0.0, -1.0, 1.0, 0.0}};
        }
        return;
    }
    const double R = std::sqrt(4.0 * (CHAR.DYZ * CHAR.DYZ) + (CHAR.IYY - CHAR.IZZ) * (CHAR.IYY - CHAR.IZZ));
    CHAR.I1 = (S + R) * 0.5;
    CHAR.I2 = (S - R) * 0.5;
    CHAR.ALPHA = angle_of(-CHAR.DYZ, CHAR.I1 - CHAR.IYY);
    const auto [c, s] = direction_of(CHAR.ALPHA);
    TRANS = {{c, -s, s, c}};
}

void MOVEGRIDTOMASSCENTER(VARIABLES_T& VARS, const VELQUOR_CHAR& CHAR) {
    for (std::int32_t i = 1; i <= VARS.NNODES; ++i) VARS.XY(i, 1) -= CHAR.YC;
    for (std::int32_t i = 1; i <= VARS.NNODES; ++i) VARS.XY(i, 2) -= CHAR.ZC;
}

}  // namespace BASICCHAR_MOD
