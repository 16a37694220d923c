/*
 * FileService.h: the table of functions behind the File Manager calls of Files.h. The
 * exported calls are thin wrappers that check their fault point and then go through the
 * installed table; the default table is the Linux implementation (FileLinux*.cpp).
 * PlatformInstallFileMethods swaps the table and returns the previous one (NULL restores
 * the Linux table and still returns the previous one).
 */
#ifndef TPX1_FILESERVICE_H
#define TPX1_FILESERVICE_H

#include "platform/Files.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One member per toolbox call; the FSSpec calls go through the (vRefNum, dirID, name)
 * members with the FSSpec's fields. */
typedef struct Tpx1FileMethods {
    OSErr (*xMakeFSSpec)(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, FSSpec *theSpec);
    OSErr (*xGetFInfo)(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, FInfo *info);
    OSErr (*xSetFInfo)(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, const FInfo *info);
    OSErr (*xOpenDF)(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, int8_t permission,
                     int16_t *refNum);
    OSErr (*xGetEOF)(int16_t refNum, int32_t *logEOF);
    OSErr (*xSetEOF)(int16_t refNum, int32_t logEOF);
    OSErr (*xGetFPos)(int16_t refNum, int32_t *filePos);
    OSErr (*xSetFPos)(int16_t refNum, int16_t posMode, int32_t posOff);
    OSErr (*xRead)(int16_t refNum, int32_t *count, void *buffPtr);
    OSErr (*xWrite)(int16_t refNum, int32_t *count, const void *buffPtr);
    /* FSCopyRange in three parts: whether the kernel can copy between the two files; the
     * copy; and completing the bytes a copy left to the next one (a failure there is kept
     * and answered by the destination's next copy, write or close). */
    Boolean (*xCanCopyRange)(int16_t sourceRefNum, int16_t destRefNum);
    OSErr (*xCopyRange)(int16_t sourceRefNum, int16_t destRefNum, int32_t *count, Boolean more);
    void (*xFinishCopies)(void);
    OSErr (*xClose)(int16_t refNum);
    OSErr (*xCreate)(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, OSType creator,
                     OSType fileType);
    OSErr (*xDelete)(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName);
    OSErr (*xSetFLock)(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName);
    OSErr (*xRstFLock)(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName);
    OSErr (*xGetCatInfo)(CInfoPBRec *pb);
    OSErr (*xFindFolder)(int16_t vRefNum, OSType folderType, Boolean createFolder,
                         int16_t *foundVRefNum, int32_t *foundDirID);
    OSErr (*xSpecToPOSIX)(const FSSpec *theSpec, char *out, int32_t outSize);
    OSErr (*xClassicToPOSIX)(const char *classicPath, char *out, int32_t outSize);
    OSErr (*xPOSIXToClassic)(const char *posixPath, char *out, int32_t outSize);
    /* Close every open file and forget directory ids, cached listings and volumes. */
    void (*xReset)(void);
} Tpx1FileMethods;

TPX1_API const Tpx1FileMethods *PlatformInstallFileMethods(const Tpx1FileMethods *methods);

/* Reset the installed file service (xReset): for tests, between cases. */
TPX1_API void PlatformFilesReset(void);

/* Read the mount table from posixPath (a file in /proc/self/mountinfo format) instead
 * of the process's own; NULL goes back to /proc/self/mountinfo. Forgets the volumes
 * known so far. For tests of the volume rules. */
TPX1_API void PlatformFilesUseMountInfo(const char *posixPath);

/* Whether FSCopyRange may copy inside the kernel (on by default): off, it answers
 * wrgVolTypErr as on file systems that can't, so that tests and benchmarks can run the
 * read-and-write path too. */
TPX1_API void PlatformFilesAllowKernelCopy(Boolean allow);
/* Bytes that FSCopyRange has copied inside the kernel since the library loaded: says
 * which path a copy took. */
TPX1_API int64_t PlatformFilesBytesCopiedInKernel(void);

/* The Linux implementation's table. */
const Tpx1FileMethods *PlatformLinuxFileMethods(void);

#ifdef __cplusplus
}
#endif

#endif
