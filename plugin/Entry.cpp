/*
 * Entry.cpp: what the host's one call into the plug-in does. The block's address is
 * saved for the host memory callbacks, the plug-in's resource file is current for the
 * length of the call, and the selector picks Init, Idle, External or Shutdown; every
 * other selector does nothing. The previous resource file is always put back. Every
 * call starts afresh as to partners that failed to come up (one launch per call).
 */
#include "plugin/Plugin.h"
#include "iac/Iac.h"
#include "platform/Toolbox.h"
#include "text/TextHandles.h"

enum { kMinHostVersion = 50, kMaxHostVersion = 255, kPluginAnswer = 51, kRefusedHostAnswer = -1 };

void RunHostCall(FMX_ExternCallBlock *block)
{
    if (block == nullptr)
        return;
    int16_t previousResFile = CurResFile();
    UseResFile(block->resFileRef);
    gFMX_ExternCallPtr = block;
    ForgetFailedLaunches();

    switch (block->whichCall) {
    case kFMXT_Init:
        if (block->hostVersion >= kMinHostVersion && block->hostVersion <= kMaxHostVersion) {
            Plugin_Init(block->hostVersion);
            block->result.value = kPluginAnswer;
        } else {
            block->result.value = kRefusedHostAnswer;
        }
        break;
    case kFMXT_Idle:
        Plugin_Idle((char)block->parm1);
        break;
    case kFMXT_External:
        Plugin_External(block->parm2, block->parm3, block->result.handle);
        break;
    case kFMXT_Shutdown:
        Plugin_Shutdown();
        break;
    default:
        break;
    }

    UseResFile(previousResFile);
}
