/*
 * HostMemory.cpp: the host memory primitives. Every handle and pointer the plug-in
 * makes or frees goes through the callbacks of the call block in gFMX_ExternCallPtr;
 * a null handle reads as size 0 and is ignored by the other operations.
 */
#include "text/TextHandles.h"
#include "text/ErrorCodes.h"

char **NewFHandle(long size)
{
    if (!gFMX_ExternCallPtr || size < 0)
        return nullptr;
    return gFMX_ExternCallPtr->newHandle((int32_t)size);
}

void DisposeFHandle(char **h)
{
    if (h)
        gFMX_ExternCallPtr->disposeHandle(h);
}

long GetFHandleSize(char **h)
{
    if (!h)
        return 0;
    return gFMX_ExternCallPtr->getHandleSize(h);
}

void LockFHandle(char **h)
{
    if (h)
        gFMX_ExternCallPtr->lockHandle(h);
}

void UnlockFHandle(char **h)
{
    if (h)
        gFMX_ExternCallPtr->unlockHandle(h);
}

void *NewFPointer(long size)
{
    if (!gFMX_ExternCallPtr || size < 0)
        return nullptr;
    return gFMX_ExternCallPtr->newPointer((int32_t)size);
}

void DisposeFPointer(void *p)
{
    if (p)
        gFMX_ExternCallPtr->disposePointer(p);
}

/* The host reports no error from setHandleSize: the size it ended up with tells. */
OSErr SetFHandleSize(char **h, long size)
{
    if (!h)
        return kMissingErr;
    gFMX_ExternCallPtr->setHandleSize(h, (int32_t)size);
    return GetFHandleSize(h) == size ? noErr : memFullErr;
}
