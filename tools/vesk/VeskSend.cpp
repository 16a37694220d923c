/*
 * VeskSend.cpp: "vesk send --to SIG [--from SIG] KEY=VALUE ...": one VESK/AEVT event
 * with a TEXT parameter per argument, in the order given, sent without waiting.
 */
#include "Vesk.h"

#include <cstring>

int VeskSend(int argc, char **argv)
{
    OSType to = 0, from = FOUR_CHAR('V', 'E', 'S', 'K');
    std::vector<VeskParam> params;
    for (int i = 0; i < argc; i++) {
        if ((!strcmp(argv[i], "--to") || !strcmp(argv[i], "--from")) && i + 1 < argc) {
            OSType *code = !strcmp(argv[i], "--to") ? &to : &from;
            if (!ParseCode(argv[i + 1], code)) {
                fprintf(stderr, "vesk send: \"%s\" is not a signature\n", argv[i + 1]);
                return 2;
            }
            i++;
            continue;
        }
        VeskParam param;
        if (!ParseAssignment(argv[i], &param)) {
            fprintf(stderr, "vesk send: expected KEY=VALUE, not \"%s\"\n", argv[i]);
            return 2;
        }
        params.push_back(param);
    }
    if (!to) {
        fputs("vesk send: --to SIG is required\n", stderr);
        return 2;
    }
    PlatformSetProcessSignature(from);
    OSErr err = SendEvent(to, kVeskClass, kVeskEvent, params);
    PlatformBusClose();
    if (err) {
        fprintf(stderr, "vesk send: sending to '%s' failed: %s\n", CodeText(to).c_str(), ErrorText(err).c_str());
        return 1;
    }
    return 0;
}
