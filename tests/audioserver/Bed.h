// An audio server and rooms for one test.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "LineClient.h"
#include "Process.h"
#include "Sound.h"

namespace korvel::tests {

// A room player that records and has no sound device.
class Room {
public:
    // `hindrance`: what is in the player's way, see HinderedPlayer.cpp; "" for nothing.
    // `options`: of the player, besides those that every room has.
    Room(const std::string& folder, const std::string& name, const std::string& hindrance,
         const std::vector<std::string>& options);

    std::uint16_t Port() const { return m_port; }
    // "127.0.0.1 PORT", as "addcli" takes it.
    std::string Client() const;
    const Recording& Heard() const { return m_recording; }
    // Waits until so many seconds of the tone (0: of silence) more than now have been heard.
    bool Hears(int hertz, double seconds) const;
    // The next line that the player reports; "" when none comes.
    std::string NextReport() { return m_process.ReadLine().value_or(""); }
    // What the player has logged so far.
    std::string Log() const { return m_process.Errors(); }
    unsigned Threads() const { return m_process.Threads(); }
    unsigned RealTimeThreads() const { return m_process.RealTimeThreads(); }
    // The exit code of a player that ends by itself.
    int WaitForExit() { return m_process.WaitForExit().value_or(-1); }
    // Ends the player as a service manager would; whether it ended well.
    bool Stop();

private:
    Process m_process;
    Recording m_recording;
    std::uint16_t m_port = 0;
};

class Bed : public testing::Test {
protected:
    Bed();
    ~Bed() override;

    // Started on first use.
    Process& Server();
    std::uint16_t ServerPort();
    std::unique_ptr<LineClient> Connect();
    std::unique_ptr<Room> AddRoom(const std::string& name = "room", const std::string& hindrance = "",
                                  const std::vector<std::string>& options = {});

    // Writes a WAV of the tones and returns its path.
    std::string ToneFile(const std::string& name, const std::vector<Tone>& tones);
    std::string PathOf(const std::string& name) const { return m_folder + "/" + name; }
    // The media text for a path.
    static std::string FileMedia(const std::string& path) { return "\"file:/" + path + "\""; }

    std::string m_serverProgram;
    std::vector<std::string> m_serverOptions;

private:
    std::string m_folder;
    std::unique_ptr<Process> m_server;
    std::uint16_t m_serverPort = 0;
};

// The port at the end of "listening on ADDRESS:PORT"; 0 when the line is another.
std::uint16_t PortOf(const std::string& line);

} // namespace korvel::tests
