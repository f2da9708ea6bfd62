#pragma once

#include <exception>
#include <functional>

#include "Sqlite.h"
#include "library/MediaDatabase.h"

namespace korvel::media {

// The changes that IMediaManager is asked for: each is made whole or not at all, or so are several together, and a
// listener hears how it ended.
class ChangeUnit {
public:
    explicit ChangeUnit(Connection& connection) : m_connection(connection) {}

    void SetListener(MediaDatabase::ChangeListener listener) { m_listener = std::move(listener); }

    // Runs `change`, which returns `nothing` when there was nothing to change. Throws what it throws, and within
    // AsOne() when a change before it failed.
    template <class Result, class Change>
    Result Run(Result nothing, Change&& change) {
        try {
            Begin();
            const Result result = change();
            if (result != nothing)
                NoteChange();
            return result;
        } catch (const std::exception& failure) {
            NoteFailure(failure);
            throw;
        }
    }

    // The changes in `body` are one. Does not throw when one fails, but what `body` throws: then none is made.
    void AsOne(const std::function<void()>& body);

private:
    void Begin();
    void NoteChange();
    void NoteFailure(const std::exception& failure);
    void Tell(const std::exception* failure) const;
    void End(bool whole);

    Connection& m_connection;
    MediaDatabase::ChangeListener m_listener;
    bool m_together = false; // within AsOne(), of which is said:
    bool m_begun = false;    // its transaction
    bool m_changed = false;
    std::exception_ptr m_failure; // the first
};

} // namespace korvel::media
