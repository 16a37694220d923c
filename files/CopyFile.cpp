/*
 * CopyFile.cpp: the external function TPX1CopyFile: copies a file's data fork to a
 * new file with the source's type and creator, replacing (and unlocking) whatever
 * stood at the destination.
 */
#include <cstring>

#include "files/FileOps.h"
#include "files/FileSupport.h"
#include "files/Paths.h"
#include "ui/Alerts.h"

void TPX1CopyFile(long funcId, char **argHandle, char **resultHandle)
{
    char argument[768];
    CopyArgumentText(argHandle, argument, sizeof argument);
    char *fields[3];
    if (SplitBarFields(argument, fields, 3) < 2) {
        SetResultTextOrReport(funcId, resultHandle, "Error: vertical bar expected in TPX1CopyFile");
        return;
    }
    char sourcePiece[kPathSize], destinationPiece[kPathSize], reference[kPathSize];
    char source[kPathSize], destination[kPathSize];
    CopyPathPiece(sourcePiece, fields[0]);
    CopyPathPiece(destinationPiece, fields[1]);
    CopyPathPiece(reference, fields[2]);
    if (ResolvePossiblePartialPath(sourcePiece, reference, 0, source) != noErr ||
        ResolvePossiblePartialPath(destinationPiece, reference, 0, destination) != noErr) {
        SetResultTextOrReport(funcId, resultHandle, kResolveFailedText);
        return;
    }
    if (!FileExists(source)) {
        char message[kPathSize + 48];
        strcpy(message, "Error: The source file does not exist: ");
        strcat(message, source);
        SetResultTextOrReport(funcId, resultHandle, message);
        return;
    }

    Str255 pascalSource, pascalDestination;
    MakePascalPath(source, pascalSource);
    MakePascalPath(destination, pascalDestination);
    FInfo info;
    int16_t sourceRef = 0, destinationRef = 0;
    int32_t length = 0;
    const char *errorText = nullptr;
    /* On a failure from here on, the files opened so far stay as the error left them. */
    if (OpenFileWithInfo(pascalSource, fsRdPerm, &info, &sourceRef, &length, &errorText) != noErr) {
        SetResultTextOrReport(funcId, resultHandle, errorText);
        return;
    }
    HRstFLock(0, 0, pascalDestination);
    HDelete(0, 0, pascalDestination);
    if (HCreate(0, 0, pascalDestination, info.fdCreator, info.fdType) != noErr) {
        SetResultTextOrReport(funcId, resultHandle, "Error: HCreate failed.");
        return;
    }
    if (HOpenDF(0, 0, pascalDestination, fsCurPerm, &destinationRef) != noErr) {
        SetResultTextOrReport(funcId, resultHandle, "Error: HOpenDF failed.");
        return;
    }
    OSErr err = TransferFileSection(sourceRef, destinationRef, 0, length);
    if (err != noErr) {
        SetResultTextOrReport(funcId, resultHandle, "Error: TransferFileSection failed.");
        ReportErrorToUser(funcId, err);
        return;
    }
    FSClose(sourceRef);
    FSClose(destinationRef);
}
