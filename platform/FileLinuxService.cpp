/*
 * FileLinuxService.cpp: the Linux file service's table of functions and its reset.
 */
#include "platform/FileLinux.h"

namespace {

void LinuxResetFiles(void)
{
    CloseAllOpenFiles();
    ForgetAllCatalogListings();
    ResetDirIds();
    ResetVolumes();
}

const Tpx1FileMethods gLinuxFileMethods = {
    LinuxMakeFSSpec,
    LinuxGetFInfo,
    LinuxSetFInfo,
    LinuxOpenDF,
    LinuxGetEOF,
    LinuxSetEOF,
    LinuxGetFPos,
    LinuxSetFPos,
    LinuxRead,
    LinuxWrite,
    LinuxCanCopyRange,
    LinuxCopyRange,
    LinuxFinishCopies,
    LinuxClose,
    LinuxCreate,
    LinuxDelete,
    LinuxSetFLock,
    LinuxRstFLock,
    LinuxGetCatInfo,
    LinuxFindFolder,
    LinuxSpecToPOSIX,
    LinuxClassicToPOSIX,
    LinuxPOSIXToClassic,
    LinuxResetFiles,
};

} // namespace

const Tpx1FileMethods *PlatformLinuxFileMethods(void)
{
    return &gLinuxFileMethods;
}
