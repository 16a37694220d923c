/*
 * Lst2Lines.cpp: the single-line readers: one line of the incoming map object list by
 * number (TPX1GetParameterLST2Line), one line of any text (TPX1GetNthLine), and the
 * latitude and longitude that travel beside a list (TPX1GetParameterLatLong).
 */
#include <string.h>

#include "maplist/Lst2.h"
#include "store/Globals.h"
#include "store/MessageLists.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"
#include "ui/Alerts.h"

enum {
    kLst2LineNumberSize = 64,     /* the line number argument, terminator included */
    kLst2LineSize = 1024,         /* one line of the incoming list */
    kNthLineNameSize = 256,       /* the text before the bar */
    kNthLineSize = 5000,          /* one line of any text */
    kLatLongPartSize = 64
};

void TPX1GetParameterLST2Line(long funcId, char **argHandle, char **resultHandle)
{
    char number[kLst2LineNumberSize];
    strcpyFHandleToCStr(number, sizeof number, argHandle);
    char **list = GetTheIncomingMessageParameterDataHandleFromList_NotACopy("LST2");
    if (list == nullptr)
        return;
    LockFHandle(list);
    long lineNumber = TextToLong(number);
    char line[kLst2LineSize];
    line[0] = 0;   /* a negative number fetches nothing and gives the empty text */
    if (lineNumber >= 0)
        NthLineInTextNonOptimized(*list, lineNumber, line, sizeof line);
    OSErr err = SetResultsHandle(resultHandle, line);
    RemoveTrailingNullTerminator(resultHandle);
    UnlockFHandle(list);
    if (err != noErr)
        ReportErrorToUser(funcId, err);
}

void TPX1GetNthLine(long funcId, char **argHandle, char **resultHandle)
{
    char number[kNthLineNameSize];
    bool noDupes = false;
    number[0] = 0;
    OSErr err = GetAndStripNameAndDupes(argHandle, number, &noDupes);
    if (err != noErr) {
        ReportErrorToUser(funcId, err);
        return;
    }
    long lineNumber = TextToLong(number);
    if (number[0] == 0 || lineNumber < 1)
        return;
    long lineIndex = lineNumber - 1;
    char line[kNthLineSize];
    LockFHandle(argHandle);
    NthLineInTextNonOptimized(*argHandle, lineIndex, line, sizeof line);
    UnlockFHandle(argHandle);
    err = SetResultsHandle(resultHandle, line);
    RemoveTrailingNullTerminator(resultHandle);
    if (err != noErr)
        ReportErrorToUser(funcId, err);
}

void TPX1GetParameterLatLong(long funcId, char **argHandle, char **resultHandle)
{
    char latitude[kLatLongPartSize];
    char longitude[kLatLongPartSize];
    long err = GetIncomingMessageParameterInListAsStr("LAT ", latitude, sizeof latitude);
    if (err == 0)
        err = GetIncomingMessageParameterInListAsStr("LONG", longitude, sizeof longitude);
    if (err != 0) {
        ReportErrorToUser(funcId, (short)err);
        return;
    }
    char both[2 * kLatLongPartSize];
    strcpy(both, latitude);
    strcat(both, " ");
    strcat(both, longitude);
    err = SetResultsHandle(resultHandle, both);
    if (err != 0)
        ReportErrorToUser(funcId, (short)err);
}
