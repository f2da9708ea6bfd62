#include "roomplayer/RealTime.h"

#include "common/RealTime.h"
#include "roomplayer/GstPointers.h"

namespace korvel::roomplayer {
namespace {

// A thread announces itself when it begins and when it ends, in itself.
GstBusSyncReply OnMessage(GstBus*, GstMessage* message, gpointer ordinary) {
    if (GST_MESSAGE_TYPE(message) != GST_MESSAGE_STREAM_STATUS)
        return GST_BUS_PASS;
    GstStreamStatusType type = GST_STREAM_STATUS_TYPE_CREATE;
    GstElement* owner = nullptr;
    gst_message_parse_stream_status(message, &type, &owner);
    if (type == GST_STREAM_STATUS_TYPE_ENTER && owner != ordinary)
        common::MakeThreadRealTime();
    else if (type == GST_STREAM_STATUS_TYPE_LEAVE)
        common::MakeThreadOrdinary();
    return GST_BUS_PASS;
}

} // namespace

void MakeRealTime(GstElement* pipeline, const GstElement* ordinary) {
    const BusPtr bus(gst_element_get_bus(pipeline));
    gst_bus_set_sync_handler(bus.get(), OnMessage, const_cast<GstElement*>(ordinary), nullptr);
}

} // namespace korvel::roomplayer
