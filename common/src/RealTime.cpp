#include "common/RealTime.h"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

#include <mutex>
#include <string>
#include <system_error>

#include "common/Log.h"

namespace korvel::common {
namespace {

int Schedule(int policy) {
    sched_param priority{};
    priority.sched_priority = ::sched_get_priority_min(policy);
    return ::pthread_setschedparam(::pthread_self(), policy, &priority);
}

void RaiseSoftLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_RTPRIO, &limit) != 0)
        return;
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_RTPRIO, &limit);
}

} // namespace

bool MakeThreadRealTime() {
    static std::once_flag raised;
    std::call_once(raised, RaiseSoftLimit);
    const int failure = Schedule(SCHED_RR);
    if (failure != 0) {
        static std::once_flag told;
        std::call_once(told, [failure] {
            ProgramLog().Warning(
                "no real-time priority for sound: " + std::generic_category().message(failure) +
                " (RLIMIT_RTPRIO); a busy machine may tear it");
        });
    }
    return failure == 0;
}

void MakeThreadOrdinary() {
    Schedule(SCHED_OTHER);
}

} // namespace korvel::common
