/*
 * Partners.cpp: the partner table (the applications met and where they live) and the
 * table of message ids the solution handles itself, with their external functions.
 */
#include <string.h>

#include "iac/IacTables.h"
#include "store/Globals.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"
#include "ui/Alerts.h"

static void CopyPath(char *dest, const char *path)
{
    dest[0] = 0;
    if (path)
        strncat(dest, path, sizeof gFriends[0].path - 1);
}

void AddFriend(unsigned long signature, const char *path)
{
    FriendEntry *vacant = nullptr;
    for (FriendEntry &entry : gFriends) {
        if (entry.signature == (OSType)signature) {
            CopyPath(entry.path, path);
            return;
        }
        if (entry.signature == 0 && !vacant)
            vacant = &entry;
    }
    if (vacant) {
        vacant->signature = (OSType)signature;
        CopyPath(vacant->path, path);
    }
}

void GetFriendsPath(unsigned long signature, char *path)
{
    path[0] = 0;
    for (const FriendEntry &entry : gFriends)
        if (entry.signature != 0 && entry.signature == (OSType)signature) {
            strcpy(path, entry.path);
            return;
        }
}

bool IsHandledMessage(OSType messageId)
{
    if (messageId == 0)
        return false;
    for (OSType id : gHandledMessages)
        if (id == messageId)
            return true;
    return false;
}

void TPX1SetKnownFriend(long funcId, char **argHandle, char **resultHandle)
{
    char name[256] = {0};
    char path[256] = {0};
    bool noDupes = false;
    OSErr err = GetAndStripNameAndDupes(argHandle, name, &noDupes);
    if (err) {
        ReportErrorToUser(funcId, err);
        return;
    }
    if (!name[0])
        return;
    strcpyFHandleToCStr(path, sizeof path, argHandle);
    AddFriend(StringToOSType(name), path);
}

void TPX1SetHandledMessages(long funcId, char **argHandle, char **resultHandle)
{
    char ids[512] = {0};
    strcpyFHandleToCStr(ids, sizeof ids, argHandle);
    memset(gHandledMessages, 0, sizeof gHandledMessages);
    int count = 0;
    for (char *id = strtok(ids, "|"); id && count < kHandledMessageCount; id = strtok(nullptr, "|"))
        gHandledMessages[count++] = StringToOSType(id);
}
