/*
 * FileManager.cpp: the exported File Manager and Folder Manager calls. Each call the
 * plug-in makes checks its fault point first (an injected error is returned as it is)
 * and then goes through the installed file service table; the FSSpec calls pass the
 * FSSpec's fields on. FSCopyRange meets the faults of the read and the write it stands
 * for; every other call first completes what a copy left to the next one.
 */
#include "platform/FileService.h"
#include "platform/Faults.h"

#include <atomic>

namespace {

std::atomic<const Tpx1FileMethods *> gFileMethods{nullptr};

const Tpx1FileMethods *Files()
{
    const Tpx1FileMethods *m = gFileMethods.load(std::memory_order_acquire);
    return m ? m : PlatformLinuxFileMethods();
}

/* The table for every call but FSCopyRange: bytes that a copy left to the next copy are
 * copied first, so that the call sees the files whole. */
const Tpx1FileMethods *FilesWhole()
{
    const Tpx1FileMethods *m = Files();
    m->xFinishCopies();
    return m;
}

} // namespace

extern "C" {

const Tpx1FileMethods *PlatformInstallFileMethods(const Tpx1FileMethods *methods)
{
    const Tpx1FileMethods *previous = gFileMethods.exchange(methods, std::memory_order_acq_rel);
    return previous ? previous : PlatformLinuxFileMethods();
}

void PlatformFilesReset(void)
{
    FilesWhole()->xReset();
}

OSErr FSMakeFSSpec(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, FSSpec *theSpec)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSMakeFSSpec)) return err;
    return FilesWhole()->xMakeFSSpec(vRefNum, dirID, fileName, theSpec);
}

OSErr HGetFInfo(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, FInfo *info)
{
    if (OSErr err = PlatformFaultCheck(kFaultHGetFInfo)) return err;
    return FilesWhole()->xGetFInfo(vRefNum, dirID, fileName, info);
}

OSErr HSetFInfo(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, const FInfo *info)
{
    return FilesWhole()->xSetFInfo(vRefNum, dirID, fileName, info);
}

OSErr FSpGetFInfo(const FSSpec *theSpec, FInfo *info)
{
    if (!theSpec) return paramErr;
    return FilesWhole()->xGetFInfo(theSpec->vRefNum, theSpec->parID, theSpec->name, info);
}

OSErr HOpenDF(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, int8_t permission, int16_t *refNum)
{
    if (OSErr err = PlatformFaultCheck(kFaultHOpenDF)) return err;
    return FilesWhole()->xOpenDF(vRefNum, dirID, fileName, permission, refNum);
}

OSErr FSpOpenDF(const FSSpec *theSpec, int8_t permission, int16_t *refNum)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSpOpenDF)) return err;
    if (!theSpec) return paramErr;
    return FilesWhole()->xOpenDF(theSpec->vRefNum, theSpec->parID, theSpec->name, permission, refNum);
}

OSErr GetEOF(int16_t refNum, int32_t *logEOF)
{
    if (OSErr err = PlatformFaultCheck(kFaultGetEOF)) return err;
    return FilesWhole()->xGetEOF(refNum, logEOF);
}

OSErr SetEOF(int16_t refNum, int32_t logEOF)
{
    return FilesWhole()->xSetEOF(refNum, logEOF);
}

OSErr GetFPos(int16_t refNum, int32_t *filePos)
{
    return FilesWhole()->xGetFPos(refNum, filePos);
}

OSErr SetFPos(int16_t refNum, int16_t posMode, int32_t posOff)
{
    if (OSErr err = PlatformFaultCheck(kFaultSetFPos)) return err;
    return FilesWhole()->xSetFPos(refNum, posMode, posOff);
}

OSErr FSRead(int16_t refNum, int32_t *count, void *buffPtr)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSRead)) {
        if (count) *count = 0;
        return err;
    }
    return FilesWhole()->xRead(refNum, count, buffPtr);
}

OSErr FSWrite(int16_t refNum, int32_t *count, const void *buffPtr)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSWrite)) {
        if (count) *count = 0;
        return err;
    }
    return FilesWhole()->xWrite(refNum, count, buffPtr);
}

OSErr FSCopyRange(int16_t sourceRefNum, int16_t destRefNum, int32_t *count, Boolean more)
{
    if (!count) return paramErr;
    const Tpx1FileMethods *files = Files();
    /* Asked before the faults: where the kernel can't copy, the caller's FSRead and
     * FSWrite meet them, each once. */
    if (!files->xCanCopyRange(sourceRefNum, destRefNum)) {
        files->xFinishCopies();
        *count = 0;
        return wrgVolTypErr;
    }
    OSErr err = PlatformFaultCheck(kFaultFSRead);
    if (err == noErr) err = PlatformFaultCheck(kFaultFSWrite);
    if (err != noErr) {
        files->xFinishCopies();   /* the copies before this one are whole */
        *count = 0;
        return err;
    }
    return files->xCopyRange(sourceRefNum, destRefNum, count, more);
}

OSErr FSClose(int16_t refNum)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSClose)) return err;
    return FilesWhole()->xClose(refNum);
}

OSErr HCreate(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, OSType creator, OSType fileType)
{
    if (OSErr err = PlatformFaultCheck(kFaultHCreate)) return err;
    return FilesWhole()->xCreate(vRefNum, dirID, fileName, creator, fileType);
}

OSErr FSpCreate(const FSSpec *theSpec, OSType creator, OSType fileType, int16_t scriptTag)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSpCreate)) return err;
    if (!theSpec) return paramErr;
    return FilesWhole()->xCreate(theSpec->vRefNum, theSpec->parID, theSpec->name, creator, fileType);
}

OSErr HDelete(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName)
{
    if (OSErr err = PlatformFaultCheck(kFaultHDelete)) return err;
    return FilesWhole()->xDelete(vRefNum, dirID, fileName);
}

OSErr FSpDelete(const FSSpec *theSpec)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSpDelete)) return err;
    if (!theSpec) return paramErr;
    return FilesWhole()->xDelete(theSpec->vRefNum, theSpec->parID, theSpec->name);
}

OSErr HSetFLock(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName)
{
    return FilesWhole()->xSetFLock(vRefNum, dirID, fileName);
}

OSErr HRstFLock(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName)
{
    if (OSErr err = PlatformFaultCheck(kFaultHRstFLock)) return err;
    return FilesWhole()->xRstFLock(vRefNum, dirID, fileName);
}

OSErr PBGetCatInfoSync(CInfoPBRec *pb)
{
    if (OSErr err = PlatformFaultCheck(kFaultPBGetCatInfoSync)) return err;
    return FilesWhole()->xGetCatInfo(pb);
}

OSErr FindFolder(int16_t vRefNum, OSType folderType, Boolean createFolder, int16_t *foundVRefNum,
                 int32_t *foundDirID)
{
    if (OSErr err = PlatformFaultCheck(kFaultFindFolder)) return err;
    return FilesWhole()->xFindFolder(vRefNum, folderType, createFolder, foundVRefNum, foundDirID);
}

OSErr FSpGetPOSIXPath(const FSSpec *theSpec, char *out, int32_t outSize)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSpGetPOSIXPath)) return err;
    return FilesWhole()->xSpecToPOSIX(theSpec, out, outSize);
}

OSErr PlatformClassicPathToPOSIX(const char *classicPath, char *out, int32_t outSize)
{
    return FilesWhole()->xClassicToPOSIX(classicPath, out, outSize);
}

OSErr PlatformPOSIXPathToClassic(const char *posixPath, char *out, int32_t outSize)
{
    if (OSErr err = PlatformFaultCheck(kFaultPlatformPOSIXPathToClassic)) return err;
    return FilesWhole()->xPOSIXToClassic(posixPath, out, outSize);
}

} // extern "C"
