/*
 * FMExternCallProc.cpp: the plug-in's one exported symbol. The host calls it for every
 * operation; it only forwards to the core, which keeps everything else hidden.
 */
#include "text/FMXExtern.h"
#include "plugin/Plugin.h"

extern "C" __attribute__((visibility("default"))) void FMExternCallProc(FMX_ExternCallBlock *block)
{
    RunHostCall(block);
}
