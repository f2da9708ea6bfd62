#include <gtest/gtest.h>

#include <string>

#include "platform/Text.h"

namespace {

using namespace std::string_view_literals;

struct Number {
    std::string_view text;
    std::int32_t value;
};

class ReadsNumbers : public testing::TestWithParam<Number> {};

TEST_P(ReadsNumbers, AsA32BitMachineDoes) {
    EXPECT_EQ(kv::ToLong(GetParam().text), GetParam().value);
    EXPECT_EQ(kv::ToULong(GetParam().text), static_cast<std::uint32_t>(GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(Plain, ReadsNumbers,
                         testing::Values(Number{"0", 0}, Number{"7", 7}, Number{"10000", 10000},
                                         Number{"-1", -1}, Number{"+5", 5}, Number{"007", 7},
                                         Number{"2147483647", 2147483647},
                                         Number{"-2147483648", -2147483647 - 1}));

INSTANTIATE_TEST_SUITE_P(Saturating, ReadsNumbers,
                         testing::Values(Number{"2147483648", 2147483647}, Number{"4294967295", 2147483647},
                                         Number{"4294967303", 2147483647},
                                         Number{"18446744073709551617", 2147483647},
                                         Number{"-2147483649", -2147483647 - 1},
                                         Number{"-99999999999999999999", -2147483647 - 1}));

INSTANTIATE_TEST_SUITE_P(UpToTheFirstOtherCharacter, ReadsNumbers,
                         testing::Values(Number{"12abc", 12}, Number{"12 34", 12}, Number{"1.9", 1},
                                         Number{"0x10", 0}, Number{"1e3", 1},
                                         Number{"3\0"
                                                "4"sv,
                                                3}));

INSTANTIATE_TEST_SUITE_P(WithoutDigits, ReadsNumbers,
                         testing::Values(Number{"", 0}, Number{"   ", 0}, Number{"+", 0}, Number{"-", 0},
                                         Number{"abc", 0}, Number{"+-1", 0}, Number{"- 1", 0},
                                         Number{"\0"
                                                "5"sv,
                                                0},
                                         Number{"\xC2\xA0"
                                                "5",
                                                0}));

INSTANTIATE_TEST_SUITE_P(AfterWhiteSpace, ReadsNumbers,
                         testing::Values(Number{" 12", 12}, Number{"\t\n\v\f\r 12", 12},
                                         Number{"  -12  ", -12}, Number{"\n+3", 3}));

TEST(ToULong, ReadsIdsAsUnsigned) {
    EXPECT_EQ(kv::ToULong("-1"), 4294967295u);
    EXPECT_EQ(kv::ToULong("-2147483649"), 2147483648u);
    EXPECT_EQ(kv::ToULong("4294967303"), 2147483647u);
}

TEST(ToLong, TakesDigitStringsOfAnyLength) {
    const std::string nines(1 << 20, '9');
    EXPECT_EQ(kv::ToLong(nines), 2147483647);
    EXPECT_EQ(kv::ToLong("-" + nines), -2147483647 - 1);
    EXPECT_EQ(kv::ToLong(std::string(1 << 20, '0') + "8"), 8);
}

TEST(ToLong, StaysWithinTheGivenText) {
    EXPECT_EQ(kv::ToLong("12345"sv.substr(0, 3)), 123);
    EXPECT_EQ(kv::ToLong("-5"sv.substr(0, 1)), 0);
}

TEST(Booleans, AreWrittenAsTheWordsTheyAreComparedWith) {
    EXPECT_EQ(kv::ToString(true), "true");
    EXPECT_EQ(kv::ToString(false), "false");
    EXPECT_EQ(kv::ToString(true), kv::TRUE_STRING);
    EXPECT_EQ(kv::ToString(false), kv::FALSE_STRING);
}

TEST(Base64, PadsToGroupsOfFour) {
    EXPECT_EQ(kv::base64EncodeString(""), "");
    EXPECT_EQ(kv::base64EncodeString("f"), "Zg==");
    EXPECT_EQ(kv::base64EncodeString("fo"), "Zm8=");
    EXPECT_EQ(kv::base64EncodeString("foo"), "Zm9v");
    EXPECT_EQ(kv::base64EncodeString("foob"), "Zm9vYg==");
    EXPECT_EQ(kv::base64EncodeString("fooba"), "Zm9vYmE=");
    EXPECT_EQ(kv::base64EncodeString("foobar"), "Zm9vYmFy");
}

TEST(Base64, TakesEveryByte) {
    EXPECT_EQ(kv::base64EncodeString("\0\0\0"sv), "AAAA");
    EXPECT_EQ(kv::base64EncodeString("\xff\xff\xff"), "////");
    EXPECT_EQ(kv::base64EncodeString("\xfb\xef\xbe"), "++++");
    EXPECT_EQ(kv::base64EncodeString("\xff"), "/w==");
    EXPECT_EQ(kv::base64EncodeString("/media/Gr\xc3\xbc\xc3\x9f"
                                     "e.flac"),
              "L21lZGlhL0dyw7zDn2UuZmxhYw==");
}

} // namespace
