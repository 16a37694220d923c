/*
 * Zip.cpp: the archive functions, which this platform does not provide: each tells
 * the user so; the two unzip functions answer "Error".
 */
#include "files/FileOps.h"
#include "files/FileSupport.h"
#include "ui/Alerts.h"

void TPX1ZipFiles(long funcId, char **argHandle, char **resultHandle)
{
    ReportErrorMsgToUser("TPX1ZipFiles is not supported on the MAC.");
}

void TPX1UnzipFiles(long funcId, char **argHandle, char **resultHandle)
{
    ReportErrorMsgToUser("TPX1UnzipFiles is not supported on the MAC.");
    SetResultTextOrReport(funcId, resultHandle, "Error");
}

void TPX1UnzipFilesBatchMode(long funcId, char **argHandle, char **resultHandle)
{
    ReportErrorMsgToUser("TPX1UnzipFilesBatchMode is not supported on the MAC.");
    SetResultTextOrReport(funcId, resultHandle, "Error");
}
