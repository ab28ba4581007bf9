#include "tool/serve/site.h"

#include <cstdint>
#include <cstdio>

#include "kit/requests/catalogue.h"
#include "kit/section/file.h"

namespace velquor {

namespace {

std::string type_of(const std::string& path) {
    static const std::map<std::string, std::string> types = {{"css", "text/css; charset=utf-8"},
                                                             {"html", "text/html; charset=utf-8"},
                                                             {"ico", "image/x-icon"},
                                                             {"js", "text/javascript; charset=utf-8"},
                                                             {"json", "application/json"},
                                                             {"png", "image/png"},
                                                             {"svg", "image/svg+xml; charset=utf-8"},
                                                             {"txt", "text/plain; charset=utf-8"},
                                                             {"webmanifest", "application/manifest+json"},
                                                             {"woff2", "font/woff2"}};
    const auto at = types.find(path.substr(path.rfind('.') + 1));
    return at == types.end() ? "application/octet-stream" : at->second;
}

// FNV-1a of 64 bits: tells versions of a file apart, no more.
std::string tag_of(std::string_view text) {
    std::uint64_t hash = 14695981039346656037U;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
    char tag[24];
    std::snprintf(tag, sizeof tag, "\"%016llx\"", static_cast<unsigned long long>(hash));
    return tag;
}

}  // namespace

std::map<std::string, SiteFile> site() {
    std::map<std::string, SiteFile> all;
    const auto add = [&](const std::string& path, std::string text) {
        std::string tag = tag_of(text);
        all[path] = {type_of(path), std::move(text), std::move(tag)};
    };
    for (const Embedded& file : embedded()) add(file.path, std::string(file.text));
    add("/catalogue.json", catalogue_text());
    add("/section.schema.json", std::string(section_schema()));
    all["/"] = all["/index.html"];
    return all;
}

}  // namespace velquor
