// A rectangle 100 x 200 with the kit: a description in, values with bounds out. examples/rectangle.c is the same by the
// bare call, and docs/host_guide.md has both side by side.
#include <iostream>
#include <string>

#include "kit/analysis/values.h"
#include "kit/section/templates.h"
#include "kit/show/show.h"

// Lines are short enough to stand beside others.
// clang-format off
using namespace velquor;

int main() {
    const Section s = section_of_shape(
        "rectangle", {{"b", 100}, {"h", 200}});
    const Values values = values_of(s, analyse(s));
    for (const char* key : {"A", "Iy", "It"}) {
        const Value& v = values[key].value;
        const std::string bound = bound_text(v);
        std::cout << key << " = " << figures(v)
                  << (bound == "exact" ? " " : " ± ")
                  << bound << '\n';
    }
}
