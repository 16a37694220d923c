/*
 * SetData.cpp: the one operation that creates or changes a stored value (replace,
 * append, append without duplicate lines), and its C-string form. A change of a node
 * with an enabled attached script queues that script.
 */
#include "store/DataNode.h"

#include <cstring>

#include "text/ErrorCodes.h"
#include "text/TextHandles.h"

/* A zero-filled node at the tail of the list; null when out of memory. */
static DataNode *AppendNewNode(const char *name, unsigned char isSystem, DataNode **link)
{
    DataNode *node = static_cast<DataNode *>(NewFPointer(sizeof(DataNode)));
    if (!node)
        return nullptr;
    memset(node, 0, sizeof(DataNode));
    CopyNodeName(node->name, name);
    node->isSystem = isSystem;
    *link = node;
    return node;
}

/* Writes the text of newData (locked by the caller) into the node's value. */
static OSErr WriteNodeValue(DataNode *node, char *text, bool append, bool noDupes)
{
    if (!append)
        return SetHandleContentsAndIncludeTerminator(node->data, text);
    if (noDupes)
        return MergeHandleContents(node->data, text);
    return CatHandleContents(node->data, text);
}

/* Undoes what a failing write made: a value handle made for it goes, and so does a node
 * made for it, so that the list reads as it did before the call. */
static void ForgetFailedWrite(DataNode **link, DataNode *node, bool madeNode, bool madeValue)
{
    if (madeValue) {
        DisposeFHandle(node->data);
        node->data = nullptr;
    }
    if (madeNode) {
        *link = node->next;
        DisposeFPointer(node);
    }
}

long SetDataInList(const char *name, unsigned char isSystem, char **newData, DataNode **head, bool append, bool noDupes)
{
    if (!name || !head || !newData)
        return kMissingErr;
    OSErr err = EnsureHandleIsNullTerminated(newData);
    if (err)
        return err;

    DataNode **link = head;
    while (*link && strcmp((*link)->name, name) != 0)
        link = &(*link)->next;
    DataNode *node = *link;
    bool madeNode = false;
    if (!node) {
        node = AppendNewNode(name, isSystem, link);
        if (!node)
            return memFullErr;
        madeNode = true;
    }

    if (!append && strcmpFHandles(node->data, newData) == 0)
        return noErr;

    bool madeValue = false;
    if (!node->data) {
        char **value = NewFHandle(1);
        err = value ? SetHandleContentsAndIncludeTerminator(value, "") : (OSErr)memFullErr;
        if (err) {
            DisposeFHandle(value);
            ForgetFailedWrite(link, node, madeNode, false);
            return err;
        }
        node->data = value;
        madeValue = true;
    }

    LockFHandle(newData);
    err = WriteNodeValue(node, *newData, append, noDupes);
    UnlockFHandle(newData);
    if (err) {
        ForgetFailedWrite(link, node, madeNode, madeValue);
        return err;
    }

    if (node->scriptEnabled == 1 && node->scriptName[0] != 0) {
        CopyNodeName(gNameOfGlobalThatTriggeredScript, node->name);
        return AddScriptToDoScriptQueue(node->scriptName);
    }
    return noErr;
}

long SetDataFromStr(const char *name, unsigned char isSystem, const char *text, DataNode **head)
{
    char **temp = NewFHandle(1);
    if (!temp)
        return memFullErr;
    long err = SetHandleContentsAndIncludeTerminator(temp, text);
    if (err == noErr)
        err = SetDataInList(name, isSystem, temp, head, false, false);
    DisposeFHandle(temp);
    return err;
}
