// Where a source may take its time.
#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace korvel::audioserver {

// The thread in which one source is opened, moved and ended, step by step: each of these may wait for a
// disk, a server or a device, and nobody waits for the thread. When it does not come to its end in time, it
// is abandoned: it and what its steps hold are left alone for as long as they hang, and counted.
//
// Made, used and destroyed on the loop.
class SourceThread {
public:
    using Step = std::function<void()>;
    // `abandoned`: whether the thread goes on without anybody who waits for it.
    using EndNotify = std::function<void(bool abandoned)>;

    // Each is counted for itself: a disk that hangs keeps no station from playing.
    enum class Kind { kFile, kWeb, kInput };

    // Threads of a kind that may hang at one time, and those that may be under way to their end, the ones that
    // hang among them. Beyond either nothing more of the kind is opened.
    static constexpr unsigned kMaxAbandoned = 32;
    static constexpr unsigned kMaxEnding = 256;

    // `patience`: for the end.
    // `device`: what one source at a time can have, "" for none: the first step waits until those that
    // had it before and are being ended have let it go.
    // Throws std::system_error when the machine has no thread left.
    SourceThread(boost::asio::any_io_executor executor, std::chrono::milliseconds patience, Kind kind,
                 std::string device = "");
    // Lets the thread do what it still has to do, unwatched but for the patience. The loop has work until
    // then.
    ~SourceThread();
    SourceThread(const SourceThread&) = delete;
    SourceThread& operator=(const SourceThread&) = delete;

    void Do(Step step);

    // To be called on the loop, once, when the thread has ended or is abandoned.
    void SetEndNotify(EndNotify notify);

    // Whether one more of this kind may be opened.
    static bool HasRoom(Kind kind);

private:
    struct Shared;
    using Endings = std::vector<std::shared_ptr<Shared>>;

    static Endings& DevicesThatEnd();
    static void Run(const std::shared_ptr<Shared>& shared);
    static void RunSteps(Shared& shared);
    static void OnPatienceOver(Shared& shared);

    std::chrono::milliseconds m_patience;
    std::shared_ptr<Shared> m_shared;
};

} // namespace korvel::audioserver
