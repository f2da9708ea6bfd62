// Addresses as playlists name them: whatever is written there, nothing but the web is opened.
#include <gst/gst.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "audioserver/GstPointers.h"
#include "audioserver/PlaylistGuard.h"

namespace {

using korvel::audioserver::ElementPtr;
using korvel::audioserver::GStringPtr;

bool IsAllowed(GstElement* element, const char* address) {
    const std::string_view opener = GST_OBJECT_NAME(gst_element_get_factory(element));
    const GStringPtr protocol(gst_uri_get_protocol(address));
    const std::string_view name = protocol ? protocol.get() : "";
    return opener == "korvelrefusedsrc" || name == "http" || name == "https";
}

} // namespace

// What GLib keeps for the life of a program looks like lost memory: it is built without frame pointers.
extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const bool ready = [] {
        gst_init(nullptr, nullptr);
        korvel::audioserver::GuardPlaylists();
        return true;
    }();
    const std::string address(reinterpret_cast<const char*>(bytes), size);
    if (!ready || gst_uri_is_valid(address.c_str()) == FALSE)
        return 0;
    GstElement* made = gst_element_make_from_uri(GST_URI_SRC, address.c_str(), nullptr, nullptr);
    if (made == nullptr)
        return 0;
    const ElementPtr element(GST_ELEMENT(gst_object_ref_sink(made)));
    if (!IsAllowed(element.get(), address.c_str())) {
        std::cerr << "broken rule: only the web is opened" << std::endl;
        std::abort();
    }
    return 0;
}
