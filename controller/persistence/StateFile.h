#pragma once

#include <cstddef>
#include <string>

#include "common/Log.h"
#include "platform/Xml.h"

namespace korvel::controller {

// One XML element in one file that is whole at every moment: a new text takes the place of the old one at
// once or not at all, whenever the machine stops.
class StateFile {
public:
    static constexpr std::size_t kMaxBytes = 4u << 20;

    StateFile(std::string path, const common::Log& log) : m_path(std::move(path)), m_log(log) {}

    // The element; null when there is no file yet. A file that is not such an element is renamed to
    // ".corrupt", which is logged, and counts as none.
    kv::auto_com<KVXML::INode> Load();
    // Nothing is written when the file holds this text already. A failure is logged; the file is then as
    // before.
    void Save(const KVXML::INode& element);

private:
    void SetAside(const std::string& why);

    std::string m_path;
    const common::Log& m_log;
    std::string m_saved; // the text in the file
};

} // namespace korvel::controller
