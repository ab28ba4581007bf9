#include "kit/requests/document.h"

#include "kit/draw/draw.h"
#include "kit/report/document.h"
#include "kit/report/report.h"
#include "kit/section/file.h"
#include "kit/show/binary.h"
#include "kit/show/show.h"

namespace velquor {

namespace {

using nlohmann::ordered_json;

ordered_json file(const char* type, const std::string& text) { return {{"type", type}, {"text", text}}; }

ordered_json picture(const Section& section, const Request::Document& wanted) {
    Sheet sheet;
    sheet.dark = wanted.dark;
    for (std::size_t i = 0; i < wanted.fields.size(); ++i)
        sheet.panels.push_back(panel_of(section, wanted.fields[i], "document.fields[" + std::to_string(i) + "]"));
    if (sheet.panels.empty()) sheet.panels.emplace_back();
    Effort effort;
    effort.stresses = needs_stresses(sheet);
    const Analysis analysis = analyse(section, effort);
    if (wanted.form == "svg") return file("image/svg+xml", draw_svg(section, analysis, sheet));
    return file("image/png", base64(draw_png(section, analysis, sheet)));
}

}  // namespace

ordered_json document_of(const Request& request) {
    const Section& section = request.section;
    const Request::Document& wanted = request.document;
    if (wanted.form == "section") return file("application/json", write_section(section));
    if (wanted.form == "svg" || wanted.form == "png") return picture(section, wanted);

    Effort effort;
    effort.stresses = !section.loads.empty();
    const Analysis analysis = analyse(section, effort);
    Report report = report_on(section, analysis, request.length, request.force);
    report.input = section.name.empty() ? "a section" : section.name;
    report.project = wanted.project;
    report.by = wanted.by;
    report.date = wanted.date;
    if (wanted.form == "html") return file("text/html", html_of(document_of(report)));
    if (wanted.form == "pdf") return file("application/pdf", base64(pdf_of(document_of(report))));

    Outcome outcome = {report.input, report.values, {}, {}};
    for (const LoadResult& load : report.loads)
        outcome.loads.push_back(in_units(load, report.values.length, report.values.force));
    return wanted.form == "csv" ? file("text/csv", show_csv({outcome}))
                                : file("application/json", show_json({outcome}));
}

}  // namespace velquor
