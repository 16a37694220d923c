/*
 * ActionWords.cpp: the action words a solution attaches to sharing-menu items, and
 * their codes.
 */
#include <string.h>

#include "iac/IacTables.h"

short ActionWordToCode(const char *word)
{
    static const struct { const char *word; short code; } kActions[] = {
        {"GETINFO", kActionGetInfo}, {"GOTOME", kActionGoToMe},          {"GETINFOFILE", kActionGetInfoFile},
        {"GETRIDSINFO", kActionGetRidsInfo}, {"LINK", kActionLink}, {"UNLINK", kActionUnlink},
    };
    if (!word)
        return kActionNone;
    for (const auto &a : kActions)
        if (strcmp(word, a.word) == 0)
            return a.code;
    return kActionNone;
}
