// Gmsh keeps one state for a whole process. A session has it alone, with an empty model, and leaves it as empty.
#pragma once

#include <mutex>

namespace velquor {

class MeshSession {
public:
    MeshSession();
    ~MeshSession();
    MeshSession(const MeshSession&) = delete;
    MeshSession& operator=(const MeshSession&) = delete;

private:
    std::unique_lock<std::mutex> alone;
};

}  // namespace velquor
