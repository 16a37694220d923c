/*
 * DataListInfo.cpp: the listing of a DataNode list, one line per node: the quoted name
 * and the quoted value cut for display, and with DETAIL the kind of node and its
 * attached script. System nodes are listed only with SYSENV.
 */
#include "store/DataNode.h"

#include <cstring>

#include "text/TextHandles.h"

enum {
    kOptionsSize = 256,
    kShownValueLimit = 34,      /* copy limit of a listed value */
    kShownValueCut = 32,        /* from this character on a value shows as "..." */
    kListingLineSize = 1024     /* quotes, 255-character name and script, value, fixed texts */
};

struct ListingOptions {
    bool systemNodes;
    bool detail;
};

/* Looks at the first two words (split at spaces and tabs) of the options text. */
static ListingOptions ReadListingOptions(char **optionsHandle)
{
    ListingOptions options = {false, false};
    char text[kOptionsSize];
    strcpyFHandleToCStr(text, sizeof text, optionsHandle);
    char *p = text;
    for (int word = 0; word < 2; word++) {
        p += strspn(p, " \t");
        if (!*p)
            break;
        size_t len = strcspn(p, " \t");
        if (len == 6 && strncmp(p, "SYSENV", 6) == 0)
            options.systemNodes = true;
        else if (len == 6 && strncmp(p, "DETAIL", 6) == 0)
            options.detail = true;
        p += len;
    }
    return options;
}

static void BuildListingLine(const DataNode *node, bool detail, char *line)
{
    char value[kShownValueLimit + 4];
    strcpyFHandleToCStr(value, kShownValueLimit, node->data);
    if (strlen(value) >= kShownValueCut)
        strcpy(value + kShownValueCut, "...");
    strcpy(line, "'");
    strcat(line, node->name);
    strcat(line, "'\t'");
    strcat(line, value);
    strcat(line, "'");
    if (detail) {
        strcat(line, node->isSystem ? "\tSysEnv" : "\tUser");
        if (node->scriptName[0]) {
            strcat(line, "\t");
            strcat(line, node->scriptName);
            strcat(line, node->scriptEnabled ? "\tEnabled" : "\tDisabled");
        }
    }
    strcat(line, "\r");
}

long GetDataListInfo(char **optionsHandle, char **resultHandle, DataNode *first)
{
    ListingOptions options = ReadListingOptions(optionsHandle);
    bool firstLine = true;
    char line[kListingLineSize];
    for (const DataNode *node = first; node; node = node->next) {
        if (node->isSystem && !options.systemNodes)
            continue;
        BuildListingLine(node, options.detail, line);
        OSErr err = firstLine ? SetResultsHandle(resultHandle, line) : CatHandleContents(resultHandle, line);
        if (err)
            return err;
        firstLine = false;
    }
    return noErr;
}
