/*
 * CoreTestHost.cpp: the host memory fixture of the core unit tests.
 */
#include "CoreTestHost.h"

#include <cstring>

#include "host/HostCore.h"
#include "plugin/CoreState.h"
#include "text/TextHandles.h"

void CoreHostTest::SetUp()
{
    ResetCoreState();
    HostMemoryInstall(&block);
    gFMX_ExternCallPtr = &block;
    HostMemorySetFailure(0, kHostFailOff);
}

void CoreHostTest::TearDown()
{
    HostMemorySetFailure(0, kHostFailOff);
}

char **CoreHostTest::MakeHandle(const std::string &bytes)
{
    char **h = NewFHandle((long)bytes.size());
    if (h && !bytes.empty()) {
        LockFHandle(h);
        memcpy(*h, bytes.data(), bytes.size());
        UnlockFHandle(h);
    }
    return h;
}
