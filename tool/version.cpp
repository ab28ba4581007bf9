#include "kit/show/lines.h"
#include "tool/commands.h"
#include "tool/output.h"

namespace velquor {

int version() {
    write("velquor " + version_text() + "\n" +
          "This program links Gmsh and dxflib, which are under the GNU General Public License,\n"
          "version 2 or later: so is the program as a whole. The library libvelquor has its own\n"
          "licence and uses neither.\n");
    return DONE;
}

}  // namespace velquor
