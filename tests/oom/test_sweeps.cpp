/*
 * test_sweeps.cpp: the out-of-memory sweep and the fault sweeps. Every representative
 * call (each external function, idle, an incoming message, shutdown) runs against a fresh
 * plug-in with the Nth host allocation failing, for N = 1, 2, ... until a run meets no
 * failure, once and from then on; and with every platform fault point it reaches (file,
 * event, process, resource and dialog calls) failing in turn with the errors a Mac gives
 * for it. After each run: no crash, the stores hold together and
 * read back, a call that failed with a memory report left the globals as they were, the
 * archive keeps its order, only the memory sentence or the call's own
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
    /* A run in which the injected failure was delivered (normal: the unfailed answer). */
    void Delivered(const SweepRun &run, const std::string &where, const std::string &normal);
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

bool ReportedNoMemory(const SweepRun &run)
{
    for (const std::string &text : run.dialogs)
        if (text.find(kMemorySentence) != std::string::npos)
            return true;
    return false;
}

void Tally::Delivered(const SweepRun &run, const std::string &where, const std::string &normal)
{
    failurePoints++;
    if (ToldTheUser(run)) {
        errorsShown++;
        return;
    }
    silent++;
    if (getenv("TPX1_SWEEP_VERBOSE"))
        printf("silent: %s -> \"%s\" (normally \"%s\")\n", where.c_str(), run.result.c_str(), normal.c_str());
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
                if (run.globalsChanged && ReportedNoMemory(run))
                    tally.Problem(where, "the call failed, yet the globals changed");
                tally.Delivered(run, where, "");
            }
        }
    }
    PrintTally("host allocation failures", tally);
    EXPECT_EQ(0, tally.problems);
}

/* ---- Platform faults ---- */

/* Points that no representative call reaches, and why. */
struct Unreached {
    PlatformFaultPoint point;
    const char *why;
};
const Unreached kUnreached[] = {
    {kFaultFSpOpenDF, "only the file-writing helpers open by FSSpec, and no external function writes a file"},
    {kFaultFSpDelete, "only the file-writing helpers delete by FSSpec, and no external function writes a file"},
    {kFaultAECoerceDesc, "only a launch with a document coerces an event, and no external function hands one"},
};

/* The errors each manager's calls fail with, and the texts their failures may show. */
struct ManagerSweep {
    PlatformFaultManager manager;
    const char *title;
    std::vector<OSErr> errors;
    std::vector<std::string> alsoAllowed;
};

void PrintTo(const ManagerSweep &sweep, std::ostream *out)
{
    *out << sweep.title;
}

struct PlatformFailure {
    PlatformFaultPoint point;
    int32_t nth;
    OSErr err;
    bool persistent;
    int32_t hits;
};

void ArmPlatformFailure(void *context)
{
    auto *failure = static_cast<PlatformFailure *>(context);
    PlatformFaultSet(failure->point, failure->nth, failure->err, failure->persistent);
}

void ReadPlatformFailure(void *context)
{
    auto *failure = static_cast<PlatformFailure *>(context);
    failure->hits = PlatformFaultHits(failure->point);
}

void CountFromNow(void *) { PlatformFaultClearAll(); }

void ReadCalls(void *context)
{
    auto *calls = static_cast<std::vector<int32_t> *>(context);
    for (int point = 0; point < kFaultPointCount; point++)
        (*calls)[point] = PlatformFaultCalls(static_cast<PlatformFaultPoint>(point));
}

class FaultSweep : public testing::TestWithParam<ManagerSweep> {};

/* Every case runs once as it is, to see which points it reaches; then with each point of
 * the manager that it reached failing at each of its calls (once) and at every call (from
 * the first on), with each error. A point of the manager that no case reached must be
 * listed as unreached, and a listed one must stay unreached. */
TEST_P(FaultSweep, EveryCallSurvivesEachPointFailing)
{
    const ManagerSweep &sweep = GetParam();
    Tally tally;
    std::vector<std::string> reachedBy(kFaultPointCount);
    for (const SweepCase &c : SweepCases()) {
        std::vector<int32_t> calls(kFaultPointCount);
        std::string normal = RunSweepCase(c, CountFromNow, ReadCalls, &calls).result;
        for (int point = 0; point < kFaultPointCount; point++) {
            auto faultPoint = static_cast<PlatformFaultPoint>(point);
            if (calls[point] == 0 || PlatformFaultPointManager(faultPoint) != sweep.manager || point == c.alsoFailing)
                continue;
            if (reachedBy[point].empty())
                reachedBy[point] = SweepCaseName(c);
            const char *name = PlatformFaultPointName(point);
            for (OSErr err : sweep.errors) {
                for (int32_t nth = 0; nth <= 200; nth++) {
                    /* nth 0 stands for "every call from the first on". */
                    PlatformFailure failure{faultPoint, nth == 0 ? 1 : nth, err, nth == 0, 0};
                    SweepRun run = RunSweepCase(c, ArmPlatformFailure, ReadPlatformFailure, &failure);
                    std::string where = SweepCaseName(c) + ", " + name + " " +
                                        (nth == 0 ? std::string("always") : "call " + std::to_string(nth)) +
                                        " failing with " + std::to_string(err);
                    CheckRun(&tally, c, run, where, sweep.alsoAllowed, point == kFaultFSClose && failure.hits > 0);
                    if (failure.hits == 0)
                        break;
                    tally.Delivered(run, where, normal);
                }
            }
        }
    }
    for (int point = 0; point < kFaultPointCount; point++) {
        auto faultPoint = static_cast<PlatformFaultPoint>(point);
        if (PlatformFaultPointManager(faultPoint) != sweep.manager)
            continue;
        const Unreached *listed = nullptr;
        for (const Unreached &u : kUnreached)
            listed = u.point == faultPoint ? &u : listed;
        if (reachedBy[point].empty() && !listed)
            ADD_FAILURE() << PlatformFaultPointName(point) << " is reached by no call: sweep it or list it as unreached";
        if (!reachedBy[point].empty() && listed)
            ADD_FAILURE() << PlatformFaultPointName(point) << " is listed as unreached, yet " << reachedBy[point]
                          << " reaches it";
    }
    PrintTally((std::string(sweep.title) + " faults").c_str(), tally);
    EXPECT_EQ(0, tally.problems);
}

const std::vector<OSErr> kBusErrors = {connectionInvalid, procNotFound, memFullErr, errAETimeout};

INSTANTIATE_TEST_SUITE_P(
    Managers, FaultSweep,
    testing::Values(ManagerSweep{kFaultManagerFile, "file", {ioErr, fnfErr, permErr, dskFulErr}, {"Error"}},
                    ManagerSweep{kFaultManagerEvent, "event", kBusErrors, {"Error", "Unable to locate "}},
                    ManagerSweep{kFaultManagerProcess, "process", kBusErrors, {"Error", "Unable to locate "}},
                    ManagerSweep{kFaultManagerResource, "resource", {resNotFound, memFullErr}, {}},
                    ManagerSweep{kFaultManagerDialog, "dialog", {userCanceledErr, memFullErr}, {}}),
    [](const testing::TestParamInfo<ManagerSweep> &info) { return std::string(info.param.title); });

}  // namespace
