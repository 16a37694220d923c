/*
 * StoreState.h: what the stores keep: the list heads, the 20 archive slots, the name of
 * the global that last queued its script, and the tick stamps and flags of the message
 * the solution is reading. The frame owns the one object that holds it with the rest of
 * the plug-in's state (plugin/CoreState.h); the code reads each piece through its g
 * name, declared with the operations that use it and bound there.
 */
#ifndef TPX1_STORESTATE_H
#define TPX1_STORESTATE_H

#include "store/DataNode.h"

struct StoreState {
    DataNode *userGlobalsDataNodeList;
    DataNode *outgoingUserMessageParameterDataNodeList;
    DataNode *outgoingStdBevaviorMessageParameterDataNodeList;
    DataNode *incomingMessageParameterDataNodeList;
    DataNode *archivedIncomingMessageParameterDataNodeList[kArchiveSlotCount];
    uint32_t lastSetParameterCallTicks;
    uint32_t lastGetParameterCallTicks;
    uint32_t lastGetNextMessageCallTicks;
    char nameOfGlobalThatTriggeredScript[256];
    unsigned char haveSendDoScriptAndWaitingForGetNextMessage;
    unsigned char haveGottenAnIncomingMessageButNotClearedIt;
};

#endif
