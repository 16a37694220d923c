/*
 * RepformScan.cpp: the submission identifiers inside Repform files: the eight-byte
 * identifier test, a fast search for the next identifier in a buffer, and the
 * chunked walk over a file that collects the identifiers' years or rewrites them in
 * place, writing back only what changed. Chunks are at most 300000 bytes; the last 8
 * bytes of each are carried in front of the next, so an identifier across a chunk
 * border is still seen.
 */
#include <cstdint>
#include <cstring>

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#elif defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "files/FileSupport.h"
#include "files/Repform.h"
#include "text/ErrorCodes.h"
#include "text/TextHandles.h"

enum {
    kRepformChunkSize = 300000,
    kRepformChunkStep = 20000,
    kRepformCarry = 8,
    kRepformShortestFile = 20
};

/* Letters compare case-insensitively by setting bit 0x20: only 'X' and 'x' map to 'x'. */
static bool IsRecordPrefix(unsigned char first, unsigned char second)
{
    switch (first | 0x20) {
    case 'c':
        switch (second | 0x20) {
        case 'k': case 'l': case 'm': case 't': case 'v':
            return true;
        }
        return false;
    case 'f':
        return (second | 0x20) == 'a' || (second | 0x20) == 'd';
    case 'p':
        return (second | 0x20) == 'h';
    }
    return false;
}

int RepformYearOfIdentifier(const unsigned char *eight)
{
    if (eight[3] != 'R' || eight[4] != '2' || eight[5] != '0' || eight[6] != '0')
        return 0;
    if ((eight[2] | 0x20) != 't' || eight[7] < '0' || eight[7] > '9')
        return 0;
    if (!IsRecordPrefix(eight[0], eight[1]))
        return 0;
    return 2000 + (eight[7] - '0');
}

/* The identifier's fixed "R2" sits at offsets 3 and 4: the search looks for that
 * anchor with vector compares and applies the whole test only where it occurs. */
enum { kAnchorOffset = 3 };

/* Tests the candidates of one block, bit i of mask standing for the anchor at
 * anchor + i; returns the first identifier's offset, or -1. */
static inline long TestAnchorMask(const unsigned char *data, long anchor, uint64_t mask, int *year)
{
    while (mask) {
        long offset = anchor + __builtin_ctzll(mask) - kAnchorOffset;
        int found = RepformYearOfIdentifier(data + offset);
        if (found) {
            *year = found;
            return offset;
        }
        mask &= mask - 1;
    }
    return -1;
}

#if defined(__x86_64__) && defined(__GNUC__)
/* 32 anchors at a time. Loads reach anchor + 32, inside the data as long as
 * anchor + 31 <= lastAnchor. *anchor is left where the vector loop stopped. */
__attribute__((target("avx2"))) static long FindAnchorsAvx2(const unsigned char *data, long *anchor,
                                                             long lastAnchor, int *year)
{
    const __m256i wantR = _mm256_set1_epi8('R');
    const __m256i want2 = _mm256_set1_epi8('2');
    long at = *anchor;
    for (; at + 31 <= lastAnchor; at += 32) {
        const unsigned char *p = data + at;
        __m256i hits = _mm256_and_si256(_mm256_cmpeq_epi8(_mm256_loadu_si256((const __m256i *)p), wantR),
                                        _mm256_cmpeq_epi8(_mm256_loadu_si256((const __m256i *)(p + 1)), want2));
        uint32_t mask = (uint32_t)_mm256_movemask_epi8(hits);
        if (mask) {
            long found = TestAnchorMask(data, at, mask, year);
            if (found >= 0) {
                *anchor = at;
                return found;
            }
        }
    }
    *anchor = at;
    return -1;
}

/* The compiler's runtime reads the processor's features once at start-up: asking is a
 * load and a test. */
static bool HaveAvx2(void)
{
    return __builtin_cpu_supports("avx2");
}

/* The anchors of the 64 bytes at p, where the processor has AVX-512BW: bit i stands for
 * an "R" at p + i followed by a "2". Reads p to p + 64. */
__attribute__((target("avx512bw"))) static inline uint64_t AnchorMask64(const unsigned char *p)
{
    __mmask64 r = _mm512_cmpeq_epi8_mask(_mm512_loadu_si512((const void *)p), _mm512_set1_epi8('R'));
    return _mm512_mask_cmpeq_epi8_mask(r, _mm512_loadu_si512((const void *)(p + 1)), _mm512_set1_epi8('2'));
}

/* 256 anchors at a time, then 64: blocks without a candidate cost one test for four.
 * Loads reach anchor + 256 (anchor + 64), inside the data as long as anchor + 255
 * (anchor + 63) <= lastAnchor. */
__attribute__((target("avx512bw"))) static long FindAnchorsAvx512(const unsigned char *data, long *anchor,
                                                                   long lastAnchor, int *year)
{
    long at = *anchor;
    for (; at + 255 <= lastAnchor; at += 256) {
        const unsigned char *p = data + at;
        uint64_t masks[4] = {AnchorMask64(p), AnchorMask64(p + 64), AnchorMask64(p + 128), AnchorMask64(p + 192)};
        if ((masks[0] | masks[1] | masks[2] | masks[3]) == 0)
            continue;
        for (int k = 0; k < 4; k++) {
            long found = masks[k] ? TestAnchorMask(data, at + 64 * k, masks[k], year) : -1;
            if (found >= 0) {
                *anchor = at;
                return found;
            }
        }
    }
    for (; at + 63 <= lastAnchor; at += 64) {
        uint64_t mask = AnchorMask64(data + at);
        long found = mask ? TestAnchorMask(data, at, mask, year) : -1;
        if (found >= 0) {
            *anchor = at;
            return found;
        }
    }
    *anchor = at;
    return -1;
}

static bool HaveAvx512(void)
{
    return __builtin_cpu_supports("avx512bw");
}
#endif

long FindNextRepformIdentifier(const unsigned char *data, long from, long last, int *year)
{
    long anchor = from + kAnchorOffset;
    long lastAnchor = last + kAnchorOffset;
#if defined(__x86_64__) && defined(__GNUC__)
    if (HaveAvx512()) {
        long found = FindAnchorsAvx512(data, &anchor, lastAnchor, year);
        if (found >= 0)
            return found;
    }
    if (HaveAvx2()) {
        long found = FindAnchorsAvx2(data, &anchor, lastAnchor, year);
        if (found >= 0)
            return found;
    }
#endif
#if defined(__SSE2__)
    const __m128i wantR = _mm_set1_epi8('R');
    const __m128i want2 = _mm_set1_epi8('2');
    /* Loads reach anchor + 16, inside the data as long as anchor + 15 <= lastAnchor. */
    for (; anchor + 15 <= lastAnchor; anchor += 16) {
        const unsigned char *p = data + anchor;
        __m128i hits = _mm_and_si128(_mm_cmpeq_epi8(_mm_loadu_si128((const __m128i *)p), wantR),
                                     _mm_cmpeq_epi8(_mm_loadu_si128((const __m128i *)(p + 1)), want2));
        uint32_t mask = (uint32_t)_mm_movemask_epi8(hits);
        if (mask) {
            long found = TestAnchorMask(data, anchor, mask, year);
            if (found >= 0)
                return found;
        }
    }
#endif
    while (anchor <= lastAnchor) {
        const void *r = memchr(data + anchor, 'R', (size_t)(lastAnchor - anchor + 1));
        if (!r)
            break;
        anchor = (const unsigned char *)r - data;
        int found = RepformYearOfIdentifier(data + anchor - kAnchorOffset);
        if (found) {
            *year = found;
            return anchor - kAnchorOffset;
        }
        anchor++;
    }
    return -1;
}

/* The bytes of the buffer that a rewrite changed and has not written yet, as a span of
 * buffer offsets [first, last]; empty while first > last. */
struct ChangedSpan {
    long first = 1;
    long last = 0;
};

/* Writes the changed bytes below limit (the part of the buffer that goes back to the
 * file with this chunk: all but the carried 8 bytes while more chunks follow); the
 * buffer starts at fileStart. Changes in the carried bytes stay for the next chunk. */
static OSErr WriteChangedBytes(int16_t refNum, const unsigned char *buffer, long fileStart, long limit,
                               ChangedSpan *changed)
{
    OSErr err = noErr;
    if (changed->first < limit && changed->first <= changed->last) {
        long last = changed->last < limit ? changed->last : limit - 1;
        int32_t count = (int32_t)(last - changed->first + 1);
        err = SetFPos(refNum, fsFromStart, (int32_t)(fileStart + changed->first));
        if (err == noErr)
            err = FSWrite(refNum, &count, buffer + changed->first);
        changed->first = last + 1;
    }
    return err;
}

/* Reads the file chunk by chunk; with newYear 0 it flags the years 2001-2009 it finds,
 * otherwise it sets every identifier's year digit to newYear's. The rewrite gives the
 * file what writing each chunk back where it came from would give it (all but the last
 * 8 bytes while more chunks follow, which the next chunk carries), but writes only the
 * bytes that changed: a chunk without a change is not written at all. */
static OSErr WalkRepformFile(const char *path, int newYear, bool years[10], const char **errorText)
{
    bool rewrite = newYear != 0;
    long size = 0;
    unsigned char *buffer = reinterpret_cast<unsigned char *>(
        NewBufferBackingOff(kRepformChunkSize, kRepformChunkStep, kRepformCarry + 1, &size));
    if (!buffer) {
        if (rewrite)
            return kMissingErr;
        *errorText = "Error: Unable to allocate buffer. (Out of memory)";
        return memFullErr;
    }
    Str255 pascalPath;
    FInfo info;
    int16_t refNum = 0;
    int32_t length = 0;
    MakePascalPath(path, pascalPath);
    OSErr err = OpenFileWithInfo(pascalPath, rewrite ? fsRdWrPerm : fsRdPerm, &info, &refNum, &length, errorText);
    if (err == noErr && length >= kRepformShortestFile) {
        int32_t count = kRepformCarry;
        err = FSRead(refNum, &count, buffer);
        long position = kRepformCarry;
        long remaining = length - kRepformCarry;
        unsigned char digit = (unsigned char)('0' + newYear % 10);
        ChangedSpan changed;
        while (err == noErr && remaining > 0) {
            long chunk = remaining < size ? remaining : size;
            if (rewrite)
                err = SetFPos(refNum, fsFromStart, (int32_t)position);
            count = (int32_t)chunk;
            if (err == noErr)
                err = FSRead(refNum, &count, buffer + kRepformCarry);
            if (err != noErr)
                break;
            buffer[kRepformCarry + chunk] = 0;
            int year = 0;
            for (long at = FindNextRepformIdentifier(buffer, 0, chunk, &year); at >= 0;
                 at = FindNextRepformIdentifier(buffer, at + 1, chunk, &year)) {
                if (rewrite && buffer[at + 7] != digit) {
                    buffer[at + 7] = digit;
                    if (changed.first > changed.last)
                        changed.first = at + 7;
                    changed.last = at + 7;
                } else if (!rewrite && year >= 2001) {
                    years[year - 2000] = true;
                }
            }
            remaining -= chunk;
            if (rewrite) {
                long limit = remaining > 0 ? chunk : chunk + kRepformCarry;
                err = WriteChangedBytes(refNum, buffer, position - kRepformCarry, limit, &changed);
                /* What stays changed lies in the carried bytes, which move to the start. */
                changed.first -= chunk;
                changed.last -= chunk;
            }
            memmove(buffer, buffer + chunk, kRepformCarry);
            position += chunk;
        }
    }
    if (refNum != 0)
        FSClose(refNum);
    DisposeFPointer(buffer);
    return err;
}

OSErr ScanRepformYears(const char *path, bool years[10], const char **errorText)
{
    for (int i = 0; i < 10; i++)
        years[i] = false;
    *errorText = nullptr;
    return WalkRepformFile(path, 0, years, errorText);
}

OSErr ChangeRepformYears(const char *path, int newYear, const char **errorText)
{
    bool unused[10];
    *errorText = nullptr;
    return WalkRepformFile(path, newYear, unused, errorText);
}
