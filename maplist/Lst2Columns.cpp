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
    kLst2FirstOutputSize = 4096,
    kLst2StageSize = 16384        /* output gathered before it goes into the result */
};

/* The column table gLst2ColumnTable is rebuilt at every call and ended by a pair with
 * code 0. */
static void BuildLst2ColumnTable(void)
{
    static const char *const words[6] = {"TOPOLUXID", "LAYERNAME", "MAPNAME", "SPACE", "TAB", "RETURN"};
    for (int i = 0; i < 6; i++) {
        gLst2ColumnTable[i].code = (int16_t)(i + 1);
        gLst2ColumnTable[i].word = words[i];
    }
    gLst2ColumnTable[6].code = 0;
    gLst2ColumnTable[6].word = nullptr;
    gWordCodeTable = gLst2ColumnTable;
}

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

/* Splits a list line into identifier, layer and map name; true when the line has all
 * three and each is of the length the format allows. */
static bool SplitLst2Line(char *line, char **identifier, char **layer, char **map)
{
    char *cursor = line;
    *identifier = NextLst2Token(&cursor, "\t");
    *layer = NextLst2Token(&cursor, "\t");
    *map = NextLst2Token(&cursor, "\t");
    return *identifier != nullptr && strlen(*identifier) == kLst2IdentifierLength &&
           *layer != nullptr && strlen(*layer) <= kLst2MaxNameLength &&
           *map != nullptr && strlen(*map) <= kLst2MaxNameLength;
}

/* The result handle used as a growing text: appending one output line after another
 * gives the same text as appending each with CatHandleContents (the text followed by a
 * NUL), but lines gather in a local buffer first and the handle grows geometrically, so
 * a long list costs few host calls and is not copied once per line by a host whose
 * handles move when they grow. */
struct Lst2Output {
    char **handle;
    long used;        /* characters of text in the handle, without the NUL */
    long capacity;    /* the handle's size; 0 until the first append */
    long staged;      /* characters waiting in stage */
    bool appended;    /* an append was made, even of the empty text */
    char stage[kLst2StageSize];
};

/* Moves the staged characters into the handle, growing it as needed. */
static OSErr FlushLst2Output(Lst2Output *out)
{
    if (!out->appended)
        return noErr;
    if (out->used + out->staged + 1 > out->capacity) {
        long wanted = out->capacity * 2;
        if (wanted < kLst2FirstOutputSize)
            wanted = kLst2FirstOutputSize;
        if (wanted < out->used + out->staged + 1)
            wanted = out->used + out->staged + 1;
        OSErr err = SetFHandleSize(out->handle, wanted);
        if (err != noErr)
            return err;
        out->capacity = wanted;
    }
    LockFHandle(out->handle);
    memcpy(*out->handle + out->used, out->stage, (size_t)out->staged);
    out->used += out->staged;
    (*out->handle)[out->used] = 0;
    UnlockFHandle(out->handle);
    out->staged = 0;
    return noErr;
}

static OSErr AppendLst2Output(Lst2Output *out, const char *text)
{
    long length = (long)strlen(text);
    out->appended = true;
    if (out->staged + length > kLst2StageSize) {
        OSErr err = FlushLst2Output(out);
        if (err != noErr)
            return err;
    }
    memcpy(out->stage + out->staged, text, (size_t)length);   /* a line is far below the stage */
    out->staged += length;
    return noErr;
}

/* Flushes and gives the handle the size of its text and the NUL, as the appends would
 * have left it; a result that nothing was appended to stays as it was. */
static OSErr FinishLst2Output(Lst2Output *out)
{
    OSErr err = FlushLst2Output(out);
    if (out->capacity == 0)
        return err;
    OSErr sizeErr = SetFHandleSize(out->handle, out->used + 1);
    return err != noErr ? err : sizeErr;
}

/* Composes every valid line of the list in the format of gOutputCodes into the result. */
static OSErr WriteLst2Columns(const char *list, long lineCount, bool fileFlag, char **resultHandle)
{
    Lst2Output out;
    out.handle = resultHandle;
    out.used = out.capacity = out.staged = 0;
    out.appended = false;
    OSErr err = noErr;
    char line[kLst2ListLineSize];
    char composed[kLst2OutputLineSize];
    for (long i = 0; i < lineCount; i++) {
        NthLineInTextOptimizedForUseInLoop(list, i, line, sizeof line);
        char *identifier, *layer, *map;
        if (!SplitLst2Line(line, &identifier, &layer, &map))
            continue;
        StrcpyOutputLine(composed, identifier, layer, map);
        if (fileFlag) {
            err = kTableFullErr;   /* -3, as for a full table: output to a file is not provided */
            break;
        }
        err = AppendLst2Output(&out, composed);
        if (err != noErr)
            break;
    }
    OSErr finishErr = FinishLst2Output(&out);
    if (err == noErr)
        err = finishErr;
    if (!fileFlag)
        RemoveTrailingNullTerminator(resultHandle);
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
    BuildLst2ColumnTable();
    char format[kLst2FormatSize];
    strcpyFHandleToCStr(format, sizeof format, argHandle);
    StrToUpper(format);

    char **list = GetTheIncomingMessageParameterDataHandleFromList_NotACopy("LST2");
    if (list == nullptr)
        return;
    LockFHandle(list);
    long lineCount = GetFHandleSize(list) > 0 ? NumLinesInText(*list) : 0;
    if (lineCount > 0) {
        bool fileFlag = SetOutputCodesFromFormat(format);
        err = WriteLst2Columns(*list, lineCount, fileFlag, resultHandle);
    }
    UnlockFHandle(list);
    if (err != noErr)
        ReportErrorToUser(funcId, err);
}
