/*
 * Lst2Transfer.cpp: moving a received map object list along: the incoming 'LST2' text
 * copied into the next outgoing message (TPX1CopyIncomingLST2ToOutgoingLST2), and a list
 * received under 'LSTA' renamed to 'LST2' (TPX1RenameIncomingLSTAtoLST2).
 */
#include "maplist/Lst2.h"
#include "store/DataNode.h"
#include "store/MessageLists.h"
#include "text/TextHandles.h"
#include "ui/Alerts.h"

void TPX1CopyIncomingLST2ToOutgoingLST2(long funcId, char **argHandle, char **resultHandle)
{
    char **incoming = GetTheIncomingMessageParameterDataHandleFromList_NotACopy("LST2");
    OSErr err;
    if (incoming != nullptr) {
        err = EnsureHandleIsNullTerminated(incoming);
        if (err != noErr) {
            ReportErrorToUser(funcId, err);
            return;
        }
        LockFHandle(incoming);
        err = SetOutgoingMessageParameterFromStr("LST2", *incoming, 1);
        UnlockFHandle(incoming);
    } else {
        err = SetOutgoingMessageParameterFromStr("LST2", "", 1);
    }
    if (err != noErr)
        ReportErrorToUser(funcId, err);
}

void TPX1RenameIncomingLSTAtoLST2(long funcId, char **argHandle, char **resultHandle)
{
    RenameDataInList(gIncomingMessageParameterDataNodeList, "LSTA", "LST2");
}
