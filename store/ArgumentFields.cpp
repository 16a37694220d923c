/*
 * ArgumentFields.cpp: the "name|value" and "name|NODUPES|value" argument forms of the
 * set and append functions. The name comes from the first 255 characters; the value is
 * read from the argument handle itself, so it has no length limit.
 */
#include "store/Globals.h"

#include <cstring>

#include "text/ErrorCodes.h"
#include "text/TextHandles.h"

enum { kFieldBufferSize = 256, kNoDupesFieldLength = 7 };

static const char kNoDupesField[] = "NODUPES";

OSErr SplitNameAndValue(char **argument, char *name, long *valueOffset)
{
    char text[kFieldBufferSize];
    strcpyFHandleToCStr(text, sizeof text, argument);
    char *bar = strchr(text, '|');
    if (bar)
        *bar = 0;
    strcpy(name, text);
    if (!bar)
        return kNoBarErr;
    *valueOffset = (long)(bar - text) + 1;
    return EnsureHandleIsNullTerminated(argument);
}

OSErr GetAndStripNameAndDupes(char **argument, char *name, bool *noDupes)
{
    char text[kFieldBufferSize];
    strcpyFHandleToCStr(text, sizeof text, argument);
    size_t nameLength = strcspn(text, "|");
    memcpy(name, text, nameLength);
    name[nameLength] = 0;
    *noDupes = false;
    long prefix = (long)nameLength + 1;
    if (text[nameLength] == '|') {
        const char *second = text + nameLength + 1;
        if (strcspn(second, "|") == kNoDupesFieldLength && strncmp(second, kNoDupesField, kNoDupesFieldLength) == 0) {
            *noDupes = true;
            prefix += kNoDupesFieldLength + 1;
        }
    }

    long size = GetFHandleSize(argument);
    long textLength = strcpyFHandleToCStr(nullptr, 0, argument);
    if (prefix >= textLength)
        return SetHandleContentsAndIncludeTerminator(argument, "");
    LockFHandle(argument);
    memmove(*argument, *argument + prefix, (size_t)(size - prefix));
    UnlockFHandle(argument);
    return SetFHandleSize(argument, size - prefix);
}
