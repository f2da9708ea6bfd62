// GLib's locks, and where GStreamer hands things from thread to thread, as the thread sanitizer sees them: they are futexes
// and atomic operations of libraries that are not built with it, so that all that they guard would look like a race. Loaded
// before both; each call goes on to the library's own function.
#include <dlfcn.h>
#include <glib.h>
#include <gst/gst.h>
#include <sanitizer/tsan_interface.h>

namespace {

// GLib locks while the program is loaded, before the sanitizer is there.
bool ready = false;

[[gnu::constructor]] void BecomeReady() {
    ready = true;
}

void Taken(void* lock) {
    if (ready)
        __tsan_acquire(lock);
}

void GivenBack(void* lock) {
    if (ready)
        __tsan_release(lock);
}

template <class Function>
Function* Real(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

#define REAL(name) static const auto real = Real<decltype(name)>(#name)

#define LOCKS(prefix, Lock, lock, trylock, unlock) \
    void prefix##lock(Lock* object) {              \
        REAL(prefix##lock);                        \
        real(object);                              \
        Taken(object);                             \
    }                                              \
    gboolean prefix##trylock(Lock* object) {       \
        REAL(prefix##trylock);                     \
        const gboolean taken = real(object);       \
        if (taken)                                 \
            Taken(object);                         \
        return taken;                              \
    }                                              \
    void prefix##unlock(Lock* object) {            \
        REAL(prefix##unlock);                      \
        GivenBack(object);                         \
        real(object);                              \
    }

extern "C" {

LOCKS(g_mutex_, GMutex, lock, trylock, unlock)
LOCKS(g_rec_mutex_, GRecMutex, lock, trylock, unlock)
LOCKS(g_rw_lock_, GRWLock, writer_lock, writer_trylock, writer_unlock)
LOCKS(g_rw_lock_, GRWLock, reader_lock, reader_trylock, reader_unlock)

void g_cond_wait(GCond* condition, GMutex* mutex) {
    REAL(g_cond_wait);
    GivenBack(mutex);
    real(condition, mutex);
    Taken(mutex);
}

gboolean g_cond_wait_until(GCond* condition, GMutex* mutex, gint64 end) {
    REAL(g_cond_wait_until);
    GivenBack(mutex);
    const gboolean signalled = real(condition, mutex, end);
    Taken(mutex);
    return signalled;
}

// What is set up before a pipeline is told to run is there for its threads, which are taken out of a pool.
GstStateChangeReturn gst_element_set_state(GstElement* element, GstState state) {
    REAL(gst_element_set_state);
    GivenBack(&ready);
    const GstStateChangeReturn result = real(element, state);
    Taken(&ready);
    return result;
}

// A queue hands a buffer on to another thread, which pushes it in its turn.
GstFlowReturn gst_pad_push(GstPad* pad, GstBuffer* buffer) {
    REAL(gst_pad_push);
    Taken(&ready);
    Taken(buffer);
    GivenBack(buffer);
    return real(pad, buffer);
}

// Who lets go last frees what the others have read.
void gst_mini_object_unref(GstMiniObject* object) {
    REAL(gst_mini_object_unref);
    GivenBack(object);
    Taken(object);
    real(object);
}

void gst_bus_set_sync_handler(GstBus* bus, GstBusSyncHandler handler, gpointer data, GDestroyNotify notify) {
    REAL(gst_bus_set_sync_handler);
    GivenBack(bus);
    Taken(bus);
    real(bus, handler, data, notify);
}

gboolean gst_bus_post(GstBus* bus, GstMessage* message) {
    REAL(gst_bus_post);
    Taken(bus);
    GivenBack(message);
    const gboolean posted = real(bus, message);
    GivenBack(bus);
    return posted;
}

GstMessage* gst_bus_timed_pop_filtered(GstBus* bus, GstClockTime timeout, GstMessageType types) {
    REAL(gst_bus_timed_pop_filtered);
    GstMessage* const message = real(bus, timeout, types);
    if (message)
        Taken(message);
    return message;
}

} // extern "C"
