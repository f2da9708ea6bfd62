#pragma once

#include <filesystem>
#include <string>

// A folder of its own for a test, gone with all that is in it afterwards.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    std::string operator/(const std::string& name) const { return (m_path / name).native(); }
    // Writes a file, making the folders it lies in.
    std::string Write(const std::string& name, const std::string& bytes) const;
    // Makes a folder.
    std::string Make(const std::string& name) const;

private:
    std::filesystem::path m_path;
};
