/*
 * TransferFileSection.cpp: copies a byte range of one open file to the current
 * position of another through a buffer that starts at 100000 bytes and shrinks in
 * steps of 5000 while the host has no room for it. Each buffer-sized chunk moves inside
 * the kernel where the two files' file systems allow it, and is read and written
 * through the buffer where they don't; the chunks, the first error ending the copy and
 * the faults met are the same either way.
 */
#include "files/FileOps.h"
#include "files/FileSupport.h"
#include "text/ErrorCodes.h"
#include "text/TextHandles.h"

enum { kTransferBufferSize = 100000, kTransferBufferStep = 5000 };

OSErr TransferFileSection(int16_t source, int16_t destination, long start, long end)
{
    long bufferSize = 0;
    char *buffer = NewBufferBackingOff(kTransferBufferSize, kTransferBufferStep, 0, &bufferSize);
    if (!buffer)
        return kMissingErr;
    OSErr err = SetFPos(source, fsFromStart, (int32_t)start);
    long remaining = end - start;
    bool inKernel = true;   /* until the file systems say they can't */
    while (err == noErr && remaining > 0) {
        int32_t chunk = (int32_t)(remaining < bufferSize ? remaining : bufferSize);
        int32_t count = chunk;
        if (inKernel) {
            err = FSCopyRange(source, destination, &count, remaining > chunk);
            inKernel = err != wrgVolTypErr;
        }
        if (!inKernel) {
            count = chunk;
            err = FSRead(source, &count, buffer);
            if (err != noErr)
                break;
            err = FSWrite(destination, &count, buffer);
        }
        remaining -= count;
    }
    DisposeFPointer(buffer);
    return err;
}
