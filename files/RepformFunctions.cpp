/*
 * RepformFunctions.cpp: the external functions on Repform submission files: the
 * years named by a file's identifiers, and rewriting every identifier to one year.
 */
#include <cstring>

#include "files/FileSupport.h"
#include "files/Paths.h"
#include "files/Repform.h"
#include "text/TextUtils.h"
#include "ui/Alerts.h"

static void ReportRepformFailure(long funcId, OSErr err, const char *errorText)
{
    if (errorText)
        ReportErrorMsgToUser(errorText);
    if (err != noErr)
        ReportErrorToUser(funcId, err);
}

void TPX1GetRepformYearsFromIDs(long funcId, char **argHandle, char **resultHandle)
{
    char resolved[kPathSize];
    if (!ResolveExistingFileArgument(funcId, argHandle, resultHandle, resolved))
        return;
    bool years[10];
    const char *errorText = nullptr;
    OSErr err = ScanRepformYears(resolved, years, &errorText);
    char text[64] = "";
    for (int i = 0; i < 10; i++) {
        if (years[i]) {
            size_t end = strlen(text);
            text[end] = '2';
            text[end + 1] = '0';
            text[end + 2] = '0';
            text[end + 3] = (char)('0' + i);
            text[end + 4] = ' ';
            text[end + 5] = 0;
        }
    }
    size_t length = strlen(text);
    if (length > 0) {
        text[length - 1] = 0;
        SetResultTextOrReport(funcId, resultHandle, text);
    }
    ReportRepformFailure(funcId, err, errorText);
}

void TPX1ChangeRepformIDsInFile(long funcId, char **argHandle, char **resultHandle)
{
    char argument[768];
    CopyArgumentText(argHandle, argument, sizeof argument);
    char *bar = strchr(argument, '|');
    if (!bar) {
        SetResultTextOrReport(funcId, resultHandle,
                              "Error: TPX1ChangeRepformIDsInFile requires two parameters (vertical bar not found)");
        return;
    }
    *bar = 0;
    long year = TextToLong(argument);
    if (year < 2000 || year > 2009) {
        SetResultTextOrReport(funcId, resultHandle,
                              "Programmer Error: TPX1ChangeRepformIDsInFile year must be between 2000 and 2009");
        return;
    }
    char resolved[kPathSize];
    if (ResolvePathAndReference(bar + 1, resolved) != noErr) {
        SetResultTextOrReport(funcId, resultHandle, kResolveFailedText);
        return;
    }
    if (!FileExists(resolved))
        return;
    const char *errorText = nullptr;
    OSErr err = ChangeRepformYears(resolved, (int)year, &errorText);
    ReportRepformFailure(funcId, err, errorText);
}
