/*
 * Codes.cpp: four-character codes to and from text (blank-padded, four blanks mean
 * unset), truth values, and the byte-order hooks, which have nothing to swap here.
 */
#include "text/TextUtils.h"

#include <cstring>

OSType StringToOSType(const char *text)
{
    OSType code = 0;
    bool ended = !text;
    for (int i = 0; i < 4; i++) {
        unsigned char c = ' ';
        if (!ended) {
            if (text[i] == 0)
                ended = true;
            else
                c = (unsigned char)text[i];
        }
        code = (code << 8) | c;
    }
    return code;
}

void OSTypeToString(unsigned long code, char *dest)
{
    dest[0] = (char)((code >> 24) & 0xFF);
    dest[1] = (char)((code >> 16) & 0xFF);
    dest[2] = (char)((code >> 8) & 0xFF);
    dest[3] = (char)(code & 0xFF);
    dest[4] = 0;
}

bool IsAllSpacesOSType(unsigned long code)
{
    return (code & 0xFFFFFFFFul) == FOUR_CHAR(' ', ' ', ' ', ' ');
}

bool StringToBoolean(char *text)
{
    if (!text)
        return false;
    return strcmp(StrToUpper(text), "TRUE") == 0;
}

int SwapBinary(void)
{
    return 0;
}

void SwapOSType(unsigned long *code)
{
}
