#include "store/StateKeeper.h"

#include <cerrno>
#include <system_error>

namespace korvel::controller {
namespace {

constexpr const char* kWhat = "settings";

// A file that may not grow is a full disk to whoever asked for it.
bool MeansNoRoom(const std::error_code& code) {
    return code.value() == ENOSPC || code.value() == EDQUOT || code.value() == EFBIG;
}

} // namespace

void StateKeeper::SaveSoon() {
    if (m_planned)
        return;
    m_planned = true;
    m_poster.Post([this] {
        m_planned = false;
        SaveNow();
    });
}

void StateKeeper::SaveNow() {
    const std::optional<std::string> fetched = m_fetch();
    if (!fetched)
        return;
    const std::string& text = *fetched;
    // Whoever changed it has been told already; the one who comes now changed nothing.
    const bool again = text == m_tried;
    m_tried = text;
    try {
        m_file.Save(text);
        m_storage.Written(kWhat);
    } catch (const std::system_error& error) {
        if (!again)
            m_storage.NotWritten(kWhat, error.what(), MeansNoRoom(error.code()));
        RetryLater();
    }
}

void StateKeeper::RetryLater() {
    m_retry.expires_after(m_retryInterval);
    m_retry.async_wait([this](boost::system::error_code error) {
        if (!error)
            SaveNow();
    });
}

} // namespace korvel::controller
