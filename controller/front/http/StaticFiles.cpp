#include "front/http/StaticFiles.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

namespace korvel::controller {
namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kMaxFileBytes = 16u << 20;

std::string TypeOf(const fs::path& file) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 11> kTypes = {{
        {".html", "text/html; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".json", "application/json"},
        {".svg", "image/svg+xml"},
        {".png", "image/png"},
        {".jpg", "image/jpeg"},
        {".ico", "image/x-icon"},
        {".woff2", "font/woff2"},
        {".txt", "text/plain; charset=utf-8"},
        {".webmanifest", "application/manifest+json"},
    }};
    const std::string extension = file.extension().string();
    const auto found = std::ranges::find(kTypes, extension, [](const auto& type) { return type.first; });
    return std::string(found == kTypes.end() ? "application/octet-stream" : found->second);
}

} // namespace

HttpReply ServeFile(const std::string& folder, const Target& target) {
    const HttpReply missing = ErrorReply(404, "there is nothing here");
    std::error_code failed;
    const fs::path top = fs::canonical(folder, failed);
    fs::path file = top;
    for (const std::string& segment : target.path) {
        if (segment.empty() || segment.front() == '.' || segment.find('/') != std::string::npos)
            return missing;
        file /= segment;
    }
    if (fs::is_directory(file, failed))
        file /= "index.html";
    // Links may not lead out of the folder either.
    file = fs::canonical(file, failed);
    if (failed || std::mismatch(top.begin(), top.end(), file.begin(), file.end()).first != top.end())
        return missing;
    if (!fs::is_regular_file(file, failed) || fs::file_size(file, failed) > kMaxFileBytes || failed)
        return missing;
    std::ifstream stream(file, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    return stream ? HttpReply{200, TypeOf(file), std::move(bytes), ""} : missing;
}

} // namespace korvel::controller
