#include <gtest/gtest.h>

#include <string>

#include "audioserver/GstPointers.h"
#include "audioserver/PlaylistGuard.h"

namespace korvel::audioserver {
namespace {

// The name of the factory whose element opens the address; "" when none does.
std::string OpenerOf(const char* address) {
    GstElement* made = gst_element_make_from_uri(GST_URI_SRC, address, nullptr, nullptr);
    if (made == nullptr)
        return "";
    const ElementPtr element(GST_ELEMENT(gst_object_ref_sink(made)));
    return GST_OBJECT_NAME(gst_element_get_factory(element.get()));
}

class PlaylistGuardTest : public testing::Test {
protected:
    void SetUp() override {
        gst_init(nullptr, nullptr);
        GuardPlaylists();
    }
};

TEST_F(PlaylistGuardTest, OnlyWebAddressesAreOpened) {
    EXPECT_EQ(OpenerOf("http://radio.example/a"), "souphttpsrc");
    EXPECT_EQ(OpenerOf("https://radio.example/a"), "souphttpsrc");
    for (const char* address : {"file:///dev/ptmx", "FILE:///dev/ptmx", "rtsp://x/", "udp://0.0.0.0:5004",
                                "data:audio/wav;base64,UklGRg==", "appsrc://"})
        EXPECT_EQ(OpenerOf(address), "korvelrefusedsrc") << address;
    EXPECT_EQ(OpenerOf("nonsense://x"), "");
}

TEST_F(PlaylistGuardTest, WhatIsTrustedIsOpenedAsEver) {
    {
        const TrustedAddress trusted;
        EXPECT_EQ(OpenerOf("file:///dev/null"), "filesrc");
    }
    EXPECT_EQ(OpenerOf("file:///dev/null"), "korvelrefusedsrc");
}

TEST_F(PlaylistGuardTest, WhatIsRefusedDoesNotStart) {
    const ElementPtr element(GST_ELEMENT(
        gst_object_ref_sink(gst_element_make_from_uri(GST_URI_SRC, "file:///dev/null", nullptr, nullptr))));
    EXPECT_EQ(gst_element_set_state(element.get(), GST_STATE_PAUSED), GST_STATE_CHANGE_FAILURE);
    gst_element_set_state(element.get(), GST_STATE_NULL);
    const GStringPtr address(gst_uri_handler_get_uri(GST_URI_HANDLER(element.get())));
    EXPECT_STREQ(address.get(), "file:///dev/null");
}

} // namespace
} // namespace korvel::audioserver
