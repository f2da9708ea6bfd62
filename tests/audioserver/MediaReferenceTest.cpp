#include <gtest/gtest.h>

#include <ostream>

#include "audioserver/MediaReference.h"

namespace korvel::audioserver {
namespace {

using Kind = MediaReference::Kind;

void Expect(std::string_view text, Kind kind, std::string_view target) {
    const MediaReference reference = ParseMediaReference(text);
    EXPECT_EQ(static_cast<int>(reference.kind), static_cast<int>(kind)) << text;
    EXPECT_EQ(reference.target, target) << text;
}

TEST(MediaReference, ReadsFiles) {
    Expect("\"file://home/a b.flac\"", Kind::kFile, "/home/a b.flac");
    Expect("\"file:///home/a.flac\"", Kind::kFile, "//home/a.flac");
    Expect("\"file://a/say \"no\".mp3\"", Kind::kFile, "/a/say \"no\".mp3");
    Expect("\"file://a/100%20.mp3\"", Kind::kFile, "/a/100%20.mp3");
    Expect("\"file://a.mp3\" trailing", Kind::kFile, "/a.mp3");
}

TEST(MediaReference, ReadsInternetStreams) {
    Expect("\"file:/stream-http://h/x?a=1\"", Kind::kWeb, "http://h/x?a=1");
    Expect("\"file:/stream-https://h/x\"", Kind::kWeb, "https://h/x");
}

TEST(MediaReference, ReadsInputNames) {
    Expect("line-in", Kind::kInput, "line-in");
    Expect("CD \"player\"", Kind::kInput, "CD \"player\"");
}

TEST(MediaReference, ReadsIdsOfTheCatalogue) {
    Expect("\"rhap://3:Tra.1\"", Kind::kCatalogue, "Tra.1");
    Expect("\"rhap://3:channel-a:b\"", Kind::kCatalogue, "channel-a:b");
    const std::string longest(200, 'a');
    Expect("\"rhap://3:" + longest + "\"", Kind::kCatalogue, longest);
}

TEST(MediaReference, SaysWhatIsWrong) {
    Expect("", Kind::kBad, "empty reference");
    Expect("\"", Kind::kBad, "unterminated reference");
    Expect("\"file:/home/a.flac\"", Kind::kBad, "path is not absolute");
    Expect("\"file:/\"", Kind::kBad, "path is not absolute");
    Expect("\"file:/stream-\"", Kind::kBad, "not an http address");
    Expect("\"file:/stream-http://\"", Kind::kBad, "not an http address");
    Expect("\"file:/stream-http://h/a b\"", Kind::kBad, "not an http address");
    Expect("\"file:/stream-file:///etc/passwd\"", Kind::kBad, "not an http address");
    Expect("\"rhap://Tra.1\"", Kind::kBad, "not a reference to the catalogue");
    Expect("\"rhap://x:Tra.1\"", Kind::kBad, "not a reference to the catalogue");
    Expect("\"rhap://3:\"", Kind::kBad, "not an id of the catalogue");
    Expect("\"rhap://3:" + std::string(201, 'a') + "\"", Kind::kBad, "not an id of the catalogue");
    Expect("\"\"", Kind::kBad, "unknown kind of reference");
    Expect("\"http://h/x\"", Kind::kBad, "unknown kind of reference");
}

} // namespace
} // namespace korvel::audioserver
