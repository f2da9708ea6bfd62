// What is in the way of the audio server: while a file of this name is in the folder KORVEL_HINDRANCES,
//
//   source     no source ends
//   length     nobody says how long a media is
//   internal   an element is asked for by a handler that has an error
//
// It says on stderr when a source is opened.
#include <dlfcn.h>
#include <gst/gst.h>
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

constexpr int kLookMilliseconds = 10;

bool IsInTheWay(std::string_view what) {
    static const char* folder = std::getenv("KORVEL_HINDRANCES");
    return folder != nullptr && ::access((std::string(folder) + "/" + std::string(what)).c_str(), F_OK) == 0;
}

void HoldWhile(std::string_view what) {
    while (IsInTheWay(what))
        ::poll(nullptr, 0, kLookMilliseconds);
}

// The other pipelines are outputs.
bool IsSource(GstElement* element) {
    if (!GST_IS_PIPELINE(element))
        return false;
    GstElement* sink = gst_bin_get_by_name(GST_BIN(element), "rtpsink");
    if (sink != nullptr)
        gst_object_unref(sink);
    return sink == nullptr;
}

// The function of the library, for one that the program has here in its place.
template <typename Function>
Function* Real(Function*, const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" GstStateChangeReturn gst_element_set_state(GstElement* element, GstState state) {
    static auto* real = Real(&gst_element_set_state, "gst_element_set_state");
    if (state == GST_STATE_NULL && IsSource(element))
        HoldWhile("source");
    if (state == GST_STATE_PAUSED && IsSource(element))
        std::fputs("a source is opened\n", stderr);
    return real(element, state);
}

extern "C" gboolean gst_element_query_duration(GstElement* element, GstFormat format, gint64* duration) {
    static auto* real = Real(&gst_element_query_duration, "gst_element_query_duration");
    HoldWhile("length");
    return real(element, format, duration);
}

extern "C" GstElement* gst_element_factory_make(const gchar* factory, const gchar* name) {
    static auto* real = Real(&gst_element_factory_make, "gst_element_factory_make");
    if (IsInTheWay("internal"))
        throw std::logic_error("an error of this program");
    return real(factory, name);
}
