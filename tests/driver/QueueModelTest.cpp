// Random walks over the song list and the navigation against a naive model.
#include <optional>
#include <random>

#include "QueueFixture.h"

namespace {

constexpr int kSteps = 10000;
constexpr std::uint32_t kNoIndex = 4095;

// What a listener would expect, written down as plainly as possible. Songs are their media ids; 0 is none.
class Model {
public:
    using Ids = std::vector<std::uint32_t>;

    // The random numbers that the queue is going to draw, oldest first.
    explicit Model(std::function<std::uint32_t()> draw) : m_draw(std::move(draw)) {}

    Ids songs;
    Ids order; // the shuffled list
    bool shuffle = false;
    bool repeat = false;
    bool alwaysSkip = false;
    std::uint32_t current = kNoIndex;
    std::uint32_t pin = kNoIndex;
    std::uint32_t media = 0; // the current one; its id stays when it is emptied
    bool mediaEmpty = true;
    std::uint64_t now = 0;

    const Ids& Active() const { return shuffle ? order : songs; }

    void AddSong(std::uint32_t id, bool toFront) {
        songs.push_back(id);
        if (songs.size() == 1)
            Pin(id);
        if (shuffle && toFront)
            ShuffleTo(id);
        else if (shuffle)
            ShuffleToCurrent();
    }

    void AddSongs(const Ids& ids, bool toFront) {
        if (ids.empty())
            return;
        const std::size_t pick = Pick(ids.size());
        for (const std::uint32_t id : ids) {
            songs.push_back(id);
            if (current == kNoIndex && pin == kNoIndex)
                pin = Size() - 1;
        }
        if (shuffle && toFront)
            ShuffleTo(pick < ids.size() ? std::optional(ids[pick]) : std::nullopt);
        else if (shuffle)
            ShuffleToCurrent();
    }

    void Remove(std::uint32_t id) {
        std::erase(songs, id);
        pin = kNoIndex;
        if (shuffle)
            ShuffleToCurrent();
    }

    void Replace(const Ids& ids) {
        current = kNoIndex;
        for (std::uint32_t i = 0; i < ids.size() && current == kNoIndex; ++i) {
            if (!mediaEmpty && ids[i] == media)
                current = i;
        }
        pin = kNoIndex;
        songs = ids;
        order.clear();
        if (shuffle && !ids.empty())
            ShuffleTo(ids[std::min(Pick(ids.size()), ids.size() - 1)]);
    }

    void Clear() {
        songs.clear();
        order.clear();
        current = pin = kNoIndex;
        mediaEmpty = true;
    }

    void Pin(std::uint32_t id) {
        for (std::uint32_t i = 0; i < Active().size(); ++i) {
            if (Active()[i] == id) {
                pin = i;
                return;
            }
        }
    }

    // The song moved to, 0 for none.
    std::uint32_t Next() { return songs.empty() ? 0 : MoveTo(NextIndex()); }
    std::uint32_t Previous() { return songs.empty() ? 0 : MoveTo(PreviousIndex()); }
    std::uint32_t First() {
        if (songs.empty())
            return 0;
        m_moved = now;
        return MoveTo(0);
    }
    std::uint32_t Peek() {
        if (songs.empty())
            return 0;
        const std::uint32_t index = NextIndex();
        return index == kNoIndex ? 0 : Active().at(index);
    }

    void SetShuffle(bool on) {
        if (on && !shuffle) {
            try {
                ShuffleToCurrent();
            } catch (const std::out_of_range&) {
                // A pin past the end finds no song, and is used up.
            }
            if (current != kNoIndex && current < order.size())
                Play(order[current]);
        } else if (!on && shuffle && current < order.size()) {
            const auto place = std::find(songs.begin(), songs.end(), order[current]);
            if (place != songs.end())
                current = static_cast<std::uint32_t>(place - songs.begin());
        }
        shuffle = on;
    }

private:
    std::uint32_t Size() const { return static_cast<std::uint32_t>(songs.size()); }

    std::size_t Pick(std::size_t count) {
        return static_cast<std::size_t>(m_draw() / 2147483647.0 * static_cast<double>(count));
    }

    void Play(std::uint32_t id) {
        media = id;
        mediaEmpty = false;
    }

    std::uint32_t MoveTo(std::uint32_t index) {
        current = index;
        pin = kNoIndex;
        if (index == kNoIndex)
            return 0;
        Play(Active().at(index));
        return media;
    }

    std::uint32_t NextIndex() {
        m_moved = now;
        if (pin != kNoIndex)
            return pin;
        if (Size() == 1)
            return repeat ? 0 : kNoIndex;
        if (current != kNoIndex && current + 1 < Size()) {
            m_fresh = false;
            return current + 1;
        }
        if (repeat && shuffle && !m_fresh)
            ShuffleToCurrent();
        return repeat ? 0 : kNoIndex;
    }

    std::uint32_t PreviousIndex() {
        const bool late = m_moved && now - *m_moved > 5000;
        m_moved = now;
        if (late && !alwaysSkip && current != kNoIndex)
            return current;
        if (Size() == 1)
            return repeat ? 0 : kNoIndex;
        if (current == kNoIndex)
            return Size() - 1;
        if (current == 0)
            return repeat ? Size() - 1 : 0;
        return current - 1;
    }

    void ShuffleTo(std::optional<std::uint32_t> id) {
        order = songs;
        for (std::size_t i = 1; i < order.size(); ++i)
            std::swap(order[i], order[m_draw() % (i + 1)]);
        m_fresh = true;
        const auto place = id ? std::find(order.begin(), order.end(), *id) : order.end();
        if (place == order.end())
            return;
        std::swap(*place, order.front());
        pin = 0;
    }

    void ShuffleToCurrent() {
        ShuffleTo(mediaEmpty ? std::nullopt : std::optional(media));
        if (!mediaEmpty)
            Next();
    }

    std::function<std::uint32_t()> m_draw;
    std::optional<std::uint64_t> m_moved;
    bool m_fresh = false;
};

class QueueModel : public QueueFixture, public ::testing::WithParamInterface<std::uint32_t> {
protected:
    void SetUp() override { m_random.seed(GetParam()); }

    std::uint32_t Roll(std::uint32_t count) {
        return std::uniform_int_distribution<std::uint32_t>(0, count - 1)(m_random);
    }
    bool Flip() { return Roll(2) == 1; }
    // Few ids, so that songs stand in the list more than once.
    std::uint32_t AnyId() { return 1 + Roll(12); }
    std::vector<std::uint32_t> AnyIds() {
        std::vector<std::uint32_t> ids(Roll(6));
        for (std::uint32_t& id : ids)
            id = AnyId();
        return ids;
    }
    static std::vector<AudioMedia> AsSongs(const std::vector<std::uint32_t>& ids) {
        std::vector<AudioMedia> songs;
        for (const std::uint32_t id : ids)
            songs.push_back(Song(id));
        return songs;
    }

    // The numbers that the queue draws and the model's copy of them.
    void PrepareNumbers() {
        m_numbers.clear();
        std::string words;
        for (int i = 0; i < 400; ++i) {
            const std::uint32_t number = Roll(50) == 0 ? 2147483647u : Roll(2147483647u);
            m_numbers.push_back(number);
            words += (i == 0 ? "" : " ") + std::to_string(number);
        }
        Random(words);
        m_drawn = 0;
    }

    // Runs one operation on the queue and on the model; both answer with the song that they moved to, or say
    // that the place does not exist.
    template <class OnQueue, class OnModel>
    void Both(const std::string& name, OnQueue onQueue, OnModel onModel) {
        m_trace = name;
        PrepareNumbers();
        std::optional<std::uint32_t> real;
        std::optional<std::uint32_t> expected;
        try {
            real = onQueue();
        } catch (const std::out_of_range&) {
        }
        try {
            expected = onModel();
        } catch (const std::out_of_range&) {
        }
        ASSERT_EQ(real, expected) << name;
    }

    void Step();
    void CompareState();

    std::mt19937 m_random;
    std::vector<std::uint32_t> m_numbers;
    std::size_t m_drawn = 0;
    std::string m_trace;
    Model m_model{[this] { return m_numbers.at(m_drawn++); }};
};

void QueueModel::Step() {
    const auto none = [](auto action) {
        return [action] {
            action();
            return std::uint32_t{0};
        };
    };
    const std::uint32_t operation = Roll(100);
    if (operation < 8 && m_model.songs.size() < 60) {
        const std::uint32_t id = AnyId();
        const bool toFront = Flip();
        Both("add a song", none([&] { queue->AddSong(Song(id), Flip(), toFront); }),
             none([&] { m_model.AddSong(id, toFront); }));
    } else if (operation < 14 && m_model.songs.size() < 60) {
        const auto ids = AnyIds();
        const bool toFront = Flip();
        Both("add a list", none([&] { queue->AddSongList(AsSongs(ids), toFront); }),
             none([&] { m_model.AddSongs(ids, toFront); }));
    } else if (operation < 18 && m_model.songs.size() < 60) {
        const auto ids = AnyIds();
        const bool toFront = !m_model.mediaEmpty;
        Both("add ids", none([&] { queue->AddSongList(ids); }),
             none([&] { m_model.AddSongs(ids, toFront); }));
    } else if (operation < 26) {
        const std::uint32_t id = AnyId();
        Both("remove", none([&] { queue->RemoveSong(Song(id)); }), none([&] { m_model.Remove(id); }));
    } else if (operation < 30) {
        const auto ids = AnyIds();
        Both("replace", none([&] { queue->ReplaceSongList(AsSongs(ids)); }),
             none([&] { m_model.Replace(ids); }));
    } else if (operation < 31) {
        Both("clear", none([&] { queue->ClearSongs(); }), none([&] { m_model.Clear(); }));
    } else if (operation < 35) {
        const std::uint32_t index = Roll(static_cast<std::uint32_t>(m_model.songs.size()) + 2);
        Both("pin a place", none([&] { queue->SetNextSong(index); }), none([&] { m_model.pin = index; }));
    } else if (operation < 39) {
        const std::uint32_t id = AnyId();
        Both("pin a song", none([&] { queue->SetNextSong(Song(id)); }), none([&] { m_model.Pin(id); }));
    } else if (operation < 58) {
        Both(
            "next", [&] { return queue->GetNextSong().mediaId; }, [&] { return m_model.Next(); });
    } else if (operation < 64) {
        Both(
            "peek", [&] { return queue->PeekNextSong().mediaId; }, [&] { return m_model.Peek(); });
    } else if (operation < 76) {
        Both(
            "previous", [&] { return queue->GetPreviousSong().mediaId; }, [&] { return m_model.Previous(); });
    } else if (operation < 80) {
        Both(
            "first", [&] { return queue->GetFirstSong().mediaId; }, [&] { return m_model.First(); });
    } else if (operation < 86) {
        const bool on = Flip();
        Both("shuffle", none([&] { queue->SetShuffle(on); }), none([&] { m_model.SetShuffle(on); }));
    } else if (operation < 90) {
        m_model.repeat = Flip();
        queue->SetRepeat(m_model.repeat);
    } else if (operation < 91) {
        m_model.alwaysSkip = Flip();
        queue->SetAlwaysSkipPrev(m_model.alwaysSkip);
    } else {
        const std::uint32_t milliseconds = Flip() ? 4999 + Roll(4) : Roll(3000);
        Advance(milliseconds);
        m_model.now += milliseconds;
    }
}

void QueueModel::CompareState() {
    ASSERT_EQ(ListedIds(), m_model.songs);
    ASSERT_EQ(queue->IsShuffleSet(), m_model.shuffle);
    ASSERT_EQ(queue->IsRepeatSet(), m_model.repeat);
    ASSERT_EQ(queue->GetCurrentMedia().mediaId, m_model.media);
    ASSERT_EQ(queue->GetCurrentMedia().type == MEDIA_NONE, m_model.mediaEmpty);
    const auto item = queue->GetStatusDataVersion132();
    if (!m_model.shuffle || m_model.current == kNoIndex) {
        ASSERT_EQ(item->FindChild("index")->GetText(), std::to_string(m_model.current));
    } else {
        const auto& songs = m_model.songs;
        const auto place =
            m_model.mediaEmpty ? songs.end() : std::find(songs.begin(), songs.end(), m_model.media);
        ASSERT_EQ(item->FindChild("index")->GetText(), std::to_string(place - songs.begin()));
    }
}

TEST_P(QueueModel, AgreesAtEveryStep) {
    for (int step = 0; step < kSteps; ++step) {
        Step();
        if (!HasFatalFailure())
            CompareState();
        if (HasFatalFailure())
            FAIL() << "seed " << GetParam() << ", step " << step << ", after: " << m_trace;
        Out();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, QueueModel, ::testing::Values(1u, 2u, 3u, 20240229u, 4294967295u));

} // namespace
