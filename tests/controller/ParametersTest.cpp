#include <gtest/gtest.h>

#include "actions/Parameters.h"
#include "base/Refused.h"
#include "common/Text.h"

namespace korvel::controller {
namespace {

// Why the command is refused; "" when it is not.
std::string WhyRefused(const std::string& command, const std::string& parameter, const std::string& value) {
    const auto message = kv::CreateCmdMessage(command);
    message->AddParam("ROOM_ID", "INT", "1");
    message->AddParam(parameter, "STRING", value);
    try {
        CheckParameters(*message);
        return "";
    } catch (const Refused& refused) {
        EXPECT_EQ(refused.GetWhy(), Refused::Why::Invalid);
        return refused.what();
    }
}

std::string ListOf(const std::string& id) {
    return "<MEDIA>\n <MEDIA_ID>5</MEDIA_ID>\n <SONG SOURCE=\"2\" ID=\"" + id + "\"/>\n</MEDIA>\n";
}

const std::string kLongest(common::kMaxReferenceBytes, 'x');
const std::string kTooLong = " is longer than 2000 bytes";
const std::string kNotQuotable = " holds a quote or a control character, which no reference to media does";

TEST(Parameters, WhatNamesMediaMayStandInAQuotedWordOfALine) {
    for (const std::string& good :
         {std::string("1050"), std::string("Größe a=b/c"), std::string(), kLongest}) {
        EXPECT_EQ(WhyRefused("ADD_SONG", "MEDIA_ID", good), "");
        EXPECT_EQ(WhyRefused("ADD_IR_STREAM", "MEDIA", good), "");
        EXPECT_EQ(WhyRefused("ADD_SONG_LIST", "MEDIA", ListOf(good)), "");
        EXPECT_EQ(WhyRefused("EDIT_QUEUE", "MEDIA", ListOf(good)), "");
    }
    for (const char* bad : {"a\nb", "\r", "a\tb", "a\"", "\x7F"}) {
        EXPECT_EQ(WhyRefused("ADD_SONG", "MEDIA_ID", bad), "MEDIA_ID" + kNotQuotable);
        EXPECT_EQ(WhyRefused("ADD_IR_STREAM", "MEDIA", bad), "MEDIA" + kNotQuotable);
    }
    for (const char* bad : {"a&#10;b", "a&#xD;", "&quot;", "&#127;"})
        EXPECT_EQ(WhyRefused("ADD_SONG_LIST", "MEDIA", ListOf(bad)), "an ID in MEDIA" + kNotQuotable) << bad;
    EXPECT_EQ(WhyRefused("ADD_SONG", "MEDIA_ID", kLongest + "x"), "MEDIA_ID" + kTooLong);
    EXPECT_EQ(WhyRefused("ADD_IR_STREAM", "MEDIA", kLongest + "x"), "MEDIA" + kTooLong);
    EXPECT_EQ(WhyRefused("EDIT_QUEUE", "MEDIA", ListOf(kLongest + "x")), "an ID in MEDIA" + kTooLong);
}

TEST(Parameters, AListThatIsNoneNamesNothing) {
    EXPECT_EQ(WhyRefused("ADD_SONG_LIST", "MEDIA", "\n<MEDIA ID=\"\n"), "");
}

TEST(Parameters, AListHasItsLength) {
    EXPECT_EQ(WhyRefused("EDIT_QUEUE", "MEDIA", std::string(kMaxListBytes, ' ')), "");
    EXPECT_EQ(WhyRefused("EDIT_QUEUE", "MEDIA", std::string(kMaxListBytes + 1, ' ')),
              "MEDIA is longer than 1048576 bytes");
}

TEST(Parameters, EveryOtherTextIsOneLineAndHasItsLength) {
    EXPECT_EQ(WhyRefused("SAVE_PLAYLIST", "NAME", "\"Evening\" & more"), "");
    EXPECT_EQ(WhyRefused("SAVE_PLAYLIST", "NAME", std::string(kMaxTextBytes, 'x')), "");
    EXPECT_EQ(WhyRefused("SAVE_PLAYLIST", "NAME", "a\nb"), "NAME holds a control character");
    EXPECT_EQ(WhyRefused("SAVE_PLAYLIST", "NAME", std::string(kMaxTextBytes + 1, 'x')),
              "NAME is longer than 65536 bytes");
}

} // namespace
} // namespace korvel::controller
