/*
 * Lst2Clean.cpp: the cleaning of an outgoing map object list before it goes to the
 * mapping application (TPX1ProcessLST2ParameterForTopolux): lines without a valid
 * identifier and repeated lines (letter case ignored) are removed in place, keeping the
 * first occurrence of every line in its place. Lines may end in CR, LF or CR LF; the
 * cleaned list ends every kept line in CR. One sort of per-line records brings lines
 * with the same identifier together; deleted lines are marked with 0x01 bytes and
 * squeezed out in one final pass.
 */
#include <stdlib.h>
#include <string.h>

#include "maplist/Lst2.h"
#include "maplist/Lst2State.h"
#include "store/MessageLists.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"
#include "ui/Alerts.h"

enum {
    kLst2KeyLength = 16,          /* identifier characters kept in the key */
    kLst2DeletedByte = 0x01,
    kLst2SmallGroup = 32          /* groups up to this size compare line against line */
};

/* One record per line: the upper-cased identifier (zero-filled) and where the line starts. */
struct Lst2SortRecord {
    char key[20];
    int32_t lineStart;
};
static_assert(sizeof(Lst2SortRecord) == 24, "sort records are 24 bytes");

/* Once the records are filled every break is a CR; LF counts for the filling itself. */
static bool IsLst2LineEnd(unsigned char c)
{
    return c == 13 || c == 10 || c == 0;
}

/* Valid: sixteen characters 0-9 or upper-case A-F, then a TAB. */
static bool IsValidLst2Line(const char *line)
{
    for (int i = 0; i < kLst2KeyLength; i++) {
        char c = line[i];
        if (!((c >= '0' && c <= '9') || (c >= 'A' && c <= 'F')))
            return false;
    }
    return line[kLst2KeyLength] == '\t';
}

/* Orders two lines by their upper-cased characters from offset `from`, a line's end (CR
 * or NUL) before any character; 0 exactly when the lines are equal in the cleaning's
 * sense: the same characters after upper-casing, ending at the same place. */
static int CompareLst2LinesFrom(const char *a, const char *b, long from)
{
    const unsigned char *p = (const unsigned char *)a + from;
    const unsigned char *q = (const unsigned char *)b + from;
    for (;; p++, q++) {
        bool endP = IsLst2LineEnd(*p), endQ = IsLst2LineEnd(*q);
        if (endP || endQ)
            return endP && endQ ? 0 : (endP ? -1 : 1);
        if (*p != *q && kMacRomanUpper.of[*p] != kMacRomanUpper.of[*q])
            return kMacRomanUpper.of[*p] < kMacRomanUpper.of[*q] ? -1 : 1;
    }
}

/* Overwrites a line with 0x01 up to and including its carriage return. */
static void DeleteLst2Line(char *line)
{
    for (; *line != 0; line++) {
        bool lastByte = *line == 13;
        *line = kLst2DeletedByte;
        if (lastByte)
            break;
    }
}

/* One pass over the text: each line's start and its key (the characters before the
 * first TAB, at most sixteen, upper-cased). A line ends at CR, LF, CR LF (one break) or
 * the NUL, as NumLinesInText counts them; every break is made the CR that the cleaned
 * list writes (an LF becomes CR, the LF of a CR LF is marked deleted), so that from here
 * on a line ends at its CR. At the NUL every remaining record starts at the NUL. */
static void FillLst2SortRecords(char *text, Lst2SortRecord *records, long lineCount)
{
    long position = 0;
    for (long i = 0; i < lineCount; i++) {
        Lst2SortRecord *record = &records[i];
        memset(record->key, 0, sizeof record->key);
        record->lineStart = (int32_t)position;
        const unsigned char *line = (const unsigned char *)text + position;
        long k = 0;
        while (k < kLst2KeyLength && line[k] != '\t' && !IsLst2LineEnd(line[k])) {
            record->key[k] = (char)kMacRomanUpper.of[line[k]];
            k++;
        }
        long length = k + (long)strcspn((const char *)line + k, "\r\n");
        position += length;
        if (text[position] == 10) {
            text[position++] = 13;
        } else if (text[position] == 13) {
            position++;
            if (text[position] == 10)
                text[position++] = kLst2DeletedByte;
        }
    }
}

/* A stir position: the integer part of rand() * 2^-31 in single precision, times
 * n - 1. The integer part is (almost) always 0, so no record moves; the draws are kept
 * as they are, and the sort below never depends on them. */
static long DrawLst2StirPosition(long lineCount)
{
    float scaled = (float)rand() * 0x1p-31f;
    long position = (long)(int)scaled * (lineCount - 1);
    if (position < 0)
        position = 0;
    if (position > lineCount - 1)
        position = lineCount - 1;
    return position;
}

static void StirLst2SortRecords(Lst2SortRecord *records, long lineCount)
{
    long rounds = lineCount / 20 + 1;
    for (long round = 0; round < rounds; round++) {
        long first = DrawLst2StirPosition(lineCount);
        long second = DrawLst2StirPosition(lineCount);
        if (first != second) {
            Lst2SortRecord swap = records[first];
            records[first] = records[second];
            records[second] = swap;
        }
    }
}

/* By key, then by line start: equal keys come together in their order in the text. */
static int CompareLst2SortRecords(const void *a, const void *b)
{
    const Lst2SortRecord *ra = (const Lst2SortRecord *)a;
    const Lst2SortRecord *rb = (const Lst2SortRecord *)b;
    int order = strcmp(ra->key, rb->key);
    if (order != 0)
        return order;
    return (ra->lineStart > rb->lineStart) - (ra->lineStart < rb->lineStart);
}

/* gLst2GroupText is the text that CompareLst2GroupLines reads (qsort passes no context). */
/* Within a group of valid lines with one identifier: by the rest of the line, then by
 * line start, so the first occurrence of a line heads its run of equals. */
static int CompareLst2GroupLines(const void *a, const void *b)
{
    const Lst2SortRecord *ra = (const Lst2SortRecord *)a;
    const Lst2SortRecord *rb = (const Lst2SortRecord *)b;
    int order = CompareLst2LinesFrom(gLst2GroupText + ra->lineStart, gLst2GroupText + rb->lineStart,
                                     kLst2KeyLength + 1);
    if (order != 0)
        return order;
    return (ra->lineStart > rb->lineStart) - (ra->lineStart < rb->lineStart);
}

/* A record of the group's walk that is still a kept line: deleted lines begin with
 * 0x01, records past the end of the text with the NUL. */
static bool IsKeptLst2Line(const char *line)
{
    return *line != kLst2DeletedByte && *line != 0;
}

/* A group, records [first, end) sharing one key. Invalid lines go; a valid line goes
 * when an earlier line of the group equals it. Valid lines with equal keys share their
 * first seventeen characters (sixteen hexadecimal digits and the TAB), so lines are
 * compared from there on. */
static void CleanSmallLst2Group(char *text, const Lst2SortRecord *records, long first, long end)
{
    for (long i = first; i < end; i++) {
        char *line = text + records[i].lineStart;
        if (!IsValidLst2Line(line)) {
            DeleteLst2Line(line);
            continue;
        }
        for (long j = first; j < i; j++) {
            const char *earlier = text + records[j].lineStart;
            if (IsKeptLst2Line(earlier) && CompareLst2LinesFrom(earlier, line, kLst2KeyLength + 1) == 0) {
                DeleteLst2Line(line);
                break;
            }
        }
    }
}

/* The same outcome for a large group without comparing every pair: invalid lines go,
 * the valid ones are sorted by content and every line but the first of each run goes. */
static void CleanLargeLst2Group(char *text, Lst2SortRecord *records, long first, long end)
{
    long validEnd = first;
    for (long i = first; i < end; i++) {
        char *line = text + records[i].lineStart;
        if (!IsValidLst2Line(line)) {
            DeleteLst2Line(line);
            continue;
        }
        Lst2SortRecord swap = records[validEnd];
        records[validEnd] = records[i];
        records[i] = swap;
        validEnd++;
    }
    gLst2GroupText = text;
    qsort(records + first, (size_t)(validEnd - first), sizeof(Lst2SortRecord), CompareLst2GroupLines);
    long runHead = first;
    for (long i = first + 1; i < validEnd; i++) {
        const char *head = text + records[runHead].lineStart;
        char *line = text + records[i].lineStart;
        if (CompareLst2LinesFrom(head, line, kLst2KeyLength + 1) == 0)
            DeleteLst2Line(line);
        else
            runHead = i;
    }
}

enum { kLst2PrefetchDistance = 16 };

static void MarkRejectedLst2Lines(char *text, Lst2SortRecord *records, long lineCount)
{
    long first = 0;
    long prefetched = 0;
    while (first < lineCount) {
        long end = first + 1;
        while (end < lineCount && strncmp(records[end].key, records[first].key, kLst2KeyLength) == 0)
            end++;
        /* The records are in key order, the lines in text order: ask early for the lines
         * the walk reaches next, so a long list does not wait for memory at every line. */
        long wanted = end + kLst2PrefetchDistance < lineCount ? end + kLst2PrefetchDistance : lineCount;
        for (; prefetched < wanted; prefetched++)
            __builtin_prefetch(text + records[prefetched].lineStart, 1);
        if (end - first <= kLst2SmallGroup)
            CleanSmallLst2Group(text, records, first, end);
        else
            CleanLargeLst2Group(text, records, first, end);
        first = end;
    }
}

/* Squeezes out every 0x01 byte; returns the kept length with the NUL. */
static long CompactLst2Text(char *text)
{
    char *from = text;
    char *to = text;
    for (;;) {
        size_t run = strcspn(from, "\x01");
        if (to != from)
            memmove(to, from, run);
        to += run;
        from += run;
        if (*from == 0)
            break;
        while (*from == kLst2DeletedByte)
            from++;
    }
    *to = 0;
    return (long)(to - text) + 1;
}

OSErr CleanLST2Lines(char *text, long lineCount, long *newLength)
{
    if (lineCount < 2) {
        *newLength = (long)strlen(text) + 1;
        return noErr;
    }
    if (lineCount > INT32_MAX / (long)sizeof(Lst2SortRecord))
        return memFullErr;
    Lst2SortRecord *records = (Lst2SortRecord *)NewFPointer(lineCount * (long)sizeof(Lst2SortRecord));
    if (records == nullptr)
        return memFullErr;
    FillLst2SortRecords(text, records, lineCount);
    StirLst2SortRecords(records, lineCount);
    qsort(records, (size_t)lineCount, sizeof(Lst2SortRecord), CompareLst2SortRecords);
    MarkRejectedLst2Lines(text, records, lineCount);
    *newLength = CompactLst2Text(text);
    DisposeFPointer(records);
    return noErr;
}

OSErr CleanLST2Text(char *text, long *newLength)
{
    return CleanLST2Lines(text, NumLinesInText(text), newLength);
}

void TPX1ProcessLST2ParameterForTopolux(long funcId, char **argHandle, char **resultHandle)
{
    char **list = GetTheOutgoingMessageParameterDataHandleFromList_NotACopy("LST2", 1);
    if (list == nullptr)
        return;
    OSErr err = EnsureHandleIsNullTerminated(list);
    if (err != noErr) {
        ReportErrorToUser(funcId, err);
        return;
    }
    LockFHandle(list);
    long lineCount = NumLinesInText(*list);
    if (lineCount < 2) {
        UnlockFHandle(list);
        return;
    }
    long newLength = 0;
    err = CleanLST2Lines(*list, lineCount, &newLength);
    UnlockFHandle(list);
    if (err == noErr)
        err = SetFHandleSize(list, newLength);
    if (err != noErr)
        ReportErrorToUser(funcId, err);
}
