/*
 * Greetings.cpp: greeting partners ("HOLA", "OKHI") and handing them the solution's
 * sharing menus, TOPOLUX's maps and first view; the version, path and document
 * parameters every greeting and menu carries.
 */
#include <string.h>

#include "iac/IacTables.h"
#include "files/FileOps.h"
#include "platform/Toolbox.h"
#include "store/Globals.h"
#include "store/MessageLists.h"

OSErr SetDocVersPathOutgoingMessageParameters(short list)
{
    char value[256];
    GetGlobalInListAsStr("VERS", value, sizeof value);
    OSErr err = SetOutgoingMessageParameterFromStr("VERS", value[0] ? value : "2", list);
    if (err)
        return err;
    GetGlobalInListAsStr(kAppPathGlobal, value, sizeof value);
    if ((err = SetOutgoingMessageParameterFromStr("PATH", value, list)) != noErr)
        return err;
    GetGlobalInListAsStr(kAppDocGlobal, value, sizeof value);
    return SetOutgoingMessageParameterFromStr("DOC ", value, list);
}

/* A menu: the version, path and document parameters, then the name and items. */
static OSErr SendSharingMenu(const SharingMenu &menu, unsigned long signature)
{
    OSErr err = BeginStdMessage(nullptr, 0);
    if (err == noErr)
        err = SetDocVersPathOutgoingMessageParameters(2);
    if (err == noErr) {
        const char *const pairs[] = {"NAME", menu.name, "ITMS", menu.items, "MSSG", "MENU"};
        err = PutStdParameters(pairs, 3);
    }
    return FinishStdMessage(signature, err);
}

static bool MapFolderHoldsMapFile(const char *folder)
{
    char path[kMapFieldSize + 16];
    strcpy(path, folder);
    strcat(path, "Name.map");
    return FileExists(path);
}

OSErr SendMenuAndMapsToTopolux(void)
{
    OSErr err = noErr;
    if (gTopoluxSharingMenu.name[0])
        err = SendSharingMenu(gTopoluxSharingMenu, kTopoluxSignature);
    for (const MapEntry &map : gTopoluxMaps) {
        if (!map.folder[0] || !MapFolderHoldsMapFile(map.folder))
            continue;
        const char *const pairs[] = {"MSSG", "MAP ", "PATH", map.folder, "OPTN", map.options};
        err = FinishStdMessage(kTopoluxSignature, BeginStdMessage(pairs, 3));
    }
    return err;
}

OSErr SendMenuToNimbo(void)
{
    if (!gNimboSharingMenu.name[0])
        return noErr;
    OSErr err = SendSharingMenu(gNimboSharingMenu, kNimboSignature);
    if (err)
        SysBeep(5);
    return err;
}

OSErr GreetFriendAndSendMenus(unsigned long signature, const char *greeting, unsigned char sendView)
{
    char appName[256];
    GetGlobalInListAsStr(kAppNameGlobal, appName, sizeof appName);
    const char *const pairs[] = {"MSSG", greeting, "NAME", appName};
    OSErr err = BeginStdMessage(pairs, 2);
    if (err == noErr)
        err = SetDocVersPathOutgoingMessageParameters(2);
    if ((err = FinishStdMessage(signature, err)) != noErr)
        return err;
    if (signature == kTopoluxSignature) {
        if (sendView)
            SendTopoluxFirstView();
        return SendMenuAndMapsToTopolux();
    }
    if (signature == kNimboSignature)
        return SendMenuToNimbo();
    return noErr;
}

void SayHolaToAllFriends(void)
{
    for (const FriendEntry &entry : gFriends)
        if (entry.signature != 0 && AppIsRunning(entry.signature))
            GreetFriendAndSendMenus(entry.signature, "HOLA", false);
}
