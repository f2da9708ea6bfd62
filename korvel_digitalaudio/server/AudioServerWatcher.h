#pragma once

class AudioQueue;

// Told by an audio server when one of its queues comes to rest or plays on. Implemented by the driver.
class AudioServerWatcher {
public:
    virtual void StartClearTimer(AudioQueue* queue) = 0;
    virtual void InterruptClearTimer(AudioQueue* queue) = 0;

protected:
    ~AudioServerWatcher() = default;
};
