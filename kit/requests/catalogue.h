// What programs may choose from, as one JSON object: profiles, shapes with their parameters, values, loads, units.
#pragma once

#include <string>

namespace velquor {

// {"version",
//  "families": [{"name", "standard", "shape", "unit", "columns", "profiles": [[name, value of each column]]}],
//  "shapes": [{"name", "meaning", "whole", "sketch",
//              "parameters": [{"name", "meaning", "kind", "required", "standard"}]}],
//  "values": [{"key", "symbol", "group", "meaning", "main", "twin", "unit"}],
//  "loads": [{"key", "brief", "meaning", "unit"}],
//  "lengths": [{"name", "metres"}], "forces": [{"name", "newtons"}],
//  "materials": [{"name", "E", "nu", "density", "strength": {"tension", "compression"}}]}
//
// Parameters of profiles are in their unit. `whole`: a template, with materials and bars of its own. Values, loads and
// materials have the units of a section in mm and N.
std::string catalogue_text();

}  // namespace velquor
