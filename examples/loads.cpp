// Loads, stresses and a picture with the kit: a hollow section of S235 under bending, shear and torsion.
#include <fstream>
#include <iostream>

#include "kit/analysis/loads.h"
#include "kit/draw/draw.h"
#include "kit/section/templates.h"

int main(int argc, char** argv) {
    velquor::Section section = velquor::section_of_profile("RHS 200x100x8");  // of S235, in N and mm

    velquor::Load load;  // about the centroid and the shear centre, in the section's units
    load.name = "girder";
    load.Vz = 80e3, load.My = 30e6, load.T = 8e6;
    section.loads.push_back(load);

    const velquor::Analysis analysis = analyse(section, {true});  // with stresses at the nodes, for a level more
    const velquor::LoadResult result = result_of(section, analysis, load);
    for (const velquor::MaterialStresses& m : result.materials)
        std::cout << m.material << ": shear " << m.shear.value << ", von Mises " << m.von_mises.value << " N/mm2, "
                  << 100 * m.utilisation.value << " % of the strength\n";

    if (argc < 2) return 0;  // the file of the picture
    velquor::Sheet sheet;
    for (const char* field : {"outline", "shear:girder", "mises:girder"})
        sheet.panels.push_back(panel_of(section, field, "sheet"));
    std::ofstream(argv[1]) << draw_svg(section, analysis, sheet);
}
