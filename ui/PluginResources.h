/*
 * PluginResources.h: the plug-in's own resources. The table is the frame's (it carries
 * the function names; plugin/Resources.cpp defines it) and the build writes it beside
 * the plug-in as tpx1.fmx.rsrc; the dialogs look items up through
 * GetPluginResourceText, which tries the current resource file first.
 */
#ifndef TPX1_PLUGINRESOURCES_H
#define TPX1_PLUGINRESOURCES_H

#include "platform/MacTypes.h"

struct ResourceItem { OSType type; int16_t id; int16_t index; const char *text; };
extern const ResourceItem gPluginResources[];
extern const int gPluginResourceCount;

/* Looks an item up in the current resource file, then in the plug-in's own table. */
bool GetPluginResourceText(OSType type, short id, short index, char *dest, long destSize);

#endif
