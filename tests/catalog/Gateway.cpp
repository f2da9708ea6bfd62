#include "Gateway.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace korvel::tests {

Folder::Folder() : m_path((std::filesystem::temp_directory_path() / "korvel-catalog-XXXXXX").string()) {
    if (::mkdtemp(m_path.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string Folder::Write(const std::string& name, const std::string& text) const {
    std::ofstream(PathOf(name), std::ios::binary) << text;
    return PathOf(name);
}

std::string TrackEntry(const std::string& id, double seconds) {
    return "[[track]]\nid = \"" + id + "\"\ntitle = \"Title " + id + "\"\nartist = \"Artist " + id +
           "\"\nalbum = \"Album " + id + "\"\nimage = \"http://covers/" + id + "\"\nmedia = \"" + id +
           ".wav\"\nduration = " + std::to_string(seconds) + "\n";
}

std::string ListEntry(const std::string& kind, const std::string& id, const std::string& tracks) {
    return "[[" + kind + "]]\nid = \"" + id + "\"\nname = \"Name " + id + "\"\ntracks = " + tracks + "\n";
}

Gateway::Gateway(const std::string& catalogue, std::uint16_t port)
    : m_process(std::make_unique<Process>(
          KORVEL_CATALOG, std::vector<std::string>{"--catalog", catalogue, "--port", std::to_string(port)},
          m_folder.PathOf("errors"))) {
    const std::string line = m_process->ReadLine().value_or("");
    const std::string start = "listening on 127.0.0.1:";
    if (line.starts_with(start))
        m_port = static_cast<std::uint16_t>(std::stoul(line.substr(start.size())));
    EXPECT_NE(m_port, 0) << m_process->Errors();
}

bool Gateway::Stop() {
    m_process->Signal(SIGTERM);
    return m_process->WaitForExit() == 0;
}

} // namespace korvel::tests
