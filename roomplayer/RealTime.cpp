#include "roomplayer/RealTime.h"

#include <pthread.h>
#include <sched.h>

#include "roomplayer/GstPointers.h"

namespace korvel::roomplayer {
namespace {

// A thread announces itself when it begins, in itself.
GstBusSyncReply OnMessage(GstBus*, GstMessage* message, gpointer) {
    GstStreamStatusType type = GST_STREAM_STATUS_TYPE_CREATE;
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_STREAM_STATUS)
        gst_message_parse_stream_status(message, &type, nullptr);
    if (type == GST_STREAM_STATUS_TYPE_ENTER) {
        sched_param priority{};
        priority.sched_priority = sched_get_priority_min(SCHED_RR);
        // Those that it starts take it over. When it is refused, sound is as it is on a machine without.
        pthread_setschedparam(pthread_self(), SCHED_RR, &priority);
    }
    return GST_BUS_PASS;
}

} // namespace

void MakeRealTime(GstElement* pipeline) {
    const BusPtr bus(gst_element_get_bus(pipeline));
    gst_bus_set_sync_handler(bus.get(), OnMessage, nullptr, nullptr);
}

} // namespace korvel::roomplayer
