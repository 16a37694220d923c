/*
 * AppPaths.cpp: the host application's signature, full path, folder and name, taken
 * from the current process's information. The full path is computed once and kept;
 * the folder and name cut an application package (".APP:") back to the package.
 */
#include <cstring>

#include "files/FileSupport.h"
#include "files/FilesState.h"
#include "files/Paths.h"
#include "platform/Processes.h"
#include "text/TextUtils.h"

enum { kMaxAppPathLength = 250 };

static OSErr GetCurrentProcessInfo(ProcessInfoRec *info, FSSpec *appSpec)
{
    ProcessSerialNumber psn;
    OSErr err = GetCurrentProcess(&psn);
    if (err != noErr)
        return err;
    memset(info, 0, sizeof *info);
    info->processInfoLength = 60;
    info->processAppSpec = appSpec;
    return GetProcessInformation(&psn, info);
}

OSType GetAppSignature(void)
{
    ProcessInfoRec info;
    if (GetCurrentProcessInfo(&info, nullptr) != noErr)
        return 0;
    return info.processSignature;
}

void GetAppFullPathName(char *out)
{
    if (!gAppFullPathKnown) {
        ProcessInfoRec info;
        FSSpec appSpec;
        char path[kPathSize];
        gAppFullPathName[0] = 0;
        if (GetCurrentProcessInfo(&info, &appSpec) == noErr && GetFullPathFromFSSpec(&appSpec, path) == noErr) {
            path[kMaxAppPathLength] = 0;   /* the name is appended only as far as 250 characters */
            strcpy(gAppFullPathName, path);
        }
        gAppFullPathKnown = true;
    }
    strcpy(out, gAppFullPathName);
}

/* The full path with an application package's inside cut away. */
static void GetAppPathOutsidePackage(char *path)
{
    GetAppFullPathName(path);
    char upper[kPathSize];
    strcpy(upper, path);
    StrToUpper(upper);
    const char *package = strstr(upper, ".APP:");
    if (package)
        path[package - upper] = 0;
}

void GetAppFolderPathWithDelimiter(char *out)
{
    char path[kPathSize];
    GetAppPathOutsidePackage(path);
    char *lastColon = strrchr(path, ':');
    if (lastColon)
        lastColon[1] = 0;
    strcpy(out, path);
}

void GetAppName(char *out)
{
    char path[kPathSize];
    GetAppPathOutsidePackage(path);
    const char *lastColon = strrchr(path, ':');
    strcpy(out, lastColon ? lastColon + 1 : "");
}
