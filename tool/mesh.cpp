#include "kit/mesh/mesh.h"

#include "kit/section/file.h"
#include "tool/commands.h"
#include "tool/inputs.h"
#include "tool/output.h"

namespace velquor {

int mesh(const MeshOptions& options) {
    try {
        const Section section = section_of(options.inputs, 0);
        tell(name_of(options.inputs, 0), section.notes);
        check_section(section);
        write(show_mesh(section, mesh_of(section)), options.output);
        return DONE;
    } catch (const Error&) {
        const Failure fault = failure();
        complain(name_of(options.inputs, 0), fault);
        return fault.status;
    }
}

}  // namespace velquor
