/*
 * BusSelect.cpp: which transport reaches the other applications: the D-Bus session bus
 * (the default) or the in-memory test bus. Switching closes the transport left behind
 * and drops the events still queued from it.
 */
#include "platform/BusTransport.h"
#include "platform/EventService.h"
#include "platform/ServiceResets.h"
#include "platform/TestBus.h"

namespace {

const Tpx1BusMethods *gBus = nullptr;

} // namespace

const Tpx1BusMethods *BusCurrent(void)
{
    if (!gBus) gBus = BusDBusMethods();
    return gBus;
}

static void SwitchBus(const Tpx1BusMethods *next)
{
    const Tpx1BusMethods *previous = BusCurrent();
    if (previous != next) previous->xClose();
    AEQueueClear();
    gBus = next;
}

extern "C" {

void PlatformBusUseMemory(void)
{
    SwitchBus(BusMemoryMethods());
    BusMemoryReset();
}

void PlatformBusUseDBus(void)
{
    SwitchBus(BusDBusMethods());
}

OSErr PlatformBusOpen(void)
{
    return BusCurrent()->xEnsureOpen(true);
}

} // extern "C"

void ResetBusSelection(void)
{
    gBus = nullptr;
}
