// The gateway under test.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "HeldPort.h"
#include "Process.h"

namespace korvel::tests {

// A folder of its own that is removed in the end.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string PathOf(const std::string& name) const { return m_path + "/" + name; }
    // Writes a file and returns its path.
    std::string Write(const std::string& name, const std::string& text) const;

private:
    std::string m_path;
};

// [[track]] of that id: title "Title ID", artist "Artist ID" and so on, half a minute of "ID.wav".
std::string TrackEntry(const std::string& id, double seconds = 30);
// [[playlist]] or [[channel]], named "Name ID"; `tracks` as TOML writes a list.
std::string ListEntry(const std::string& kind, const std::string& id, const std::string& tracks);

// korvel-catalog on a free port, or on one that the test holds.
class Gateway {
public:
    explicit Gateway(const std::string& catalogue) : Gateway(catalogue, 0) {}
    Gateway(const std::string& catalogue, const HeldPort& port) : Gateway(catalogue, port.Number()) {}

    std::uint16_t Port() const { return m_port; }
    std::string Address() const { return "127.0.0.1:" + std::to_string(m_port); }
    Process& Program() { return *m_process; }
    // Ends it as a service manager would; whether it ended well.
    bool Stop();

private:
    Gateway(const std::string& catalogue, std::uint16_t port);

    Folder m_folder;
    std::unique_ptr<Process> m_process;
    std::uint16_t m_port = 0;
};

} // namespace korvel::tests
