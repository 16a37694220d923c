/*
 * MacRoman.cpp: conversion between the core's Mac Roman text and UTF-8 with glibc
 * iconv ("MACINTOSH"). One descriptor per direction, opened on first use and kept;
 * a lock serialises their use because an iconv descriptor carries state. Plain ASCII,
 * the same bytes in both encodings and most of what partners exchange, is copied
 * without iconv.
 */
#include "platform/Toolbox.h"

#include <cerrno>
#include <cstring>
#include <iconv.h>
#include <mutex>

namespace {

/* Kept by PlatformResetAll: the descriptors are put back to their initial state before
 * every use. */
std::mutex gIconvLock;
iconv_t gToUTF8 = (iconv_t)-1;
iconv_t gFromUTF8 = (iconv_t)-1;

iconv_t OpenConverter(iconv_t *slot, const char *to, const char *from)
{
    if (*slot == (iconv_t)-1) *slot = iconv_open(to, from);
    else iconv(*slot, nullptr, nullptr, nullptr, nullptr);
    return *slot;
}

/* Length of the UTF-8 sequence that starts with lead (1 for a stray byte). */
size_t UTF8SequenceLength(unsigned char lead)
{
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    if (lead >= 0xE0) return lead <= 0xEF ? 3 : 1;
    if (lead >= 0xC2) return 2;
    return 1;
}

int32_t SourceLength(const char *src, int32_t srcLen)
{
    return srcLen < 0 ? (int32_t)strlen(src) : srcLen;
}

/* Runs one conversion with the descriptor in *slot (opened on first use); a character
 * iconv refuses becomes one '?', and skip(in, inLeft) says how many source bytes it took.
 * *firstBad, when given, gets the source offset of the first refused character. */
int32_t Convert(iconv_t *slot, const char *to, const char *from, const char *src, int32_t srcLen, char *dst,
                int32_t dstSize, int32_t *firstBad, size_t (*skip)(const char *in, size_t inLeft))
{
    if (firstBad) *firstBad = -1;
    if (!dst || dstSize < 1) return -1;
    if (!src) src = "";
    srcLen = SourceLength(src, srcLen);
    if (PlatformTextIsASCII(src, srcLen)) {
        if (srcLen > dstSize - 1) return -1;
        memcpy(dst, src, (size_t)srcLen);
        dst[srcLen] = 0;
        return srcLen;
    }
    std::lock_guard<std::mutex> hold(gIconvLock);
    iconv_t cd = OpenConverter(slot, to, from);
    if (cd == (iconv_t)-1) return -1;
    char *in = const_cast<char *>(src);
    size_t inLeft = srcLen;
    char *out = dst;
    size_t outLeft = dstSize - 1;
    while (inLeft > 0) {
        if (iconv(cd, &in, &inLeft, &out, &outLeft) != (size_t)-1) break;
        if (errno == E2BIG) return -1;
        if (firstBad && *firstBad < 0) *firstBad = (int32_t)(in - src);
        if (outLeft < 1) return -1;
        *out++ = '?';
        outLeft--;
        size_t taken = skip(in, inLeft);
        in += taken;
        inLeft -= taken;
        iconv(cd, nullptr, nullptr, nullptr, nullptr);
    }
    *out = 0;
    return (int32_t)(out - dst);
}

/* Every Mac Roman byte has a Unicode form; should iconv refuse one, it is one byte. */
size_t SkipOneByte(const char *, size_t)
{
    return 1;
}

/* EILSEQ (no Mac Roman form, or not UTF-8) or EINVAL (cut off at the end): the whole
 * UTF-8 character goes, as far as its continuation bytes are there. */
size_t SkipUTF8Character(const char *in, size_t inLeft)
{
    size_t skip = UTF8SequenceLength((unsigned char)*in);
    for (size_t i = 1; i < skip && i < inLeft; i++)
        if (((unsigned char)in[i] & 0xC0) != 0x80) return i;
    return skip > inLeft ? inLeft : skip;
}

} // namespace

extern "C" {

Boolean PlatformTextIsASCII(const char *src, int32_t len)
{
    for (int32_t i = 0; i < len; i++)
        if ((unsigned char)src[i] >= 0x80) return false;
    return true;
}

/* srcLen < 0 means the source is NUL-terminated. */
int32_t PlatformMacRomanToUTF8(const char *src, int32_t srcLen, char *dst, int32_t dstSize)
{
    return Convert(&gToUTF8, "UTF-8", "MACINTOSH", src, srcLen, dst, dstSize, nullptr, SkipOneByte);
}

int32_t PlatformUTF8ToMacRoman(const char *src, int32_t srcLen, char *dst, int32_t dstSize, int32_t *firstBad)
{
    return Convert(&gFromUTF8, "MACINTOSH", "UTF-8", src, srcLen, dst, dstSize, firstBad, SkipUTF8Character);
}

} // extern "C"
