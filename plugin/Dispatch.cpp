/*
 * Dispatch.cpp: Plugin_External, which terminates the argument text and runs the function
 * of the id from the table in ExternalFunctions.def. An argument that cannot be
 * terminated is reported with context -1; id -1 and ids outside the table do nothing.
 */
#include "plugin/Plugin.h"
#include "plugin/ExternalIds.h"
#include "files/FileOps.h"
#include "files/Paths.h"
#include "iac/Iac.h"
#include "maplist/Lst2.h"
#include "store/Globals.h"
#include "store/MessageLists.h"
#include "text/TextHandles.h"
#include "ui/Alerts.h"

typedef void (*ExternalFunction)(long funcId, char **argHandle, char **resultHandle);

static const ExternalFunction gExternalFunctions[kFunctionCount] = {
#define TPX1_EXTERNAL(id, Name, implementation, argLimit, args, summary) implementation,
#include "plugin/ExternalFunctions.def"
#undef TPX1_EXTERNAL
};

void Plugin_External(long funcId, char **argHandle, char **resultHandle)
{
    if (gDeferredInitDone == 0)
        gDeferredInitDone = 1;

    OSErr err = EnsureHandleIsNullTerminated(argHandle);
    if (err != 0) {
        ReportErrorToUser(kNoFunctionNumber, err);
        return;
    }
    if (funcId < 0 || funcId >= kFunctionCount)
        return;
    gExternalFunctions[funcId](funcId, argHandle, resultHandle);
}
