/*
 * test_core_state.cpp: the one reset of the plug-in's state. Every piece of it is given a
 * value (through the external functions where one reaches it), ResetCoreState puts all
 * of it back as at load, and an Init after the reset leaves each piece exactly as the
 * first Init did.
 */
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "files/FilesState.h"
#include "files/Paths.h"
#include "fuzz/Harness.h"
#include "iac/IacState.h"
#include "maplist/Lst2State.h"
#include "platform/TestBus.h"
#include "platform/Toolbox.h"
#include "plugin/CoreState.h"
#include "store/MessageLists.h"
#include "text/TextHandles.h"
#include "text/TextState.h"
#include "text/TextUtils.h"

namespace {

struct Piece {
    const char *name;
    const void *address;
    size_t size;
    int lists;   /* how many list heads the piece is (compared by content), 0 for plain bytes */
};
#define PIECE(g) Piece{#g, &g, sizeof g, 0}
#define LISTS(g) Piece{#g, &g, sizeof g, (int)(sizeof g / sizeof(DataNode *))}

const std::vector<Piece> &Pieces()
{
    static const std::vector<Piece> pieces = {
        PIECE(gFMX_ExternCallPtr), PIECE(gLastSentDoScriptTicks), PIECE(gDeferredScript),
        PIECE(gDeferredInitDone), PIECE(gIdleReentryGuard),
        PIECE(gWordCodeTable), PIECE(gLineCursor), PIECE(gLineCursorLine), PIECE(gOutputCodes),
        PIECE(gReturnString), PIECE(gIbmReturnString), PIECE(gMacReturnString),
        LISTS(gUserGlobalsDataNodeList), LISTS(gOutgoingUserMessageParameterDataNodeList),
        LISTS(gOutgoingStdBevaviorMessageParameterDataNodeList), LISTS(gIncomingMessageParameterDataNodeList),
        LISTS(gArchivedIncomingMessageParameterDataNodeList), PIECE(gLastSetParameterCallTicks),
        PIECE(gLastGetParameterCallTicks), PIECE(gLastGetNextMessageCallTicks),
        PIECE(gNameOfGlobalThatTriggeredScript), PIECE(gHaveSendDoScriptAndWaitingForGetNextMessage),
        PIECE(gHaveGottenAnIncomingMessageButNotClearedIt),
        PIECE(gVeskHandlerUPP), PIECE(gFriends), PIECE(gHandledMessages), PIECE(gTopoluxSharingMenu),
        PIECE(gNimboSharingMenu), PIECE(gTopoluxNoneSelectedGetInfoAlert), PIECE(gTopoluxNoneSelectedUnlinkAlert),
        PIECE(gTopoluxNoneSelectedLinkAlert), PIECE(gTopoluxMoreThanOneSelectedLinkAlert),
        PIECE(gNimboNoneSelectedGetInfoAlert), PIECE(gTopoluxMaps), PIECE(gTopoluxFirstView), PIECE(gIacClosed),
        PIECE(gFailedLaunches), PIECE(gNextFailedLaunch),
        PIECE(gLst2GroupText),
        PIECE(gBaseDirectory), PIECE(gAppFullPathName), PIECE(gAppFullPathKnown)};
    return pieces;
}

size_t OffsetOf(const Piece &piece)
{
    return (size_t)((const char *)piece.address - (const char *)&gCoreState);
}

std::string ListText(const DataNode *node)
{
    std::string text;
    for (; node; node = node->next)
        text += std::string(node->name) + "=" + (node->data ? *node->data : "") + (node->isSystem ? " S " : " U ") +
                node->scriptName + (node->scriptEnabled ? " on;" : " off;");
    return text;
}

/* Each piece as text: list heads by their lists' contents, the rest byte for byte. */
std::vector<std::string> Snapshot()
{
    HarnessUseStandingBlock();
    std::vector<std::string> snapshot;
    for (const Piece &piece : Pieces()) {
        std::string text;
        for (int i = 0; i < piece.lists; i++)
            text += ListText(((DataNode *const *)piece.address)[i]) + "|";
        if (!piece.lists)
            text.assign((const char *)piece.address, piece.size);
        snapshot.push_back(text);
    }
    return snapshot;
}

bool HasValue(const Piece &piece)
{
    for (size_t i = 0; i < piece.size; i++)
        if (((const unsigned char *)piece.address)[i] != 0)
            return true;
    return false;
}

std::string Call(long funcId, const std::string &argument)
{
    return HostCallExternal(HarnessPlugin(), (int32_t)funcId, argument);
}

void DeliverInfo(const std::string &text, const std::string &lst2)
{
    HarnessDeliverMessage({{"MSSG", "INFO"}, {"SIGN", "TPX1"}, {"TEXT", text}, {"LST2", lst2}},
                          FOUR_CHAR('T', 'P', 'X', '1'));
    HarnessDrainEvents();
}

/* Gives every piece of the state a value. */
void FillEveryPiece()
{
    HarnessFolder().Write("Apps/BaseDirectoryList.txt", HarnessFolder().Classic("Data1") + "\r");
    HarnessFolder().Write("Data1/Ref.txt", "reference");
    PlatformMemoryBusAddApp(FOUR_CHAR('T', 'P', 'X', '1'), "TOPOLUX", "/opt/TOPOLUX/TOPOLUX");
    Call(kTPX1SetKnownFriend, "TPX1|Linux:opt:TOPOLUX:TOPOLUX");
    Call(kTPX1SetHandledMessages, "INFO");
    Call(kTPX1InitIAC, "");
    Call(kTPX1SetTopoluxSharingMenu, "Solution|Info;Link");
    Call(kTPX1SetTopoluxSharingMenuActions, "GETINFO|LINK");
    Call(kTPX1SetNimboSharingMenu, "Nimbo|Show");
    Call(kTPX1SetNimboSharingMenuActions, "GOTOME");
    for (long id : {kTPX1SetTopoluxNoneSelectedGetInfoAlert, kTPX1SetTopoluxNoneSelectedUnlinkAlert,
                    kTPX1SetTopoluxNoneSelectedLinkAlert, kTPX1SetTopoluxMoreThanOneSelectedLinkAlert,
                    kTPX1SetNimboNoneSelectedGetInfoAlert})
        Call(id, "Select one object.");
    Call(kTPX1SetTopoluxMapInfo, "Maps|DRAW|");
    Call(kTPX1SetTopoluxFirstView, "-90|40|-80|30");
    EXPECT_EQ(Call(kTPX1ResolveRelativePath, ":Sites|:Ref.txt"), HarnessFolder().Classic("Data1:Sites"));
    Call(kTPX1SetGlobal, "Count|1");
    Call(kTPX1AttachScriptToGlobal, "Count|Recount");
    Call(kTPX1EnableGlobalScript, "Count");
    Call(kTPX1SetGlobal, "Count|2");

    DeliverInfo("first", "0123456789ABCDEF\tRoads\tCity\r");
    DeliverInfo("second", "FEDCBA9876543210\tRivers\tCity\r");
    HostIdle(HarnessPlugin(), 0);   /* runs "Recount", announces the message */
    Call(kTPX1GetNextMessage, "");
    Call(kTPX1GetParameter, "TEXT");
    Call(kTPX1GetParameterLST2, "TOPOLUXID TAB LAYERNAME RETURN");
    std::string repeated;
    for (int i = 0; i < 40; i++)
        repeated += "0123456789ABCDEF\tLayer" + std::to_string(i % 3) + "\tCity\r";
    Call(kTPX1SetParameter, "LST2|" + repeated);
    Call(kTPX1ProcessLST2ParameterForTopolux, "");
    PlatformClockAdvance(1000);
    HostIdle(HarnessPlugin(), 0);   /* the second message, announced after the grace period */
    Call(kTPX1CallScript, "Later");
    /* NIMBO started but never comes up: remembered until the next call begins. */
    Call(kTPX1SetKnownFriend, "NMB5|" + HarnessFolder().Classic("Data1/Ref.txt"));
    Call(kTPX1GoToApp, "NMB5");

    /* What no external function leaves behind: list 2 is emptied after every send, the
     * guard is up only while Idle runs, the line-end texts and the looping line fetcher
     * have no caller (the column reader reads its list in one pass of its own), and the
     * handler is closed by Shutdown, which also frees the lists. */
    HarnessUseStandingBlock();
    SetOutgoingMessageParameterFromStr("XTRA", "kept", 2);
    gIdleReentryGuard = 1;
    ReturnString();
    IbmReturnString();
    MacReturnString();
    static const char kTwoLines[] = "a\rb";
    char line[8];
    NthLineInTextOptimizedForUseInLoop(kTwoLines, 0, line, sizeof line);
    CloseIac();
}

TEST(CoreState, ResetPutsEveryPieceBackAsAtTheFirstInit)
{
    /* Every byte of the owner belongs to a piece named above: a run of 8 bytes or more
     * that none covers is more than alignment and means a piece is missing here. */
    std::vector<bool> covered(sizeof gCoreState, false);
    for (const Piece &piece : Pieces())
        for (size_t i = 0; i < piece.size; i++)
            covered[OffsetOf(piece) + i] = true;
    for (size_t i = 0, run = 0; i < covered.size(); i++) {
        run = covered[i] ? 0 : run + 1;
        ASSERT_LT(run, 8u) << "bytes " << i + 1 - run << ".. of gCoreState belong to no piece of this test";
    }

    HarnessResetProcess(1);
    ASSERT_EQ(HostInit(HarnessPlugin(), 80), 51);
    std::vector<std::string> first = Snapshot();

    FillEveryPiece();
    for (const Piece &piece : Pieces())
        EXPECT_TRUE(HasValue(piece)) << piece.name << " was given no value";

    StoreState lists = gCoreState.store;   /* their host memory goes back after the check */
    ResetCoreState();
    for (const Piece &piece : Pieces())
        EXPECT_FALSE(HasValue(piece)) << piece.name << " is not as at load after the reset";
    HarnessUseStandingBlock();
    DataNode **heads[] = {&lists.userGlobalsDataNodeList, &lists.outgoingUserMessageParameterDataNodeList,
                          &lists.outgoingStdBevaviorMessageParameterDataNodeList,
                          &lists.incomingMessageParameterDataNodeList};
    for (DataNode **head : heads)
        DisposeDataList(head);
    for (DataNode *&slot : lists.archivedIncomingMessageParameterDataNodeList)
        DisposeDataList(&slot);

    HarnessResetProcess(1);
    ASSERT_EQ(HostInit(HarnessPlugin(), 80), 51);
    std::vector<std::string> again = Snapshot();
    for (size_t i = 0; i < Pieces().size(); i++)
        EXPECT_EQ(again[i], first[i]) << Pieces()[i].name << " reads otherwise than after the first Init";
    HarnessShutdownAndCheck(HarnessPlugin());
}

}  // namespace
