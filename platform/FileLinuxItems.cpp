/*
 * FileLinuxItems.cpp: creating and deleting items and finding the special folders. A
 * new file gets its type and creator at once; deletion refuses locked files (fLckdErr)
 * and files open in this process (fBsyErr), as the Mac does, and removes empty folders.
 * The applications folder is /opt (or TPX1_APPLICATIONS_FOLDER), the temporary folder
 * $TMPDIR or /tmp.
 */
#include "platform/FileLinux.h"
#include "platform/Toolbox.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

OSErr LinuxCreate(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, OSType creator, OSType fileType)
{
    FileItem item;
    OSErr err = ResolvePascalItem(vRefNum, dirID, fileName, &item);
    if (err == noErr) return dupFNErr;
    if (err != fnfErr) return err;
    if (item.trailingColon) return bdNamErr;
    int fd = open(item.path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) return PlatformErrnoToOSErr(errno);
    close(fd);
    ForgetCatalogListing(item.parent);
    if (creator == 0 && fileType == 0) return noErr;
    FInfo info = {};
    info.fdType = fileType;
    info.fdCreator = creator;
    err = WriteFinderInfo(item.path, &info);
    if (err != noErr) unlink(item.path.c_str());
    return err;
}

OSErr LinuxDelete(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName)
{
    FileItem item;
    OSErr err = ResolvePascalItem(vRefNum, dirID, fileName, &item);
    if (err != noErr) return err;
    struct stat link;
    bool isLink = lstat(item.path.c_str(), &link) == 0 && S_ISLNK(link.st_mode);
    int done;
    if (S_ISDIR(item.st.st_mode) && !isLink) {
        done = rmdir(item.path.c_str());
    } else {
        if (!isLink && IsLockedMode(item.st.st_mode)) return fLckdErr;
        if (!isLink && IsOpenInProcess(item.st.st_dev, item.st.st_ino)) return fBsyErr;
        done = unlink(item.path.c_str());
    }
    if (done != 0) return PlatformErrnoToOSErr(errno);
    ForgetCatalogListing(item.parent.empty() ? ParentOfPOSIX(item.path) : item.parent);
    return noErr;
}

OSErr LinuxFindFolder(int16_t vRefNum, OSType folderType, Boolean createFolder, int16_t *foundVRefNum,
                      int32_t *foundDirID)
{
    if (!foundVRefNum || !foundDirID) return paramErr;
    const char *where = nullptr;
    if (folderType == kApplicationsFolderType) {
        where = PlatformSetting("TPX1_APPLICATIONS_FOLDER");
        if (!where || !*where) where = "/opt";
    } else if (folderType == kTemporaryFolderType) {
        where = getenv("TMPDIR");
        if (!where || !*where) where = "/tmp";
    } else {
        return fnfErr;
    }
    std::string folder;
    if (!NormalizePOSIX(where, &folder, nullptr)) return fnfErr;
    struct stat st;
    if (stat(folder.c_str(), &st) != 0) {
        if (errno != ENOENT || !createFolder) return errno == ENOENT ? (OSErr)fnfErr : PlatformErrnoToOSErr(errno);
        if (mkdir(folder.c_str(), 0777) != 0) return PlatformErrnoToOSErr(errno);
        ForgetCatalogListing(ParentOfPOSIX(folder));
    } else if (!S_ISDIR(st.st_mode)) {
        return fnfErr;
    }
    DirIdOfFolder(folder, foundVRefNum, foundDirID);
    return noErr;
}
