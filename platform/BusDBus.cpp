/*
 * BusDBus.cpp: the D-Bus transport (being filled in): until it is, no other application
 * can be reached and this process is the only one known.
 */
#include "platform/BusTransport.h"

namespace {

OSErr NoEnsureOpen(bool) { return connectionInvalid; }
void NoSignatureChanged(OSType, OSType) {}
OSErr NoSend(const AEDescRecord *, OSType, int32_t, int32_t, OSErr *) { return procNotFound; }
int NoGetFD(void) { return -1; }
void NoPump(void) {}
void NoWait(int32_t) {}
OSErr NoNextProcess(ProcessSerialNumber *psn)
{
    if (psn->highLongOfPSN == 0 && psn->lowLongOfPSN == kNoProcess && PlatformProcessSignature()) {
        *psn = ProcessCurrentPSN();
        return noErr;
    }
    return procNotFound;
}
OSErr NoProcessInfo(const ProcessSerialNumber *psn, BusProcess *out)
{
    if (!ProcessIsCurrent(psn)) return procNotFound;
    *out = BusSelfProcess();
    return noErr;
}
OSErr NoActivate(const ProcessSerialNumber *psn)
{
    if (!ProcessIsCurrent(psn)) return procNotFound;
    ProcessCallActivateHandler();
    return noErr;
}
OSErr NoLaunch(const std::string &, const std::string &, OSType, ProcessSerialNumber *) { return procNotFound; }
void NoClose(void) {}

const Tpx1BusMethods kDBus = {
    NoEnsureOpen, NoSignatureChanged, NoSend, NoGetFD, NoPump, NoWait,
    NoNextProcess, NoProcessInfo, NoActivate, NoLaunch, NoClose,
};

} // namespace

const Tpx1BusMethods *BusDBusMethods(void)
{
    return &kDBus;
}
