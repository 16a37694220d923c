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

} // namespace

int VeskListen(int argc, char **argv)
{
    OSType as = 0;
    for (int i = 0; i < argc; i++) {
        if (!strcmp(argv[i], "--as") && i + 1 < argc && ParseCode(argv[i + 1], &as)) {
            i++;
            continue;
        }
        fprintf(stderr, "vesk listen: unexpected argument \"%s\"\n", argv[i]);
        return 2;
    }
    if (!as) {
        fputs("vesk listen: --as SIG is required\n", stderr);
        return 2;
    }
    AEInstallEventHandler(typeWildCard, typeWildCard, PrintEvent, 0, false);
    PlatformSetActivateHandler(PrintActivate);
    if (!OwnSignature(as)) return 1;
    char name[32];
    PlatformBusNameForSignature(as, name);
    fprintf(stderr, "vesk: listening as '%s' (%s)\n", CodeText(as).c_str(), name);
    RunUntilSignalled();
    return 0;
}
