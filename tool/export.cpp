#include <algorithm>

#include "kit/section/words.h"
#include "kit/show/fields.h"
#include "tool/batch/batch.h"
#include "tool/commands.h"
#include "tool/inputs.h"
#include "tool/output.h"

namespace velquor {

int export_fields(const ExportOptions& options) {
    if (options.inputs.names.size() == 1 && is_results(options.inputs.names.front())) {
        const auto given = [](const auto& pairs) {
            return std::any_of(pairs.begin(), pairs.end(), [](const auto& pair) { return !pair.second.empty(); });
        };
        const Inputs& i = options.inputs;
        if (!options.cases.empty() || options.finest || !i.shape.empty() || !i.loads.empty() || !i.materials.empty() ||
            given(i.material) || given(i.wishes))
            throw Error(i.names.front(), "results of a batch have values alone", "give -o FILE and no other option");
        return export_results(i.names.front(), options.output);
    }
    return with_section(options.inputs, [&](const Section& section) {
        using Writer = std::string (*)(const Section&, const Fields&);
        const std::string form = ending_of(options.output, {".vtu", ".msh", ".csv"});
        const Writer shown = form == ".vtu" ? Writer(show_vtu) : form == ".msh" ? Writer(show_mesh) : Writer(show_csv);
        std::vector<Case> cases;
        for (const std::string& name : options.cases) {
            cases.push_back(unit_case(name, "--case"));
            if (std::count(options.cases.begin(), options.cases.end(), name) > 1)
                throw Error("--case", in_quotes(name) + " is given twice", "once is enough");
        }
        Effort effort;
        effort.stresses = true;
        const Analysis analysis = analyse(section, effort);
        if (cases.empty()) cases = cases_of(section, analysis);
        write(shown(section, fields_of(section, analysis, cases, options.finest)), options.output);
    });
}

}  // namespace velquor
