/*
 * TextHandles.cpp: writing text into host handles and reading it back, with the
 * terminator rules: results for the host carry no NUL, values kept by the plug-in do.
 * A handle is locked only while its bytes are touched and never across a resize.
 */
#include "text/TextHandles.h"

#include <cstring>

#include "text/ErrorCodes.h"

/* Whether the handle's last byte is NUL; false for an empty or null handle. */
static bool HandleEndsWithNul(char **h, long size)
{
    if (!h || size <= 0)
        return false;
    LockFHandle(h);
    bool nul = (*h)[size - 1] == 0;
    UnlockFHandle(h);
    return nul;
}

/* Copies count bytes into the handle at offset (the handle is big enough). */
static void WriteIntoHandle(char **h, long offset, const void *src, long count)
{
    if (count <= 0)
        return;
    LockFHandle(h);
    memmove(*h + offset, src, (size_t)count);
    UnlockFHandle(h);
}

OSErr SetResultsHandle(char **h, const char *text)
{
    if (!h)
        return kMissingErr;
    if (!text)
        return noErr;
    long len = (long)strlen(text);
    OSErr err = SetFHandleSize(h, len);
    if (err)
        return err;
    WriteIntoHandle(h, 0, text, len);
    return noErr;
}

OSErr SetHandleContentsAndIncludeTerminator(char **h, const char *text)
{
    if (!h)
        return kMissingErr;
    if (!text)
        text = "";
    long len = (long)strlen(text);
    OSErr err = SetFHandleSize(h, len + 1);
    if (err)
        return err;
    WriteIntoHandle(h, 0, text, len + 1);
    return noErr;
}

OSErr CatHandleContents(char **h, const char *text)
{
    if (!h || !text)
        return kMissingErr;
    long size = GetFHandleSize(h);
    bool terminated = true;
    if (size == 0)
        size = 1;
    else
        terminated = HandleEndsWithNul(h, size);
    long len = (long)strlen(text);
    long newSize = size + len;
    OSErr err = SetFHandleSize(h, newSize);
    if (err)
        return err;
    LockFHandle(h);
    long at = terminated ? size - 1 : size;
    memcpy(*h + at, text, (size_t)len);
    if (terminated)
        (*h)[newSize - 1] = 0;
    UnlockFHandle(h);
    return noErr;
}

OSErr AppendStructToHandle(char **h, const void *data, long count)
{
    if (!h)
        return kMissingErr;
    if (count <= 0)
        return noErr;
    if (!data)
        return kMissingErr;
    long size = GetFHandleSize(h);
    OSErr err = SetFHandleSize(h, size + count);
    if (err)
        return err;
    WriteIntoHandle(h, size, data, count);
    return noErr;
}

OSErr EnsureHandleIsNullTerminated(char **h)
{
    if (!h)
        return kMissingErr;
    long size = GetFHandleSize(h);
    if (size > 1 && HandleEndsWithNul(h, size))
        return noErr;
    OSErr err = SetFHandleSize(h, size + 1);
    if (err)
        return err;
    LockFHandle(h);
    (*h)[size] = 0;
    UnlockFHandle(h);
    return noErr;
}

void RemoveTrailingNullTerminator(char **h)
{
    if (!h)
        return;
    long size = GetFHandleSize(h);
    if (size <= 1)
        return;
    if (HandleEndsWithNul(h, size))
        SetFHandleSize(h, size - 1);
}

OSErr CopyFHandleToResultHandle(char **from, char **to)
{
    if (!to)
        return kMissingErr;
    long size = GetFHandleSize(from);
    long len = HandleEndsWithNul(from, size) ? size - 1 : size;
    OSErr err = SetFHandleSize(to, len);
    if (err || len == 0 || from == to)
        return err;
    LockFHandle(from);
    LockFHandle(to);
    memcpy(*to, *from, (size_t)len);
    UnlockFHandle(to);
    UnlockFHandle(from);
    return noErr;
}

long strcpyFHandleToCStr(char *dest, long limit, char **h)
{
    if (dest && limit > 0)
        dest[0] = 0;
    if (!h)
        return 0;
    long size = GetFHandleSize(h);
    if (size <= 0)
        return 0;
    LockFHandle(h);
    long textLength = (*h)[size - 1] == 0 ? size - 1 : size;
    long count = textLength < limit - 1 ? textLength : limit - 1;
    if (dest && count > 0) {
        memcpy(dest, *h, (size_t)count);
        dest[count] = 0;
    }
    UnlockFHandle(h);
    return textLength;
}
