/*
 * VeskPs.cpp: "vesk ps": the applications that own a VESK name on the bus, with their
 * signature, process id, name and executable.
 */
#include "Vesk.h"

#include <cstring>

static int RunPs(int argc, char **argv)
{
    int operands;
    int status = ParseCommandOptions(kVeskPs, argc, argv, nullptr, nullptr, &operands);
    if (status >= 0) return status;
    if (operands < argc) return CommandUsageError(kVeskPs, std::string("unexpected argument \"") + argv[operands] + "\"");
    if (!ConnectToBus(kVeskPs)) return 1;
    printf("%-6s %-8s %-20s %s\n", "SIG", "PID", "NAME", "EXECUTABLE");
    ProcessSerialNumber psn{0, kNoProcess};
    while (GetNextProcess(&psn) == noErr) {
        unsigned char name[256];
        FSSpec theSpec;
        ProcessInfoRec info;
        memset(&info, 0, sizeof info);
        info.processInfoLength = 60;
        info.processName = name;
        info.processAppSpec = &theSpec;
        if (GetProcessInformation(&psn, &info) != noErr) continue;
        char path[4096] = "";
        if (FSpGetPOSIXPath(&theSpec, path, sizeof path) != noErr) path[0] = 0;
        /* Names and paths are the other processes' own: shown with control characters
         * escaped, like everything else that came from the bus. */
        std::string display = PrintableText(ToUTF8(std::string((const char *)name + 1, name[0])));
        printf("%-6s %-8d %-20s %s\n", CodeText(info.processSignature).c_str(), (int)info.processPID,
               display.c_str(), PrintableText(path).c_str());
    }
    return 0;
}

const VeskCommand kVeskPs = {
    "ps",
    "usage: vesk ps\n"
    "Lists the applications that own a VESK name on the session bus: signature, process\n"
    "id, name and executable, one line each. Exit status 0, or 1 without a bus.\n",
    RunPs,
};
