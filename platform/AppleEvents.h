/*
 * AppleEvents.h: the Apple Event Manager calls the core uses. Events addressed to the
 * process's own signature are queued in-process and handed to the installed handler by
 * the host's event loop (AEProcessEvents), never inside the call that sent them; events
 * to other applications travel over the D-Bus session bus (wire format in
 * docs/wire-format.md). Every call is a thin wrapper over the event table and a fault point.
 * Public: installed as <tpx1/AppleEvents.h> for partner applications, so it includes the
 * other public headers by file name only.
 */
#ifndef TPX1_APPLEEVENTS_H
#define TPX1_APPLEEVENTS_H

#include <stdint.h>
#include "MacTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct AEDesc {
    DescType descriptorType;
    void *dataHandle;           /* owned by the event service */
} AEDesc;
typedef AEDesc AEAddressDesc;
typedef AEDesc AppleEvent;

typedef OSErr (*AEEventHandlerProcPtr)(const AppleEvent *theEvent, AppleEvent *reply, intptr_t refcon);
typedef AEEventHandlerProcPtr AEEventHandlerUPP;
static inline AEEventHandlerUPP NewAEEventHandlerUPP(AEEventHandlerProcPtr p) { return p; }

#define typeNull FOUR_CHAR('n', 'u', 'l', 'l')
#define typeChar FOUR_CHAR('T', 'E', 'X', 'T')
#define typeApplSignature FOUR_CHAR('s', 'i', 'g', 'n')
#define typeProcessSerialNumber FOUR_CHAR('p', 's', 'n', ' ')
#define typeFileURL FOUR_CHAR('f', 'u', 'r', 'l')
#define typeFSS FOUR_CHAR('f', 's', 's', ' ')
#define typeWildCard FOUR_CHAR('*', '*', '*', '*')
#define typeAppParameters FOUR_CHAR('a', 'p', 'p', 'a')
#define typeAppleEvent FOUR_CHAR('a', 'e', 'v', 't')
#define typeSInt32 FOUR_CHAR('l', 'o', 'n', 'g')
#define keyDirectObject FOUR_CHAR('-', '-', '-', '-')
#define keyMissedKeywordAttr FOUR_CHAR('m', 'i', 's', 's')
#define keyAddressAttr FOUR_CHAR('a', 'd', 'd', 'r')
#define keyOriginalAddressAttr FOUR_CHAR('f', 'r', 'o', 'm')
#define keyEventClassAttr FOUR_CHAR('e', 'v', 'c', 'l')
#define keyEventIDAttr FOUR_CHAR('e', 'v', 'i', 'd')
#define kCoreEventClass FOUR_CHAR('a', 'e', 'v', 't')
#define kAEOpenDocuments FOUR_CHAR('o', 'd', 'o', 'c')
#define kAEMiscStandards FOUR_CHAR('m', 'i', 's', 'c')
#define kAEDoScript FOUR_CHAR('d', 'o', 's', 'c')

enum {
    kAENoReply = 0x00000001,
    kAEQueueReply = 0x00000002,
    kAEWaitReply = 0x00000003,
    kAENeverInteract = 0x00000010,
    kAECanInteract = 0x00000020,
    kAEAlwaysInteract = 0x00000030,
    kAECanSwitchLayer = 0x00000040
};
enum { kAENormalPriority = 0 };
enum { kAEDefaultTimeout = -1, kNoTimeOut = -2 };
enum { kAutoGenerateReturnID = -1, kAnyTransactionID = 0 };

TPX1_API void AEInitializeDesc(AEDesc *desc);
TPX1_API OSErr AECreateDesc(DescType typeCode, const void *dataPtr, int32_t dataSize, AEDesc *result);
TPX1_API OSErr AECreateAppleEvent(AEEventClass theAEEventClass, AEEventID theAEEventID,
                                  const AEAddressDesc *target, int16_t returnID, int32_t transactionID,
                                  AppleEvent *result);
TPX1_API OSErr AEPutParamPtr(AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType typeCode,
                             const void *dataPtr, int32_t dataSize);
TPX1_API OSErr AEGetParamPtr(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType desiredType,
                             DescType *actualType, void *dataPtr, int32_t maximumSize, int32_t *actualSize);
TPX1_API OSErr AESizeOfParam(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword,
                             DescType *typeCode, int32_t *dataSize);
TPX1_API OSErr AEGetAttributePtr(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType desiredType,
                                 DescType *typeCode, void *dataPtr, int32_t maximumSize, int32_t *actualSize);
TPX1_API OSErr AECountItems(const AEDesc *theAEDescList, int32_t *theCount);
TPX1_API OSErr AESend(const AppleEvent *theAppleEvent, AppleEvent *reply, int32_t sendMode,
                      int16_t sendPriority, int32_t timeOutInTicks, void *idleProc, void *filterProc);
TPX1_API OSErr AEInstallEventHandler(AEEventClass theAEEventClass, AEEventID theAEEventID,
                                     AEEventHandlerUPP handler, intptr_t handlerRefcon, Boolean isSysHandler);
TPX1_API OSErr AERemoveEventHandler(AEEventClass theAEEventClass, AEEventID theAEEventID,
                                    AEEventHandlerUPP handler, Boolean isSysHandler);
TPX1_API OSErr AEDisposeDesc(AEDesc *theAEDesc);
TPX1_API OSErr AECoerceDesc(const AEDesc *theAEDesc, DescType toType, AEDesc *result);

/* The host's side of event delivery. AEGetEventFD gives a descriptor to poll (-1 when
 * none); AEProcessEvents hands every queued and received event to its handler, on the
 * caller's thread, and returns how many it dispatched. */
TPX1_API int AEGetEventFD(void);
TPX1_API int32_t AEProcessEvents(void);

#ifdef __cplusplus
}
#endif

#endif
