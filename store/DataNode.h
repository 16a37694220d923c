/*
 * DataNode.h: the singly linked lists of named text values that hold the globals, the
 * outgoing and incoming message parameters and the archive of received messages. Nodes
 * come from the host's pointer memory, values live in host handles, and every operation
 * returns 0 or an error code.
 */
#ifndef TPX1_DATANODE_H
#define TPX1_DATANODE_H

#include "platform/MacTypes.h"

struct DataNode {
    DataNode *next;
    char name[256];
    unsigned char isSystem;
    char scriptName[256];
    unsigned char scriptEnabled;
    char **data;
};

enum { kArchiveSlotCount = 20 };

extern DataNode *&gUserGlobalsDataNodeList;
extern DataNode *&gOutgoingUserMessageParameterDataNodeList;
extern DataNode *&gOutgoingStdBevaviorMessageParameterDataNodeList;
extern DataNode *&gIncomingMessageParameterDataNodeList;
extern DataNode *(&gArchivedIncomingMessageParameterDataNodeList)[kArchiveSlotCount];
extern char (&gNameOfGlobalThatTriggeredScript)[256];

void InitDataLists(void);
void DisposeDataList(DataNode **head);
void DisposeDataLists(void);
long SetDataInList(const char *name, unsigned char isSystem, char **newData, DataNode **head, bool append, bool noDupes);
long SetDataFromStr(const char *name, unsigned char isSystem, const char *text, DataNode **head);
long RemoveDataFromList(const char *name, DataNode **head);
long RenameDataInList(DataNode *first, const char *oldName, const char *newName);
long GetDataFromListAsStr(const char *name, char *buffer, long size, DataNode *first);
long AttachScriptToDataInList(const char *name, const char *scriptName, DataNode *first);
long SetEnableOfDataScriptInList(const char *name, unsigned char enabled, DataNode *first);
long GetDataListInfo(char **optionsHandle, char **resultHandle, DataNode *first);
DataNode *FindDataNodeInList(const char *name, DataNode *first);
/* Copies at most 255 characters of src (null reads as empty) into a 256-byte name field. */
void CopyNodeName(char *field, const char *src);

/* The frame's DoScript queue (plugin/DoScript.cpp), which a change of a node with an
 * enabled attached script feeds. Declared here so that the stores need nothing of the
 * frame's headers. 0 queued, or one of its refusals. */
enum { kScriptNameTooLongErr = -1, kQueueFullErr = -2 };
long AddScriptToDoScriptQueue(const char *scriptName);

#endif
