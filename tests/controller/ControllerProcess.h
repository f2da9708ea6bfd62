#pragma once

#include <sys/types.h>

#include <string>

#include "TestHouse.h"

namespace korvel::controller {

// The program, running with a configuration in a scratch folder. It is killed at the latest with this object.
class ControllerProcess {
public:
    ControllerProcess(const ScratchFolder& folder, const std::string& config);
    ~ControllerProcess();
    ControllerProcess(const ControllerProcess&) = delete;
    ControllerProcess& operator=(const ControllerProcess&) = delete;

    void Signal(int signal) const;
    // Waits for the end: the exit status, or -1 when a signal ended it.
    int Wait();
    // What it has written to stderr so far.
    std::string Errors() const { return ReadFile(m_errors); }
    // Where it says that it serves the interface; "" before.
    std::string Url() const;

private:
    std::string m_errors;
    pid_t m_process = 0;
};

} // namespace korvel::controller
