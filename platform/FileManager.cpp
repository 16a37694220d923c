/*
 * FileManager.cpp: the exported File Manager and Folder Manager calls. Each call the
 * plug-in makes checks its fault point first (an injected error is returned as it is)
 * and then goes through the installed file service table; the FSSpec calls pass the
 * FSSpec's fields on.
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

} // namespace

extern "C" {

const Tpx1FileMethods *PlatformInstallFileMethods(const Tpx1FileMethods *methods)
{
    const Tpx1FileMethods *previous = gFileMethods.exchange(methods, std::memory_order_acq_rel);
    return previous ? previous : PlatformLinuxFileMethods();
}

void PlatformFilesReset(void)
{
    Files()->xReset();
}

OSErr FSMakeFSSpec(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, FSSpec *theSpec)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSMakeFSSpec)) return err;
    return Files()->xMakeFSSpec(vRefNum, dirID, fileName, theSpec);
}

OSErr HGetFInfo(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, FInfo *info)
{
    if (OSErr err = PlatformFaultCheck(kFaultHGetFInfo)) return err;
    return Files()->xGetFInfo(vRefNum, dirID, fileName, info);
}

OSErr HSetFInfo(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, const FInfo *info)
{
    return Files()->xSetFInfo(vRefNum, dirID, fileName, info);
}

OSErr FSpGetFInfo(const FSSpec *theSpec, FInfo *info)
{
    if (!theSpec) return paramErr;
    return Files()->xGetFInfo(theSpec->vRefNum, theSpec->parID, theSpec->name, info);
}

OSErr HOpenDF(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, int8_t permission, int16_t *refNum)
{
    if (OSErr err = PlatformFaultCheck(kFaultHOpenDF)) return err;
    return Files()->xOpenDF(vRefNum, dirID, fileName, permission, refNum);
}

OSErr FSpOpenDF(const FSSpec *theSpec, int8_t permission, int16_t *refNum)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSpOpenDF)) return err;
    if (!theSpec) return paramErr;
    return Files()->xOpenDF(theSpec->vRefNum, theSpec->parID, theSpec->name, permission, refNum);
}

OSErr GetEOF(int16_t refNum, int32_t *logEOF)
{
    if (OSErr err = PlatformFaultCheck(kFaultGetEOF)) return err;
    return Files()->xGetEOF(refNum, logEOF);
}

OSErr SetEOF(int16_t refNum, int32_t logEOF)
{
    return Files()->xSetEOF(refNum, logEOF);
}

OSErr GetFPos(int16_t refNum, int32_t *filePos)
{
    return Files()->xGetFPos(refNum, filePos);
}

OSErr SetFPos(int16_t refNum, int16_t posMode, int32_t posOff)
{
    if (OSErr err = PlatformFaultCheck(kFaultSetFPos)) return err;
    return Files()->xSetFPos(refNum, posMode, posOff);
}

OSErr FSRead(int16_t refNum, int32_t *count, void *buffPtr)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSRead)) {
        if (count) *count = 0;
        return err;
    }
    return Files()->xRead(refNum, count, buffPtr);
}

OSErr FSWrite(int16_t refNum, int32_t *count, const void *buffPtr)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSWrite)) {
        if (count) *count = 0;
        return err;
    }
    return Files()->xWrite(refNum, count, buffPtr);
}

OSErr FSClose(int16_t refNum)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSClose)) return err;
    return Files()->xClose(refNum);
}

OSErr HCreate(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName, OSType creator, OSType fileType)
{
    if (OSErr err = PlatformFaultCheck(kFaultHCreate)) return err;
    return Files()->xCreate(vRefNum, dirID, fileName, creator, fileType);
}

OSErr FSpCreate(const FSSpec *theSpec, OSType creator, OSType fileType, int16_t scriptTag)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSpCreate)) return err;
    if (!theSpec) return paramErr;
    return Files()->xCreate(theSpec->vRefNum, theSpec->parID, theSpec->name, creator, fileType);
}

OSErr HDelete(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName)
{
    if (OSErr err = PlatformFaultCheck(kFaultHDelete)) return err;
    return Files()->xDelete(vRefNum, dirID, fileName);
}

OSErr FSpDelete(const FSSpec *theSpec)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSpDelete)) return err;
    if (!theSpec) return paramErr;
    return Files()->xDelete(theSpec->vRefNum, theSpec->parID, theSpec->name);
}

OSErr HSetFLock(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName)
{
    return Files()->xSetFLock(vRefNum, dirID, fileName);
}

OSErr HRstFLock(int16_t vRefNum, int32_t dirID, ConstStr255Param fileName)
{
    if (OSErr err = PlatformFaultCheck(kFaultHRstFLock)) return err;
    return Files()->xRstFLock(vRefNum, dirID, fileName);
}

OSErr PBGetCatInfoSync(CInfoPBRec *pb)
{
    if (OSErr err = PlatformFaultCheck(kFaultPBGetCatInfoSync)) return err;
    return Files()->xGetCatInfo(pb);
}

OSErr FindFolder(int16_t vRefNum, OSType folderType, Boolean createFolder, int16_t *foundVRefNum,
                 int32_t *foundDirID)
{
    if (OSErr err = PlatformFaultCheck(kFaultFindFolder)) return err;
    return Files()->xFindFolder(vRefNum, folderType, createFolder, foundVRefNum, foundDirID);
}

OSErr FSpGetPOSIXPath(const FSSpec *theSpec, char *out, int32_t outSize)
{
    if (OSErr err = PlatformFaultCheck(kFaultFSpGetPOSIXPath)) return err;
    return Files()->xSpecToPOSIX(theSpec, out, outSize);
}

OSErr PlatformClassicPathToPOSIX(const char *classicPath, char *out, int32_t outSize)
{
    return Files()->xClassicToPOSIX(classicPath, out, outSize);
}

OSErr PlatformPOSIXPathToClassic(const char *posixPath, char *out, int32_t outSize)
{
    if (OSErr err = PlatformFaultCheck(kFaultPlatformPOSIXPathToClassic)) return err;
    return Files()->xPOSIXToClassic(posixPath, out, outSize);
}

} // extern "C"
