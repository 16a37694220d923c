/*
 * Errors.cpp: the one mapping from errno values to Mac OS error numbers. Every Linux
 * implementation in this library reports failures through it.
 */
#include "platform/Toolbox.h"

#include <cerrno>

extern "C" OSErr PlatformErrnoToOSErr(int err)
{
    switch (err) {
    case 0: return noErr;
    case ENOENT: return fnfErr;
    case ENOTDIR: return dirNFErr;
    case EACCES:
    case EPERM: return permErr;
    case EROFS: return wPrErr;
    case EBUSY:
    case ETXTBSY:
    case ENOTEMPTY: return fBsyErr;
    case ENOSPC:
    case EDQUOT: return dskFulErr;
    case EIO: return ioErr;
    case ENOMEM: return memFullErr;
    case ENAMETOOLONG: return bdNamErr;
    case EEXIST: return dupFNErr;
    case EMFILE:
    case ENFILE: return tmfoErr;
    case EISDIR:
    case EINVAL: return paramErr;
    case EBADF: return rfNumErr;
    default: return ioErr;
    }
}
