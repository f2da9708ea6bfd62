// Owning pointers for GStreamer and GLib objects.
#pragma once

#include <gio/gio.h>
#include <gst/gst.h>

#include <memory>

namespace korvel::roomplayer {

struct GstObjectUnref {
    void operator()(gpointer object) const { gst_object_unref(object); }
};
struct GObjectUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct MiniObjectUnref {
    template <typename T>
    void operator()(T* object) const {
        gst_mini_object_unref(GST_MINI_OBJECT_CAST(object));
    }
};
struct GFree {
    void operator()(gpointer memory) const { g_free(memory); }
};
struct GErrorFree {
    void operator()(GError* error) const { g_error_free(error); }
};

struct MainLoopUnref {
    void operator()(GMainLoop* loop) const { g_main_loop_unref(loop); }
};

// An event source of the main loop, removed with its owner.
class SourceId {
public:
    explicit SourceId(guint id = 0) : m_id(id) {}
    ~SourceId() { Remove(); }
    SourceId(const SourceId&) = delete;
    SourceId& operator=(const SourceId&) = delete;

    void Reset(guint id) {
        Remove();
        m_id = id;
    }

private:
    void Remove() const {
        if (m_id != 0)
            g_source_remove(m_id);
    }

    guint m_id;
};

// Holds one reference; made from a pointer that carries one.
using ElementPtr = std::unique_ptr<GstElement, GstObjectUnref>;
using PadPtr = std::unique_ptr<GstPad, GstObjectUnref>;
using ClockPtr = std::unique_ptr<GstClock, GstObjectUnref>;
using BusPtr = std::unique_ptr<GstBus, GstObjectUnref>;
using CapsPtr = std::unique_ptr<GstCaps, MiniObjectUnref>;
using SamplePtr = std::unique_ptr<GstSample, MiniObjectUnref>;
using SocketPtr = std::unique_ptr<GSocket, GObjectUnref>;
using InetAddressPtr = std::unique_ptr<GInetAddress, GObjectUnref>;
using SocketAddressPtr = std::unique_ptr<GSocketAddress, GObjectUnref>;
using MainLoopPtr = std::unique_ptr<GMainLoop, MainLoopUnref>;
using GStringPtr = std::unique_ptr<char, GFree>;
using GErrorPtr = std::unique_ptr<GError, GErrorFree>;

} // namespace korvel::roomplayer
