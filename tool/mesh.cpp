#include "kit/mesh/mesh.h"

#include "tool/commands.h"
#include "tool/inputs.h"
#include "tool/output.h"

namespace velquor {

int mesh(const MeshOptions& options) {
    return with_section(options.inputs,
                        [&](const Section& section) { write(show_mesh(section, mesh_of(section)), options.output); });
}

}  // namespace velquor
