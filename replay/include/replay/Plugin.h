#pragma once

#include <stdexcept>
#include <string>

#include "platform/IDriver.h"

namespace korvel::replay {

// A driver's shared library, loaded for the rest of the process: what a driver leaves behind may still need
// its code.
class Plugin {
public:
    // std::runtime_error says which step of loading failed, and for which file.
    explicit Plugin(const std::string& path);

    CreationFunc GetCreation() const { return m_create; }

private:
    CreationFunc m_create = nullptr;
};

} // namespace korvel::replay
