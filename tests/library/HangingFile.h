#pragma once

#include <string>

// A file whose opening by any other process waits, as on a disk that does not answer, until this object is
// gone (45 seconds at most, which is what the system allows).
class HangingFile {
public:
    explicit HangingFile(const std::string& path);
    ~HangingFile();
    HangingFile(const HangingFile&) = delete;
    HangingFile& operator=(const HangingFile&) = delete;

private:
    int m_file;
};
