#include "audioserver/MediaSource.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <utility>

#include "audioserver/Descriptors.h"
#include "audioserver/PcmFormat.h"
#include "audioserver/PipelineStart.h"
#include "audioserver/PlaylistGuard.h"
#include "common/RealTime.h"

namespace korvel::audioserver {

// How much decoded sound is kept between decoder and sender.
struct MediaSource::Reserve {
    std::uint64_t queueMilliseconds;
    PcmFeed::Reserve feed;
    bool live;
};

// Closed on the loop, used from everywhere.
struct MediaSource::Outlet {
    std::mutex mutex;
    MediaNotify notify;

    void Notify(MediaEvent event) {
        const std::lock_guard lock(mutex);
        if (notify)
            notify(std::move(event));
    }
    void Close() {
        const std::lock_guard lock(mutex);
        notify = nullptr;
    }
    bool IsClosed() {
        const std::lock_guard lock(mutex);
        return !notify;
    }
};

namespace {

constexpr guint kWebTimeoutSeconds = 10;
// A file is decoded much faster than it plays, but not while a busy machine does something else. What is
// there for that moment delays the start by the few milliseconds that decoding it takes.
constexpr PcmFeed::Reserve kFileReserve{100, 500, false};
constexpr PcmFeed::Reserve kWebReserve{1500, 1500, true};
// What is live comes at the pace at which it is played.
constexpr PcmFeed::Reserve kInputReserve{0, 0, false};

// "No such file" beats "could not read from resource"; and opening a pipe or a device would wait for ever.
// Empty when it is a file.
std::string LookAtFile(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0)
        return std::strerror(errno);
    return S_ISREG(info.st_mode) ? "" : "not a file";
}

ElementPtr MakeElement(const char* factory) {
    GstElement* element = gst_element_factory_make(factory, nullptr);
    if (element == nullptr)
        throw std::runtime_error(std::string("GStreamer has no element ") + factory);
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
        g_object_class_find_property(type, "user-agent") != nullptr)
        g_object_set(source, "timeout", kWebTimeoutSeconds, "user-agent", "korvel-audioserver", nullptr);
}

// Runs in a thread of the source: the first pad with sound is linked, every other one is left alone.
void LinkFirstAudioPad(GstElement*, GstPad* pad, gpointer converter) {
    const PadPtr sink(gst_element_get_static_pad(static_cast<GstElement*>(converter), "sink"));
    if (!gst_pad_is_linked(sink.get()))
        gst_pad_link(pad, sink.get());
}

std::string TagText(const GstTagList* tags, const char* tag) {
    gchar* value = nullptr;
    gst_tag_list_get_string(tags, tag, &value);
    const GStringPtr owner(value);
    return value != nullptr ? std::string(value) : std::string();
}

// "Artist - Title", what there is of it, or the name of the station.
std::string DescribeTags(const GstTagList* tags) {
    const std::string title = TagText(tags, GST_TAG_TITLE);
    const std::string artist = TagText(tags, GST_TAG_ARTIST);
    if (title.empty())
        return TagText(tags, GST_TAG_ORGANIZATION);
    return artist.empty() ? title : artist + " - " + title;
}

void NotifyTags(GstMessage* message, const MediaNotify& notify) {
    GstTagList* tags = nullptr;
    gst_message_parse_tag(message, &tags);
    const TagListPtr owner(tags);
    std::string text = DescribeTags(tags);
    if (!text.empty())
        notify({MediaEvent::Kind::kTags, std::move(text)});
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

// Who hears of the messages on a source's bus, and the element that hands the sound over to the sender.
struct Listener {
    MediaNotify notify;
    const GstElement* outlet;
};

// Decoders stay ordinary threads, for they do what a file makes them do; what they have decoded must get on.
void SetPriority(GstMessage* message, const GstElement* outlet) {
    GstStreamStatusType type = GST_STREAM_STATUS_TYPE_CREATE;
    GstElement* owner = nullptr;
    gst_message_parse_stream_status(message, &type, &owner);
    if (type == GST_STREAM_STATUS_TYPE_ENTER && owner == outlet)
        common::MakeThreadRealTime();
    else if (type == GST_STREAM_STATUS_TYPE_LEAVE)
        common::MakeThreadOrdinary();
}

// Runs in whatever thread posts: turns the few messages of interest into events and keeps nothing.
GstBusSyncReply OnMessage(GstBus*, GstMessage* message, gpointer listenerPointer) {
    const auto& [notify, outlet] = *static_cast<const Listener*>(listenerPointer);
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
        case GST_MESSAGE_STREAM_STATUS:
            SetPriority(message, outlet);
            break;
        default:
            break;
    }
    gst_message_unref(message);
    return GST_BUS_DROP;
}

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

// May wait for a playlist that is just being fetched.
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

void DeleteListener(gpointer listener) {
    delete static_cast<Listener*>(listener);
}

// Has its share of what may be open until nothing holds it any more.
std::shared_ptr<GstElement> MakePipeline() {
    return {GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr))),
            [share = std::make_shared<DescriptorShare>(kDescriptorsPerSource)](GstElement* pipeline) {
                gst_object_unref(pipeline);
            }};
}

} // namespace

bool MediaSource::HasRoom(SourceThread::Kind kind, std::string& error) {
    if (!SourceThread::HasRoom(kind)) {
        error = "too many sources hang";
        return false;
    }
    if (!HasDescriptors(kDescriptorsPerSource)) {
        error = "too many files are open";
        return false;
    }
    return true;
}

std::unique_ptr<MediaSource> MediaSource::OpenFile(const std::string& path, Owner owner, std::string& error) {
    const GStringPtr uri(gst_filename_to_uri(path.c_str(), nullptr));
    if (!uri)
        error = "unusable path";
    if (!uri || !HasRoom(SourceThread::Kind::kFile, error))
        return nullptr;
    std::unique_ptr<MediaSource> source(new MediaSource(MakeUriHead(uri.get()), {1000, kFileReserve, false},
                                                        SourceThread::Kind::kFile, "", std::move(owner)));
    source->Start([path] { return LookAtFile(path); }, true);
    return source;
}

std::unique_ptr<MediaSource> MediaSource::OpenWeb(const std::string& url, Owner owner, std::string& error) {
    if (!HasRoom(SourceThread::Kind::kWeb, error))
        return nullptr;
    ElementPtr head = MakeUriHead(url);
    g_signal_connect(head.get(), "source-setup", G_CALLBACK(ConfigureWebSource), nullptr);
    std::unique_ptr<MediaSource> source(new MediaSource(std::move(head), {6000, kWebReserve, false},
                                                        SourceThread::Kind::kWeb, "", std::move(owner)));
    source->Start({}, false);
    return source;
}

std::unique_ptr<MediaSource> MediaSource::OpenInput(const std::string& description, Owner owner,
                                                    std::string& error) {
    if (!HasRoom(SourceThread::Kind::kInput, error))
        return nullptr;
    ElementPtr head;
    if (gst_uri_is_valid(description.c_str())) {
        head = MakeUriHead(description);
    } else {
        GError* failure = nullptr;
        GstElement* made = gst_parse_bin_from_description(description.c_str(), TRUE, &failure);
        const GErrorPtr reason(failure);
        if (made == nullptr) {
            error = failure != nullptr ? failure->message : "unusable input";
            return nullptr;
        }
        head.reset(GST_ELEMENT(gst_object_ref_sink(made)));
    }
    std::unique_ptr<MediaSource> source(new MediaSource(std::move(head), {200, kInputReserve, true},
                                                        SourceThread::Kind::kInput, description,
                                                        std::move(owner)));
    source->Start({}, true);
    return source;
}

MediaSource::MediaSource(ElementPtr head, const Reserve& reserve, SourceThread::Kind kind, std::string device,
                         Owner owner)
    : m_outlet(std::make_shared<Outlet>()),
      m_pipeline(MakePipeline()),
      m_head(head.get()),
      m_thread(owner.executor, owner.toEnd, kind, std::move(device)) {
    GuardPlaylists();
    m_outlet->notify = std::move(owner.notify);
    const MediaNotify notify = [outlet = m_outlet](MediaEvent event) { outlet->Notify(std::move(event)); };
    const ElementPtr converter = MakeElement("audioconvert");
    const ElementPtr resampler = MakeElement("audioresample");
    const ElementPtr queue = MakeElement("queue");
    const ElementPtr sink = MakeElement("appsink");
    const BusPtr bus(gst_element_get_bus(m_pipeline.get()));
    // The bus owns it, so a message posted during the teardown still meets a valid one.
    gst_bus_set_sync_handler(bus.get(), OnMessage, new Listener{notify, queue.get()}, DeleteListener);
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
    m_feed = std::make_shared<PcmFeed>(GST_APP_SINK(sink.get()), reserve.feed, notify);
}

void MediaSource::ConnectHead(GstElement* head, GstElement* converter) {
    if (const PadPtr pad(gst_element_get_static_pad(head, "src")); pad) {
        gst_element_link(head, converter);
        return;
    }
    g_signal_connect(head, "pad-added", G_CALLBACK(LinkFirstAudioPad), converter);
}

void MediaSource::Start(Look look, bool trusted) {
    m_thread.Do([pipeline = m_pipeline, feed = m_feed, outlet = m_outlet, look = std::move(look), trusted] {
        std::string error = look ? look() : "";
        // Nobody wants it any more: the disk hung, or the device was another's for so long.
        if (outlet->IsClosed())
            return;
        std::optional<TrustedAddress> trust;
        if (trusted)
            trust.emplace();
        if (error.empty() && !StartPlaying(pipeline.get()))
            error = "cannot be opened";
        if (error.empty())
            feed->Open();
        else
            outlet->Notify({MediaEvent::Kind::kFailed, std::move(error)});
    });
}

MediaSource::~MediaSource() {
    m_outlet->Close();
    m_thread.Do([pipeline = std::move(m_pipeline)] {
        gst_element_set_state(pipeline.get(), GST_STATE_NULL);
        const BusPtr bus(gst_element_get_bus(pipeline.get()));
        gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
    });
}

void MediaSource::StartAt(std::uint32_t milliseconds) {
    m_thread.Do([pipeline = m_pipeline, outlet = m_outlet, milliseconds] {
        gst_element_seek_simple(pipeline.get(), GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH,
                                static_cast<gint64>(milliseconds * GST_MSECOND));
        outlet->Notify({MediaEvent::Kind::kMoved, {}});
    });
}

void MediaSource::SetEndNotify(SourceThread::EndNotify notify) {
    m_thread.SetEndNotify(std::move(notify));
}

void MediaSource::FindLength() {
    m_thread.Do([pipeline = m_pipeline, head = m_head, outlet = m_outlet] {
        outlet->Notify({LengthOf(pipeline.get(), head), {}});
    });
}

} // namespace korvel::audioserver
