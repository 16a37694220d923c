/*
 * VeskCommandLine.cpp: what every vesk command shares on its command line: options read
 * with getopt_long ("--opt VALUE" or "--opt=VALUE", "--" ends them), its own --help,
 * messages for a mistake that show the command's usage, and opening the session bus
 * with a message that says how to start one when there is none.
 */
#include "Vesk.h"

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>

namespace {

/* The name a user wrote for the option getopt_long returned as code. */
std::string OptionName(int code, const struct option *options)
{
    for (const struct option *o = options; o && o->name; o++)
        if (o->val == code) return std::string("--") + o->name;
    return std::string("-") + (char)code;
}

/* The first line of a help text: the command's usage. */
std::string UsageLine(const VeskCommand &command)
{
    const char *end = strchr(command.help, '\n');
    return end ? std::string(command.help, end - command.help) : std::string(command.help);
}

} // namespace

int CommandUsageError(const VeskCommand &command, const std::string &message)
{
    fprintf(stderr, "vesk %s: %s\n%s\n(vesk %s --help tells more)\n", command.name, message.c_str(),
            UsageLine(command).c_str(), command.name);
    return 2;
}

int ParseCommandOptions(const VeskCommand &command, int argc, char **argv, const struct option *options,
                        const std::function<std::string(int code, const char *value)> &take, int *operands)
{
    std::vector<struct option> all;
    for (const struct option *o = options; o && o->name; o++) all.push_back(*o);
    all.push_back({"help", no_argument, nullptr, 'h'});
    all.push_back({nullptr, 0, nullptr, 0});
    opterr = 0;
    optind = 1;
    int code;
    while ((code = getopt_long(argc, argv, ":h", all.data(), nullptr)) != -1) {
        if (code == 'h') {
            fputs(command.help, stdout);
            return 0;
        }
        if (code == ':') return CommandUsageError(command, OptionName(optopt, all.data()) + " needs a value");
        if (code == '?') {
            if (optopt) return CommandUsageError(command, OptionName(optopt, all.data()) + " takes no value");
            return CommandUsageError(command, std::string("unknown option ") + argv[optind - 1]);
        }
        std::string problem = take(code, optarg);
        if (!problem.empty()) return CommandUsageError(command, problem);
    }
    *operands = optind;
    return -1;
}

bool ConnectToBus(const VeskCommand &command)
{
    const char *address = getenv("DBUS_SESSION_BUS_ADDRESS");
    if (!address || !*address) {
        /* sd-bus would still find a bus at $XDG_RUNTIME_DIR/bus (a systemd user session). */
        const char *runtime = getenv("XDG_RUNTIME_DIR");
        struct stat st;
        if (!runtime || !*runtime || stat((std::string(runtime) + "/bus").c_str(), &st) != 0 || !S_ISSOCK(st.st_mode)) {
            fprintf(stderr,
                    "vesk %s: DBUS_SESSION_BUS_ADDRESS is not set, so there is no session bus to talk on;\n"
                    "start one with dbus-run-session (for example \"dbus-run-session -- bash\", then run\n"
                    "vesk and the applications in that shell)\n",
                    command.name);
            return false;
        }
    }
    if (PlatformBusOpen() != noErr) {
        fprintf(stderr, "vesk %s: cannot reach the session bus at %s\n", command.name,
                address && *address ? address : "$XDG_RUNTIME_DIR/bus");
        return false;
    }
    return true;
}
