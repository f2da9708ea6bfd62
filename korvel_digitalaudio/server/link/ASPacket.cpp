#include "server/link/ASPacket.h"

#include "platform/Text.h"
#include "server/link/Protocol.h"

namespace {

constexpr std::size_t kMaxTokens = 4;
constexpr std::size_t kLineEndLength = 2;
// The shortest event text that is taken: two characters and the line end.
constexpr std::size_t kMinEventText = 4;

std::string WithoutLineEnd(const std::string& text) {
    return text.size() < kLineEndLength ? text : text.substr(0, text.size() - kLineEndLength);
}

} // namespace

void ASPacket::SplitPacket(const std::string& text, const std::string& delimiters,
                           std::vector<std::string>& tokens, int maxTokens) {
    std::size_t start = text.find_first_not_of(delimiters);
    if (start == std::string::npos)
        return;
    for (int left = maxTokens; left != 1; left = left > 1 ? left - 1 : left) {
        const std::size_t end = text.find_first_of(delimiters, start);
        if (end == std::string::npos)
            break;
        tokens.push_back(text.substr(start, end - start));
        start = text.find_first_not_of(delimiters, end);
        if (start == std::string::npos)
            return;
    }
    tokens.push_back(text.substr(start));
}

void ASPacket::FromPacket(const std::string& line) {
    *this = ASPacket();
    std::vector<std::string> tokens;
    SplitPacket(line, " ", tokens, kMaxTokens);
    if (tokens.size() < 2)
        return;
    tokens.resize(kMaxTokens);

    m_sequenceNumber = tokens[0];
    if (m_sequenceNumber == protocol::kEvent)
        ParseEvent(tokens);
    else
        ParseNumbered(tokens);
    m_command = m_command.substr(0, m_command.find_first_of("\r\n"));
}

void ASPacket::ParseEvent(const std::vector<std::string>& tokens) {
    m_command = tokens[1];
    if (tokens[2].empty())
        return;
    const std::size_t equals = tokens[2].find('=');
    if (equals != std::string::npos) {
        m_result = tokens[2].substr(0, equals);
        m_stream = tokens[2].substr(equals + 1);
        if (tokens[3].size() >= kMinEventText)
            m_resultData = WithoutLineEnd(tokens[3]);
    } else if (m_command == protocol::kSystem) {
        m_result = WithoutLineEnd(tokens[3]);
    }
}

// Only OK and NO are results of numbered lines; failures and ends of media come as events.
void ASPacket::ParseNumbered(const std::vector<std::string>& tokens) {
    if (tokens[1] == protocol::kOk || tokens[1] == protocol::kNo) {
        m_result = tokens[1];
        m_command = tokens[2];
        m_stream = tokens[3];
        return;
    }
    m_command = tokens[1];
    const std::size_t equals = tokens[2].find('=');
    if (equals != std::string::npos)
        m_stream = tokens[2].substr(equals + 1);
}

std::uint32_t ASPacket::GetStreamULONG() const {
    return kv::ToULong(m_stream);
}
