/*
 * Clock.cpp: TickCount, 60 ticks a second from CLOCK_MONOTONIC, and the manual clock
 * that tests use instead of sleeping.
 */
#include "platform/Services.h"
#include "platform/ServiceResets.h"

#include <atomic>
#include <time.h>

namespace {

uint32_t RealTicks(void)
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    uint64_t ticks = (uint64_t)ts.tv_sec * 60u + (uint64_t)ts.tv_nsec * 60u / 1000000000u;
    return (uint32_t)ticks;
}

std::atomic<uint32_t> gManualNow{0};
std::atomic<uint32_t> gManualStep{0};

uint32_t ManualTicks(void)
{
    return gManualNow.fetch_add(gManualStep.load(std::memory_order_relaxed), std::memory_order_relaxed);
}

const Tpx1ClockMethods gRealClock = {RealTicks};
const Tpx1ClockMethods gManualClock = {ManualTicks};
std::atomic<const Tpx1ClockMethods *> gClock{&gRealClock};

} // namespace

extern "C" {

const Tpx1ClockMethods *PlatformInstallClock(const Tpx1ClockMethods *methods)
{
    return gClock.exchange(methods ? methods : &gRealClock);
}

uint32_t TickCount(void)
{
    return gClock.load(std::memory_order_acquire)->xTicks();
}

void PlatformClockUseManual(uint32_t start, uint32_t step)
{
    gManualNow.store(start);
    gManualStep.store(step);
    PlatformInstallClock(&gManualClock);
}

void PlatformClockAdvance(uint32_t ticks)
{
    gManualNow.fetch_add(ticks);
}

void PlatformClockUseReal(void)
{
    PlatformInstallClock(&gRealClock);
}

} // extern "C"

void ResetClock(void)
{
    PlatformInstallClock(&gRealClock);
    gManualNow.store(0);
    gManualStep.store(0);
}
