// Colour maps, and scales that turn values into colours and into round numbers beside a bar of colours.
#pragma once

#include <string>
#include <vector>

#include "kit/draw/pen.h"

namespace velquor {

struct Scale {
    double low = 0, high = 0;   // what the bar spans: the least and the greatest value of the field
    bool diverging = false;     // colours about 0, as strong on both sides; else from 0 upwards
    std::vector<double> ticks;  // round numbers within
    double power = 1;           // ticks and values are shown divided by it: a thousand to some power
    int digits = 4;             // with which a value is shown
};

// `signs`: of a field that has both; else of an amount, which begins at 0.
Scale scale_of(double low, double high, bool signs);

Colour colour_at(const Scale& scale, double value);

// Stops on the way from one value to another, where the map has them: linear in between.
std::vector<Stop> stops_between(const Scale& scale, double from, double to);

// The whole map, from its one end to the other, and the values of both ends.
std::vector<Stop> map_of(const Scale& scale);
std::pair<double, double> ends_of(const Scale& scale);

// A number's text with a true minus sign.
std::string with_minus(const std::string& text);

// A value as a tick shows it, and "10⁻⁶ N/mm²": its unit, written as in the tables.
std::string shown_on(const Scale& scale, double value);
std::string unit_on(const Scale& scale, const std::string& unit);

}  // namespace velquor
