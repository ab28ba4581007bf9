#include <string>

#include "tool/commands.h"
#include "tool/output.h"
#include "velquor.h"

namespace velquor {

int version() {
    const auto text = [](int number) { return std::to_string(number); };
    write("velquor " + text(VQ_VERSION_MAJOR) + "." + text(VQ_VERSION_MINOR) + "." + text(VQ_VERSION_PATCH) + "\n" +
          "This program links Gmsh, which is under the GNU General Public License, version 2\n"
          "or later: so is the program as a whole. The library libvelquor has its own licence and does\n"
          "not use Gmsh.\n");
    return DONE;
}

}  // namespace velquor
