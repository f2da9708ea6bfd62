// The one seam to the machine: clocks, random numbers, log, assertion records, network addresses.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

namespace kv {

// Implemented by the core and published under kInterfaceId. Called on the driver thread only. Must outlive
// every driver created with it.
class ISystem {
public:
    static constexpr const char* kInterfaceId = "System";

    // Wall clock in seconds since 1970.
    virtual std::uint32_t Time() = 0;
    // Monotonic clock.
    virtual void MonotonicTime(timespec& now) = 0;
    // The next random number, 0 to 2147483647.
    virtual std::int32_t Random() = 0;
    virtual void SeedRandom(std::uint32_t seed) = 0;
    // The model code of the controller; 0 for a plain one.
    virtual std::uint32_t SystemType() = 0;
    // True when the address is an IPv4 address of this controller, the loopback addresses included.
    virtual bool IsLocalIPv4(const std::string& address) = 0;
    virtual void Log(int level, const std::string& text) = 0;
    // A programming error was noticed at a place in a source file; execution goes on.
    virtual void RecordAssert(const std::string& sourcePath, int line, const std::string& stackTrace) = 0;

protected:
    ~ISystem() = default;
};

// Makes `system` the one that the functions below use in this image; null uninstalls it. KVBaseDriver does
// this with the core's. Without one the clocks stand at 0, the random numbers are 0 and nothing is recorded.
void InstallSystem(ISystem* system);
// Uninstalls `system` if it is the installed one.
void UninstallSystem(ISystem* system);

// Wall clock, seconds since 1970, wrapping at 32 bits.
std::uint32_t Time();
// The random source of the standard library: 0 to 2147483647.
std::int32_t Random();
void SeedRandom(std::uint32_t seed);

// The call stack at construction, for assertion records.
class StackTrace {
public:
    StackTrace();
    // One frame a line, innermost first.
    std::string ToString() const;

private:
    static constexpr int kMaxFrames = 32;
    void* m_frames[kMaxFrames];
    int m_count;
};

// Records a failed assertion; execution continues.
void AssertWrite(const std::string& sourcePath, int line, const StackTrace& trace);

} // namespace kv

class KernelX {
public:
    static int gettime(timespec* now);
    static std::uint32_t GetSystemType();
};

class NetworkInterfaces {
public:
    static bool isLocalIPv4(const std::string& address);
};

// Writes a log line. Levels in use: 3 server link and what failed, 6 queue and selection notes, 7 a wrong
// setup and the streaming service's errors.
void LogXMessage(int level, const std::string& text);
