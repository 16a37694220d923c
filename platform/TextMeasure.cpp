/*
 * TextMeasure.cpp: TextEdit's measurement of a text, with the system font modelled as
 * fixed width (7 pixels a character, 16 pixels a line). Lines wrap at blanks, a word
 * longer than the box is cut, and CR, LF and CR LF end a line. A text that ends in a
 * line break has an empty last line; the empty text has no line at all.
 */
#include "platform/Toolbox.h"
#include "platform/TextLayout.h"

#include <cstring>

static bool IsLineBreak(char c)
{
    return c == '\r' || c == '\n';
}

/* Where the text goes on after the CR, LF or CR LF at text[i]. */
static int32_t AfterLineBreak(const char *text, int32_t len, int32_t i)
{
    return (text[i] == '\r' && i + 1 < len && text[i + 1] == '\n') ? i + 2 : i + 1;
}

int32_t NextLayoutLine(const char *text, int32_t len, int32_t pos, int32_t cols, int32_t *lineEnd, bool *hadBreak)
{
    if (cols < 1) cols = 1;
    *hadBreak = false;
    int32_t i = pos;
    while (i < len && i - pos < cols && !IsLineBreak(text[i])) i++;
    if (i < len && IsLineBreak(text[i])) {
        *lineEnd = i;
        *hadBreak = true;
        return AfterLineBreak(text, len, i);
    }
    if (i == len) {
        *lineEnd = len;
        return len;
    }
    /* The box is full at i: break after the last blank, letting blanks hang past it. */
    int32_t cut = i;
    while (cut > pos && text[cut] != ' ') cut--;
    if (cut == pos) {   /* no blank to break at: cut the word */
        *lineEnd = i;
        return i;
    }
    *lineEnd = cut;
    while (cut < len && text[cut] == ' ') cut++;
    if (cut < len && IsLineBreak(text[cut])) {
        *hadBreak = true;
        return AfterLineBreak(text, len, cut);
    }
    return cut;
}

extern "C" {

int32_t TEMeasureLines(const char *text, int32_t length, int16_t widthPixels)
{
    if (!text) return 0;
    if (length < 0) length = (int32_t)strlen(text);
    int32_t cols = widthPixels / kSystemCharWidth;
    int32_t lines = 0, pos = 0, end;
    bool hadBreak = false;
    while (pos < length) {
        pos = NextLayoutLine(text, length, pos, cols, &end, &hadBreak);
        lines++;
    }
    if (hadBreak) lines++;
    return lines;
}

int16_t TELineHeight(void)
{
    return kSystemLineHeight;
}

} // extern "C"
