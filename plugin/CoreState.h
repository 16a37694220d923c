/*
 * CoreState.h: the one owner of the plug-in's process-wide state. Each folder declares
 * the struct of what it keeps (text/TextState.h, store/StoreState.h, iac/IacState.h,
 * maplist/Lst2State.h, files/FilesState.h; the frame's own is here); gCoreState holds
 * them all, and CoreState.cpp binds every g name the code reads to its place in it, the
 * way a reference would. Nothing else in the core is writable at namespace or static
 * scope: a ctest check (check_core_state.sh) fails the build's tests otherwise.
 *
 * ResetCoreState puts everything back as at load, for harnesses, sweeps and fuzzing.
 * It forgets the lists without freeing them (their memory is the host's: Shutdown gives
 * it back first) and leaves the platform's tables to PlatformResetAll.
 */
#ifndef TPX1_CORESTATE_H
#define TPX1_CORESTATE_H

#include "plugin/Plugin.h"
#include "files/FilesState.h"
#include "iac/IacState.h"
#include "maplist/Lst2State.h"
#include "store/StoreState.h"
#include "text/TextState.h"

/* The frame's own: the call block of the call under way, the DoScript queue and the
 * idle handler's stamp, the deferred-init flag and the idle re-entry guard. */
struct FrameState {
    FMX_ExternCallBlock *callBlock;
    uint32_t lastSentDoScriptTicks;
    char deferredScript[kDoScriptSlots][kDoScriptNameSize];
    unsigned char deferredInitDone;
    unsigned char idleReentryGuard;
};

struct CoreState {
    FrameState frame;
    TextState text;
    StoreState store;
    IacState iac;
    Lst2State maplist;
    FilesState files;
};

extern CoreState gCoreState;

void ResetCoreState(void);

#endif
