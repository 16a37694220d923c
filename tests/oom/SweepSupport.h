/*
 * SweepSupport.h: what the out-of-memory and fault sweeps share: the table of
 * representative calls (one or more per external function, plus idle and an incoming
 * message), the state each call needs set up before it runs, one run of a call against
 * a fresh plug-in through the entry function, and the checks after it (the stores hold
 * together, every global reads back, the archive keeps its order, whether the globals
 * changed, the dialogs say what they may, no host memory and no open file is left after
 * Shutdown).
 */
#ifndef TPX1_TESTS_SWEEPSUPPORT_H
#define TPX1_TESTS_SWEEPSUPPORT_H

#include <string>
#include <vector>

#include "platform/Faults.h"

/* What a call needs before it runs. */
enum SweepSetup : unsigned {
    kSetupNone = 0,
    kSetupGlobals = 1 << 0,    /* user globals, one with an enabled attached script */
    kSetupArchive = 1 << 1,    /* two received messages waiting in the archive */
    kSetupIncoming = 1 << 2,   /* the first of them made the current incoming message */
    kSetupOutgoing = 1 << 3,   /* an outgoing message with MSSG, an LST2 with repeats, TEXT */
    kSetupPartners = 1 << 4,   /* TOPOLUX and NIMBO running and known, handled ids set */
    kSetupMessaging = 1 << 5,  /* TPX1InitIAC called: the handler is installed */
    kSetupMenus = 1 << 6,      /* sharing menus, actions, map info, first view, alert texts */
    kSetupTrigger = 1 << 7,    /* a global's script has been triggered (name recorded) */
    kSetupLstaOnly = 1 << 8,   /* the first received message carries LSTA but no LST2 */
    kSetupLaunchable = 1 << 9, /* launching NIMBO from its default place makes it run */
    kSetupNimbo = 1 << 10      /* NIMBO alone running and known, its sharing menu set */
};

/* Special ids for what is not an external function. */
enum {
    kSweepIdle = -100,
    kSweepReceive = -101,
    kSweepShutdown = -102,   /* Shutdown, then a message arriving after it */
    kSweepLoad = -103        /* the host loading the built plug-in, one call, unloading it */
};

struct SweepCase {
    int id;                        /* an ExternalId, or one of the special ids */
    std::string argument;          /* '~' stands for the private folder's classic path */
    unsigned setup;
    std::vector<std::string> expectedTexts;   /* dialog texts the call may show besides the
                                                 memory sentence (substrings) */
    /* A platform call that fails in this case anyway (at call alsoFailingCall, with
     * connectionInvalid), to reach what only such a failure reaches. */
    PlatformFaultPoint alsoFailing = kFaultPointCount;
    int32_t alsoFailingCall = 0;
};

/* Every representative call. */
const std::vector<SweepCase> &SweepCases();
std::string SweepCaseName(const SweepCase &c);

struct SweepRun {
    std::string result;                 /* the result text */
    std::vector<std::string> dialogs;   /* texts of the dialogs shown during the call */
    std::string storeProblem;           /* empty when the stores hold together */
    bool globalsChanged = false;        /* the globals differ from before the call */
    long leakedBlocks = 0;              /* host handles and pointers left after Shutdown */
    std::string leakReport;
    int openFiles = 0;                  /* files left open after the call */
    long hostFailures = 0;              /* host allocation failures delivered during the call */
    long allocations = 0;               /* host allocations the call asked for */
};

/* Runs c against a fresh plug-in. Before the call, arm() sets the failure to inject
 * (after the set-up, so that only the call meets it); after the call, disarm() reads
 * what was delivered and turns it off, before the checks. */
SweepRun RunSweepCase(const SweepCase &c, void (*arm)(void *), void (*disarm)(void *), void *context);

extern const char kMemorySentence[];

/* True when every dialog text contains the memory sentence or one of the allowed texts. */
bool DialogsAreAllowed(const SweepRun &run, const SweepCase &c, const std::vector<std::string> &alsoAllowed,
                       std::string *offending);

#endif
