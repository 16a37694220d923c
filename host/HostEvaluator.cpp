/*
 * HostEvaluator.cpp: evaluates calculations. Values are Mac Roman texts; numbers are
 * kept as the text they were written as. $variables belong to the running script,
 * $$variables to the whole session; an unset variable is empty, as in FileMaker. The
 * plug-in's functions are called through an External call with host-made handles.
 */
#include "host/HostLanguage.h"

#include <cctype>
#include <cstdlib>

namespace {

std::string VariableKey(const std::string &name)
{
    std::string key = name;
    for (char &ch : key)
        ch = static_cast<char>(tolower(static_cast<unsigned char>(ch)));
    return key;
}

/* Reads a whole number from a value, as FileMaker's GetAsNumber would for plain digits. */
bool ValueAsInteger(const std::string &value, long *number)
{
    const char *start = value.c_str();
    while (*start == ' ')
        start++;
    char *end = nullptr;
    long n = strtol(start, &end, 10);
    if (end == start)
        return false;
    while (*end == ' ')
        end++;
    if (*end != '\0' && *end != '.')
        return false;
    *number = n;
    return true;
}

bool EvaluateBuiltin(HostSession *session, const HostExpr &expr, const std::vector<std::string> &args,
                     std::string *value, HostError *error)
{
    const std::string &file = session->program ? session->program->file : std::string("-");
    long n = 0;
    switch (expr.function) {
    case kBuiltinChar: {
        if (!ValueAsInteger(args[0], &n) || n < 0 || n > 0x10FFFF) {
            HostSetError(error, file, expr.line, expr.column,
                         "Char needs a character number from 0 to 1114111, not " + HostVisibleText(args[0]));
            return false;
        }
        if (n == 0) {
            value->clear();
            return true;
        }
        int bad;
        long badCp;
        if (!HostUTF8ToMacRoman(HostEncodeUTF8(n), value, &bad, &badCp)) {
            char buf[24];
            snprintf(buf, sizeof buf, "U+%04lX", n);
            HostSetError(error, file, expr.line, expr.column,
                         std::string("Char(") + std::to_string(n) + "): the character " + buf +
                             " has no Mac Roman form");
            return false;
        }
        return true;
    }
    case kBuiltinCode: {
        if (args[0].empty()) {
            *value = "0";
            return true;
        }
        std::string utf8 = HostMacRomanToUTF8(args[0].substr(0, 1));
        int length;
        long cp = utf8.empty() ? 0 : HostDecodeUTF8(utf8, 0, &length);
        *value = std::to_string(cp < 0 ? 0 : cp);
        return true;
    }
    case kBuiltinLength:
        *value = std::to_string(args[0].size());
        return true;
    case kBuiltinExternal:
        if (!ValueAsInteger(args[0], &n)) {
            HostSetError(error, file, expr.line, expr.column,
                         "External needs a function number, not " + HostVisibleText(args[0]));
            return false;
        }
        *value = HostCallExternal(session->plugin, static_cast<int32_t>(n), args[1]);
        return true;
    }
    HostSetError(error, file, expr.line, expr.column, "unknown built-in function");
    return false;
}

}  // namespace

void HostSessionBegin(HostSession *session, HostPlugin *plugin, HostProgram *program)
{
    session->plugin = plugin;
    session->program = program;
    session->locals.clear();
    session->locals.emplace_back();
}

bool HostEvaluate(HostSession *session, const HostExpr &expr, std::string *value, HostError *error)
{
    switch (expr.kind) {
    case kExprText:
        *value = expr.text;
        return true;
    case kExprVariable: {
        bool global = expr.text.compare(0, 2, "$$") == 0;
        const std::map<std::string, std::string> &scope =
            global || session->locals.empty() ? session->globals : session->locals.back();
        auto it = scope.find(VariableKey(expr.text));
        *value = it == scope.end() ? std::string() : it->second;
        return true;
    }
    case kExprConcat: {
        std::string joined;
        for (const HostExpr &part : expr.args) {
            std::string piece;
            if (!HostEvaluate(session, part, &piece, error))
                return false;
            joined += piece;
        }
        *value = joined;
        return true;
    }
    case kExprBuiltin:
    case kExprPluginCall: {
        std::vector<std::string> args;
        for (const HostExpr &arg : expr.args) {
            std::string v;
            if (!HostEvaluate(session, arg, &v, error))
                return false;
            args.push_back(v);
        }
        if (expr.kind == kExprBuiltin)
            return EvaluateBuiltin(session, expr, args, value, error);
        *value = HostCallExternal(session->plugin, expr.function, args.empty() ? std::string() : args[0]);
        return true;
    }
    }
    return false;
}

void HostSetVariable(HostSession *session, const std::string &name, const std::string &value)
{
    bool global = name.compare(0, 2, "$$") == 0;
    if (global || session->locals.empty())
        session->globals[VariableKey(name)] = value;
    else
        session->locals.back()[VariableKey(name)] = value;
}
