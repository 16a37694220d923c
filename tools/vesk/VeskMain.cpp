/*
 * VeskMain.cpp: vesk's command line: picks the command (ps, send, listen, partner) and
 * answers --help and --version.
 */
#include "Vesk.h"

#include <cstring>

static const char kUsage[] =
    "usage: vesk COMMAND [OPTIONS]\n"
    "Talks to applications on the D-Bus session bus with the VESK message protocol.\n"
    "\n"
    "  vesk ps                                   list the applications on the bus:\n"
    "                                            signature, process id, name, executable\n"
    "  vesk send --to SIG [--from SIG] KEY=VALUE ...\n"
    "                                            send one VESK/AEVT event; every KEY=VALUE\n"
    "                                            is a TEXT parameter, in the order given\n"
    "  vesk listen --as SIG                      own SIG's name and print every event\n"
    "  vesk partner --as SIG [--rules FILE] [--log FILE] [--name NAME] [DOCUMENT]\n"
    "                                            stand in for a partner application: answer\n"
    "                                            HOLA with OKHI, follow the rules, log events\n"
    "\n"
    "  --help      this text        --version   the version\n"
    "Values may use the escapes \\t \\r \\n \\\\. See docs/vesk.md.\n";

int main(int argc, char **argv)
{
    if (argc < 2) {
        fputs(kUsage, stderr);
        return 2;
    }
    const char *command = argv[1];
    if (!strcmp(command, "--help") || !strcmp(command, "-h") || !strcmp(command, "help")) {
        fputs(kUsage, stdout);
        return 0;
    }
    if (!strcmp(command, "--version")) {
        printf("vesk %s\n", VESK_VERSION);
        return 0;
    }
    for (int i = 2; i < argc; i++) {
        if (!strcmp(argv[i], "--help") || !strcmp(argv[i], "-h")) {
            fputs(kUsage, stdout);
            return 0;
        }
    }
    if (!strcmp(command, "ps")) return VeskPs(argc - 2, argv + 2);
    if (!strcmp(command, "send")) return VeskSend(argc - 2, argv + 2);
    if (!strcmp(command, "listen")) return VeskListen(argc - 2, argv + 2);
    if (!strcmp(command, "partner")) return VeskPartner(argc - 2, argv + 2);
    fprintf(stderr, "vesk: unknown command \"%s\"\n%s", command, kUsage);
    return 2;
}
