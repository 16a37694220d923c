/*
 * TextLayout.h: the fixed-width model of the system font that text measurement and the
 * terminal dialog share, internal to the platform library.
 */
#ifndef TPX1_TEXTLAYOUT_H
#define TPX1_TEXTLAYOUT_H

#include <stdint.h>

enum { kSystemCharWidth = 7, kSystemLineHeight = 16 };

/* Lays out the line that starts at text[pos] in a box of cols characters: *lineEnd is
 * where its visible text ends, and the return value where the next line starts (len
 * when it was the last one). *hadBreak tells whether a CR, LF or CR LF ended it. */
int32_t NextLayoutLine(const char *text, int32_t len, int32_t pos, int32_t cols, int32_t *lineEnd, bool *hadBreak);

#endif
