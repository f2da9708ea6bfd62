// The room player with something in its way: korvel-hindered-roomplayer HINDRANCE OPTION...
//
//   clock     the machine is busy just when the clock has been given out, so that the start takes long
//   silence   the first silence comes half a second late
//   stall     after half a second the first pipeline lets no sound through
//   stalls    no pipeline lets any sound through
//   hang      as stall, in a thread that does not come back
#include <gst/gst.h>
#include <poll.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "common/Program.h"
#include "roomplayer/Options.h"
#include "roomplayer/Player.h"

namespace {

using namespace korvel::roomplayer;

constexpr int kShort = 300;
constexpr int kLong = 500;
constexpr int kBlocksToStall = 50;

void Hold(int milliseconds) {
    ::poll(nullptr, 0, milliseconds);
}

std::string g_hindrance;

// The sinks are the first that start to play, the mixer comes after them.
void OnStateChanged(GstBus*, GstMessage* message, gpointer mixer) {
    GstState state = GST_STATE_NULL;
    gst_message_parse_state_changed(message, nullptr, &state, nullptr);
    if (state == GST_STATE_PLAYING && GST_STATE(mixer) == GST_STATE_PAUSED)
        Hold(kShort);
}

void HinderClock(GstElement* pipeline, GstElement* mixer) {
    GstBus* bus = gst_element_get_bus(pipeline);
    gst_bus_enable_sync_message_emission(bus);
    g_signal_connect(bus, "sync-message::state-changed", G_CALLBACK(OnStateChanged), mixer);
    gst_object_unref(bus);
}

void AddProbe(GstElement* element, GstPadProbeCallback callback) {
    GstPad* pad = gst_element_get_static_pad(element, "src");
    const auto type = static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BLOCK | GST_PAD_PROBE_TYPE_BUFFER);
    gst_pad_add_probe(pad, type, callback, nullptr, nullptr);
    gst_object_unref(pad);
}

GstPadProbeReturn HoldFirst(GstPad*, GstPadProbeInfo*, gpointer) {
    Hold(kLong);
    return GST_PAD_PROBE_REMOVE;
}

// Blocks for as long as the probe is there, which is until the pipeline stops.
GstPadProbeReturn Block(GstPad*, GstPadProbeInfo*, gpointer) {
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn BlockLater(GstPad*, GstPadProbeInfo*, gpointer) {
    static int blocks = 0;
    return ++blocks < kBlocksToStall ? GST_PAD_PROBE_PASS : GST_PAD_PROBE_OK;
}

GstPadProbeReturn HangLater(GstPad*, GstPadProbeInfo*, gpointer) {
    static int blocks = 0;
    if (++blocks >= kBlocksToStall)
        Hold(-1);
    return GST_PAD_PROBE_PASS;
}

// Hears of every element that is added to a pipeline, in the thread that adds it.
gboolean OnAdded(GSignalInvocationHint*, guint, const GValue* values, gpointer) {
    static int mixers = 0;
    auto* bin = GST_ELEMENT(g_value_get_object(values));
    auto* element = GST_ELEMENT(g_value_get_object(values + 1));
    const std::string_view kind = GST_OBJECT_NAME(gst_element_get_factory(element));
    if (kind == "audiotestsrc" && g_hindrance == "silence")
        AddProbe(element, HoldFirst);
    if (kind != "audiomixer")
        return TRUE;
    const bool first = ++mixers == 1;
    if (g_hindrance == "clock")
        HinderClock(bin, element);
    else if (g_hindrance == "stalls")
        AddProbe(element, Block);
    else if (g_hindrance == "stall" && first)
        AddProbe(element, BlockLater);
    else if (g_hindrance == "hang" && first)
        AddProbe(element, HangLater);
    return TRUE;
}

int Run(const Options& options) {
    gst_init(nullptr, nullptr);
    g_type_class_ref(GST_TYPE_BIN);
    g_signal_add_emission_hook(g_signal_lookup("element-added", GST_TYPE_BIN), 0, OnAdded, nullptr, nullptr);
    Player player(options, [](std::string_view event) { std::cout << event << std::endl; });
    std::cout << "listening on " << options.address << ":" << player.Port() << std::endl;
    return player.Run() ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv) {
    g_hindrance = argv[1];
    Options options;
    CLI::App app("A player that is hindered.", "korvel-hindered-roomplayer");
    AddOptions(app, options);
    return korvel::common::RunProgram(app, argc - 1, argv + 1, [&options] { return Run(options); });
}
