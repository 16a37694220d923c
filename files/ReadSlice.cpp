/*
 * ReadSlice.cpp: the external function TPX1GetCharsFromFile: a run of characters read
 * from a file, from a 1-based start for a given count, cut at the file's end.
 */
#include <cstring>

#include "files/FileOps.h"
#include "files/FileSupport.h"
#include "files/Paths.h"
#include "text/ErrorCodes.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"
#include "ui/Alerts.h"

static const char kUsageText[] =
    "Error: Usage TPX1GetCharsFromFile(startingCharOneRelative|numCharsToCopy|relativeOrFullPath)";

/* Opens the file and reads up to count bytes from start (1-based) into a new buffer,
 * ended with a NUL. The buffer is sized for the bytes the file holds from start on, not
 * for count, which may be far larger than the file. Returns the error with *errorText,
 * or -1 and no buffer when the host has no room; the file is closed in every case. */
static OSErr ReadSlice(const char *path, long start, long count, char **buffer, const char **errorText)
{
    Str255 pascalPath;
    FInfo info;
    int16_t refNum = 0;
    int32_t length = 0;
    MakePascalPath(path, pascalPath);
    *buffer = nullptr;
    OSErr err = OpenFileWithInfo(pascalPath, fsRdWrPerm, &info, &refNum, &length, errorText);
    if (err == noErr) {
        long wanted = start <= length ? (count < length - start + 1 ? count : length - start + 1) : 0;
        *buffer = static_cast<char *>(NewFPointer(wanted + 1));
        if (!*buffer)
            err = kMissingErr;
        else
            (*buffer)[0] = 0;
        if (*buffer && wanted > 0) {
            err = SetFPos(refNum, fsFromStart, (int32_t)(start - 1));
            int32_t done = (int32_t)wanted;
            if (err == noErr)
                err = FSRead(refNum, &done, *buffer);
            if (err != noErr)
                *errorText = "Error: FSRead returned an error.";
            else
                (*buffer)[done] = 0;
        }
    }
    if (refNum != 0)
        FSClose(refNum);
    return err;
}

void TPX1GetCharsFromFile(long funcId, char **argHandle, char **resultHandle)
{
    char argument[768];
    char *fields[4];
    CopyArgumentText(argHandle, argument, sizeof argument);
    int fieldCount = SplitBarFields(argument, fields, 4);
    long start = TextToLong(fields[0]);
    long count = TextToLong(fields[1]);
    if (fieldCount < 3 || start <= 0 || count <= 0) {
        SetResultTextOrReport(funcId, resultHandle, kUsageText);
        return;
    }
    char path[kPathSize], reference[kPathSize], resolved[kPathSize];
    CopyPathPiece(path, fields[2]);
    CopyPathPiece(reference, fields[3]);
    if (ResolvePossiblePartialPath(path, reference, 0, resolved) != noErr) {
        SetResultTextOrReport(funcId, resultHandle, kResolveFailedText);
        return;
    }
    if (!FileExists(resolved)) {
        SetResultTextOrReport(funcId, resultHandle, "Error: TPX1GetCharsFromFile: File does not exist");
        return;
    }
    char *buffer = nullptr;
    const char *errorText = nullptr;
    OSErr err = ReadSlice(resolved, start, count, &buffer, &errorText);
    if (err != noErr && errorText)
        SetResultTextOrReport(funcId, resultHandle, errorText);
    else if (err == noErr)
        SetResultTextOrReport(funcId, resultHandle, buffer);
    if (err != noErr)
        ReportErrorToUser(funcId, err);
    DisposeFPointer(buffer);
}
