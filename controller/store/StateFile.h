#pragma once

#include <cstddef>
#include <string>

#include "platform/Xml.h"
#include "store/StorageStatus.h"

namespace korvel::controller {

// One XML element in one file that is whole at every moment: a new text takes the place of the old one at
// once or not at all, whenever the machine stops.
class StateFile {
public:
    static constexpr std::size_t kMaxBytes = 4u << 20;

    StateFile(std::string path, StorageStatus& storage) : m_path(std::move(path)), m_storage(storage) {}

    // The element; null when there is no file yet. A file that is not such an element is set aside.
    kv::auto_com<KVXML::INode> Load();
    // Gives the file another name, which is told: from now on there is none.
    void SetAside(const std::string& why);
    // Nothing is written when the file holds this text already. Throws std::system_error when that fails; the
    // file is then as before.
    void Save(const std::string& text);

private:
    std::string m_path;
    StorageStatus& m_storage;
    std::string m_saved; // the text in the file
};

} // namespace korvel::controller
