/*
 * BusDBusConnection.cpp: the private connection to the D-Bus session bus and the D-Bus
 * transport table. The connection is opened on first need, owns this process's
 * signature name, is read without ever blocking (AEGetEventFD / AEProcessEvents), and is
 * flushed and closed at exit. A lost connection makes sends fail with connectionInvalid
 * until a handler install or a new signature opens it again.
 */
#include "platform/BusDBus.h"
#include "platform/EventService.h"
#include "platform/ServiceResets.h"
#include "platform/Toolbox.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>

namespace {

enum BusState { kBusNeverOpened, kBusOpen, kBusLost };

sd_bus *gBus = nullptr;
sd_bus_slot *gObjectSlot = nullptr;
sd_bus_slot *gFilterSlot = nullptr;
sd_bus_slot *gNamesSlot = nullptr;
BusState gState = kBusNeverOpened;
bool gExitHookSet = false;          /* kept by PlatformResetAll: the hook is set once */
bool gWarnedNoBus = false;
uint64_t gLastDrainUsec = 0;        /* when the last drain ended; 0 on a new connection */

void ReleaseConnection(bool flush)
{
    if (!gBus) return;
    gObjectSlot = sd_bus_slot_unref(gObjectSlot);
    gFilterSlot = sd_bus_slot_unref(gFilterSlot);
    gNamesSlot = sd_bus_slot_unref(gNamesSlot);
    if (flush) {
        sd_bus_flush_close_unref(gBus);
    } else {
        sd_bus_close(gBus);
        sd_bus_unref(gBus);
    }
    gBus = nullptr;
    gLastDrainUsec = 0;
    BusDBusForgetNames();
    AEQueueWatchBusFD(-1);
}

void CloseAtExit(void)
{
    /* Events still queued hold their bus message (and through it the connection):
     * answer and free them first, or they outlive the process's last flush. */
    AEQueueClear();
    ReleaseConnection(true);
    gState = kBusNeverOpened;
}

bool IsDisconnect(int r)
{
    return r == -ENOTCONN || r == -ECONNRESET || r == -EPIPE || r == -ESHUTDOWN || r == -ECONNREFUSED ||
           r == -EBADF;
}

/* Asks for the well-known name of signature; a name owned by another process is not
 * taken from it. */
void RequestOwnName(OSType signature)
{
    if (!gBus || !signature) return;
    char name[32];
    PlatformBusNameForSignature(signature, name);
    int r = sd_bus_request_name(gBus, name, 0);
    if (r < 0) {
        if (r == -EEXIST)
            fprintf(stderr,
                    "%s: the bus name %s belongs to another process: other applications refuse the events "
                    "this one sends as '%s'\n",
                    program_invocation_short_name, name, BusDBusPrintableCode(signature).c_str());
        else BusDBusFailure(r);
        return;
    }
    BusDBusNoteOwnName(signature, true);
    BusDBusDrain();
}

void ReleaseOwnName(OSType signature)
{
    if (!gBus || !signature) return;
    char name[32];
    PlatformBusNameForSignature(signature, name);
    int r = sd_bus_release_name(gBus, name);
    if (r < 0) BusDBusFailure(r);
    BusDBusNoteOwnName(signature, false);
}

OSErr Open(void)
{
    sd_bus *bus = nullptr;
    int r = sd_bus_open_user(&bus);
    if (r < 0) {
        if (!gWarnedNoBus) fprintf(stderr, "%s: no D-Bus session bus: %s\n", program_invocation_short_name, strerror(-r));
        gWarnedNoBus = true;
        return connectionInvalid;
    }
    gBus = bus;
    gState = kBusOpen;
    gWarnedNoBus = false;
    if (BusDBusAddObject(bus, &gObjectSlot, &gFilterSlot) < 0 || BusDBusWatchNames(bus, &gNamesSlot) < 0) {
        ReleaseConnection(false);
        gState = kBusLost;
        return connectionInvalid;
    }
    if (!gExitHookSet) {
        atexit(CloseAtExit);
        gExitHookSet = true;
    }
    AEQueueWatchBusFD(sd_bus_get_fd(bus));
    RequestOwnName(PlatformProcessSignature());
    if (!gBus) return connectionInvalid;
    BusDBusLoadNames(bus);
    return gBus ? noErr : connectionInvalid;
}

/* ---- The transport table ---- */

OSErr DBusEnsureOpen(bool reconnect)
{
    return BusDBusEnsure(reconnect);
}

void DBusSignatureChanged(OSType oldSignature, OSType newSignature)
{
    if (oldSignature == newSignature && gBus) return;
    if (gBus && oldSignature) ReleaseOwnName(oldSignature);
    if (!newSignature) return;
    if (gBus) RequestOwnName(newSignature);
    else BusDBusEnsure(true);
}

int DBusGetFD(void)
{
    return gBus ? sd_bus_get_fd(gBus) : -1;
}

void DBusPump(void)
{
    BusDBusDrain();
    for (int32_t n = BusDBusTakeActivations(); n > 0; n--) ProcessCallActivateHandler();
    BusDBusReapChildren();
    BusDBusReportRefusals();
}

bool DBusPending(void)
{
    uint64_t queued = 0;
    if (gBus && sd_bus_get_n_queued_read(gBus, &queued) >= 0 && queued > 0) return true;
    return BusDBusActivationsPending();
}

OSErr DBusLaunch(const std::string &executable, const std::string &document, OSType expected,
                 ProcessSerialNumber *psn)
{
    return BusDBusLaunch(executable, document, expected, psn);
}

void DBusClose(void)
{
    PlatformBusClose();
}

const Tpx1BusMethods kDBusMethods = {
    DBusEnsureOpen,       DBusSignatureChanged, BusDBusSendEvent, DBusGetFD,  DBusPump, DBusPending,
    BusDBusListProcesses, BusDBusProcessInfo,   BusDBusActivate,  DBusLaunch, DBusClose,
};

} // namespace

const Tpx1BusMethods *BusDBusMethods(void)
{
    return &kDBusMethods;
}

sd_bus *BusDBusConnection(void)
{
    return gBus;
}

OSErr BusDBusEnsure(bool reconnect)
{
    if (gBus) return noErr;
    if (gState == kBusLost && !reconnect) return connectionInvalid;
    return Open();
}

OSErr BusDBusFailure(int r)
{
    if (!IsDisconnect(r) && !(gBus && !sd_bus_is_open(gBus))) return PlatformErrnoToOSErr(-r);
    /* Said once, when it happens: from here on every send fails and nothing arrives. */
    if (gBus)
        fprintf(stderr,
                "%s: lost the D-Bus connection (%s): messaging with other applications stopped; "
                "TPX1InitIAC (installing the event handler) starts it again\n",
                program_invocation_short_name, strerror(-r));
    ReleaseConnection(false);
    gState = kBusLost;
    return connectionInvalid;
}

void BusDBusDrain(void)
{
    while (gBus) {
        int r = sd_bus_process(gBus, nullptr);
        if (r < 0) {
            BusDBusFailure(r);
            return;
        }
        if (r == 0) break;
    }
    if (gBus && !sd_bus_is_open(gBus)) BusDBusFailure(-ECONNRESET);
    gLastDrainUsec = BusDBusNowUsec();
}

void BusDBusDrainUnlessFresh(uint64_t maxAgeUsec)
{
    if (gLastDrainUsec && BusDBusNowUsec() - gLastDrainUsec < maxAgeUsec) return;
    BusDBusDrain();
}

void BusDBusFlush(void)
{
    if (!gBus) return;
    if (!(sd_bus_get_events(gBus) & POLLOUT)) return;
    int r = sd_bus_flush(gBus);
    if (r < 0) BusDBusFailure(r);
}

uint64_t BusDBusNowUsec(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (uint64_t)now.tv_sec * 1000000u + (uint64_t)now.tv_nsec / 1000u;
}

extern "C" {

void PlatformBusClose(void)
{
    ReleaseConnection(true);
    gState = kBusNeverOpened;
}

const char *PlatformBusAddress(void)
{
    static std::string address;   /* the text returned: no state, kept by PlatformResetAll */
    const char *current = nullptr;
    if (gBus && sd_bus_get_address(gBus, &current) >= 0 && current) {
        address = current;
        return address.c_str();
    }
    return getenv("DBUS_SESSION_BUS_ADDRESS");
}

void PlatformBusNameForSignature(OSType signature, char *name)
{
    snprintf(name, 23, kBusNamePrefix ".s%08x", (unsigned)signature);
}

} // extern "C"

void ResetDBusConnection(void)
{
    PlatformBusClose();
    gWarnedNoBus = false;
}
