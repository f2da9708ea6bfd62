// How derived values are kept while what they are derived from stands.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>

// A value that is read as it is and changed through Change() only, which gives it another revision: equal
// revisions are equal values.
template <class Value>
class Revised {
public:
    const Value& operator*() const { return m_value; }
    const Value* operator->() const { return &m_value; }
    // For one change at once: a reference that is kept escapes the revision.
    Value& Change() {
        ++m_revision;
        return m_value;
    }
    std::uint32_t GetRevision() const { return m_revision; }

private:
    Value m_value;
    std::uint32_t m_revision = 0;
};

// The last result of a function, for as long as its arguments are equal to the last ones.
template <class Arguments, class Result>
class Memo {
public:
    // `make` is called with the arguments when they have changed.
    template <class Make>
    const Result& Get(const Arguments& arguments, Make make) {
        if (!m_last || !(m_last->first == arguments)) {
            Result result = make(arguments);
            m_last.emplace(arguments, std::move(result));
        }
        return m_last->second;
    }

private:
    std::optional<std::pair<Arguments, Result>> m_last;
};
