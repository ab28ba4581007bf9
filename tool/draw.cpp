#include "kit/draw/draw.h"

#include "tool/commands.h"
#include "tool/inputs.h"
#include "tool/output.h"

namespace velquor {

int draw(const DrawOptions& options) {
    return with_section(options.inputs, [&](const Section& section) {
        const std::string form = options.output.empty() ? ".svg" : ending_of(options.output, {".svg", ".png", ".pdf"});
        Sheet sheet;
        sheet.dark = options.dark;
        sheet.plain = options.plain;
        if (!options.width.empty()) {
            sheet.width = number_of(options.width, "--width");
            if (!(sheet.width >= 16 && sheet.width <= 16000))
                throw Error("--width", options.width, "must be from 16 to 16000");
        }
        for (const std::string& field : options.fields) sheet.panels.push_back(panel_of(section, field, "--field"));
        if (sheet.panels.empty()) sheet.panels.emplace_back();
        Effort effort;
        effort.stresses = needs_stresses(sheet);
        const Analysis analysis = analyse(section, effort);
        write(form == ".svg"   ? draw_svg(section, analysis, sheet)
              : form == ".png" ? draw_png(section, analysis, sheet)
                               : draw_pdf(section, analysis, sheet),
              options.output);
    });
}

}  // namespace velquor
