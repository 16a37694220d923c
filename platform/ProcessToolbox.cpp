/*
 * ProcessToolbox.cpp: the exported Process Manager calls (fault point, then the
 * installed process table) and the default table: the walk over the process list (one
 * for both buses, over the applications the bus lists), information, activation and
 * launching come from the selected bus (a launch without launchDontSwitch ends with
 * the application activated); this process answers for itself.
 */
#include "platform/AppleEventRecords.h"
#include "platform/BusTransport.h"
#include "platform/EventService.h"
#include "platform/Faults.h"

#include <cstring>
#include <vector>

namespace {

#define kApplicationType FOUR_CHAR('A', 'P', 'P', 'L')

OSErr DefaultGetCurrentProcess(ProcessSerialNumber *psn)
{
    if (!psn) return paramErr;
    *psn = ProcessCurrentPSN();
    return noErr;
}

bool SamePSN(const ProcessSerialNumber &a, const ProcessSerialNumber &b)
{
    return a.highLongOfPSN == b.highLongOfPSN && a.lowLongOfPSN == b.lowLongOfPSN;
}

/* The walk over the process table, whichever bus shows it: this process first (when it
 * has a signature, as only then the others can address it), then the bus's other
 * applications in the order they appeared. */
OSErr DefaultGetNextProcess(ProcessSerialNumber *psn)
{
    if (!psn) return paramErr;
    bool walkStart = SamePSN(*psn, ProcessSerialNumber{0, kNoProcess});
    std::vector<ProcessSerialNumber> list;
    if (PlatformProcessSignature()) list.push_back(ProcessCurrentPSN());
    BusCurrent()->xListProcesses(walkStart, &list);
    if (walkStart) {
        if (list.empty()) return procNotFound;
        *psn = list[0];
        return noErr;
    }
    ProcessSerialNumber cursor = ProcessIsCurrent(psn) ? ProcessCurrentPSN() : *psn;
    for (size_t i = 0; i + 1 < list.size(); i++) {
        if (SamePSN(list[i], cursor)) {
            *psn = list[i + 1];
            return noErr;
        }
    }
    return procNotFound;
}

OSErr DefaultGetProcessInformation(const ProcessSerialNumber *psn, ProcessInfoRec *info)
{
    if (!psn || !info) return paramErr;
    BusProcess process;
    if (ProcessIsCurrent(psn)) {
        process = BusSelfProcess();
    } else {
        OSErr err = BusCurrent()->xProcessInfo(psn, &process);
        if (err) return err;
    }
    info->processNumber = process.psn;
    info->processType = kApplicationType;
    info->processSignature = process.signature;
    info->processMode = 0;
    info->processPID = process.pid;
    ProcessFillNameAndSpec(info, process.name, process.executable);
    return noErr;
}

OSErr DefaultSetFrontProcess(const ProcessSerialNumber *psn)
{
    if (!psn) return paramErr;
    return BusCurrent()->xActivate(psn);
}

OSErr DefaultSameProcess(const ProcessSerialNumber *a, const ProcessSerialNumber *b, Boolean *result)
{
    if (!a || !b || !result) return paramErr;
    ProcessSerialNumber first = ProcessIsCurrent(a) ? ProcessCurrentPSN() : *a;
    ProcessSerialNumber second = ProcessIsCurrent(b) ? ProcessCurrentPSN() : *b;
    *result = first.highLongOfPSN == second.highLongOfPSN && first.lowLongOfPSN == second.lowLongOfPSN;
    return noErr;
}

OSErr DefaultLaunchApplication(LaunchParamBlockRec *block)
{
    if (!block || !block->launchAppSpec) return paramErr;
    char path[4096];
    OSErr err = FSpGetPOSIXPath(block->launchAppSpec, path, sizeof path);
    if (err) return err;
    std::string document;
    OSType expected = 0;
    if (block->launchAppParameters) {
        AEDesc parameters{typeAppParameters, block->launchAppParameters};
        const AEDescRecord *record = AERecordOf(&parameters);
        if (!record) return paramErr;
        document = AEDocumentPOSIXPath(record);
        expected = AETargetSignature(record);
    }
    ProcessSerialNumber psn{0, 0};
    err = BusCurrent()->xLaunch(path, document, expected, &psn);
    if (err) return err;
    block->launchProcessSN = psn;
    /* Launched to the front unless told not to switch: once it is on the bus. */
    if (!(block->launchControlFlags & launchDontSwitch)) BusCurrent()->xActivate(&psn);
    return noErr;
}

const Tpx1ProcessMethods kDefaultProcesses = {
    DefaultGetCurrentProcess, DefaultGetNextProcess, DefaultGetProcessInformation,
    DefaultSetFrontProcess,   DefaultSameProcess,    DefaultLaunchApplication,
};

const Tpx1ProcessMethods *gProcesses = &kDefaultProcesses;

} // namespace

extern "C" {

const Tpx1ProcessMethods *PlatformInstallProcesses(const Tpx1ProcessMethods *methods)
{
    const Tpx1ProcessMethods *previous = gProcesses;
    gProcesses = methods ? methods : &kDefaultProcesses;
    return previous;
}

OSErr GetCurrentProcess(ProcessSerialNumber *psn)
{
    OSErr err = PlatformFaultCheck(kFaultGetCurrentProcess);
    if (err) return err;
    return gProcesses->xGetCurrentProcess(psn);
}

OSErr GetNextProcess(ProcessSerialNumber *psn)
{
    OSErr err = PlatformFaultCheck(kFaultGetNextProcess);
    if (err) return err;
    return gProcesses->xGetNextProcess(psn);
}

OSErr GetProcessInformation(const ProcessSerialNumber *psn, ProcessInfoRec *info)
{
    OSErr err = PlatformFaultCheck(kFaultGetProcessInformation);
    if (err) return err;
    return gProcesses->xGetProcessInformation(psn, info);
}

OSErr SetFrontProcess(const ProcessSerialNumber *psn)
{
    OSErr err = PlatformFaultCheck(kFaultSetFrontProcess);
    if (err) return err;
    return gProcesses->xSetFrontProcess(psn);
}

OSErr SameProcess(const ProcessSerialNumber *a, const ProcessSerialNumber *b, Boolean *result)
{
    return gProcesses->xSameProcess(a, b, result);
}

OSErr LaunchApplication(LaunchParamBlockRec *block)
{
    OSErr err = PlatformFaultCheck(kFaultLaunchApplication);
    if (err) return err;
    return gProcesses->xLaunchApplication(block);
}

} // extern "C"
