/*
 * Harness.h: the plug-in under test, shared by the fuzz targets, the out-of-memory and
 * fault sweeps and the replay of saved crash inputs. It owns a private temporary folder
 * that stands for the host application's folder, a host (fmhost's host core) that calls
 * the linked-in entry, the switch to the platform's test backends (recorded dialogs,
 * in-memory bus, manual clock), the reset of every process-wide table between runs, the
 * store and leak checks, path confinement for fuzzed file arguments, and a reader of
 * fuzz input bytes.
 */
#ifndef TPX1_FUZZ_HARNESS_H
#define TPX1_FUZZ_HARNESS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/HostCore.h"
#include "platform/AppleEvents.h"
#include "tests/common/TestFolder.h"

#define kHarnessHostSignature FOUR_CHAR('F', 'M', 'P', '7')

/* ---- Reading fuzz input: every read past the end gives zeros / empty text. ---- */
class FuzzInput {
public:
    FuzzInput(const uint8_t *data, size_t size) : data_(data), size_(size) {}
    bool Empty() const { return pos_ >= size_; }
    uint8_t Byte();
    uint32_t Quad();
    std::string Bytes(size_t count);
    /* A length-prefixed text: one byte of length; a byte from 0xF0 on takes the next
     * byte too, for lengths up to 4095. */
    std::string Text();
    std::string Rest();

private:
    const uint8_t *data_;
    size_t size_;
    size_t pos_ = 0;
};

/* ---- The private folder: Apps/FakeHost is the host application, Applications the
 * applications folder (holding "TOPOLUX Folder/TOPOLUX" and "NIMBO Folder/NIMBO"), Data1
 * and Data2 two data folders. Made once per process and removed at exit. ---- */
const TestFolder &HarnessFolder();

/* ---- Process state ---- */
/* Puts every process-wide table back as at load (the platform's PlatformResetAll and the
 * plug-in's ResetCoreState), with the test backends: host memory without failures,
 * recorded dialogs, an empty in-memory bus, the manual clock (moving by clockStep at
 * every TickCount), and the environment pointing at the private folder. */
void HarnessResetProcess(uint32_t clockStep);
/* The host's handle on the linked-in plug-in (entry = RunHostCall, no resource file). */
HostPlugin *HarnessPlugin();
/* The call block that stays valid between host calls, as a host keeps its own block:
 * code that runs outside a host call (the event handler) reaches host memory through it. */
void HarnessUseStandingBlock();
/* Hands every queued event to its handler; returns how many were dispatched. */
int HarnessDrainEvents();
int HarnessOpenFileCount();
void HarnessCloseOpenFiles();
/* Texts of the dialogs recorded since the last call; clears the record. */
std::vector<std::string> HarnessTakeDialogs();

/* ---- Checks ---- */
extern const char *const kReservedGlobalNames[10];
/* Empty when every store holds together: names terminated and unique per list, every
 * value null or a NUL-terminated handle, archive slots taken from slot 0 on without gaps,
 * and (when asked) the ten reserved globals at the head of the globals list in order.
 * Otherwise a description of the first problem. */
std::string HarnessStoreProblems(bool reservedGlobalsExpected);
long HarnessLiveHostBlocks();
std::string HarnessLeakReport();
/* The end of every input: Shutdown, the events and dialogs it left handled, and no host
 * memory may remain (HarnessFail otherwise). */
void HarnessShutdownAndCheck(HostPlugin *plugin);
/* Prints what went wrong and aborts: the fuzzer saves the input. */
[[noreturn]] void HarnessFail(const char *what, const std::string &detail);

/* ---- Building inputs ---- */
/* Keeps a fuzzed argument of a file function inside the private folder: every path field
 * of the function's argument becomes relative to a folder of the private folder (absolute
 * paths are put under it, leading colons are cut to one level up, no empty or ".."
 * components, no '/'). Other ids come back unchanged. */
std::string HarnessConfineArgument(long funcId, const std::string &argument);
/* A 'VESK' message to this process with (keyword, value) pairs as 'TEXT', in order. */
using HarnessParams = std::vector<std::pair<std::string, std::string>>;
void HarnessMakeMessage(const HarnessParams &pairs, AppleEvent *event);
/* Delivers such a message over the in-memory bus, as the partner with the sender
 * signature sends it; HarnessDrainEvents hands it to the handler. */
void HarnessDeliverMessage(const HarnessParams &pairs, uint32_t sender);
/* An incoming message event built from the input: any class and id now and then, then
 * keyword / type / data triples (known keywords and message ids preferred). */
void HarnessBuildIncomingEvent(FuzzInput &in, AppleEvent *event);
/* Four-character code as text. */
std::string HarnessCodeText(uint32_t code);

#endif
