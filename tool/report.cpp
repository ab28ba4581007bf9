#include <filesystem>

#include "kit/report/report.h"
#include "kit/section/units.h"
#include "tool/commands.h"
#include "tool/inputs.h"
#include "tool/output.h"

namespace velquor {

int report(const ReportOptions& options) {
    return with_section(options.inputs, [&](const Section& section) {
        const bool paged = ending_of(options.output, {".html", ".htm", ".pdf"}) == ".pdf";
        if (!options.length.empty()) velquor::size_of(lengths(), options.length, "--units");
        if (!options.force.empty()) velquor::size_of(forces(), options.force, "--force");
        Effort effort;
        effort.stresses = !section.loads.empty();
        const Analysis analysis = analyse(section, effort);
        Report told = report_on(section, analysis, options.length, options.force);
        const std::string name = name_of(options.inputs, 0);
        std::error_code none;
        told.input = std::filesystem::exists(name, none) ? std::filesystem::path(name).filename().string() : name;
        told.project = options.project;
        told.by = options.by;
        told.date = options.date;
        const Document document = document_of(told);
        write(paged ? pdf_of(document) : html_of(document), options.output);
    });
}

}  // namespace velquor
