/*
 * LineFetch.cpp: counting lines and fetching line n of a text whose lines end in CR,
 * LF or CR LF (one break). The looping fetcher keeps a cursor so that a loop over all
 * lines reads the text once.
 */
#include "text/TextUtils.h"
#include "text/TextState.h"

long NumLinesInText(const char *text)
{
    if (!text || !*text)
        return 1;
    long lines = 1;
    for (const char *p = text; *p; p++) {
        if (p[1] == 0)
            break;
        if (*p == '\n' || (*p == '\r' && p[1] != '\n'))
            lines++;
    }
    return lines;
}

/* Walks past count breaks from p; null when the text ends first. */
static const char *SkipLineBreaks(const char *p, long count)
{
    for (long k = 0; k < count; k++) {
        while (*p && *p != '\r' && *p != '\n')
            p++;
        if (!*p)
            return nullptr;
        p += (p[0] == '\r' && p[1] == '\n') ? 2 : 1;
    }
    return p;
}

/* Copies the line starting at p into dest (at most destSize-1 characters) and returns
 * where the next line starts. */
static const char *CopyLine(const char *p, char *dest, long destSize)
{
    long i = 0;
    while (*p && *p != '\r' && *p != '\n') {
        if (i < destSize - 1)
            dest[i++] = *p;
        p++;
    }
    if (destSize > 0) {
        dest[i] = 0;
        dest[destSize - 1] = 0;
    }
    if (*p)
        p += (p[0] == '\r' && p[1] == '\n') ? 2 : 1;
    return p;
}

/* Shared start of both fetchers: the empty destination and the size rule. */
static long PrepareDest(char *dest, long destSize)
{
    if (destSize < 0 || !dest)
        destSize = 0;
    if (destSize > 0)
        dest[0] = 0;
    return destSize;
}

void NthLineInTextNonOptimized(const char *text, long n, char *dest, long destSize)
{
    destSize = PrepareDest(dest, destSize);
    if (!text || !*text)
        return;
    const char *line = SkipLineBreaks(text, n);
    if (line)
        CopyLine(line, dest, destSize);
}

void NthLineInTextOptimizedForUseInLoop(const char *text, long n, char *dest, long destSize)
{
    destSize = PrepareDest(dest, destSize);
    if (n == 0 || !gLineCursor || n < gLineCursorLine) {
        gLineCursor = text;
        gLineCursorLine = 0;
    }
    if (!gLineCursor || !*gLineCursor)
        return;
    const char *line = SkipLineBreaks(gLineCursor, n - gLineCursorLine);
    if (!line)
        return;
    gLineCursor = CopyLine(line, dest, destSize);
    gLineCursorLine = n + 1;
}
