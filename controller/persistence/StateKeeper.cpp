#include "persistence/StateKeeper.h"

namespace korvel::controller {

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
    if (const auto state = m_driver.PersistState())
        m_file.Save(*state);
}

} // namespace korvel::controller
