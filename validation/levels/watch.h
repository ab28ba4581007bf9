// Calls of vq_velquor as they come, from vq_levels or from anybody else.
#pragma once

#include <vector>

#include "value.h"
#include "velquor_levels.h"

struct Watch {
    std::vector<Slots> results;  // of the calls that went well, in their order
    double seconds = 0;          // of the thread in all of them
    bool keep = false;           // whether to keep the tables of the last call
    int32_t groups = 0, nnodes = 0, nelems = 0;
    double mode = 0;
    std::vector<double> nodes, props;
    std::vector<int32_t> elements;
    std::vector<VYZTUZE_INFO> bars;
};

// Calls are recorded from here on, or no longer where null. One thread only.
void watch_calls(Watch* watch);

double thread_seconds();

// The kept call once more, into tables of its own. Returns its seconds.
double repeat_call(const Watch& watch);
