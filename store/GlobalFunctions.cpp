/*
 * GlobalFunctions.cpp: the external functions on the solution's globals: set, append,
 * unset, get, list, attach, enable and disable a script, and the name of the global
 * whose change last queued its script. Every failure is reported to the user.
 */
#include "store/Globals.h"

#include <cstring>

#include "store/DataNode.h"
#include "text/ErrorCodes.h"
#include "text/TextHandles.h"
#include "ui/Alerts.h"

enum { kNameBufferSize = 256 };


/* The argument as a name of at most 255 characters. */
static void ArgumentAsName(char **argHandle, char *name)
{
    strcpyFHandleToCStr(name, kNameBufferSize, argHandle);
}

void TPX1SetGlobal(long funcId, char **argHandle, char **resultHandle)
{
    char name[kNameBufferSize];
    long valueOffset = 0;
    OSErr err = SplitNameAndValue(argHandle, name, &valueOffset);
    if (err == noErr) {
        if (strcmp(name, kAppSignatureGlobal) == 0)
            return;
        LockFHandle(argHandle);
        err = SetGlobalFromStr(name, 0, *argHandle + valueOffset);
        UnlockFHandle(argHandle);
    }
    ReportErrorIfAny(funcId, err);
}

void TPX1AppendToGlobal(long funcId, char **argHandle, char **resultHandle)
{
    char name[kNameBufferSize];
    bool noDupes = false;
    OSErr err = GetAndStripNameAndDupes(argHandle, name, &noDupes);
    if (err == noErr)
        err = AppendToGlobalInList(name, 0, noDupes, argHandle);
    ReportErrorIfAny(funcId, err);
}

void TPX1UnsetGlobal(long funcId, char **argHandle, char **resultHandle)
{
    char name[kNameBufferSize];
    ArgumentAsName(argHandle, name);
    ReportErrorIfAny(funcId, RemoveGlobalFromList(name));
}

void TPX1GetGlobal(long funcId, char **argHandle, char **resultHandle)
{
    char name[kNameBufferSize];
    ArgumentAsName(argHandle, name);
    ReportErrorIfAny(funcId, GetGlobalInListAsResultHandle(name, resultHandle));
}

void TPX1GetGlobalList(long funcId, char **argHandle, char **resultHandle)
{
    ReportErrorIfAny(funcId, GetGlobalListInfo(argHandle, resultHandle));
}

void TPX1AttachScriptToGlobal(long funcId, char **argHandle, char **resultHandle)
{
    char name[kNameBufferSize];
    long scriptOffset = 0;
    OSErr err = SplitNameAndValue(argHandle, name, &scriptOffset);
    if (name[0] == 0) {
        err = kNoSuchGlobalErr;
    } else if (err == kNoBarErr) {
        err = kMissingErr;
    } else if (err == noErr) {
        LockFHandle(argHandle);
        const char *script = *argHandle + scriptOffset;
        err = script[0] ? AttachScriptToGlobalInList(name, script) : kMissingErr;
        UnlockFHandle(argHandle);
    }
    ReportErrorIfAny(funcId, err);
}

static void SetEnableFromArgument(long funcId, char **argHandle, unsigned char enabled)
{
    char name[kNameBufferSize];
    ArgumentAsName(argHandle, name);
    ReportErrorIfAny(funcId, SetEnableOfGlobalScript(name, enabled));
}

void TPX1EnableGlobalScript(long funcId, char **argHandle, char **resultHandle)
{
    SetEnableFromArgument(funcId, argHandle, 1);
}

void TPX1DisableGlobalScript(long funcId, char **argHandle, char **resultHandle)
{
    SetEnableFromArgument(funcId, argHandle, 0);
}

void TPX1GetNameOfGlobalThatTriggeredScript(long funcId, char **argHandle, char **resultHandle)
{
    OSErr err = SetResultsHandle(resultHandle, gNameOfGlobalThatTriggeredScript);
    gNameOfGlobalThatTriggeredScript[0] = 0;
    ReportErrorIfAny(funcId, err);
}
