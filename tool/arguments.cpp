#include "tool/arguments.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <sstream>

#include "kit/mesh/mesh_file.h"
#include "kit/section/shapes.h"
#include "kit/section/templates.h"
#include "kit/section/words.h"
#include "tool/batch/batch.h"
#include "tool/commands.h"
#include "tool/inputs.h"
#include "tool/output.h"

namespace velquor {

namespace {

const char* const ABOUT = "Values of beam sections by finite elements, each with a bound for its error.";

const char* const STATUSES =
    "Exit status: 0 done; 1 an input was refused; 2 a section could not be solved;\n"
    "3 internal fault, or results could not be written. Of several inputs it is that\n"
    "of the worst. Messages go to the error stream, results alone to the standard\n"
    "output.\n\n"
    "Example: velquor calc \"IPE 300\" --units cm";

constexpr std::size_t NAMES = 26;  // columns of the options' names in the help

struct Arguments {
    CLI::App app{ABOUT, "velquor"};
    CalcOptions calc;
    MeshOptions mesh;
    ReportOptions report;
    ExportOptions fields;
    CheckOptions check;
    DrawOptions draw;
    WorkerOptions worker;
    ServeOptions serve;
    std::optional<double> seconds;
    BatchOptions batch;
    std::string shape, filter, columns, cases;
    bool results = false, requests = false, answers = false, json = false, csv = false, version = false;
};

// Also of what is not a number, which lies in every CLI::Range.
std::string of_seconds(const std::string& text) {
    double seconds = 0;
    const bool number = CLI::detail::lexical_cast(text, seconds);
    return number && seconds >= 1e-3 && seconds <= 1e6 ? "" : text + "; must be from 0.001 to 1000000 seconds";
}

void add_inputs(CLI::App& command, Inputs& inputs, int most) {
    command.add_option("FILE", inputs.names, "files, meshes, drawings, profiles, or - for the standard input")
        ->expected(most)
        ->type_name("");
    command.add_option("--materials", inputs.materials, "of meshes and drawings: a file of units and materials")
        ->type_name("FILE");
    command.add_option("--gap", inputs.wishes["gap"], "in drawings: between ends of lines, closed up to this")
        ->type_name("NUMBER");
    command.add_option("--shape", inputs.shape, "a parametric shape: see velquor shapes")->type_name("NAME");
    std::set<std::string> names;
    for (const Shape& shape : velquor::shapes())
        for (const Parameter& parameter : shape.parameters) names.insert(parameter.name);
    for (const Template& whole : templates())
        for (const Parameter& parameter : whole.parameters) names.insert(parameter.name);
    for (const std::string& name : names)  // not in the help: velquor shapes NAME tells those of a shape
        command.add_option("--" + name, inputs.parameters[name], "")->group("");
    const char* const material = "In place of what a section of one material has";
    command.add_option("--E", inputs.material["E"], "elastic modulus in N/mm2")->group(material)->type_name("NUMBER");
    command.add_option("--nu", inputs.material["nu"], "Poisson's ratio")->group(material)->type_name("NUMBER");
    command.add_option("--density", inputs.material["density"], "kg/m3")->group(material)->type_name("NUMBER");
    command.add_option("--strength", inputs.material["strength"], "yield strength in N/mm2")
        ->group(material)
        ->type_name("NUMBER");
    command.add_option("--size", inputs.wishes["size"], "of the coarsest elements, as the section's lengths")
        ->type_name("NUMBER");
}

void add_loads(CLI::App& command, Inputs& inputs) {
    command.add_option("--load", inputs.loads, "stresses under \"N=100 My=20kNm\": N My Mz Vy Vz T Tw B")
        ->type_name("LOADS")
        ->allow_extra_args(false);
}

void add_wishes(CLI::App& command, Inputs& inputs) {
    command.add_option("--accuracy", inputs.wishes["accuracy"], "relative bound to be reached (0.001)")
        ->type_name("NUMBER");
    command.add_option("--levels", inputs.wishes["levels"], "of refinement, 1 to 6 (3)")->type_name("NUMBER");
}

void add_units(CLI::App& command, std::string& length, std::string& force) {
    command.add_option("--units", length, "of length, for the results: mm, cm, dm, m, in, ft")->type_name("UNIT");
    command.add_option("--force", force, "of force: N, kN, MN, kgf, lbf, kip")->type_name("UNIT");
}

void add_calc(Arguments& a) {
    CLI::App& command = *a.app.add_subcommand("calc", "the values of sections; several make one table");
    add_inputs(command, a.calc.inputs, -1);
    add_wishes(command, a.calc.inputs);
    add_loads(command, a.calc.inputs);
    add_units(command, a.calc.length, a.calc.force);
    command.add_flag("--all", a.calc.all, "every value, not only the main ones");
    command.add_option("--columns", a.columns, "of a table: keys as in A,Iy,Wpl_y")->type_name("KEYS");
    auto* const json = command.add_flag("--json", a.json, "JSON, in the form of velquor schema --result");
    command.add_flag("--csv", a.csv, "comma-separated values, one section a row")->excludes(json);
    command.add_option("-o,--output", a.calc.output, "file for the results: .json and .csv tell the form too")
        ->type_name("FILE");
    command.footer(
        "Parameters of a shape are options too, in mm: velquor shapes NAME lists them.\n\n"
        "Examples: velquor calc \"IPE 300\" section.json --csv -o values.csv\n"
        "          velquor calc --shape i --h 300 --b 150 --tw 7.1 --tf 10.7 --r 15\n"
        "          velquor calc section.dxf --materials steel.json");
}

void add_draw(Arguments& a) {
    CLI::App& command = *a.app.add_subcommand("draw", "a picture of a section: SVG, PNG or PDF");
    add_inputs(command, a.draw.inputs, 1);
    add_loads(command, a.draw.inputs);
    command
        .add_option("--field", a.draw.fields,
                    "outline, mesh, warping, axial, shear or mises, with :LOAD of a load set or unit case; again for "
                    "more on one sheet")
        ->expected(1)
        ->take_all()
        ->type_name("FIELD");
    command.add_flag("--dark", a.draw.dark, "light on dark");
    command.add_flag("--plain", a.draw.plain, "small, without headings, keys and dimensions");
    command.add_option("--width", a.draw.width, "pixels (800), or points of a PDF (482)")->type_name("NUMBER");
    command.add_option("-o,--output", a.draw.output, "file: its ending, .svg, .png or .pdf, tells the form")
        ->type_name("FILE");
    command.footer(
        "Unit cases: N My Mz B for axial; T Vy Vz Tw for shear; any of them for mises;\n"
        "T u v for warping.\n\n"
        "Example: velquor draw \"IPE 300\" --field outline --field shear:Vz -o ipe.svg");
}

void add_report(Arguments& a) {
    CLI::App& command = *a.app.add_subcommand("report", "a page or a document to be filed: drawing, values, stresses");
    add_inputs(command, a.report.inputs, 1);
    add_wishes(command, a.report.inputs);
    add_loads(command, a.report.inputs);
    add_units(command, a.report.length, a.report.force);
    const char* const title = "In the block below the title; what is not given is left for a pen";
    command.add_option("--project", a.report.project, "what it belongs to")->group(title)->type_name("TEXT");
    command.add_option("--by", a.report.by, "who prepared it")->group(title)->type_name("TEXT");
    command.add_option("--date", a.report.date, "as it is to stand there")->group(title)->type_name("TEXT");
    command.add_option("-o,--output", a.report.output, "file for the report, .html or .pdf")
        ->required()
        ->type_name("FILE");
    command.footer("Example: velquor report section.json --project \"Bridge 7\" --by \"A. Smith\" -o section.pdf");
}

void add_export(Arguments& a) {
    CLI::App& command = *a.app.add_subcommand("export", "stresses and warping at the nodes, or results of a batch");
    add_inputs(command, a.fields.inputs, 1);
    add_wishes(command, a.fields.inputs);
    add_loads(command, a.fields.inputs);
    command.add_option("--case", a.cases, "unit loads, as in T,Vz, in place of the section's load sets")
        ->type_name("NAMES");
    command.add_flag("--fine", a.fields.finest, "on the finest mesh, without warping");
    command
        .add_option("-o,--output", a.fields.output,
                    "file: .vtu for ParaView, .msh for Gmsh, or .csv; of results of a batch .csv or .jsonl")
        ->required()
        ->type_name("FILE");
    command.footer(
        "Example: velquor export section.json -o section.vtu && paraview section.vtu\n"
        "         velquor export results.sqlite -o results.csv");
}

void add_worker(Arguments& a) {
    CLI::App& command = *a.app.add_subcommand("worker", "requests from the standard input, a line each, to answers");
    command.add_option("--jobs", a.worker.jobs, "as many worker processes, replaced when they end; 0: as processors")
        ->check(CLI::Range(0, 1024).description(""))
        ->type_name("N");
    command.add_option("--timeout", a.seconds, "with --jobs: that a section may take (60)")
        ->check(of_seconds)
        ->type_name("SECONDS");
    command.add_option("--memory", a.worker.megabytes, "that a worker may take (with --jobs 2048)")
        ->check(CLI::Range(1, 1 << 30).description(""))
        ->type_name("MB");
    command.add_option("--files", a.worker.folder, "that meshes and drawings of sections are read from")
        ->type_name("FOLDER");
    command.footer(
        "Answers of several workers come in any order: their ids tell whose they are.\n\n"
        "Examples: echo '{\"id\":1,\"name\":\"IPE 300\"}' | velquor worker\n"
        "          velquor worker --jobs 0 < requests.jsonl > answers.jsonl");
}

void add_serve(Arguments& a) {
    CLI::App& command = *a.app.add_subcommand("serve", "sections in the browser: a page, and what calculates for it");
    command.add_flag("--open", a.serve.open, "show the page in the browser");
    command.add_option("--port", a.serve.port, "of the page's address; a free one where it is not given")
        ->check(CLI::Range(0, 65535).description(""))
        ->type_name("NUMBER");
    command
        .add_option("--listen", a.serve.listen, "for others too: an address of this machine, or 0.0.0.0 (127.0.0.1)")
        ->type_name("ADDRESS");
    command.add_option("--jobs", a.serve.jobs, "worker processes; 0, and where it is not given: as processors")
        ->check(CLI::Range(0, 1024).description(""))
        ->type_name("N");
    command.add_option("--timeout", a.serve.seconds, "that a section may take (10)")
        ->check(of_seconds)
        ->type_name("SECONDS");
    command.add_option("--memory", a.serve.megabytes, "that a worker may take (512)")
        ->check(CLI::Range(1, 1 << 30).description(""))
        ->type_name("MB");
    command.footer("It prints the page's address, and ends by Ctrl+C.\n\nExample: velquor serve --open");
}

void add_others(Arguments& a) {
    CLI::App* command = a.app.add_subcommand("mesh", "the mesh of a section, for Gmsh");
    add_inputs(*command, a.mesh.inputs, 1);
    command->add_option("-o,--output", a.mesh.output, "file for the mesh, in the format MSH 4.1")->type_name("FILE");
    command->footer("Example: velquor mesh section.json -o section.msh && gmsh section.msh");

    command = a.app.add_subcommand("check", "what is wrong with sections, or seldom meant");
    command->add_option("FILE", a.check.names, "files, meshes, drawings, or - for the standard input")
        ->required()
        ->type_name("");
    command->add_option("--materials", a.check.materials, "of meshes and drawings: a file of units and materials")
        ->type_name("FILE");
    command->add_flag("--json", a.check.json, "findings as JSON: severity, place, message, remedy");
    command->add_option("-o,--output", a.check.output, "file for the findings")->type_name("FILE");
    command->footer("Example: velquor check section.json");

    command = a.app.add_subcommand("shapes", "the parametric shapes, or the parameters of one");
    command->add_option("NAME", a.shape, "a shape")->type_name("");
    command->footer("Example: velquor shapes i");

    command = a.app.add_subcommand("profiles", "the rolled profiles whose names contain a text");
    command->add_option("FILTER", a.filter, "a part of the name")->type_name("");
    command->footer("Example: velquor profiles \"HEB 2\"");

    command = a.app.add_subcommand("catalogue", "profiles, shapes, values, loads and units for programs, as JSON");

    command = a.app.add_subcommand("schema", "the JSON Schema of section files, and of other JSON");
    command->add_flag("--result", a.results, "of what velquor calc --json gives");
    command->add_flag("--request", a.requests, "of what velquor worker reads");
    command->add_flag("--answer", a.answers, "of what velquor worker writes");
    command->footer("Example: velquor schema > section.schema.json");
}

// Throws Misuse where the first word is meant as a command and is none.
void check_command(const CLI::App& app, const std::string& word) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        if (command->get_name() == word) return;
        names.push_back(command->get_name());
    }
    if (word[0] != '-') throw Misuse("unknown command " + in_quotes(word) + "; " + did_you_mean(word, names));
}

// Throws Misuse where the command has no such option, or was given one more often than it takes it.
void check_options(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options())
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    for (const std::string& word : command.remaining()) {
        if (word[0] != '-') continue;
        const std::string remedy = did_you_mean(word, names);
        throw Misuse("unknown option " + in_quotes(word) + "; " +
                     (remedy.empty() ? "see velquor " + command.get_name() + " --help" : remedy));
    }
    for (const CLI::Option* option : command.get_options()) {
        const bool named = !option->get_lnames().empty();
        if (option->get_items_expected_max() == 1 && option->count() > 1 && !option->check_lname("load") &&
            !option->check_lname("field"))
            throw Misuse((named ? "--" + option->get_lnames().front() : option->get_name()) + " is given " +
                         std::to_string(option->count()) + " times; " + command.get_name() + " takes it once");
    }
}

void check_materials(const std::string& materials, const std::vector<std::string>& names) {
    const auto may_be = [](const std::string& name) {
        return name == "-" || is_mesh_file(name) || is_drawing_file(name);
    };
    if (!materials.empty() && std::none_of(names.begin(), names.end(), may_be))
        throw Misuse("--materials: no mesh or drawing among the inputs; sections have materials of their own");
}

// Throws Misuse where options are given that would have no effect.
void check_use(const Arguments& a, const std::string& command, const Inputs& inputs) {
    if (inputs.names.empty() && inputs.shape.empty())
        throw Misuse(command + ": no section; name a file, a profile, or a --shape");
    for (const auto& [name, text] : inputs.parameters)
        if (!text.empty() && inputs.shape.empty())
            throw Misuse("--" + name + ": a parameter of no shape; name one by --shape");
    check_materials(inputs.materials, inputs.names);
    if (!a.columns.empty() && (a.json || a.csv))
        throw Misuse("--columns: of tables for reading alone; JSON and CSV have every value");
    if (a.calc.all && !a.json && !a.csv && inputs.names.size() + !inputs.shape.empty() > 1)
        throw Misuse("--all: of one section alone; of several choose the --columns, or --csv");
}

int tell(const std::string& help) {
    write(help.back() == '\n' ? help : help + "\n");
    return DONE;
}

}  // namespace

std::function<int()> command_of(int count, char** arguments) {
    const auto a = std::make_shared<Arguments>();
    a->app.footer(STATUSES);
    a->app.get_formatter()->column_width(NAMES);
    a->app.add_flag("--version", a->version, "the version, and what it links");
    a->app.require_subcommand(0, 1);
    add_calc(*a);
    add_draw(*a);
    add_report(*a);
    add_export(*a);
    add_worker(*a);
    add_batch(a->app, a->batch);
    add_serve(*a);
    add_others(*a);
    try {
        a->app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        std::ostringstream help, complaint;
        if (a->app.exit(error, help, complaint) == 0) return [text = help.str()] { return tell(text); };
        check_command(a->app, arguments[1]);
        for (const CLI::App* command : a->app.get_subcommands()) check_options(*command);
        const auto commands = a->app.get_subcommands();
        throw Misuse(std::string(error.what()) + "; see velquor " +
                     (commands.empty() ? "" : commands.front()->get_name() + " ") + "--help");
    }
    if (a->version) return version;
    const auto asked = a->app.get_subcommands();
    if (asked.empty()) throw Misuse("no command; see velquor --help");
    const std::string name = asked.front()->get_name();
    std::istringstream columns(a->columns);
    for (std::string key; std::getline(columns, key, ',');) a->calc.columns.push_back(key);
    std::istringstream cases(a->cases);
    for (std::string unit; std::getline(cases, unit, ',');) a->fields.cases.push_back(unit);
    // Where nothing else is said, the ending tells the form.
    const std::string ending = plain(std::filesystem::path(a->calc.output).extension().string());
    if (!a->json && !a->csv) a->json = ending == ".json", a->csv = ending == ".csv";
    if (a->json) a->calc.form = CalcOptions::Form::json;
    if (a->csv) a->calc.form = CalcOptions::Form::csv;
    const std::map<std::string, const Inputs*> inputs = {{"calc", &a->calc.inputs},
                                                         {"draw", &a->draw.inputs},
                                                         {"export", &a->fields.inputs},
                                                         {"mesh", &a->mesh.inputs},
                                                         {"report", &a->report.inputs}};
    if (const auto at = inputs.find(name); at != inputs.end()) check_use(*a, name, *at->second);
    if (name == "check") check_materials(a->check.materials, a->check.names);
    if (name == "calc") return [a] { return calc(a->calc); };
    if (name == "draw") return [a] { return draw(a->draw); };
    if (name == "export") return [a] { return export_fields(a->fields); };
    if (name == "report") return [a] { return report(a->report); };
    if (name == "mesh") return [a] { return mesh(a->mesh); };
    if (name == "check") return [a] { return check(a->check); };
    if (name == "shapes") return [a] { return shapes(a->shape); };
    if (name == "profiles") return [a] { return profiles(a->filter); };
    if (a->results + a->requests + a->answers > 1) throw Misuse("schema: give one of --result, --request and --answer");
    if (name == "catalogue") return catalogue;
    if (name == "batch") return [a] { return batch(a->batch); };
    if (name == "serve") return [a] { return serve(a->serve); };
    if (name == "worker") {
        if (a->worker.folder && !std::filesystem::is_directory(*a->worker.folder))
            throw Misuse("--files: " + in_quotes(*a->worker.folder) + " is no folder");
        if (a->seconds && !a->worker.jobs) throw Misuse("--timeout: of supervised workers alone; give --jobs too");
        a->worker.seconds = a->seconds.value_or(a->worker.seconds);
        return [a] { return work(a->worker); };
    }
    const Schema of = a->results    ? Schema::result
                      : a->requests ? Schema::request
                      : a->answers  ? Schema::answer
                                    : Schema::section;
    return [of] { return schema(of); };
}

}  // namespace velquor
