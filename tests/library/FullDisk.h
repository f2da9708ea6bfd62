#pragma once

#include <sys/resource.h>

// As long as it lives no file of this process may grow beyond so many bytes, as if the disk were full.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes);
    ~FullDisk();
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*m_signalBefore)(int);
    rlim_t m_before;
};
