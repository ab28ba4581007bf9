// Gmsh keeps one state for a whole process. A session has it alone, with an empty model and options of its own, and
// leaves a host that uses Gmsh too its current model and its options. Between sessions a host may start and end Gmsh as
// it likes, not beside them. Errors of Gmsh are no exceptions here: what it was asked for is missing.
#pragma once

#include <array>
#include <mutex>
#include <string>

namespace velquor {

class MeshSession {
public:
    MeshSession();
    ~MeshSession();
    MeshSession(const MeshSession&) = delete;
    MeshSession& operator=(const MeshSession&) = delete;

private:
    std::unique_lock<std::mutex> alone;
    std::string model;                 // the host's
    std::array<double, 16> options{};  // the host's, of those that a session sets
};

}  // namespace velquor
