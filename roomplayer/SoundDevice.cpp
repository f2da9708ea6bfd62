#include "roomplayer/SoundDevice.h"

#include <algorithm>
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

// The first that is said against opening a device; "" when nothing is.
std::string FirstComplaint(GstBus* bus) {
    const auto kinds = static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_WARNING);
    const std::unique_ptr<GstMessage, MiniObjectUnref> message(gst_bus_pop_filtered(bus, kinds));
    if (!message)
        return "";
    GError* error = nullptr;
    if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR)
        gst_message_parse_error(message.get(), &error, nullptr);
    else
        gst_message_parse_warning(message.get(), &error, nullptr);
    const GErrorPtr owner(error);
    std::string text = error != nullptr ? error->message : "";
    std::ranges::replace(text, '\n', ' ');
    return text;
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

// What the detection has put in.
std::string SinkIn(GstElement* detection) {
    GstIterator* sinks = gst_bin_iterate_sinks(GST_BIN(detection));
    GValue value = G_VALUE_INIT;
    std::string name;
    if (gst_iterator_next(sinks, &value) == GST_ITERATOR_OK) {
        if (GstElementFactory* factory = gst_element_get_factory(GST_ELEMENT(g_value_get_object(&value))))
            name = GST_OBJECT_NAME(factory);
        g_value_unset(&value);
    }
    gst_iterator_free(sinks);
    return name;
}

// Null, with the reason, when there is none.
ElementPtr FindDevice(std::string& output) {
    if (!HasSoundDevice()) {
        output = "there is no sound device that this program can see";
        return nullptr;
    }
    GstElement* made = gst_element_factory_make("autoaudiosink", nullptr);
    if (made == nullptr) {
        output = "GStreamer has no element autoaudiosink";
        return nullptr;
    }
    ElementPtr device(GST_ELEMENT(gst_object_ref_sink(made)));
    FollowClock(made);
    const BusPtr bus(gst_bus_new());
    gst_element_set_bus(made, bus.get());
    const bool ready = gst_element_set_state(made, GST_STATE_READY) != GST_STATE_CHANGE_FAILURE;
    gst_element_set_bus(made, nullptr);
    // For lack of a device the detection itself puts in a sink that discards.
    if (ready && !FindChild(made, "fakesink")) {
        output = SinkIn(made);
        return device;
    }
    output = FirstComplaint(bus.get());
    if (output.empty())
        output = "no sound device can be opened";
    gst_element_set_state(made, GST_STATE_NULL);
    return nullptr;
}

} // namespace

void FollowClock(GstElement* bin) {
    g_signal_connect(bin, "element-added", G_CALLBACK(OnSinkAdded), nullptr);
}

SoundDevice OpenSoundDevice(bool wanted) {
    std::string output = "not wanted";
    if (wanted) {
        if (ElementPtr device = FindDevice(output)) {
            common::ProgramLog().Info("playing to the sound device, by " + output);
            return {std::move(device), std::move(output)};
        }
    }
    common::ProgramLog().Warning("playing without a sound device: " + output);
    GstElement* nothing = gst_element_factory_make("fakesink", nullptr);
    if (nothing == nullptr)
        throw std::runtime_error("GStreamer has no element fakesink");
    g_object_set(nothing, "sync", TRUE, nullptr);
    return {ElementPtr(GST_ELEMENT(gst_object_ref_sink(nothing))), "none: " + output};
}

} // namespace korvel::roomplayer
