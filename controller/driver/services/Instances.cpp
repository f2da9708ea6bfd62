#include "driver/services/Instances.h"

namespace korvel::controller {

bool Instances::GetInstance(const std::string& id, void** instance) {
    const auto found = m_instances.find(id);
    *instance = found == m_instances.end() ? nullptr : found->second;
    return found != m_instances.end();
}

} // namespace korvel::controller
