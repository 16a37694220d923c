/*
 * fuzz_vesk_event.cpp: fuzz target for the receiving side of messaging. Incoming
 * 'VESK' events built from the input (any keywords, types and sizes, repeated keywords,
 * missing MSSG or SIGN, now and then another class or id) reach the plug-in either
 * through the in-memory bus and the event dispatch after TPX1InitIAC, or straight into
 * HandleVESKEvent, with partners running or not, handled ids, sharing-menu actions and
 * alert texts set, and host allocations failing where the input says. After each event
 * the archive must hold only kept messages of handled ids, in slots from 0 on; the
 * solution then reads every kept message; after Shutdown no host memory may be left.
 *
 * Input: a set-up byte (bit 0: TOPOLUX runs, bit 1: NIMBO runs, bit 2: sharing-menu
 * actions, bit 3: alert texts, bit 4: events go straight to the handler, bit 5: the
 * handled ids come from the input as a text), then per event a failure byte (as in
 * fuzz_entry) and the event (see HarnessBuildIncomingEvent).
 */
#include <cstdint>
#include <string>

#include "fuzz/FuzzTargets.h"
#include "fuzz/Harness.h"
#include "iac/Iac.h"
#include "platform/TestBus.h"
#include "store/DataNode.h"
#include "store/MessageLists.h"
#include "text/TextUtils.h"

namespace {

const char kAllHandled[] = "HOLA|OKHI|BYE |MHIT|YROD|OBID|INFO|NBH!|USR!|VEW!|VER!|OVL!|IMP!|CPT!|CTL!|CHM!|RIDS";

int OccupiedSlots()
{
    int count = 0;
    for (DataNode *slot : gArchivedIncomingMessageParameterDataNodeList)
        count += slot != nullptr;
    return count;
}

/* Every kept message must carry a handled, non-zero id. A message stored while the host
 * refused memory may have lost any of its parameters (a value that cannot be copied is
 * skipped like a missing one), its id too: those slots are left out. */
void CheckKeptMessagesAreHandled(const bool damaged[kArchiveSlotCount])
{
    for (int slot = 0; slot < kArchiveSlotCount; slot++) {
        DataNode *message = gArchivedIncomingMessageParameterDataNodeList[slot];
        if (!message || damaged[slot])
            continue;
        char id[256];
        GetDataFromListAsStr("MSSG", id, sizeof id, message);
        OSType code = StringToOSType(id);
        if (code == 0 || !IsHandledMessage(code))
            HarnessFail("a message that is not handled stayed in the archive",
                        "slot " + std::to_string(slot) + " MSSG \"" + id + "\"");
    }
}

}  // namespace

int FuzzVeskEventOneInput(const uint8_t *data, size_t size)
{
    HarnessResetProcess(1);
    FuzzInput in(data, size);
    HostPlugin *plugin = HarnessPlugin();
    HostInit(plugin, 60);

    uint8_t setup = in.Byte();
    if (setup & 1)
        PlatformMemoryBusAddApp(FOUR_CHAR('T', 'P', 'X', '1'), "TOPOLUX", "/opt/TOPOLUX");
    if (setup & 2)
        PlatformMemoryBusAddApp(FOUR_CHAR('N', 'M', 'B', '5'), "NIMBO", "/opt/NIMBO");
    HostCallExternal(plugin, kTPX1SetHandledMessages, (setup & 0x20) ? in.Text() : std::string(kAllHandled));
    if (setup & 4) {
        HostCallExternal(plugin, kTPX1SetTopoluxSharingMenuActions,
                         "GETINFO|GOTOME|GETINFOFILE|GETRIDSINFO|LINK|UNLINK|GETINFO|LINK|x|UNLINK");
        HostCallExternal(plugin, kTPX1SetNimboSharingMenuActions, "GOTOME|GETRIDSINFO|GETINFO|GOTOME|GETRIDSINFO");
        HostCallExternal(plugin, kTPX1SetTopoluxSharingMenu, "Solution|Info;Go;File;Rids;Link;Unlink");
    }
    if (setup & 8) {
        for (long id : {47L, 48L, 49L, 50L, 57L})
            HostCallExternal(plugin, static_cast<int32_t>(id), "Select an object first.");
    }
    bool straight = (setup & 0x10) != 0;
    if (!straight)
        HostCallExternal(plugin, kTPX1InitIAC, "");
    HarnessTakeDialogs();

    bool damaged[kArchiveSlotCount] = {false};
    for (int events = 0; !in.Empty() && events < 32; events++) {
        bool occupied[kArchiveSlotCount];
        for (int slot = 0; slot < kArchiveSlotCount; slot++)
            occupied[slot] = gArchivedIncomingMessageParameterDataNodeList[slot] != nullptr;
        uint8_t failure = in.Byte();
        AppleEvent event;
        HarnessUseStandingBlock();
        HarnessBuildIncomingEvent(in, &event);
        long nth = failure & 0x3F;
        HostMemorySetFailure(nth, nth == 0 ? kHostFailOff : (failure & 0x40) ? kHostFailFromThenOn : kHostFailOnce);
        if (straight) {
            AppleEvent reply;
            AEInitializeDesc(&reply);
            HarnessUseStandingBlock();
            HandleVESKEvent(&event, &reply, 0);
            AEDisposeDesc(&reply);
        } else {
            PlatformMemoryBusDeliver(&event, (failure & 0x80) ? FOUR_CHAR('N', 'M', 'B', '5') : FOUR_CHAR('T', 'P', 'X', '1'));
        }
        HarnessDrainEvents();
        bool failed = HostMemoryFailuresDelivered() > 0;
        HostMemorySetFailure(0, kHostFailOff);
        AEDisposeDesc(&event);
        for (int slot = 0; slot < kArchiveSlotCount; slot++)
            if (failed && !occupied[slot] && gArchivedIncomingMessageParameterDataNodeList[slot])
                damaged[slot] = true;
        HarnessTakeDialogs();
        std::string problem = HarnessStoreProblems(true);
        if (!problem.empty())
            HarnessFail("the stores do not hold together", problem);
        CheckKeptMessagesAreHandled(damaged);
    }

    /* The solution reads every kept message, oldest first. */
    int kept = OccupiedSlots();
    for (int i = 0; i <= kept; i++) {
        HostCallExternal(plugin, kTPX1GetNextMessage, "");
        HostCallExternal(plugin, kTPX1GetParameter, "LST2");
        HostCallExternal(plugin, kTPX1GetParameterLST2, "TOPOLUXID TAB LAYERNAME TAB MAPNAME RETURN");
        HostCallExternal(plugin, kTPX1GetParameterLST2Line, "0");
        HostCallExternal(plugin, kTPX1GetParameterLatLong, "");
        HostCallExternal(plugin, kTPX1ClearIncomingMessage, "");
    }
    if (OccupiedSlots() != 0)
        HarnessFail("the archive is not empty after reading every message", std::to_string(OccupiedSlots()));

    HarnessShutdownAndCheck(plugin);
    return 0;
}
