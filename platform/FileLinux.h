/*
 * FileLinux.h: what the parts of the Linux file service share inside the platform
 * library (not exported): names, volumes, directory ids, the resolution of classic
 * paths to POSIX items, Finder info, the open-file table and the catalog listings.
 */
#ifndef TPX1_FILELINUX_H
#define TPX1_FILELINUX_H

#include "platform/FileService.h"

#include <string>
#include <sys/stat.h>
#include <sys/types.h>

/* ---- Names (FileLinuxNames.cpp) ---- */
/* A classic name (Mac Roman, '/' allowed) as a POSIX name (UTF-8, '/' as ':'). False for
 * a name no POSIX file can carry: empty, ".", "..", a NUL, or longer than NAME_MAX. */
bool ClassicNameToPOSIX(const unsigned char *name, size_t length, std::string *posixName);
/* A POSIX name as a classic name; false when a character has no Mac Roman form (it is
 * shown as '?' in *classicName). */
bool POSIXNameToClassic(const char *name, size_t length, std::string *classicName);
unsigned char MacRomanUpper(unsigned char c);
/* Catalog order: Mac Roman upper-cased, ties bytewise. */
int CompareClassicNames(const std::string &a, const std::string &b);
bool SameClassicNameIgnoringCase(const unsigned char *a, size_t aLength, const std::string &b);
/* Pascal string from bytes, cut at 255. */
void SetPascalName(unsigned char *pascal, const std::string &text);
std::string JoinPOSIX(const std::string &folder, const std::string &name);
std::string ParentOfPOSIX(const std::string &path);
std::string LastComponentOfPOSIX(const std::string &path);
/* An absolute POSIX path without ".", ".." or repeated slashes, and without a trailing
 * slash (except "/"); false for a relative path. */
bool NormalizePOSIX(const char *path, std::string *normal, bool *trailingSlash);

/* ---- Volumes (FileLinuxVolumes.cpp) ---- */
struct FileVolume {
    int16_t vRefNum;
    std::string name;        /* classic (Mac Roman) */
    std::string mountPoint;  /* POSIX, "/" for the root volume */
    bool present;
    bool representable;      /* the name has a Mac Roman form */
};
const FileVolume *FindVolumeByName(const unsigned char *name, size_t length);
const FileVolume *FindVolumeByRefNum(int16_t vRefNum);   /* 0: the root volume */
const FileVolume *VolumeOfPOSIXPath(const std::string &normalPath);
void ResetVolumes(void);
void UseMountInfoFile(const char *posixPath);

/* ---- Directory ids (FileLinuxDirIds.cpp) ---- */
/* The volume and id of a folder, handed out on first use; a volume's root is 2. */
void DirIdOfFolder(const std::string &folder, int16_t *vRefNum, int32_t *dirID);
/* The folder of (vRefNum, dirID): dirID 0 or 2 is the volume's root; vRefNum 0 is the
 * root volume for those, any volume otherwise. nsvErr or dirNFErr. */
OSErr FolderOfDirId(int16_t vRefNum, int32_t dirID, std::string *folder);
void ResetDirIds(void);

/* ---- Items (FileLinuxPaths.cpp) ---- */
struct FileItem {
    std::string path;        /* POSIX path of the item (complete even when missing) */
    std::string parent;      /* POSIX path of its folder; empty for a volume's root */
    std::string name;        /* classic name; the volume's name for a root */
    bool exists;
    bool trailingColon;      /* the classic path named a folder */
    struct stat st;          /* valid when exists */
};
/* Resolve (vRefNum, dirID, name) as the File Manager does: a name holding a colon but not
 * starting with one is a full path; otherwise it is relative to the folder dirID.
 * noErr: the item exists; fnfErr: its folder exists, it does not; dirNFErr: a folder on
 * the way is missing; nsvErr; bdNamErr. */
OSErr ResolveItem(int16_t vRefNum, int32_t dirID, const unsigned char *name, size_t length, FileItem *item);
OSErr ResolvePascalItem(int16_t vRefNum, int32_t dirID, ConstStr255Param name, FileItem *item);
/* The FSSpec of a resolved item (existing or not). */
void SpecOfItem(const FileItem &item, FSSpec *theSpec);
/* The folder's own id and its parent's id (1 for a root), its classic name. */
void DescribeFolder(const std::string &folder, int16_t *vRefNum, int32_t *dirID, int32_t *parID,
                    std::string *name);
/* stat for a path that must be a folder: noErr, dirNFErr or another error. */
OSErr StatFolder(const std::string &folder, struct stat *st);
OSErr LinuxMakeFSSpec(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, FSSpec *theSpec);
OSErr LinuxSpecToPOSIX(const FSSpec *theSpec, char *out, int32_t outSize);
OSErr LinuxClassicToPOSIX(const char *classicPath, char *out, int32_t outSize);
OSErr LinuxPOSIXToClassic(const char *posixPath, char *out, int32_t outSize);
OSErr CopyOut(const std::string &text, char *out, int32_t outSize);

/* ---- Finder info and locks (FileLinuxFinderInfo.cpp) ---- */
void ReadFinderInfo(const std::string &path, FInfo *info);
OSErr WriteFinderInfo(const std::string &path, const FInfo *info);
bool IsLockedMode(mode_t mode);
OSErr LinuxGetFInfo(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, FInfo *info);
OSErr LinuxSetFInfo(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, const FInfo *info);
OSErr LinuxSetFLock(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName);
OSErr LinuxRstFLock(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName);

/* ---- Open files (FileLinuxOpenFiles.cpp) ---- */
struct OpenFile {
    int fd = -1;
    bool writable = false;
    int64_t mark = 0;
    dev_t dev = 0;
    ino_t ino = 0;
    bool regular = false;        /* a regular file, which the kernel can copy */
    bool noKernelCopy = false;   /* the kernel refused to copy from this file */
    OSErr lateErr = noErr;       /* a failure in completing a copy into this file */
};
/* The open file of a reference number; null when none is open under it. */
OpenFile *FileOfRefNum(int16_t refNum);
bool IsOpenInProcess(dev_t dev, ino_t ino);
void CloseAllOpenFiles(void);
OSErr LinuxOpenDF(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, int8_t permission, int16_t *refNum);
OSErr LinuxGetEOF(int16_t refNum, int32_t *logEOF);
OSErr LinuxSetEOF(int16_t refNum, int32_t logEOF);
OSErr LinuxGetFPos(int16_t refNum, int32_t *filePos);
OSErr LinuxSetFPos(int16_t refNum, int16_t posMode, int32_t posOff);
OSErr LinuxRead(int16_t refNum, int32_t *count, void *buffPtr);
OSErr LinuxWrite(int16_t refNum, int32_t *count, const void *buffPtr);
OSErr LinuxClose(int16_t refNum);

/* ---- Copies inside the kernel (FileLinuxCopy.cpp) ---- */
Boolean LinuxCanCopyRange(int16_t sourceRefNum, int16_t destRefNum);
OSErr LinuxCopyRange(int16_t sourceRefNum, int16_t destRefNum, int32_t *count, Boolean more);
void LinuxFinishCopies(void);
/* A failure in completing a copy into the file, once: noErr when there was none. */
OSErr TakeLateCopyError(OpenFile *file);

/* ---- Catalog (FileLinuxCatalog.cpp) ---- */
/* The POSIX name of the item of folder whose classic name is name (for names that a
 * POSIX file carries in another Unicode form than the one the conversion gives). */
bool FindCatalogName(const std::string &folder, const unsigned char *name, size_t length, std::string *posixName);
void ForgetCatalogListing(const std::string &folder);
void ForgetAllCatalogListings(void);
OSErr LinuxGetCatInfo(CInfoPBRec *pb);

/* ---- Creating, deleting, special folders (FileLinuxItems.cpp) ---- */
OSErr LinuxCreate(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, OSType creator, OSType fileType);
OSErr LinuxDelete(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName);
OSErr LinuxFindFolder(int16_t vRefNum, OSType folderType, Boolean createFolder, int16_t *foundVRefNum,
                      int32_t *foundDirID);

#endif
