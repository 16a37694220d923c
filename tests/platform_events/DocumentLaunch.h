/*
 * DocumentLaunch.h: the launch the plug-in makes of an application with a document, as
 * the event tests build it: an open-document event for the application's signature,
 * coerced to launch parameters, in an extended launch block.
 */
#ifndef TPX1_DOCUMENTLAUNCH_H
#define TPX1_DOCUMENTLAUNCH_H

#include <cstring>

#include "platform/AppleEvents.h"
#include "platform/Processes.h"

struct DocumentLaunch {
    AEAddressDesc target;
    AppleEvent odoc;         /* also sendable to the running application */
    AEDesc parameters;
    LaunchParamBlockRec block;
};

inline OSErr PrepareDocumentLaunch(OSType signature, FSSpec *app, const FSSpec *document, uint16_t controlFlags,
                                   DocumentLaunch *launch)
{
    AECreateDesc(typeApplSignature, &signature, 4, &launch->target);
    AECreateAppleEvent(kCoreEventClass, kAEOpenDocuments, &launch->target, kAutoGenerateReturnID, 0, &launch->odoc);
    AEPutParamPtr(&launch->odoc, keyDirectObject, typeFSS, document, sizeof *document);
    OSErr err = AECoerceDesc(&launch->odoc, typeAppParameters, &launch->parameters);
    memset(&launch->block, 0, sizeof launch->block);
    launch->block.launchBlockID = extendedBlock;
    launch->block.launchEPBLength = extendedBlockLen;
    launch->block.launchControlFlags = controlFlags;
    launch->block.launchAppSpec = app;
    launch->block.launchAppParameters = err ? nullptr : (AppParameters *)launch->parameters.dataHandle;
    return err;
}

inline void DisposeDocumentLaunch(DocumentLaunch *launch)
{
    AEDisposeDesc(&launch->parameters);
    AEDisposeDesc(&launch->odoc);
    AEDisposeDesc(&launch->target);
}

#endif
