/*
 * main.cpp: fmhost, the test host. Loads a plug-in the way FileMaker would, sends it
 * Init, then runs a script file, the -e calculations or the interactive prompt, keeps
 * Idle and event dispatch going, sends Shutdown, and reports the host memory the plug-in
 * left behind. Exit status: 0 success, 1 failed expectations, runtime errors or (with
 * --leaks) leaks, 2 bad usage, bad input or a plug-in that cannot be loaded.
 */
#include "host/HostLanguage.h"

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "platform/EventService.h"
#include "platform/Processes.h"

namespace {

const char *kFmhostVersion = "fmhost 8.0";
const char *kDefaultSignature = "FMP7";

struct Options {
    std::string file;
    std::string pluginPath;
    std::string signature = kDefaultSignature;
    long hostVersion = 60;
    long idleMs = 100;
    long failAlloc = 0;
    HostFailMode failMode = kHostFailOff;
    bool leaks = false;
    bool allocCount = false;
    std::vector<std::string> expressions;
};

void PrintUsage(FILE *out)
{
    fprintf(out,
            "usage: fmhost [options] [FILE]\n"
            "Loads a FileMaker plug-in and calls it as FileMaker would.\n"
            "With FILE, runs that script file; with -e, evaluates calculations; otherwise\n"
            "reads calculations and steps at a prompt. The language is in docs/fmhost.md.\n"
            "\n"
            "  --plugin PATH        the plug-in (default: tpx1.fmx beside fmhost)\n"
            "  --signature XXXX     the host's application signature (default %s)\n"
            "  --host-version N     the version sent with Init (default 60)\n"
            "  --idle-ms N          milliseconds between idle calls (default 100)\n"
            "  --fail-alloc N       make the plug-in's Nth allocation fail, once\n"
            "  --fail-alloc-from N  make every allocation from the Nth on fail\n"
            "  --alloc-count        print the number of allocations at the end\n"
            "  --leaks              exit with status 1 if the plug-in leaked host memory\n"
            "  -e CALC              evaluate one calculation or step (may be repeated)\n"
            "  --help, --version\n",
            kDefaultSignature);
}

bool ParseNumber(const char *text, long low, long high, long *value)
{
    if (!text || !*text)
        return false;
    char *end = nullptr;
    long n = strtol(text, &end, 10);
    if (*end != '\0' || n < low || n > high)
        return false;
    *value = n;
    return true;
}

/* Returns -1 to go on, or the exit status. */
int ParseOptions(int argc, char **argv, Options *o)
{
    for (int i = 1; i < argc; i++) {
        std::string arg = argv[i];
        const char *next = i + 1 < argc ? argv[i + 1] : nullptr;
        auto needs = [&](const char *what) {
            fprintf(stderr, "fmhost: %s needs %s\n", arg.c_str(), what);
            return 2;
        };
        if (arg == "--help" || arg == "-h") {
            PrintUsage(stdout);
            return 0;
        }
        if (arg == "--version") {
            printf("%s\n", kFmhostVersion);
            return 0;
        }
        if (arg == "--leaks") {
            o->leaks = true;
        } else if (arg == "--alloc-count") {
            o->allocCount = true;
        } else if (arg == "--plugin") {
            if (!next)
                return needs("a path");
            o->pluginPath = next;
            i++;
        } else if (arg == "--signature") {
            if (!next || strlen(next) != 4)
                return needs("four characters");
            o->signature = next;
            i++;
        } else if (arg == "--host-version") {
            if (!ParseNumber(next, -32768, 32767, &o->hostVersion))
                return needs("a number");
            i++;
        } else if (arg == "--idle-ms") {
            if (!ParseNumber(next, 1, 3600000, &o->idleMs))
                return needs("a number of milliseconds");
            i++;
        } else if (arg == "--fail-alloc" || arg == "--fail-alloc-from") {
            if (!ParseNumber(next, 1, 1000000000, &o->failAlloc))
                return needs("a positive number");
            o->failMode = arg == "--fail-alloc" ? kHostFailOnce : kHostFailFromThenOn;
            i++;
        } else if (arg == "-e") {
            if (!next)
                return needs("a calculation");
            o->expressions.push_back(next);
            i++;
        } else if (arg.size() > 1 && arg[0] == '-') {
            fprintf(stderr, "fmhost: unknown option %s (try --help)\n", arg.c_str());
            return 2;
        } else if (o->file.empty()) {
            o->file = arg;
        } else {
            fprintf(stderr, "fmhost: only one script file, not also %s\n", arg.c_str());
            return 2;
        }
    }
    if (!o->file.empty() && !o->expressions.empty()) {
        fprintf(stderr, "fmhost: give either a script file or -e, not both\n");
        return 2;
    }
    return -1;
}

bool ReadFile(const std::string &path, std::string *text)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    std::ostringstream all;
    all << in.rdbuf();
    *text = all.str();
    return true;
}

}  // namespace

int main(int argc, char **argv)
{
    setlocale(LC_CTYPE, "");
    Options options;
    int status = ParseOptions(argc, argv, &options);
    if (status >= 0)
        return status;

    /* Without a session bus, a private one lives as long as fmhost, and the partners it
     * launches get its address, so messaging works without a desktop session. */
    const char *busAddress = getenv("DBUS_SESSION_BUS_ADDRESS");
    if ((busAddress == nullptr || busAddress[0] == 0) && PlatformBusStartPrivateDaemon() != noErr)
        fprintf(stderr, "fmhost: no message bus: messaging with other applications is off\n");

    const char *s = options.signature.c_str();
    PlatformSetProcessSignature(FOUR_CHAR(s[0], s[1], s[2], s[3]));

    HostPlugin plugin;
    std::string loadError;
    if (HostLoadPlugin(options.pluginPath.empty() ? nullptr : options.pluginPath.c_str(), &plugin, &loadError) != 0) {
        fprintf(stderr, "fmhost: %s\n", loadError.c_str());
        return 2;
    }

    HostProgram program;
    HostError error;
    if (!options.file.empty()) {
        std::string source;
        if (!ReadFile(options.file, &source)) {
            fprintf(stderr, "fmhost: cannot read %s\n", options.file.c_str());
            HostUnloadPlugin(&plugin);
            return 2;
        }
        if (!HostParseProgram(options.file, source, &plugin, &program, &error)) {
            fprintf(stderr, "%s\n", HostFormatError(error).c_str());
            HostUnloadPlugin(&plugin);
            return 2;
        }
    } else if (!options.expressions.empty()) {
        HostParser parser;
        HostParserBegin(&parser, "-e", &plugin, &program);
        for (size_t i = 0; i < options.expressions.size(); i++) {
            if (!HostParseLine(&parser, static_cast<int>(i + 1), options.expressions[i], &error) ||
                !HostParserEnd(&parser, &error)) {
                fprintf(stderr, "%s\n", HostFormatError(error).c_str());
                HostUnloadPlugin(&plugin);
                return 2;
            }
        }
    }

    HostSession session;
    HostSessionBegin(&session, &plugin, &program);
    session.hostVersion = static_cast<int16_t>(options.hostVersion);
    session.idleMs = static_cast<int>(options.idleMs);
    session.quietEmpty = !options.file.empty();
    if (program.usesDialogs)
        HostDialogsUseRecorder(&session);
    HostEventsInstall();
    HostMemorySetFailure(options.failAlloc, options.failMode);

    int32_t answer = HostInit(&plugin, session.hostVersion);
    if (answer < 0)
        fprintf(stderr, "fmhost: the plug-in declined Init with host version %ld (answer %d)\n",
                options.hostVersion, static_cast<int>(answer));

    if (!options.file.empty() || !options.expressions.empty()) {
        HostRunStatements(&session, program.main);
        HostDrain(&session);
    } else {
        HostRunInteractive(&session);
    }

    HostShutdown(&plugin);
    HostDialogsEcho(&session);
    fflush(stdout);
    long allocations = HostMemoryAllocationCount();
    long leaks = HostMemoryLeakReport(nullptr);
    if (leaks > 0) {
        fprintf(stderr, "fmhost: the plug-in did not dispose of %ld block%s of host memory:\n", leaks,
                leaks == 1 ? "" : "s");
        HostMemoryLeakReport(stderr);
    }
    if (options.allocCount)
        fprintf(stderr, "fmhost: %ld allocation%s, %ld failed\n", allocations, allocations == 1 ? "" : "s",
                HostMemoryFailuresDelivered());
    HostCheckLeakExpectation(&session, leaks);
    HostUnloadPlugin(&plugin);

    if (session.failures > 0)
        fprintf(stderr, "fmhost: %d expectation%s failed\n", session.failures, session.failures == 1 ? "" : "s");
    if (session.failures > 0 || session.errors > 0)
        return 1;
    if (options.leaks && leaks > 0)
        return 1;
    return 0;
}
