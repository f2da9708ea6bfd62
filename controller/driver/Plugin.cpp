#include "driver/Plugin.h"

#include <dlfcn.h>

#include <filesystem>

namespace korvel::controller {

void Plugin::Unload::operator()(void* library) const {
    dlclose(library);
}

Plugin::Plugin(const std::string& path, IInstanceManager& instances) {
    std::error_code failed;
    if (!std::filesystem::is_regular_file(path, failed))
        throw PluginError("the plug-in " + path + " is not there");
    // With a slash in it, so that no library of that name elsewhere is taken.
    const std::string file = std::filesystem::absolute(path).string();
    m_library.reset(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!m_library) {
        const char* why = dlerror();
        throw PluginError("the plug-in " + path +
                          " is not a library that can be loaded: " + (why ? why : "unknown"));
    }
    const auto entry = reinterpret_cast<GetCreationFuncType>(dlsym(m_library.get(), kGetCreationFuncName));
    if (!entry)
        throw PluginError("the plug-in " + path + " has no entry point " + kGetCreationFuncName);
    const CreationFunc create = entry();
    if (!create)
        throw PluginError("the plug-in " + path + " offers no creation function");
    try {
        m_driver.reset(create(instances));
    } catch (const std::exception& error) {
        throw PluginError("the plug-in " + path + " failed to make its driver: " + error.what());
    } catch (...) {
        throw PluginError("the plug-in " + path + " failed to make its driver");
    }
    if (!m_driver)
        throw PluginError("the plug-in " + path + " made no driver");
}

Plugin::~Plugin() = default;

} // namespace korvel::controller
