// What the programs do with any text from outside: lines out of bytes, addresses, cuts, numbers. The first byte of the
// input is the longest line, the second how many bytes come at a time.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "common/Address.h"
#include "common/Lines.h"
#include "common/Text.h"

namespace {

using namespace korvel::common;

void Require(bool holds, const char* rule) {
    if (!holds) {
        std::cerr << "broken rule: " << rule << std::endl;
        std::abort();
    }
}

struct Talk {
    std::vector<Line> lines;
    bool isInLine = false;
};

Talk Listen(LineSplitter& splitter, std::string_view bytes, std::size_t piece) {
    Talk talk;
    while (!bytes.empty()) {
        const std::string_view part = bytes.substr(0, piece);
        splitter.Add(part);
        bytes.remove_prefix(part.size());
        while (auto line = splitter.Take())
            talk.lines.push_back(std::move(*line));
    }
    talk.isInLine = splitter.IsInLine();
    return talk;
}

bool AreSame(const Talk& a, const Talk& b) {
    return a.isInLine == b.isInLine && std::ranges::equal(a.lines, b.lines, [](const Line& x, const Line& y) {
               return x.bytes == y.bytes && x.tooLong == y.tooLong;
           });
}

// The text of a line without its end, of one or two bytes.
std::string_view TextOf(std::string_view line) {
    return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
}

void CheckLines(std::string_view rest, const Talk& talk, std::size_t most) {
    bool hasEnded = true; // the last of the lines
    for (const Line& line : talk.lines) {
        const std::size_t end = rest.find('\n');
        hasEnded = end != std::string_view::npos;
        const std::string_view text = TextOf(rest.substr(0, end));
        Require(hasEnded || line.tooLong, "a line has ended");
        Require(line.tooLong == (text.size() > most), "a line has its longest length");
        Require(line.GetText() == text.substr(0, most), "lines are what came, in its order");
        Require(IsOneLine(line.bytes, most) == (!line.tooLong && !HasControl(line.GetText())),
                "one line is a line without control characters");
        rest.remove_prefix(hasEnded ? end + 1 : rest.size());
    }
    Require(rest.find('\n') == std::string_view::npos, "no line is lost");
    Require(TextOf(rest).size() <= most, "no line is longer than its longest");
    Require(talk.isInLine == (!hasEnded || !rest.empty()), "a line that has begun is known");
}

void CheckServer(const HostPort& server) {
    Require(!server.host.empty() && !HasControl(server.host) && server.port != 0,
            "an address has a host and a port");
    Require(server.host.find_first_of(" \"/@?#[]%") == std::string::npos, "a host is a name");
    Require(ParseHostPort(ToText(server)) == server, "an address is read as it was written");
    Require(IsSameHost(server.host, server.host), "a host is itself");
}

// Its beginning, whatever its port.
std::string HostOf(const HostPort& server) {
    const std::string text = ToText(server);
    return text.substr(0, text.rfind(':'));
}

void CheckAddress(const std::string& text) {
    const auto server = ParseHostPort(text);
    if (server) {
        CheckServer(*server);
        Require(text.starts_with(HostOf(*server) + ":"), "an address begins with its host");
        Require(ParseHost(text, 80) == server, "a port that is written counts");
    }
    if (const auto host = ParseHost(text, 80)) {
        CheckServer(*host);
        Require(text.starts_with(HostOf(*host)), "an address begins with its host");
        Require(server || host->port == 80, "a port that is not written is the standard one");
    }
    const auto web = ParseWebAddress(text);
    if (!web)
        return;
    CheckServer(web->server);
    Require(FitsInQuotes(text) && text.find(' ') == std::string::npos, "a web address is one word of a line");
    Require(web->target.empty() || std::string_view("/?#").find(web->target[0]) != std::string_view::npos,
            "behind the server comes a path");
    const auto again =
        ParseWebAddress((web->secure ? "https://" : "http://") + ToText(web->server) + web->target);
    Require(
        again && again->secure == web->secure && again->server == web->server && again->target == web->target,
        "a web address is read as it was written");
}

bool IsContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

// Whether it consists of whole characters.
bool IsWhole(std::string_view text) {
    while (!text.empty()) {
        const auto lead = static_cast<unsigned char>(text[0]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xC0 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        if (length == 0 || lead >= 0xF8 || text.size() < length ||
            !std::ranges::all_of(text.substr(1, length - 1), IsContinuation))
            return false;
        text.remove_prefix(length);
    }
    return true;
}

void CheckCut(const std::string& text, std::size_t most) {
    const std::string_view cut = CutText(text, most);
    Require(text.starts_with(cut) && cut.size() <= most, "a cut text is a beginning of its length");
    Require(cut.size() + 3 >= std::min(text.size(), most), "no more is cut off than a character");
    Require(!IsWhole(text) || IsWhole(cut), "no character is cut in half");
    const std::string line = OneLine(text, most);
    Require(line.size() <= most && !HasControl(line), "one line has its length and no control characters");
    Require(!line.starts_with(' ') && !line.ends_with(' '), "one line has no blanks at its ends");
    Require(!IsWhole(text) || IsWhole(line), "one line has whole characters");
    Require(OneLine(line, most) == line, "one line stays as it is");
    Require(IsOneLine(line + "\r\n", most), "one line is a line");
}

void CheckText(const std::string& text) {
    Require(!IsReference(text) || (FitsInQuotes(text) && text.size() <= kMaxReferenceBytes),
            "a reference fits in quotes");
    if (FitsInQuotes(text)) {
        const auto quoted = '"' + text + "\"\n";
        Require(IsOneLine(quoted, quoted.size()) && std::ranges::count(quoted, '"') == 2,
                "what fits in quotes is one word of a line");
    }
    if (const auto number = ParseNumber(text)) {
        const std::size_t digits = std::min(text.find_first_not_of('0'), text.size() - 1);
        Require(std::to_string(*number) == text.substr(digits), "a number is read as it is written");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size < 2)
        return 0;
    const std::size_t most = bytes[0];
    const std::string_view text(reinterpret_cast<const char*>(bytes) + 2, size - 2);
    LineSplitter splitter(most);
    const Talk talk = Listen(splitter, text, 1 + bytes[1]);
    splitter.Clear();
    Require(AreSame(talk, Listen(splitter, text, size)),
            "neither how many bytes come at a time matters nor what came before");
    CheckLines(text, talk, most);
    const std::string whole(text);
    CheckCut(whole, most);
    CheckText(whole);
    LineSplitter each(size);
    for (const Line& line : Listen(each, whole + "\n", size).lines) {
        const std::string one(line.GetText());
        CheckAddress(one);
        CheckText(one);
    }
    return 0;
}
