/*
 * TextCase.cpp: Mac Roman upper-casing with the accents folded away, and the two
 * name-matching rules built on it (topics, and menu items with their ellipsis).
 */
#include "text/TextUtils.h"

#include <cstring>

/* Folded capitals of the Mac Roman codes 128..244; 0 means unchanged. */
static unsigned char FoldedHighCode(unsigned char c)
{
    switch (c) {
    case 128: case 129: case 135: case 136: case 137: case 138: case 139: case 140:
    case 203: case 204: case 229: case 231:
        return 'A';
    case 131: case 143: case 144: case 145: case 230: case 232: case 233:
        return 'E';
    case 146: case 147: case 148: case 149: case 234: case 235: case 236: case 237:
        return 'I';
    case 133: case 151: case 152: case 153: case 154: case 155: case 175: case 191:
    case 205: case 238: case 239: case 241:
        return 'O';
    case 134: case 156: case 157: case 158: case 159: case 242: case 243: case 244:
        return 'U';
    case 216: case 217:
        return 'Y';
    case 202: return ' ';
    case 141: return 130;
    case 150: return 132;
    case 190: return 174;
    case 185: return 184;
    case 207: return 206;
    default:
        return 0;
    }
}

char mytoupper(char ch)
{
    unsigned char c = (unsigned char)ch;
    if (c >= 'a' && c <= 'z')
        return (char)(c - 32);
    if (c >= 128 && c <= 244) {
        unsigned char folded = FoldedHighCode(c);
        if (folded)
            return (char)folded;
    }
    return ch;
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
