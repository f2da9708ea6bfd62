// Owning pointers for GStreamer and GLib objects.
#pragma once

#include <gst/gst.h>

#include <memory>

namespace korvel::audioserver {

struct GObjectUnref {
    void operator()(gpointer object) const { gst_object_unref(object); }
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

// Holds one reference; made from a pointer that carries one.
using ElementPtr = std::unique_ptr<GstElement, GObjectUnref>;
using PadPtr = std::unique_ptr<GstPad, GObjectUnref>;
using BusPtr = std::unique_ptr<GstBus, GObjectUnref>;
using ClockPtr = std::unique_ptr<GstClock, GObjectUnref>;
using CapsPtr = std::unique_ptr<GstCaps, MiniObjectUnref>;
using SamplePtr = std::unique_ptr<GstSample, MiniObjectUnref>;
using BufferPtr = std::unique_ptr<GstBuffer, MiniObjectUnref>;
using TagListPtr = std::unique_ptr<GstTagList, MiniObjectUnref>;
using GStringPtr = std::unique_ptr<char, GFree>;
using GErrorPtr = std::unique_ptr<GError, GErrorFree>;

} // namespace korvel::audioserver
