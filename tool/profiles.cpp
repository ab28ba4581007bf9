#include "kit/section/profiles.h"

#include <cmath>

#include "kit/section/section.h"
#include "kit/section/shapes.h"
#include "kit/section/words.h"
#include "tool/commands.h"
#include "tool/output.h"

namespace velquor {

namespace {

// Inches come out as they are drawn, without what rounding adds to them.
std::string in_mm(double length) { return text_of(std::round(1e6 * length) / 1e6); }

}  // namespace

// A line for each profile whose name contains the filter, whatever its blanks and capitals: its standard and
// dimensions.
int profiles(const std::string& filter) {
    std::string text;
    for (const std::string& name : profile_names()) {
        if (plain(name).find(plain(filter)) == std::string::npos) continue;
        const Profile profile = profile_of(name, "mm", "");
        std::string line = name + std::string(name.size() < 20 ? 20 - name.size() : 1, ' ');
        for (const Parameter& parameter : shape_of(profile.shape, "").parameters)
            if (const auto at = profile.parameters.find(parameter.name); at != profile.parameters.end())
                line += std::string(" ") + parameter.name + " " + in_mm(at->second);
        text += line + "  " + profile.standard + "\n";
    }
    if (text.empty())
        throw Error("", "no profile's name contains " + in_quotes(filter), did_you_mean(filter, profile_names()));
    write(text);
    return DONE;
}

}  // namespace velquor
