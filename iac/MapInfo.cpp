/*
 * MapInfo.cpp: the map folders and the first map view that TOPOLUX is given after
 * each greeting, with their external functions.
 */
#include <string.h>

#include "iac/IacTables.h"
#include "files/Paths.h"
#include "text/ErrorCodes.h"
#include "text/TextHandles.h"
#include "ui/Alerts.h"

static const char kDefaultMapOptions[] = "NODEFAULT DELETEYES MOVEMAPYES MOVELAYERYES DRAGYES ADDYES";

/* The field of text up to the next bar (cut to 255 characters); *cursor moves past the bar. */
static void TakeBarField(const char **cursor, char *field)
{
    const char *end = strchr(*cursor, '|');
    size_t length = end ? (size_t)(end - *cursor) : strlen(*cursor);
    size_t kept = length < 255 ? length : 255;
    memcpy(field, *cursor, kept);
    field[kept] = 0;
    *cursor += end ? length + 1 : length;
}

static MapEntry *MapEntryForKey(const char *key)
{
    for (MapEntry &entry : gTopoluxMaps)
        if (strcmp(entry.folder, key) == 0)
            return &entry;
    for (MapEntry &entry : gTopoluxMaps)
        if (!entry.folder[0])
            return &entry;
    return nullptr;
}

/* "folder|options|reference file": the folder, resolved against the base directory found
 * from the reference file, is the key of its entry. Only the first two bars split: the
 * reference file is the whole rest, so a path holding a bar stays whole. */
void TPX1SetTopoluxMapInfo(long funcId, char **argHandle, char **resultHandle)
{
    char argument[768] = {0};
    strcpyFHandleToCStr(argument, sizeof argument, argHandle);
    char folder[256], options[256], reference[256];
    const char *cursor = argument;
    TakeBarField(&cursor, folder);
    TakeBarField(&cursor, options);
    reference[0] = 0;
    strncat(reference, cursor, sizeof reference - 1);

    char key[256] = {0};
    if (folder[0] && DetermineBaseDirectoryFromTheReferenceFile(reference) == noErr &&
        ResolvePathRelativeToBaseDirectory(folder, key) != noErr)
        key[0] = 0;
    if (!options[0])
        strcpy(options, kDefaultMapOptions);
    MapEntry *entry = MapEntryForKey(key);
    if (!entry) {
        ReportErrorToUser(funcId, kTableFullErr);
        return;
    }
    strcpy(entry->folder, key);
    strcpy(entry->options, options);
}

/* Four values separated by bars, commas, blanks or tabs, in the order left, top, right,
 * bottom; the view changes only when all four are given. */
void TPX1SetTopoluxFirstView(long funcId, char **argHandle, char **resultHandle)
{
    char argument[256] = {0};
    strcpyFHandleToCStr(argument, sizeof argument, argHandle);
    char tokens[4][kViewValueSize];
    int count = 0;
    for (char *token = strtok(argument, "|, \t"); token && count < 4; token = strtok(nullptr, "|, \t")) {
        tokens[count][0] = 0;
        strncat(tokens[count], token, kViewValueSize - 1);
        count++;
    }
    if (count < 4)
        return;
    strcpy(gTopoluxFirstView.llng, tokens[0]);
    strcpy(gTopoluxFirstView.hlat, tokens[1]);
    strcpy(gTopoluxFirstView.hlng, tokens[2]);
    strcpy(gTopoluxFirstView.llat, tokens[3]);
}
