/*
 * MessageFunctions.cpp: the external functions with which the solution composes an
 * outgoing message, fetches the next received message and reads its parameters, and
 * the tick stamps and flags they leave for the idle handler.
 */
#include "store/MessageLists.h"

#include "platform/Toolbox.h"
#include "store/Globals.h"
#include "text/TextHandles.h"
#include "ui/Alerts.h"


enum { kKeywordBufferSize = 256, kUserList = 1 };

static const char kMessageIdKeyword[] = "MSSG";

void TPX1ClearOutgoingMessage(long funcId, char **argHandle, char **resultHandle)
{
    DisposeOutgoingMessageParameterList(kUserList);
}

void TPX1SetParameter(long funcId, char **argHandle, char **resultHandle)
{
    gLastSetParameterCallTicks = TickCount();
    char keyword[kKeywordBufferSize];
    long valueOffset = 0;
    OSErr err = SplitNameAndValue(argHandle, keyword, &valueOffset);
    if (err == noErr) {
        LockFHandle(argHandle);
        err = SetOutgoingMessageParameterFromStr(keyword, *argHandle + valueOffset, kUserList);
        UnlockFHandle(argHandle);
    }
    ReportErrorIfAny(funcId, err);
}

void TPX1AppendToParameter(long funcId, char **argHandle, char **resultHandle)
{
    char keyword[kKeywordBufferSize];
    bool noDupes = false;
    OSErr err = GetAndStripNameAndDupes(argHandle, keyword, &noDupes);
    if (err == noErr)
        err = AppendToOutgoingMessageParameterInList(keyword, noDupes, argHandle, kUserList);
    ReportErrorIfAny(funcId, err);
}

void TPX1ClearIncomingMessage(long funcId, char **argHandle, char **resultHandle)
{
    DisposeIncomingMessageParameterList();
    gHaveGottenAnIncomingMessageButNotClearedIt = 0;
}

void TPX1GetNextMessage(long funcId, char **argHandle, char **resultHandle)
{
    DisposeIncomingMessageParameterList();
    gLastGetNextMessageCallTicks = TickCount();
    gHaveSendDoScriptAndWaitingForGetNextMessage = 0;
    TakeOldestArchivedMessage();
    ReportErrorIfAny(funcId, GetIncomingMessageParameterInListAsResultHandle(kMessageIdKeyword, resultHandle));
    gHaveGottenAnIncomingMessageButNotClearedIt = 1;
}

void TPX1GetParameter(long funcId, char **argHandle, char **resultHandle)
{
    char keyword[kKeywordBufferSize];
    strcpyFHandleToCStr(keyword, sizeof keyword, argHandle);
    gLastGetParameterCallTicks = TickCount();
    ReportErrorIfAny(funcId, GetIncomingMessageParameterInListAsResultHandle(keyword, resultHandle));
}
