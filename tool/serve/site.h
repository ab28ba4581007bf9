// What the server has to show: the files of the page, built in, and what programs may choose from.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velquor {

struct Embedded {
    const char* path;  // "/page.js"
    std::string_view text;
};
const std::vector<Embedded>& embedded();  // the folder page/, as it was when this was built

struct SiteFile {
    std::string type, text;
    std::string tag;  // of this very content, as ETag has it
};

// By path. "/" is the page itself.
std::map<std::string, SiteFile> site();

}  // namespace velquor
