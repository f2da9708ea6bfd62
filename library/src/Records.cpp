#include "Records.h"

#include <cstdint>

namespace korvel::media {

namespace {

// Lengths are four bytes, the lowest first.
constexpr std::size_t kLengthBytes = 4;

void AppendLength(std::string& out, std::size_t length) {
    for (std::size_t i = 0; i < kLengthBytes; ++i)
        out += static_cast<char>((length >> (8 * i)) & 0xFF);
}

std::size_t LengthAt(std::string_view bytes) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < kLengthBytes; ++i)
        length |= static_cast<std::size_t>(static_cast<unsigned char>(bytes[i])) << (8 * i);
    return length;
}

} // namespace

std::string EncodeRecord(const Record& record) {
    std::string out(kLengthBytes, '\0');
    for (const std::string& text : record) {
        if (out.size() + text.size() > kMaxRecordBytes)
            throw BadRecord("a record is too long");
        AppendLength(out, text.size());
        out += text;
    }
    std::string length;
    AppendLength(length, out.size() - kLengthBytes);
    return out.replace(0, kLengthBytes, length);
}

std::optional<Record> RecordReader::Next() {
    if (m_bytes.size() < kLengthBytes)
        return std::nullopt;
    const std::size_t length = LengthAt(m_bytes);
    if (length > kMaxRecordBytes)
        throw BadRecord("a record is too long");
    if (m_bytes.size() < kLengthBytes + length)
        return std::nullopt;
    std::string_view rest = std::string_view(m_bytes).substr(kLengthBytes, length);
    Record record;
    while (!rest.empty()) {
        if (rest.size() < kLengthBytes || rest.size() - kLengthBytes < LengthAt(rest))
            throw BadRecord("a record does not add up");
        const std::size_t size = LengthAt(rest);
        record.emplace_back(rest.substr(kLengthBytes, size));
        rest.remove_prefix(kLengthBytes + size);
    }
    m_bytes.erase(0, kLengthBytes + length);
    return record;
}

} // namespace korvel::media
