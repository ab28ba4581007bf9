// Sections of the study, with what is known of them.
#pragma once

#include <string>
#include <vector>

#include "kit/section/section.h"
#include "levels/value.h"

struct Case {
    velquor::Section section;
    std::vector<Exact> exact{};  // for E = 2.6 and G = 1
};

// The sections of the validation, from their outlines in this folder.
std::vector<Case> outlines(const std::string& folder);

// Parametric shapes, and of each family of the catalogue the smallest profile, the one in the middle, and the largest.
std::vector<Case> shapes_and_profiles();

velquor::Section profile_section(const std::string& name);
