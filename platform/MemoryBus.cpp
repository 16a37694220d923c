/*
 * MemoryBus.cpp: the deterministic in-memory bus for unit tests (TestBus.h). Other
 * applications are records in a table; events sent to them are kept for the test to
 * take; launches and activations are recorded; the test delivers events to this process
 * as if they came over the bus.
 */
#include <cstdlib>
#include "platform/BusTransport.h"
#include "platform/EventService.h"
#include "platform/TestBus.h"

#include <deque>
#include <vector>

namespace {

struct SentEvent {
    OSType signature;
    AEDescRecord *event;
};

struct Launch {
    std::string path;
    std::string document;
};

std::vector<BusProcess> gApps;
std::deque<SentEvent> gSent;
std::vector<Launch> gLaunches;
std::vector<OSType> gFronts;

/* Events nobody took are freed when the process ends, so a test that leaves some
 * behind is not reported as leaking. Registered at the first kept event, that is after
 * the descriptor tables exist, so it runs before they are torn down; once per process
 * (kept by PlatformResetAll). */
bool gFreeAtExitRegistered = false;

void FreeSentEventsAtExit(void)
{
    for (SentEvent &sent : gSent) AEFreeRecord(sent.event);
    gSent.clear();
}
OSType gLaunchSignature = 0;

BusProcess *FindApp(const ProcessSerialNumber *psn)
{
    for (BusProcess &app : gApps)
        if (app.psn.highLongOfPSN == psn->highLongOfPSN && app.psn.lowLongOfPSN == psn->lowLongOfPSN) return &app;
    return nullptr;
}

BusProcess *FindAppBySignature(OSType signature)
{
    for (BusProcess &app : gApps)
        if (app.signature == signature) return &app;
    return nullptr;
}

void AddApp(OSType signature, const std::string &name, const std::string &executable)
{
    BusProcess *existing = FindAppBySignature(signature);
    BusProcess app;
    app.psn = ProcessNewPSN();
    app.signature = signature;
    app.pid = 0;
    app.name = name;
    app.executable = executable;
    if (existing) *existing = app;
    else gApps.push_back(app);
}

OSErr MemoryEnsureOpen(bool)
{
    return noErr;
}

void MemorySignatureChanged(OSType, OSType) {}

OSErr MemorySend(const AEDescRecord *event, OSType signature, int32_t, int32_t, OSErr *handlerResult)
{
    if (!FindAppBySignature(signature)) return procNotFound;
    AEDescRecord *copy = AECopyRecord(event);
    if (!copy) return memFullErr;
    copy->sender = PlatformProcessSignature();
    if (!gFreeAtExitRegistered) {
        atexit(FreeSentEventsAtExit);
        gFreeAtExitRegistered = true;
    }
    gSent.push_back(SentEvent{signature, copy});
    *handlerResult = noErr;
    return noErr;
}

int MemoryGetFD(void)
{
    return -1;
}

void MemoryPump(void) {}

bool MemoryPending(void)
{
    return false;
}

void MemoryListProcesses(bool, std::vector<ProcessSerialNumber> *list)
{
    for (const BusProcess &app : gApps) list->push_back(app.psn);
}

OSErr MemoryProcessInfo(const ProcessSerialNumber *psn, BusProcess *out)
{
    if (ProcessIsCurrent(psn)) {
        *out = BusSelfProcess();
        return noErr;
    }
    BusProcess *app = FindApp(psn);
    if (!app) return procNotFound;
    *out = *app;
    return noErr;
}

OSErr MemoryActivate(const ProcessSerialNumber *psn)
{
    if (ProcessIsCurrent(psn)) {
        gFronts.push_back(PlatformProcessSignature());
        ProcessCallActivateHandler();
        return noErr;
    }
    BusProcess *app = FindApp(psn);
    if (!app) return procNotFound;
    gFronts.push_back(app->signature);
    return noErr;
}

OSErr MemoryLaunch(const std::string &executable, const std::string &document, OSType expected,
                   ProcessSerialNumber *psn)
{
    gLaunches.push_back(Launch{executable, document});
    if (!gLaunchSignature) return procNotFound;
    size_t slash = executable.rfind('/');
    AddApp(gLaunchSignature, slash == std::string::npos ? executable : executable.substr(slash + 1), executable);
    *psn = FindAppBySignature(gLaunchSignature)->psn;
    return noErr;
}

void MemoryClose(void) {}

const Tpx1BusMethods kMemoryBus = {
    MemoryEnsureOpen,    MemorySignatureChanged, MemorySend,     MemoryGetFD,  MemoryPump, MemoryPending,
    MemoryListProcesses, MemoryProcessInfo,      MemoryActivate, MemoryLaunch, MemoryClose,
};

} // namespace

const Tpx1BusMethods *BusMemoryMethods(void)
{
    return &kMemoryBus;
}

void BusMemoryReset(void)
{
    gApps.clear();
    for (SentEvent &sent : gSent) AEFreeRecord(sent.event);
    gSent.clear();
    gLaunches.clear();
    gFronts.clear();
    gLaunchSignature = 0;
}

extern "C" {

void PlatformMemoryBusAddApp(OSType signature, const char *name, const char *posixExecutable)
{
    AddApp(signature, name ? name : "", posixExecutable ? posixExecutable : "");
}

void PlatformMemoryBusRemoveApp(OSType signature)
{
    for (size_t i = 0; i < gApps.size(); i++) {
        if (gApps[i].signature == signature) {
            gApps.erase(gApps.begin() + i);
            return;
        }
    }
}

void PlatformMemoryBusSetLaunchSignature(OSType signature)
{
    gLaunchSignature = signature;
}

int32_t PlatformMemoryBusLaunchCount(void)
{
    return (int32_t)gLaunches.size();
}

const char *PlatformMemoryBusLaunchPath(int32_t i)
{
    if (i < 0 || i >= (int32_t)gLaunches.size()) return nullptr;
    return gLaunches[i].path.c_str();
}

const char *PlatformMemoryBusLaunchDocument(int32_t i)
{
    if (i < 0 || i >= (int32_t)gLaunches.size()) return nullptr;
    return gLaunches[i].document.c_str();
}

int32_t PlatformMemoryBusSentCount(OSType signature)
{
    int32_t count = 0;
    for (const SentEvent &sent : gSent)
        if (!signature || sent.signature == signature) count++;
    return count;
}

OSErr PlatformMemoryBusTakeSent(OSType signature, AppleEvent *event)
{
    if (!event) return paramErr;
    AEInitializeDesc(event);
    for (size_t i = 0; i < gSent.size(); i++) {
        if (!signature || gSent[i].signature == signature) {
            AEAttachRecord(event, typeAppleEvent, gSent[i].event);
            gSent.erase(gSent.begin() + i);
            return noErr;
        }
    }
    return errAEDescNotFound;
}

int32_t PlatformMemoryBusFrontCount(void)
{
    return (int32_t)gFronts.size();
}

OSType PlatformMemoryBusFront(int32_t i)
{
    if (i < 0 || i >= (int32_t)gFronts.size()) return 0;
    return gFronts[i];
}

OSErr PlatformMemoryBusDeliver(const AppleEvent *event, OSType senderSignature)
{
    if (!event || event->descriptorType != typeAppleEvent || !AERecordOf(event)) return errAENotAEDesc;
    AEDescRecord *copy = AECopyRecord(AERecordOf(event));
    if (!copy) return memFullErr;
    copy->sender = senderSignature;
    AEQueueIncoming(copy, nullptr, nullptr);
    return noErr;
}

} // extern "C"
