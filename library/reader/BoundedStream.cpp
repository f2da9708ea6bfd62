#include "BoundedStream.h"

#include <algorithm>

#include "library/FileReader.h"

namespace korvel::media {

TagLib::ByteVector BoundedStream::readBlock(unsigned long length) {
    // A length that a file states may be any number.
    const auto there = static_cast<unsigned long>(std::max(this->length() - tell(), 0L));
    const unsigned long wanted = std::min(length, there);
    if (wanted > kMaxTagBlock || m_read + wanted > kMaxRead) {
        m_bounded = true;
        return {};
    }
    m_read += wanted;
    return TagLib::FileStream::readBlock(wanted);
}

} // namespace korvel::media
