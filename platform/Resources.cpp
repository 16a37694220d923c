/*
 * Resources.cpp: the Resource Manager calls. They keep the current resource file and
 * the last resource error of the process and go to the installed resource store.
 * OpenResFile makes the new file current; closing the current file makes refnum 0
 * (the system, which holds no items) current. UseResFile takes any number: a number
 * that names no open file simply finds nothing.
 */
#include "platform/Faults.h"
#include "platform/ResourceStore.h"
#include "platform/ServiceResets.h"

#include <atomic>
#include <cstring>

namespace {

std::atomic<const Tpx1ResourceMethods *> gResources{&gLinuxResources};
std::atomic<int16_t> gCurResFile{0};
std::atomic<OSErr> gResError{noErr};

const Tpx1ResourceMethods *Store(void)
{
    return gResources.load(std::memory_order_acquire);
}

} // namespace

extern "C" {

const Tpx1ResourceMethods *PlatformInstallResources(const Tpx1ResourceMethods *methods)
{
    return gResources.exchange(methods ? methods : &gLinuxResources);
}

int16_t OpenResFile(const char *posixPath)
{
    OSErr err = PlatformFaultCheck(kFaultOpenResFile);
    int16_t ref = err ? (int16_t)err : Store()->xOpen(posixPath);
    if (ref <= 0) {
        gResError = ref < 0 ? (OSErr)ref : (OSErr)resFNotFound;
        return -1;
    }
    gResError = noErr;
    gCurResFile = ref;
    return ref;
}

void CloseResFile(int16_t refNum)
{
    OSErr err = PlatformFaultCheck(kFaultCloseResFile);
    gResError = err;
    if (err) return;
    Store()->xClose(refNum);
    int16_t expected = refNum;
    gCurResFile.compare_exchange_strong(expected, 0);
}

int16_t CurResFile(void)
{
    return gCurResFile;
}

void UseResFile(int16_t refNum)
{
    OSErr err = PlatformFaultCheck(kFaultUseResFile);
    gResError = err;
    if (!err) gCurResFile = refNum;
}

OSErr ResError(void)
{
    return gResError;
}

OSErr GetResourceText(OSType type, int16_t id, int16_t index, char *dest, int32_t destSize)
{
    OSErr err = PlatformFaultCheck(kFaultGetResourceText);
    if (!err) err = Store()->xText(gCurResFile, type, id, index, dest, destSize);
    if (err && dest && destSize > 0) dest[0] = 0;
    gResError = err;
    return err;
}

void GetIndString(StringPtr theString, int16_t strListID, int16_t index)
{
    char text[256];
    OSErr err = PlatformFaultCheck(kFaultGetIndString);
    if (!err && index < 1) err = resNotFound;
    if (!err) err = Store()->xText(gCurResFile, FOUR_CHAR('S', 'T', 'R', '#'), strListID, index, text, sizeof text);
    gResError = err;
    if (!theString) return;
    size_t len = err ? 0 : strlen(text);
    theString[0] = (unsigned char)len;
    memcpy(theString + 1, text, len);
}

} // extern "C"

void ResetResourceManager(void)
{
    gResources = &gLinuxResources;
    ForgetAllResourceFiles();
    gCurResFile = 0;
    gResError = noErr;
}
