#include <initializer_list>

#include "data/vq_data_mod.h"

namespace VQ_DATA_MOD {

void INIT_VQCHAR(VELQUOR_CHAR& CHAR) { CHAR = VELQUOR_CHAR{}; }

void RELEASEVQDATA(VARIABLES_T& VARS) {
    VARS.XY.release();
    for (Table<double, 1>* table : {&VARS.ELEMAREA, &VARS.GROUPAREA, &VARS.GROUPZC, &VARS.GROUPYC, &VARS.GROUPDZ,
                                    &VARS.GROUPDY, &VARS.ELEMYC, &VARS.ELEMZC})
        table->release();
    VARS.ELEMPROP.release();
    VARS.ELEMNODES.release();
    VARS.NODEUSED.release();
}

}  // namespace VQ_DATA_MOD
