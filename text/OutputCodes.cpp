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

void StrcpyOutputLine(char *dest, const char *field1, const char *field2, const char *field3)
{
    dest[0] = 0;
    for (int slot = 0; slot < 10; slot++) {
        switch (gOutputCodes[slot]) {
        case kCodeField1: strcat(dest, field1); break;
        case kCodeField2: strcat(dest, field2); break;
        case kCodeField3: strcat(dest, field3); break;
        case kCodeBlank: strcat(dest, " "); break;
        case kCodeTab: strcat(dest, "\t"); break;
        case kCodeReturn: strcat(dest, "\r"); break;
        default: return;
        }
    }
}
