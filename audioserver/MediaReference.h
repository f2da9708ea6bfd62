// What the text of an "addmed" refers to.
#pragma once

#include <string>
#include <string_view>

namespace korvel::audioserver {

struct MediaReference {
    enum class Kind {
        kFile,      // target is an absolute path
        kWeb,       // target is an http or https address
        kCatalogue, // target is the id of a track or channel of the catalogue
        kInput,     // target is the name of a local input
        kBad        // target is the reason, one line
    };

    Kind kind = Kind::kBad;
    std::string target;
    // The text itself, as it came.
    std::string text{};
};

// Reads the media text of a request, outer spaces already removed. A quoted reference reaches from the first
// quote to the last one of the text, because quotes inside a path are not escaped. Text without a leading
// quote names an input. Anything unusable comes back as kBad; nothing is opened or looked up here.
MediaReference ParseMediaReference(std::string_view text);

} // namespace korvel::audioserver
