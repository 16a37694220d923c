/*
 * ReadSlice.cpp: the external function TPX1GetCharsFromFile: a run of characters read
 * from a file, from a 1-based start for a given count, cut at the file's end.
 */
#include <cstring>

#include "files/FileOps.h"
#include "files/FileSupport.h"
#include "files/Paths.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"
#include "ui/Alerts.h"

static const char kUsageText[] =
    "Error: Usage TPX1GetCharsFromFile(startingCharOneRelative|numCharsToCopy|relativeOrFullPath)";

/* Reads count bytes from start (1-based) into buffer and ends them with a NUL.
 * Returns the error with *errorText, or noErr; the file is closed in every case. */
static OSErr ReadSliceIntoBuffer(const char *path, long start, long count, char *buffer, const char **errorText)
{
    Str255 pascalPath;
    FInfo info;
    int16_t refNum = 0;
    int32_t length = 0;
    MakePascalPath(path, pascalPath);
    OSErr err = OpenFileWithInfo(pascalPath, fsRdWrPerm, &info, &refNum, &length, errorText);
    if (err == noErr && start <= length) {
        if (count > length - start + 1)
            count = length - start + 1;
        err = SetFPos(refNum, fsFromStart, (int32_t)(start - 1));
        int32_t done = (int32_t)count;
        if (err == noErr)
            err = FSRead(refNum, &done, buffer);
        if (err != noErr)
            *errorText = "Error: FSRead returned an error.";
        else
            buffer[done] = 0;
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
    char *buffer = count < INT32_MAX ? static_cast<char *>(NewFPointer(count + 1)) : nullptr;
    if (!buffer) {
        ReportErrorToUser(funcId, -1);
        return;
    }
    buffer[0] = 0;
    buffer[count] = 0;
    const char *errorText = nullptr;
    OSErr err = ReadSliceIntoBuffer(resolved, start, count, buffer, &errorText);
    if (err != noErr) {
        SetResultTextOrReport(funcId, resultHandle, errorText);
        ReportErrorToUser(funcId, err);
    } else {
        SetResultTextOrReport(funcId, resultHandle, buffer);
    }
    DisposeFPointer(buffer);
}
