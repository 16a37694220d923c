/*
 * BuiltInReplies.cpp: the messages the plug-in answers by itself before the solution
 * sees them: greetings, sharing-menu hits from TOPOLUX and NIMBO, TOPOLUX's selection
 * reports, and NIMBO's requests to come forward.
 */
#include <string.h>

#include "iac/IacTables.h"
#include "store/DataNode.h"
#include "store/MessageLists.h"
#include "text/ErrorCodes.h"
#include "text/TextUtils.h"

namespace {

/* A stored parameter as text of at most size - 1 characters; "" when missing. */
void ReadParameter(const char *keyword, char *text, long size, DataNode *message)
{
    text[0] = 0;
    GetDataFromListAsStr(keyword, text, size, message);
}

long GetNumberParameter(const char *keyword, DataNode *message)
{
    char text[32];
    ReadParameter(keyword, text, sizeof text, message);
    return TextToLong(text);
}

/* The action the solution attached to an item (1..10) of a sharing menu; 0 outside. */
short MenuItemAction(const SharingMenu &menu, long item)
{
    return item >= 1 && item <= kMenuItemCount ? menu.actions[item - 1] : (short)kActionNone;
}

OSErr HandleTopoluxMenuHit(DataNode *message, bool *handled)
{
    short action = MenuItemAction(gTopoluxSharingMenu, GetNumberParameter("ITEM", message));
    switch (action) {
    case kActionGetInfo:
    case kActionGetInfoFile:
    case kActionLink:
    case kActionUnlink:
        *handled = true;
        return SendSelectionRequestToTopolux(action);
    case kActionGoToMe:
        BringMeForward(kTopoluxSignature);
        *handled = true;
        return noErr;
    default:
        return noErr;
    }
}

OSErr HandleNimboMenuHit(DataNode *message, bool *handled)
{
    short action = MenuItemAction(gNimboSharingMenu, GetNumberParameter("ITEM", message));
    if (action == kActionGoToMe) {
        *handled = true;
        BringMeForward(kNimboSignature);
        return noErr;
    }
    if (action == kActionGetRidsInfo) {
        *handled = true;
        if (!AppIsRunning(kNimboSignature))
            return kPartnerNotRunningErr;
        const char *const pairs[] = {"MSSG", "CHM?"};
        return FinishStdMessage(kNimboSignature, BeginStdMessage(pairs, 1));
    }
    return noErr;
}

/* Which selection alert, if any, answers a selection report of count objects. */
const char *SelectionAlertFor(long count, const char *extra)
{
    if (count <= 0) {
        if (strstr(extra, "GETINFO") && gTopoluxNoneSelectedGetInfoAlert[0])
            return gTopoluxNoneSelectedGetInfoAlert;
        if (strcmp(extra, "UNLINK") == 0 && gTopoluxNoneSelectedUnlinkAlert[0])
            return gTopoluxNoneSelectedUnlinkAlert;
        if (strcmp(extra, "LINK") == 0 && gTopoluxNoneSelectedLinkAlert[0])
            return gTopoluxNoneSelectedLinkAlert;
        return nullptr;
    }
    if (count >= 2 && strcmp(extra, "LINK") == 0 && gTopoluxMoreThanOneSelectedLinkAlert[0])
        return gTopoluxMoreThanOneSelectedLinkAlert;
    return nullptr;
}

void RecordSender(OSType sender, DataNode *message)
{
    char path[256];
    ReadParameter("PATH", path, sizeof path, message);
    AddFriend(sender, path);
}

}   // namespace

OSErr HandleMessageItself(OSType messageId, DataNode *message, bool *handled)
{
    char text[64];
    ReadParameter("SIGN", text, 5, message);
    OSType sender = StringToOSType(text);
    char extra[64];
    ReadParameter("XTRA", extra, sizeof extra, message);
    *handled = false;

    switch (messageId) {
    case FOUR_CHAR('M', 'H', 'I', 'T'):
        if (sender == kTopoluxSignature)
            return HandleTopoluxMenuHit(message, handled);
        if (sender == kNimboSignature)
            return HandleNimboMenuHit(message, handled);
        return noErr;
    case FOUR_CHAR('H', 'O', 'L', 'A'):
        RecordSender(sender, message);
        GreetFriendAndSendMenus(sender, "OKHI", false);
        return noErr;
    case FOUR_CHAR('O', 'K', 'H', 'I'):
        RecordSender(sender, message);
        return noErr;
    case FOUR_CHAR('Y', 'R', 'O', 'D'): {
        if (sender != kTopoluxSignature)
            return noErr;
        const char *alert = SelectionAlertFor(GetNumberParameter("NUM ", message), extra);
        if (!alert)
            return noErr;
        *handled = true;
        return SendAlertToTopolux(alert);
    }
    case FOUR_CHAR('C', 'H', 'M', '!'):
    case FOUR_CHAR('R', 'I', 'D', 'S'):
        if (sender == kNimboSignature)
            ReadParameter("NAME", text, sizeof text, message);   /* read, not used further */
        BringMeForward(kNimboSignature);
        return noErr;
    default:
        return noErr;
    }
}
