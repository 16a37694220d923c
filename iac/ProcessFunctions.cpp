/*
 * ProcessFunctions.cpp: the ways the plug-in starts and activates partners and its own
 * host (MakeSureAppIsRunning, BringApplicationForward, BringMeForward), and the external
 * functions TPX1GoToApp and TPX1ShowOnMap.
 */
#include "iac/IacTables.h"
#include "store/Globals.h"
#include "store/MessageLists.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"
#include "ui/Alerts.h"

static const char kDefaultShowOptions[] = "DRAW YESZOOM YESSELECT";

OSErr MakeSureAppIsRunning(unsigned long signature, unsigned char *launched)
{
    ProcessSerialNumber psn;
    FSSpec theSpec;
    return SignatureToApp(signature, nullptr, &psn, &theSpec, launched, 2, launchContinue | launchDontSwitch);
}

OSErr BringApplicationForward(unsigned long signature, unsigned char flag)
{
    ProcessSerialNumber psn;
    FSSpec theSpec;
    return SignatureToApp(signature, nullptr, &psn, &theSpec, &flag, 2, launchContinue);
}

OSErr BringMeForward(unsigned long partner)
{
    ProcessSerialNumber me;
    OSErr err = GetCurrentProcess(&me);
    if (err == noErr)
        err = SetFrontProcess(&me);
    SendForwardNotice(partner);
    return err;
}

void AssistTopoluxComingForwardOnIBM(void)
{
}

void TPX1GoToApp(long funcId, char **argHandle, char **resultHandle)
{
    char name[256] = {0};
    bool noDupes = false;
    if (GetAndStripNameAndDupes(argHandle, name, &noDupes) != noErr || !name[0])
        return;
    OSType signature = StringToOSType(name);
    bool wasRunning = AppIsRunning(signature);
    if (BringApplicationForward(signature, 0) != noErr)
        return;
    if (signature == kTopoluxSignature && !wasRunning && AppIsRunning(signature))
        GreetFriendAndSendMenus(kTopoluxSignature, "HOLA", false);
    char path[256];
    GetFriendsPath(signature, path);
    OSErr err = SetResultsHandle(resultHandle, path[0] ? path : "unknown path");
    if (err)
        ReportErrorToUser(funcId, err);
}

void TPX1ShowOnMap(long funcId, char **argHandle, char **resultHandle)
{
    OSErr err = SetOutgoingMessageParameterFromStr("MSSG", "SHOW", 1);
    if (err == noErr && !GetTheOutgoingMessageParameterDataHandleFromList_NotACopy("OPTN", 1)) {
        char options[512];
        GetGlobalInListAsStr("OPTN", options, sizeof options);
        err = SetOutgoingMessageParameterFromStr("OPTN", options[0] ? options : kDefaultShowOptions, 1);
    }
    if (err == noErr)
        err = SetOutgoingMessageParameterInList("LST2", argHandle, 1);
    if (err == noErr)
        err = SendMessageFromOutgoingMessageParameters(kTopoluxSignature, 1);
    if (err == noErr)
        AssistTopoluxComingForwardOnIBM();
    else
        ReportErrorToUser(funcId, err);
}
