/*
 * FileSystemPath.cpp: the POSIX form of a full classic path (creating an empty text
 * file first when the path names none, since callers are about to write it), and the
 * external function TPX1FileSystemRepresentationFromClassicPath.
 */
#include "files/FileSupport.h"
#include "files/Paths.h"

enum { kPOSIXPathSize = 2096 };

OSErr strcpyFileSystemRepresentationFromClassicPath(char *out, const char *classicPath, long outSize)
{
    FSSpec theSpec;
    OSErr err = GetFSSpecFromFullPath(classicPath, &theSpec);
    if (err == fnfErr)
        err = FSpCreate(&theSpec, FOUR_CHAR('M', 'P', 'W', ' '), FOUR_CHAR('T', 'E', 'X', 'T'), smSystemScript);
    if (err != noErr)
        return err;
    if (outSize > 0)
        out[0] = 0;
    err = FSpGetPOSIXPath(&theSpec, out, (int32_t)outSize);
    if (err != noErr)
        return err;
    return noErr;
}

void TPX1FileSystemRepresentationFromClassicPath(long funcId, char **argHandle, char **resultHandle)
{
    char argument[512];
    char resolved[kPathSize];
    char posixPath[kPOSIXPathSize];
    CopyArgumentText(argHandle, argument, sizeof argument);
    if (ResolvePathAndReference(argument, resolved) != noErr) {
        SetResultTextOrReport(funcId, resultHandle, kResolveFailedText);
        return;
    }
    if (strcpyFileSystemRepresentationFromClassicPath(posixPath, resolved, sizeof posixPath) != noErr) {
        SetResultTextOrReport(funcId, resultHandle,
                              "Error: strcpyFileSystemRepresentationFromClassicPath returned an error");
        return;
    }
    SetResultTextOrReport(funcId, resultHandle, posixPath);
}
