// The list's kept text is that of its items, whatever was done to them.
#include <gtest/gtest.h>

#include <random>
#include <utility>

#include "queue/MediaList.h"

namespace {

AudioMedia Item(std::int32_t type, std::uint32_t id) {
    AudioMedia item;
    item.type = type;
    if (type == MEDIA_DIGITAL)
        item.mediaId = id;
    else
        item.externalId = "Tra." + std::to_string(id);
    return item;
}

std::string TextOf(const std::vector<AudioMedia>& items, bool internetRadio) {
    MediaList fresh;
    fresh.Replace(items);
    return fresh.GetText(internetRadio);
}

TEST(MediaList, PrintsEveryKindOfItem) {
    MediaList list;
    for (std::int32_t type = -1; type <= 6; ++type)
        list.Add(Item(type, 7));
    list.Add(Item(MEDIA_DIGITAL, 4294967295u));
    EXPECT_EQ(list.GetText(false),
              "<song source=\"-1\"></song><song source=\"0\"></song><song id=\"7\" source=\"1\"></song>"
              "<song id=\"Tra.7\" source=\"2\"></song><song id=\"\" station_id=\"Tra.7\" source=\"3\"></song>"
              "<song source=\"4\"></song><song source=\"5\"></song><song source=\"6\"></song>"
              "<song id=\"4294967295\" source=\"1\"></song>");
    EXPECT_EQ(list.CountUnlisted(), 3u);
}

TEST(MediaList, TellsChangesByItsRevision) {
    MediaList list;
    std::uint32_t last = list.GetRevision();
    const auto changed = [&] { return std::exchange(last, list.GetRevision()) != last; };
    list.Add(Item(MEDIA_DIGITAL, 1));
    EXPECT_TRUE(changed());
    list.SetMetaData("Ann");
    EXPECT_TRUE(changed());
    list.Remove(Item(MEDIA_DIGITAL, 1));
    EXPECT_TRUE(changed());
    list.Replace({Item(MEDIA_DIGITAL, 2)});
    EXPECT_TRUE(changed());
    list.GetText(true);
    EXPECT_FALSE(changed());
}

TEST(MediaList, TakesItsOwnItems) {
    MediaList list;
    list.Add(Item(MEDIA_RHAPSODY_TRACK, 1234567890));
    for (int i = 0; i < 100; ++i) // at its capacity now and then
        list.Add(list->front());
    EXPECT_EQ(list->size(), 101u);
    EXPECT_EQ(list->back(), Item(MEDIA_RHAPSODY_TRACK, 1234567890));
    list.Replace(*list);
    EXPECT_EQ(list->size(), 101u);
    list.Remove(list->front());
    EXPECT_TRUE(list->empty());
    EXPECT_EQ(list.GetText(false), "");
}

TEST(MediaList, KeepsItsTextInStep) {
    std::mt19937 random(1);
    MediaList list;
    for (int i = 0; i < 5000; ++i) {
        const AudioMedia item =
            Item(static_cast<std::int32_t>(random() % 6), static_cast<std::uint32_t>(random() % 20));
        switch (random() % 12) {
            case 0:
                list.Remove(item);
                break;
            case 1:
                if (!list->empty())
                    list.Remove((*list)[random() % list->size()]);
                break;
            case 2:
                if (!list->empty())
                    list.SetMetaData(std::to_string(i));
                break;
            case 3:
                if (list->size() > 60)
                    list.Replace({item, item, Item(MEDIA_RHAPSODY_CHANNEL, 3)});
                break;
            default:
                list.Add(item);
        }
        if (random() % 3 != 0)
            continue;
        const bool internetRadio = random() % 10 == 0;
        ASSERT_EQ(list.GetText(internetRadio), TextOf(*list, internetRadio));
        MediaList fresh;
        fresh.Replace(*list);
        ASSERT_EQ(list.CountUnlisted(), fresh.CountUnlisted());
    }
}

} // namespace
