#include "roomplayer/Elements.h"

#include <stdexcept>
#include <string>

namespace korvel::roomplayer {
namespace {

std::runtime_error NoSuchElement(const char* factory) {
    return std::runtime_error(std::string("GStreamer has no element ") + factory);
}

bool IsOf(GstElement* element, const char* factory) {
    GstElementFactory* made = gst_element_get_factory(element);
    return made != nullptr && g_strcmp0(GST_OBJECT_NAME(made), factory) == 0;
}

void SetBaseTime(const GValue* element, gpointer time) {
    gst_element_set_base_time(GST_ELEMENT(g_value_get_object(element)),
                              *static_cast<const GstClockTime*>(time));
}

// For the pipeline and everything in it. What is added later takes the time over from where it is added.
void SetBaseTimeOfAll(GstElement* pipeline, GstClockTime time) {
    gst_element_set_base_time(pipeline, time);
    GstIterator* elements = gst_bin_iterate_recurse(GST_BIN(pipeline));
    while (gst_iterator_foreach(elements, SetBaseTime, &time) == GST_ITERATOR_RESYNC)
        gst_iterator_resync(elements);
    gst_iterator_free(elements);
}

} // namespace

GstElement* AddElement(GstElement* pipeline, const char* factory) {
    return AddElement(pipeline, gst_element_factory_make(factory, nullptr), factory);
}

GstElement* AddElement(GstElement* pipeline, GstElement* made, const char* factory) {
    if (made == nullptr)
        throw NoSuchElement(factory);
    gst_bin_add(GST_BIN(pipeline), made);
    return made;
}

void LoadElement(const char* factory) {
    GstElement* made = gst_element_factory_make(factory, nullptr);
    if (made == nullptr)
        throw NoSuchElement(factory);
    gst_object_unref(gst_object_ref_sink(made));
}

ElementPtr FindChild(GstElement* bin, const char* factory) {
    GstIterator* children = gst_bin_iterate_elements(GST_BIN(bin));
    GValue item = G_VALUE_INIT;
    ElementPtr found;
    while (!found && gst_iterator_next(children, &item) == GST_ITERATOR_OK) {
        auto* element = GST_ELEMENT(g_value_get_object(&item));
        if (IsOf(element, factory))
            found.reset(GST_ELEMENT(gst_object_ref(element)));
        g_value_reset(&item);
    }
    g_value_unset(&item);
    gst_iterator_free(children);
    return found;
}

bool StartPlaying(GstElement* pipeline) {
    // None: the pipeline must not choose another time itself.
    gst_element_set_start_time(pipeline, GST_CLOCK_TIME_NONE);
    if (gst_element_set_state(pipeline, GST_STATE_PAUSED) == GST_STATE_CHANGE_FAILURE)
        return false;
    // Only now, when opening a device took whatever it took: time runs from here.
    const ClockPtr clock(gst_system_clock_obtain());
    SetBaseTimeOfAll(pipeline, gst_clock_get_time(clock.get()));
    gst_pipeline_use_clock(GST_PIPELINE(pipeline), clock.get());
    return gst_element_set_state(pipeline, GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
}

} // namespace korvel::roomplayer
