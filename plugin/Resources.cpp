/*
 * Resources.cpp: the plug-in's own resources, one table: its name, description and the
 * feature string hosts read (STR# 128), the display names of the external functions
 * (STR# 144, index = id + 1, from ExternalFunctions.def), the dialog captions (STR# 15000) and the layout of the
 * message dialog (DLOG 23005). The build writes the same table beside the plug-in as
 * tpx1.fmx.rsrc; the dialogs fall back on it (ui/PluginResources.cpp) when the current
 * resource file lacks an item.
 */
#include "ui/PluginResources.h"

#define STRL FOUR_CHAR('S', 'T', 'R', '#')
#define DLOG FOUR_CHAR('D', 'L', 'O', 'G')

const ResourceItem gPluginResources[] = {
    /* Feature string: creator TPX1, format 1, no preferences, external functions, idle. */
    {STRL, 128, 1, "TPX11nnYYnn"},
    {STRL, 128, 2, "TOPOLUX Plug-in"},
    {STRL, 128, 3, "Messaging with TOPOLUX and NIMBO, globals, paths, files and map lists for FileMaker solutions."},
    /* STR# 144: the display names, index = id + 1. */
#define TPX1_EXTERNAL(id, Name, implementation, argLimit, args, summary) {STRL, 144, (id) + 1, #Name},
#include "plugin/ExternalFunctions.def"
#undef TPX1_EXTERNAL
    {STRL, 15000, 35, "Stop"},
    {STRL, 15000, 36, "Note"},
    {STRL, 15000, 37, "Caution"},
    {STRL, 15000, 38, "Caution"},
    /* DLOG 23005: the message dialog; item rectangles are top left bottom right. */
    {DLOG, 23005, 1, "window 0 0 130 420"},
    {DLOG, 23005, 2, "item 1 button 90 330 110 400"},
    {DLOG, 23005, 3, "item 2 button 90 240 110 320"},
    {DLOG, 23005, 4, "item 3 button 90 150 110 230"},
    {DLOG, 23005, 5, "item 5 user 45 20 75 400"},
    {DLOG, 23005, 6, "item 6 icon 10 20 42 52"},
    {DLOG, 23005, 7, "item 7 text 15 60 31 400"},
};

const int gPluginResourceCount = (int)(sizeof gPluginResources / sizeof gPluginResources[0]);
