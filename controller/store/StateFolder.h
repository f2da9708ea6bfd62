#pragma once

#include <string>

namespace korvel::controller {

// The folder that holds everything a controller keeps, taken for this process alone: two controllers on one
// folder would overwrite each other's state.
class StateFolder {
public:
    // Creates the folder when absent. Throws std::runtime_error when that fails or another process has it.
    explicit StateFolder(const std::string& path);
    ~StateFolder();
    StateFolder(const StateFolder&) = delete;
    StateFolder& operator=(const StateFolder&) = delete;

private:
    int m_lock;
};

} // namespace korvel::controller
