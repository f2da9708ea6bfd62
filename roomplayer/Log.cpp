#include "roomplayer/Log.h"

#include <cstdio>
#include <string>

namespace korvel::roomplayer {

void Log(std::string_view text) {
    std::string line = "korvel-roomplayer: ";
    line.append(text).append("\n");
    // One call, so that lines of several threads do not mix.
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace korvel::roomplayer
