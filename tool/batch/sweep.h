// Parameter sweeps: one section, and values that some of its numbers and names are to take, each with each.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace velquor {

// One of the names of a sweep, and its values: those of a list, or evenly from one number to another.
struct SweepAxis {
    std::string name;                    // as it was written
    nlohmann::json::json_pointer place;  // in the request
    nlohmann::json list = {};
    double from = 0, to = 0;
    std::uint64_t count = 0;
};

struct Sweep {
    nlohmann::json request;       // with a section or the name of a profile, whose values at the places change
    std::vector<SweepAxis> axes;  // the last one is the fastest
    std::uint64_t count = 1;      // of sections
    std::string name;             // of the section, before it was swept
};

// Of a request with the axes as they stand in its "sweep", in their order. Throws Error with the place,
// "sweep.tw.steps".
Sweep sweep_of(nlohmann::json request, const nlohmann::ordered_json& axes);

// Gives the request the values of one of its sections, counted from 0, and a name that tells them; the values by
// their names as they were written.
nlohmann::ordered_json set_section(Sweep& sweep, std::uint64_t number);

// "h=200 tw=5"
std::string told(const nlohmann::ordered_json& parameters, const char* between, const char* before);

}  // namespace velquor
