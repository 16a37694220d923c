/*
 * Settings.cpp: the process's TPX1_... settings, read from the environment. A name may
 * be given with or without its TPX1_ prefix ("DIALOG_LOG" and "TPX1_DIALOG_LOG" are the
 * same setting).
 */
#include "platform/Toolbox.h"

#include <cstdlib>
#include <cstring>

extern "C" const char *PlatformSetting(const char *name)
{
    if (!name || !*name) return nullptr;
    if (strncmp(name, "TPX1_", 5) == 0) return getenv(name);
    char full[128];
    size_t len = strlen(name);
    if (len + 6 > sizeof full) return nullptr;
    memcpy(full, "TPX1_", 5);
    memcpy(full + 5, name, len + 1);
    return getenv(full);
}
