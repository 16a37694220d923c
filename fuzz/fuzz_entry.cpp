/*
 * fuzz_entry.cpp: fuzz target for the entry function. An input is a run of host calls
 * against a fresh plug-in: Init (whose host allocations may fail), then external calls
 * (function id, argument bytes, which host allocation fails and how), idle calls, raw
 * selectors, incoming messages over the in-memory bus, partners appearing and leaving,
 * and the clock moving on; Shutdown last. The stores must hold together after every
 * call, and after Shutdown every handle and pointer the plug-in took from the host must
 * have been given back.
 *
 * Input: byte 0 = Init failure (bits 0-5: the allocation, bit 6: from then on, bit 7: a
 * host version out of range); then records, each opened by one byte whose value modulo
 * 10 picks: 0-4 external call (id byte, failure byte, text), 5 idle (level byte), 6 raw
 * selector (selector byte, parameter byte), 7 incoming message (failure byte, event),
 * 8 a partner starts or quits (byte), 9 the clock moves on (byte, in 1/6 seconds).
 * A text is one length byte (0xF0 and above: 12-bit length with the next byte) and the
 * bytes. Paths of file functions are kept inside the harness's private folder.
 */
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz/Harness.h"
#include "fuzz/FuzzTargets.h"
#include "platform/TestBus.h"
#include "platform/Toolbox.h"

namespace {

const uint8_t kFailOnceBit = 0x40;

/* Sets the host's allocation failure from a failure byte; false when none is set. */
bool ArmHostFailure(uint8_t failure)
{
    long nth = failure & 0x3F;
    if (nth == 0) {
        HostMemorySetFailure(0, kHostFailOff);
        return false;
    }
    HostMemorySetFailure(nth, (failure & kFailOnceBit) ? kHostFailFromThenOn : kHostFailOnce);
    return true;
}

/* Every id of the table, and ids outside it. */
long PickFunctionId(uint8_t pick)
{
    switch (pick % 72) {
    case kFunctionCount: return kFunctionCount;
    case kFunctionCount + 1: return -1;
    case kFunctionCount + 2: return -5;
    case kFunctionCount + 3: return 1000;
    default: return pick % kFunctionCount;
    }
}

OSType PartnerSignature(uint8_t pick)
{
    static const OSType kPartners[] = {FOUR_CHAR('T', 'P', 'X', '1'), FOUR_CHAR('N', 'M', 'B', '5'),
                                       FOUR_CHAR('R', 'E', 'P', 'F'), FOUR_CHAR('X', 'Y', 'Z', 'W')};
    return kPartners[pick % 4];
}

}  // namespace

int FuzzEntryOneInput(const uint8_t *data, size_t size)
{
    HarnessResetProcess(1);
    const TestFolder &root = HarnessFolder();
    root.Write("Apps/BaseDirectoryList.txt", root.Classic("Data1") + "\r" + root.Classic("Data2:") + "\r");
    root.Write("Data1/Ref1.txt", "CMTR2005 fdtR2007 PHTR2000\r");
    root.Write("Data2/Ref2.txt", "0123456789ABCDEF\tLayer\tMap\r");
    root.Write("Apps/Sheet.RPF", "xxCKTR2003yyyyyyyyyyyyyy");
    FuzzInput in(data, size);
    HostPlugin *plugin = HarnessPlugin();

    uint8_t initByte = in.Byte();
    bool initFailing = ArmHostFailure(initByte);
    int16_t version = (initByte & 0x80) ? ((initByte & 1) ? 49 : 256) : 60;
    HostInit(plugin, version);
    bool reservedExpected = version == 60 && (!initFailing || HostMemoryFailuresDelivered() == 0);
    HostMemorySetFailure(0, kHostFailOff);
    HarnessTakeDialogs();

    int records = 0;
    while (!in.Empty() && records++ < 64) {
        uint8_t kind = in.Byte() % 10;
        switch (kind) {
        case 5:
            HostIdle(plugin, static_cast<int8_t>(in.Byte() % 3));
            break;
        case 6: {
            uint8_t selector = in.Byte();
            uint8_t parameter = in.Byte();
            if (selector == 0)
                break;   /* a second Init forgets the lists without freeing them, by design */
            HostCallRaw(plugin, selector, 60, static_cast<int8_t>(parameter), parameter, nullptr, nullptr);
            if (selector == 4)
                reservedExpected = false;
            break;
        }
        case 7: {
            uint8_t failure = in.Byte();
            AppleEvent event;
            HarnessUseStandingBlock();
            HarnessBuildIncomingEvent(in, &event);
            PlatformMemoryBusDeliver(&event, PartnerSignature(failure >> 6));
            AEDisposeDesc(&event);
            ArmHostFailure(failure);
            HarnessDrainEvents();
            HostMemorySetFailure(0, kHostFailOff);
            break;
        }
        case 8: {
            uint8_t pick = in.Byte();
            OSType partner = PartnerSignature(pick);
            if (pick & 0x80)
                PlatformMemoryBusRemoveApp(partner);
            else
                PlatformMemoryBusAddApp(partner, HarnessCodeText(partner).c_str(), "/opt/partner");
            if (pick & 0x40)
                PlatformMemoryBusSetLaunchSignature(partner);
            break;
        }
        case 9:
            PlatformClockAdvance(in.Byte() * 10u);
            break;
        default: {
            long id = PickFunctionId(in.Byte());
            uint8_t failure = in.Byte();
            std::string argument = HarnessConfineArgument(id, in.Text());
            if ((id == kTPX1AskUserForFileNameToRead || id == kTPX1AskUserForFileNameToWrite) && (failure & 0x80))
                PlatformDialogQueueFileAnswer(HarnessFolder().Classic("Apps/Chosen.txt").c_str());
            ArmHostFailure(failure);
            HostCallExternal(plugin, static_cast<int32_t>(id), argument);
            HostMemorySetFailure(0, kHostFailOff);
            HarnessDrainEvents();
            break;
        }
        }
        HarnessTakeDialogs();
        std::string problem = HarnessStoreProblems(reservedExpected);
        if (!problem.empty())
            HarnessFail("the stores do not hold together", problem);
    }

    HarnessShutdownAndCheck(plugin);
    return 0;
}
