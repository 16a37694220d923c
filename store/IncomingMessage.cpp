/*
 * IncomingMessage.cpp: the parameters of the message the solution is reading, moved
 * here from the archive by TPX1GetNextMessage. A missing parameter reads as empty.
 */
#include "store/MessageLists.h"

#include "text/ErrorCodes.h"
#include "text/TextHandles.h"

void DisposeIncomingMessageParameterList(void)
{
    DisposeDataList(&gIncomingMessageParameterDataNodeList);
}

OSErr SetIncomingMessageParameterFromStr(const char *keyword, const char *text)
{
    return (OSErr)SetDataFromStr(keyword, 0, text, &gIncomingMessageParameterDataNodeList);
}

char **GetTheIncomingMessageParameterDataHandleFromList_NotACopy(const char *keyword)
{
    DataNode *node = FindDataNodeInList(keyword, gIncomingMessageParameterDataNodeList);
    return node ? node->data : nullptr;
}

long GetIncomingMessageParameterInListAsStr(const char *keyword, char *buffer, long size)
{
    char **data = GetTheIncomingMessageParameterDataHandleFromList_NotACopy(keyword);
    return strcpyFHandleToCStr(buffer, size, data) >= size ? 1 : 0;
}

/* A parameter the current message lacks reads as the empty text; with no current
 * message at all the lookup fails (-2802), after emptying the result all the same. */
OSErr GetIncomingMessageParameterInListAsResultHandle(const char *keyword, char **result)
{
    OSErr err = CopyFHandleToResultHandle(GetTheIncomingMessageParameterDataHandleFromList_NotACopy(keyword), result);
    if (err == noErr && gIncomingMessageParameterDataNodeList == nullptr)
        err = kNoSuchGlobalErr;
    return err;
}
