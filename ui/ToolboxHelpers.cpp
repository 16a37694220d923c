/*
 * ToolboxHelpers.cpp: thin helpers between NUL-terminated texts and the toolbox's
 * strings and numbers: indexed strings from the plug-in's resources, numbers as text
 * and back, and the in-place Pascal/C string conversions (at most 255 characters).
 */
#include "ui/Alerts.h"

#include <cstdlib>
#include <cstring>

#include "text/TextUtils.h"
#include "ui/PluginResources.h"

enum { kToolboxStringSize = 256 };

void my_getindstring(char *s, short id, short index)
{
    if (!s)
        return;
    if (!GetPluginResourceText(FOUR_CHAR('S', 'T', 'R', '#'), id, index, s, kToolboxStringSize))
        s[0] = 0;
}

void my_numtostring(long n, char *s)
{
    mylong2str(n, s);
}

void my_stringtonum(const char *s, long *n)
{
    *n = s ? strtol(s, nullptr, 10) : 0;
}

void my_p2cstr(unsigned char *s)
{
    if (!s)
        return;
    size_t len = s[0];
    memmove(s, s + 1, len);
    s[len] = 0;
}

void my_c2pstr(char *s)
{
    if (!s)
        return;
    size_t len = strlen(s);
    if (len > kToolboxStringSize - 1)
        len = kToolboxStringSize - 1;
    memmove(s + 1, s, len);
    s[0] = (char)(unsigned char)len;
}
