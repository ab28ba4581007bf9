#include <algorithm>
#include <cmath>
#include <set>

#include "kit/analysis/measured.h"
#include "kit/section/units.h"
#include "kit/section/vectors.h"

namespace velquor {

namespace {

Value smaller(const Value& a, const Value& b) {
    const double value = std::min(a.value, b.value);
    return {value, std::max(value - std::min(a.value - a.bound, b.value - b.bound),
                            std::min(a.value + a.bound, b.value + b.bound) - value)};
}
Value narrower(const Value& a, const Value& b) { return b.bound < a.bound ? b : a; }  // of two for the same thing
Value exact(double value) { return {value, 0}; }
Value square(const Value& a) { return a * a; }

template <int SLOT>
Value slot(const Measured& s) {
    return s(SLOT);
}
template <int ABOVE, int BELOW>
Value over(const Measured& s) {
    return s(ABOVE) / s(BELOW);
}
template <int ABOVE, int BELOW>
Value root(const Measured& s) {
    return square_root(s(ABOVE) / s(BELOW));
}

// Distances of the extreme fibres from the centroid, along an axis at this angle from y and against it. A turned axis
// moves a fibre by its distance from the centroid at most.
enum class Axis { y, z, u, v };
enum class Side { positive, negative };

template <Axis AXIS, Side SIDE>
Value fibre(const Measured& s) {
    const bool principal = AXIS == Axis::u || AXIS == Axis::v, second = AXIS == Axis::z || AXIS == Axis::v;
    const Value turn = principal ? s.alpha : exact(0);
    const double angle = turn.value + (second ? PI / 2 : 0), c = std::cos(angle), a = std::sin(angle);
    const Extent extent = AXIS == Axis::y ? s.y : AXIS == Axis::z ? s.z : extent_of(s.analysis.mesh, angle);
    const double centre = AXIS == Axis::y   ? s.centre_y.value
                          : AXIS == Axis::z ? s.centre_z.value
                                            : s.centre_y.value * c + s.centre_z.value * a;
    const double reach = std::hypot(std::max(s.y.high - s.centre_y.value, s.centre_y.value - s.y.low),
                                    std::max(s.z.high - s.centre_z.value, s.centre_z.value - s.z.low));
    const double bound = AXIS == Axis::y   ? s.centre_y.bound
                         : AXIS == Axis::z ? s.centre_z.bound
                                           : s.centre_y.bound + s.centre_z.bound + reach * turn.bound;
    return {SIDE == Side::positive ? extent.high - centre : centre - extent.low, bound};
}

template <int MOMENT, Axis AXIS, Side SIDE>
Value elastic(const Measured& s) {
    return s(MOMENT) / s(VQ_EREF) / fibre<AXIS, SIDE>(s);
}
template <int MOMENT, Axis AXIS>
Value least_elastic(const Measured& s) {
    return smaller(elastic<MOMENT, AXIS, Side::positive>(s), elastic<MOMENT, AXIS, Side::negative>(s));
}
template <int PLMOD, int MOMENT, Axis AXIS>
Value shape_factor(const Measured& s) {
    return s(PLMOD) / least_elastic<MOMENT, AXIS>(s);
}

// Shear centre from the centroid, along y, z, u and v.
Value off_y(const Measured& s) { return s(VQ_SCY) - s.centre_y; }
Value off_z(const Measured& s) { return s(VQ_SCZ) - s.centre_z; }
Value off_u(const Measured& s) { return s.cos * off_y(s) + s.sin * off_z(s); }
Value off_v(const Measured& s) { return s.cos * off_z(s) - s.sin * off_y(s); }

Value polar(const Measured& s) { return (s(VQ_IYY) + s(VQ_IZZ)) / s(VQ_EREF); }
Value polar_of_shear_centre(const Measured& s) {
    return polar(s) + s(VQ_EA) / s(VQ_EREF) * (square(off_y(s)) + square(off_z(s)));
}
Value area(const Measured& s) { return s(VQ_EA) / s(VQ_EREF); }

// The shear area of a force without one across: one over the entry of the inverse, so that the energy of the stresses
// of a force V is V^2 / (2 G As). With [a b; b c] the stiffnesses it is a - b^2 / c, and equally (a c - b^2) / c, where
// the determinant is the same in all axes: the one with the narrower bound.
Value shear_area(const Measured& s, const Value& a, const Value& b, const Value& c) {
    const Value determinant = s(VQ_GAU) * s(VQ_GAV) - square(s(VQ_GAUV));
    return narrower(a - square(b) / c, determinant / c) / s(VQ_GREF);
}
Value between_y_and_z(const Measured& s) {
    return (s(VQ_GAU) - s(VQ_GAV)) * s.sin * s.cos + s(VQ_GAUV) * (square(s.cos) - square(s.sin));
}

// Wagner's factors: skew coefficient less twice the offset of the shear centre.
template <int SLOT, Value (*OFFSET)(const Measured&)>
Value wagner(const Measured& s) {
    return s(SLOT) - exact(2) * OFFSET(s);
}

constexpr Dimension NUMBER{}, LENGTH{1}, AREA{2}, VOLUME{3}, INERTIA{4}, WARPING{6}, FORCE{0, 1}, MODULUS{-2, 1},
    MOMENT{1, 1}, BENDING{2, 1}, STIFF_WARPING{4, 1}, MASS{-1, 0, 1};

constexpr bool MAIN = true, MORE = false;

std::vector<Quantity> area_and_centroid() {
    const char* const group = "Area and centroid";
    return {
        {"A", "A", group, "area, of all materials alike", "ANET", AREA, NOTHING, MAIN, "", slot<VQ_ANET>},
        {"A_tr", "A,tr", group, "transformed area", "EA / EREF", AREA, NOTHING, MAIN, "A", area},
        {"mass", "m", group, "mass of a metre", "WEIGHT", MASS, DENSITIES, MAIN, "",
         [](const Measured& s) { return s(VQ_WEIGHT) / exact(size_of(lengths(), s.section.length, "units.length")); }},
        {"P_out", "P,out", group, "perimeter outside", "", LENGTH, NOTHING, MAIN, "",
         [](const Measured& s) { return exact(s.perimeter.outside); }},
        {"P_in", "P,in", group, "perimeter of the holes", "", LENGTH, NOTHING, MAIN, "",
         [](const Measured& s) { return exact(s.perimeter.inside); }},
        {"y_C", "yC", group, "centroid", "YC", LENGTH, NOTHING, MAIN, "", [](const Measured& s) { return s.centre_y; }},
        {"z_C", "zC", group, "centroid", "ZC", LENGTH, NOTHING, MAIN, "", [](const Measured& s) { return s.centre_z; }},
        {"y_min", "y,min", group, "leftmost point", "", LENGTH, NOTHING, MORE, "",
         [](const Measured& s) { return exact(s.y.low); }},
        {"y_max", "y,max", group, "rightmost point", "", LENGTH, NOTHING, MORE, "",
         [](const Measured& s) { return exact(s.y.high); }},
        {"z_min", "z,min", group, "lowest point", "", LENGTH, NOTHING, MORE, "",
         [](const Measured& s) { return exact(s.z.low); }},
        {"z_max", "z,max", group, "highest point", "", LENGTH, NOTHING, MORE, "",
         [](const Measured& s) { return exact(s.z.high); }},
        {"e_right", "e,right", group, "from the centroid to the rightmost point", "", LENGTH, NOTHING, MORE, "",
         fibre<Axis::y, Side::positive>},
        {"e_left", "e,left", group, "to the leftmost point", "", LENGTH, NOTHING, MORE, "e_right",
         fibre<Axis::y, Side::negative>},
        {"e_top", "e,top", group, "to the highest point", "", LENGTH, NOTHING, MORE, "",
         fibre<Axis::z, Side::positive>},
        {"e_bottom", "e,bottom", group, "to the lowest point", "", LENGTH, NOTHING, MORE, "e_top",
         fibre<Axis::z, Side::negative>},
        {"e_u_pos", "e,+u", group, "to the farthest point along u", "", LENGTH, AXES, MORE, "e_right",
         fibre<Axis::u, Side::positive>},
        {"e_u_neg", "e,-u", group, "against u", "", LENGTH, AXES, MORE, "e_left", fibre<Axis::u, Side::negative>},
        {"e_v_pos", "e,+v", group, "along v", "", LENGTH, AXES, MORE, "e_top", fibre<Axis::v, Side::positive>},
        {"e_v_neg", "e,-v", group, "against v", "", LENGTH, AXES, MORE, "e_bottom", fibre<Axis::v, Side::negative>},
    };
}

std::vector<Quantity> bending() {
    const char* const group = "Bending";
    return {
        {"Iy", "Iy", group, "second moment, bending about y", "IZZ / EREF", INERTIA, NOTHING, MAIN, "",
         over<VQ_IZZ, VQ_EREF>},
        {"Iz", "Iz", group, "second moment, bending about z", "IYY / EREF", INERTIA, NOTHING, MAIN, "",
         over<VQ_IYY, VQ_EREF>},
        {"Iyz", "Iyz", group, "product moment", "DYZ / EREF", INERTIA, NOTHING, MAIN, "", over<VQ_DYZ, VQ_EREF>},
        {"alpha", "α", group, "from y to the strong axis u", "ALPHA", NUMBER, AXES, MAIN, "",
         [](const Measured& s) { return s(VQ_ALPHA) * exact(180 / PI); }},
        {"Iu", "Iu", group, "greater principal moment, about u", "I1 / EREF", INERTIA, PRINCIPAL, MAIN, "Iy",
         over<VQ_I1, VQ_EREF>},
        {"Iv", "Iv", group, "smaller principal moment, about v", "I2 / EREF", INERTIA, PRINCIPAL, MAIN, "Iz",
         over<VQ_I2, VQ_EREF>},
        {"Wel_y", "Wel,y", group, "least elastic modulus about y", "IZZ / EREF", VOLUME, WHOLE, MAIN, "",
         least_elastic<VQ_IZZ, Axis::z>},
        {"Wel_y_top", "Wel,y,top", group, "highest fibre", "IZZ / EREF", VOLUME, WHOLE, MAIN, "Wel_y",
         elastic<VQ_IZZ, Axis::z, Side::positive>},
        {"Wel_y_bottom", "Wel,y,bot", group, "lowest fibre", "IZZ / EREF", VOLUME, WHOLE, MAIN, "Wel_y",
         elastic<VQ_IZZ, Axis::z, Side::negative>},
        {"Wel_z", "Wel,z", group, "least elastic modulus about z", "IYY / EREF", VOLUME, WHOLE, MAIN, "",
         least_elastic<VQ_IYY, Axis::y>},
        {"Wel_z_right", "Wel,z,right", group, "rightmost fibre", "IYY / EREF", VOLUME, WHOLE, MAIN, "Wel_z",
         elastic<VQ_IYY, Axis::y, Side::positive>},
        {"Wel_z_left", "Wel,z,left", group, "leftmost fibre", "IYY / EREF", VOLUME, WHOLE, MAIN, "Wel_z",
         elastic<VQ_IYY, Axis::y, Side::negative>},
        {"Wel_u", "Wel,u", group, "least elastic modulus about u", "I1 / EREF", VOLUME, AXES | WHOLE, MAIN, "Wel_y",
         least_elastic<VQ_I1, Axis::v>},
        {"Wel_u_pos", "Wel,u,+v", group, "fibre at +v", "I1 / EREF", VOLUME, AXES | WHOLE, MAIN, "Wel_u",
         elastic<VQ_I1, Axis::v, Side::positive>},
        {"Wel_u_neg", "Wel,u,-v", group, "fibre at -v", "I1 / EREF", VOLUME, AXES | WHOLE, MAIN, "Wel_u",
         elastic<VQ_I1, Axis::v, Side::negative>},
        {"Wel_v", "Wel,v", group, "least elastic modulus about v", "I2 / EREF", VOLUME, AXES | WHOLE, MAIN, "Wel_z",
         least_elastic<VQ_I2, Axis::u>},
        {"Wel_v_pos", "Wel,v,+u", group, "fibre at +u", "I2 / EREF", VOLUME, AXES | WHOLE, MAIN, "Wel_v",
         elastic<VQ_I2, Axis::u, Side::positive>},
        {"Wel_v_neg", "Wel,v,-u", group, "fibre at -u", "I2 / EREF", VOLUME, AXES | WHOLE, MAIN, "Wel_v",
         elastic<VQ_I2, Axis::u, Side::negative>},
        {"i_y", "iy", group, "radius of gyration about y", "IZZ / EA", LENGTH, NOTHING, MAIN, "", root<VQ_IZZ, VQ_EA>},
        {"i_z", "iz", group, "radius of gyration about z", "IYY / EA", LENGTH, NOTHING, MAIN, "", root<VQ_IYY, VQ_EA>},
        {"i_u", "iu", group, "radius of gyration about u", "I1 / EA", LENGTH, PRINCIPAL, MAIN, "i_y",
         root<VQ_I1, VQ_EA>},
        {"i_v", "iv", group, "radius of gyration about v", "I2 / EA", LENGTH, PRINCIPAL, MAIN, "i_z",
         root<VQ_I2, VQ_EA>},
        {"Ip", "Ip", group, "polar moment about the centroid", "(IYY + IZZ) / EREF", INERTIA, WHOLE, MORE, "", polar},
        {"i_p", "ip", group, "polar radius about the centroid", "(IYY + IZZ) / EA", LENGTH, WHOLE, MORE, "",
         [](const Measured& s) { return square_root(polar(s) / area(s)); }},
    };
}

std::vector<Quantity> torsion() {
    const char* const group = "Torsion and warping";
    return {
        {"It", "It", group, "torsion constant", "GJ / GREF", INERTIA, NOTHING, MAIN, "", over<VQ_GJ, VQ_GREF>},
        {"Wt", "Wt", group, "torque / largest shear stress", "WT", VOLUME, NOTHING, MAIN, "", slot<VQ_WT>},
        {"Iw", "Iw", group, "warping constant, shear centre", "IW / EREF", WARPING, NOTHING, MAIN, "",
         over<VQ_IW, VQ_EREF>},
        {"y_M", "yM", group, "shear centre", "SCY", LENGTH, NOTHING, MAIN, "", slot<VQ_SCY>},
        {"z_M", "zM", group, "shear centre", "SCZ", LENGTH, NOTHING, MAIN, "", slot<VQ_SCZ>},
        {"u_M", "uM", group, "shear centre from the centroid, along u", "SCU, YC, ZC, ALPHA", LENGTH, AXES, MORE, "",
         off_u},
        {"v_M", "vM", group, "along v", "SCV, YC, ZC, ALPHA", LENGTH, AXES, MORE, "", off_v},
        {"u_0M", "u0M", group, "shear centre from the origin, along u", "SCU", LENGTH, AXES, MORE, "", slot<VQ_SCU>},
        {"v_0M", "v0M", group, "along v", "SCV", LENGTH, AXES, MORE, "", slot<VQ_SCV>},
        {"Ip_M", "Ip,M", group, "polar moment about the shear centre", "IYY, IZZ, SCY, SCZ", INERTIA, WHOLE, MORE, "Ip",
         polar_of_shear_centre},
        {"i_M", "iM", group, "polar radius, shear centre", "IYY, IZZ, SCY, SCZ", LENGTH, WHOLE, MAIN, "",
         [](const Measured& s) { return square_root(polar_of_shear_centre(s) / area(s)); }},
        {"Iw_C", "Iw,C", group, "warping constant about the centroid", "IWS / EREF", WARPING, WHOLE, MORE, "Iw",
         over<VQ_IWS, VQ_EREF>},
        {"beta_y", "βy", group, "Wagner: ∫ z r² / Iy - 2 zM", "RZ - 2 zM", LENGTH, WHOLE, MORE, "",
         wagner<VQ_RZ, off_z>},
        {"beta_z", "βz", group, "Wagner: ∫ y r² / Iz - 2 yM", "RY - 2 yM", LENGTH, WHOLE, MORE, "",
         wagner<VQ_RY, off_y>},
        {"beta_u", "βu", group, "Wagner: ∫ v r² / Iu - 2 vM", "RV - 2 vM", LENGTH, AXES | WHOLE, MORE, "beta_y",
         wagner<VQ_RV, off_v>},
        {"beta_v", "βv", group, "Wagner: ∫ u r² / Iv - 2 uM", "RU - 2 uM", LENGTH, AXES | WHOLE, MORE, "beta_z",
         wagner<VQ_RU, off_u>},
        {"beta_w", "βw", group, "Wagner: ∫ ω r² / Iw", "WR2 IWS / IW", NUMBER, WHOLE, MORE, "",
         [](const Measured& s) { return s(VQ_WR2) * s(VQ_IWS) / s(VQ_IW); }},
        {"r_z", "rz", group, "∫ z r² / Iy", "RZ", LENGTH, WHOLE, MORE, "", slot<VQ_RZ>},
        {"r_y", "ry", group, "∫ y r² / Iz", "RY", LENGTH, WHOLE, MORE, "", slot<VQ_RY>},
        {"r_v", "rv", group, "∫ v r² / Iu", "RV", LENGTH, AXES | WHOLE, MORE, "r_z", slot<VQ_RV>},
        {"r_u", "ru", group, "∫ u r² / Iv", "RU", LENGTH, AXES | WHOLE, MORE, "r_y", slot<VQ_RU>},
        {"r_w1", "rω1", group, "∫ ω r² about the centroid / Iw", "WR1", NUMBER, WHOLE, MORE, "", slot<VQ_WR1>},
        {"r_w2", "rω2", group, "∫ ω r² about the shear centre / Iw,C", "WR2", NUMBER, WHOLE, MORE, "", slot<VQ_WR2>},
    };
}

std::vector<Quantity> shear() {
    const char* const group = "Shear";
    return {
        {"As_y", "As,y", group, "shear area of a force along y", "GAY, GAU, GAV, GAUV", AREA, NOTHING, MAIN, "",
         [](const Measured& s) { return shear_area(s, s(VQ_GAY), between_y_and_z(s), s(VQ_GAZ)); }},
        {"As_z", "As,z", group, "shear area of a force along z", "GAZ, GAU, GAV, GAUV", AREA, NOTHING, MAIN, "",
         [](const Measured& s) { return shear_area(s, s(VQ_GAZ), between_y_and_z(s), s(VQ_GAY)); }},
        {"As_u", "As,u", group, "shear area of a force along u", "GAU, GAV, GAUV", AREA, AXES, MAIN, "As_y",
         [](const Measured& s) { return shear_area(s, s(VQ_GAU), s(VQ_GAUV), s(VQ_GAV)); }},
        {"As_v", "As,v", group, "shear area of a force along v", "GAU, GAV, GAUV", AREA, AXES, MAIN, "As_z",
         [](const Measured& s) { return shear_area(s, s(VQ_GAV), s(VQ_GAUV), s(VQ_GAU)); }},
    };
}

// A moment about +y (+u) pulls at +z (+v): direction 2 of the library; one about +z (+v) pulls at -y (-u): direction
// -1.
std::vector<Quantity> plastic() {
    const char* const group = "Plastic";
    const int moment = PLASTIC | STRENGTHS, factor = PLASTIC | ONE_MATERIAL | WHOLE;
    return {
        {"Wpl_y", "Wpl,y", group, "plastic modulus, tension on top", "PLMOD_Z", VOLUME, PLASTIC, MAIN, "",
         slot<VQ_PLMOD_Z>},
        {"Wpl_y_neg", "Wpl,y,neg", group, "tension at the bottom", "PLMOD_Z_NEG", VOLUME, PLASTIC, MAIN, "Wpl_y",
         slot<VQ_PLMOD_Z_NEG>},
        {"Wpl_z", "Wpl,z", group, "plastic modulus, tension left", "PLMOD_Y_NEG", VOLUME, PLASTIC, MAIN, "",
         slot<VQ_PLMOD_Y_NEG>},
        {"Wpl_z_neg", "Wpl,z,neg", group, "tension right", "PLMOD_Y", VOLUME, PLASTIC, MAIN, "Wpl_z", slot<VQ_PLMOD_Y>},
        {"Wpl_u", "Wpl,u", group, "plastic modulus, tension at +v", "PLMOD_V", VOLUME, AXES | PLASTIC, MAIN, "Wpl_y",
         slot<VQ_PLMOD_V>},
        {"Wpl_u_neg", "Wpl,u,neg", group, "tension at -v", "PLMOD_V_NEG", VOLUME, AXES | PLASTIC, MAIN, "Wpl_u",
         slot<VQ_PLMOD_V_NEG>},
        {"Wpl_v", "Wpl,v", group, "plastic modulus, tension at -u", "PLMOD_U_NEG", VOLUME, AXES | PLASTIC, MAIN,
         "Wpl_z", slot<VQ_PLMOD_U_NEG>},
        {"Wpl_v_neg", "Wpl,v,neg", group, "tension at +u", "PLMOD_U", VOLUME, AXES | PLASTIC, MAIN, "Wpl_v",
         slot<VQ_PLMOD_U>},
        {"Mpl_y", "Mpl,y", group, "plastic moment, tension on top", "PLMOM_Z", MOMENT, moment, MAIN, "",
         slot<VQ_PLMOM_Z>},
        {"Mpl_y_neg", "Mpl,y,neg", group, "tension at the bottom", "PLMOM_Z_NEG", MOMENT, moment, MAIN, "Mpl_y",
         slot<VQ_PLMOM_Z_NEG>},
        {"Mpl_z", "Mpl,z", group, "plastic moment, tension left", "PLMOM_Y_NEG", MOMENT, moment, MAIN, "",
         slot<VQ_PLMOM_Y_NEG>},
        {"Mpl_z_neg", "Mpl,z,neg", group, "tension right", "PLMOM_Y", MOMENT, moment, MAIN, "Mpl_z", slot<VQ_PLMOM_Y>},
        {"Mpl_u", "Mpl,u", group, "plastic moment, tension at +v", "PLMOM_V", MOMENT, AXES | moment, MAIN, "Mpl_y",
         slot<VQ_PLMOM_V>},
        {"Mpl_u_neg", "Mpl,u,neg", group, "tension at -v", "PLMOM_V_NEG", MOMENT, AXES | moment, MAIN, "Mpl_u",
         slot<VQ_PLMOM_V_NEG>},
        {"Mpl_v", "Mpl,v", group, "plastic moment, tension at -u", "PLMOM_U_NEG", MOMENT, AXES | moment, MAIN, "Mpl_z",
         slot<VQ_PLMOM_U_NEG>},
        {"Mpl_v_neg", "Mpl,v,neg", group, "tension at +u", "PLMOM_U", MOMENT, AXES | moment, MAIN, "Mpl_v",
         slot<VQ_PLMOM_U>},
        {"shape_y", "αpl,y", group, "shape factor Wpl,y / Wel,y", "PLMOD_Z, IZZ", NUMBER, factor, MAIN, "",
         shape_factor<VQ_PLMOD_Z, VQ_IZZ, Axis::z>},
        {"shape_z", "αpl,z", group, "shape factor Wpl,z / Wel,z", "PLMOD_Y_NEG, IYY", NUMBER, factor, MAIN, "",
         shape_factor<VQ_PLMOD_Y_NEG, VQ_IYY, Axis::y>},
        {"shape_u", "αpl,u", group, "shape factor Wpl,u / Wel,u", "PLMOD_V, I1", NUMBER, AXES | factor, MAIN, "shape_y",
         shape_factor<VQ_PLMOD_V, VQ_I1, Axis::v>},
        {"shape_v", "αpl,v", group, "shape factor Wpl,v / Wel,v", "PLMOD_U_NEG, I2", NUMBER, AXES | factor, MAIN,
         "shape_z", shape_factor<VQ_PLMOD_U_NEG, VQ_I2, Axis::u>},
        {"z_pl", "z,pl", group, "plastic axis, tension on top", "PLAXIS_Z", LENGTH, PLASTIC, MORE, "",
         slot<VQ_PLAXIS_Z>},
        {"z_pl_neg", "z,pl,neg", group, "tension at the bottom", "PLAXIS_Z_NEG", LENGTH, PLASTIC, MORE, "z_pl",
         slot<VQ_PLAXIS_Z_NEG>},
        {"y_pl", "y,pl", group, "plastic axis, tension left", "PLAXIS_Y_NEG", LENGTH, PLASTIC, MORE, "",
         slot<VQ_PLAXIS_Y_NEG>},
        {"y_pl_neg", "y,pl,neg", group, "tension right", "PLAXIS_Y", LENGTH, PLASTIC, MORE, "y_pl", slot<VQ_PLAXIS_Y>},
        {"v_pl", "v,pl", group, "plastic axis from the centroid, tension at +v", "PLAXIS_V", LENGTH,
         AXES | PLASTIC | WHOLE, MORE, "", slot<VQ_PLAXIS_V>},
        {"v_pl_neg", "v,pl,neg", group, "tension at -v", "PLAXIS_V_NEG", LENGTH, AXES | PLASTIC | WHOLE, MORE, "v_pl",
         slot<VQ_PLAXIS_V_NEG>},
        {"u_pl", "u,pl", group, "plastic axis from the centroid, tension at -u", "PLAXIS_U_NEG", LENGTH,
         AXES | PLASTIC | WHOLE, MORE, "", slot<VQ_PLAXIS_U_NEG>},
        {"u_pl_neg", "u,pl,neg", group, "tension at +u", "PLAXIS_U", LENGTH, AXES | PLASTIC | WHOLE, MORE, "u_pl",
         slot<VQ_PLAXIS_U>},
    };
}

std::vector<Quantity> stiffness() {
    const char* const group = "Stiffness";
    return {
        {"Eref", "E,ref", group, "elastic modulus of the reference material", "EREF", MODULUS, NOTHING, MORE, "",
         slot<VQ_EREF>},
        {"Gref", "G,ref", group, "shear modulus of the reference material", "GREF", MODULUS, NOTHING, MORE, "",
         slot<VQ_GREF>},
        {"EA", "EA", group, "axial stiffness", "EA", FORCE, NOTHING, MAIN, "", slot<VQ_EA>},
        {"EIy", "EIy", group, "bending stiffness about y", "IZZ", BENDING, NOTHING, MAIN, "", slot<VQ_IZZ>},
        {"EIz", "EIz", group, "bending stiffness about z", "IYY", BENDING, NOTHING, MAIN, "", slot<VQ_IYY>},
        {"EIyz", "EIyz", group, "its coupling", "DYZ", BENDING, NOTHING, MORE, "", slot<VQ_DYZ>},
        {"EIu", "EIu", group, "bending stiffness about u", "I1", BENDING, PRINCIPAL, MAIN, "EIy", slot<VQ_I1>},
        {"EIv", "EIv", group, "bending stiffness about v", "I2", BENDING, PRINCIPAL, MAIN, "EIz", slot<VQ_I2>},
        {"GJ", "GIt", group, "torsional stiffness", "GJ", BENDING, NOTHING, MAIN, "", slot<VQ_GJ>},
        {"EIw", "EIw", group, "warping stiffness", "IW", STIFF_WARPING, NOTHING, MAIN, "", slot<VQ_IW>},
        {"EIw_C", "EIw,C", group, "warping stiffness about the centroid", "IWS", STIFF_WARPING, WHOLE, MORE, "EIw",
         slot<VQ_IWS>},
        {"GAy", "GAy", group, "force of a unit shear along y", "GAY", FORCE, NOTHING, MAIN, "", slot<VQ_GAY>},
        {"GAz", "GAz", group, "force of a unit shear along z", "GAZ", FORCE, NOTHING, MAIN, "", slot<VQ_GAZ>},
        {"GAyz", "GAyz", group, "their coupling", "GAU, GAV, GAUV, ALPHA", FORCE, NOTHING, MORE, "", between_y_and_z},
        {"GAu", "GAu", group, "force of a unit shear along u", "GAU", FORCE, AXES, MORE, "GAy", slot<VQ_GAU>},
        {"GAv", "GAv", group, "force of a unit shear along v", "GAV", FORCE, AXES, MORE, "GAz", slot<VQ_GAV>},
        {"GAuv", "GAuv", group, "their coupling", "GAUV", FORCE, AXES, MORE, "GAyz", slot<VQ_GAUV>},
    };
}

}  // namespace

const std::vector<Quantity>& quantities() {
    static const std::vector<Quantity> all = [] {
        std::vector<Quantity> table;
        for (const auto& part : {area_and_centroid(), bending(), torsion(), shear(), plastic(), stiffness()})
            table.insert(table.end(), part.begin(), part.end());
        return table;
    }();
    return all;
}

Measured::Measured(const Section& of, const Analysis& by) : section(of), analysis(by) {
    std::set<std::string> materials;
    for (const Part& part : section.parts) {
        materials.insert(part.material);
        coupled = coupled || part.factor < 1;
    }
    for (const Bar& bar : section.bars) {
        materials.insert(bar.material);
        points = points || bar.as_point;
    }
    composite = materials.size() > 1;
    for (const Material& m : section.materials) densities = densities && (m.density > 0 || !materials.count(m.name));
    const Measured& s = *this;
    round = std::abs(s(VQ_I1).value - s(VQ_I2).value) <= s(VQ_I1).bound + s(VQ_I2).bound;
    perimeter = perimeter_of(analysis.mesh);
    y = extent_of(analysis.mesh, 0);
    z = extent_of(analysis.mesh, PI / 2);
    alpha = s(VQ_ALPHA);
    if (round) alpha.bound = 0;  // the axes are those that were taken
    cos = {std::cos(alpha.value), alpha.bound};
    sin = {std::sin(alpha.value), alpha.bound};
    // Of groups that slip the centre lies in other slots, turned as a pair of (z, y).
    centre_y = coupled ? cos * s(VQ_COUP1) + sin * s(VQ_COUP2) : s(VQ_YC);
    centre_z = coupled ? cos * s(VQ_COUP2) - sin * s(VQ_COUP1) : s(VQ_ZC);
}

}  // namespace velquor
