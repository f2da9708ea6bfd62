#include "store/KeptAside.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <vector>

namespace korvel::controller {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kStampLength = 15;

std::string NamePrefix(const std::string& path, const std::string& word) {
    return path + "." + word + "-";
}

// Oldest first.
std::vector<std::string> StampsOf(const std::string& prefix) {
    std::vector<std::string> stamps;
    const std::string name = fs::path(prefix).filename().string();
    std::error_code failed;
    for (const auto& entry : fs::directory_iterator(fs::path(prefix).parent_path(), failed)) {
        const std::string other = entry.path().filename().string();
        // A companion's name is longer.
        if (other.size() == name.size() + kStampLength && other.starts_with(name))
            stamps.push_back(other.substr(name.size()));
    }
    std::ranges::sort(stamps);
    return stamps;
}

// A name that comes after all others, also when the last one is no second old. Stamps of a clock that was far ahead
// do not count.
std::string NextName(const std::string& prefix) {
    constexpr std::time_t kAhead = 3600;
    const std::time_t now = std::time(nullptr);
    std::time_t next = now;
    for (const std::string& stamp : StampsOf(prefix)) {
        while (StampOf(next) <= stamp && stamp < StampOf(now + kAhead))
            ++next;
    }
    return prefix + StampOf(next);
}

void RemoveOldest(const std::string& prefix, std::span<const char* const> companions) {
    const std::vector<std::string> stamps = StampsOf(prefix);
    std::error_code ignored;
    for (std::size_t i = 0; i + kMaxKeptAside < stamps.size(); ++i) {
        fs::remove_all(prefix + stamps[i], ignored);
        for (const char* companion : companions)
            fs::remove(prefix + stamps[i] + companion, ignored);
    }
}

} // namespace

std::string StampOf(std::time_t time) {
    tm parts{};
    gmtime_r(&time, &parts);
    std::array<char, kStampLength + 1> text{};
    std::strftime(text.data(), text.size(), "%Y%m%d-%H%M%S", &parts);
    return text.data();
}

std::string KeepAside(const std::string& path, const std::string& word,
                      std::span<const char* const> companions) {
    const std::string prefix = NamePrefix(path, word);
    const std::string name = NextName(prefix);
    // The companions come first: none may be taken for one of the file that comes next.
    for (const char* companion : companions) {
        if (fs::exists(path + companion))
            fs::rename(path + companion, name + companion);
    }
    fs::rename(path, name);
    RemoveOldest(prefix, companions);
    return name;
}

std::string LastKeptAside(const std::string& path, const std::string& word) {
    const std::vector<std::string> stamps = StampsOf(NamePrefix(path, word));
    return stamps.empty() ? "" : stamps.back();
}

} // namespace korvel::controller
