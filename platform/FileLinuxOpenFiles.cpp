/*
 * FileLinuxOpenFiles.cpp: open data forks. Reference numbers are small positive
 * integers indexing a table of descriptors; each entry keeps its own mark and reads and
 * writes with pread/pwrite, without buffering, so that large transfers run at the speed
 * of the system calls. As on the Mac, a file has at most one writer in the process, a
 * locked file opens for writing only read-only (permission 0) or not at all.
 */
#include "platform/FileLinux.h"
#include "platform/Toolbox.h"

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace {

enum { kMaxOpenFiles = 348 };

std::vector<OpenFile> gOpenFiles;   /* index: refNum - 1 */

bool IsOpenForWriting(dev_t dev, ino_t ino)
{
    for (const OpenFile &file : gOpenFiles)
        if (file.fd >= 0 && file.writable && file.dev == dev && file.ino == ino) return true;
    return false;
}

int16_t FreeRefNum()
{
    for (size_t i = 0; i < gOpenFiles.size(); i++)
        if (gOpenFiles[i].fd < 0) return (int16_t)(i + 1);
    if (gOpenFiles.size() >= kMaxOpenFiles) return 0;
    gOpenFiles.emplace_back();
    return (int16_t)gOpenFiles.size();
}

OSErr FileSize(const OpenFile *file, int64_t *size)
{
    struct stat st;
    if (fstat(file->fd, &st) != 0) return PlatformErrnoToOSErr(errno);
    *size = st.st_size;
    return noErr;
}

} // namespace

OpenFile *FileOfRefNum(int16_t refNum)
{
    if (refNum < 1 || refNum > (int)gOpenFiles.size()) return nullptr;
    OpenFile *file = &gOpenFiles[refNum - 1];
    return file->fd >= 0 ? file : nullptr;
}

bool IsOpenInProcess(dev_t dev, ino_t ino)
{
    for (const OpenFile &file : gOpenFiles)
        if (file.fd >= 0 && file.dev == dev && file.ino == ino) return true;
    return false;
}

void CloseAllOpenFiles(void)
{
    for (OpenFile &file : gOpenFiles)
        if (file.fd >= 0) close(file.fd);
    gOpenFiles.clear();
}

OSErr LinuxOpenDF(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, int8_t permission, int16_t *refNum)
{
    if (!refNum) return paramErr;
    *refNum = 0;
    if (permission < fsCurPerm || permission > fsRdWrPerm) return paramErr;
    FileItem item;
    OSErr err = ResolvePascalItem(vRefNum, dirID, fileName, &item);
    if (err != noErr) return err;
    if (S_ISDIR(item.st.st_mode)) return fnfErr;

    bool write = permission != fsRdPerm;
    if (write && (IsLockedMode(item.st.st_mode) || IsOpenForWriting(item.st.st_dev, item.st.st_ino))) {
        if (permission != fsCurPerm) return IsLockedMode(item.st.st_mode) ? permErr : opWrErr;
        write = false;
    }
    int16_t slot = FreeRefNum();
    if (slot == 0) return tmfoErr;
    int fd = open(item.path.c_str(), (write ? O_RDWR : O_RDONLY) | O_CLOEXEC);
    if (fd < 0 && write && permission == fsCurPerm && errno == EACCES) {
        write = false;
        fd = open(item.path.c_str(), O_RDONLY | O_CLOEXEC);
    }
    if (fd < 0) return PlatformErrnoToOSErr(errno);
    OpenFile &file = gOpenFiles[slot - 1];
    file = OpenFile();
    file.fd = fd;
    file.writable = write;
    file.dev = item.st.st_dev;
    file.ino = item.st.st_ino;
    file.regular = S_ISREG(item.st.st_mode);
    *refNum = slot;
    return noErr;
}

OSErr LinuxGetEOF(int16_t refNum, int32_t *logEOF)
{
    OpenFile *file = FileOfRefNum(refNum);
    if (!file) return rfNumErr;
    if (!logEOF) return paramErr;
    int64_t size = 0;
    OSErr err = FileSize(file, &size);
    if (err != noErr) return err;
    if (size > INT32_MAX) return paramErr;   /* beyond what a 32-bit length can say */
    *logEOF = (int32_t)size;
    return noErr;
}

OSErr LinuxSetEOF(int16_t refNum, int32_t logEOF)
{
    OpenFile *file = FileOfRefNum(refNum);
    if (!file) return rfNumErr;
    if (!file->writable) return wrPermErr;
    if (logEOF < 0) return paramErr;
    if (ftruncate(file->fd, logEOF) != 0) return PlatformErrnoToOSErr(errno);
    if (file->mark > logEOF) file->mark = logEOF;
    return noErr;
}

OSErr LinuxGetFPos(int16_t refNum, int32_t *filePos)
{
    OpenFile *file = FileOfRefNum(refNum);
    if (!file) return rfNumErr;
    if (!filePos) return paramErr;
    *filePos = file->mark > INT32_MAX ? INT32_MAX : (int32_t)file->mark;
    return noErr;
}

OSErr LinuxSetFPos(int16_t refNum, int16_t posMode, int32_t posOff)
{
    OpenFile *file = FileOfRefNum(refNum);
    if (!file) return rfNumErr;
    int64_t size = 0;
    OSErr err = FileSize(file, &size);
    if (err != noErr) return err;
    int64_t mark;
    switch (posMode) {
    case fsAtMark: return noErr;
    case fsFromStart: mark = posOff; break;
    case fsFromLEOF: mark = size + posOff; break;
    case fsFromMark: mark = file->mark + posOff; break;
    default: return paramErr;
    }
    if (mark < 0) return posErr;
    if (mark > size) {
        /* Past the end: the mark stops at the end, as the Mac does. */
        file->mark = size;
        return eofErr;
    }
    file->mark = mark;
    return noErr;
}

OSErr LinuxRead(int16_t refNum, int32_t *count, void *buffPtr)
{
    OpenFile *file = FileOfRefNum(refNum);
    if (!file) {
        if (count) *count = 0;
        return rfNumErr;
    }
    if (!count || *count < 0 || (!buffPtr && *count > 0)) return paramErr;
    int32_t wanted = *count, done = 0;
    OSErr err = noErr;
    while (done < wanted) {
        ssize_t n = pread(file->fd, (char *)buffPtr + done, (size_t)(wanted - done), file->mark + done);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            err = PlatformErrnoToOSErr(errno);
            break;
        }
        if (n == 0) {
            err = eofErr;
            break;
        }
        done += (int32_t)n;
    }
    file->mark += done;
    *count = done;
    return err;
}

OSErr LinuxWrite(int16_t refNum, int32_t *count, const void *buffPtr)
{
    OpenFile *file = FileOfRefNum(refNum);
    if (!file) {
        if (count) *count = 0;
        return rfNumErr;
    }
    if (!count || *count < 0 || (!buffPtr && *count > 0)) return paramErr;
    if (!file->writable) {
        *count = 0;
        return wrPermErr;
    }
    if (OSErr late = TakeLateCopyError(file)) {
        *count = 0;
        return late;
    }
    int32_t wanted = *count, done = 0;
    OSErr err = noErr;
    while (done < wanted) {
        ssize_t n = pwrite(file->fd, (const char *)buffPtr + done, (size_t)(wanted - done), file->mark + done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            err = n < 0 ? PlatformErrnoToOSErr(errno) : (OSErr)ioErr;
            break;
        }
        done += (int32_t)n;
    }
    file->mark += done;
    *count = done;
    return err;
}

OSErr LinuxClose(int16_t refNum)
{
    OpenFile *file = FileOfRefNum(refNum);
    if (!file) return rfNumErr;
    int fd = file->fd;
    file->fd = -1;
    OSErr late = TakeLateCopyError(file);
    if (close(fd) != 0 && errno != EINTR) return PlatformErrnoToOSErr(errno);
    return late;
}
