#include "kit/section/file.h"
#include "tool/commands.h"
#include "tool/output.h"

namespace velquor {

int schema(bool of_results) {
    write(of_results ? show_schema() : std::string(section_schema()));
    return DONE;
}

}  // namespace velquor
