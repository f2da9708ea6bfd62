#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "platform/IDriver.h"

namespace korvel::controller {

// Why a plug-in cannot be used: one line, distinct for each step.
class PluginError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A driver's shared library and the one driver made from it. The library stays loaded as long as this object
// lives, which deletes the driver first.
class Plugin {
public:
    // Loads the library, asks its entry point for the creation function and calls that with `instances`,
    // which must outlive this object. Throws PluginError.
    Plugin(const std::string& path, IInstanceManager& instances);
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    IDriver& GetDriver() { return *m_driver; }

private:
    struct Unload {
        void operator()(void* library) const;
    };

    std::unique_ptr<void, Unload> m_library;
    std::unique_ptr<IDriver> m_driver; // declared last: its code is in the library
};

} // namespace korvel::controller
