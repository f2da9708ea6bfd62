// What a client sends to the controller's HTTP interface, up to what the interface is asked for. The first byte of the
// input tells how many bytes come at a time, the second whether requests are small, or whether one follows that has been
// read already: its target, the end of a line, and its body.
#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>
#include <boost/beast/http/read.hpp>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "actions/Parameters.h"
#include "base/Refused.h"
#include "common/Text.h"
#include "front/http/ApiRequests.h"
#include "front/http/PathPattern.h"
#include "front/http/RequestRules.h"
#include "front/http/StaticFiles.h"

namespace {

using namespace korvel::controller;
namespace asio = boost::asio;
namespace common = korvel::common;
namespace fs = std::filesystem;
namespace http = beast::http;
using boost::system::error_code;
using http::field;
using nlohmann::json;

constexpr std::string_view kAddress = "127.0.0.2";

void Require(bool holds, const char* rule) {
    if (!holds) {
        std::cerr << "broken rule: " << rule << std::endl;
        std::abort();
    }
}

// Bytes, so many at a time, and the end.
class Client {
public:
    Client(std::string_view bytes, std::size_t piece) : m_rest(bytes), m_piece(piece) {}

    template <class Buffers>
    std::size_t read_some(const Buffers& buffers, error_code& error) {
        error = m_rest.empty() ? asio::error::eof : error_code();
        const std::size_t count = asio::buffer_copy(buffers, asio::buffer(m_rest.substr(0, m_piece)));
        m_rest.remove_prefix(count);
        return count;
    }

    template <class Buffers>
    std::size_t read_some(const Buffers& buffers) {
        error_code error;
        const std::size_t count = read_some(buffers, error);
        if (error)
            throw boost::system::system_error(error);
        return count;
    }

private:
    std::string_view m_rest;
    std::size_t m_piece;
};

struct Limits {
    std::uint32_t header = RequestReader::kMaxHeader;
    std::uint64_t body = RequestReader::kMaxBody;
};

struct Talk {
    std::vector<RequestReader::Request> requests;
    unsigned status = 0; // of what cannot be read; 0 when the connection just ends
};

Talk Listen(std::string_view bytes, std::size_t piece, const Limits& limits) {
    Client client(bytes, piece);
    RequestReader reader(limits.header, limits.body);
    Talk talk;
    for (bool goesOn = true; goesOn;) {
        reader.Start();
        error_code error;
        std::size_t count = 0;
        do
            count = http::read_some(client, reader.GetBuffer(), reader.GetParser(), error);
        while (!reader.OnRead(error, count));
        if (error) {
            const auto reply = ReplyToUnreadable(error);
            talk.status = reply ? reply->status : 0;
            return talk;
        }
        goesOn = Judge(reader.Get(), kAddress).keepAlive;
        talk.requests.push_back(reader.Release());
    }
    return talk;
}

std::string View(beast::string_view text) {
    return {text.data(), text.size()};
}

std::string Print(const RequestReader::Request& request) {
    std::string text = View(request.method_string()) + " " + View(request.target()) + " " +
                       std::to_string(request.version()) + "\n";
    for (const auto& one : request)
        text += View(one.name_string()) + ":" + View(one.value()) + "\n";
    return text + "\n" + request.body();
}

// Which of the limits a request that goes beyond several is refused for is a matter of which piece comes first.
bool AreSame(const Talk& a, const Talk& b) {
    const bool bothRefused = a.status != 0 && b.status != 0;
    return (a.status == b.status || bothRefused) &&
           std::ranges::equal(a.requests, b.requests, {}, Print, Print);
}

void CheckLimits(const RequestReader::Request& request, const Limits& limits) {
    std::size_t header = request.method_string().size() + request.target().size() + 14;
    for (const auto& one : request)
        header += one.name_string().size() + one.value().size() + 3;
    Require(header <= limits.header, "a header has a limit");
    Require(request.body().size() <= limits.body, "a body has a limit");
}

std::string Lower(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// "name:port", the port without zeros before it; "" for anything else.
std::string ServerOf(const std::string& host) {
    const std::size_t colon = std::min(host.find(':'), host.size());
    const std::string port = colon == host.size() ? "80" : host.substr(colon + 1);
    if (port.empty() || !std::ranges::all_of(port, [](unsigned char c) { return std::isdigit(c); }))
        return "";
    return Lower(host.substr(0, colon)) + ":" +
           port.substr(std::min(port.find_first_not_of('0'), port.size()));
}

void CheckHeader(const RequestReader::Request& request, bool mayBeForeign) {
    for (const field name : {field::host, field::origin, field::content_type, field::content_length})
        Require(request.count(name) <= 1, "a request is judged by what it says once");
    Require(request.count(field::content_length) + request.count(field::transfer_encoding) <= 1,
            "the end of a body is said once");
    Require(request.count(field::transfer_encoding) == 0 || request.chunked(),
            "a body comes plain or in pieces");
    const std::string server = ServerOf(View(request[field::host]));
    const std::string name = server.substr(0, server.find(':'));
    Require(name == "localhost" || name == "127.0.0.1" || name == kAddress,
            "only this machine's names lead here");
    const std::string origin = View(request[field::origin]);
    Require(mayBeForeign || origin.empty() ||
                (origin.starts_with("http://") && ServerOf(origin.substr(7)) == server),
            "pages of others change nothing and hear nothing");
}

std::string Encode(std::string_view text) {
    static constexpr std::string_view kDigits = "0123456789abcdef";
    std::string encoded;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        encoded.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
    return encoded;
}

void CheckTarget(const Target& target) {
    std::string again;
    for (const std::string& segment : target.path)
        again += "/" + Encode(segment);
    again += "/?";
    for (const auto& [name, value] : target.query) {
        again += Encode(name) + "=" + Encode(value) + "&";
        Require(target.Text(name) == value, "what a target asks is found by its name");
        if (const auto number = target.Number(name, 0))
            Require(*number <= kMaxNumber, "a number has a limit");
    }
    const auto parsed = ParseTarget(again);
    Require(parsed && parsed->path == target.path && parsed->query == target.query,
            "a target is read as it was written");
    Require(again.find("%00") == std::string::npos, "a target holds no end of a text");
}

// A page, with something beside it that is nobody's business.
class Page {
public:
    Page() {
        std::string name = (fs::temp_directory_path() / "korvel-fuzz-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
            std::abort();
        m_top = name;
        fs::create_directories(m_top / "web" / "a");
        fs::create_directories(m_top / "web" / "f" / "index.html");
        std::ofstream(m_top / "web" / "index.html") << "page";
        std::ofstream(m_top / "web" / "a" / "b.js") << "page";
        std::ofstream(m_top / "web" / ".c") << "secret";
        std::ofstream(m_top / "d") << "secret";
        fs::create_symlink("..", m_top / "web" / "e");
    }
    ~Page() {
        std::error_code ignored;
        fs::remove_all(m_top, ignored);
    }
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    std::string GetFolder() const { return m_top / "web"; }

private:
    fs::path m_top;
};

void CheckPage(const Target& target) {
    static const Page page;
    const HttpReply reply = ServeFile(page.GetFolder(), target);
    Require(reply.status == 404 || (reply.status == 200 && reply.body == "page"),
            "a page is all that is served");
}

void CheckReply(const HttpReply& reply) {
    const json body = json::parse(reply.body);
    const auto text = body.at("error").get<std::string>();
    Require(!text.empty() && !common::HasControl(text), "a refusal is one line");
    Require(reply.body.size() <= 8192, "a refusal is short");
}

void CheckCommand(const json& body) {
    const auto message = ReadMessage(body);
    Require(message->GetParamCount() <= 100, "parameters have a limit");
    CheckParameters(*message);
    const bool isStation = message->GetName() == "ADD_IR_STREAM";
    for (std::size_t i = 0; i < message->GetParamCount(); ++i) {
        const CmdParam& param = message->GetParamAt(i);
        Require(!param.name.empty() && param.name.size() <= 100, "a parameter has a name");
        if (param.name == "MEDIA_ID" || (isStation && param.name == "MEDIA"))
            Require(common::IsReference(param.value), "media are named by a reference");
        else if (param.name != "MEDIA")
            Require(!common::HasControl(param.value), "a text is a line");
    }
}

void CheckNumbers(const std::vector<std::uint32_t>& numbers) {
    Require(std::ranges::all_of(numbers, [](std::uint32_t number) { return number <= kMaxNumber; }),
            "a number has a limit");
}

void CheckBody(const std::vector<std::string>& path, const HttpRequest& request) {
    const json body = ParseBody(request);
    Require(body.is_object(), "a body is an object");
    const std::string& action = path.back();
    if (action == "command" || action == "request") {
        CheckCommand(body);
    } else if (action == "announce") {
        CheckNumbers(ReadAnnouncement(body).rooms);
    } else if (action == "save-playlist") {
        const PlaylistOrder order = ReadPlaylist(body);
        Require(!order.title.empty() && !common::HasControl(order.title), "a playlist has a title");
        CheckNumbers(order.songs);
    } else if (action == "select") {
        const SelectOrder order = ReadSelect(body);
        Require(!order.join || order.queue == 0, "a room joins a room or hears a queue");
        CheckNumbers({order.join.value_or(0), order.queue});
    } else {
        ReadNothing(body);
        Require(body.empty(), "what takes nothing is given nothing");
    }
}

void CheckMatch(const std::vector<std::string>& path) {
    const auto values = MatchPath("/api/rooms/{id}/select", path);
    const bool fits = path.size() == 4 && path[1] == "rooms" && path[3] == "select";
    Require(values.has_value() == fits, "a pattern stands for the paths that it shows");
    Require(!fits || values->at("id") == path[2], "a placeholder is what stands in its place");
}

void CheckServed(const HttpRequest& request) {
    const auto target = ParseTarget(request.target);
    if (!target)
        return;
    CheckTarget(*target);
    const auto& path = target->path;
    if (path.empty() || path[0] != "api") {
        CheckPage(*target);
        return;
    }
    CheckMatch(path);
    try {
        CheckBody(path, request);
    } catch (const Refused& refused) {
        CheckReply(ErrorReply(400, refused.what()));
    }
}

void Check(const RequestReader::Request& request) {
    const Verdict verdict = Judge(request, kAddress);
    switch (verdict.kind) {
        case Verdict::Kind::Refuse:
            Require(verdict.refusal.status >= 400, "a refusal says so");
            CheckReply(verdict.refusal);
            break;
        case Verdict::Kind::Listen:
            CheckHeader(request, false);
            Require(request.target() == "/api/events", "the events are at one place");
            break;
        case Verdict::Kind::Serve:
            CheckHeader(request, request.method() == http::verb::get);
            CheckServed(PlainRequest(request));
            break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size < 3)
        return 0;
    const std::string_view sent(reinterpret_cast<const char*>(bytes) + 2, size - 2);
    if ((bytes[1] & 2) != 0) {
        const std::size_t end = std::min(sent.find('\n'), sent.size() - 1);
        CheckServed({"POST", std::string(sent.substr(0, end)), "application/json",
                     std::string(sent.substr(end + 1))});
        return 0;
    }
    const Limits limits = bytes[1] % 2 != 0 ? Limits{256, 64} : Limits{};
    const Talk talk = Listen(sent, 1 + bytes[0], limits);
    Require(AreSame(talk, Listen(sent, size, limits)), "how many bytes come at a time does not matter");
    for (const RequestReader::Request& request : talk.requests) {
        CheckLimits(request, limits);
        Check(request);
    }
    return 0;
}
