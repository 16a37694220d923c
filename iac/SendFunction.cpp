/*
 * SendFunction.cpp: TPX1SendMessageTo, the solution's way to send outgoing list 1:
 * the addressee is started if need be, greeted with its menus, then sent the message.
 */
#include "iac/Iac.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"
#include "ui/Alerts.h"

void TPX1SendMessageTo(long funcId, char **argHandle, char **resultHandle)
{
    char text[6];
    strcpyFHandleToCStr(text, sizeof text, argHandle);
    OSType signature = StringToOSType(text);
    unsigned char launched = 0;
    if (MakeSureAppIsRunning(signature, &launched) == noErr)
        GreetFriendAndSendMenus(signature, "HOLA", launched);
    /* Sent even when the start failed: the send then fails again with the same error. */
    OSErr err = SendMessageFromOutgoingMessageParameters(signature, 1);
    if (err)
        ReportErrorToUser(funcId, err);
}
