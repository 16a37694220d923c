/*
 * BusHarness.cpp: the hand-pumped host shared by the messaging fault tests and
 * benchmarks (see BusHarness.h).
 */
#include "BusHarness.h"

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <poll.h>

#include "platform/AppleEvents.h"
#include "platform/Processes.h"
#include "platform/Toolbox.h"

namespace {

std::deque<std::string> gScripts;

OSErr CatchDoScript(const AppleEvent *event, AppleEvent *reply, intptr_t refcon)
{
    DescType type = 0;
    int32_t size = 0;
    OSErr err = AESizeOfParam(event, keyDirectObject, &type, &size);
    if (err) return err;
    std::string name((size_t)(size > 0 ? size : 0), '\0');
    int32_t actual = 0;
    err = AEGetParamPtr(event, keyDirectObject, typeChar, &type, name.data(), size, &actual);
    if (err) return err;
    name.resize((size_t)(actual < size ? actual : size));
    gScripts.push_back(name);
    return noErr;
}

} // namespace

bool HarnessHostStart(HarnessHost *host, const std::string &pluginPath, const char *signature, std::string *error)
{
    PlatformSetProcessSignature(FOUR_CHAR(signature[0], signature[1], signature[2], signature[3]));
    if (HostLoadPlugin(pluginPath.c_str(), &host->plugin, error) != 0) return false;
    host->loaded = true;
    HostInit(&host->plugin, 60);
    AEInstallEventHandler(kAEMiscStandards, kAEDoScript, NewAEEventHandlerUPP(CatchDoScript), 0, false);
    return true;
}

std::string HarnessCall(HarnessHost *host, const char *function, const std::string &arg)
{
    int id = HostFunctionId(&host->plugin, function);
    if (id < 0) {
        fprintf(stderr, "harness: the plug-in has no function %s\n", function);
        abort();
    }
    return HostCallExternal(&host->plugin, id, arg);
}

int HarnessPump(int waitMs)
{
    struct pollfd ready = {AEGetEventFD(), POLLIN, 0};
    if (ready.fd >= 0 && waitMs != 0) poll(&ready, 1, waitMs);
    return AEProcessEvents();
}

int HarnessIdle(HarnessHost *host)
{
    HostIdle(&host->plugin, 0);
    return AEProcessEvents();
}

bool HarnessTakeScript(std::string *name)
{
    if (gScripts.empty()) return false;
    *name = gScripts.front();
    gScripts.pop_front();
    return true;
}

long HarnessLiveBlocks(void)
{
    return HostMemoryLiveHandles() + HostMemoryLivePointers();
}

bool HarnessRunUntil(HarnessHost *host, int waitMs, const std::function<bool()> &done,
                     const std::function<void(const std::string &)> &runScript)
{
    uint64_t deadline = HarnessNowUsec() + (uint64_t)waitMs * 1000u;
    for (;;) {
        if (done()) return true;
        if (HarnessNowUsec() > deadline) return false;
        HarnessPump(5);
        HarnessIdle(host);
        std::string script;
        while (HarnessTakeScript(&script))
            if (runScript) runScript(script);
    }
}

long HarnessHostStop(HarnessHost *host)
{
    if (!host->loaded) return 0;
    HostShutdown(&host->plugin);
    HostUnloadPlugin(&host->plugin);
    host->loaded = false;
    return HarnessLiveBlocks();
}
