#include "kit/requests/answer.h"
#include "kit/requests/catalogue.h"
#include "kit/section/file.h"
#include "tool/commands.h"
#include "tool/output.h"

namespace velquor {

int schema(Schema which) {
    switch (which) {
        case Schema::section: write(std::string(section_schema())); break;
        case Schema::result: write(show_schema()); break;
        case Schema::request: write(std::string(request_schema())); break;
        case Schema::answer: write(answer_schema()); break;
    }
    return DONE;
}

int catalogue() {
    write(catalogue_text());
    return DONE;
}

}  // namespace velquor
