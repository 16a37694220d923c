/*
 * DeleteFile.cpp: the external function TPX1DeleteFile. A missing file is no error; a
 * busy one is tried again once a second, fifteen times at most.
 */
#include <cstdio>

#include "files/FileOps.h"
#include "files/FileSupport.h"
#include "files/Paths.h"
#include "platform/Toolbox.h"

enum { kBusyRetries = 15, kBusyWaitTicks = 60 };

/* Waits about one second; a tick count that runs backwards ends the wait too. */
static void WaitOneSecondForBusyFile(void)
{
    uint32_t start = TickCount();
    for (;;) {
        uint32_t now = TickCount();
        if (now < start || now - start >= kBusyWaitTicks)
            break;
    }
}

void TPX1DeleteFile(long funcId, char **argHandle, char **resultHandle)
{
    char resolved[kPathSize];
    if (!ResolveExistingFileArgument(funcId, argHandle, resultHandle, resolved))
        return;
    Str255 pascalPath;
    MakePascalPath(resolved, pascalPath);
    OSErr err = HDelete(0, 0, pascalPath);
    if (err == fBsyErr) {
        for (int retry = 0; retry < kBusyRetries && err != noErr; retry++) {
            WaitOneSecondForBusyFile();
            err = HDelete(0, 0, pascalPath);
        }
    }
    if (err != noErr) {
        char message[kPathSize + 64];
        snprintf(message, sizeof message, "Error %d: Unable to delete file: %s", (int)err, resolved);
        SetResultTextOrReport(funcId, resultHandle, message);
    }
}
