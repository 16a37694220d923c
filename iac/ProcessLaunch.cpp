/*
 * ProcessLaunch.cpp: SignatureToApp: finding an application by signature, bringing it
 * forward and handing it a document, or launching it from its recorded path or its
 * default place in the Applications folder, with the "Unable to locate" alert. Within one
 * call from the host (or one incoming event) an application is started at most once:
 * after a launch that started it without its coming up, later attempts of the same
 * call fail at once, without another process or another alert.
 */
#include <stdio.h>
#include <string.h>

#include "iac/IacState.h"
#include "files/FileOps.h"
#include "files/Paths.h"
#include "text/ErrorCodes.h"
#include "ui/Alerts.h"

enum { kOpenDocumentSendMode = kAENoReply | kAEAlwaysInteract };

namespace {

/* The document as a file URL ("file:///..."), the form the open-document event carries. */
OSErr MakeFileURL(const FSSpec *document, char *url, int32_t urlSize)
{
    char posix[1024];
    OSErr err = FSpGetPOSIXPath(document, posix, sizeof posix);
    if (err)
        return err;
    static const char kHex[] = "0123456789ABCDEF";
    int32_t length = snprintf(url, (size_t)urlSize, "file://");
    for (const unsigned char *c = (const unsigned char *)posix; *c; c++) {
        bool plain = (*c >= 'a' && *c <= 'z') || (*c >= 'A' && *c <= 'Z') || (*c >= '0' && *c <= '9') ||
                     strchr("/-._~", *c) != nullptr;
        if (length + 4 >= urlSize)
            return bdNamErr;
        if (plain) {
            url[length++] = (char)*c;
        } else {
            url[length++] = '%';
            url[length++] = kHex[*c >> 4];
            url[length++] = kHex[*c & 15];
        }
    }
    url[length] = 0;
    return noErr;
}

/* The 'aevt'/'odoc' event for the document, addressed by serial number or by signature. */
OSErr MakeOpenDocumentEvent(const FSSpec *document, const ProcessSerialNumber *psn, OSType signature,
                            AppleEvent *event)
{
    char url[3200];
    OSErr err = MakeFileURL(document, url, sizeof url);
    if (err)
        return err;
    AEAddressDesc address;
    AEInitializeDesc(&address);
    if (psn)
        err = AECreateDesc(typeProcessSerialNumber, psn, sizeof *psn, &address);
    else
        err = AECreateDesc(typeApplSignature, &signature, sizeof signature, &address);
    if (err == noErr)
        err = AECreateAppleEvent(kCoreEventClass, kAEOpenDocuments, &address, kAutoGenerateReturnID,
                                 kAnyTransactionID, event);
    if (err == noErr)
        err = AEPutParamPtr(event, keyDirectObject, typeFileURL, url, (int32_t)strlen(url));
    AEDisposeDesc(&address);
    return err;
}

OSErr SendOpenDocument(const FSSpec *document, const ProcessSerialNumber *psn)
{
    AppleEvent event, reply;
    AEInitializeDesc(&event);
    AEInitializeDesc(&reply);
    OSErr err = MakeOpenDocumentEvent(document, psn, 0, &event);
    if (err == noErr)
        err = AESend(&event, &reply, kOpenDocumentSendMode, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr);
    AEDisposeDesc(&reply);
    AEDisposeDesc(&event);
    return err;
}

OSErr LaunchApp(OSType signature, const FSSpec *document, FSSpec *appSpec, unsigned short launchFlags,
                ProcessSerialNumber *psn, unsigned char *launched)
{
    AppleEvent openDocument;
    AEDesc parameters;
    AEInitializeDesc(&openDocument);
    AEInitializeDesc(&parameters);
    LaunchParamBlockRec block;
    memset(&block, 0, sizeof block);
    OSErr err = noErr;
    if (document) {
        err = MakeOpenDocumentEvent(document, nullptr, signature, &openDocument);
        if (err == noErr)
            err = AECoerceDesc(&openDocument, typeAppParameters, &parameters);
        if (err == noErr)
            block.launchAppParameters = (AppParameters *)parameters.dataHandle;
    }
    if (err == noErr) {
        block.launchBlockID = extendedBlock;
        block.launchEPBLength = extendedBlockLen;
        block.launchFileFlags = launchNoFileFlags;
        block.launchControlFlags = (uint16_t)(launchFlags | launchNoFileFlags);
        block.launchAppSpec = appSpec;
        err = LaunchApplication(&block);
    }
    AEDisposeDesc(&parameters);
    AEDisposeDesc(&openDocument);
    if (err == noErr) {
        *psn = block.launchProcessSN;
        *launched = 1;
    }
    return err;
}

/* Launches the application file at a full path, recording the path for the partner. */
OSErr LaunchFromPath(OSType signature, const char *path, const FSSpec *document, FSSpec *appSpec,
                     unsigned short launchFlags, ProcessSerialNumber *psn, unsigned char *launched)
{
    OSErr err = GetFSSpecFromFullPath(path, appSpec);
    if (err)
        return err;
    AddFriend(signature, path);
    return LaunchApp(signature, document, appSpec, launchFlags, psn, launched);
}

void AlertUnableToLocate(OSType signature)
{
    if (signature == kNimboSignature)
        DoAlertMessage("Unable to locate NIMBO.  ", "Please locate NIMBO and launch it using the Finder.", nullptr,
                       nullptr);
    else if (signature == kTopoluxSignature)
        DoAlertMessage("Unable to locate TOPOLUX.  ", "Please locate TOPOLUX and launch it using the Finder.",
                       nullptr, nullptr);
    else
        DoAlertMessage("Unable to locate the application.  ",
                       "Please locate the application and launch it using the Finder.", nullptr, nullptr);
}

bool LaunchFailedInThisCall(OSType signature)
{
    for (OSType failed : gFailedLaunches)
        if (failed == signature)
            return true;
    return false;
}

}   // namespace

void ForgetFailedLaunches(void)
{
    memset(gFailedLaunches, 0, sizeof gFailedLaunches);
    gNextFailedLaunch = 0;
}

OSErr GetDefaultPath(unsigned long signature, char *path)
{
    path[0] = 0;
    const char *tail;
    if (signature == kNimboSignature)
        tail = "NIMBO Folder:NIMBO";
    else if (signature == kTopoluxSignature)
        tail = "TOPOLUX Folder:TOPOLUX";
    else
        return kMissingErr;
    int16_t vRefNum = 0;
    int32_t dirID = 0;
    OSErr err = FindFolder(kOnSystemDisk, kApplicationsFolderType, kDontCreateFolder, &vRefNum, &dirID);
    if (err)
        return err;
    if (GetPathWithDelimiterFromDirID(dirID, vRefNum, path) != noErr)
        return kMissingErr;
    if (strlen(path) + strlen(tail) > 255)
        return kMissingErr;
    strcat(path, tail);
    if (!FileExists(path))
        return kMissingErr;
    return noErr;
}

OSErr SignatureToApp(unsigned long signature, const FSSpec *document, ProcessSerialNumber *psn, FSSpec *appSpec,
                     unsigned char *launched, short mode, unsigned short launchFlags)
{
    ProcessSerialNumber localPsn;
    FSSpec localSpec;
    unsigned char localLaunched;
    if (!psn)
        psn = &localPsn;
    if (!appSpec)
        appSpec = &localSpec;
    if (!launched)
        launched = &localLaunched;
    *launched = 0;

    ProcessInfoRec info;
    info.processName = nullptr;
    info.processAppSpec = nullptr;
    OSErr err = FindProcessBySignature(signature, psn, &info);
    if (err == noErr) {
        if (mode != 2)
            return noErr;
        if (!(launchFlags & launchDontSwitch) && (err = SetFrontProcess(psn)) != noErr)
            return err;
        return document ? SendOpenDocument(document, psn) : (OSErr)noErr;
    }
    if (err != procNotFound || mode <= 0)
        return err;
    if (LaunchFailedInThisCall(signature))
        return procNotFound;

    /* procNotFound from a launch: a process was started and did not come up in time.
     * It is left to finish starting, and no second place is tried. */
    bool started = false;
    char path[256];
    GetFriendsPath(signature, path);
    if (path[0] && FileExists(path)) {
        err = LaunchFromPath(signature, path, document, appSpec, launchFlags, psn, launched);
        if (err == noErr)
            return noErr;
        started = err == procNotFound;
    }
    if (!started && GetDefaultPath(signature, path) == noErr) {
        err = LaunchFromPath(signature, path, document, appSpec, launchFlags, psn, launched);
        if (err == noErr)
            return noErr;
        started = err == procNotFound;
    }
    AlertUnableToLocate(signature);
    if (started) {
        gFailedLaunches[gNextFailedLaunch] = (OSType)signature;
        gNextFailedLaunch = (gNextFailedLaunch + 1) % kFailedLaunchSlots;
    }
    return err;
}
