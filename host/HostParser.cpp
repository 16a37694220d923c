/*
 * HostParser.cpp: turns fmhost's language into a program: calculations (literals,
 * numbers, ¶, &, parentheses, $variables, the built-ins and the plug-in's functions by
 * display name) and script steps, one per line, with Script ... End Script blocks.
 * Function names are resolved here, so an unknown one is reported before anything runs.
 */
#include "host/HostLanguage.h"
#include "platform/Faults.h"

#include <strings.h>

#include <cstdlib>

namespace {

struct Cursor {
    const std::string *file;
    int line;
    const std::vector<HostToken> *tokens;
    size_t at;
    const HostPlugin *plugin;
    HostError *error;
    int depth;
};

const int kMaxNesting = 200;   /* parentheses and calls inside one another */

const HostToken &Peek(Cursor *c, size_t ahead = 0)
{
    size_t i = c->at + ahead;
    if (i >= c->tokens->size())
        i = c->tokens->size() - 1;
    return (*c->tokens)[i];
}

const HostToken &Next(Cursor *c)
{
    const HostToken &t = Peek(c);
    if (c->at < c->tokens->size() - 1)
        c->at++;
    return t;
}

bool Fail(Cursor *c, const HostToken &where, const std::string &message)
{
    HostSetError(c->error, *c->file, c->line, where.column, message);
    return false;
}

bool IsWord(const HostToken &t, const char *word)
{
    return t.kind == kTokName && strcasecmp(t.text.c_str(), word) == 0;
}

bool Expect(Cursor *c, HostTokenKind kind, const char *what)
{
    if (Peek(c).kind != kind)
        return Fail(c, Peek(c), std::string("expected ") + what);
    Next(c);
    return true;
}

struct BuiltinInfo {
    const char *name;
    HostBuiltin id;
    int args;
};
const BuiltinInfo kBuiltins[] = {
    {"Char", kBuiltinChar, 1},
    {"Code", kBuiltinCode, 1},
    {"Length", kBuiltinLength, 1},
    {"External", kBuiltinExternal, 2},
};

bool ParseExpr(Cursor *c, HostExpr *out);

bool ParseCall(Cursor *c, const HostToken &name, HostExpr *out)
{
    Next(c);   /* ( */
    out->line = c->line;
    out->column = name.column;
    out->text = name.text;
    int wanted = -1;
    for (const BuiltinInfo &b : kBuiltins) {
        if (strcasecmp(b.name, name.text.c_str()) == 0) {
            out->kind = kExprBuiltin;
            out->function = b.id;
            wanted = b.args;
        }
    }
    if (wanted < 0) {
        int id = c->plugin ? HostFunctionId(c->plugin, name.text) : -1;
        if (id < 0)
            return Fail(c, name, "unknown function \"" + name.text + "\"");
        out->kind = kExprPluginCall;
        out->function = id;
    }
    if (Peek(c).kind != kTokRParen) {
        for (;;) {
            HostExpr arg;
            if (!ParseExpr(c, &arg))
                return false;
            out->args.push_back(arg);
            if (Peek(c).kind != kTokSemicolon)
                break;
            Next(c);
        }
    }
    if (Peek(c).kind != kTokRParen)
        return Fail(c, Peek(c), "expected ; or ) in the call of " + name.text);
    Next(c);
    size_t count = out->args.size();
    if (out->kind == kExprPluginCall) {
        if (count > 1)
            return Fail(c, name, name.text + " takes one parameter");
    } else if (count != static_cast<size_t>(wanted)) {
        return Fail(c, name, name.text + (wanted == 1 ? " takes one parameter" : " takes two parameters"));
    }
    return true;
}

bool ParseTermNested(Cursor *c, HostExpr *out);

bool ParseTerm(Cursor *c, HostExpr *out)
{
    if (c->depth >= kMaxNesting)
        return Fail(c, Peek(c), "expected fewer than 200 nested calls and parentheses");
    c->depth++;
    bool ok = ParseTermNested(c, out);
    c->depth--;
    return ok;
}

bool ParseTermNested(Cursor *c, HostExpr *out)
{
    const HostToken &t = Peek(c);
    out->line = c->line;
    out->column = t.column;
    switch (t.kind) {
    case kTokString:
        out->kind = kExprText;
        out->text = t.text;
        Next(c);
        return true;
    case kTokNumber:
        out->kind = kExprText;
        out->text = t.text;
        Next(c);
        return true;
    case kTokMinus:
        if (Peek(c, 1).kind == kTokNumber) {
            Next(c);
            out->kind = kExprText;
            out->text = "-" + Next(c).text;
            return true;
        }
        return Fail(c, t, "expected a number after -");
    case kTokPilcrow:
        out->kind = kExprText;
        out->text = "\r";
        Next(c);
        return true;
    case kTokVariable:
        out->kind = kExprVariable;
        out->text = t.text;
        Next(c);
        return true;
    case kTokName: {
        if (Peek(c, 1).kind != kTokLParen)
            return Fail(c, t, "expected ( after the function name " + t.text);
        HostToken name = t;
        Next(c);
        return ParseCall(c, name, out);
    }
    case kTokLParen: {
        Next(c);
        if (!ParseExpr(c, out))
            return false;
        return Expect(c, kTokRParen, ")");
    }
    default:
        return Fail(c, t, "expected a text, a number, a variable or a function call");
    }
}

bool ParseExpr(Cursor *c, HostExpr *out)
{
    HostExpr first;
    if (!ParseTerm(c, &first))
        return false;
    if (Peek(c).kind != kTokAmp) {
        *out = first;
        return true;
    }
    out->kind = kExprConcat;
    out->line = first.line;
    out->column = first.column;
    out->args.push_back(first);
    while (Peek(c).kind == kTokAmp) {
        Next(c);
        HostExpr more;
        if (!ParseTerm(c, &more))
            return false;
        out->args.push_back(more);
    }
    return true;
}

bool ExpectEnd(Cursor *c)
{
    if (Peek(c).kind != kTokEnd)
        return Fail(c, Peek(c), "expected the end of the line");
    return true;
}

bool ParseInteger(Cursor *c, long *value, const char *what)
{
    bool negative = false;
    if (Peek(c).kind == kTokMinus) {
        negative = true;
        Next(c);
    }
    const HostToken &t = Peek(c);
    if (t.kind != kTokNumber || t.text.find('.') != std::string::npos)
        return Fail(c, t, std::string("expected ") + what);
    *value = strtol(t.text.c_str(), nullptr, 10);
    if (negative)
        *value = -*value;
    Next(c);
    return true;
}

/* Step arguments may stand in [ ]: "Idle [ 3 ]" or "Idle 3". */
bool OpenStepBracket(Cursor *c)
{
    if (Peek(c).kind == kTokLBracket) {
        Next(c);
        return true;
    }
    return false;
}

bool CloseStepBracket(Cursor *c, bool bracketed)
{
    if (bracketed && !Expect(c, kTokRBracket, "]"))
        return false;
    return ExpectEnd(c);
}

bool ParseOptionalCount(Cursor *c, HostStatement *s, long fallback, const char *what)
{
    bool bracketed = OpenStepBracket(c);
    s->numbers[0] = fallback;
    s->numberCount = 1;
    if (Peek(c).kind == kTokNumber || Peek(c).kind == kTokMinus) {
        if (!ParseInteger(c, &s->numbers[0], what))
            return false;
    }
    return CloseStepBracket(c, bracketed);
}

bool ParseOneCalcStep(Cursor *c, HostStatement *s)
{
    bool bracketed = OpenStepBracket(c);
    HostExpr e;
    if (!ParseExpr(c, &e))
        return false;
    s->exprs.push_back(e);
    return CloseStepBracket(c, bracketed);
}

bool ParseSetVariable(Cursor *c, HostStatement *s)
{
    s->kind = kStmtSetVariable;
    bool bracketed = OpenStepBracket(c);
    if (Peek(c).kind != kTokVariable)
        return Fail(c, Peek(c), "expected a $variable");
    s->name = Next(c).text;
    if (!Expect(c, kTokSemicolon, "; before the value"))
        return false;
    if (IsWord(Peek(c), "Value") && Peek(c, 1).kind == kTokColon) {
        Next(c);
        Next(c);
    }
    HostExpr e;
    if (!ParseExpr(c, &e))
        return false;
    s->exprs.push_back(e);
    return CloseStepBracket(c, bracketed);
}

bool ParseExpect(Cursor *c, HostStatement *s, HostProgram *program)
{
    const HostToken &t = Peek(c);
    if (IsWord(t, "dialog") && Peek(c, 1).kind != kTokLParen) {
        Next(c);
        s->kind = kStmtExpectDialog;
        program->usesDialogs = true;
        return ParseOneCalcStep(c, s);
    }
    if (IsWord(t, "no") && IsWord(Peek(c, 1), "dialog")) {
        Next(c);
        Next(c);
        s->kind = kStmtExpectNoDialog;
        program->usesDialogs = true;
        return ExpectEnd(c);
    }
    if (IsWord(t, "leaks") && Peek(c, 1).kind != kTokLParen) {
        Next(c);
        s->kind = kStmtExpectLeaks;
        s->numberCount = 1;
        return ParseInteger(c, &s->numbers[0], "the number of leaks") && ExpectEnd(c);
    }
    s->kind = kStmtExpect;
    HostExpr actual, expected;
    if (t.kind == kTokLBracket) {
        Next(c);
        if (!ParseExpr(c, &actual) || !Expect(c, kTokSemicolon, "; between the calculation and the expected value") ||
            !ParseExpr(c, &expected) || !Expect(c, kTokRBracket, "]"))
            return false;
    } else {
        if (!ParseExpr(c, &actual) || !Expect(c, kTokEqualsEquals, "== between the two calculations") ||
            !ParseExpr(c, &expected))
            return false;
    }
    s->exprs.push_back(actual);
    s->exprs.push_back(expected);
    return ExpectEnd(c);
}

/* The name of a fault point, into s->name; its number, into s->numbers[2]. */
bool ParseFaultPoint(Cursor *c, HostStatement *s)
{
    if (Peek(c).kind != kTokName && Peek(c).kind != kTokString)
        return Fail(c, Peek(c), "expected the name of a platform call (for example FSRead)");
    const HostToken &t = Next(c);
    s->numbers[2] = PlatformFaultPointNamed(t.text.c_str());
    if (s->numbers[2] < 0)
        return Fail(c, t, "\"" + t.text + "\" is no platform call that can be made to fail");
    s->name = t.text;
    return true;
}

bool ParseFault(Cursor *c, HostStatement *s)
{
    if (IsWord(Peek(c), "clear")) {
        Next(c);
        s->kind = kStmtFaultClear;
        if ((Peek(c).kind == kTokName || Peek(c).kind == kTokString) && !ParseFaultPoint(c, s))
            return false;
        return ExpectEnd(c);
    }
    s->kind = kStmtFault;
    if (!ParseFaultPoint(c, s))
        return false;
    s->numberCount = 2;
    if (!ParseInteger(c, &s->numbers[0], "which call fails (1 = the next one)") ||
        !ParseInteger(c, &s->numbers[1], "the error number"))
        return false;
    if (IsWord(Peek(c), "always")) {
        Next(c);
        s->always = true;
    }
    return ExpectEnd(c);
}

bool ParseClock(Cursor *c, HostStatement *s)
{
    const HostToken &t = Peek(c);
    if (IsWord(t, "manual")) {
        Next(c);
        s->kind = kStmtClockManual;
        s->numberCount = 2;
        if (!ParseInteger(c, &s->numbers[0], "the start tick"))
            return false;
        if (Peek(c).kind == kTokNumber && !ParseInteger(c, &s->numbers[1], "the step"))
            return false;
        return ExpectEnd(c);
    }
    if (IsWord(t, "advance")) {
        Next(c);
        s->kind = kStmtClockAdvance;
        s->numberCount = 1;
        return ParseInteger(c, &s->numbers[0], "the ticks to advance") && ExpectEnd(c);
    }
    if (IsWord(t, "real")) {
        Next(c);
        s->kind = kStmtClockReal;
        return ExpectEnd(c);
    }
    return Fail(c, t, "expected manual, advance or real after clock");
}

bool ParseRaw(Cursor *c, HostStatement *s)
{
    s->kind = kStmtRaw;
    bool bracketed = OpenStepBracket(c);
    if (!ParseInteger(c, &s->numbers[0], "a selector number"))
        return false;
    s->numberCount = 1;
    while (s->numberCount < 3 && (Peek(c).kind == kTokNumber || Peek(c).kind == kTokMinus ||
                                  Peek(c).kind == kTokSemicolon)) {
        if (Peek(c).kind == kTokSemicolon)
            Next(c);
        if (!ParseInteger(c, &s->numbers[s->numberCount], "a number"))
            return false;
        s->numberCount++;
    }
    return CloseStepBracket(c, bracketed);
}

bool ParseAnswer(Cursor *c, HostStatement *s, HostProgram *program)
{
    program->usesDialogs = true;
    if (IsWord(Peek(c), "dialog")) {
        Next(c);
        s->kind = kStmtAnswerDialog;
        s->numberCount = 1;
        return ParseInteger(c, &s->numbers[0], "the button number (1 to 3)") && ExpectEnd(c);
    }
    if (IsWord(Peek(c), "file")) {
        Next(c);
        s->kind = kStmtAnswerFile;
        return ParseOneCalcStep(c, s);
    }
    return Fail(c, Peek(c), "expected dialog or file after answer");
}

/* One statement of a line already known not to open or close a Script block. */
bool ParseStatement(Cursor *c, HostStatement *s, HostProgram *program)
{
    const HostToken &t = Peek(c);
    s->line = c->line;
    s->column = t.column;
    if (IsWord(t, "Set") && IsWord(Peek(c, 1), "Variable")) {
        Next(c);
        Next(c);
        return ParseSetVariable(c, s);
    }
    if (t.kind == kTokVariable && Peek(c, 1).kind == kTokEquals) {
        s->kind = kStmtSetVariable;
        s->name = Next(c).text;
        Next(c);
        HostExpr e;
        if (!ParseExpr(c, &e))
            return false;
        s->exprs.push_back(e);
        return ExpectEnd(c);
    }
    if (IsWord(t, "Perform") && IsWord(Peek(c, 1), "Script")) {
        Next(c);
        Next(c);
        s->kind = kStmtPerformScript;
        return ParseOneCalcStep(c, s);
    }
    if (t.kind == kTokName && Peek(c, 1).kind != kTokLParen) {
        if (IsWord(t, "Show")) {
            Next(c);
            s->kind = kStmtShow;
            return ParseOneCalcStep(c, s);
        }
        if (IsWord(t, "Expect")) {
            Next(c);
            return ParseExpect(c, s, program);
        }
        if (IsWord(t, "Idle")) {
            Next(c);
            s->kind = kStmtIdle;
            return ParseOptionalCount(c, s, 1, "the number of idle passes");
        }
        if (IsWord(t, "Sleep")) {
            Next(c);
            s->kind = kStmtSleep;
            return ParseOptionalCount(c, s, 0, "milliseconds");
        }
        if (IsWord(t, "answer")) {
            Next(c);
            return ParseAnswer(c, s, program);
        }
        if (IsWord(t, "fault")) {
            Next(c);
            return ParseFault(c, s);
        }
        if (IsWord(t, "clock")) {
            Next(c);
            return ParseClock(c, s);
        }
        if (IsWord(t, "raw")) {
            Next(c);
            return ParseRaw(c, s);
        }
        return Fail(c, t, "unknown step \"" + t.text + "\" (a function call needs parentheses)");
    }
    s->kind = kStmtCalc;
    HostExpr e;
    if (!ParseExpr(c, &e))
        return false;
    s->exprs.push_back(e);
    return ExpectEnd(c);
}

}  // namespace

void HostParserBegin(HostParser *parser, const std::string &file, const HostPlugin *plugin, HostProgram *program)
{
    parser->file = file;
    parser->plugin = plugin;
    parser->program = program;
    parser->openScript = -1;
    parser->openScriptLine = 0;
    program->file = file;
}

bool HostParseLine(HostParser *parser, int line, const std::string &source, HostError *error)
{
    std::vector<HostToken> tokens;
    if (!HostLexLine(parser->file, line, source, &tokens, error))
        return false;
    if (tokens.size() == 1)
        return true;   /* blank or comment */
    Cursor c{&parser->file, line, &tokens, 0, parser->plugin, error, 0};
    HostProgram *program = parser->program;
    const HostToken &first = Peek(&c);
    if (IsWord(first, "Script") && Peek(&c, 1).kind == kTokString) {
        if (parser->openScript >= 0)
            return Fail(&c, first, "expected End Script before another Script (scripts do not nest)");
        Next(&c);
        std::string name = HostMacRomanToUTF8(Next(&c).text);
        if (!ExpectEnd(&c))
            return false;
        for (const HostScriptDef &def : program->scripts)
            if (def.name == name)
                return Fail(&c, first, "script \"" + name + "\" is already defined on line " +
                                           std::to_string(def.line));
        HostScriptDef def;
        def.name = name;
        def.line = line;
        program->scripts.push_back(def);
        parser->openScript = static_cast<int>(program->scripts.size()) - 1;
        parser->openScriptLine = line;
        return true;
    }
    if (IsWord(first, "End") && IsWord(Peek(&c, 1), "Script")) {
        if (parser->openScript < 0)
            return Fail(&c, first, "End Script without a Script \"name\" line before it");
        Next(&c);
        Next(&c);
        if (!ExpectEnd(&c))
            return false;
        parser->openScript = -1;
        return true;
    }
    HostStatement statement;
    if (!ParseStatement(&c, &statement, program))
        return false;
    if (parser->openScript >= 0)
        program->scripts[parser->openScript].body.push_back(statement);
    else
        program->main.push_back(statement);
    return true;
}

bool HostParserEnd(HostParser *parser, HostError *error)
{
    if (parser->openScript >= 0) {
        HostSetError(error, parser->file, parser->openScriptLine, 1,
                     "expected End Script for script \"" + parser->program->scripts[parser->openScript].name + "\"");
        return false;
    }
    return true;
}

bool HostParseProgram(const std::string &file, const std::string &source, const HostPlugin *plugin,
                      HostProgram *program, HostError *error)
{
    HostParser parser;
    HostParserBegin(&parser, file, plugin, program);
    size_t at = 0;
    int line = 1;
    if (source.compare(0, 3, "\xEF\xBB\xBF") == 0)
        at = 3;
    while (at <= source.size()) {
        size_t end = source.find('\n', at);
        if (end == std::string::npos)
            end = source.size();
        std::string text = source.substr(at, end - at);
        if (!text.empty() && text.back() == '\r')
            text.pop_back();
        if (!HostParseLine(&parser, line, text, error))
            return false;
        at = end + 1;
        line++;
    }
    return HostParserEnd(&parser, error);
}

bool HostParseCalculation(const std::string &file, int line, const std::string &source, const HostPlugin *plugin,
                          HostExpr *expr, HostError *error)
{
    std::vector<HostToken> tokens;
    if (!HostLexLine(file, line, source, &tokens, error))
        return false;
    Cursor c{&file, line, &tokens, 0, plugin, error, 0};
    return ParseExpr(&c, expr) && ExpectEnd(&c);
}
