#include "audioserver/MediaReference.h"

#include "audioserver/Protocol.h"
#include "common/Address.h"
#include "common/Text.h"

namespace korvel::audioserver {
namespace {

MediaReference Bad(std::string_view reason) {
    return {MediaReference::Kind::kBad, std::string(reason)};
}

// What follows "rhap://": a stream's number, which says nothing new, and an id.
MediaReference CatalogueReference(std::string_view target) {
    const auto colon = target.find(':');
    if (colon == std::string_view::npos || !common::ParseNumber(target.substr(0, colon)))
        return Bad("not a reference to the catalogue");
    const std::string_view id = target.substr(colon + 1);
    if (id.empty() || id.size() > kMaxCatalogueIdBytes)
        return Bad("not an id of the catalogue");
    return {MediaReference::Kind::kCatalogue, std::string(id)};
}

// What follows "file:/".
MediaReference FileReference(std::string_view target) {
    if (target.starts_with(kWebReference)) {
        target.remove_prefix(kWebReference.size());
        return common::ParseWebAddress(target)
                   ? MediaReference{MediaReference::Kind::kWeb, std::string(target)}
                   : Bad("not an http address");
    }
    if (!target.starts_with('/'))
        return Bad("path is not absolute");
    return {MediaReference::Kind::kFile, std::string(target)};
}

MediaReference ReadReference(std::string_view text) {
    if (text.empty())
        return Bad("empty reference");
    if (text.front() != '"')
        return {MediaReference::Kind::kInput, std::string(text)};
    const auto last = text.find_last_of('"');
    if (last == 0)
        return Bad("unterminated reference");
    const std::string_view reference = text.substr(1, last - 1);
    if (reference.starts_with(kFileReference))
        return FileReference(reference.substr(kFileReference.size()));
    if (reference.starts_with(kCatalogueReference))
        return CatalogueReference(reference.substr(kCatalogueReference.size()));
    return Bad("unknown kind of reference");
}

} // namespace

MediaReference ParseMediaReference(std::string_view text) {
    MediaReference reference = ReadReference(text);
    reference.text = text;
    return reference;
}

} // namespace korvel::audioserver
