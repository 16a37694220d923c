/*
 * FileLinuxFinderInfo.cpp: Finder information and file locks. Type, creator, flags and
 * location live in the extended attribute user.com.apple.FinderInfo (32 bytes in the
 * Mac OS X layout, big-endian); on a file system without extended attributes they read
 * as zero and writes are skipped. A locked file is one without any write permission.
 */
#include "platform/FileLinux.h"
#include "platform/Toolbox.h"

#include <cerrno>
#include <cstring>
#include <sys/xattr.h>

namespace {

const char kFinderInfoAttribute[] = "user.com.apple.FinderInfo";
enum { kFinderInfoSize = 32 };

uint32_t Get32(const unsigned char *p)
{
    return (uint32_t)p[0] << 24 | (uint32_t)p[1] << 16 | (uint32_t)p[2] << 8 | p[3];
}

uint16_t Get16(const unsigned char *p)
{
    return (uint16_t)(p[0] << 8 | p[1]);
}

void Put32(unsigned char *p, uint32_t v)
{
    p[0] = (unsigned char)(v >> 24);
    p[1] = (unsigned char)(v >> 16);
    p[2] = (unsigned char)(v >> 8);
    p[3] = (unsigned char)v;
}

void Put16(unsigned char *p, uint16_t v)
{
    p[0] = (unsigned char)(v >> 8);
    p[1] = (unsigned char)v;
}

bool AttributesUnsupported(int err)
{
    return err == ENOTSUP || err == EOPNOTSUPP;
}

/* Writes (or, when all zero, removes) the attribute once. */
int StoreAttribute(const std::string &path, const unsigned char *raw)
{
    static const unsigned char kZero[kFinderInfoSize] = {0};
    if (memcmp(raw, kZero, kFinderInfoSize) == 0) {
        if (removexattr(path.c_str(), kFinderInfoAttribute) == 0 || errno == ENODATA) return 0;
        return errno;
    }
    return setxattr(path.c_str(), kFinderInfoAttribute, raw, kFinderInfoSize, 0) == 0 ? 0 : errno;
}

/* The items of a file lookup that must name an existing file (not a folder). */
OSErr ResolveFile(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, FileItem *item)
{
    OSErr err = ResolvePascalItem(vRefNum, dirID, fileName, item);
    if (err != noErr) return err;
    return S_ISDIR(item->st.st_mode) ? fnfErr : noErr;
}

} // namespace

void ReadFinderInfo(const std::string &path, FInfo *info)
{
    memset(info, 0, sizeof *info);
    unsigned char raw[kFinderInfoSize];
    ssize_t n = getxattr(path.c_str(), kFinderInfoAttribute, raw, sizeof raw);
    if (n < 16) return;
    info->fdType = Get32(raw);
    info->fdCreator = Get32(raw + 4);
    info->fdFlags = Get16(raw + 8);
    info->fdLocation[0] = (int16_t)Get16(raw + 10);
    info->fdLocation[1] = (int16_t)Get16(raw + 12);
    info->fdFldr = (int16_t)Get16(raw + 14);
}

OSErr WriteFinderInfo(const std::string &path, const FInfo *info)
{
    unsigned char raw[kFinderInfoSize] = {0};
    if (getxattr(path.c_str(), kFinderInfoAttribute, raw, sizeof raw) < 0) memset(raw, 0, sizeof raw);
    Put32(raw, info->fdType);
    Put32(raw + 4, info->fdCreator);
    Put16(raw + 8, info->fdFlags);
    Put16(raw + 10, (uint16_t)info->fdLocation[0]);
    Put16(raw + 12, (uint16_t)info->fdLocation[1]);
    Put16(raw + 14, (uint16_t)info->fdFldr);
    int err = StoreAttribute(path, raw);
    if (err == EACCES || err == EPERM) {
        /* A locked file keeps its Finder info writable, as on the Mac: unlock briefly. */
        struct stat st;
        if (stat(path.c_str(), &st) == 0 && IsLockedMode(st.st_mode) &&
            chmod(path.c_str(), (st.st_mode & 07777) | S_IWUSR) == 0) {
            err = StoreAttribute(path, raw);
            chmod(path.c_str(), st.st_mode & 07777);
        }
    }
    if (err == 0 || AttributesUnsupported(err)) return noErr;
    return PlatformErrnoToOSErr(err);
}

bool IsLockedMode(mode_t mode)
{
    return (mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

OSErr LinuxGetFInfo(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, FInfo *info)
{
    if (!info) return paramErr;
    FileItem item;
    OSErr err = ResolveFile(vRefNum, dirID, fileName, &item);
    if (err != noErr) return err;
    ReadFinderInfo(item.path, info);
    return noErr;
}

OSErr LinuxSetFInfo(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, const FInfo *info)
{
    if (!info) return paramErr;
    FileItem item;
    OSErr err = ResolveFile(vRefNum, dirID, fileName, &item);
    if (err != noErr) return err;
    return WriteFinderInfo(item.path, info);
}

OSErr LinuxSetFLock(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName)
{
    FileItem item;
    OSErr err = ResolvePascalItem(vRefNum, dirID, fileName, &item);
    if (err != noErr) return err;
    mode_t mode = item.st.st_mode & 07777 & ~(mode_t)(S_IWUSR | S_IWGRP | S_IWOTH);
    if (chmod(item.path.c_str(), mode) != 0) return PlatformErrnoToOSErr(errno);
    return noErr;
}

OSErr LinuxRstFLock(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName)
{
    FileItem item;
    OSErr err = ResolvePascalItem(vRefNum, dirID, fileName, &item);
    if (err != noErr) return err;
    if (chmod(item.path.c_str(), (item.st.st_mode & 07777) | S_IWUSR) != 0) return PlatformErrnoToOSErr(errno);
    return noErr;
}
