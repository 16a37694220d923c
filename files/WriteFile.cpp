/*
 * WriteFile.cpp: writing a buffer to a file (replacing it, as a 'ttxt' 'TEXT' file) or
 * appending to an existing one; failures after the file is open are shown to the user.
 */
#include <cstring>

#include "files/FileOps.h"
#include "files/FileSupport.h"
#include "files/Paths.h"
#include "text/ErrorCodes.h"
#include "ui/Alerts.h"

static void ReportWriteFailure(const char *path)
{
    char message[kPathSize + 32];
    strcpy(message, "Error writing to file:\r");
    strcat(message, path);
    ReportErrorMsgToUser(message);
}

static OSErr WriteOrAppendBufferToFile(const char *path, const char *buffer, long length, bool append)
{
    FSSpec theSpec;
    OSErr err = GetFSSpecFromFullPath(path, &theSpec);
    if (append) {
        if (err != noErr)
            return err;
    } else {
        if (err == noErr)
            err = FSpDelete(&theSpec);
        if (err == noErr || err == fnfErr)
            err = FSpCreate(&theSpec, FOUR_CHAR('t', 't', 'x', 't'), FOUR_CHAR('T', 'E', 'X', 'T'), smSystemScript);
        if (err != noErr)
            return err;
    }
    int16_t refNum = 0;
    err = FSpOpenDF(&theSpec, fsRdWrPerm, &refNum);
    if (err != noErr)
        return err;
    if (append)
        err = SetFPos(refNum, fsFromLEOF, 0);
    if (err == noErr) {
        int32_t count = (int32_t)length;
        err = FSWrite(refNum, &count, buffer);
    }
    OSErr closeErr = FSClose(refNum);
    if (err == noErr)
        err = closeErr;
    if (err != noErr)
        ReportWriteFailure(path);
    return err;
}

OSErr WriteBufferToFile(const char *path, const char *buffer, long length)
{
    return WriteOrAppendBufferToFile(path, buffer, length, false);
}

OSErr AppendBufferToFile(const char *path, const char *buffer, long length)
{
    return WriteOrAppendBufferToFile(path, buffer, length, true);
}

OSErr WriteCStringToFile(const char *path, const char *text)
{
    if (!text)
        return kMissingErr;
    return WriteBufferToFile(path, text, (long)strlen(text));
}
