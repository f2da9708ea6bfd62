// What the commands that add media share.
#pragma once

#include <vector>

#include "basics/Flags.h"
#include "queue/AudioQueue.h"

namespace commands {

struct AddFlags {
    bool playNow = true;   // starts a queue that does not play
    bool playNext = false; // goes to the media at once
    bool clear = false;    // empties the queue before

    static AddFlags Read(const ICmdMessage& message) {
        return {flags::Read(message, "PLAY_NOW", true), flags::Read(message, "PLAY_NEXT", false),
                flags::Read(message, "CLEAR", false)};
    }
    static AddFlags ReadForQueueAll(const ICmdMessage& message) {
        return {flags::ReadFilled(message, "PLAY_NOW", true), flags::ReadFilled(message, "PLAY_NEXT", false),
                false};
    }
    // A playlist without a word about it plays at once.
    static AddFlags ReadForPlaylist(const ICmdMessage& message) {
        return {flags::ReadUnlessZero(message, "PLAY_NOW"), flags::ReadUnlessZero(message, "PLAY_NEXT"),
                flags::Read(message, "CLEAR", false)};
    }
    void SetAll() { playNow = playNext = clear = true; }
};

// The queue that media is added to; null when the room can have none.
class OpenedQueue {
public:
    OpenedQueue() = default; // none
    OpenedQueue(AudioQueue* queue, bool isNew) : m_queue(queue), m_isNew(isNew) {}

    explicit operator bool() const { return m_queue != nullptr; }
    AudioQueue* Get() const { return m_queue; }
    AudioQueue& operator*() const { return *m_queue; }
    AudioQueue* operator->() const { return m_queue; }
    // A new queue is not started by what is added to it: it plays when its stream is there.
    bool IsNew() const { return m_isNew; }

private:
    AudioQueue* m_queue = nullptr;
    bool m_isNew = false;
};

inline bool PlaysOneStream(const AudioQueue& queue) {
    return queue.IsRhapsodyChannel() || queue.IsInternetRadio();
}

// Songs and a channel exclude each other: the queue becomes what `item` needs. A channel wants to play at
// once.
void EnterModeOf(const AudioMedia& item, AudioQueue& queue, AddFlags& flags);

// Pins `item` as the next one, unless the shuffled order decides, and goes to it.
void GoToItem(const OpenedQueue& queue, const AudioMedia& item);

// The same with the first of `items`; without any, with what comes next.
void GoToFirst(const OpenedQueue& queue, const std::vector<AudioMedia>& items);

} // namespace commands
