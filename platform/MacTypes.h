/*
 * MacTypes.h: the basic types and error numbers of the toolbox interface that the
 * platform library offers to the plug-in core. Mac OS error numbers are the currency
 * of every platform call; the Linux implementations map errno to them in one place
 * (PlatformErrnoToOSErr).
 * Public: installed as <tpx1/MacTypes.h> for partner applications.
 */
#ifndef TPX1_MACTYPES_H
#define TPX1_MACTYPES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define TPX1_API __attribute__((visibility("default")))

typedef int16_t OSErr;
typedef int32_t OSStatus;
typedef uint32_t OSType;
typedef OSType DescType;
typedef OSType AEKeyword;
typedef OSType AEEventClass;
typedef OSType AEEventID;
typedef uint8_t Boolean;
typedef unsigned char Str255[256];
typedef unsigned char Str63[64];
typedef unsigned char *StringPtr;
typedef const unsigned char *ConstStr255Param;

typedef struct Rect { int16_t top, left, bottom, right; } Rect;

/* Four-character code from a literal: FOUR_CHAR('T','P','X','1'). */
#define FOUR_CHAR(a, b, c, d) \
    ((OSType)(((uint32_t)(uint8_t)(a) << 24) | ((uint32_t)(uint8_t)(b) << 16) | \
              ((uint32_t)(uint8_t)(c) << 8) | (uint32_t)(uint8_t)(d)))

enum {
    noErr = 0,
    userCanceledErr = -128,
    dirFulErr = -33,
    dskFulErr = -34,
    nsvErr = -35,
    ioErr = -36,
    bdNamErr = -37,
    fnOpnErr = -38,
    eofErr = -39,
    posErr = -40,
    tmfoErr = -42,
    fnfErr = -43,
    wPrErr = -44,
    fLckdErr = -45,
    vLckdErr = -46,
    fBsyErr = -47,
    dupFNErr = -48,
    opWrErr = -49,
    paramErr = -50,
    rfNumErr = -51,
    permErr = -54,
    wrPermErr = -61,
    memFullErr = -108,
    dirNFErr = -120,
    wrgVolTypErr = -123,   /* the operation is not supported on this volume */
    resNotFound = -192,
    resFNotFound = -193,
    procNotFound = -600,
    connectionInvalid = -609,
    appIsDaemon = -606,
    errAECoercionFail = -1700,
    errAEDescNotFound = -1701,
    errAECorruptData = -1702,
    errAEWrongDataType = -1703,
    errAENotAEDesc = -1704,
    errAEParamMissed = -1708,
    errAEUnknownSendMode = -1710,
    errAETimeout = -1712,
    errAEEventNotHandled = -1717,
    errAEBufferTooSmall = -1741
};

#ifdef __cplusplus
}
#endif

#endif
