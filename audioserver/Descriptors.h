// The files, sockets and pipes that the program may have open at one time.
#pragma once

#include <sys/resource.h>

#include <cstddef>

namespace korvel::audioserver {

// What a stream opens without a media, and a media at most, with some to spare; the libraries below end the
// program when they ask for one and there is none.
inline constexpr std::size_t kDescriptorsPerStream = 16;
inline constexpr std::size_t kDescriptorsPerSource = 32;
// Kept for connections and for what runs already.
inline constexpr std::size_t kDescriptorReserve = 64;

// The limit that the program wants where it is this one: as many as the system gives, up to what is enough; never less.
rlimit RaisedLimit(rlimit limit);

// Takes as many as the system gives to a program that asks. To be called once, at the start.
void RaiseDescriptorLimit();

// What something may come to have open, kept free for it for as long as the share lives. Any thread may make and
// destroy one.
class DescriptorShare {
public:
    explicit DescriptorShare(std::size_t count);
    ~DescriptorShare();
    DescriptorShare(const DescriptorShare&) = delete;
    DescriptorShare& operator=(const DescriptorShare&) = delete;

private:
    std::size_t m_count;
};

// Whether so many more can be opened, with the reserve untouched. What the shares are for counts as open: a source
// opens in its thread, long after the next one is asked for.
bool HasDescriptors(std::size_t wanted);

} // namespace korvel::audioserver
