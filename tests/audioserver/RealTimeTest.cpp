#include <gtest/gtest.h>
#include <sched.h>

#include <map>
#include <string>
#include <thread>

#include "common/RealTime.h"
#include "roomplayer/Elements.h"
#include "roomplayer/RealTime.h"

namespace korvel::roomplayer {
namespace {

int PolicyHere() {
    return ::sched_getscheduler(0);
}

// What a thread gets that asks for it; the system may refuse.
int PolicyOfSound() {
    int policy = 0;
    std::jthread([&policy] {
        common::MakeThreadRealTime();
        policy = PolicyHere();
    }).join();
    return policy;
}

// Plays a little silence through a source's thread and a queue's.
class RealTime : public testing::Test {
protected:
    static void SetUpTestSuite() { gst_init(nullptr, nullptr); }

    struct Policies {
        int source = -1;
        int queue = -1;
    };

    static Policies Play(bool prepare, bool ordinaryQueue) {
        const ElementPtr pipeline(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr))));
        GstElement* source = AddElement(pipeline.get(), "audiotestsrc");
        GstElement* queue = AddElement(pipeline.get(), "queue");
        GstElement* sink = AddElement(pipeline.get(), "fakesink");
        g_object_set(source, "num-buffers", 3, nullptr);
        gst_element_link_many(source, queue, sink, nullptr);
        Policies policies;
        Note(source, policies.source);
        Note(queue, policies.queue);
        if (prepare)
            MakeRealTime(pipeline.get(), ordinaryQueue ? queue : nullptr);
        gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
        const BusPtr bus(gst_element_get_bus(pipeline.get()));
        gst_message_unref(gst_bus_timed_pop_filtered(bus.get(), GST_CLOCK_TIME_NONE, GST_MESSAGE_EOS));
        gst_element_set_state(pipeline.get(), GST_STATE_NULL);
        return policies;
    }

private:
    static void Note(GstElement* element, int& policy) {
        const PadPtr pad(gst_element_get_static_pad(element, "src"));
        gst_pad_add_probe(
            pad.get(), GST_PAD_PROBE_TYPE_BUFFER,
            [](GstPad*, GstPadProbeInfo*, gpointer place) {
                *static_cast<int*>(place) = PolicyHere();
                return GST_PAD_PROBE_OK;
            },
            &policy, nullptr);
    }
};

TEST_F(RealTime, AllThreadsOfTheSoundComeBeforeOrdinaryWork) {
    const Policies policies = Play(true, false);
    EXPECT_EQ(policies.source, PolicyOfSound());
    EXPECT_EQ(policies.queue, PolicyOfSound());
}

TEST_F(RealTime, TheElementThatWritesAFileDoesNot) {
    const Policies policies = Play(true, true);
    EXPECT_EQ(policies.source, PolicyOfSound());
    EXPECT_EQ(policies.queue, SCHED_OTHER);
}

// Threads are taken from a pool, and go back there.
TEST_F(RealTime, WhoeverUsesTheThreadsNextDoesNot) {
    for (int times = 0; times < 5; ++times) {
        Play(true, false);
        const Policies policies = Play(false, false);
        EXPECT_EQ(policies.source, SCHED_OTHER);
        EXPECT_EQ(policies.queue, SCHED_OTHER);
    }
}

} // namespace
} // namespace korvel::roomplayer
