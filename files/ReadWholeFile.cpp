/*
 * ReadWholeFile.cpp: a whole file read into a new host handle with a NUL after it.
 */
#include <cstring>

#include "files/FileOps.h"
#include "files/FileSupport.h"
#include "text/TextHandles.h"
#include "ui/Alerts.h"

char **ReadFileIntoTerminatedFHandle(const char *path, bool reportErrors)
{
    Str255 pascalPath;
    int16_t refNum = 0;
    int32_t length = 0;
    char **handle = nullptr;
    MakePascalPath(path, pascalPath);
    OSErr err = HOpenDF(0, 0, pascalPath, fsRdWrPerm, &refNum);
    if (err == noErr) {
        err = GetEOF(refNum, &length);
        if (err == noErr) {
            handle = NewFHandle(length + 1);
            if (!handle || GetFHandleSize(handle) != length + 1)
                err = memFullErr;
        }
        if (err == noErr) {
            int32_t count = length;
            LockFHandle(handle);
            err = FSRead(refNum, &count, *handle);
            if (err == noErr && count != length)
                err = eofErr;
            UnlockFHandle(handle);
            (*handle)[length] = 0;
        }
        FSClose(refNum);
    }
    if (err != noErr) {
        DisposeFHandle(handle);
        handle = nullptr;
        if (reportErrors) {
            char message[kPathSize + 32];
            strcpy(message, "Error reading file: ");
            strcat(message, path);
            ReportErrorMsgToUser(message);
        }
    }
    return handle;
}
