#include "kit/analysis/slots.h"

namespace velquor {

namespace {

constexpr Dimension NUMBER{}, LENGTH{1}, AREA{2}, VOLUME{3}, FORCE{0, 1}, MODULUS{-2, 1}, MOMENT{1, 1}, BENDING{2, 1},
    WARPING{4, 1}, MASS{-1, 0, 1};

}  // namespace

const std::array<Slot, VQ_NSLOTS>& slots() {
    static const std::array<Slot, VQ_NSLOTS> table = {{
        {"EA", FORCE},           {"IYY", BENDING},         {"IZZ", BENDING},
        {"DYZ", BENDING},        {"YC", LENGTH},           {"ZC", LENGTH},
        {"SCY", LENGTH},         {"SCZ", LENGTH},          {"SCU", LENGTH},
        {"SCV", LENGTH},         {"GJ", BENDING},          {"GAY", FORCE},
        {"GAZ", FORCE},          {"IW", WARPING},          {"ALPHA", NUMBER},
        {"I1", BENDING},         {"I2", BENDING},          {"GAU", FORCE},
        {"GAV", FORCE},          {"GAUV", FORCE},          {"IWS", WARPING},
        {"WT", VOLUME},          {"RZ", LENGTH},           {"RY", LENGTH},
        {"RV", LENGTH},          {"RU", LENGTH},           {"WR1", NUMBER},
        {"WR2", NUMBER},         {"ANET", AREA},           {"PLAXIS_Y", LENGTH},
        {"PLAXIS_Z", LENGTH},    {"PLAXIS_Y_NEG", LENGTH}, {"PLAXIS_Z_NEG", LENGTH},
        {"PLMOD_Z", VOLUME},     {"PLMOD_Y", VOLUME},      {"PLMOD_Z_NEG", VOLUME},
        {"PLMOD_Y_NEG", VOLUME}, {"PLMOM_Z", MOMENT},      {"PLMOM_Y", MOMENT},
        {"PLMOM_Z_NEG", MOMENT}, {"PLMOM_Y_NEG", MOMENT},  {"PLAXIS_U", LENGTH},
        {"PLAXIS_V", LENGTH},    {"PLAXIS_U_NEG", LENGTH}, {"PLAXIS_V_NEG", LENGTH},
        {"PLMOD_V", VOLUME},     {"PLMOD_U", VOLUME},      {"PLMOD_V_NEG", VOLUME},
        {"PLMOD_U_NEG", VOLUME}, {"PLMOM_V", MOMENT},      {"PLMOM_U", MOMENT},
        {"PLMOM_V_NEG", MOMENT}, {"PLMOM_U_NEG", MOMENT},  {"COUP1", LENGTH},
        {"COUP2", LENGTH},       {"WEIGHT", MASS},         {"EREF", MODULUS},
        {"GREF", MODULUS},
    }};
    return table;
}

}  // namespace velquor
