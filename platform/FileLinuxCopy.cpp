/*
 * FileLinuxCopy.cpp: copies between two open files inside the kernel (copy_file_range),
 * for FSCopyRange. The kernel copies between regular files of one file system; where it
 * can't, the caller reads and writes. A copy that more copies between the same files
 * follow stops at the last 64 KB boundary of the destination and leaves the bytes after
 * it to the next one: copies that start and end on such boundaries let the page cache
 * keep the destination in large blocks, where copies of odd sizes (the plug-in's transfer
 * chunks are 100000 bytes) would split it into small pages and cost a third more. The
 * bytes left over are completed by the next copy, or before any other file call.
 */
#include "platform/FileLinux.h"
#include "platform/Toolbox.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <unistd.h>

namespace {

enum { kCopyBlock = 65536 };

bool gKernelCopyAllowed = true;   /* PlatformFilesAllowKernelCopy */
bool gKernelLacksCopy = false;    /* copy_file_range answered ENOSYS once */
std::atomic<int64_t> gBytesCopiedInKernel{0};

/* Bytes a copy left to the next one: [sourceAt, sourceAt + length) of the source go to
 * [destAt, destAt + length) of the destination. None while source is 0. */
struct LeftOver {
    int16_t source = 0;
    int16_t dest = 0;
    int64_t sourceAt = 0;
    int64_t destAt = 0;
    int64_t length = 0;
};
LeftOver gLeftOver;

/* The rest of a copy that the kernel gave up on part way, read and written here. */
OSErr CopyThroughMemory(const OpenFile *from, int64_t fromAt, const OpenFile *to, int64_t toAt, int64_t length,
                        int64_t *done)
{
    char buffer[kCopyBlock];
    while (*done < length) {
        size_t part = (size_t)std::min<int64_t>(sizeof buffer, length - *done);
        ssize_t n = pread(from->fd, buffer, part, fromAt + *done);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return PlatformErrnoToOSErr(errno);
        if (n == 0) return eofErr;
        for (ssize_t written = 0; written < n;) {
            ssize_t w = pwrite(to->fd, buffer + written, (size_t)(n - written), toAt + *done + written);
            if (w < 0 && errno == EINTR) continue;
            if (w <= 0) return w < 0 ? PlatformErrnoToOSErr(errno) : (OSErr)ioErr;
            written += w;
        }
        *done += n;
    }
    return noErr;
}

/* Copies length bytes at the given offsets, inside the kernel as far as it goes; *done
 * receives the bytes copied. When the kernel refuses part way, or stops short of the
 * source's end, the rest goes through memory and later copies from the file are left to
 * reads and writes. */
OSErr CopyBytes(OpenFile *from, int64_t fromAt, OpenFile *to, int64_t toAt, int64_t length, int64_t *done)
{
    *done = 0;
    while (*done < length) {
        loff_t in = fromAt + *done, out = toAt + *done;
        ssize_t n = copy_file_range(from->fd, &in, to->fd, &out, (size_t)(length - *done), 0);
        if (n > 0) {
            *done += n;
            gBytesCopiedInKernel += n;
            continue;
        }
        if (n < 0 && errno == EINTR) continue;
        int failure = n < 0 ? errno : 0;
        if (failure != 0 && failure != ENOSYS && failure != EXDEV && failure != EOPNOTSUPP && failure != EINVAL)
            return PlatformErrnoToOSErr(failure);
        if (failure == ENOSYS) gKernelLacksCopy = true;
        if (failure != 0) from->noKernelCopy = true;
        return CopyThroughMemory(from, fromAt, to, toAt, length, done);
    }
    return noErr;
}

/* Copies the bytes left over; a failure is returned and kept for the destination. */
OSErr FinishLeftOver(void)
{
    if (gLeftOver.source == 0) return noErr;
    LeftOver left = gLeftOver;
    gLeftOver = LeftOver();
    OpenFile *from = FileOfRefNum(left.source);
    OpenFile *to = FileOfRefNum(left.dest);
    if (!from || !to || left.length == 0) return noErr;
    int64_t done = 0;
    OSErr err = CopyBytes(from, left.sourceAt, to, left.destAt, left.length, &done);
    if (err != noErr && to->lateErr == noErr) to->lateErr = err;
    return err;
}

} // namespace

Boolean LinuxCanCopyRange(int16_t sourceRefNum, int16_t destRefNum)
{
    const OpenFile *from = FileOfRefNum(sourceRefNum);
    const OpenFile *to = FileOfRefNum(destRefNum);
    /* Files that a read and a write would refuse are left to them, with their errors. */
    return from && to && to->writable && gKernelCopyAllowed && !gKernelLacksCopy && !from->noKernelCopy &&
           from->regular && to->regular && from->dev == to->dev;
}

OSErr LinuxCopyRange(int16_t sourceRefNum, int16_t destRefNum, int32_t *count, Boolean more)
{
    if (!count) return paramErr;
    int32_t wanted = *count;
    *count = 0;
    if (wanted < 0) return paramErr;
    if (!LinuxCanCopyRange(sourceRefNum, destRefNum)) return wrgVolTypErr;
    OpenFile *from = FileOfRefNum(sourceRefNum);
    OpenFile *to = FileOfRefNum(destRefNum);
    if (OSErr late = TakeLateCopyError(to)) return late;

    /* The bytes left over by the copy before go first when this one goes on from them. */
    LeftOver left = gLeftOver;
    bool goesOn = left.source == sourceRefNum && left.dest == destRefNum &&
                  left.sourceAt + left.length == from->mark && left.destAt + left.length == to->mark;
    if (!goesOn) {
        if (OSErr err = FinishLeftOver()) return err;
    }
    int64_t fromAt = goesOn ? left.sourceAt : from->mark;
    int64_t toAt = goesOn ? left.destAt : to->mark;
    gLeftOver = LeftOver();

    int64_t end = to->mark + wanted;
    int64_t copyEnd = more ? std::max(toAt, end - end % kCopyBlock) : end;
    int64_t done = 0;
    OSErr err = CopyBytes(from, fromAt, to, toAt, copyEnd - toAt, &done);
    if (err == noErr && copyEnd < end)
        gLeftOver = LeftOver{sourceRefNum, destRefNum, fromAt + (copyEnd - toAt), copyEnd, end - copyEnd};
    int64_t reached = err == noErr ? end : toAt + done;
    int32_t copied = (int32_t)std::max<int64_t>(0, reached - to->mark);
    from->mark += copied;
    to->mark += copied;
    *count = copied;
    return err;
}

void LinuxFinishCopies(void)
{
    FinishLeftOver();
}

OSErr TakeLateCopyError(OpenFile *file)
{
    OSErr late = file->lateErr;
    file->lateErr = noErr;
    return late;
}

void PlatformFilesAllowKernelCopy(Boolean allow)
{
    gKernelCopyAllowed = allow;
}

int64_t PlatformFilesBytesCopiedInKernel(void)
{
    return gBytesCopiedInKernel.load();
}
