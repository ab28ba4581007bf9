#include "kit/draw/draw.h"

#include <filesystem>

#include "kit/section/file.h"
#include "kit/section/words.h"
#include "tool/commands.h"
#include "tool/inputs.h"
#include "tool/output.h"

namespace velquor {

namespace {

using Writer = std::string (*)(const Section&, const Analysis&, const Sheet&);

// What draws the form that a file's name ends with.
Writer writer_of(const std::string& file) {
    if (file.empty()) return draw_svg;
    const std::string ending = plain(std::filesystem::path(file).extension().string());
    if (ending == ".svg") return draw_svg;
    if (ending == ".png") return draw_png;
    if (ending == ".pdf") return draw_pdf;
    throw Error("-o",
                ending.empty() ? in_quotes(file) + " has no ending" : "no picture is of the form " + in_quotes(ending),
                "end the name with .svg, .png or .pdf");
}

}  // namespace

int draw(const DrawOptions& options) {
    try {
        const Writer draw_form = writer_of(options.output);
        const Section section = section_of(options.inputs, 0);
        tell(name_of(options.inputs, 0), section.notes);
        check_section(section);
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
        write(draw_form(section, analyse(section, effort), sheet), options.output);
        return DONE;
    } catch (const Error&) {
        const Failure fault = failure();
        complain(name_of(options.inputs, 0), fault);
        return fault.status;
    }
}

}  // namespace velquor
