#include "audioserver/MediaSource.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "audioserver/PcmFormat.h"
#include "audioserver/PipelineStart.h"

namespace korvel::audioserver {

/// How much decoded sound is kept between decoder and sender.
struct MediaSource::Reserve {
    std::uint64_t queueMilliseconds;
    PcmFeed::Reserve feed;
    bool live;
};

namespace {

constexpr guint kWebTimeoutSeconds = 10;
/// A file is decoded much faster than it plays, but not while a busy machine does something else. What is
/// there for that moment delays the start by the few milliseconds that decoding it takes.
constexpr PcmFeed::Reserve kFileReserve{100, false};
constexpr PcmFeed::Reserve kWebReserve{1500, true};
/// What is live comes at the pace at which it is played.
constexpr PcmFeed::Reserve kInputReserve{0, false};

/// "No such file" beats "could not read from resource"; and opening a pipe or a device would block the loop.
bool IsPlainFile(const std::string& path, std::string& error) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        error = std::strerror(errno);
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        error = "not a file";
        return false;
    }
    return true;
}

ElementPtr MakeElement(const char* factory) {
    GstElement* element = gst_element_factory_make(factory, nullptr);
    if (element == nullptr) {
        throw std::runtime_error(std::string("GStreamer has no element ") + factory);
    }
    return ElementPtr(GST_ELEMENT(gst_object_ref_sink(element)));
}

ElementPtr MakeUriHead(const std::string& uri) {
    ElementPtr head = MakeElement("uridecodebin");
    const CapsPtr caps(gst_caps_new_empty_simple("audio/x-raw"));
    // Only sound is decoded: a film or a cover costs nothing.
    g_object_set(head.get(), "uri", uri.c_str(), "caps", caps.get(), "expose-all-streams", FALSE, nullptr);
    return head;
}

void ConfigureWebSource(GstElement*, GstElement* source, gpointer) {
    GObjectClass* type = G_OBJECT_GET_CLASS(source);
    if (g_object_class_find_property(type, "timeout") != nullptr &&
        g_object_class_find_property(type, "user-agent") != nullptr) {
        g_object_set(source, "timeout", kWebTimeoutSeconds, "user-agent", "korvel-audioserver", nullptr);
    }
}

/// Runs in a thread of the source: the first pad with sound is linked, every other one is left alone.
void LinkFirstAudioPad(GstElement*, GstPad* pad, gpointer converter) {
    const PadPtr sink(gst_element_get_static_pad(static_cast<GstElement*>(converter), "sink"));
    if (!gst_pad_is_linked(sink.get())) {
        gst_pad_link(pad, sink.get());
    }
}

std::string TagText(const GstTagList* tags, const char* tag) {
    gchar* value = nullptr;
    gst_tag_list_get_string(tags, tag, &value);
    const GStringPtr owner(value);
    return value != nullptr ? std::string(value) : std::string();
}

/// "Artist - Title", what there is of it, or the name of the station.
std::string DescribeTags(const GstTagList* tags) {
    const std::string title = TagText(tags, GST_TAG_TITLE);
    const std::string artist = TagText(tags, GST_TAG_ARTIST);
    if (title.empty()) {
        return TagText(tags, GST_TAG_ORGANIZATION);
    }
    return artist.empty() ? title : artist + " - " + title;
}

void NotifyTags(GstMessage* message, const MediaNotify& notify) {
    GstTagList* tags = nullptr;
    gst_message_parse_tag(message, &tags);
    const TagListPtr owner(tags);
    std::string text = DescribeTags(tags);
    if (!text.empty()) {
        notify({MediaEvent::Kind::kTags, std::move(text)});
    }
}

void NotifyError(GstMessage* message, const MediaNotify& notify) {
    GError* error = nullptr;
    gst_message_parse_error(message, &error, nullptr);
    const GErrorPtr owner(error);
    // The one message that tells a listener nothing.
    const bool generic = g_error_matches(error, GST_STREAM_ERROR, GST_STREAM_ERROR_FAILED) != FALSE;
    notify(
        {MediaEvent::Kind::kFailed, error == nullptr || generic ? "the source has failed" : error->message});
}

/// Runs in whatever thread posts: turns the few messages of interest into events and keeps nothing.
GstBusSyncReply OnMessage(GstBus*, GstMessage* message, gpointer notifyPointer) {
    const auto& notify = *static_cast<const MediaNotify*>(notifyPointer);
    switch (GST_MESSAGE_TYPE(message)) {
        case GST_MESSAGE_ERROR:
            NotifyError(message, notify);
            break;
        case GST_MESSAGE_TAG:
            NotifyTags(message, notify);
            break;
        case GST_MESSAGE_ASYNC_DONE:
            notify({MediaEvent::Kind::kReady, {}});
            break;
        default:
            break;
    }
    gst_message_unref(message);
    return GST_BUS_DROP;
}

void DeleteNotify(gpointer notify) {
    delete static_cast<MediaNotify*>(notify);
}

} // namespace

std::unique_ptr<MediaSource> MediaSource::OpenFile(const std::string& path, MediaNotify notify,
                                                   std::string& error) {
    if (!IsPlainFile(path, error)) {
        return nullptr;
    }
    const GStringPtr uri(gst_filename_to_uri(path.c_str(), nullptr));
    if (!uri) {
        error = "unusable path";
        return nullptr;
    }
    return Open(MakeUriHead(uri.get()), {500, kFileReserve, false}, std::move(notify), error);
}

std::unique_ptr<MediaSource> MediaSource::OpenWeb(const std::string& url, MediaNotify notify,
                                                  std::string& error) {
    ElementPtr head = MakeUriHead(url);
    g_signal_connect(head.get(), "source-setup", G_CALLBACK(ConfigureWebSource), nullptr);
    return Open(std::move(head), {6000, kWebReserve, false}, std::move(notify), error);
}

std::unique_ptr<MediaSource> MediaSource::OpenInput(const std::string& description, MediaNotify notify,
                                                    std::string& error) {
    if (gst_uri_is_valid(description.c_str())) {
        return Open(MakeUriHead(description), {200, kInputReserve, true}, std::move(notify), error);
    }
    GError* failure = nullptr;
    GstElement* head = gst_parse_bin_from_description(description.c_str(), TRUE, &failure);
    const GErrorPtr owner(failure);
    if (head == nullptr) {
        error = failure != nullptr ? failure->message : "unusable input";
        return nullptr;
    }
    return Open(ElementPtr(GST_ELEMENT(gst_object_ref_sink(head))), {200, kInputReserve, true},
                std::move(notify), error);
}

std::unique_ptr<MediaSource> MediaSource::Open(ElementPtr head, const Reserve& reserve, MediaNotify notify,
                                               std::string& error) {
    std::unique_ptr<MediaSource> source(new MediaSource(std::move(head), reserve, std::move(notify)));
    return source->Start(error) ? std::move(source) : nullptr;
}

MediaSource::MediaSource(ElementPtr head, const Reserve& reserve, MediaNotify notify)
    : m_pipeline(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr)))),
      m_head(head.get()),
      m_live(reserve.live) {
    const BusPtr bus(gst_element_get_bus(m_pipeline.get()));
    // The bus owns its copy, so a message posted during the teardown still meets a valid one.
    gst_bus_set_sync_handler(bus.get(), OnMessage, new MediaNotify(notify), DeleteNotify);

    const ElementPtr converter = MakeElement("audioconvert");
    const ElementPtr resampler = MakeElement("audioresample");
    const ElementPtr queue = MakeElement("queue");
    const ElementPtr sink = MakeElement("appsink");
    const CapsPtr caps(gst_caps_from_string(kPcmCaps));
    g_object_set(queue.get(), "max-size-time", static_cast<guint64>(reserve.queueMilliseconds * GST_MSECOND),
                 "max-size-bytes", 0U, "max-size-buffers", 0U, nullptr);
    if (reserve.live) {
        // A live source cannot wait: what nobody draws in time is dropped at the old end.
        gst_util_set_object_arg(G_OBJECT(queue.get()), "leaky", "downstream");
    }
    g_object_set(sink.get(), "caps", caps.get(), "sync", FALSE, "max-buffers", 2U, "enable-last-sample",
                 FALSE, nullptr);
    gst_bin_add_many(GST_BIN(m_pipeline.get()), m_head, converter.get(), resampler.get(), queue.get(),
                     sink.get(), nullptr);
    gst_element_link_many(converter.get(), resampler.get(), queue.get(), sink.get(), nullptr);
    ConnectHead(m_head, converter.get());
    m_feed = std::make_shared<PcmFeed>(GST_APP_SINK(sink.get()), reserve.feed, std::move(notify));
}

void MediaSource::ConnectHead(GstElement* head, GstElement* converter) {
    if (const PadPtr pad(gst_element_get_static_pad(head, "src")); pad) {
        gst_element_link(head, converter);
        return;
    }
    g_signal_connect(head, "pad-added", G_CALLBACK(LinkFirstAudioPad), converter);
}

bool MediaSource::Start(std::string& error) {
    if (!StartPlaying(m_pipeline.get())) {
        error = "cannot be opened";
        return false;
    }
    return true;
}

MediaSource::~MediaSource() {
    gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
    const BusPtr bus(gst_element_get_bus(m_pipeline.get()));
    gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
}

void MediaSource::StartAt(std::uint32_t milliseconds) {
    gst_element_seek_simple(m_pipeline.get(), GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH,
                            static_cast<gint64>(milliseconds * GST_MSECOND));
}

bool MediaSource::IsBroadcast() const {
    if (m_live) {
        return true;
    }
    GstElement* source = nullptr;
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(m_head), "source") != nullptr) {
        g_object_get(m_head, "source", &source, nullptr);
    }
    const ElementPtr owner(source);
    gint64 length = 0;
    return source == nullptr || gst_element_query_duration(source, GST_FORMAT_BYTES, &length) == FALSE ||
           length <= 0;
}

} // namespace korvel::audioserver
