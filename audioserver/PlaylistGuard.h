// Keeps what comes from the network away from this machine's files and devices.
#pragma once

namespace korvel::audioserver {

// From here on GStreamer opens an address by itself only when it is http or https, whatever names it: an
// entry of a playlist, a key, a part of a stream. Any other address fails with a clear reason, unless it is
// opened within a TrustedAddress. Callable more than once, after gst_init().
void GuardPlaylists();

// While one lives, its thread may open any address. For addresses that are this machine's own: a file that
// was asked for, a configured input. What such a medium names in turn is opened by other threads.
class TrustedAddress {
public:
    TrustedAddress();
    ~TrustedAddress();
    TrustedAddress(const TrustedAddress&) = delete;
    TrustedAddress& operator=(const TrustedAddress&) = delete;
};

} // namespace korvel::audioserver
