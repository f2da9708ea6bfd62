// A queue whose list is changed.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "Outputs.h"
#include "QueueFixture.h"

using Ids = std::vector<std::uint32_t>;

class QueueSongList : public QueueFixture {
protected:
    // Songs 1, 2 and 3, nothing current, nothing pinned.
    void HoldThreeSongs() {
        queue->AddSongList(Songs({1, 2, 3}), false);
        queue->SetNextSong(kNone);
        Out();
    }
    // Turns shuffle on over songs 1, 2 and 3 in the order 1, 2, 3.
    void HoldThreeShuffled() {
        HoldThreeSongs();
        Random("1 2");
        queue->SetShuffle(true);
        queue->SetNextSong(kNone);
        Out();
    }
    void BecomeChannel() {
        queue->SetIsRhapsodyChannel(true);
        queue->AddSong(Channel("st.1"), false, false);
        Out();
    }
    void BecomeRadio() {
        queue->SetIsInternetRadio(true);
        queue->AddSong(Radio(5), false, false);
        Out();
    }
};

inline const Lines kInfoPublished = {"info", "oldInfo"};

// What is published, by name; any other line as it stands.
inline Lines Published(const Lines& lines) {
    Lines names;
    for (const std::string& line : lines) {
        std::istringstream in(line);
        std::string word;
        std::uint32_t id = 0;
        names.push_back(in >> word >> id && word == "set" ? outputs::VariableName(id) : line);
    }
    return names;
}
