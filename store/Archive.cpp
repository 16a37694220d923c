/*
 * Archive.cpp: the 20 slots of received messages waiting to be read, oldest in slot 0.
 * A new message takes the first free slot; the oldest moves to the incoming list and
 * the others shift down.
 */
#include "store/MessageLists.h"

bool AnyArchivedMessage(void)
{
    for (int i = 0; i < kArchiveSlotCount; i++)
        if (gArchivedIncomingMessageParameterDataNodeList[i])
            return true;
    return false;
}

int FirstFreeArchiveSlot(void)
{
    for (int i = 0; i < kArchiveSlotCount; i++)
        if (!gArchivedIncomingMessageParameterDataNodeList[i])
            return i;
    return -1;
}

void TakeOldestArchivedMessage(void)
{
    DisposeIncomingMessageParameterList();
    gIncomingMessageParameterDataNodeList = gArchivedIncomingMessageParameterDataNodeList[0];
    for (int i = 1; i < kArchiveSlotCount; i++)
        gArchivedIncomingMessageParameterDataNodeList[i - 1] = gArchivedIncomingMessageParameterDataNodeList[i];
    gArchivedIncomingMessageParameterDataNodeList[kArchiveSlotCount - 1] = nullptr;
}
