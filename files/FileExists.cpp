/*
 * FileExists.cpp: whether a full path names an existing file or folder, and the
 * external function TPX1FileExists.
 */
#include "files/FileOps.h"
#include "files/FileSupport.h"
#include "files/Paths.h"

bool FileExists(const char *path)
{
    FSSpec theSpec;
    return GetFSSpecFromFullPath(path, &theSpec) == noErr;
}

void TPX1FileExists(long funcId, char **argHandle, char **resultHandle)
{
    char argument[512];
    char resolved[kPathSize];
    CopyArgumentText(argHandle, argument, sizeof argument);
    bool exists = ResolvePathAndReference(argument, resolved) == noErr && FileExists(resolved);
    SetResultTextOrReport(funcId, resultHandle, exists ? "TRUE" : "FALSE");
}
