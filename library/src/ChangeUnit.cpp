#include "ChangeUnit.h"

#include <utility>

namespace korvel::media {

void ChangeUnit::AsOne(const std::function<void()>& body) {
    if (m_together)
        return body();
    m_together = true;
    try {
        body();
    } catch (...) {
        End(false);
        throw;
    }
    End(true);
}

// A transaction keeps others from writing: it begins with the first change, which most bodies do not have.
void ChangeUnit::Begin() {
    if (m_failure)
        std::rethrow_exception(m_failure);
    if (!m_together || m_begun)
        return;
    m_connection.Begin();
    m_begun = true;
}

void ChangeUnit::NoteChange() {
    if (m_together)
        m_changed = true;
    else
        Tell(nullptr);
}

void ChangeUnit::NoteFailure(const std::exception& failure) {
    if (!m_together)
        Tell(&failure);
    else if (!m_failure)
        m_failure = std::current_exception();
}

void ChangeUnit::Tell(const std::exception* failure) const {
    if (m_listener)
        m_listener(failure);
}

void ChangeUnit::End(bool whole) {
    m_together = false;
    const bool begun = std::exchange(m_begun, false);
    const bool changed = std::exchange(m_changed, false);
    const std::exception_ptr failure = std::exchange(m_failure, nullptr);
    if (!failure && !whole)
        return m_connection.RollBack();
    try {
        if (failure)
            std::rethrow_exception(failure);
        if (begun)
            m_connection.Commit();
        if (changed)
            Tell(nullptr);
    } catch (const std::exception& why) {
        m_connection.RollBack();
        Tell(&why);
    }
}

} // namespace korvel::media
