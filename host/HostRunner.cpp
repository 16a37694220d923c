/*
 * HostRunner.cpp: runs script steps: printing calculations, variables, expectations
 * (a failed one is reported with file:line, expected and actual, and the run goes on),
 * host scripts by name, idle passes and sleeps, dialog answers and expectations, platform
 * faults, the test clock and raw plug-in calls.
 */
#include "host/HostLanguage.h"

#include <strings.h>

#include "platform/Faults.h"
#include "platform/Toolbox.h"

namespace {

const int kMaxScriptDepth = 32;

const std::string &FileOf(HostSession *session)
{
    static const std::string none = "-";
    return session->program ? session->program->file : none;
}

void ReportFailure(HostSession *session, const HostStatement &s, const std::string &what, const std::string &expected,
                   const std::string &actual)
{
    fflush(session->out);
    fprintf(session->err, "%s:%d: %s\n    expected: %s\n    actual:   %s\n", FileOf(session).c_str(), s.line,
            what.c_str(), expected.c_str(), actual.c_str());
    fflush(session->err);
    session->failures++;
}

bool Evaluate(HostSession *session, const HostExpr &expr, std::string *value)
{
    HostError error;
    if (HostEvaluate(session, expr, value, &error))
        return true;
    HostReportError(session, error);
    return false;
}

const HostScriptDef *FindScript(HostSession *session, const std::string &name)
{
    if (!session->program)
        return nullptr;
    for (const HostScriptDef &def : session->program->scripts)
        if (def.name == name)
            return &def;
    for (const HostScriptDef &def : session->program->scripts)
        if (strcasecmp(def.name.c_str(), name.c_str()) == 0)
            return &def;
    return nullptr;
}

void RunRaw(HostSession *session, const HostStatement &s)
{
    uint8_t selector = static_cast<uint8_t>(s.numbers[0]);
    int8_t parm1 = s.numberCount > 1 ? static_cast<int8_t>(s.numbers[1]) : 0;
    int32_t parm2 = s.numberCount > 2 ? static_cast<int32_t>(s.numbers[2]) : 0;
    int32_t answer;
    if (selector == kFMXT_External) {
        FMX_Handle argument = HostNewTextHandle(std::string());
        FMX_Handle result = HostNewTextHandle(std::string());
        HostCallRaw(session->plugin, selector, session->hostVersion, parm1, parm2, argument, result);
        HostSetVariable(session, "$$raw.text", HostHandleBytes(result));
        HostDisposeHandle(argument);
        HostDisposeHandle(result);
        answer = 0;
    } else {
        answer = HostCallRaw(session->plugin, selector, session->hostVersion, parm1, parm2, nullptr, nullptr);
    }
    HostSetVariable(session, "$$raw", std::to_string(answer));
}

}  // namespace

void HostReportError(HostSession *session, const HostError &error)
{
    fflush(session->out);
    fprintf(session->err, "%s\n", HostFormatError(error).c_str());
    fflush(session->err);
    session->errors++;
}

void HostRunStatement(HostSession *session, const HostStatement &s)
{
    std::string value, other;
    switch (s.kind) {
    case kStmtCalc:
        if (Evaluate(session, s.exprs[0], &value) && !(value.empty() && session->quietEmpty))
            fprintf(session->out, "%s\n", HostVisibleText(value).c_str());
        break;
    case kStmtShow:
        if (Evaluate(session, s.exprs[0], &value))
            fprintf(session->out, "%s\n", HostPlainText(value).c_str());
        break;
    case kStmtSetVariable:
        if (Evaluate(session, s.exprs[0], &value))
            HostSetVariable(session, s.name, value);
        break;
    case kStmtExpect:
        if (Evaluate(session, s.exprs[0], &value) && Evaluate(session, s.exprs[1], &other) && value != other)
            ReportFailure(session, s, "expectation failed", HostVisibleText(other), HostVisibleText(value));
        break;
    case kStmtPerformScript:
        if (Evaluate(session, s.exprs[0], &value))
            HostPerformScript(session, HostMacRomanToUTF8(value));
        break;
    case kStmtIdle:
        for (long i = 0; i < s.numbers[0]; i++)
            HostIdlePass(session);
        break;
    case kStmtSleep:
        HostSleep(session, s.numbers[0]);
        break;
    case kStmtExpectDialog:
        HostDialogsUseRecorder(session);
        HostDialogsEcho(session);
        if (Evaluate(session, s.exprs[0], &value) && !HostDialogsExpect(session, value, &other))
            ReportFailure(session, s, "dialog expectation failed", HostVisibleText(value), other);
        break;
    case kStmtExpectNoDialog:
        HostDialogsUseRecorder(session);
        HostDialogsEcho(session);
        if (!HostDialogsExpectNone(session, &other))
            ReportFailure(session, s, "dialog expectation failed", "no dialog", other);
        break;
    case kStmtAnswerDialog:
        HostDialogsUseRecorder(session);
        PlatformDialogQueueAnswer(static_cast<int16_t>(s.numbers[0]));
        break;
    case kStmtAnswerFile:
        HostDialogsUseRecorder(session);
        if (Evaluate(session, s.exprs[0], &value))
            PlatformDialogQueueFileAnswer(value.c_str());
        break;
    case kStmtFault:
        PlatformFaultSet(static_cast<PlatformFaultPoint>(s.numbers[2]), static_cast<int32_t>(s.numbers[0]),
                         static_cast<OSErr>(s.numbers[1]), s.always ? 1 : 0);
        break;
    case kStmtFaultClear:
        if (s.name.empty())
            PlatformFaultClearAll();
        else
            PlatformFaultClear(static_cast<PlatformFaultPoint>(s.numbers[2]));
        break;
    case kStmtClockManual:
        PlatformClockUseManual(static_cast<uint32_t>(s.numbers[0]), static_cast<uint32_t>(s.numbers[1]));
        break;
    case kStmtClockAdvance:
        PlatformClockAdvance(static_cast<uint32_t>(s.numbers[0]));
        break;
    case kStmtClockReal:
        PlatformClockUseReal();
        break;
    case kStmtRaw:
        RunRaw(session, s);
        break;
    case kStmtExpectLeaks:
        session->expectedLeaks = s.numbers[0];
        session->expectedLeaksLine = s.line;
        break;
    }
    HostDialogsEcho(session);
    fflush(session->out);
}

void HostRunStatements(HostSession *session, const std::vector<HostStatement> &statements)
{
    for (const HostStatement &s : statements)
        HostRunStatement(session, s);
}

void HostPerformScript(HostSession *session, const std::string &name)
{
    const HostScriptDef *def = FindScript(session, name);
    if (!def) {
        fprintf(session->out, "Script \"%s\" could not be found.\n", name.c_str());
        fflush(session->out);
        return;
    }
    if (session->depth >= kMaxScriptDepth) {
        HostError error;
        HostSetError(&error, FileOf(session), def->line, 0,
                     "script \"" + name + "\" not run: scripts are nested more than 32 deep");
        HostReportError(session, error);
        return;
    }
    session->depth++;
    session->locals.emplace_back();
    HostRunStatements(session, def->body);
    session->locals.pop_back();
    session->depth--;
}

int HostRunPendingScripts(HostSession *session)
{
    int count = 0;
    std::string name;
    while (HostEventsTakeScript(&name)) {
        HostPerformScript(session, HostMacRomanToUTF8(name));
        count++;
    }
    return count;
}

void HostCheckLeakExpectation(HostSession *session, long leaks)
{
    if (session->expectedLeaks < 0 || leaks == session->expectedLeaks)
        return;
    HostStatement where;
    where.line = session->expectedLeaksLine;
    ReportFailure(session, where, "leak expectation failed (after Shutdown)", std::to_string(session->expectedLeaks),
                  std::to_string(leaks));
}
