/*
 * Resources.cpp: the plug-in's own resources, one table: its name, description and the
 * feature string hosts read (STR# 128), the display names of the 66 external functions
 * (STR# 144, index = id + 1), the dialog captions (STR# 15000) and the layout of the
 * message dialog (DLOG 23005). The build writes the same table beside the plug-in as
 * tpx1.fmx.rsrc; a lookup tries the current resource file first and then this table, so
 * the plug-in keeps working when the host hands it a reference that names no open file.
 */
#include <cstring>

#include "plugin/Plugin.h"
#include "platform/Toolbox.h"

#define STRL FOUR_CHAR('S', 'T', 'R', '#')
#define DLOG FOUR_CHAR('D', 'L', 'O', 'G')

const ResourceItem gPluginResources[] = {
    /* Feature string: creator TPX1, format 1, no preferences, external functions, idle. */
    {STRL, 128, 1, "TPX11nnYYnn"},
    {STRL, 128, 2, "TOPOLUX Plug-in"},
    {STRL, 128, 3, "Messaging with TOPOLUX and NIMBO, globals, paths, files and map lists for FileMaker solutions."},
    {STRL, 144, 1, "TPX1Version"},
    {STRL, 144, 2, "TPX1TabChar"},
    {STRL, 144, 3, "TPX1ReturnChar"},
    {STRL, 144, 4, "TPX1DoubleQuoteChar"},
    {STRL, 144, 5, "TPX1Ascii2Char"},
    {STRL, 144, 6, "TPX1CallScript"},
    {STRL, 144, 7, "TPX1ShowMessage"},
    {STRL, 144, 8, "TPX1ResolveRelativePath"},
    {STRL, 144, 9, "TPX1FileExists"},
    {STRL, 144, 10, "TPX1CopyFile"},
    {STRL, 144, 11, "TPX1DeleteFile"},
    {STRL, 144, 12, "TPX1ZipFiles"},
    {STRL, 144, 13, "TPX1UnzipFiles"},
    {STRL, 144, 14, "TPX1UnzipFilesBatchMode"},
    {STRL, 144, 15, "TPX1AskUserForFileNameToRead"},
    {STRL, 144, 16, "TPX1AskUserForFileNameToWrite"},
    {STRL, 144, 17, "TPX1SetKnownFriend"},
    {STRL, 144, 18, "TPX1SetHandledMessages"},
    {STRL, 144, 19, "TPX1SetMessageHandlingScriptTo"},
    {STRL, 144, 20, "TPX1SetScriptMenuName"},
    {STRL, 144, 21, "TPX1SetSIGNPSIG"},
    {STRL, 144, 22, "TPX1SetStartupDocument"},
    {STRL, 144, 23, "TPX1InitIAC"},
    {STRL, 144, 24, "TPX1SetGlobal"},
    {STRL, 144, 25, "TPX1AppendToGlobal"},
    {STRL, 144, 26, "TPX1UnsetGlobal"},
    {STRL, 144, 27, "TPX1GetGlobal"},
    {STRL, 144, 28, "TPX1GetGlobalList"},
    {STRL, 144, 29, "TPX1AttachScriptToGlobal"},
    {STRL, 144, 30, "TPX1EnableGlobalScript"},
    {STRL, 144, 31, "TPX1DisableGlobalScript"},
    {STRL, 144, 32, "TPX1ClearOutgoingMessage"},
    {STRL, 144, 33, "TPX1SendMessageTo"},
    {STRL, 144, 34, "TPX1SetParameter"},
    {STRL, 144, 35, "TPX1AppendToParameter"},
    {STRL, 144, 36, "TPX1ClearIncomingMessage"},
    {STRL, 144, 37, "TPX1GetNextMessage"},
    {STRL, 144, 38, "TPX1GetParameter"},
    {STRL, 144, 39, "TPX1GetParameterLST2"},
    {STRL, 144, 40, "TPX1GetParameterLST2Line"},
    {STRL, 144, 41, "TPX1GetParameterLatLong"},
    {STRL, 144, 42, "TPX1IsAppRunning"},
    {STRL, 144, 43, "TPX1GoToApp"},
    {STRL, 144, 44, "TPX1ShowOnMap"},
    {STRL, 144, 45, "TPX1ProcessLST2ParameterForTopolux"},
    {STRL, 144, 46, "TPX1SetTopoluxSharingMenu"},
    {STRL, 144, 47, "TPX1SetTopoluxSharingMenuActions"},
    {STRL, 144, 48, "TPX1SetTopoluxNoneSelectedGetInfoAlert"},
    {STRL, 144, 49, "TPX1SetTopoluxNoneSelectedUnlinkAlert"},
    {STRL, 144, 50, "TPX1SetTopoluxNoneSelectedLinkAlert"},
    {STRL, 144, 51, "TPX1SetTopoluxMoreThanOneSelectedLinkAlert"},
    {STRL, 144, 52, "TPX1SetTopoluxMapInfo"},
    {STRL, 144, 53, "TPX1SetTopoluxFirstView"},
    {STRL, 144, 54, "TPX1RenameIncomingLSTAtoLST2"},
    {STRL, 144, 55, "TPX1CopyIncomingLST2ToOutgoingLST2"},
    {STRL, 144, 56, "TPX1SetNimboSharingMenu"},
    {STRL, 144, 57, "TPX1SetNimboSharingMenuActions"},
    {STRL, 144, 58, "TPX1SetNimboNoneSelectedGetInfoAlert"},
    {STRL, 144, 59, "TPX1GetRepformYearsFromIDs"},
    {STRL, 144, 60, "TPX1ChangeRepformIDsInFile"},
    {STRL, 144, 61, "TPX1GetCharsFromFile"},
    {STRL, 144, 62, "TPX1GetListOfFilesInFolder"},
    {STRL, 144, 63, "TPX1GetNthLine"},
    {STRL, 144, 64, "TPX1FileSystemRepresentationFromClassicPath"},
    {STRL, 144, 65, "TPX1WaitOneSecond"},
    {STRL, 144, 66, "TPX1GetNameOfGlobalThatTriggeredScript"},
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
