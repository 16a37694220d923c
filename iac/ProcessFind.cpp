/*
 * ProcessFind.cpp: finding a running application by its signature through the Process
 * Manager, and TPX1IsAppRunning.
 */
#include <string.h>

#include "iac/IacTables.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"

enum { kProcessInfoLength = 60 };

static void PrepareInfo(ProcessInfoRec *info, StringPtr name, FSSpec *theSpec)
{
    memset(info, 0, sizeof *info);
    info->processInfoLength = kProcessInfoLength;
    info->processName = name;
    info->processAppSpec = theSpec;
}

OSErr FindProcessBySignature(unsigned long signature, ProcessSerialNumber *psn, ProcessInfoRec *info)
{
    psn->highLongOfPSN = 0;
    psn->lowLongOfPSN = kNoProcess;
    StringPtr name = info->processName;
    FSSpec *theSpec = info->processAppSpec;
    for (;;) {
        OSErr err = GetNextProcess(psn);
        if (err == noErr) {
            PrepareInfo(info, name, theSpec);
            err = GetProcessInformation(psn, info);
        }
        if (err) {
            psn->highLongOfPSN = 0;
            psn->lowLongOfPSN = kNoProcess;
            return err;
        }
        if (info->processSignature == (OSType)signature)
            return noErr;
    }
}

/* Like FindProcessBySignature, but a process whose information cannot be read is passed over. */
int Sig2ProcessInfo(unsigned long signature, ProcessInfoRec *info, char *name, FSSpec *theSpec)
{
    Str255 processName = {0};
    ProcessSerialNumber psn = {0, kNoProcess};
    while (GetNextProcess(&psn) == noErr) {
        PrepareInfo(info, processName, theSpec);
        if (GetProcessInformation(&psn, info) != noErr || info->processSignature != (OSType)signature)
            continue;
        if (name)
            myp2cstr(processName, name);
        info->processName = nullptr;
        return 1;
    }
    return 0;
}

bool AppIsRunning(unsigned long signature)
{
    ProcessInfoRec info;
    return Sig2ProcessInfo(signature, &info, nullptr, nullptr) != 0;
}

void TPX1IsAppRunning(long funcId, char **argHandle, char **resultHandle)
{
    char text[5];
    strcpyFHandleToCStr(text, sizeof text, argHandle);
    SetResultsHandle(resultHandle, AppIsRunning(StringToOSType(text)) ? "TRUE" : "FALSE");
}
