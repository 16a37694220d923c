/*
 * ResolvePaths.cpp: turning relative classic paths (":File", "::Up:File", "\Sub\File")
 * into full paths against the application's folder or the current base directory, and
 * the external function TPX1ResolveRelativePath.
 */
#include <cstring>

#include "files/FileSupport.h"
#include "files/Paths.h"
#include "store/DataNode.h"
#include "store/Globals.h"
#include "ui/Alerts.h"


/* Resolves path against folder (a folder path without its trailing ':'). */
static void ResolvePathRelativeToFolder(const char *folder, const char *path, char *out)
{
    char work[kPathSize];
    CopyPathPiece(work, path);
    if (work[0] != ':' && work[0] != '\\') {
        strcpy(out, work);
        return;
    }
    for (char *p = work; *p; p++) {
        if (*p == '\\' && p[1] != ':')
            *p = ':';
    }
    int levelsUp = 0;
    while (work[1 + levelsUp] == ':')
        levelsUp++;

    char base[kPathSize];
    CopyPathPiece(base, folder);
    for (int level = 0; level < levelsUp; level++) {
        char *lastColon = strrchr(base, ':');
        if (lastColon)
            *lastColon = 0;
    }
    size_t baseLength = strlen(base);
    size_t tailLength = strlen(work + levelsUp);
    if (baseLength + tailLength > kPathSize - 1)
        tailLength = kPathSize - 1 - baseLength;
    memcpy(out, base, baseLength);
    memcpy(out + baseLength, work + levelsUp, tailLength);
    out[baseLength + tailLength] = 0;
}

/* The application folder as Init stored it, without its trailing ':'. Before Init has
 * made the reserved global, the folder is asked of the process directly. */
static void GetApplicationFolderWithoutDelimiter(char *folder)
{
    folder[0] = 0;
    if (FindDataNodeInList(kAppFolderGlobal, gUserGlobalsDataNodeList))
        GetGlobalInListAsStr(kAppFolderGlobal, folder, kPathSize);
    else
        GetAppFolderPathWithDelimiter(folder);
    size_t len = strlen(folder);
    if (len > 0 && folder[len - 1] == ':')
        folder[len - 1] = 0;
}

OSErr ResolvePathRelativeToApplication(const char *path, char *out)
{
    char folder[kPathSize];
    GetApplicationFolderWithoutDelimiter(folder);
    ResolvePathRelativeToFolder(folder, path, out);
    return noErr;
}

OSErr ResolvePathRelativeToBaseDirectory(const char *path, char *out)
{
    if (gBaseDirectory[0] == 0)
        return ResolvePathRelativeToApplication(path, out);
    ResolvePathRelativeToFolder(gBaseDirectory, path, out);
    return noErr;
}

OSErr ResolvePossiblePartialPath(const char *path, const char *referenceFile, int unused, char *out)
{
    OSErr err = DetermineBaseDirectoryFromTheReferenceFile(referenceFile);
    if (err != noErr)
        return err;
    return ResolvePathRelativeToBaseDirectory(path, out);
}

void TPX1ResolveRelativePath(long funcId, char **argHandle, char **resultHandle)
{
    char argument[512];
    char *fields[2];
    char path[kPathSize], reference[kPathSize], resolved[kPathSize];
    CopyArgumentText(argHandle, argument, sizeof argument);
    SplitBarFields(argument, fields, 2);
    CopyPathPiece(path, fields[0]);
    CopyPathPiece(reference, fields[1]);
    if (DetermineBaseDirectoryFromTheReferenceFile(reference) == noErr) {
        ResolvePathRelativeToBaseDirectory(path, resolved);
        SetResultTextOrReport(funcId, resultHandle, resolved);
    } else {
        SetResultTextOrReport(funcId, resultHandle,
                              "Error: DetermineBaseDirectoryFromTheReferenceFile returned an error");
    }
}
