// Requests from an input: its lines, each a request or a sweep of them, or one request over all of it.
#pragma once

#include <memory>
#include <string>

#include "tool/batch/key.h"
#include "tool/batch/lines.h"
#include "tool/batch/sweep.h"

namespace velquor {

// A section of an input.
struct Item {
    std::uint64_t line = 0;             // from 1
    std::uint64_t ordinal = 0;          // of the line's sweep, from 0
    bool is_last = true;                // of its line
    nlohmann::json id;                  // null where there is none
    std::string name;                   // where it is known without a calculation
    nlohmann::ordered_json parameters;  // of the sweep; null where there is none
    ContentKey key = {};
    std::string request;  // for a worker
    std::string answer;   // in its place, of what no worker needs to see: an error
};

class Source {
public:
    // A file, or the standard input for "-". Begins to read it, as far as its form is in question. Throws Error where
    // it cannot be read, or is a sweep that is wrong.
    explicit Source(const std::string& file);

    // LATER where nothing can be read now. Throws Error where reading fails.
    Next next(Item& item);

    Folder folder;                // from where what sections name is read
    double share() const;         // of it that was handed out; not a number where that is not known
    std::uint64_t count() const;  // of all sections, where it is one sweep; else 0
    double bytes() const { return static_cast<double>(size); }  // 0: not known
    int descriptor() const { return lines->descriptor(); }

private:
    void take(const InputLine& line);
    void take_sweep(nlohmann::json request, const nlohmann::ordered_json& axes);
    Item step();

    std::unique_ptr<InputLines> lines;
    std::uint64_t size = 0;        // in bytes; 0: not known
    bool is_whole = false;         // one request over all lines
    std::vector<InputLine> begun;  // lines that were read to know the form, in reverse order
    std::uint64_t before = 0;      // bytes of the lines before the one at hand

    Item item;  // of the line at hand
    std::unique_ptr<Sweep> sweep;
    bool has_item = false;
    nlohmann::json id;  // of its sweep
};

}  // namespace velquor
