// The report of a calculation, to be filed: what went in, what came out, how exact it is, and how it was found.
#pragma once

#include <string>
#include <vector>

#include "kit/analysis/check.h"
#include "kit/analysis/loads.h"
#include "kit/analysis/values.h"
#include "kit/report/document.h"

namespace velquor {

// Everything that a report tells.
struct Report {
    const Section& section;
    const Analysis& analysis;  // with stresses where there are loads
    Values values;             // in the units that they are shown in
    std::vector<Finding> findings;
    std::vector<LoadResult> loads;
    std::vector<std::string> notes;  // what the user says of the section, or was done to a mesh or a drawing
    std::string input;               // as the user named it
    std::string project, by, date;   // empty: a line for a pen
};

// Of everything that an analysis gives, its values in these units; empty: the section's own. Throws Error as result_of
// and in_units do.
Report report_on(const Section& section, const Analysis& analysis, const std::string& length, const std::string& force);

// Lives no longer than the section and the analysis.
Document document_of(const Report& report);

// Pictures of these panels under one caption, without the section's name, which the report has above. Of a wide
// section, whose panels stand one below the other, each is a figure of its own: pages may break between them.
void add_figures(const Report& report, const std::string& caption, const std::vector<Panel>& panels,
                 std::vector<Block>& blocks);

// Chapters, by report.cpp, of input.cpp and of results.cpp.
void tell_input(const Report& report, std::vector<Block>& blocks);
void tell_values(const Report& report, std::vector<Block>& blocks);
void tell_stresses(const Report& report, std::vector<Block>& blocks);

}  // namespace velquor
