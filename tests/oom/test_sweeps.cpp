/*
 * test_sweeps.cpp: the out-of-memory sweep and the fault sweeps. Every representative
 * call (each external function, idle, an incoming message, shutdown) runs against a fresh
 * plug-in with the Nth host allocation failing, for N = 1, 2, ... until a run meets no
 * failure, once and from then on; the file functions run with every file operation
 * failing in turn with the errors a Mac gives; the messaging calls with every event and
 * process call failing in turn. After each run: no crash, the stores hold together and
 * read back, the archive keeps its order, only the memory sentence or the call's own
 * error texts are shown, and Shutdown gives every handle and pointer back.
 * Each test prints its figures (runs, failure points, faults delivered).
 */
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "SweepSupport.h"
#include "host/HostCore.h"
#include "platform/Faults.h"

namespace {

const int kMaxReportedProblems = 40;

struct Tally {
    long runs = 0;
    long failurePoints = 0;      /* runs in which the injected failure was delivered */
    long errorsShown = 0;        /* ... and the user was told (dialog or "Error" result) */
    long silent = 0;             /* ... and the call answered as if nothing had happened,
                                    or with a documented degraded answer */
    long filesLeftOpen = 0;      /* documented: a failing copy leaves its files open */
    int problems = 0;

    void Problem(const std::string &where, const std::string &what)
    {
        if (++problems <= kMaxReportedProblems)
            ADD_FAILURE() << where << ": " << what;
    }
};

/* The checks every run must pass. A file whose FSClose was made to fail stays open
 * (the fault stands in for the close), so it does not count when closeFailed. */
void CheckRun(Tally *tally, const SweepCase &c, const SweepRun &run, const std::string &where,
              const std::vector<std::string> &alsoAllowed, bool closeFailed = false)
{
    tally->runs++;
    if (!run.storeProblem.empty())
        tally->Problem(where, "stores: " + run.storeProblem);
    if (run.leakedBlocks != 0)
        tally->Problem(where, std::to_string(run.leakedBlocks) + " host blocks left after Shutdown:\n" + run.leakReport);
    if (run.openFiles != 0 && !closeFailed) {
        if (c.id == kTPX1CopyFile)
            tally->filesLeftOpen++;
        else
            tally->Problem(where, std::to_string(run.openFiles) + " files left open");
    }
    std::string offending;
    if (!DialogsAreAllowed(run, c, alsoAllowed, &offending))
        tally->Problem(where, "unexpected dialog text: \"" + offending + "\"");
}

bool ToldTheUser(const SweepRun &run)
{
    return !run.dialogs.empty() || run.result.compare(0, 5, "Error") == 0 ||
           run.result.compare(0, 16, "Programmer Error") == 0;
}

void PrintTally(const char *title, const Tally &tally)
{
    printf("[ figures  ] %s: %ld runs, %ld failure points, %ld told the user, %ld silent or degraded, "
           "%ld copies left files open\n",
           title, tally.runs, tally.failurePoints, tally.errorsShown, tally.silent, tally.filesLeftOpen);
}

/* ---- Host allocation failures ---- */

struct HostFailure {
    long nth;
    HostFailMode mode;
};

void ArmHostFailure(void *context)
{
    auto *failure = static_cast<HostFailure *>(context);
    HostMemorySetFailure(failure->nth, failure->mode);
}

void NothingToRead(void *) {}

TEST(OutOfMemorySweep, EveryCallSurvivesEachHostAllocationFailing)
{
    Tally tally;
    for (const SweepCase &c : SweepCases()) {
        for (HostFailMode mode : {kHostFailOnce, kHostFailFromThenOn}) {
            for (long nth = 1; nth <= 5000; nth++) {
                HostFailure failure{nth, mode};
                SweepRun run = RunSweepCase(c, ArmHostFailure, NothingToRead, &failure);
                std::string where = SweepCaseName(c) + ", allocation " + std::to_string(nth) +
                                    (mode == kHostFailOnce ? " failing once" : " failing from then on");
                CheckRun(&tally, c, run, where, {});
                if (run.hostFailures == 0)
                    break;
                tally.failurePoints++;
                if (ToldTheUser(run))
                    tally.errorsShown++;
                else {
                    tally.silent++;
                    if (getenv("TPX1_SWEEP_VERBOSE"))
                        printf("silent: %s -> \"%s\"\n", where.c_str(), run.result.c_str());
                }
            }
        }
    }
    PrintTally("host allocation failures", tally);
    EXPECT_EQ(0, tally.problems);
}

/* ---- Platform faults ---- */

struct PlatformFailure {
    const char *op;
    int32_t nth;
    OSErr err;
    bool persistent;
    int32_t hits;
};

void ArmPlatformFailure(void *context)
{
    auto *failure = static_cast<PlatformFailure *>(context);
    PlatformFaultSet(failure->op, failure->nth, failure->err, failure->persistent);
}

void ReadPlatformFailure(void *context)
{
    auto *failure = static_cast<PlatformFailure *>(context);
    failure->hits = PlatformFaultHits(failure->op);
}

/* Runs each case with each operation failing at each of its calls (once), and at every
 * call (from the first on), with each error. */
void SweepFaults(Tally *tally, const std::vector<int> &ids, const std::vector<const char *> &ops,
                 const std::vector<OSErr> &errors, const std::vector<std::string> &alsoAllowed)
{
    for (const SweepCase &c : SweepCases()) {
        bool wanted = false;
        for (int id : ids)
            wanted = wanted || id == c.id;
        if (!wanted)
            continue;
        PlatformFailure none{"None", 1, 0, false, 0};
        std::string normal = RunSweepCase(c, ArmPlatformFailure, ReadPlatformFailure, &none).result;
        for (const char *op : ops) {
            for (OSErr err : errors) {
                for (int32_t nth = 0; nth <= 200; nth++) {
                    /* nth 0 stands for "every call from the first on". */
                    PlatformFailure failure{op, nth == 0 ? 1 : nth, err, nth == 0, 0};
                    SweepRun run = RunSweepCase(c, ArmPlatformFailure, ReadPlatformFailure, &failure);
                    std::string where = SweepCaseName(c) + ", " + op + " " +
                                        (nth == 0 ? std::string("always") : "call " + std::to_string(nth)) +
                                        " failing with " + std::to_string(err);
                    CheckRun(tally, c, run, where, alsoAllowed, strcmp(op, "FSClose") == 0 && failure.hits > 0);
                    if (failure.hits == 0)
                        break;
                    tally->failurePoints++;
                    if (ToldTheUser(run)) {
                        tally->errorsShown++;
                    } else {
                        tally->silent++;
                        if (getenv("TPX1_SWEEP_VERBOSE"))
                            printf("silent: %s -> \"%s\" (normally \"%s\")\n", where.c_str(), run.result.c_str(),
                                   normal.c_str());
                    }
                }
            }
        }
    }
}

TEST(FaultSweep, FileFunctionsSurviveEveryFileOperationFailing)
{
    Tally tally;
    SweepFaults(&tally,
                {kTPX1FileExists, kTPX1CopyFile, kTPX1DeleteFile, kTPX1GetRepformYearsFromIDs,
                 kTPX1ChangeRepformIDsInFile, kTPX1GetCharsFromFile, kTPX1GetListOfFilesInFolder,
                 kTPX1FileSystemRepresentationFromClassicPath},
                {"FSMakeFSSpec", "HGetFInfo", "HSetFInfo", "FSpGetFInfo", "HOpenDF", "FSpOpenDF", "GetEOF",
                 "SetEOF", "GetFPos", "SetFPos", "FSRead", "FSWrite", "FSClose", "HCreate", "FSpCreate", "HDelete",
                 "FSpDelete", "HSetFLock", "HRstFLock", "PBGetCatInfoSync", "FindFolder", "FSpGetPOSIXPath",
                 "PlatformClassicPathToPOSIX", "PlatformPOSIXPathToClassic"},
                {ioErr, fnfErr, permErr, dskFulErr}, {"Error"});
    PrintTally("file operation faults", tally);
    EXPECT_EQ(0, tally.problems);
}

TEST(FaultSweep, MessagingSurvivesEveryBusCallFailing)
{
    Tally tally;
    SweepFaults(&tally,
                {kTPX1InitIAC, kTPX1SendMessageTo, kTPX1IsAppRunning, kTPX1GoToApp, kTPX1ShowOnMap,
                 kSweepIdle, kSweepReceive, kSweepShutdown},
                {"AESend", "AEPutParamPtr", "AECreateAppleEvent", "AECreateDesc", "AEDisposeDesc", "AEGetParamPtr",
                 "AESizeOfParam", "AEGetAttributePtr", "AEInstallEventHandler", "AECoerceDesc", "AECountItems",
                 "LaunchApplication", "GetNextProcess", "GetProcessInformation", "GetCurrentProcess",
                 "SetFrontProcess", "SameProcess", "FindFolder"},
                {connectionInvalid, procNotFound, memFullErr, errAETimeout}, {"Error", "Unable to locate "});
    PrintTally("bus and process faults", tally);
    EXPECT_EQ(0, tally.problems);
}

}  // namespace
