#include "audioserver/watch/WatchRequest.h"

#include <array>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

namespace korvel::audioserver {
namespace {

using nlohmann::json;

// What of a line is not as it must be.
struct Wrong {
    std::string reason;
};

const json& Member(const json& object, const char* name) {
    const auto member = object.find(name);
    if (member == object.end())
        throw Wrong{std::string(name) + " is missing"};
    return *member;
}

std::uint64_t ReadNumber(const json& value, const std::string& name, std::uint64_t most) {
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > most)
        throw Wrong{name + " is not a number up to " + std::to_string(most)};
    return value.get<std::uint64_t>();
}

constexpr std::uint64_t kAny = std::numeric_limits<std::uint64_t>::max();

StreamNumber ReadStream(const json& arguments) {
    return static_cast<StreamNumber>(ReadNumber(Member(arguments, "stream"), "stream", kLastStream));
}

std::uint32_t ReadPosition(const json& arguments) {
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(ReadNumber(Member(arguments, "position"), "position", most));
}

const json& ReadArguments(const json& request, const char* name) {
    const json& arguments = Member(request, name);
    if (!arguments.is_object())
        throw Wrong{std::string(name) + " is not an object"};
    return arguments;
}

WatchSeek ReadSeek(const json& request) {
    const json& arguments = ReadArguments(request, "seek");
    WatchSeek seek{
        ReadNumber(Member(request, "id"), "id", kAny), ReadStream(arguments), {}, ReadPosition(arguments)};
    if (const auto serial = arguments.find("serial"); serial != arguments.end() && !serial->is_null())
        seek.serial = ReadNumber(*serial, "serial", kAny);
    return seek;
}

WatchStart ReadStart(const json& request) {
    const json& arguments = ReadArguments(request, "start");
    const json& media = Member(arguments, "media");
    if (!media.is_string() || media.get_ref<const std::string&>().empty())
        throw Wrong{"media is not a text"};
    return {ReadNumber(Member(request, "id"), "id", kAny), ReadStream(arguments), media.get<std::string>(),
            ReadPosition(arguments)};
}

WatchRequest ReadRequest(const json& request) {
    constexpr std::array kNames{"watch", "ping", "seek", "start"};
    const char* what = nullptr;
    for (const char* name : kNames) {
        if (!request.contains(name))
            continue;
        if (std::exchange(what, name) != nullptr)
            throw Wrong{"it is several requests"};
    }
    if (what == kNames[0])
        return WatchGreeting{ReadNumber(request[what], what, kAny)};
    if (what == kNames[1])
        return WatchPing{ReadNumber(request[what], what, kAny)};
    if (what == kNames[2])
        return ReadSeek(request);
    if (what == kNames[3])
        return ReadStart(request);
    throw Wrong{"it is no request"};
}

} // namespace

bool IsWatchLine(std::string_view line) {
    return line.starts_with('{');
}

WatchRequest ParseWatchLine(std::string_view line) {
    const json request = json::parse(line, nullptr, false);
    if (!request.is_object())
        return WatchNonsense{{}, "it is not an object of JSON"};
    try {
        return ReadRequest(request);
    } catch (Wrong& wrong) {
        WatchNonsense nonsense{{}, std::move(wrong.reason)};
        if (const auto id = request.find("id"); id != request.end() && id->is_number_unsigned())
            nonsense.id = id->get<std::uint64_t>();
        return nonsense;
    }
}

} // namespace korvel::audioserver
