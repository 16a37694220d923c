/*
 * Files.h: the File Manager and Folder Manager calls the core uses, on Linux. Paths are
 * classic colon paths in Mac Roman ("Linux:home:ann:Data:Sites.txt"); volumes are the
 * root file system (named "Linux" unless TPX1_ROOT_VOLUME says otherwise) and the file
 * systems mounted at /media/<user>/<name>, /run/media/<user>/<name> and /mnt/<name>.
 * Folders are known by directory ids that the service hands out (a volume's root is 2,
 * its parent 1). Every call is a thin wrapper over the file table and a fault point.
 * Public: installed as <tpx1/Files.h> for partner applications, so it includes the
 * other public headers by file name only.
 */
#ifndef TPX1_FILES_H
#define TPX1_FILES_H

#include "MacTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct FSSpec {
    int16_t vRefNum;       /* volume reference number (negative) */
    int32_t parID;         /* directory id of the parent folder */
    Str255 name;           /* Pascal string, Mac Roman */
} FSSpec;

typedef struct FInfo {
    OSType fdType;
    OSType fdCreator;
    uint16_t fdFlags;
    int16_t fdLocation[2];
    int16_t fdFldr;
} FInfo;

enum { fsCurPerm = 0, fsRdPerm = 1, fsWrPerm = 2, fsRdWrPerm = 3 };
enum { fsAtMark = 0, fsFromStart = 1, fsFromLEOF = 2, fsFromMark = 3 };
enum { smSystemScript = -1 };
enum { fsRtParID = 1, fsRtDirID = 2 };
enum { kOnSystemDisk = -32768 };
enum { kDontCreateFolder = 0, kCreateFolder = 1 };
#define kApplicationsFolderType FOUR_CHAR('a', 'p', 'p', 's')
#define kTemporaryFolderType FOUR_CHAR('t', 'e', 'm', 'p')

/* With vRefNum 0 and dirID 0, fileName is a full classic path. fnfErr means the parent
 * folder exists and the FSSpec names a file that does not (yet); dirNFErr, a folder on the way
 * is missing; nsvErr, no such volume; bdNamErr, a bad name. */
TPX1_API OSErr FSMakeFSSpec(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, FSSpec *theSpec);
TPX1_API OSErr HGetFInfo(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, FInfo *info);
TPX1_API OSErr HSetFInfo(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, const FInfo *info);
TPX1_API OSErr FSpGetFInfo(const FSSpec *theSpec, FInfo *info);
TPX1_API OSErr HOpenDF(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, int8_t permission, int16_t *refNum);
TPX1_API OSErr FSpOpenDF(const FSSpec *theSpec, int8_t permission, int16_t *refNum);
TPX1_API OSErr GetEOF(int16_t refNum, int32_t *logEOF);
TPX1_API OSErr SetEOF(int16_t refNum, int32_t logEOF);
TPX1_API OSErr GetFPos(int16_t refNum, int32_t *filePos);
TPX1_API OSErr SetFPos(int16_t refNum, int16_t posMode, int32_t posOff);
/* *count in: bytes wanted; out: bytes done. eofErr when the end came first. */
TPX1_API OSErr FSRead(int16_t refNum, int32_t *count, void *buffPtr);
TPX1_API OSErr FSWrite(int16_t refNum, int32_t *count, const void *buffPtr);
/* Copies *count bytes from the source's mark to the destination's mark inside the kernel,
 * without passing them through the caller's memory; both marks move on, *count out: the
 * bytes copied. It stands for an FSRead of the source and an FSWrite of the destination
 * and meets their faults, in that order. eofErr when the source ended first.
 * wrgVolTypErr, with nothing copied and no fault met, when the two files' file systems
 * can't copy between them: the caller reads and writes instead.
 * With more set, another FSCopyRange between the same two files, going on from here,
 * follows; the copy may then leave its last bytes (less than 64 KB) to that call, so that
 * the kernel copies whole 64 KB blocks. Any other File Manager call, and a failing
 * FSCopyRange, completes such bytes first. */
TPX1_API OSErr FSCopyRange(int16_t sourceRefNum, int16_t destRefNum, int32_t *count, Boolean more);
TPX1_API OSErr FSClose(int16_t refNum);
TPX1_API OSErr HCreate(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, OSType creator, OSType fileType);
TPX1_API OSErr FSpCreate(const FSSpec *theSpec, OSType creator, OSType fileType, int16_t scriptTag);
TPX1_API OSErr HDelete(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName);
TPX1_API OSErr FSpDelete(const FSSpec *theSpec);
TPX1_API OSErr HSetFLock(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName);
TPX1_API OSErr HRstFLock(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName);

typedef struct CInfoPBRec {
    StringPtr ioNamePtr;   /* in (index 0) or out (index != 0): Pascal name, 256 bytes */
    int16_t ioVRefNum;     /* volume */
    int16_t ioFDirIndex;   /* > 0: the index-th item of folder ioDirID in catalog order;
                              0: the item named ioNamePtr in ioDirID;
                              < 0: the folder ioDirID itself */
    int32_t ioDirID;       /* in: the folder; out: the item's own id when it is a folder */
    int32_t ioDrParID;     /* out: the parent folder's id */
    Boolean isFolder;      /* out */
    FInfo finderInfo;      /* out, files only */
    int32_t ioFlLgLen;     /* out: data fork length, files only */
} CInfoPBRec;
/* Catalog order is by name, case-insensitive in Mac Roman. Past the last item: fnfErr. */
TPX1_API OSErr PBGetCatInfoSync(CInfoPBRec *pb);

TPX1_API OSErr FindFolder(int16_t vRefNum, OSType folderType, Boolean createFolder,
                          int16_t *foundVRefNum, int32_t *foundDirID);

/* The POSIX path (UTF-8) of an FSSpec: stands in for FSpMakeFSRef and CFURL. */
TPX1_API OSErr FSpGetPOSIXPath(const FSSpec *theSpec, char *out, int32_t outSize);
/* Conversions between full classic paths (Mac Roman) and POSIX paths (UTF-8). */
TPX1_API OSErr PlatformClassicPathToPOSIX(const char *classicPath, char *out, int32_t outSize);
TPX1_API OSErr PlatformPOSIXPathToClassic(const char *posixPath, char *out, int32_t outSize);

#ifdef __cplusplus
}
#endif

#endif
