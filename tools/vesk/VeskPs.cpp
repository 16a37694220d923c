/*
 * VeskPs.cpp: "vesk ps": the applications that own a VESK name on the bus, with their
 * signature, process id, name and executable.
 */
#include "Vesk.h"

#include <cstring>

int VeskPs(int argc, char **argv)
{
    if (argc > 0) {
        fprintf(stderr, "vesk ps: unexpected argument \"%s\"\n", argv[0]);
        return 2;
    }
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
        std::string display = ToUTF8(std::string((const char *)name + 1, name[0]));
        printf("%-6s %-8d %-20s %s\n", CodeText(info.processSignature).c_str(), (int)info.processPID,
               display.c_str(), path);
    }
    return 0;
}
