#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class ASPacketBase;
class IDriverHelper;
class IInstanceManager;
struct AudioMedia;

// One line from an audio server, taken apart. A line that makes no sense yields empty fields, never an error.
class ASPacket {
public:
    ASPacket() = default;
    explicit ASPacket(const std::string& line) { FromPacket(line); }

    // Clears the fields and parses `line` into them; the line may still carry its line end.
    void FromPacket(const std::string& line);

    // Cuts `text` at runs of characters of `delimiters` and appends the pieces to `tokens`; leading and
    // trailing delimiters give no piece. With a positive `maxTokens` the last piece is the whole rest of the
    // text.
    static void SplitPacket(const std::string& text, const std::string& delimiters,
                            std::vector<std::string>& tokens, int maxTokens);

    // The number that the server echoes, or "*" for an event.
    std::string GetSequenceNumber() const { return m_sequenceNumber; }
    // What the line answers or reports on, without a line end.
    std::string GetCommand() const { return m_command; }
    std::string GetResult() const { return m_result; }
    // As it stood in the line, which may include the line end.
    std::string GetStream() const { return m_stream; }
    // The stream as a number, 0 when there is none.
    std::uint32_t GetStreamULONG() const;
    std::string GetResultData() const { return m_resultData; }

    // The packet that makes an audio server play `media`, for a stream not yet known; null when the media
    // cannot be streamed (queue/CreateAddMedia.cpp). `broadcast` asks for the broadcast address of the media
    // instead of its file. May ask a storage device for its mount path, unless `isWanted` says by then that
    // nobody waits for the packet any more.
    static std::unique_ptr<ASPacketBase> CreateAddMedia(
        IDriverHelper& driverHelper, IInstanceManager& instances, const AudioMedia& media, bool broadcast,
        const std::function<bool()>& isWanted = [] { return true; });

private:
    void ParseEvent(const std::vector<std::string>& tokens);
    void ParseNumbered(const std::vector<std::string>& tokens);

    std::string m_sequenceNumber;
    std::string m_command;
    std::string m_result;
    std::string m_stream;
    std::string m_resultData;
};
