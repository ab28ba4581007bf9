// What a line costs beside its section: the request read, checked and understood, and the answer written, over sections
// of the catalogue. The least of several times counts for each.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include "kit/requests/request.h"
#include "kit/section/file.h"
#include "kit/section/profiles.h"
#include "kit/section/templates.h"
#include "kit/show/json.h"

namespace {

using namespace velquor;

template <class F>
double milliseconds_of(F f) {
    double least = 1e9;
    for (int k = 0; k < 5; ++k) {
        const auto start = std::chrono::steady_clock::now();
        f();
        const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
        least = std::min(least, time.count());
    }
    return least;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

int main() {
    std::vector<double> read, written, calculated;
    for (std::size_t k = 0; k < profile_names().size(); k += 20) {
        // A whole section file, as programs send it.
        const Section section = section_of_profile(profile_names()[k]);
        const auto text = nlohmann::json::parse(write_section(section)).dump();
        const std::string line = R"({"id":1,"section":)" + text + "}";
        read.push_back(milliseconds_of([&] {
            const auto request = parse_request(line);
            wanted_by(request);
            section_wanted_by(request, {});
        }));
        Values values;
        calculated.push_back(milliseconds_of([&] { values = values_of(section, analyse(section)); }));
        written.push_back(milliseconds_of([&] { json_of(values, {}).dump(); }));
    }
    std::printf("%zu sections, medians in ms: request %.3f, answer %.3f, calculation %.2f\n", read.size(), median(read),
                median(written), median(calculated));
}
