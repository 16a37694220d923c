/*
 * FMXExtern.h: the host call block of the classic FileMaker external-function API,
 * as the host lays it out and the plug-in reads it. This header is public: hosts
 * other than fmhost build against it, so the field order and offsets must never drift.
 * On a 32-bit build the offsets are those of the classic API (ILP32); on a 64-bit build
 * the same fields keep their order with natural alignment. Both are checked below.
 */
#ifndef TPX1_FMXEXTERN_H
#define TPX1_FMXEXTERN_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef char **FMX_Handle;                 /* pointer to a master pointer */

/* Values of whichCall. */
enum {
    kFMXT_Init = 0,
    kFMXT_Idle = 1,
    kFMXT_External = 3,
    kFMXT_Shutdown = 4
};

typedef struct FMX_ExternCallBlock {
    int16_t    hostVersion;                /* ILP32 offset 0 */
    int16_t    resFileRef;                 /* 2 */
    uint8_t    hostReserved1[5];           /* 4..8 */
    uint8_t    whichCall;                  /* 9 */
    int8_t     parm1;                      /* 10 */
    uint8_t    hostReserved2;              /* 11 */
    int32_t    parm2;                      /* 12 */
    FMX_Handle parm3;                      /* 16 */
    void      *hostReserved3;              /* 20 */
    union { int32_t value; FMX_Handle handle; } result;   /* 24 */
    void      *hostReserved4;              /* 28 */
    FMX_Handle (*newHandle)(int32_t size);               /* 32 */
    void       (*setHandleSize)(FMX_Handle h, int32_t size); /* 36 */
    int32_t    (*getHandleSize)(FMX_Handle h);           /* 40 */
    void       (*disposeHandle)(FMX_Handle h);           /* 44 */
    void      *hostReserved5;                            /* 48 */
    void       (*lockHandle)(FMX_Handle h);              /* 52 */
    void       (*unlockHandle)(FMX_Handle h);            /* 56 */
    void      *(*newPointer)(int32_t size);              /* 60 */
    void       (*disposePointer)(void *p);               /* 64 */
} FMX_ExternCallBlock;

/* The one symbol a plug-in exports. */
typedef void (*FMX_ExternCallProc)(FMX_ExternCallBlock *block);
void FMExternCallProc(FMX_ExternCallBlock *block);

#ifdef __cplusplus
}
#define TPX1_FMX_STATIC_ASSERT static_assert
#else
#define TPX1_FMX_STATIC_ASSERT _Static_assert
#endif

#if UINTPTR_MAX == 0xFFFFFFFFu
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, hostVersion) == 0, "hostVersion");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, resFileRef) == 2, "resFileRef");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, whichCall) == 9, "whichCall");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, parm1) == 10, "parm1");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, parm2) == 12, "parm2");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, parm3) == 16, "parm3");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, result) == 24, "result");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, newHandle) == 32, "newHandle");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, setHandleSize) == 36, "setHandleSize");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, getHandleSize) == 40, "getHandleSize");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, disposeHandle) == 44, "disposeHandle");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, lockHandle) == 52, "lockHandle");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, unlockHandle) == 56, "unlockHandle");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, newPointer) == 60, "newPointer");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, disposePointer) == 64, "disposePointer");
TPX1_FMX_STATIC_ASSERT(sizeof(FMX_ExternCallBlock) == 68, "size");
#elif UINTPTR_MAX == 0xFFFFFFFFFFFFFFFFu
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, hostVersion) == 0, "hostVersion");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, resFileRef) == 2, "resFileRef");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, whichCall) == 9, "whichCall");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, parm1) == 10, "parm1");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, parm2) == 12, "parm2");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, parm3) == 16, "parm3");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, result) == 32, "result");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, newHandle) == 48, "newHandle");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, setHandleSize) == 56, "setHandleSize");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, getHandleSize) == 64, "getHandleSize");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, disposeHandle) == 72, "disposeHandle");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, lockHandle) == 88, "lockHandle");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, unlockHandle) == 96, "unlockHandle");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, newPointer) == 104, "newPointer");
TPX1_FMX_STATIC_ASSERT(offsetof(FMX_ExternCallBlock, disposePointer) == 112, "disposePointer");
TPX1_FMX_STATIC_ASSERT(sizeof(FMX_ExternCallBlock) == 120, "size");
#endif

#endif
