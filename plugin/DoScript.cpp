/*
 * DoScript.cpp: the queue of host scripts that idle time runs, and the idle handler.
 * The plug-in cannot run a script itself: it queues the name, and at the next idle
 * call sends its own host the do-script event addressed by "App Signature". While a
 * kept message waits, the idle handler announces it by queuing the message-handling
 * script, with a 600-tick grace period after each announcement and after each access
 * of the solution to the message.
 */
#include <cstring>

#include "plugin/Plugin.h"
#include "iac/Iac.h"
#include "platform/AppleEvents.h"
#include "platform/Toolbox.h"
#include "store/Globals.h"
#include "store/MessageLists.h"

long AddScriptToDoScriptQueue(const char *scriptName)
{
    if (strlen(scriptName) > kDoScriptNameSize - 1)
        return kScriptNameTooLongErr;
    for (int i = 0; i < kDoScriptSlots; i++) {
        if (gDeferredScript[i][0] == 0) {
            strcpy(gDeferredScript[i], scriptName);
            return 0;
        }
        if (strcmp(gDeferredScript[i], scriptName) == 0)
            return 0;
    }
    return kQueueFullErr;
}

void ProcessDoScriptQueue(void)
{
    char name[kDoScriptNameSize];
    strcpy(name, gDeferredScript[0]);
    if (name[0] != 0) {
        BringMeForward(kTopoluxSignature);
        SendDoScript(name, GetGlobalInListAsOSType(kAppSignatureGlobal));
    }
    for (int i = 0; i < kDoScriptSlots - 1; i++)
        strcpy(gDeferredScript[i], gDeferredScript[i + 1]);
    gDeferredScript[kDoScriptSlots - 1][0] = 0;
}

OSErr SendDoScript(const char *scriptName, unsigned long signature)
{
    AEAddressDesc address;
    AppleEvent event, reply;
    AEInitializeDesc(&address);
    AEInitializeDesc(&event);
    AEInitializeDesc(&reply);
    OSType target = (OSType)signature;

    OSErr err = AECreateDesc(typeApplSignature, &target, sizeof target, &address);
    if (err == noErr)
        err = AECreateAppleEvent(kAEMiscStandards, kAEDoScript, &address, kAutoGenerateReturnID,
                                 kAnyTransactionID, &event);
    if (err == noErr)
        err = AEPutParamPtr(&event, keyDirectObject, typeChar, scriptName, (int32_t)strlen(scriptName));
    if (err == noErr)
        err = AESend(&event, &reply, kAENoReply + kAECanInteract + kAECanSwitchLayer, kAENormalPriority,
                     kNoTimeOut, nullptr, nullptr);
    AEDisposeDesc(&reply);
    AEDisposeDesc(&address);
    AEDisposeDesc(&event);
    return err;
}

/* True while the solution is still within its grace period after reference. */
static bool WithinGracePeriod(uint32_t reference, uint32_t now)
{
    return reference <= now && now < reference + (uint32_t)kGraceTicks;
}

static void AnnounceWaitingMessage(void)
{
    char script[256];
    GetGlobalInListAsStr(kHandleMessageScriptGlobal, script, sizeof script);
    AddScriptToDoScriptQueue(script);
    gLastSentDoScriptTicks = TickCount();
    gHaveSendDoScriptAndWaitingForGetNextMessage = 1;
}

void Plugin_Idle(char idleLevel)
{
    if (idleLevel != 0)
        return;
    if (gIdleReentryGuard)
        return;
    gIdleReentryGuard = 1;
    if (gDeferredInitDone == 0)
        gDeferredInitDone = 1;

    if (AnyArchivedMessage()) {
        uint32_t now = TickCount();
        bool inGrace = false;
        if (gHaveSendDoScriptAndWaitingForGetNextMessage) {
            inGrace = WithinGracePeriod(gLastSentDoScriptTicks, now);
        } else if (gHaveGottenAnIncomingMessageButNotClearedIt) {
            uint32_t reference = gLastGetNextMessageCallTicks;
            if (gLastGetParameterCallTicks > reference)
                reference = gLastGetParameterCallTicks;
            if (gLastSetParameterCallTicks > reference)
                reference = gLastSetParameterCallTicks;
            inGrace = WithinGracePeriod(reference, now);
        }
        if (!inGrace)
            AnnounceWaitingMessage();
    }

    ProcessDoScriptQueue();
    gIdleReentryGuard = 0;
}
