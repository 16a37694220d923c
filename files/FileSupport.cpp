/*
 * FileSupport.cpp: the argument splitting, resolving, result setting, opening and
 * buffer back-off shared by the file functions.
 */
#include "files/FileSupport.h"
#include "files/FileOps.h"

#include <cstring>

#include "files/Paths.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"
#include "ui/Alerts.h"

const char kResolveFailedText[] = "Error: ResolvePossiblePartialPath returned an error";

void CopyArgumentText(char **argHandle, char *buffer, long size)
{
    buffer[0] = 0;
    strcpyFHandleToCStr(buffer, size, argHandle);
}

int SplitBarFields(char *text, char **fields, int maxFields)
{
    int count = 0;
    char *rest = text;
    while (count < maxFields) {
        fields[count++] = rest;
        if (count == maxFields)
            break;
        char *bar = strchr(rest, '|');
        if (!bar)
            break;
        *bar = 0;
        rest = bar + 1;
    }
    for (int i = count; i < maxFields; i++)
        fields[i] = text + strlen(text);   /* points at a NUL: the empty text */
    return count;
}

void CopyPathPiece(char *dest, const char *src)
{
    size_t len = strlen(src);
    if (len > kPathSize - 1)
        len = kPathSize - 1;
    memcpy(dest, src, len);
    dest[len] = 0;
}

OSErr ResolvePathAndReference(char *pathAndReference, char *resolved)
{
    char *fields[2];
    char path[kPathSize], reference[kPathSize];
    SplitBarFields(pathAndReference, fields, 2);
    CopyPathPiece(path, fields[0]);
    CopyPathPiece(reference, fields[1]);
    return ResolvePossiblePartialPath(path, reference, 0, resolved);
}

void SetResultTextOrReport(long funcId, char **resultHandle, const char *text)
{
    OSErr err = SetResultsHandle(resultHandle, text);
    if (err != noErr)
        ReportErrorToUser(funcId, err);
}

void MakePascalPath(const char *path, Str255 pascalPath)
{
    myc2pstr(path, pascalPath);
}

OSErr OpenFileWithInfo(const unsigned char *pascalPath, int8_t permission, FInfo *info,
                       int16_t *refNum, int32_t *length, const char **errorText)
{
    *refNum = 0;
    *length = 0;
    OSErr err = HGetFInfo(0, 0, pascalPath, info);
    if (err != noErr) {
        *errorText = "Error: hgetfinfo failed.";
        return err;
    }
    err = HOpenDF(0, 0, pascalPath, permission, refNum);
    if (err != noErr) {
        *refNum = 0;
        *errorText = "Error: hopendf failed.";
        return err;
    }
    err = GetEOF(*refNum, length);
    if (err != noErr) {
        *errorText = "Error: GetEOF failed.";
        return err;
    }
    return noErr;
}

char *NewBufferBackingOff(long size, long step, long extra, long *granted)
{
    *granted = 0;
    while (size > 0) {
        char *buffer = static_cast<char *>(NewFPointer(size + extra));
        if (buffer) {
            *granted = size;
            return buffer;
        }
        size -= step;
    }
    return nullptr;
}

bool ResolveExistingFileArgument(long funcId, char **argHandle, char **resultHandle, char *resolved)
{
    char argument[512];
    CopyArgumentText(argHandle, argument, sizeof argument);
    if (ResolvePathAndReference(argument, resolved) != noErr) {
        SetResultTextOrReport(funcId, resultHandle, kResolveFailedText);
        return false;
    }
    return FileExists(resolved);
}
