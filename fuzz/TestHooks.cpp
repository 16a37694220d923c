/*
 * TestHooks.cpp: the test-only ways into the plug-in's state (see TestHooks.h).
 */
#include "fuzz/TestHooks.h"

#include "store/MessageLists.h"
#include "text/ErrorCodes.h"

OSErr ArchiveMessageForTesting(const char *const *keywordValuePairs, int pairCount)
{
    int slot = FirstFreeArchiveSlot();
    if (slot < 0)
        return kArchiveFullErr;
    DataNode **head = &gArchivedIncomingMessageParameterDataNodeList[slot];
    for (int i = 0; i < pairCount; i++) {
        long err = SetDataFromStr(keywordValuePairs[2 * i], 0, keywordValuePairs[2 * i + 1], head);
        if (err) {
            DisposeDataList(head);
            return (OSErr)err;
        }
    }
    return noErr;
}
