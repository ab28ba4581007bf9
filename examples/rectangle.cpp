// A rectangle 100 x 200 with the kit: a description in, values with bounds out. examples/rectangle.c is the same by the
// bare call, and docs/host_guide.md has both side by side.
#include <iostream>

#include "kit/analysis/values.h"
#include "kit/section/templates.h"
#include "kit/show/show.h"

int main() {
    const auto section = velquor::section_of_shape("rectangle", {{"b", 100}, {"h", 200}});
    const auto analysis = velquor::analyse(section);
    const auto values = velquor::values_of(section, analysis);
    for (const char* key : {"A", "Iy", "It"}) {
        const velquor::Value& v = values[key].value;
        std::cout << key << " = " << figures(v) << " with a bound of " << bound_text(v) << '\n';
    }
}
