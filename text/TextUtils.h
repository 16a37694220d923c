/*
 * TextUtils.h: the shared text operations: line counting and fetching over CR, LF and
 * CR LF, Mac Roman upper-casing with accents folded, four-character codes to and from
 * text, truth values, Pascal and C strings, numbers as text, and the topic and menu
 * name matching rules. Texts are 8-bit Mac Roman and NUL-terminated.
 */
#ifndef TPX1_TEXTUTILS_H
#define TPX1_TEXTUTILS_H

#include "platform/MacTypes.h"

extern char (&gReturnString)[4];
extern char (&gIbmReturnString)[4];
extern char (&gMacReturnString)[4];

char *ReturnString(void);
char *MacReturnString(void);
char *IbmReturnString(void);
void mylong2str(long value, char *dest);
/* The decimal number at the start of text, read as atol reads it (leading blanks, a
 * sign, digits; 0 when there is none), but held at LONG_MIN or LONG_MAX when it lies
 * beyond them, so that no text gives an undefined value. */
long TextToLong(const char *text);
OSType StringToOSType(const char *text);
void OSTypeToString(unsigned long code, char *dest);
bool IsAllSpacesOSType(unsigned long code);
bool StringToBoolean(char *text);
int myc2pstr(const char *text, unsigned char *dest);
void myp2cstr(const unsigned char *src, char *dest);
void pstrcpy(unsigned char *dest, const unsigned char *src);
void pstrcat(unsigned char *dest, const unsigned char *src);
char mytoupper(char c);
char *StrToUpper(char *text);
long NumLinesInText(const char *text);
void NthLineInTextNonOptimized(const char *text, long n, char *dest, long destSize);
void NthLineInTextOptimizedForUseInLoop(const char *text, long n, char *dest, long destSize);
bool TopicStringsMatch(const char *a, const char *b);
bool MenuStrMatches(const char *a, const char *b);
int SwapBinary(void);
void SwapOSType(unsigned long *code);

#endif
