// What the elements of a room are told.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

#include "Wait.h"
#include "roomplayer/Elements.h"
#include "roomplayer/Pipeline.h"
#include "roomplayer/SoundDevice.h"

namespace korvel::roomplayer {
namespace {

std::uint64_t Setting(GstElement* element, const char* name) {
    GValue value = G_VALUE_INIT;
    GValue number = G_VALUE_INIT;
    g_value_init(&number, G_TYPE_UINT64);
    g_object_get_property(G_OBJECT(element), name, &value);
    EXPECT_TRUE(g_value_transform(&value, &number)) << name;
    g_value_unset(&value);
    return g_value_get_uint64(&number);
}

// A room without a device. Remembers the elements of its pipeline by what they are.
class PipelineTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        gst_init(nullptr, nullptr);
        g_type_class_ref(GST_TYPE_BIN);
    }
    void SetUp() override {
        m_hook = g_signal_add_emission_hook(AddedSignal(), 0, OnAdded, this, nullptr);
        m_options.useDevice = false;
    }
    void TearDown() override { g_signal_remove_emission_hook(AddedSignal(), m_hook); }

    void Play(unsigned latency) {
        m_pipeline.reset();
        m_elements.clear();
        m_options.latencyMilliseconds = latency;
        m_ports = BindUdpPorts(m_options.address, 0);
        m_pipeline = std::make_unique<Pipeline>(m_options, m_ports, m_gate, nullptr,
                                                [](const std::string& reason) { ADD_FAILURE() << reason; });
    }
    GstElement* Find(const std::string& factory) const { return m_elements.at(factory); }
    // From receiving to playing, as the mixer tells the device.
    std::uint64_t Milliseconds() const {
        GstElement* mixer = Find("audiomixer");
        gst_element_get_state(GST_ELEMENT(GST_OBJECT_PARENT(mixer)), nullptr, nullptr, GST_CLOCK_TIME_NONE);
        const PadPtr pad(gst_element_get_static_pad(mixer, "src"));
        GstQuery* query = gst_query_new_latency();
        EXPECT_TRUE(gst_pad_query(pad.get(), query));
        GstClockTime latency = 0;
        gst_query_parse_latency(query, nullptr, &latency, nullptr);
        gst_query_unref(query);
        return latency / GST_MSECOND;
    }

private:
    static guint AddedSignal() { return g_signal_lookup("element-added", GST_TYPE_BIN); }
    static gboolean OnAdded(GSignalInvocationHint*, guint, const GValue* values, gpointer self) {
        auto* element = GST_ELEMENT(g_value_get_object(values + 1));
        static_cast<PipelineTest*>(self)->m_elements.emplace(
            GST_OBJECT_NAME(gst_element_get_factory(element)), element);
        return TRUE;
    }

    Options m_options;
    UdpPorts m_ports;
    PacketGate m_gate{{}};
    gulong m_hook = 0;
    std::map<std::string, GstElement*> m_elements; // the first of each kind
    std::unique_ptr<Pipeline> m_pipeline;
};

TEST_F(PipelineTest, ASoundIsPlayedTheLatencyAfterItWasReceived) {
    for (const unsigned latency : {kMinLatencyMilliseconds, 200U, 1000U}) {
        Play(latency);
        // The silence knows its own once it has begun.
        EXPECT_TRUE(tests::WaitUntil([&] { return Milliseconds() == latency; })) << Milliseconds();
    }
}

TEST_F(PipelineTest, HalfOfTheLatencyIsForPacketsAndHalfForThreadsThatAreLate) {
    Play(200);
    constexpr std::uint64_t kHalf = 90; // without the two blocks
    EXPECT_EQ(Setting(Find("rtpbin"), "latency"), kHalf);
    EXPECT_EQ(Setting(Find("audiomixer"), "latency"), kHalf * 1000000);
    // The mixer does not run ahead of a sender that is new.
    EXPECT_EQ(Setting(Find("queue"), "min-threshold-time"), kHalf * 1000000);
}

TEST_F(PipelineTest, ADeviceFollowsTheClockInSmallSteps) {
    const ElementPtr bin(GST_ELEMENT(gst_object_ref_sink(gst_bin_new(nullptr))));
    FollowClock(bin.get());
    GstElement* sink = AddElement(bin.get(), "osssink");
    EXPECT_EQ(Setting(sink, "provide-clock"), 0U);
    EXPECT_EQ(Setting(sink, "drift-tolerance"), 200U);
    // What has no such settings is taken as it is.
    AddElement(bin.get(), "fakesink");
}

} // namespace
} // namespace korvel::roomplayer
