#include "kit/mesh/gmsh_session.h"

#include <gmsh.h>

namespace velquor {

namespace {

// The first session starts Gmsh, which then stays: a start takes as long as a mesh.
struct Process {
    std::mutex mutex;
    bool started = false;
};
Process& process() {
    static Process of_all;
    return of_all;
}

}  // namespace

MeshSession::MeshSession() : alone(process().mutex) {
    if (!process().started) {
        gmsh::initialize(0, nullptr, false);  // reads no settings of the user's
        process().started = true;
        gmsh::option::setNumber("General.Terminal", 0);
        gmsh::option::setNumber("General.Verbosity", 0);
        gmsh::option::setNumber("General.NumThreads", 1);
        gmsh::option::setNumber("General.AbortOnError", 0);
    }
    gmsh::model::add("velquor");
}

MeshSession::~MeshSession() {
    try {
        gmsh::model::remove();
    } catch (...) {  // the next session adds a model of its own
    }
}

}  // namespace velquor
