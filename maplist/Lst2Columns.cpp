/*
 * Lst2Columns.cpp: TPX1GetParameterLST2, which rewrites the incoming map object list
 * line by line in a column format named by words (TOPOLUXID, LAYERNAME, MAPNAME, SPACE,
 * TAB, RETURN), and the column table that turns those words into output codes.
 */
#include <string.h>

#include "maplist/Lst2.h"
#include "maplist/Lst2State.h"
#include "store/MessageLists.h"
#include "text/ErrorCodes.h"
#include "text/OutputCodes.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"
#include "ui/Alerts.h"

enum {
    kLst2FormatSize = 256,        /* the format argument, terminator included */
    kLst2ListLineSize = 256,      /* one list line as the looping fetcher cuts it */
    kLst2OutputLineSize = 1024,   /* ten pieces of at most 63 characters each */
    kLst2MaxFormatWords = 10,
    kLst2IdentifierLength = 16,
    kLst2MaxNameLength = 63,
};

/* The column table the format words are read with, ended by a pair with code 0. */
static const WordCode kLst2ColumnTable[7] = {{1, "TOPOLUXID"}, {2, "LAYERNAME"}, {3, "MAPNAME"}, {4, "SPACE"},
                                             {5, "TAB"},       {6, "RETURN"},    {0, nullptr}};

/* Splits like strtok, but with the position kept by the caller: separators before a
 * token are skipped (a run counts as one), the separator after it is overwritten with
 * NUL. Returns null when only separators remain. */
static char *NextLst2Token(char **cursor, const char *separators)
{
    char *p = *cursor + strspn(*cursor, separators);
    if (*p == 0) {
        *cursor = p;
        return nullptr;
    }
    char *token = p;
    p += strcspn(p, separators);
    if (*p != 0)
        *p++ = 0;
    *cursor = p;
    return token;
}

/* Puts the code of each of the first ten words of the upper-cased format into its slot;
 * returns whether the word "FILE" was among them (its slot stays 0). */
static bool SetOutputCodesFromFormat(char *format)
{
    bool fileFlag = false;
    char *cursor = format;
    char *word;
    for (long k = 0; k < kLst2MaxFormatWords && (word = NextLst2Token(&cursor, " \t")) != nullptr; k++) {
        if (strcmp(word, "FILE") == 0)
            fileFlag = true;
        else
            SetOutputCode(k, StrToCode(word));
    }
    return fileFlag;
}

/* Byte classes of the list reader: a line ends at CR, LF or the NUL; TAB separates. */
enum { kLst2Plain = 0, kLst2Tab = 1, kLst2End = 2 };

struct Lst2ByteClasses {
    unsigned char of[256];
    constexpr Lst2ByteClasses() : of()
    {
        of[(unsigned char)'\t'] = kLst2Tab;
        of[(unsigned char)'\r'] = kLst2End;
        of[(unsigned char)'\n'] = kLst2End;
        of[0] = kLst2End;
    }
};
static constexpr Lst2ByteClasses kLst2ByteClass;

/* One line of the list, as the looping line fetcher gives it into a 256-byte buffer
 * (at most 255 characters, up to CR, LF or the NUL), split into fields the way the
 * tokenizer on TAB splits it (runs of TABs are one separator, a leading TAB is
 * skipped). Returns where the next line starts (past a CR LF as one break), or null at
 * the end of the text. */
struct Lst2Line {
    const char *fields[3];
    long lengths[3];
    int count;   /* fields found, at most three */
};

static const unsigned char *ReadLst2Line(const unsigned char *p, Lst2Line *line)
{
    const long cut = kLst2ListLineSize - 1;
    line->count = 0;
    long i = 0;
    while (line->count < 3) {
        while (i < cut && kLst2ByteClass.of[p[i]] == kLst2Tab)
            i++;
        if (i >= cut || kLst2ByteClass.of[p[i]] == kLst2End)
            break;
        long start = i;
        while (i < cut && kLst2ByteClass.of[p[i]] == kLst2Plain)
            i++;
        line->fields[line->count] = (const char *)p + start;
        line->lengths[line->count] = i - start;
        line->count++;
    }
    while (kLst2ByteClass.of[p[i]] != kLst2End)
        i++;
    if (p[i] == 0)
        return nullptr;
    return p + i + ((p[i] == '\r' && p[i + 1] == '\n') ? 2 : 1);
}

/* A line is taken when it has an identifier of exactly 16 characters and a layer and a
 * map name of at most 63 each. */
static bool IsTakenLst2Line(const Lst2Line *line)
{
    return line->count == 3 && line->lengths[0] == kLst2IdentifierLength &&
           line->lengths[1] <= kLst2MaxNameLength && line->lengths[2] <= kLst2MaxNameLength;
}

/* The result handle used as a growing text, written in place while it is locked:
 * appending one output line after another gives the same text as appending each with
 * CatHandleContents (the text followed by a NUL), but the handle is sized once for the
 * whole list (it grows geometrically only past that) and shrinks in place at the end,
 * so that a long list costs a few host calls and no copy of the result. */
struct Lst2Output {
    char **handle;
    long used;        /* characters of text in the handle, without the NUL */
    long capacity;    /* the handle's size; 0 until the first append */
    long firstSize;   /* the size asked for first: the list's own */
    bool appended;    /* an append was made, even of the empty text */
};

/* Makes room for one more output line; the handle is locked again afterwards. */
static OSErr MakeRoomInLst2Output(Lst2Output *out)
{
    long needed = out->used + kLst2OutputLineSize + 1;
    if (needed <= out->capacity)
        return noErr;
    long wanted = out->capacity * 2;
    if (wanted < out->firstSize)
        wanted = out->firstSize;
    if (wanted < needed)
        wanted = needed;
    if (out->capacity > 0)
        UnlockFHandle(out->handle);
    OSErr err = SetFHandleSize(out->handle, wanted);
    if (err != noErr && wanted > needed) {
        wanted = needed;   /* no room for the whole list: just for this line */
        err = SetFHandleSize(out->handle, wanted);
    }
    if (err == noErr)
        out->capacity = wanted;
    if (out->capacity > 0)
        LockFHandle(out->handle);
    return err;
}

/* Ends the text with its NUL and gives the handle the size that the appends and the
 * removal of the trailing NUL would have left: the text alone, or one NUL when the
 * text is empty. A result that nothing was appended to stays as it was. */
static void FinishLst2Output(Lst2Output *out)
{
    if (out->capacity == 0)
        return;
    (*out->handle)[out->used] = 0;
    SetFHandleSize(out->handle, out->used > 0 ? out->used : 1);   /* shrinks in place */
    UnlockFHandle(out->handle);
}

/* Composes every valid line of the list in the format of gOutputCodes into the result,
 * reading the list once from its start. */
static OSErr WriteLst2Columns(const char *list, long listSize, bool fileFlag, char **resultHandle)
{
    Lst2Output out = {resultHandle, 0, 0, listSize, false};
    OSErr err = noErr;
    for (const unsigned char *p = (const unsigned char *)list; p != nullptr;) {
        Lst2Line line;
        p = ReadLst2Line(p, &line);
        if (!IsTakenLst2Line(&line))
            continue;
        if (fileFlag) {
            err = kTableFullErr;   /* -3, as for a full table: output to a file is not provided */
            break;
        }
        err = MakeRoomInLst2Output(&out);
        if (err != noErr)
            break;
        out.appended = true;
        out.used += ComposeOutputLine(*out.handle + out.used, line.fields, line.lengths);
    }
    FinishLst2Output(&out);
    return err;
}

void TPX1GetParameterLST2(long funcId, char **argHandle, char **resultHandle)
{
    ClearOutputCodes();
    OSErr err = SetResultsHandle(resultHandle, "");
    if (err != noErr) {
        ReportErrorToUser(funcId, err);
        return;
    }
    gWordCodeTable = kLst2ColumnTable;
    char format[kLst2FormatSize];
    strcpyFHandleToCStr(format, sizeof format, argHandle);
    StrToUpper(format);

    char **list = GetTheIncomingMessageParameterDataHandleFromList_NotACopy("LST2");
    if (list == nullptr)
        return;
    LockFHandle(list);
    long listSize = GetFHandleSize(list);
    if (listSize > 0) {   /* a list of any text has at least one line */
        bool fileFlag = SetOutputCodesFromFormat(format);
        err = WriteLst2Columns(*list, listSize, fileFlag, resultHandle);
    }
    UnlockFHandle(list);
    if (err != noErr)
        ReportErrorToUser(funcId, err);
}
