#include "kit/mesh/gmsh_session.h"

#include <dlfcn.h>
#include <gmsh.h>

#include <clocale>

namespace velquor {

namespace {

struct Option {
    const char* name;
    double value;
};
// In this order, so that nothing is told of those that follow.
constexpr Option OPTIONS[] = {{"General.Terminal", 0},
                              {"General.Verbosity", 0},
                              {"General.AbortOnError", 0},
                              {"General.NumThreads", 1},
                              {"Geometry.Tolerance", 1e-8},
                              {"Geometry.ToleranceBoolean", 0},
                              {"Mesh.Algorithm", 6},  // frontal, by the Delaunay criterion
                              {"Mesh.RecombineAll", 0},
                              {"Mesh.SubdivisionAlgorithm", 0},
                              {"Mesh.ElementOrder", 1},
                              {"Mesh.Smoothing", 1},
                              {"Mesh.MeshSizeExtendFromBoundary", 0},
                              {"Mesh.MeshSizeFactor", 1},
                              {"Mesh.MeshSizeMin", 0},
                              {"Mesh.MeshSizeMax", 1e22},
                              {"Mesh.MeshSizeFromCurvature", 0}};

std::mutex& of_process() {
    static std::mutex mutex;
    return mutex;
}

bool is_running() {
    double terminal = -1;
    try {
        gmsh::option::getNumber("General.Terminal", terminal);
    } catch (...) {  // ended by the host
    }
    return terminal >= 0;
}

// Told of having read its preferences, the toolkit of Gmsh's windows leaves them alone. Else it would make files of its
// own in the user's home, and as root in /etc.
struct NoPreferences {
    unsigned char* const read = static_cast<unsigned char*>(dlsym(RTLD_DEFAULT, "_ZN2Fl13options_read_E"));
    const unsigned char before = read != nullptr ? *read : 1;
    NoPreferences() {
        if (read != nullptr) *read = 1;
    }
    ~NoPreferences() {
        if (read != nullptr) *read = before;
    }
};

// Gmsh then stays: a start takes as long as a mesh.
void start() {
    const NoPreferences alone;
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    gmsh::initialize(0, nullptr, false);     // reads no settings of the user's
    std::setlocale(LC_ALL, locale.c_str());  // takes the environment's
}

}  // namespace

MeshSession::MeshSession() : alone(of_process()) {
    if (!is_running()) start();
    static_assert(std::size(OPTIONS) == std::tuple_size<decltype(options)>::value);
    for (std::size_t i = 0; i < options.size(); ++i) {
        gmsh::option::getNumber(OPTIONS[i].name, options[i]);
        gmsh::option::setNumber(OPTIONS[i].name, OPTIONS[i].value);
    }
    gmsh::model::getCurrent(model);
    gmsh::model::add("velquor");
}

MeshSession::~MeshSession() {
    try {
        gmsh::model::remove();
        gmsh::model::setCurrent(model);
        for (std::size_t i = options.size(); i-- > 0;) gmsh::option::setNumber(OPTIONS[i].name, options[i]);
    } catch (...) {  // the next session adds a model of its own
    }
}

}  // namespace velquor
