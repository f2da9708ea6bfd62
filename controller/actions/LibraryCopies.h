#pragma once

#include <cstddef>
#include <ctime>
#include <string>
#include <vector>

namespace korvel::controller {

// The file that the library is in, and the words that it gets when it is kept aside.
std::string LibraryPath(const std::string& stateFolder);
inline constexpr const char* kDamaged = "damaged";
inline constexpr const char* kReplaced = "replaced";

// Copies of the library, by which it can be brought back: one a day, of which the newest are kept. Every
// operation waits for the disk; none is for the loop.
class LibraryCopies {
public:
    static constexpr std::size_t kKept = 3;
    static constexpr std::time_t kInterval = 24 * 60 * 60;

    explicit LibraryCopies(std::string stateFolder) : m_stateFolder(std::move(stateFolder)) {}

    std::string Folder() const { return m_stateFolder + "/copies"; }
    // The paths of the copies, newest first.
    std::vector<std::string> List() const;
    // Makes a copy, unless there is one of the last kInterval. A library that is damaged is not copied.
    // Throws media::DatabaseError or std::filesystem::filesystem_error; the copies are then as before.
    void MakeWhenDue(std::time_t now) const;
    // The paths of the copies in the order in which they serve to bring the library back. After one was
    // damaged and a new one was begun, the copies of the old one come first.
    std::vector<std::string> ForRestoring() const;

private:
    // Of the copies, newest first.
    std::vector<std::string> Stamps() const;
    std::string PathOf(const std::string& stamp) const;
    // When the library was damaged; "" when it has been brought back since, or never was.
    std::string DamageStamp() const;
    void RemoveOldest(const std::string& now) const;

    std::string m_stateFolder;
};

// Puts the newest good copy in the place of the library, which is kept aside. Returns what it did, for a
// person. Throws std::exception: a controller runs, or there is no good copy; all is then as before.
std::string RestoreLibrary(const std::string& stateFolder);

} // namespace korvel::controller
