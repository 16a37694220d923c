/*
 * ListFolder.cpp: the external function TPX1GetListOfFilesInFolder: the full paths of
 * the items beside a given file that share its extension (".ZIP" and ".RPF" admit
 * each other), in catalog order, one per line.
 */
#include <cstring>

#include "files/FileOps.h"
#include "files/FileSupport.h"
#include "files/Paths.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"
#include "ui/Alerts.h"

enum { kExtensionSize = 12 };

/* The upper-cased extension of name from its last '.', or false when it has none or
 * one of kExtensionSize characters or more. */
static bool GetUpperExtension(const char *name, char *extension)
{
    const char *dot = strrchr(name, '.');
    if (!dot || strlen(dot) >= kExtensionSize)
        return false;
    strcpy(extension, dot);
    StrToUpper(extension);
    return true;
}

static OSErr AppendListLine(char **result, const char *folder, const char *name)
{
    char line[2 * kPathSize + 2];
    strcpy(line, folder);
    strcat(line, name);
    strcat(line, "\r");
    if (GetFHandleSize(result) == 0)
        return SetResultsHandle(result, line);
    return CatHandleContents(result, line);
}

OSErr MakeListOfMatchingItemsInFolder(const char *path, char **result)
{
    FSSpec theSpec;
    OSErr err = GetFSSpecFromFullPath(path, &theSpec);
    if (err != noErr)
        return err;
    char name[kPathSize];
    char extension[kExtensionSize], alsoAdmitted[kExtensionSize];
    myp2cstr(theSpec.name, name);
    if (!GetUpperExtension(name, extension))
        return noErr;
    strcpy(alsoAdmitted, extension);
    if (strcmp(extension, ".ZIP") == 0)
        strcpy(alsoAdmitted, ".RPF");
    else if (strcmp(extension, ".RPF") == 0)
        strcpy(alsoAdmitted, ".ZIP");

    char folder[kPathSize];
    err = GetPathWithDelimiterFromDirID(theSpec.parID, theSpec.vRefNum, folder);
    if (err != noErr)
        return err;
    for (int16_t index = 1;; index++) {
        Str255 itemName;
        CInfoPBRec pb;
        memset(&pb, 0, sizeof pb);
        itemName[0] = 0;
        pb.ioNamePtr = itemName;
        pb.ioVRefNum = theSpec.vRefNum;
        pb.ioFDirIndex = index;
        pb.ioDirID = theSpec.parID;
        err = PBGetCatInfoSync(&pb);
        if (err == fnfErr || err == dirNFErr)
            return noErr;
        if (err != noErr)
            return err;
        char item[kPathSize], itemExtension[kExtensionSize];
        myp2cstr(itemName, item);
        if (!GetUpperExtension(item, itemExtension))
            continue;
        if (strcmp(itemExtension, extension) == 0 || strcmp(itemExtension, alsoAdmitted) == 0) {
            err = AppendListLine(result, folder, item);
            if (err != noErr)
                return err;
        }
    }
}

void TPX1GetListOfFilesInFolder(long funcId, char **argHandle, char **resultHandle)
{
    char resolved[kPathSize];
    if (!ResolveExistingFileArgument(funcId, argHandle, resultHandle, resolved))
        return;
    OSErr err = MakeListOfMatchingItemsInFolder(resolved, resultHandle);
    if (err != noErr)
        ReportErrorToUser(funcId, err);
}
