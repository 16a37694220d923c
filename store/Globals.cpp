/*
 * Globals.cpp: the internal operations on the globals list that the other folders use:
 * set, append, remove, and the lookups by type. A missing global reads as the empty
 * text.
 */
#include "store/Globals.h"

#include "store/DataNode.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"

enum { kGlobalTextSize = 256 };

static char **GlobalDataHandle(const char *name)
{
    DataNode *node = FindDataNodeInList(name, gUserGlobalsDataNodeList);
    return node ? node->data : nullptr;
}

OSErr SetGlobalFromStr(const char *name, unsigned char isSystem, const char *text)
{
    return (OSErr)SetDataFromStr(name, isSystem, text, &gUserGlobalsDataNodeList);
}

OSErr SetGlobalInList(const char *name, unsigned char isSystem, char **handle)
{
    return (OSErr)SetDataInList(name, isSystem, handle, &gUserGlobalsDataNodeList, false, false);
}

OSErr AppendToGlobalInList(const char *name, unsigned char isSystem, bool noDupes, char **handle)
{
    return (OSErr)SetDataInList(name, isSystem, handle, &gUserGlobalsDataNodeList, true, noDupes);
}

OSErr RemoveGlobalFromList(const char *name)
{
    return (OSErr)RemoveDataFromList(name, &gUserGlobalsDataNodeList);
}

long GetGlobalInListAsStr(const char *name, char *buffer, long size)
{
    return strcpyFHandleToCStr(buffer, size, GlobalDataHandle(name)) >= size ? 1 : 0;
}

bool GetGlobalInListAsBoolean(const char *name)
{
    char text[kGlobalTextSize];
    strcpyFHandleToCStr(text, sizeof text, GlobalDataHandle(name));
    return StringToBoolean(text);
}

OSType GetGlobalInListAsOSType(const char *name)
{
    char text[kGlobalTextSize];
    strcpyFHandleToCStr(text, sizeof text, GlobalDataHandle(name));
    return StringToOSType(text);
}

OSErr GetGlobalInListAsResultHandle(const char *name, char **result)
{
    return CopyFHandleToResultHandle(GlobalDataHandle(name), result);
}

OSErr GetGlobalListInfo(char **options, char **result)
{
    return (OSErr)GetDataListInfo(options, result, gUserGlobalsDataNodeList);
}

OSErr AttachScriptToGlobalInList(const char *name, const char *script)
{
    return (OSErr)AttachScriptToDataInList(name, script, gUserGlobalsDataNodeList);
}

OSErr SetEnableOfGlobalScript(const char *name, unsigned char enabled)
{
    return (OSErr)SetEnableOfDataScriptInList(name, enabled, gUserGlobalsDataNodeList);
}
