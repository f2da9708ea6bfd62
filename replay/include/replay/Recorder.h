// Takes down what a run gives.
#pragma once

#include <concepts>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvel::replay {

// Builds one output line: its name, then its fields from left to right.
class OutputLine {
public:
    explicit OutputLine(std::string_view name) : m_text(name) {}

    OutputLine& Value(std::string_view value);
    OutputLine& Number(std::integral auto number) { return Bare(std::to_string(number)); }
    OutputLine& Flag(bool flag) { return Bare(flag ? "true" : "false"); }
    // key=value
    OutputLine& Pair(std::string_view key, std::string_view value);
    // The rest of the line; an empty text leaves no blank behind.
    OutputLine& Text(std::string_view text);

    const std::string& GetText() const { return m_text; }

private:
    OutputLine& Bare(std::string_view text);

    std::string m_text;
};

// The text with every address in it (0x and hexadecimal digits, or "(nil)") as '@': the same in every run.
std::string MaskAddresses(std::string_view text);

class Recorder {
public:
    // With a stream, which must outlive the recorder, every line is also written there at once, so that a
    // transcript reaches to the very line at which a driver brought the process down.
    explicit Recorder(std::ostream* echo = nullptr) : m_echo(echo) {}

    // An input line as it stands: only echoed.
    void Input(std::string_view line);
    // An input that the world produced by itself, without its '='.
    void WorldInput(std::string_view line);
    void Output(const OutputLine& line);
    // An exception that the driver let out, or another breach of its contract.
    void Fault(std::string_view text);

    // Is told each output line once it is taken down. An output stands for a call of the driver that has not
    // returned yet.
    void SetListener(std::function<void(std::string_view)> listener) { m_listener = std::move(listener); }

    // Nothing is taken down from now on.
    void Mute() { m_muted = true; }
    // The lines since the last call.
    std::vector<std::string> TakeLines();

private:
    void Add(std::string line);
    void Echo(std::string_view line);

    std::ostream* m_echo;
    std::function<void(std::string_view)> m_listener;
    bool m_muted = false;
    std::vector<std::string> m_lines;
};

} // namespace korvel::replay
