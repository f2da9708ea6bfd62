// What the controller and the program that reads files for it say to each other: records of texts, each
// behind its length. Neither believes the other: a record that is too long or does not add up ends the talk.
#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace korvel::media {

using Record = std::vector<std::string>;

// The most bytes of a record: a picture of the largest size, or the names in a folder, fit in.
inline constexpr std::size_t kMaxRecordBytes = 20u << 20;

class BadRecord : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The bytes of the record. Throws BadRecord when it is too long.
std::string EncodeRecord(const Record& record);

// Takes bytes as they come and gives records.
class RecordReader {
public:
    void Add(std::string_view bytes) { m_bytes.append(bytes); }
    // The next record, none while it is not complete. Throws BadRecord.
    std::optional<Record> Next();

private:
    std::string m_bytes;
};

} // namespace korvel::media
