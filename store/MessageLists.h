/*
 * MessageLists.h: the outgoing message parameter lists (1: the solution's, 2: the
 * plug-in's own), the incoming message and the 20-slot archive of received messages,
 * with the external functions that compose, fetch and read messages and the tick stamps
 * and flags the idle handler reads.
 */
#ifndef TPX1_MESSAGELISTS_H
#define TPX1_MESSAGELISTS_H

#include "platform/MacTypes.h"
#include "store/DataNode.h"

extern uint32_t &gLastSetParameterCallTicks;
extern uint32_t &gLastGetParameterCallTicks;
extern uint32_t &gLastGetNextMessageCallTicks;
extern unsigned char &gHaveSendDoScriptAndWaitingForGetNextMessage;
extern unsigned char &gHaveGottenAnIncomingMessageButNotClearedIt;

DataNode **OutgoingListHead(short which);   /* NULL for a selector other than 1 or 2 */
void DisposeOutgoingMessageParameterList(short which);
OSErr SetOutgoingMessageParameterFromStr(const char *keyword, const char *text, short which);
OSErr SetOutgoingMessageParameterInList(const char *keyword, char **handle, short which);
OSErr AppendToOutgoingMessageParameterInList(const char *keyword, bool noDupes, char **handle, short which);
OSErr RemoveOutgoingMessageParameterFromList(const char *keyword, short which);
long GetOutgoingMessageParameterInListAsStr(const char *keyword, char *buffer, long size, short which);
OSType GetOutgoingMessageParameterInListAsOSType(const char *keyword, short which);
char **GetTheOutgoingMessageParameterDataHandleFromList_NotACopy(const char *keyword, short which);
void LockAllOutgoingMessageParameters(DataNode *first);
void UnLockAllOutgoingMessageParameters(DataNode *first);

void DisposeIncomingMessageParameterList(void);
OSErr SetIncomingMessageParameterFromStr(const char *keyword, const char *text);
long GetIncomingMessageParameterInListAsStr(const char *keyword, char *buffer, long size);
OSErr GetIncomingMessageParameterInListAsResultHandle(const char *keyword, char **result);
char **GetTheIncomingMessageParameterDataHandleFromList_NotACopy(const char *keyword);

/* The archive: a message moves from slot 0 to the incoming list. */
bool AnyArchivedMessage(void);
int FirstFreeArchiveSlot(void);              /* -1 when all 20 are taken */
void TakeOldestArchivedMessage(void);        /* slot 0 -> incoming, slots shift down */

void TPX1ClearOutgoingMessage(long funcId, char **argHandle, char **resultHandle);
void TPX1SetParameter(long funcId, char **argHandle, char **resultHandle);
void TPX1AppendToParameter(long funcId, char **argHandle, char **resultHandle);
void TPX1ClearIncomingMessage(long funcId, char **argHandle, char **resultHandle);
void TPX1GetNextMessage(long funcId, char **argHandle, char **resultHandle);
void TPX1GetParameter(long funcId, char **argHandle, char **resultHandle);

#endif
