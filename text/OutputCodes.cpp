/*
 * OutputCodes.cpp: the ten output codes with which a list function composes one output
 * line from up to three fields and separators, and the word-to-code table they are read
 * from.
 */
#include <cstring>

#include "text/OutputCodes.h"

enum { kCodeEnd = 0, kCodeField1, kCodeField2, kCodeField3, kCodeBlank, kCodeTab, kCodeReturn };

void ClearOutputCodes(void)
{
    memset(gOutputCodes, 0, sizeof gOutputCodes);
}

void SetOutputCode(long slot, short code)
{
    if (slot < 0 || slot > 9)
        return;
    gOutputCodes[slot] = code;
}

short StrToCode(const char *word)
{
    if (gWordCodeTable == nullptr || word == nullptr)
        return 0;
    for (const WordCode *pair = gWordCodeTable; pair->code != 0 && pair->word != nullptr; pair++)
        if (strcmp(pair->word, word) == 0)
            return pair->code;
    return 0;
}

long ComposeOutputLine(char *dest, const char *const fields[3], const long lengths[3])
{
    char *out = dest;
    for (int slot = 0; slot < 10; slot++) {
        int16_t code = gOutputCodes[slot];
        if (code >= kCodeField1 && code <= kCodeField3) {
            memcpy(out, fields[code - kCodeField1], (size_t)lengths[code - kCodeField1]);
            out += lengths[code - kCodeField1];
        } else if (code == kCodeBlank) {
            *out++ = ' ';
        } else if (code == kCodeTab) {
            *out++ = '\t';
        } else if (code == kCodeReturn) {
            *out++ = '\r';
        } else {
            break;
        }
    }
    *out = 0;
    return (long)(out - dest);
}

void StrcpyOutputLine(char *dest, const char *field1, const char *field2, const char *field3)
{
    const char *const fields[3] = {field1 ? field1 : "", field2 ? field2 : "", field3 ? field3 : ""};
    const long lengths[3] = {(long)strlen(fields[0]), (long)strlen(fields[1]), (long)strlen(fields[2])};
    ComposeOutputLine(dest, fields, lengths);
}
