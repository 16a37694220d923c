/*
 * AppleEventRecords.h: how the event service keeps descriptors inside the platform
 * library (not exported). An AEDesc's dataHandle points at one AEDescRecord; plain
 * descriptors keep their bytes, Apple events and application parameters ('appa') keep
 * class, id, target, sender and the ordered parameters. The record's first field holds
 * its own address, so that code which dereferences dataHandle like a Mac handle reaches
 * the same record.
 */
#ifndef TPX1_APPLEEVENTRECORDS_H
#define TPX1_APPLEEVENTRECORDS_H

#include <string>
#include <vector>

#include "platform/AppleEvents.h"
#include "platform/Processes.h"

struct AEParamItem {
    AEKeyword keyword;
    DescType type;
    std::string data;
};

struct AEDescRecord {
    void *master;                   /* == this */
    uint32_t magic;
    /* Plain descriptors. */
    std::string data;
    /* Apple events and 'appa'. */
    AEEventClass eventClass = 0;
    AEEventID eventID = 0;
    DescType targetType = typeNull;
    std::string target;
    OSType sender = 0;              /* keyOriginalAddressAttr; 0 until sent */
    int16_t returnID = 0;
    int32_t transactionID = 0;
    std::vector<AEParamItem> params;
};

/* ---- Records (AppleEventDescriptors.cpp) ---- */
/* The record behind desc, or null when desc holds none (typeNull) or is not ours. */
AEDescRecord *AERecordOf(const AEDesc *desc);
bool AEDescIsEvent(const AEDesc *desc);   /* 'aevt' or 'appa' with a record */
AEDescRecord *AENewRecord(void);
void AEFreeRecord(AEDescRecord *record);
AEDescRecord *AECopyRecord(const AEDescRecord *record);
/* Makes desc own record (of type type). */
void AEAttachRecord(AEDesc *desc, DescType type, AEDescRecord *record);
const AEParamItem *AEFindParam(const AEDescRecord *record, AEKeyword keyword);
/* Puts (replacing in place) a parameter. */
void AESetParam(AEDescRecord *record, AEKeyword keyword, DescType type, const std::string &data);
/* The signature an event is addressed to ('sign' target), or 0. */
OSType AETargetSignature(const AEDescRecord *record);
/* Copies bytes out the toolbox way: at most maximumSize, full size in *actualSize. */
void AECopyOut(const std::string &bytes, void *dataPtr, int32_t maximumSize, int32_t *actualSize);

/* ---- Coercion (AppleEventCoercion.cpp) ---- */
/* Converts data of type from into type to. errAECoercionFail when there is no way. */
OSErr AECoerceBytes(DescType from, const std::string &in, DescType to, std::string *out);
/* file:// URL <-> POSIX path (percent-encoding). */
std::string AEFileURLFromPOSIX(const std::string &path);
bool AEPOSIXFromFileURL(const std::string &url, std::string *path);
/* The document of an open-document event or 'appa' record, as a POSIX path ("" when none). */
std::string AEDocumentPOSIXPath(const AEDescRecord *record);

/* ---- Handlers (AppleEventHandlers.cpp) ---- */
OSErr AEHandlerInstall(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler, intptr_t refcon);
OSErr AEHandlerRemove(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler);
bool AEHandlerFind(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP *handler, intptr_t *refcon);
void AEHandlerClearAll(void);

/* ---- The in-process queue (AppleEventQueue.cpp) ----
 * An incoming event waits here until AEProcessEvents hands it to its handler. A bus
 * event that expects an answer carries a reply token; the bus's xReply sends the
 * handler's result and releases it (also with the result when nobody handled it). */
typedef void (*AEReplyProc)(void *token, OSErr result);
void AEQueueIncoming(AEDescRecord *event, AEReplyProc reply, void *token);   /* takes the record */
/* The bus's descriptor changed (-1: no bus): AEGetEventFD's set follows it. */
void AEQueueWatchBusFD(int fd);
void AEQueueClear(void);

/* ---- The current process (ProcessCurrent.cpp) ---- */
ProcessSerialNumber ProcessCurrentPSN(void);
bool ProcessIsCurrent(const ProcessSerialNumber *psn);
/* POSIX path of the application: TPX1_APP_PATH, else /proc/self/exe. */
std::string ProcessCurrentAppPath(void);
void ProcessCallActivateHandler(void);
/* The next serial number for another process. */
ProcessSerialNumber ProcessNewPSN(void);
/* Fills the name (Pascal, Mac Roman, from the file name of posixExecutable) and the
 * application FSSpec of info; either may be null in info. */
void ProcessFillNameAndSpec(ProcessInfoRec *info, const std::string &displayName,
                            const std::string &posixExecutable);

/* ---- The default event table's members (AppleEventDescriptors.cpp, AppleEventQueue.cpp) ---- */
void DescInitialize(AEDesc *desc);
OSErr DescCreate(DescType typeCode, const void *dataPtr, int32_t dataSize, AEDesc *result);
OSErr DescCreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc *target,
                           int16_t returnID, int32_t transactionID, AppleEvent *result);
OSErr DescPutParamPtr(AppleEvent *event, AEKeyword keyword, DescType typeCode, const void *dataPtr,
                      int32_t dataSize);
OSErr DescGetParamPtr(const AppleEvent *event, AEKeyword keyword, DescType desiredType, DescType *actualType,
                      void *dataPtr, int32_t maximumSize, int32_t *actualSize);
OSErr DescSizeOfParam(const AppleEvent *event, AEKeyword keyword, DescType *typeCode, int32_t *dataSize);
OSErr DescGetAttributePtr(const AppleEvent *event, AEKeyword keyword, DescType desiredType, DescType *typeCode,
                          void *dataPtr, int32_t maximumSize, int32_t *actualSize);
OSErr DescCountItems(const AEDesc *list, int32_t *count);
OSErr DescDispose(AEDesc *desc);
OSErr DescCoerce(const AEDesc *desc, DescType toType, AEDesc *result);
OSErr QueueSend(const AppleEvent *event, AppleEvent *reply, int32_t sendMode, int16_t sendPriority,
                int32_t timeOutInTicks);
OSErr QueueInstallHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler,
                          intptr_t refcon, Boolean isSysHandler);
OSErr QueueRemoveHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler,
                         Boolean isSysHandler);
int QueueGetEventFD(void);
int32_t QueueProcessEvents(void);

#endif
