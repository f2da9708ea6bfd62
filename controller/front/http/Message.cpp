#include "front/http/Message.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

#include "base/EventBus.h"
#include "common/Text.h"

namespace korvel::controller {
namespace {

constexpr std::size_t kMaxErrorText = 1000;

std::optional<std::string> Decode(std::string_view text, bool plusIsBlank) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '+' && plusIsBlank) {
            out.push_back(' ');
        } else if (text[i] == '%') {
            unsigned value = 0;
            const char* first = text.data() + i + 1;
            if (i + 2 >= text.size() || std::from_chars(first, first + 2, value, 16).ptr != first + 2)
                return std::nullopt;
            out.push_back(static_cast<char>(value));
            i += 2;
        } else {
            out.push_back(text[i]);
        }
    }
    // A text that ends in its middle would name something else further on.
    if (out.find('\0') != std::string::npos)
        return std::nullopt;
    return out;
}

bool ParsePath(std::string_view text, Target& target) {
    while (!text.empty()) {
        text.remove_prefix(1); // the slash
        const std::size_t end = std::min(text.find('/'), text.size());
        auto segment = Decode(text.substr(0, end), false);
        if (!segment)
            return false;
        text.remove_prefix(end);
        if (!segment->empty() || !text.empty())
            target.path.push_back(std::move(*segment));
    }
    return true;
}

bool ParseQuery(std::string_view text, Target& target) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('&'), text.size());
        const std::string_view pair = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t equals = std::min(pair.find('='), pair.size());
        auto name = Decode(pair.substr(0, equals), true);
        auto value = Decode(pair.substr(std::min(equals + 1, pair.size())), true);
        if (!name || !value)
            return false;
        target.query[std::move(*name)] = std::move(*value);
    }
    return true;
}

} // namespace

HttpReply JsonReply(const nlohmann::json& value, unsigned status) {
    return {status, "application/json", JsonText(value), ""};
}

HttpReply ErrorReply(unsigned status, const std::string& text) {
    return JsonReply({{"error", common::OneLine(text, kMaxErrorText)}}, status);
}

std::optional<std::uint32_t> ParseNumber(std::string_view text) {
    const auto value = common::ParseNumber(text);
    return value && *value <= kMaxNumber ? value : std::nullopt;
}

std::optional<std::uint32_t> Target::Number(const std::string& name, std::uint32_t fallback) const {
    const auto found = query.find(name);
    return found == query.end() ? std::optional(fallback) : ParseNumber(found->second);
}

std::string Target::Text(const std::string& name) const {
    const auto found = query.find(name);
    return found == query.end() ? "" : found->second;
}

std::optional<Target> ParseTarget(std::string_view text) {
    if (text.empty() || text.front() != '/')
        return std::nullopt;
    Target target;
    text = text.substr(0, text.find('#'));
    const std::size_t mark = std::min(text.find('?'), text.size());
    if (!ParsePath(text.substr(0, mark), target))
        return std::nullopt;
    if (!ParseQuery(text.substr(std::min(mark + 1, text.size())), target))
        return std::nullopt;
    return target;
}

} // namespace korvel::controller
