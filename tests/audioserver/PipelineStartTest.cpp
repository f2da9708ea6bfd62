#include <gtest/gtest.h>

#include <vector>

#include "audioserver/GstPointers.h"
#include "audioserver/PipelineStart.h"

namespace korvel::audioserver {
namespace {

// What a mixer takes for the time of the start whenever an element begins to play.
struct Witness {
    ElementPtr mixer;
    std::vector<GstClockTime> starts;
};

GstBusSyncReply OnMessage(GstBus*, GstMessage* message, gpointer data) {
    auto* witness = static_cast<Witness*>(data);
    GstState state = GST_STATE_NULL;
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_STATE_CHANGED)
        gst_message_parse_state_changed(message, nullptr, &state, nullptr);
    if (state == GST_STATE_PLAYING)
        witness->starts.push_back(gst_element_get_base_time(witness->mixer.get()));
    gst_message_unref(message);
    return GST_BUS_DROP;
}

// A mixer that wakes up before it knows takes itself to be late by the machine's whole uptime, and may end.
TEST(PipelineStart, AMixerKnowsTheTimeOfTheStartBeforeAnythingPlays) {
    gst_init(nullptr, nullptr);
    const ElementPtr pipeline(gst_parse_launch(
        "audiotestsrc is-live=true ! audiomixer name=mixer ! fakesink async=false", nullptr));
    ASSERT_NE(pipeline, nullptr);
    Witness witness;
    witness.mixer.reset(gst_bin_get_by_name(GST_BIN(pipeline.get()), "mixer"));
    const BusPtr bus(gst_element_get_bus(pipeline.get()));
    gst_bus_set_sync_handler(bus.get(), OnMessage, &witness, nullptr);

    ASSERT_TRUE(StartPlaying(pipeline.get()));
    GstState state = GST_STATE_NULL;
    gst_element_get_state(pipeline.get(), &state, nullptr, GST_CLOCK_TIME_NONE);
    ASSERT_EQ(state, GST_STATE_PLAYING);
    const GstClockTime start = gst_element_get_base_time(pipeline.get());
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);

    EXPECT_GT(start, 0u);
    ASSERT_FALSE(witness.starts.empty());
    EXPECT_EQ(witness.starts, std::vector<GstClockTime>(witness.starts.size(), start));
}

} // namespace
} // namespace korvel::audioserver
