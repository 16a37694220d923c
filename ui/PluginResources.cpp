/*
 * PluginResources.cpp: looking up one of the plug-in's resources: the current resource
 * file first, then the table the plug-in carries, so that the dialogs keep working when
 * the host hands the plug-in a reference that names no open file.
 */
#include "ui/PluginResources.h"

#include <cstring>

#include "platform/Toolbox.h"

bool GetPluginResourceText(OSType type, short id, short index, char *dest, long destSize)
{
    if (dest == nullptr || destSize <= 0)
        return false;
    if (GetResourceText(type, id, index, dest, (int32_t)destSize) == noErr)
        return true;
    for (int i = 0; i < gPluginResourceCount; i++) {
        const ResourceItem *item = &gPluginResources[i];
        if (item->type == type && item->id == id && item->index == index) {
            strncpy(dest, item->text, (size_t)destSize - 1);
            dest[destSize - 1] = 0;
            return true;
        }
    }
    dest[0] = 0;
    return false;
}
