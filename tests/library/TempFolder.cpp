#include "TempFolder.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    std::string pattern = (fs::temp_directory_path() / "media-test-XXXXXX").native();
    if (!::mkdtemp(pattern.data()))
        throw std::runtime_error("no temporary folder");
    m_path = pattern;
}

TempFolder::~TempFolder() {
    std::error_code error;
    fs::remove_all(m_path, error);
}

std::string TempFolder::Write(const std::string& name, const std::string& bytes) const {
    const fs::path path = m_path / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
    return path.native();
}

std::string TempFolder::Make(const std::string& name) const {
    fs::create_directories(m_path / name);
    return (m_path / name).native();
}
