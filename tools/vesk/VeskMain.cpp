/*
 * VeskMain.cpp: vesk's command line: picks the command (ps, send, listen, partner) and
 * answers --help, --version and "help COMMAND".
 */
#include "Vesk.h"

#include <cstring>

static const VeskCommand *const kCommands[] = {&kVeskPs, &kVeskSend, &kVeskListen, &kVeskPartner};

static const char kUsage[] =
    "usage: vesk COMMAND [OPTIONS]\n"
    "Talks to applications on the D-Bus session bus with the VESK message protocol.\n"
    "\n"
    "  vesk ps                                    list the applications on the bus:\n"
    "                                             signature, process id, name, executable\n"
    "  vesk send --to=SIG [--from=SIG] KEY=VALUE ...\n"
    "                                             send one VESK/AEVT event; every KEY=VALUE\n"
    "                                             is a TEXT parameter, in the order given\n"
    "  vesk listen --as=SIG                       own SIG's name and print every event\n"
    "  vesk partner --as=SIG [--rules=FILE] [--log=FILE] [--name=NAME] [DOCUMENT]\n"
    "                                             stand in for a partner application: answer\n"
    "                                             HOLA with OKHI, follow the rules, log events\n"
    "\n"
    "  vesk COMMAND --help, vesk help COMMAND    that command's help\n"
    "  vesk --help, vesk --version\n"
    "Options take their value as --opt=VALUE or --opt VALUE. Values may use the escapes\n"
    "\\t \\r \\n \\\\. The commands need a session bus (DBUS_SESSION_BUS_ADDRESS); without\n"
    "one, run them under dbus-run-session. More: man vesk.\n";

static const VeskCommand *FindCommand(const char *name)
{
    for (const VeskCommand *command : kCommands)
        if (!strcmp(command->name, name)) return command;
    return nullptr;
}

int main(int argc, char **argv)
{
    if (argc < 2) {
        fputs(kUsage, stderr);
        return 2;
    }
    const char *word = argv[1];
    if (!strcmp(word, "--help") || !strcmp(word, "-h") || (!strcmp(word, "help") && argc == 2)) {
        fputs(kUsage, stdout);
        return 0;
    }
    if (!strcmp(word, "--version")) {
        printf("vesk %s\n", VESK_VERSION);
        return 0;
    }
    if (!strcmp(word, "help")) {
        const VeskCommand *command = FindCommand(argv[2]);
        if (!command) {
            fprintf(stderr, "vesk: no command \"%s\"; the commands are ps, send, listen and partner\n", argv[2]);
            return 2;
        }
        fputs(command->help, stdout);
        return 0;
    }
    const VeskCommand *command = FindCommand(word);
    if (!command) {
        fprintf(stderr, "vesk: unknown command \"%s\"\n%s", word, kUsage);
        return 2;
    }
    return command->run(argc - 1, argv + 1);
}
