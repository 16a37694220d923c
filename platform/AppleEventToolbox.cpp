/*
 * AppleEventToolbox.cpp: the exported Apple Event Manager calls: a check of the call's
 * fault point (for the calls the plug-in makes), then a call through the installed
 * event table.
 */
#include "platform/AppleEventRecords.h"
#include "platform/EventService.h"
#include "platform/Faults.h"

namespace {

const Tpx1EventMethods kDefaultEvents = {
    DescInitialize,      DescCreate,         DescCreateAppleEvent, DescPutParamPtr,     DescGetParamPtr,
    DescSizeOfParam,     DescGetAttributePtr, DescCountItems,      QueueSend,           QueueInstallHandler,
    QueueRemoveHandler,  DescDispose,        DescCoerce,           QueueGetEventFD,     QueueProcessEvents,
};

const Tpx1EventMethods *gEvents = &kDefaultEvents;

} // namespace

extern "C" {

const Tpx1EventMethods *PlatformInstallEvents(const Tpx1EventMethods *methods)
{
    const Tpx1EventMethods *previous = gEvents;
    gEvents = methods ? methods : &kDefaultEvents;
    return previous;
}

void AEInitializeDesc(AEDesc *desc)
{
    gEvents->xInitializeDesc(desc);
}

OSErr AECreateDesc(DescType typeCode, const void *dataPtr, int32_t dataSize, AEDesc *result)
{
    OSErr err = PlatformFaultCheck(kFaultAECreateDesc);
    if (err) {
        gEvents->xInitializeDesc(result);
        return err;
    }
    return gEvents->xCreateDesc(typeCode, dataPtr, dataSize, result);
}

OSErr AECreateAppleEvent(AEEventClass theAEEventClass, AEEventID theAEEventID, const AEAddressDesc *target,
                         int16_t returnID, int32_t transactionID, AppleEvent *result)
{
    OSErr err = PlatformFaultCheck(kFaultAECreateAppleEvent);
    if (err) {
        gEvents->xInitializeDesc(result);
        return err;
    }
    return gEvents->xCreateAppleEvent(theAEEventClass, theAEEventID, target, returnID, transactionID, result);
}

OSErr AEPutParamPtr(AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType typeCode, const void *dataPtr,
                    int32_t dataSize)
{
    OSErr err = PlatformFaultCheck(kFaultAEPutParamPtr);
    if (err) return err;
    return gEvents->xPutParamPtr(theAppleEvent, theAEKeyword, typeCode, dataPtr, dataSize);
}

OSErr AEGetParamPtr(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType desiredType,
                    DescType *actualType, void *dataPtr, int32_t maximumSize, int32_t *actualSize)
{
    OSErr err = PlatformFaultCheck(kFaultAEGetParamPtr);
    if (err) return err;
    return gEvents->xGetParamPtr(theAppleEvent, theAEKeyword, desiredType, actualType, dataPtr, maximumSize,
                                 actualSize);
}

OSErr AESizeOfParam(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType *typeCode,
                    int32_t *dataSize)
{
    OSErr err = PlatformFaultCheck(kFaultAESizeOfParam);
    if (err) return err;
    return gEvents->xSizeOfParam(theAppleEvent, theAEKeyword, typeCode, dataSize);
}

OSErr AEGetAttributePtr(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType desiredType,
                        DescType *typeCode, void *dataPtr, int32_t maximumSize, int32_t *actualSize)
{
    OSErr err = PlatformFaultCheck(kFaultAEGetAttributePtr);
    if (err) return err;
    return gEvents->xGetAttributePtr(theAppleEvent, theAEKeyword, desiredType, typeCode, dataPtr, maximumSize,
                                     actualSize);
}

OSErr AECountItems(const AEDesc *theAEDescList, int32_t *theCount)
{
    return gEvents->xCountItems(theAEDescList, theCount);
}

OSErr AESend(const AppleEvent *theAppleEvent, AppleEvent *reply, int32_t sendMode, int16_t sendPriority,
             int32_t timeOutInTicks, void *idleProc, void *filterProc)
{
    OSErr err = PlatformFaultCheck(kFaultAESend);
    if (err) {
        if (reply) gEvents->xInitializeDesc(reply);
        return err;
    }
    return gEvents->xSend(theAppleEvent, reply, sendMode, sendPriority, timeOutInTicks);
}

OSErr AEInstallEventHandler(AEEventClass theAEEventClass, AEEventID theAEEventID, AEEventHandlerUPP handler,
                            intptr_t handlerRefcon, Boolean isSysHandler)
{
    OSErr err = PlatformFaultCheck(kFaultAEInstallEventHandler);
    if (err) return err;
    return gEvents->xInstallEventHandler(theAEEventClass, theAEEventID, handler, handlerRefcon, isSysHandler);
}

OSErr AERemoveEventHandler(AEEventClass theAEEventClass, AEEventID theAEEventID, AEEventHandlerUPP handler,
                           Boolean isSysHandler)
{
    OSErr err = PlatformFaultCheck(kFaultAERemoveEventHandler);
    if (err) return err;
    return gEvents->xRemoveEventHandler(theAEEventClass, theAEEventID, handler, isSysHandler);
}

OSErr AEDisposeDesc(AEDesc *theAEDesc)
{
    /* Disposing always happens, even when a fault is reported, so nothing leaks. */
    OSErr err = PlatformFaultCheck(kFaultAEDisposeDesc);
    OSErr done = gEvents->xDisposeDesc(theAEDesc);
    return err ? err : done;
}

OSErr AECoerceDesc(const AEDesc *theAEDesc, DescType toType, AEDesc *result)
{
    OSErr err = PlatformFaultCheck(kFaultAECoerceDesc);
    if (err) {
        gEvents->xInitializeDesc(result);
        return err;
    }
    return gEvents->xCoerceDesc(theAEDesc, toType, result);
}

int AEGetEventFD(void)
{
    return gEvents->xGetEventFD();
}

int32_t AEProcessEvents(void)
{
    return gEvents->xProcessEvents();
}

} // extern "C"
