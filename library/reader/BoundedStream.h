#pragma once

#include <taglib/tfilestream.h>

namespace korvel::media {

// A file of which the tag library gets no more than limits allow: it makes several copies of what it reads.
// What is beyond is as if it were not there.
class BoundedStream : public TagLib::FileStream {
public:
    // Of a whole file: tags, pictures, and what the library looks at to find the sound.
    static constexpr unsigned long kMaxRead = 64ul << 20;

    explicit BoundedStream(const char* path) : TagLib::FileStream(path, true) {}

    TagLib::ByteVector readBlock(unsigned long length) override;
    // Whether something was left out.
    bool WasBounded() const { return m_bounded; }

private:
    unsigned long m_read = 0;
    bool m_bounded = false;
};

} // namespace korvel::media
