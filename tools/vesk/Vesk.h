/*
 * Vesk.h: the pieces of the vesk tool: its commands (ps, send, listen, partner), the
 * partner's rule files, and the helpers they share for codes, texts and events.
 */
#ifndef VESK_H
#define VESK_H

#include <getopt.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "platform/AppleEvents.h"
#include "platform/EventService.h"
#include "platform/Processes.h"

#define kVeskClass FOUR_CHAR('V', 'E', 'S', 'K')
#define kVeskEvent FOUR_CHAR('A', 'E', 'V', 'T')

/* One parameter of an event: keyword, type and the data (Mac Roman for 'TEXT'). */
struct VeskParam {
    OSType keyword;
    DescType type;
    std::string data;
};

/* ---- Codes and texts (VeskText.cpp) ---- */
/* 1 to 4 characters (UTF-8), padded with blanks. */
bool ParseCode(const std::string &text, OSType *code);
/* Text (Mac Roman or UTF-8) with its control characters shown as \x1b: whatever came
 * from the bus or from other processes is printed this way, so it cannot steer a
 * terminal. */
std::string PrintableText(const std::string &text);
/* A code as UTF-8 text, four characters, control characters shown as \x1b. */
std::string CodeText(OSType code);
void AppendCodeText(std::string *out, OSType code);
std::string ToMacRoman(const std::string &utf8);
std::string ToUTF8(const std::string &macRoman);
/* UTF-8 with TAB, CR, LF, backslash and other control characters made visible. */
std::string VisibleText(const std::string &macRoman);
void AppendVisibleText(std::string *out, const std::string &macRoman);
/* Undoes VisibleText's escapes (\t \r \n \\ \"). */
std::string UnescapeText(const std::string &text);
/* "KEY=VALUE" (UTF-8) into a 'TEXT' parameter. */
bool ParseAssignment(const std::string &text, VeskParam *param);

/* ---- Events (VeskEvents.cpp) ---- */
std::vector<VeskParam> EventParams(const AppleEvent *event);
OSType EventSender(const AppleEvent *event);
AEEventClass EventClass(const AppleEvent *event);
AEEventID EventID(const AppleEvent *event);
/* Text of a 'TEXT' parameter of the list ("" when absent). */
std::string ParamText(const std::vector<VeskParam> &params, OSType keyword, bool *found = nullptr);
OSErr SendEvent(OSType to, AEEventClass eventClass, AEEventID eventID, const std::vector<VeskParam> &params);
/* A readable block (listen) and a log line (partner). */
std::string EventBlock(const AppleEvent *event);
std::string EventLine(const AppleEvent *event);
std::string EventLine(AEEventClass eventClass, AEEventID eventID, OSType sender, const std::vector<VeskParam> &params);
/* Message text for an OSErr. */
std::string ErrorText(OSErr err);
/* Takes this signature's bus name; false (with a message) when it cannot. */
bool OwnSignature(OSType signature);
/* Runs the event loop until SIGTERM or SIGINT; afterEvents (if given) runs each time the
 * events that were waiting have been handled, before the loop waits again. */
void RunUntilSignalled(void (*afterEvents)(void) = nullptr);

/* ---- Rules of the stand-in partner (VeskRules.cpp) ---- */
struct VeskRule {
    OSType onMessage;             /* '****' for any */
    OSType to;                    /* 0: the sender */
    std::vector<VeskParam> send;  /* a value "$KEY" copies the incoming KEY */
    int line;
};
/* Reads a rule file; false with a message naming the line on a mistake. */
bool ReadRules(const char *path, std::vector<VeskRule> *rules, std::string *error);
bool ParseRuleLine(const std::string &line, int number, VeskRule *rule, bool *isRule, std::string *error);

/* ---- Commands ---- */
struct VeskCommand {
    const char *name;                   /* "send" */
    const char *help;                   /* its --help text, the usage line first */
    int (*run)(int argc, char **argv);  /* argv[0] is the command's name */
};
extern const VeskCommand kVeskPs, kVeskSend, kVeskListen, kVeskPartner;

/* ---- The command line (VeskCommandLine.cpp) ---- */
/* Reads a command's options (argv[0] is its name) with getopt_long; --help and -h print
 * its help. take gets each option's code and value and returns "" or what is wrong.
 * Returns -1 to go on, with the index of the first operand in *operands, or the exit
 * status: 0 after --help, 2 after a mistake (said on stderr with the usage line). */
int ParseCommandOptions(const VeskCommand &command, int argc, char **argv, const struct option *options,
                        const std::function<std::string(int code, const char *value)> &take, int *operands);
/* Says what is wrong and the command's usage on stderr; returns 2. */
int CommandUsageError(const VeskCommand &command, const std::string &message);
/* Opens the session bus; false after saying why (and how to start a bus when none is set). */
bool ConnectToBus(const VeskCommand &command);

#endif
