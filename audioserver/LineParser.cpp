#include "audioserver/LineParser.h"

#include <algorithm>
#include <boost/asio/ip/address.hpp>

#include "common/Text.h"

namespace korvel::audioserver {
namespace {

constexpr std::string_view kSpace = " ";

std::string_view Trim(std::string_view text) {
    const auto first = text.find_first_not_of(kSpace);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

// Takes the next word off the front of the text; empty when there is none.
std::string_view TakeWord(std::string_view& text) {
    text = Trim(text);
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size());
    text = Trim(text);
    return word;
}

std::string EchoedWord(std::string_view word) {
    if (word.empty() || word.size() > kMaxEchoedWordBytes ||
        std::any_of(word.begin(), word.end(), [](char c) { return c <= 0x20 || c == 0x7f; }))
        return std::string(kUnknownCommand);
    return std::string(word);
}

bool TakeClient(std::string_view& rest, ClientAddress& client) {
    const std::string ip(TakeWord(rest));
    const auto port = common::ParseNumber(TakeWord(rest));
    boost::system::error_code error;
    const auto address = boost::asio::ip::make_address(ip, error);
    if (error || address.is_unspecified() || !port || *port < kFirstClientPort || *port > kLastClientPort)
        return false;
    // The canonical text makes two spellings of one address one client.
    client = {address.to_string(), static_cast<std::uint16_t>(*port)};
    return rest.empty();
}

bool TakeState(std::string_view& rest, PlayState& state) {
    const std::string_view word = TakeWord(rest);
    const auto* known = std::find_if(kPlayStates.begin(), kPlayStates.end(),
                                     [word](const PlayStateWord& entry) { return entry.word == word; });
    if (known == kPlayStates.end())
        return false;
    state = known->state;
    return rest.empty();
}

bool TakeMedia(std::string_view& rest, std::string& media) {
    // A lone quote is a reference whose end was lost.
    if (rest.empty() || (rest.front() == '"' && rest.find_last_of('"') == 0))
        return false;
    media = std::string(rest);
    return true;
}

// Reads what follows the stream number.
bool TakeArguments(Arguments arguments, std::string_view rest, Request& request) {
    switch (arguments) {
        case Arguments::kStreamAndClient:
            return TakeClient(rest, request.client);
        case Arguments::kStreamAndState:
            return TakeState(rest, request.state);
        case Arguments::kStreamAndMedia:
            return TakeMedia(rest, request.media);
        case Arguments::kNone:
        case Arguments::kStream:
            break;
    }
    return rest.empty();
}

const CommandShape& ShapeOf(Command command) {
    return *std::find_if(kCommands.begin(), kCommands.end(),
                         [command](const CommandShape& entry) { return entry.command == command; });
}

} // namespace

std::string_view CommandWord(Command command) {
    return ShapeOf(command).word;
}

std::variant<Request, Refusal> ParseLine(std::string_view line) {
    std::string_view rest = line;
    const auto sequence = common::ParseNumber(TakeWord(rest));
    const std::string_view word = TakeWord(rest);
    Refusal refusal{sequence.value_or(0), EchoedWord(word), std::nullopt};
    const auto* shape = std::find_if(kCommands.begin(), kCommands.end(),
                                     [word](const CommandShape& entry) { return entry.word == word; });
    if (shape == kCommands.end())
        return refusal;
    Request request;
    request.command = shape->command;
    if (shape->arguments != Arguments::kNone) {
        refusal.stream = common::ParseNumber(TakeWord(rest));
        request.stream = refusal.stream.value_or(0);
    }
    const bool streamMissing = shape->arguments != Arguments::kNone && !refusal.stream;
    if (!sequence || streamMissing || common::HasControl(line) ||
        !TakeArguments(shape->arguments, rest, request))
        return refusal;
    request.sequence = *sequence;
    return request;
}

Refusal RefuseLine(std::string_view beginning) {
    const auto parsed = ParseLine(beginning);
    if (const auto* refusal = std::get_if<Refusal>(&parsed))
        return *refusal;
    const auto& request = std::get<Request>(parsed);
    const CommandShape& shape = ShapeOf(request.command);
    return {request.sequence, std::string(shape.word),
            shape.arguments == Arguments::kNone ? std::nullopt : std::optional(request.stream)};
}

} // namespace korvel::audioserver
