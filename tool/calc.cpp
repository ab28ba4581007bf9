#include <algorithm>

#include "kit/analysis/analysis.h"
#include "kit/analysis/plausible.h"
#include "kit/section/file.h"
#include "kit/section/units.h"
#include "tool/commands.h"
#include "tool/inputs.h"
#include "tool/output.h"

namespace velquor {

namespace {

std::string shown(const CalcOptions& options, const std::vector<Outcome>& outcomes) {
    if (options.form == CalcOptions::Form::json) return show_json(outcomes);
    if (options.form == CalcOptions::Form::csv) return show_csv(outcomes);
    const int width = options.output.empty() ? width_of_output() : 120;
    if (outcomes.size() > 1 || !options.columns.empty()) return show_table(outcomes, options.columns, width);
    if (outcomes.front().failure) return "";
    std::string text = show_text(outcomes.front().values, width, options.all);
    for (const LoadResult& load : outcomes.front().loads) text += show_load(load);
    return text;
}

}  // namespace

int calc(const CalcOptions& options) {
    show_table({}, options.columns, 0);  // refused before anything is calculated, as units are
    const bool tells_stresses =
        options.form == CalcOptions::Form::json ||
        (options.form == CalcOptions::Form::text && options.columns.empty() && count_of(options.inputs) == 1);
    if (!tells_stresses && !options.inputs.loads.empty())
        throw Error("--load", "a table of several sections, of --columns or as CSV has no stresses",
                    "give one section, or --json; velquor export writes stresses as CSV");
    std::vector<Outcome> outcomes;
    int status = DONE;
    for (std::size_t k = 0; k < count_of(options.inputs); ++k) {
        Outcome outcome;
        outcome.input = name_of(options.inputs, k);
        try {
            if (!options.length.empty()) size_of(lengths(), options.length, "--units");
            if (!options.force.empty()) size_of(forces(), options.force, "--force");
            const Section section = section_of(options.inputs, k);
            tell(outcome.input, section.notes);
            check_section(section);
            const Analysis analysis = analyse(section, {tells_stresses && !section.loads.empty()});
            for (const Finding& f : hardly_meant(section, analysis.mesh))
                complain(outcome.input, {"warning: " + f.place, f.message, f.remedy, DONE});
            const Values values = values_of(section, analysis);
            outcome.values = in_units(values, options.length.empty() ? values.length : options.length,
                                      options.force.empty() ? values.force : options.force);
            if (tells_stresses)
                for (const Load& load : section.loads)
                    outcome.loads.push_back(
                        in_units(result_of(section, analysis, load), outcome.values.length, outcome.values.force));
        } catch (...) {
            outcome.failure = failure();
            complain(outcome.input, *outcome.failure);
            status = std::max(status, outcome.failure->status);
        }
        outcomes.push_back(std::move(outcome));
    }
    write(shown(options, outcomes), options.output);
    return status;
}

}  // namespace velquor
