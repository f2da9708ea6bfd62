#include "replay/Plugin.h"

#include <dlfcn.h>

namespace korvel::replay {

namespace {

std::string TakeLoaderError() {
    const char* text = dlerror();
    return text ? text : "unknown error";
}

} // namespace

Plugin::Plugin(const std::string& path) {
    // A bare file name would be searched for in the system's library folders.
    const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
    void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        throw std::runtime_error("cannot load the plug-in: " + TakeLoaderError());
    const auto getCreation = reinterpret_cast<GetCreationFuncType>(dlsym(handle, kGetCreationFuncName));
    if (!getCreation)
        throw std::runtime_error("the plug-in " + path + " exports no " + kGetCreationFuncName);
    m_create = getCreation();
    if (!m_create)
        throw std::runtime_error(std::string(kGetCreationFuncName) + " of the plug-in " + path +
                                 " returned no creation function");
}

} // namespace korvel::replay
