#include "audioserver/MediaQuestions.h"

#include <cstring>

#include "audioserver/GstPointers.h"

namespace korvel::audioserver {
namespace {

void FindAdaptive(const GValue* item, gpointer found) {
    GstElementFactory* factory = gst_element_get_factory(GST_ELEMENT(g_value_get_object(item)));
    const gchar* kind =
        factory != nullptr ? gst_element_factory_get_metadata(factory, GST_ELEMENT_METADATA_KLASS) : nullptr;
    if (kind != nullptr && std::strstr(kind, "Adaptive") != nullptr)
        *static_cast<bool*>(found) = true;
}

// Whether it is a playlist of parts, whose own length says nothing.
bool IsAdaptive(GstElement* pipeline) {
    bool found = false;
    GstIterator* elements = gst_bin_iterate_recurse(GST_BIN(pipeline));
    while (gst_iterator_foreach(elements, FindAdaptive, &found) == GST_ITERATOR_RESYNC)
        gst_iterator_resync(elements);
    gst_iterator_free(elements);
    return found;
}

bool HasLength(GstElement* element, GstFormat format) {
    gint64 length = 0;
    return gst_element_query_duration(element, format, &length) != FALSE && length > 0;
}

gboolean IsOtherHeader(GQuark name, const GValue*, gpointer) {
    return g_ascii_strncasecmp(g_quark_to_string(name), "icy-", 4) != 0;
}

// Whether the answer of a web server has the headers of a radio station.
bool SaysStation(GstElement* source) {
    const PadPtr pad(gst_element_get_static_pad(source, "src"));
    for (guint index = 0; pad; ++index) {
        GstEvent* event = gst_pad_get_sticky_event(pad.get(), GST_EVENT_CUSTOM_DOWNSTREAM_STICKY, index);
        if (event == nullptr)
            return false;
        const std::unique_ptr<GstEvent, MiniObjectUnref> owner(event);
        const GValue* headers = gst_structure_get_value(gst_event_get_structure(event), "response-headers");
        if (headers != nullptr && GST_VALUE_HOLDS_STRUCTURE(headers) &&
            gst_structure_foreach(gst_value_get_structure(headers), IsOtherHeader, nullptr) == FALSE)
            return true;
    }
    return false;
}

} // namespace

MediaEvent::Kind LengthOf(GstElement* pipeline, GstElement* head) {
    if (IsAdaptive(pipeline))
        return HasLength(pipeline, GST_FORMAT_TIME) ? MediaEvent::Kind::kFinite : MediaEvent::Kind::kStation;
    GstElement* source = nullptr;
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(head), "source") != nullptr)
        g_object_get(head, "source", &source, nullptr);
    const ElementPtr owner(source);
    if (source != nullptr && HasLength(source, GST_FORMAT_BYTES))
        return MediaEvent::Kind::kFinite;
    return source != nullptr && SaysStation(source) ? MediaEvent::Kind::kStation
                                                    : MediaEvent::Kind::kBroadcast;
}

MediaAbilities AbilitiesOf(GstElement* pipeline) {
    MediaAbilities abilities;
    gint64 length = 0;
    if (gst_element_query_duration(pipeline, GST_FORMAT_TIME, &length) != FALSE && length > 0)
        abilities.milliseconds = static_cast<std::uint64_t>(length) / GST_MSECOND;
    GstQuery* query = gst_query_new_seeking(GST_FORMAT_TIME);
    const std::unique_ptr<GstQuery, MiniObjectUnref> owner(query);
    gboolean seekable = FALSE;
    if (gst_element_query(pipeline, query) != FALSE)
        gst_query_parse_seeking(query, nullptr, &seekable, nullptr, nullptr);
    abilities.seekable = seekable != FALSE;
    return abilities;
}

} // namespace korvel::audioserver
