/*
 * DataNode.cpp: the list operations that do not set values: look
 * up, remove, rename, read, attach and enable scripts, dispose. Nodes are host pointer
 * blocks, values host handles; removing a node frees its value first, then the node.
 */
#include "store/DataNode.h"

#include <cstring>

#include "text/ErrorCodes.h"
#include "text/TextHandles.h"

static const char kAllUserNodes[] = "*";

void InitDataLists(void)
{
    gUserGlobalsDataNodeList = nullptr;
    gOutgoingUserMessageParameterDataNodeList = nullptr;
    gOutgoingStdBevaviorMessageParameterDataNodeList = nullptr;
    gIncomingMessageParameterDataNodeList = nullptr;
    for (int i = 0; i < kArchiveSlotCount; i++)
        gArchivedIncomingMessageParameterDataNodeList[i] = nullptr;
}

static void DisposeDataNode(DataNode *node)
{
    DisposeFHandle(node->data);
    DisposeFPointer(node);
}

void DisposeDataList(DataNode **head)
{
    if (!head)
        return;
    DataNode *node = *head;
    *head = nullptr;
    while (node) {
        DataNode *next = node->next;
        DisposeDataNode(node);
        node = next;
    }
}

void DisposeDataLists(void)
{
    DisposeDataList(&gUserGlobalsDataNodeList);
    DisposeDataList(&gOutgoingStdBevaviorMessageParameterDataNodeList);
    DisposeDataList(&gOutgoingUserMessageParameterDataNodeList);
    DisposeDataList(&gIncomingMessageParameterDataNodeList);
    for (int i = 0; i < kArchiveSlotCount; i++)
        DisposeDataList(&gArchivedIncomingMessageParameterDataNodeList[i]);
}

DataNode *FindDataNodeInList(const char *name, DataNode *first)
{
    if (!name)
        return nullptr;
    for (DataNode *node = first; node; node = node->next)
        if (strcmp(node->name, name) == 0)
            return node;
    return nullptr;
}

long RemoveDataFromList(const char *name, DataNode **head)
{
    if (!name || !head)
        return kMissingErr;
    bool all = strcmp(name, kAllUserNodes) == 0;
    DataNode **link = head;
    while (*link) {
        DataNode *node = *link;
        bool named = strcmp(node->name, name) == 0;
        if (named && node->isSystem)
            return kReservedGlobalErr;
        if ((named || all) && !node->isSystem) {
            *link = node->next;
            DisposeDataNode(node);
        } else {
            link = &node->next;
        }
    }
    return noErr;
}

void CopyNodeName(char *field, const char *src)
{
    strncpy(field, src ? src : "", 255);
    field[255] = 0;
}

long RenameDataInList(DataNode *first, const char *oldName, const char *newName)
{
    DataNode *node = FindDataNodeInList(oldName, first);
    if (!node)
        return 0;
    CopyNodeName(node->name, newName);
    return 1;
}

long GetDataFromListAsStr(const char *name, char *buffer, long size, DataNode *first)
{
    DataNode *node = FindDataNodeInList(name, first);
    return strcpyFHandleToCStr(buffer, size, node ? node->data : nullptr);
}

long AttachScriptToDataInList(const char *name, const char *scriptName, DataNode *first)
{
    DataNode *node = FindDataNodeInList(name, first);
    if (!node)
        return kNoSuchGlobalErr;
    CopyNodeName(node->scriptName, scriptName);
    return noErr;
}

long SetEnableOfDataScriptInList(const char *name, unsigned char enabled, DataNode *first)
{
    DataNode *node = FindDataNodeInList(name, first);
    if (!node)
        return kNoSuchGlobalErr;
    if (node->scriptName[0] == 0)
        return kMissingErr;
    node->scriptEnabled = enabled;
    return noErr;
}
