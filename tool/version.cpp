#include <string>

#include "tool/commands.h"
#include "tool/output.h"
#include "velquor.h"

namespace velquor {

int version() {
    const auto text = [](int number) { return std::to_string(number); };
    write("velquor " + text(VQ_VERSION_MAJOR) + "." + text(VQ_VERSION_MINOR) + "." + text(VQ_VERSION_PATCH) + "\n" +
          "This program links Gmsh and dxflib, which are under the GNU General Public License,\n"
          "version 2: so is the program as a whole. The library libvelquor has its own licence and\n"
          "uses neither.\n");
    return DONE;
}

}  // namespace velquor
