// The commands: what each is asked for, and what it does. Each returns the exit status.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velquor {

enum Status { DONE = 0, REFUSED = 1, NOT_SOLVED = 2, INTERNAL = 3 };

// Sections as the command line names them.
struct Inputs {
    std::vector<std::string> names;                 // files, names of profiles, "-" for the standard input
    std::string shape;                              // and one of a parametric shape, if not empty
    std::map<std::string, std::string> parameters;  // of the shape, in mm
    std::map<std::string, std::string> material;    // E, nu, density, strength in place of the only one's: N/mm2, kg/m3
    std::vector<std::string> loads;                 // further load sets, as "N=100 My=20kNm"
    std::map<std::string, std::string> wishes;      // accuracy, levels, size, gap: in place of what files wish
    std::string materials = {};                     // file of materials for meshes and drawings, if not empty
};

struct CalcOptions {
    Inputs inputs;
    std::string length, force;  // of the results; empty: the section's own
    enum class Form { text, json, csv } form = Form::text;
    bool all = false;
    std::vector<std::string> columns;
    std::string output;  // file; empty: the standard output
};
int calc(const CalcOptions& options);

struct MeshOptions {
    Inputs inputs;
    std::string output;
};
int mesh(const MeshOptions& options);

struct DrawOptions {
    Inputs inputs;
    std::vector<std::string> fields;  // as panel_of reads them; none: the outline
    bool dark = false, plain = false;
    std::string width;   // a number; empty: the form's own
    std::string output;  // file, whose ending tells the form; empty: SVG on the standard output
};
int draw(const DrawOptions& options);

struct ExportOptions {
    Inputs inputs;
    std::vector<std::string> cases;  // unit loads; empty: the section's load sets or, where it has none, all unit loads
    bool finest = false;             // the finest mesh in place of the coarsest
    std::string output;              // its ending tells the form
};
int export_fields(const ExportOptions& options);

struct ReportOptions {
    Inputs inputs;
    std::string length, force;  // of the values; empty: the section's own
    std::string project, by, date;
    std::string output;  // its ending tells the form
};
int report(const ReportOptions& options);

struct CheckOptions {
    std::vector<std::string> names;
    std::string materials;
    bool json = false;
    std::string output;
};
int check(const CheckOptions& options);

struct WorkerOptions {
    std::optional<std::size_t> jobs;    // worker processes, which this one supervises; 0: as many as processors
    double seconds = 60;                // that a request may take, of supervised workers
    std::size_t megabytes = 0;          // that a worker may have; 0: no limit of its own, 2048 of supervised ones
    std::optional<std::string> folder;  // of files that sections name; none: they are refused
};
int work(const WorkerOptions& options);  // docs/protocol.md

struct ServeOptions {
    std::string listen = "127.0.0.1";
    int port = 0;  // 0: a free one
    bool open = false;
    std::size_t jobs = 0;         // worker processes; 0: as many as processors
    double seconds = 10;          // that a request may take
    std::size_t megabytes = 512;  // that a worker may have
};
int serve(const ServeOptions& options);  // until SIGINT or SIGTERM

int shapes(const std::string& name);      // empty: the list of all
int profiles(const std::string& filter);  // empty: all
enum class Schema { section, result, request, answer };
int schema(Schema which);
int catalogue();
int version();

}  // namespace velquor
