/*
 * ReceiveMessage.cpp: the 'VESK'/'AEVT' handler: installing it (InitIac, TPX1InitIAC),
 * reading a message's text parameters, storing it in the first free archive slot,
 * letting the built-in dispatcher see it, and keeping it only for handled ids.
 */
#include <string.h>

#include "iac/Iac.h"
#include "iac/IacState.h"
#include "platform/Toolbox.h"
#include "store/DataNode.h"
#include "store/MessageLists.h"
#include "text/ErrorCodes.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"
#include "ui/Alerts.h"

OSErr InitIac(void)
{
    if (!gVeskHandlerUPP)
        gVeskHandlerUPP = NewAEEventHandlerUPP(HandleVESKEvent);
    return AEInstallEventHandler(kVeskEventClass, kVeskEventID, gVeskHandlerUPP, 0, false);
}

void TPX1InitIAC(long funcId, char **argHandle, char **resultHandle)
{
    OSErr err = InitIac();
    if (err) {
        ReportErrorToUser(funcId, err);
        return;
    }
    SayHolaToAllFriends();
}

void CloseIac(void)
{
    gIacClosed = true;
    AERemoveEventHandler(kVeskEventClass, kVeskEventID, HandleVESKEvent, false);
}

void ReopenIac(void)
{
    gIacClosed = false;
}

OSErr HandleVESKEvent(const AppleEvent *event, AppleEvent *reply, intptr_t refcon)
{
    if (gIacClosed)
        return errAEEventNotHandled;
    ForgetFailedLaunches();
    int16_t savedResFile = CurResFile();
    if (gFMX_ExternCallPtr)
        UseResFile(gFMX_ExternCallPtr->resFileRef);
    ArchiveIncomingMessage(event);
    UseResFile(savedResFile);
    /* The archiving result stays inside: the sender only learns of missed parameters. */
    return RequiredCheck(event);
}

OSErr RequiredCheck(const AEDesc *event)
{
    DescType type;
    int32_t size = 0;
    OSErr err = AEGetAttributePtr(event, keyMissedKeywordAttr, typeWildCard, &type, nullptr, 0, &size);
    if (err == errAEDescNotFound)
        return noErr;
    if (err == noErr)
        return errAEParamMissed;
    return err;
}

OSErr myAEGetParamPtr(const AEDesc *event, unsigned long keyword, unsigned long desiredType,
                      unsigned long *actualType, char *buffer, long maxSize, long *actualSize)
{
    DescType type = 0;
    int32_t size = 0;
    OSErr err = AEGetParamPtr(event, (AEKeyword)keyword, (DescType)desiredType, &type, buffer, (int32_t)maxSize,
                              &size);
    if (actualType)
        *actualType = type;
    if (actualSize)
        *actualSize = size;
    return err;
}

/* buffer holds maxLength + 1 bytes. */
OSErr MyAEGetStrParam(const AEDesc *event, unsigned long keyword, char *buffer, long maxLength)
{
    unsigned long type;
    long size = 0;
    buffer[0] = 0;
    OSErr err = myAEGetParamPtr(event, keyword, typeChar, &type, buffer, maxLength, &size);
    if (err)
        return err;
    if (size > maxLength)
        return kMissingErr;
    buffer[size < 0 ? 0 : size] = 0;
    return noErr;
}

char *AllocateAndGetAEStrParam(const AEDesc *event, unsigned long keyword)
{
    DescType type;
    int32_t size = 0;
    if (AESizeOfParam(event, (AEKeyword)keyword, &type, &size) != noErr || size < 1)
        return nullptr;
    char *text = (char *)NewFPointer(size + 1);
    if (!text)
        return nullptr;
    if (MyAEGetStrParam(event, keyword, text, size) != noErr) {
        DisposeFPointer(text);
        return nullptr;
    }
    return text;
}

/* Reads MSSG or SIGN: at most five characters, the first four make the code. */
static OSErr GetCodeParam(const AEDesc *event, OSType keyword, OSType *code)
{
    char text[6];
    OSErr err = MyAEGetStrParam(event, keyword, text, 5);
    if (err == noErr)
        *code = StringToOSType(text);
    return err;
}

static OSErr StoreMessage(const AEDesc *event, OSType messageId, DataNode **slot)
{
    OSType keywords[kMaxParamCount];
    int count = GetKeywordSetForMessage(messageId, keywords, kMaxParamCount);
    if (count > kMaxParamCount) {
        ReportErrorMsgToUser("Programmer error: paramCount exceeds kMaxParamCount in ArchiveIncomingMessage");
        count = kMaxParamCount;
    }
    DisposeDataList(slot);
    for (int i = 0; i < count; i++) {
        char name[5];
        OSTypeToString(keywords[i], name);
        char *value = AllocateAndGetAEStrParam(event, keywords[i]);
        if (!value)
            continue;
        long err = SetDataFromStr(name, 0, value, slot);
        DisposeFPointer(value);
        if (err) {
            DisposeDataList(slot);
            return (OSErr)err;
        }
    }
    return noErr;
}

OSErr ArchiveIncomingMessage(const AEDesc *event)
{
    int index = FirstFreeArchiveSlot();
    if (index < 0)
        return kArchiveFullErr;
    OSType messageId = 0, sender = 0;
    OSErr err = GetCodeParam(event, FOUR_CHAR('M', 'S', 'S', 'G'), &messageId);
    if (err == noErr)
        err = GetCodeParam(event, FOUR_CHAR('S', 'I', 'G', 'N'), &sender);
    if (err)
        return err;
    DataNode **slot = &gArchivedIncomingMessageParameterDataNodeList[index];
    if ((err = StoreMessage(event, messageId, slot)) != noErr)
        return err;
    bool handled = false;
    err = HandleMessageItself(messageId, *slot, &handled);
    if (err != noErr || handled || messageId == 0 || !IsHandledMessage(messageId))
        DisposeDataList(slot);
    return err;
}
