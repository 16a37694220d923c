/*
 * VeskListen.cpp: "vesk listen --as SIG": owns SIG's name and prints every event it
 * receives as a readable block, and every activation, until stopped.
 */
#include "Vesk.h"

#include <cstring>

namespace {

OSErr PrintEvent(const AppleEvent *event, AppleEvent *, intptr_t)
{
    fputs(EventBlock(event).c_str(), stdout);
    fputc('\n', stdout);
    fflush(stdout);
    return noErr;
}

void PrintActivate(void)
{
    puts("activate");
    fflush(stdout);
}

int RunListen(int argc, char **argv)
{
    OSType as = 0;
    static const struct option options[] = {{"as", required_argument, nullptr, 'a'}, {nullptr, 0, nullptr, 0}};
    int operands;
    int status = ParseCommandOptions(kVeskListen, argc, argv, options, [&](int, const char *value) {
        return ParseCode(value, &as) ? std::string() : std::string("\"") + value + "\" is not a signature";
    }, &operands);
    if (status >= 0) return status;
    if (operands < argc)
        return CommandUsageError(kVeskListen, std::string("unexpected argument \"") + argv[operands] + "\"");
    if (!as) return CommandUsageError(kVeskListen, "--as SIG is required");
    if (!ConnectToBus(kVeskListen)) return 1;
    AEInstallEventHandler(typeWildCard, typeWildCard, PrintEvent, 0, false);
    PlatformSetActivateHandler(PrintActivate);
    if (!OwnSignature(as)) return 1;
    char name[32];
    PlatformBusNameForSignature(as, name);
    fprintf(stderr, "vesk: listening as '%s' (%s)\n", CodeText(as).c_str(), name);
    RunUntilSignalled();
    return 0;
}

} // namespace

const VeskCommand kVeskListen = {
    "listen",
    "usage: vesk listen --as=SIG\n"
    "Owns the bus name of the signature SIG and prints every event it receives as a block:\n"
    "class, id and sender, then one line per parameter (keyword, type, value), then a blank\n"
    "line; an activation prints \"activate\". Runs until SIGINT or SIGTERM.\n"
    "\n"
    "  --as=SIG     the signature to listen as (required)\n"
    "\n"
    "Exit status: 0 when stopped, 1 without a bus or when SIG's name is taken, 2 a usage\n"
    "mistake.\n",
    RunListen,
};
