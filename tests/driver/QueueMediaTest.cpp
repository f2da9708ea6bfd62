// One item of a list.
#include "QueueFixture.h"

namespace {

TEST(QueueMedia, EmptyItemHasTypeNoneAndNoIds) {
    const AudioMedia media;
    EXPECT_EQ(media.type, 0);
    EXPECT_EQ(media.externalId, "");
    EXPECT_EQ(media.mediaId, 0u);
    EXPECT_EQ(media.metaData, "");
    EXPECT_EQ(media.extra, 0u);
}

TEST(QueueMedia, DigitalItemHasItsMediaIdAlone) {
    const AudioMedia media = AudioMedia::CreateTypeDigital(1050);
    EXPECT_EQ(media.type, 1);
    EXPECT_EQ(media.mediaId, 1050u);
    EXPECT_EQ(media.externalId, "");
    EXPECT_EQ(media.metaData, "");
    EXPECT_EQ(media.extra, 0u);
}

TEST(QueueMedia, EqualityLeavesOutTheMetadataOnly) {
    AudioMedia media = Song(1);
    media.externalId = "e";
    media.extra = 9;
    AudioMedia other = media;
    other.metaData = "playing now";
    EXPECT_EQ(media, other);
    other = media;
    other.type = MEDIA_INTERNET_RADIO;
    EXPECT_FALSE(media == other);
    other = media;
    other.mediaId = 2;
    EXPECT_FALSE(media == other);
    other = media;
    other.extra = 8;
    EXPECT_FALSE(media == other);
    other = media;
    other.externalId = "ee";
    EXPECT_FALSE(media == other);
    other.externalId = "f";
    EXPECT_FALSE(media == other);
    other.externalId = "E";
    EXPECT_FALSE(media == other);
}

} // namespace
