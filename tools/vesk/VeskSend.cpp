/*
 * VeskSend.cpp: "vesk send --to SIG [--from SIG] KEY=VALUE ...": one VESK/AEVT event
 * with a TEXT parameter per argument, in the order given, sent without waiting. The
 * receiver takes it only from the owner of the sender's bus name, so vesk owns it while
 * it sends; it speaks as the SIGN parameter's signature when no --from is given.
 */
#include "Vesk.h"

#include <cstring>

static int RunSend(int argc, char **argv)
{
    OSType to = 0, from = 0;
    enum { kTo = 256, kFrom };
    static const struct option options[] = {
        {"to", required_argument, nullptr, kTo},
        {"from", required_argument, nullptr, kFrom},
        {nullptr, 0, nullptr, 0},
    };
    int operands;
    int status = ParseCommandOptions(kVeskSend, argc, argv, options, [&](int code, const char *value) {
        if (!ParseCode(value, code == kTo ? &to : &from))
            return std::string("\"") + value + "\" is not a signature (1 to 4 characters)";
        return std::string();
    }, &operands);
    if (status >= 0) return status;
    std::vector<VeskParam> params;
    for (int i = operands; i < argc; i++) {
        VeskParam param;
        if (!ParseAssignment(argv[i], &param))
            return CommandUsageError(kVeskSend, std::string("expected KEY=VALUE, not \"") + argv[i] + "\"");
        params.push_back(param);
    }
    if (!to) return CommandUsageError(kVeskSend, "--to SIG is required");
    bool hasSign = false;
    std::string sign = ParamText(params, FOUR_CHAR('S', 'I', 'G', 'N'), &hasSign);
    OSType signedAs = 0;
    if (hasSign && !sign.empty() && sign.find_first_not_of(' ') != std::string::npos)
        ParseCode(ToUTF8(sign.substr(0, 4)), &signedAs);
    if (!from) from = signedAs ? signedAs : FOUR_CHAR('V', 'E', 'S', 'K');
    if (signedAs && signedAs != from)
        return CommandUsageError(kVeskSend, "SIGN=" + CodeText(signedAs) + " but --from " + CodeText(from) +
                                                ": the receiver takes a SIGN only from its owner");
    if (!ConnectToBus(kVeskSend)) return 1;
    if (!OwnSignature(from)) return 1;
    OSErr err = SendEvent(to, kVeskClass, kVeskEvent, params);
    PlatformBusClose();
    if (err) {
        fprintf(stderr, "vesk send: sending to '%s' failed: %s\n", CodeText(to).c_str(), ErrorText(err).c_str());
        return 1;
    }
    return 0;
}

const VeskCommand kVeskSend = {
    "send",
    "usage: vesk send --to=SIG [--from=SIG] [--] KEY=VALUE ...\n"
    "Sends one VESK/AEVT event to the application SIG without waiting for an answer. Every\n"
    "KEY=VALUE becomes one TEXT parameter, in the order given; nothing is added, so give\n"
    "MSSG, SIGN, PSIG and XTRA yourself. A key is 1 to 4 characters, padded with blanks\n"
    "('NUM =1' sets \"NUM \"); values may use the escapes \\t \\r \\n \\\\ \\\". A key that\n"
    "starts with \"-\" (the direct object ----) needs -- before it.\n"
    "\n"
    "  --to=SIG     the addressee's signature (required)\n"
    "  --from=SIG   the sender's signature (default: the one SIGN names, else VESK); a\n"
    "               receiver takes an event only from its owner, so vesk owns its name\n"
    "               while it sends\n"
    "\n"
    "Exit status: 0 sent, 1 not sent (no bus, the name is another process's, or the\n"
    "addressee is not running: error -600), 2 a usage mistake (also a SIGN other than\n"
    "--from).\n",
    RunSend,
};
