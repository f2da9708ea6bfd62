// GLib's locks, as the thread sanitizer sees them: they are futexes of GLib's own, which it knows nothing of, so that all
// that GStreamer guards would look like a race. Loaded before GLib; each call goes on to GLib's own function.
#include <dlfcn.h>
#include <glib.h>
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

} // extern "C"
