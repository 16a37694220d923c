/*
 * TextCase.cpp: Mac Roman upper-casing with the accents folded away, and the two
 * name-matching rules built on it (topics, and menu items with their ellipsis).
 */
#include "text/TextUtils.h"

#include <cstring>

char mytoupper(char ch)
{
    return (char)kMacRomanUpper.of[(unsigned char)ch];
}

char *StrToUpper(char *text)
{
    if (!text)
        return text;
    for (char *p = text; *p; p++)
        *p = mytoupper(*p);
    return text;
}

enum { kMatchBufferSize = 256 };

/* Copies at most 255 characters of src (null reads as empty). */
static void CopyForMatching(char *dest, const char *src)
{
    dest[0] = 0;
    if (src) {
        strncpy(dest, src, kMatchBufferSize - 1);
        dest[kMatchBufferSize - 1] = 0;
    }
}

static void RemoveAmpersands(char *text)
{
    char *out = text;
    for (const char *in = text; *in; in++)
        if (*in != '&')
            *out++ = *in;
    *out = 0;
}

bool TopicStringsMatch(const char *a, const char *b)
{
    char ca[kMatchBufferSize], cb[kMatchBufferSize];
    CopyForMatching(ca, a);
    CopyForMatching(cb, b);
    RemoveAmpersands(ca);
    RemoveAmpersands(cb);
    return strcmp(StrToUpper(ca), StrToUpper(cb)) == 0;
}

enum { kEllipsisChar = 201 };

static void NormaliseMenuText(char *text)
{
    StrToUpper(text);
    size_t len = strlen(text);
    if (len > 0 && (unsigned char)text[len - 1] == kEllipsisChar)
        text[len - 1] = 0;
    else if (len >= 3 && strcmp(text + len - 3, "...") == 0)
        text[len - 3] = 0;
    RemoveAmpersands(text);
}

bool MenuStrMatches(const char *a, const char *b)
{
    char ca[kMatchBufferSize], cb[kMatchBufferSize];
    CopyForMatching(ca, a);
    CopyForMatching(cb, b);
    NormaliseMenuText(ca);
    NormaliseMenuText(cb);
    return strcmp(ca, cb) == 0;
}
