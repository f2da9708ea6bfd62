// Changes sessions as sessions: line by line and word by word, so that what comes out can still be run.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "SessionText.h"
#include "Vocabulary.h"
#include "replay/Words.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace fuzz {

namespace {

using korvel::replay::FormatValue;
using korvel::replay::Word;

constexpr std::size_t kMaxText = 64;
constexpr std::size_t kMaxRun = 8;   // lines that are taken away or copied together
constexpr std::size_t kMaxCall = 60; // of a service within a line, that is disturbed

using Session = std::vector<Step>;

std::ptrdiff_t Place(const Session& session, Dice& dice) {
    return static_cast<std::ptrdiff_t>(dice.Below(session.size() + 1));
}

// Where a run of lines begins and ends, in a session that is not empty.
auto AnyRange(const Session& session, Dice& dice) {
    const std::size_t first = dice.Below(session.size());
    const std::size_t count = 1 + dice.Below(std::min(kMaxRun, session.size() - first));
    const auto begin = session.begin() + static_cast<std::ptrdiff_t>(first);
    return std::pair(begin, begin + static_cast<std::ptrdiff_t>(count));
}

Session AnyRun(const Session& session, Dice& dice) {
    const auto [begin, end] = AnyRange(session, dice);
    return {begin, end};
}

void EraseRun(Session& session, Dice& dice) {
    const auto [begin, end] = AnyRange(session, dice);
    session.erase(begin, end);
}

// FormatError when the line holds a text that is no row of words.
std::vector<Word> WordsOf(const std::string& line) {
    std::vector<Word> words;
    std::string_view rest = korvel::replay::TrimEnd(line);
    while (!rest.empty()) {
        words.push_back(korvel::replay::TakeWord(rest));
        rest = korvel::replay::TrimStart(rest);
    }
    return words;
}

std::string LineOf(const std::vector<Word>& words) {
    std::string line;
    for (const Word& word : words) {
        line += line.empty() ? "" : " ";
        if (word.equals == std::string::npos)
            line += FormatValue(word.text);
        else
            line += word.text.substr(0, word.equals + 1) + FormatValue(word.text.substr(word.equals + 1));
    }
    return line;
}

std::string MutateBytes(std::string text) {
    text.resize(std::min(text.size(), kMaxText));
    std::size_t size = text.size();
    text.resize(kMaxText);
    size = LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(text.data()), size, kMaxText);
    text.resize(size);
    return text;
}

std::string OtherValue(const Word& word, const std::string& value, Dice& dice) {
    if (dice.OneIn(8))
        return MutateBytes(value);
    const Pool* pool = word.equals == std::string::npos ? nullptr : PoolOf(word.text.substr(0, word.equals));
    if (!pool)
        pool = PoolWith(value, dice);
    return pool ? dice.Of(*pool) : MutateBytes(value);
}

// Another value of one word, or one word less.
void ChangeWord(std::string& line, Dice& dice) {
    std::vector<Word> words;
    try {
        words = WordsOf(line);
    } catch (const korvel::replay::FormatError&) {
        return;
    }
    if (words.size() < 2)
        return;
    const std::size_t chosen = 1 + dice.Below(words.size() - 1);
    Word& word = words[chosen];
    if (dice.OneIn(8)) {
        words.erase(words.begin() + static_cast<std::ptrdiff_t>(chosen));
    } else {
        const std::size_t start = word.equals == std::string::npos ? 0 : word.equals + 1;
        word.text = word.text.substr(0, start) + OtherValue(word, word.text.substr(start), dice);
    }
    line = LineOf(words);
}

std::uint32_t AnyCall(Dice& dice) {
    return static_cast<std::uint32_t>(1 + dice.Below(kMaxCall));
}

void ChangeDisturbances(std::vector<Disturbance>& disturbances, Dice& dice) {
    if (!disturbances.empty() && dice.OneIn(3)) {
        disturbances.erase(disturbances.begin() +
                           static_cast<std::ptrdiff_t>(dice.Below(disturbances.size())));
    } else if (!disturbances.empty() && dice.OneIn(2)) {
        Disturbance& disturbance = disturbances[dice.Below(disturbances.size())];
        if (dice.OneIn(2))
            disturbance.call = AnyCall(dice);
        else
            ChangeWord(disturbance.what, dice);
    } else if (disturbances.size() < kMaxDisturbances) {
        const std::string what = dice.OneIn(4) ? kThrow : dice.OneIn(16) ? kThrowOther : AnyEntry(dice);
        disturbances.push_back({AnyCall(dice), what});
    }
}

void Change(Session& session, Dice& dice) {
    const std::size_t choice = session.empty() ? 0 : dice.Below(10);
    if (choice < 4) {
        session.insert(session.begin() + Place(session, dice), {AnyLine(dice), {}});
    } else if (choice < 6) {
        ChangeWord(session[dice.Below(session.size())].line, dice);
    } else if (choice < 8) {
        ChangeDisturbances(session[dice.Below(session.size())].disturbances, dice);
    } else if (choice < 9) {
        EraseRun(session, dice);
    } else {
        const Session run = AnyRun(session, dice);
        session.insert(session.begin() + Place(session, dice), run.begin(), run.end());
    }
}

// Cut after a whole line where it is too long; `maxSize` is at least 1.
std::size_t Write(const Session& session, std::uint8_t* data, std::size_t maxSize) {
    std::string text = PrintSession(session);
    if (text.size() > maxSize)
        text.resize(text.rfind('\n', maxSize - 1) + 1);
    std::memcpy(data, text.data(), text.size());
    return text.size();
}

std::string_view Text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

} // namespace

} // namespace fuzz

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed) {
    fuzz::Dice dice(seed);
    auto session = fuzz::ParseSession(fuzz::Text(data, size));
    for (std::size_t left = 1 + dice.Below(4); left > 0; --left)
        fuzz::Change(session, dice);
    return fuzz::Write(session, data, maxSize);
}

// The beginning of one session, lines of another, and the rest of the first or of the other.
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* data1, std::size_t size1,
                                                 const std::uint8_t* data2, std::size_t size2,
                                                 std::uint8_t* out, std::size_t maxSize, unsigned int seed) {
    fuzz::Dice dice(seed);
    auto session = fuzz::ParseSession(fuzz::Text(data1, size1));
    const auto other = fuzz::ParseSession(fuzz::Text(data2, size2));
    const auto place = fuzz::Place(session, dice);
    if (dice.OneIn(2)) {
        session.resize(static_cast<std::size_t>(place));
        session.insert(session.end(), other.begin() + fuzz::Place(other, dice), other.end());
    } else if (!other.empty()) {
        const auto run = fuzz::AnyRun(other, dice);
        session.insert(session.begin() + place, run.begin(), run.end());
    }
    return fuzz::Write(session, out, maxSize);
}
