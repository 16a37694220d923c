/*
 * OutgoingLists.cpp: the two outgoing message parameter lists, chosen by a selector
 * (1: the solution's messages, 2: the plug-in's own). A bad selector is -2 where a
 * code is returned, four blanks as a code, and a null handle as a value.
 */
#include "store/MessageLists.h"

#include "text/ErrorCodes.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"

enum { kCodeTextSize = 256 };

DataNode **OutgoingListHead(short which)
{
    if (which == 1)
        return &gOutgoingUserMessageParameterDataNodeList;
    if (which == 2)
        return &gOutgoingStdBevaviorMessageParameterDataNodeList;
    return nullptr;
}

void DisposeOutgoingMessageParameterList(short which)
{
    DataNode **head = OutgoingListHead(which);
    if (head)
        DisposeDataList(head);
}

OSErr SetOutgoingMessageParameterFromStr(const char *keyword, const char *text, short which)
{
    DataNode **head = OutgoingListHead(which);
    if (!head)
        return kNoListOrSignatureErr;
    return (OSErr)SetDataFromStr(keyword, 0, text, head);
}

OSErr SetOutgoingMessageParameterInList(const char *keyword, char **handle, short which)
{
    DataNode **head = OutgoingListHead(which);
    if (!head)
        return kNoListOrSignatureErr;
    return (OSErr)SetDataInList(keyword, 0, handle, head, false, false);
}

OSErr AppendToOutgoingMessageParameterInList(const char *keyword, bool noDupes, char **handle, short which)
{
    DataNode **head = OutgoingListHead(which);
    if (!head)
        return kNoListOrSignatureErr;
    return (OSErr)SetDataInList(keyword, 0, handle, head, true, noDupes);
}

OSErr RemoveOutgoingMessageParameterFromList(const char *keyword, short which)
{
    DataNode **head = OutgoingListHead(which);
    if (!head)
        return kNoListOrSignatureErr;
    return (OSErr)RemoveDataFromList(keyword, head);
}

char **GetTheOutgoingMessageParameterDataHandleFromList_NotACopy(const char *keyword, short which)
{
    DataNode **head = OutgoingListHead(which);
    DataNode *node = head ? FindDataNodeInList(keyword, *head) : nullptr;
    return node ? node->data : nullptr;
}

long GetOutgoingMessageParameterInListAsStr(const char *keyword, char *buffer, long size, short which)
{
    if (buffer && size > 0)
        buffer[0] = 0;
    if (!OutgoingListHead(which))
        return kNoListOrSignatureErr;
    char **data = GetTheOutgoingMessageParameterDataHandleFromList_NotACopy(keyword, which);
    return strcpyFHandleToCStr(buffer, size, data) >= size ? 1 : 0;
}

OSType GetOutgoingMessageParameterInListAsOSType(const char *keyword, short which)
{
    char text[kCodeTextSize];
    GetOutgoingMessageParameterInListAsStr(keyword, text, sizeof text, which);
    return StringToOSType(text);
}

void LockAllOutgoingMessageParameters(DataNode *first)
{
    for (DataNode *node = first; node; node = node->next)
        LockFHandle(node->data);
}

void UnLockAllOutgoingMessageParameters(DataNode *first)
{
    for (DataNode *node = first; node; node = node->next)
        UnlockFHandle(node->data);
}
