#include "tool/batch/batch.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <memory>
#include <set>
#include <system_error>

#include "kit/section/section.h"
#include "kit/section/words.h"
#include "tool/batch/progress.h"
#include "tool/batch/source.h"
#include "tool/batch/store.h"
#include "tool/commands.h"
#include "tool/output.h"
#include "tool/pool/pool.h"

namespace velquor {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr int STOPPED = 130;
constexpr std::size_t MOST_PENDING = 1000;  // rows of inputs that are kept together
constexpr std::size_t MOST_OPEN = 100;      // inputs that are held open
constexpr std::size_t MOST_TOLD = 3;        // of what is wrong with inputs
constexpr auto ROUND = std::chrono::milliseconds(200);

volatile std::sig_atomic_t stops = 0;  // signals that asked for the end

void heed_signals() {
    struct sigaction action = {}, before = {};
    action.sa_handler = [](int) { stops = stops + 1; };
    for (const int number : {SIGINT, SIGTERM})
        if (sigaction(number, nullptr, &before) == 0 &&
            before.sa_handler != SIG_IGN)  // as of a program in the background
            sigaction(number, &action, nullptr);
    std::signal(SIGXFSZ, SIG_IGN);  // a file that grows too large is an error of writing
}

bool may_be_tried_again(const std::string& kind) {
    return kind == "timeout" || kind == "memory" || kind == "crashed" || kind == "internal";
}

// Kinds of errors, as a sentence has them.
std::string in_words(const std::string& kind) {
    return kind == "request"    ? "not understood"
           : kind == "unsolved" ? "not solved"
           : kind == "timeout"  ? "out of time"
           : kind == "memory"   ? "out of memory"
           : kind == "internal" ? "failed by a fault of ours"
                                : kind;
}

int status_of(const std::string& kind) {
    if (kind == "request" || kind == "refused") return REFUSED;
    return kind == "internal" ? INTERNAL : NOT_SOLVED;
}

// A section that a worker has, or whose answer is still to be kept, and how many inputs it is that of.
struct Flight {
    ContentKey key;
    std::uint64_t inputs;
};

struct Input {
    std::unique_ptr<Source> source;  // null where it is to be opened
    double bytes = 0;                // 0: not known
};

struct Run {
    const BatchOptions& options;
    Store& store;
    Progress& progress;
    Counts counts = {};
    std::unique_ptr<Pool> pool = {};
    std::uint64_t tickets = 0;
    std::map<std::uint64_t, Flight> flights = {};              // by their tickets
    std::map<ContentKey, std::uint64_t> tickets_of = {};       // of flights, by their keys
    std::vector<std::pair<std::uint64_t, json>> answers = {};  // that are still to be kept
    std::vector<Item> inputs = {};                             // the same
    std::int64_t source = 0;
    std::vector<std::int64_t> sources = {};  // of the inputs, as the store numbers them
};

void take(Run& run, Item item) {
    ++run.counts.inputs;
    if (const auto at = run.tickets_of.find(item.key); at != run.tickets_of.end()) {
        ++run.counts.equal;
        ++run.flights[at->second].inputs;
    } else if (const Store::Found found = run.store.find(item.key);
               found.is_there && (found.of_this_run || !run.options.retry || !may_be_tried_again(found.kind))) {
        ++(found.of_this_run ? run.counts.equal : run.counts.found);
        if (!found.kind.empty()) ++run.counts.errors[found.kind];
    } else {
        const std::uint64_t ticket = run.tickets++;
        run.flights[ticket] = {item.key, 1};
        run.tickets_of[item.key] = ticket;
        if (item.answer.empty())
            run.pool->give(ticket, std::move(item.request));
        else
            run.answers.emplace_back(ticket, json::parse(item.answer));
    }
    item.request.clear();
    run.inputs.push_back(std::move(item));
}

// Keeps what there is to be kept, all of it or nothing.
void keep(Run& run) {
    if (run.inputs.empty() && run.answers.empty()) return;
    std::vector<bool> is_new;
    run.store.begin();
    for (const Item& item : run.inputs) run.store.put(run.source, item);
    for (const auto& [ticket, answer] : run.answers) is_new.push_back(run.store.put(run.flights[ticket].key, answer));
    run.store.commit();
    for (std::size_t i = 0; i < run.answers.size(); ++i) {
        const auto& [ticket, answer] = run.answers[i];
        const Flight& flight = run.flights[ticket];
        ++(is_new[i] ? run.counts.calculated : run.counts.found);
        if (is_new[i] && answer.contains("error")) run.counts.errors[answer["error"].at("kind")] += flight.inputs;
        run.tickets_of.erase(flight.key);
        run.flights.erase(ticket);
    }
    run.inputs.clear();
    run.answers.clear();
}

// One round: workers that wait get requests, what has come is kept, and more is waited for. `source` is null where no
// more is to be given. Returns false at its end, or that of what was given.
bool turn(Run& run, Source* source) {
    Next next = Next::HERE;
    while (source && stops == 0 && run.pool->waiting() > 0 && run.inputs.size() < MOST_PENDING) {
        Item item;
        next = source->next(item);
        if (next != Next::HERE) break;
        take(run, std::move(item));
    }
    const bool is_idle = run.pool->waiting() > 0 && next == Next::HERE && source && stops == 0;
    keep(run);
    run.progress.show(run.counts);
    if (next == Next::END || (!source && run.flights.empty()) || (source && stops > 0)) return false;
    if (is_idle) return true;
    const int also = next == Next::LATER ? source->descriptor() : -1;
    for (Pool::Done& done : run.pool->wait(ROUND, also))
        run.answers.emplace_back(done.ticket, json::parse(done.answer));
    return true;
}

void finish(Run& run) {
    if (stops == 1 && !run.flights.empty())
        run.progress.note("ending: " + std::to_string(run.flights.size()) + " that are begun are finished first");
    while (stops < 2 && run.pool && turn(run, nullptr)) {
    }
}

// The name of an input from the folder of the file of results, so that both may be moved.
std::string source_name(const std::string& output, const std::string& name) {
    if (name == "-") return name;
    return fs::absolute(name)
        .lexically_normal()
        .lexically_proximate(fs::absolute(output).lexically_normal().parent_path())
        .string();
}

std::unique_ptr<Source> source_of(const std::string& name) {
    try {
        return std::make_unique<Source>(name);
    } catch (const Error& error) {
        throw Error(name + (error.place.empty() ? "" : ": ") + error.place, error.fault, error.remedy);
    }
}

// All are looked at before anything is calculated; of many files, those that can be opened again are not held open.
std::vector<Input> inputs_of(const std::vector<std::string>& names) {
    std::vector<Input> inputs;
    for (const std::string& name : names) {
        Input input = {source_of(name)};
        input.bytes = input.source->bytes();
        if (inputs.size() >= MOST_OPEN && input.bytes > 0) input.source.reset();
        inputs.push_back(std::move(input));
    }
    return inputs;
}

void read_inputs(Run& run, std::vector<Input>& inputs) {
    double before = 0, all = 0;
    std::string folder;
    for (const Input& input : inputs) all += input.bytes;
    if (inputs.size() == 1) run.counts.of = inputs.front().source->count();
    for (std::size_t i = 0; i < inputs.size() && stops == 0; ++i) {
        if (!inputs[i].source) inputs[i].source = source_of(run.options.inputs[i]);
        Source& source = *inputs[i].source;
        if (!run.pool || source.folder.path != folder) {  // workers read from one folder
            finish(run);
            folder = source.folder.path;
            run.pool =
                std::make_unique<Pool>(PoolOptions{run.options.jobs, run.options.timeout, run.options.memory, folder});
        }
        const std::string& name = run.options.inputs[i];
        run.source = run.store.source(source_name(run.options.output, name));
        run.sources.push_back(run.source);
        try {
            while (turn(run, &source)) run.counts.share = (before + source.share() * inputs[i].bytes) / all;
        } catch (const Error& error) {
            if (!error.place.empty()) throw;
            throw Error(name, error.fault, error.remedy);
        }
        if (stops == 0) run.store.end_of(run.source);
        before += inputs[i].bytes;
        inputs[i].source.reset();
    }
    finish(run);
}

void summarise(const Run& run) {
    const Counts& c = run.counts;
    const auto say = [&](const std::string& text) { run.progress.note(text); };
    say(count_text(c.inputs) + (c.inputs == 1 ? " section" : " sections") + " in " + time_text(run.progress.seconds()) +
        ": " + count_text(c.calculated) + " calculated" +
        (c.found > 0 ? ", " + count_text(c.found) + " there before" : "") +
        (c.equal > 0 ? ", " + count_text(c.equal) + " the same as others" : ""));
    std::string kinds;
    bool again = false;
    for (const auto& [kind, number] : c.errors) {
        kinds += (kinds.empty() ? "" : ", ") + count_text(number) + " " + in_words(kind);
        again = again || may_be_tried_again(kind);
    }
    if (!kinds.empty())
        say("without values: " + kinds + (again ? "; --retry tries again what failed by time, memory or a crash" : ""));
    std::size_t told = 0;
    for (std::size_t i = 0; !kinds.empty() && stops == 0 && i < run.sources.size(); ++i)
        for (const std::string& fault : run.store.faults(run.sources[i], MOST_TOLD - told)) {
            say(run.options.inputs[i] + ":" + fault);
            ++told;
        }
    if (stops == 0) say("velquor export " + run.options.output + " -o results.csv writes a table");
}

void check(const BatchOptions& o) {
    if (o.jobs > 1000) throw Error("--jobs", std::to_string(o.jobs), "must be from 1 to 1000; 0: one a processor");
    if (!(o.timeout > 0 && o.timeout <= 1e6))
        throw Error("--timeout", text_of(o.timeout), "must be above 0, in seconds");
    if (o.memory < 64 || o.memory > 1u << 24)
        throw Error("--memory", std::to_string(o.memory), "must be from 64 to 16777216 megabytes");
    if (!(o.wait >= 0 && o.wait <= 1e6)) throw Error("--wait", text_of(o.wait), "must be from 0 to 1e6 seconds");
    if (o.output.empty()) throw Error("-o", "has no name", "as in -o results.sqlite");
    const std::string ending = plain(fs::path(o.output).extension().string());
    for (const char* const text : {".csv", ".tsv", ".json", ".jsonl", ".txt", ".xlsx"})
        if (ending == text)
            throw Error("-o", in_quotes(o.output) + " would be an SQLite file",
                        "give -o " + fs::path(o.output).replace_extension(".sqlite").string() +
                            ", of which velquor export makes .csv and .jsonl");
    std::set<std::string> names;
    for (const std::string& name : o.inputs) {
        if (!names.insert(source_name(o.output, name)).second) throw Error(name, "is given twice", "once is enough");
        if (name != "-" && is_database(name))
            throw Error(name, "is a database, and no input", "velquor export makes tables of results");
    }
}

}  // namespace

int batch(const BatchOptions& options) {
    check(options);
    std::vector<Input> inputs = inputs_of(options.inputs);
    heed_signals();
    Progress progress(options.quiet);
    const auto waits = [&](bool begins) {
        if (begins)
            progress.say(options.output + ": another program has locked it; waiting up to " + text_of(options.wait) +
                         " s");
        return stops == 0;
    };
    Store store(options.output, options.wait, waits);
    Run run = {options, store, progress};
    const auto kept = [&] { return count_text(run.counts.calculated) + " calculated and kept, nothing of it is lost"; };
    try {
        read_inputs(run, inputs);
    } catch (const CannotWrite& error) {
        progress.say(error.what());
        progress.say("stopped: " + kept());
        return stops > 0 ? STOPPED : INTERNAL;
    } catch (const std::system_error& error) {
        progress.say(std::string("workers cannot be started: ") + error.code().message());
        progress.say("stopped: " + kept() + "; run the same command to go on");
        return INTERNAL;
    }
    summarise(run);
    if (stops > 0) {
        progress.say("stopped at " + count_text(run.counts.inputs) +
                     (run.counts.of > 0 ? " of " + count_text(run.counts.of) : "") + ": run the same command to go on");
        return STOPPED;
    }
    int status = DONE;
    for (const auto& [kind, number] : run.counts.errors) status = std::max(status, status_of(kind));
    return status;
}

}  // namespace velquor
