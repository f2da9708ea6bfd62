// One driver with one stream, for what stations and sources do to it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Bed.h"
#include "Station.h"

namespace korvel::tests {

// A header that radio stations send.
inline constexpr const char* kRadio = "icy-pub: 1\r\n";

class StationBed : public Bed {
protected:
    // Makes the driver and the stream.
    void Listen();
    void Play(const std::string& url);
    std::string Status(const std::string& text) const {
        return "* SYS STREAM=" + m_stream + " streamStatus:" + text;
    }
    std::string Info(const std::string& text) const {
        return "* SYS STREAM=" + m_stream + " streamInfo:" + text;
    }
    bool IsBad(const std::string& event, const std::string& reason = "") const {
        return event.starts_with("* addmed BAD=" + m_stream + " " + reason);
    }
    // Events up to this one, which is not among them; it is missing when it does not come.
    std::vector<std::string> EventsUntil(const std::string& last);
    // The last event of a media, whether it ends or fails.
    std::string Failure();
    bool StillPlays();
    bool IsLogged(const std::string& text);

    std::unique_ptr<LineClient> m_driver;
    std::string m_stream;
};

// A pipe that nobody writes to: whoever opens it waits for ever.
class Trap {
public:
    explicit Trap(std::string path);

    const std::string& Path() const { return m_path; }
    // Whether somebody has it open for reading or waits to; lets whoever waits go.
    bool HasVisitor() const;

private:
    std::string m_path;
};

} // namespace korvel::tests
