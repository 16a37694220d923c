/*
 * main.cpp: fmhost, the test host. Loads a plug-in the way FileMaker would, sends it
 * Init, then runs a script file, the -e calculations or the interactive prompt, keeps
 * Idle and event dispatch going, sends Shutdown, and reports the host memory the plug-in
 * left behind. Exit status: 0 success, 1 failed expectations, runtime errors or (with
 * --leaks) leaks, 2 bad usage, bad input or a plug-in that cannot be loaded.
 */
#include "host/HostLanguage.h"

#include <getopt.h>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>

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
            "usage: fmhost [OPTION]... [FILE]\n"
            "Loads a FileMaker plug-in and calls it as FileMaker would: runs the script FILE,\n"
            "the calculations given with -e, or else a prompt where \"help\" lists the plug-in's\n"
            "functions and the steps. The language: man fmhost; the functions: man 7 tpx1.\n"
            "\n"
            "  -e CALC              evaluate one calculation or step (may be repeated)\n"
            "  --plugin=PATH        the plug-in (default: tpx1.fmx beside fmhost)\n"
            "  --signature=XXXX     the host's application signature (default %s)\n"
            "  --host-version=N     the version sent with Init (default 60)\n"
            "  --idle-ms=N          milliseconds between idle calls (default 100)\n"
            "  --fail-alloc=N       make the plug-in's Nth allocation fail, once\n"
            "  --fail-alloc-from=N  make every allocation from the Nth on fail\n"
            "  --alloc-count        print the number of allocations at the end\n"
            "  --leaks              exit with status 1 if the plug-in leaked host memory\n"
            "  -h, --help, --version\n"
            "A value may also follow its option as the next word; -- ends the options.\n"
            "Exit status: 0 all passed; 1 an expectation or a calculation failed, or --leaks\n"
            "found a leak; 2 bad usage, a script that does not parse, a plug-in not loaded.\n",
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

/* The option a getopt_long code stands for, as the user would write it. */
std::string OptionName(int code, const struct option *longOptions)
{
    for (const struct option *o = longOptions; o->name; o++)
        if (o->val == code)
            return std::string("--") + o->name;
    return std::string("-") + static_cast<char>(code);
}

/* Returns -1 to go on, or the exit status. Options may come before or after FILE, long
 * ones as "--opt VALUE" or "--opt=VALUE"; "--" ends the options. */
int ParseOptions(int argc, char **argv, Options *o)
{
    enum { kPlugin = 256, kSignature, kHostVersion, kIdleMs, kFailAlloc, kFailAllocFrom, kAllocCount, kLeaks, kVersion };
    static const struct option longOptions[] = {
        {"plugin", required_argument, nullptr, kPlugin},
        {"signature", required_argument, nullptr, kSignature},
        {"host-version", required_argument, nullptr, kHostVersion},
        {"idle-ms", required_argument, nullptr, kIdleMs},
        {"fail-alloc", required_argument, nullptr, kFailAlloc},
        {"fail-alloc-from", required_argument, nullptr, kFailAllocFrom},
        {"alloc-count", no_argument, nullptr, kAllocCount},
        {"leaks", no_argument, nullptr, kLeaks},
        {"help", no_argument, nullptr, 'h'},
        {"version", no_argument, nullptr, kVersion},
        {nullptr, 0, nullptr, 0},
    };
    static const char *const kValueNeeded[] = {"a path", "four characters", "a number", "a number of milliseconds",
                                               "a positive number", "a positive number"};
    opterr = 0;
    optind = 1;
    int code;
    while ((code = getopt_long(argc, argv, ":he:", longOptions, nullptr)) != -1) {
        const char *value = optarg;
        auto wrongValue = [&](int which) {
            fprintf(stderr, "fmhost: %s needs %s, not \"%s\" (try --help)\n",
                    OptionName(which, longOptions).c_str(), kValueNeeded[which - kPlugin], value);
            return 2;
        };
        switch (code) {
        case 'h':
            PrintUsage(stdout);
            return 0;
        case kVersion:
            printf("%s\n", kFmhostVersion);
            return 0;
        case kLeaks:
            o->leaks = true;
            break;
        case kAllocCount:
            o->allocCount = true;
            break;
        case kPlugin:
            if (!*value)
                return wrongValue(code);
            o->pluginPath = value;
            break;
        case kSignature:
            if (strlen(value) != 4)
                return wrongValue(code);
            o->signature = value;
            break;
        case kHostVersion:
            if (!ParseNumber(value, -32768, 32767, &o->hostVersion))
                return wrongValue(code);
            break;
        case kIdleMs:
            if (!ParseNumber(value, 1, 3600000, &o->idleMs))
                return wrongValue(code);
            break;
        case kFailAlloc:
        case kFailAllocFrom:
            if (!ParseNumber(value, 1, 1000000000, &o->failAlloc))
                return wrongValue(code);
            o->failMode = code == kFailAlloc ? kHostFailOnce : kHostFailFromThenOn;
            break;
        case 'e':
            o->expressions.push_back(value);
            break;
        case ':':
            fprintf(stderr, "fmhost: %s needs %s (try --help)\n", OptionName(optopt, longOptions).c_str(),
                    optopt == 'e' ? "a calculation" : kValueNeeded[optopt - kPlugin]);
            return 2;
        default:
            if (optopt >= kPlugin)
                fprintf(stderr, "fmhost: %s takes no value (try --help)\n", OptionName(optopt, longOptions).c_str());
            else if (optopt)
                fprintf(stderr, "fmhost: unknown option -%c (try --help)\n", optopt);
            else
                fprintf(stderr, "fmhost: unknown or ambiguous option %s (try --help)\n", argv[optind - 1]);
            return 2;
        }
    }
    for (int i = optind; i < argc; i++) {
        if (!o->file.empty()) {
            fprintf(stderr, "fmhost: only one script file, not also %s\n", argv[i]);
            return 2;
        }
        o->file = argv[i];
    }
    if (!o->file.empty() && !o->expressions.empty()) {
        fprintf(stderr, "fmhost: give either a script file or -e, not both\n");
        return 2;
    }
    return -1;
}

/* SIGTERM, SIGINT or SIGHUP end fmhost as they would, taking its private bus along. */
void EndBySignal(int signal)
{
    PlatformBusKillPrivateDaemon();
    ::signal(signal, SIG_DFL);
    raise(signal);
}

void EndPrivateBusOnSignals(void)
{
    for (int signal : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction action, previous;
        memset(&action, 0, sizeof action);
        action.sa_handler = EndBySignal;
        if (sigaction(signal, nullptr, &previous) == 0 && previous.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
}

/* The whole file, or false with errno telling why. */
bool ReadFile(const std::string &path, std::string *text)
{
    FILE *in = fopen(path.c_str(), "rb");
    if (!in)
        return false;
    char chunk[65536];
    size_t n;
    text->clear();
    while ((n = fread(chunk, 1, sizeof chunk, in)) > 0)
        text->append(chunk, n);
    bool ok = !ferror(in);
    int saved = errno;
    fclose(in);
    errno = saved;
    return ok;
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
    if (busAddress == nullptr || busAddress[0] == 0) {
        if (PlatformBusStartPrivateDaemon() == noErr)
            EndPrivateBusOnSignals();
        else
            fprintf(stderr, "fmhost: no message bus: messaging with other applications is off\n");
    }

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
            fprintf(stderr, "fmhost: cannot read %s: %s\n", options.file.c_str(), strerror(errno));
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
        HostRunInteractive(&session, kFmhostVersion);
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
