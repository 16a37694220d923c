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
/* Mac Roman upper-casing with the accents folded away, a table made at compile time:
 * a..z to A..Z, the accented letters of 128..244 to their plain capitals (small e acute,
 * 142, deliberately stays), the non-breaking space (202) to a blank, five small letters
 * to their capitals; every other code as it is. */
constexpr unsigned char FoldMacRomanUpper(unsigned char c)
{
    if (c >= 'a' && c <= 'z')
        return (unsigned char)(c - 32);
    switch (c) {
    case 128: case 129: case 135: case 136: case 137: case 138: case 139: case 140:
    case 203: case 204: case 229: case 231:
        return 'A';
    case 131: case 143: case 144: case 145: case 230: case 232: case 233:
        return 'E';
    case 146: case 147: case 148: case 149: case 234: case 235: case 236: case 237:
        return 'I';
    case 133: case 151: case 152: case 153: case 154: case 155: case 175: case 191:
    case 205: case 238: case 239: case 241:
        return 'O';
    case 134: case 156: case 157: case 158: case 159: case 242: case 243: case 244:
        return 'U';
    case 216: case 217:
        return 'Y';
    case 202: return ' ';
    case 141: return 130;
    case 150: return 132;
    case 190: return 174;
    case 185: return 184;
    case 207: return 206;
    default:
        return c;
    }
}
struct MacRomanUpperTable {
    unsigned char of[256];
    constexpr MacRomanUpperTable() : of()
    {
        for (int c = 0; c < 256; c++)
            of[c] = FoldMacRomanUpper((unsigned char)c);
    }
};
inline constexpr MacRomanUpperTable kMacRomanUpper;

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
