/*
 * OutputCodes.h: the ten output codes with which a list function composes one output
 * line from up to three fields and separators, and the word-to-code table they are read
 * from (filled by the map object list functions with their column words).
 */
#ifndef TPX1_OUTPUTCODES_H
#define TPX1_OUTPUTCODES_H

#include "platform/MacTypes.h"

extern int16_t (&gOutputCodes)[10];
struct WordCode { int16_t code; const char *word; };
extern const WordCode *&gWordCodeTable;

void ClearOutputCodes(void);
void SetOutputCode(long slot, short code);
short StrToCode(const char *word);
void StrcpyOutputLine(char *dest, const char *field1, const char *field2, const char *field3);
/* The same with the fields' lengths known (fields need no NUL); returns the line's
 * length. dest must hold every field as often as a code names it, plus the separators. */
long ComposeOutputLine(char *dest, const char *const fields[3], const long lengths[3]);

#endif
