#include "audioserver/PipelineStart.h"

#include "audioserver/GstPointers.h"

namespace korvel::audioserver {
namespace {

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

bool StartPlaying(GstElement* pipeline) {
    // None: the pipeline must not choose another time itself.
    gst_element_set_start_time(pipeline, GST_CLOCK_TIME_NONE);
    if (gst_element_set_state(pipeline, GST_STATE_PAUSED) == GST_STATE_CHANGE_FAILURE)
        return false;
    const ClockPtr clock(gst_pipeline_get_pipeline_clock(GST_PIPELINE(pipeline)));
    SetBaseTimeOfAll(pipeline, gst_clock_get_time(clock.get()));
    gst_pipeline_use_clock(GST_PIPELINE(pipeline), clock.get());
    return gst_element_set_state(pipeline, GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
}

} // namespace korvel::audioserver
