/*
 * HandleCompare.cpp: comparing two handles' texts byte by byte, and merging lines into
 * a handle so that each line is held once (the NODUPES append of the stores).
 */
#include "text/TextHandles.h"

#include <cstring>
#include <string_view>

#include "text/ErrorCodes.h"

int strcmpFHandles(char **a, char **b)
{
    long lengthA = GetFHandleSize(a);
    long lengthB = GetFHandleSize(b);
    LockFHandle(a);
    if (b != a)
        LockFHandle(b);
    long longest = lengthA > lengthB ? lengthA : lengthB;
    int result = 0;
    for (long i = 0; i < longest && result == 0; i++) {
        signed char ca = i < lengthA ? (signed char)(*a)[i] : 0;
        signed char cb = i < lengthB ? (signed char)(*b)[i] : 0;
        if (ca != cb)
            result = ca < cb ? -1 : 1;
    }
    if (b != a)
        UnlockFHandle(b);
    UnlockFHandle(a);
    return result;
}

enum { kMaxMergeLine = 510 };

/* Whether the handle's text (up to its first NUL) holds needle anywhere. */
static bool HandleContainsText(char **h, const char *needle)
{
    long size = GetFHandleSize(h);
    if (size <= 0)
        return false;
    LockFHandle(h);
    const void *nul = memchr(*h, 0, (size_t)size);
    size_t textLength = nul ? (size_t)((const char *)nul - *h) : (size_t)size;
    std::string_view hay(*h, textLength);
    bool found = hay.find(needle) != std::string_view::npos;
    UnlockFHandle(h);
    return found;
}

OSErr MergeHandleContents(char **h, char *lines)
{
    if (!h || !lines)
        return kMissingErr;
    char piece[kMaxMergeLine + 2];
    for (char *line = strtok(lines, "\r"); line; line = strtok(nullptr, "\r")) {
        size_t len = strlen(line);
        if (len > kMaxMergeLine)
            return kLineTooLongErr;
        memcpy(piece, line, len);
        piece[len] = '\r';
        piece[len + 1] = 0;
        if (!HandleContainsText(h, piece)) {
            OSErr err = CatHandleContents(h, piece);
            if (err)
                return err;
        }
    }
    return noErr;
}
