/*
 * HostLanguage.h: fmhost's calculation and script language: source positions and
 * diagnostics, tokens, the expression tree, script statements, the parsed program, the
 * evaluator's session and the runner's entry points. Values are Mac Roman bytes; source
 * text, terminal input and printed output are UTF-8. The language is described for users
 * in docs/fmhost.md.
 */
#ifndef TPX1_HOSTLANGUAGE_H
#define TPX1_HOSTLANGUAGE_H

#include <cstdio>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "host/HostCore.h"

/* ---- Diagnostics ---- */
struct HostError {
    bool set = false;
    std::string file;
    int line = 0;
    int column = 0;             /* 1-based, in characters; 0 when the whole line is meant */
    std::string message;
};
void HostSetError(HostError *error, const std::string &file, int line, int column, const std::string &message);
/* "file:line:column: message" (column left out when 0). */
std::string HostFormatError(const HostError &error);

/* ---- Text between UTF-8 (outside) and Mac Roman (values) ---- */
/* Converts; on a character without a Mac Roman form returns false and the 0-based
 * character index of that character in *badCharIndex and its code point in *badCodePoint. */
bool HostUTF8ToMacRoman(const std::string &utf8, std::string *macRoman, int *badCharIndex, long *badCodePoint);
std::string HostMacRomanToUTF8(const std::string &macRoman);
/* A value as printed: in double quotes, TAB as \t, CR as \r, LF as \n, backslash and
 * quote escaped, other control bytes as \xNN, the rest in UTF-8. */
std::string HostVisibleText(const std::string &macRoman);
/* A value as shown by Show: UTF-8 with CR turned into line feeds. */
std::string HostPlainText(const std::string &macRoman);
/* Unicode code point of the first character of a UTF-8 text (its byte length in *length), -1 if malformed. */
long HostDecodeUTF8(const std::string &utf8, size_t at, int *length);
std::string HostEncodeUTF8(long codePoint);

/* ---- Tokens ---- */
enum HostTokenKind {
    kTokEnd,
    kTokString,       /* text: the literal's value, Mac Roman */
    kTokNumber,       /* text: digits as written */
    kTokName,         /* text: the identifier */
    kTokVariable,     /* text: "$name" or "$$name" */
    kTokAmp,
    kTokPilcrow,
    kTokLParen,
    kTokRParen,
    kTokLBracket,
    kTokRBracket,
    kTokSemicolon,
    kTokColon,
    kTokEquals,
    kTokEqualsEquals,
    kTokMinus
};
struct HostToken {
    HostTokenKind kind = kTokEnd;
    std::string text;
    int column = 0;
};
/* Splits one source line (UTF-8) into tokens; a '#' outside a literal ends the line. */
bool HostLexLine(const std::string &file, int line, const std::string &source, std::vector<HostToken> *tokens,
                 HostError *error);

/* ---- Expressions ---- */
enum HostExprKind { kExprText, kExprVariable, kExprConcat, kExprBuiltin, kExprPluginCall };
enum HostBuiltin { kBuiltinChar, kBuiltinCode, kBuiltinLength, kBuiltinExternal };
struct HostExpr {
    HostExprKind kind = kExprText;
    std::string text;          /* literal value, variable name, or function name as written */
    int function = -1;         /* HostBuiltin, or the plug-in's function id */
    std::vector<HostExpr> args;
    int line = 0;
    int column = 0;
};

/* ---- Statements ---- */
enum HostStatementKind {
    kStmtCalc,            /* a bare calculation: its value is printed */
    kStmtShow,            /* Show [ calc ]: the plain value is printed */
    kStmtSetVariable,     /* Set Variable [ $x ; Value: calc ] or $x = calc */
    kStmtExpect,          /* Expect [ calc ; calc ] or expect calc == calc */
    kStmtPerformScript,   /* Perform Script [ calc ] */
    kStmtIdle,            /* Idle [ n ] */
    kStmtSleep,           /* Sleep [ ms ] */
    kStmtExpectDialog,    /* expect dialog calc */
    kStmtExpectNoDialog,  /* expect no dialog */
    kStmtAnswerDialog,    /* answer dialog n */
    kStmtAnswerFile,      /* answer file calc */
    kStmtFault,           /* fault NAME n error [always] */
    kStmtFaultClear,      /* fault clear [NAME] */
    kStmtClockManual,     /* clock manual start [step] */
    kStmtClockAdvance,    /* clock advance n */
    kStmtClockReal,       /* clock real */
    kStmtRaw,             /* raw selector [parm1 [parm2]] */
    kStmtExpectLeaks      /* expect leaks n */
};
struct HostStatement {
    HostStatementKind kind = kStmtCalc;
    int line = 0;
    int column = 0;
    std::string name;                 /* variable or fault point (its number in numbers[2]) */
    std::vector<HostExpr> exprs;
    long numbers[3] = {0, 0, 0};
    int numberCount = 0;
    bool always = false;
};
struct HostScriptDef {
    std::string name;                 /* UTF-8 as written */
    int line = 0;
    std::vector<HostStatement> body;
};
struct HostProgram {
    std::string file;
    std::vector<HostStatement> main;
    std::vector<HostScriptDef> scripts;
    bool usesDialogs = false;         /* has dialog expectations or answers */
};

/* Parser state for feeding a program line by line (files and the interactive prompt). */
struct HostParser {
    std::string file;
    const HostPlugin *plugin = nullptr;
    HostProgram *program = nullptr;
    int openScript = -1;              /* index in program->scripts while inside Script ... End Script */
    int openScriptLine = 0;
};
void HostParserBegin(HostParser *parser, const std::string &file, const HostPlugin *plugin, HostProgram *program);
/* Adds one line; statements outside a Script block are appended to program->main. */
bool HostParseLine(HostParser *parser, int line, const std::string &source, HostError *error);
/* Checks that no Script block is left open. */
bool HostParserEnd(HostParser *parser, HostError *error);
bool HostParseProgram(const std::string &file, const std::string &source, const HostPlugin *plugin,
                      HostProgram *program, HostError *error);
/* Parses one calculation (used by -e and by the tests). */
bool HostParseCalculation(const std::string &file, int line, const std::string &source, const HostPlugin *plugin,
                          HostExpr *expr, HostError *error);

/* ---- Sessions: evaluation and running ---- */
struct HostSession {
    HostPlugin *plugin = nullptr;
    HostProgram *program = nullptr;
    FILE *out = stdout;
    FILE *err = stderr;
    int16_t hostVersion = 60;
    int idleMs = 100;
    std::vector<std::map<std::string, std::string>> locals;   /* one scope per running script */
    std::map<std::string, std::string> globals;               /* $$ variables */
    int failures = 0;               /* failed expectations */
    int errors = 0;                 /* runtime errors */
    int depth = 0;                  /* nesting of running scripts */
    bool recorder = false;          /* the dialog recorder is in use */
    bool quietEmpty = false;        /* script files: a bare calculation with an empty result prints nothing */
    int dialogsEchoed = 0;
    int dialogsChecked = 0;
    long expectedLeaks = -1;        /* from expect leaks, checked after Shutdown */
    int expectedLeaksLine = 0;
};
void HostSessionBegin(HostSession *session, HostPlugin *plugin, HostProgram *program);
bool HostEvaluate(HostSession *session, const HostExpr &expr, std::string *value, HostError *error);
void HostSetVariable(HostSession *session, const std::string &name, const std::string &value);
/* Runs statements in the current scope. */
void HostRunStatements(HostSession *session, const std::vector<HostStatement> &statements);
void HostRunStatement(HostSession *session, const HostStatement &statement);
/* Runs a named host script in a scope of its own; reports a missing one as FileMaker does. */
void HostPerformScript(HostSession *session, const std::string &name);
/* Runs the scripts that do-script events asked for, in arrival order; returns how many. */
int HostRunPendingScripts(HostSession *session);
/* Prints a runtime error and counts it. */
void HostReportError(HostSession *session, const HostError &error);
/* Checks the expect leaks expectation after Shutdown. */
void HostCheckLeakExpectation(HostSession *session, long leaks);

/* ---- Dialogs (the platform's recorder) ---- */
void HostDialogsUseRecorder(HostSession *session);
/* Prints the dialogs recorded since the last call. */
void HostDialogsEcho(HostSession *session);
/* Compares the next dialog not yet checked with text (Mac Roman); false with *actual
 * set (visible form) when it differs or none was shown. */
bool HostDialogsExpect(HostSession *session, const std::string &text, std::string *actual);
/* False (with the first unchecked dialog in *actual) when a dialog is left unchecked. */
bool HostDialogsExpectNone(HostSession *session, std::string *actual);

/* ---- Event loop ---- */
/* Installs the do-script handler and the activation handler. */
void HostEventsInstall(void);
/* A do-script event asked for this host script (called by the handler; queued). */
void HostEventsQueueScript(const std::string &nameMacRoman);
bool HostEventsTakeScript(std::string *nameMacRoman);
bool HostEventsScriptsPending(void);
/* One idle pass: Idle at level 0, event dispatch, then the scripts the events asked for.
 * Returns the number of events dispatched plus scripts run. */
int HostIdlePass(HostSession *session);
/* Dispatches events without an idle call; returns events dispatched plus scripts run. */
int HostDispatchPass(HostSession *session);
/* Runs the event loop for ms milliseconds: Idle on the session's cadence, events as they come. */
void HostSleep(HostSession *session, long ms);
/* At the end of a script file: idle and dispatch until quiet (bounded). */
void HostDrain(HostSession *session);
/* Waits until fd is readable, running idle on the cadence meanwhile; -1 as fd just waits one cadence. */
bool HostWaitForInput(HostSession *session, int fd);

/* ---- Interactive mode ---- */
/* hostVersion ("fmhost 8.0") goes into the banner a terminal session opens with. */
int HostRunInteractive(HostSession *session, const char *hostVersion);
/* The banner: fmhost's version, the plug-in loaded, how to get help. */
void HostPrintBanner(FILE *out, const HostPlugin *plugin, const char *hostVersion);
/* "help" (topic empty) or "help TOPIC": a function, built-in, step or prompt command. */
void HostPrintHelp(FILE *out, const HostPlugin *plugin, const std::string &topic);
/* What Tab may put in place of word (UTF-8), given the line before it (leading blanks
 * removed): functions and built-ins anywhere, steps and commands at the line's start. */
std::vector<std::string> HostCompletions(const HostPlugin *plugin, const std::string &before, const std::string &word);

#endif
