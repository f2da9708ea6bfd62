// A house to measure: queues that play, each with a room and a list of songs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "BenchCore.h"

namespace bench {

// A command that is made once and given many times.
using Command = kv::auto_com<ICmdMessage>;
Command MakeCommand(const std::string& name, const std::vector<CmdParam>& params);

// The list of `count` songs that starts with song `first`, as ADD_SONG_LIST and EDIT_QUEUE take it.
std::string SongListText(std::uint32_t first, std::uint32_t count);

// The rooms are 1 to the number of queues; room 1 repeats its queue, which stands in front of the others in
// every document.
class House {
public:
    static constexpr std::uint32_t kFirstSong = 100000;
    static constexpr std::uint32_t kFirstStream = 1;

    House(std::uint32_t queues, std::uint32_t songs);

    BenchCore& Core() { return m_core; }
    std::uint32_t GetQueueCount() const { return m_queues; }
    void Run(const Command& command) { m_core.Driver().ExecuteCommand(*command, nullptr, 0); }

private:
    void AddQueue(std::uint32_t roomId, const std::string& songs);

    BenchCore m_core;
    const std::uint32_t m_queues;
};

} // namespace bench
