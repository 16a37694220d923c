/*
 * Strings.cpp: the line-end texts, numbers to and from decimal text, and the Pascal string
 * helpers (length byte first; appending stops at 250 characters).
 */
#include "text/TextUtils.h"

#include <cstdlib>
#include <cstring>

char *ReturnString(void)
{
    strcpy(gReturnString, "\r");
    return gReturnString;
}

char *MacReturnString(void)
{
    strcpy(gMacReturnString, "\r");
    return gMacReturnString;
}

char *IbmReturnString(void)
{
    strcpy(gIbmReturnString, "\r\n");
    return gIbmReturnString;
}

void mylong2str(long value, char *dest)
{
    char digits[24];
    int n = 0;
    unsigned long magnitude = value < 0 ? 0ul - (unsigned long)value : (unsigned long)value;
    do {
        digits[n++] = (char)('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude);
    char *out = dest;
    if (value < 0)
        *out++ = '-';
    while (n)
        *out++ = digits[--n];
    *out = 0;
}

long TextToLong(const char *text)
{
    return text ? strtol(text, nullptr, 10) : 0;
}

int myc2pstr(const char *text, unsigned char *dest)
{
    size_t len = text ? strlen(text) : 0;
    if (len > 255)
        len = 255;
    if (len)
        memmove(dest + 1, text, len);
    dest[0] = (unsigned char)len;
    return 0;
}

void myp2cstr(const unsigned char *src, char *dest)
{
    size_t len = src[0];
    memmove(dest, src + 1, len);
    dest[len] = 0;
}

void pstrcpy(unsigned char *dest, const unsigned char *src)
{
    memmove(dest, src, (size_t)src[0] + 1);
}

enum { kMaxPascalCatLength = 250 };

void pstrcat(unsigned char *dest, const unsigned char *src)
{
    int room = kMaxPascalCatLength - dest[0];
    if (room <= 0)
        return;
    int count = src[0] < room ? src[0] : room;
    memmove(dest + 1 + dest[0], src + 1, (size_t)count);
    dest[0] = (unsigned char)(dest[0] + count);
}
