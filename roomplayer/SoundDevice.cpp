#include "roomplayer/SoundDevice.h"

#include <stdexcept>

#include "common/Log.h"
#include "roomplayer/Elements.h"

namespace korvel::roomplayer {
namespace {

constexpr gint64 kDriftMicroseconds = 200;

// Asked before a device is opened: on a machine without one, opening takes long and fills the log.
bool HasSoundDevice() {
    GstDeviceMonitor* monitor = gst_device_monitor_new();
    gst_device_monitor_add_filter(monitor, "Audio/Sink", nullptr);
    GList* devices =
        gst_device_monitor_start(monitor) != FALSE ? gst_device_monitor_get_devices(monitor) : nullptr;
    const bool found = devices != nullptr;
    g_list_free_full(devices, gst_object_unref);
    gst_device_monitor_stop(monitor);
    gst_object_unref(monitor);
    return found;
}

bool Has(GstElement* element, const char* property) {
    return g_object_class_find_property(G_OBJECT_GET_CLASS(element), property) != nullptr;
}

void OnSinkAdded(GstBin*, GstElement* sink, gpointer) {
    if (Has(sink, "provide-clock"))
        g_object_set(sink, "provide-clock", FALSE, nullptr);
    if (Has(sink, "drift-tolerance"))
        g_object_set(sink, "drift-tolerance", kDriftMicroseconds, nullptr);
}

} // namespace

void FollowClock(GstElement* bin) {
    g_signal_connect(bin, "element-added", G_CALLBACK(OnSinkAdded), nullptr);
}

ElementPtr MakeSoundDevice(bool wanted) {
    GstElement* device =
        wanted && HasSoundDevice() ? gst_element_factory_make("autoaudiosink", nullptr) : nullptr;
    if (device != nullptr) {
        FollowClock(device);
        ElementPtr found(GST_ELEMENT(gst_object_ref_sink(device)));
        const bool ready = gst_element_set_state(device, GST_STATE_READY) != GST_STATE_CHANGE_FAILURE;
        // For lack of a device the detection itself puts in a sink that discards.
        if (ready && !FindChild(device, "fakesink")) {
            common::ProgramLog().Info("playing to the sound device");
            return found;
        }
        gst_element_set_state(device, GST_STATE_NULL);
    }
    common::ProgramLog().Warning("playing without a sound device");
    GstElement* nothing = gst_element_factory_make("fakesink", nullptr);
    if (nothing == nullptr)
        throw std::runtime_error("GStreamer has no element fakesink");
    g_object_set(nothing, "sync", TRUE, nullptr);
    return ElementPtr(GST_ELEMENT(gst_object_ref_sink(nothing)));
}

} // namespace korvel::roomplayer
