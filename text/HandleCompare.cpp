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

/* Merges in a scratch copy of the handle's text and changes the handle only once every
 * line has been looked at, so that a merge that fails (a line over 510 characters, no
 * memory) leaves the handle as it was. The outcome is that of adding line after line
 * with CatHandleContents: a line is looked for in the text up to its first NUL,
 * including the lines added before it, and the text is appended where
 * CatHandleContents would append it. */
OSErr MergeHandleContents(char **h, char *lines)
{
    if (!h || !lines)
        return kMissingErr;
    if (lines[strspn(lines, "\r")] == 0)
        return noErr;   /* no line at all: nothing to look for */
    long size = GetFHandleSize(h);
    bool terminated = true;
    if (size > 0) {
        LockFHandle(h);
        terminated = (*h)[size - 1] == 0;
        UnlockFHandle(h);
    }
    long base = terminated && size > 0 ? size - 1 : size;   /* where appending starts */
    long linesLength = (long)strlen(lines);
    char *merged = static_cast<char *>(NewFPointer(base + linesLength + 2));
    if (!merged)
        return memFullErr;
    if (base > 0) {
        LockFHandle(h);
        memcpy(merged, *h, (size_t)base);
        UnlockFHandle(h);
    }
    merged[base] = 0;
    /* The searched text ends at the first NUL, which may come before the appended lines. */
    size_t searchedFixed = strnlen(merged, (size_t)base);
    bool searchesAppended = searchedFixed == (size_t)base;
    long used = base;
    OSErr err = noErr;
    for (char *line = strtok(lines, "\r"); line; line = strtok(nullptr, "\r")) {
        size_t len = strlen(line);
        if (len > kMaxMergeLine) {
            err = kLineTooLongErr;
            break;
        }
        char piece[kMaxMergeLine + 2];
        memcpy(piece, line, len);
        piece[len] = '\r';
        std::string_view searched(merged, searchesAppended ? (size_t)used : searchedFixed);
        if (searched.find(std::string_view(piece, len + 1)) != std::string_view::npos)
            continue;
        memcpy(merged + used, piece, len + 1);
        used += (long)len + 1;
    }
    if (err == noErr && used > base) {
        long newSize = used + (terminated ? 1 : 0);
        err = SetFHandleSize(h, newSize);
        if (err == noErr) {
            LockFHandle(h);
            memcpy(*h + base, merged + base, (size_t)(used - base));
            if (terminated)
                (*h)[newSize - 1] = 0;
            UnlockFHandle(h);
        }
    }
    DisposeFPointer(merged);
    return err;
}
