/*
 * ExternalFunctionInfo.cpp: the user's view of the external function table, made from
 * ExternalFunctions.def without the implementation column, so that fmhost's help and
 * the documentation read the same rows that the dispatcher runs.
 */
#include "plugin/ExternalFunctionInfo.h"

#include <cstdio>

static const ExternalFunctionInfo gExternalFunctionInfo[kFunctionCount] = {
#define TPX1_EXTERNAL(id, Name, implementation, argLimit, args, summary) \
    {id, #Name, argLimit, args, summary},
#include "plugin/ExternalFunctions.def"
#undef TPX1_EXTERNAL
};

const ExternalFunctionInfo *GetExternalFunctionInfo(long id)
{
    if (id < 0 || id >= kFunctionCount)
        return nullptr;
    return &gExternalFunctionInfo[id];
}

static bool EqualIgnoringCase(const char *a, const char *b)
{
    for (;; a++, b++) {
        char ca = (*a >= 'a' && *a <= 'z') ? (char)(*a - 'a' + 'A') : *a;
        char cb = (*b >= 'a' && *b <= 'z') ? (char)(*b - 'a' + 'A') : *b;
        if (ca != cb)
            return false;
        if (ca == 0)
            return true;
    }
}

const ExternalFunctionInfo *FindExternalFunctionByName(const char *name)
{
    if (name == nullptr)
        return nullptr;
    for (const ExternalFunctionInfo &info : gExternalFunctionInfo)
        if (EqualIgnoringCase(info.name, name))
            return &info;
    return nullptr;
}

int GetExternalFunctionSynopsis(long id, char *dest, long destSize)
{
    if (dest == nullptr || destSize <= 0)
        return -1;
    dest[0] = 0;
    const ExternalFunctionInfo *info = GetExternalFunctionInfo(id);
    if (info == nullptr)
        return -1;
    int length = snprintf(dest, (size_t)destSize, "%s(%s) - %s", info->name, info->args, info->summary);
    if (length < 0 || length >= destSize) {
        dest[0] = 0;
        return -1;
    }
    return 0;
}
