#include "store/StateFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "store/KeptAside.h"

namespace korvel::controller {
namespace {

namespace fs = std::filesystem;

class Descriptor {
public:
    Descriptor(const std::string& path, int flags) : m_fd(open(path.c_str(), flags | O_CLOEXEC, 0600)) {
        Check(m_fd >= 0, "open");
    }
    ~Descriptor() { close(m_fd); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    void WriteAll(const std::string& text) const {
        std::size_t done = 0;
        while (done < text.size()) {
            const ssize_t count = write(m_fd, text.data() + done, text.size() - done);
            if (count < 0 && errno == EINTR)
                continue;
            Check(count > 0, "write");
            done += static_cast<std::size_t>(count);
        }
    }
    void Sync() const { Check(fsync(m_fd) == 0, "fsync"); }

    static void Check(bool good, const char* step) {
        if (!good)
            throw std::system_error(errno, std::generic_category(), step);
    }

private:
    int m_fd;
};

} // namespace

kv::auto_com<KVXML::INode> StateFile::Load() {
    std::error_code failed;
    if (!fs::exists(m_path, failed))
        return nullptr;
    const auto size = fs::file_size(m_path, failed);
    if (failed || size > kMaxBytes) {
        SetAside(failed ? failed.message() : "too long");
        return nullptr;
    }
    std::ifstream file(m_path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const auto document = KVXML::CreateXmlDocument(text);
    auto root = document ? document->GetRoot() : nullptr;
    if (!root) {
        SetAside(file.is_open() ? "not a document" : "cannot be read");
        return nullptr;
    }
    m_saved = text;
    return root;
}

void StateFile::SetAside(const std::string& why) {
    m_saved.clear();
    try {
        m_storage.KeptAside(m_path, KeepAside(m_path, "damaged"), why);
    } catch (const fs::filesystem_error& error) {
        m_storage.KeptAside(m_path, "", why + "; " + error.code().message());
    }
}

void StateFile::Save(const std::string& text) {
    if (text == m_saved)
        return;
    const std::string next = m_path + ".tmp";
    {
        const Descriptor file(next, O_WRONLY | O_CREAT | O_TRUNC);
        file.WriteAll(text);
        file.Sync();
    }
    Descriptor::Check(std::rename(next.c_str(), m_path.c_str()) == 0, "rename");
    // The new name is on the disk only when its folder is.
    Descriptor(fs::path(m_path).parent_path().string(), O_RDONLY | O_DIRECTORY).Sync();
    m_saved = text;
}

} // namespace korvel::controller
