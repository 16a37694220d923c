/*
 * VeskRules.cpp: the rule files of the stand-in partner. One rule a line:
 *   on ID send [to SIG] KEY=VALUE ...
 * ID is a message id (1 to 4 characters, blank-padded) or "*" for any; the message goes
 * back to the sender unless "to SIG" names another application. A key is 1 to 4
 * characters up to "=" (so "NUM =1" sets "NUM "); a value runs to the next blank or is
 * quoted ("..."); \t \r \n \\ \" are escapes; a value "$KEY" copies the incoming KEY.
 * Blank lines and lines starting with "#" are ignored. docs/vesk.md has examples.
 */
#include "Vesk.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace {

void SkipBlanks(const std::string &line, size_t *pos)
{
    while (*pos < line.size() && (line[*pos] == ' ' || line[*pos] == '\t')) (*pos)++;
}

std::string Word(const std::string &line, size_t *pos)
{
    SkipBlanks(line, pos);
    size_t start = *pos;
    while (*pos < line.size() && line[*pos] != ' ' && line[*pos] != '\t') (*pos)++;
    return line.substr(start, *pos - start);
}

bool Value(const std::string &line, size_t *pos, std::string *value)
{
    std::string raw;
    if (*pos < line.size() && line[*pos] == '"') {
        (*pos)++;
        while (*pos < line.size() && line[*pos] != '"') {
            if (line[*pos] == '\\' && *pos + 1 < line.size()) raw += line[(*pos)++];
            raw += line[(*pos)++];
        }
        if (*pos >= line.size()) return false;
        (*pos)++;
    } else {
        while (*pos < line.size() && line[*pos] != ' ' && line[*pos] != '\t') {
            if (line[*pos] == '\\' && *pos + 1 < line.size()) raw += line[(*pos)++];
            raw += line[(*pos)++];
        }
    }
    *value = UnescapeText(raw);
    return true;
}

} // namespace

bool ParseRuleLine(const std::string &text, int number, VeskRule *rule, bool *isRule, std::string *error)
{
    std::string line = text;
    while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) line.pop_back();
    size_t pos = 0;
    SkipBlanks(line, &pos);
    *isRule = false;
    if (pos >= line.size() || line[pos] == '#') return true;
    *isRule = true;
    rule->line = number;
    rule->to = 0;
    rule->send.clear();
    std::string fail = "line " + std::to_string(number) + ": ";
    if (Word(line, &pos) != "on") {
        *error = fail + "a rule starts with \"on\"";
        return false;
    }
    std::string id = Word(line, &pos);
    if (id == "*") rule->onMessage = typeWildCard;
    else if (!ParseCode(id, &rule->onMessage)) {
        *error = fail + "\"" + id + "\" is not a message id";
        return false;
    }
    if (Word(line, &pos) != "send") {
        *error = fail + "expected \"send\" after the message id";
        return false;
    }
    size_t save = pos;
    if (Word(line, &pos) == "to") {
        size_t after = pos;
        SkipBlanks(line, &after);
        if (after < line.size() && line[after] != '=') {
            std::string to = Word(line, &pos);
            if (!ParseCode(to, &rule->to)) {
                *error = fail + "\"" + to + "\" is not a signature";
                return false;
            }
            save = pos;
        }
    }
    pos = save;
    for (;;) {
        SkipBlanks(line, &pos);
        if (pos >= line.size()) break;
        size_t equals = line.find('=', pos);
        VeskParam param;
        if (equals == std::string::npos || !ParseCode(line.substr(pos, equals - pos), &param.keyword)) {
            *error = fail + "expected KEY=VALUE at \"" + line.substr(pos) + "\"";
            return false;
        }
        pos = equals + 1;
        std::string value;
        if (!Value(line, &pos, &value)) {
            *error = fail + "a quoted value is not closed";
            return false;
        }
        param.type = typeChar;
        param.data = ToMacRoman(value);
        rule->send.push_back(param);
    }
    if (rule->send.empty()) {
        *error = fail + "the rule sends nothing";
        return false;
    }
    return true;
}

bool ReadRules(const char *path, std::vector<VeskRule> *rules, std::string *error)
{
    std::ifstream in(path);
    if (!in) {
        *error = std::string("cannot read it: ") + strerror(errno);
        return false;
    }
    std::string line;
    int number = 0;
    while (std::getline(in, line)) {
        number++;
        VeskRule rule;
        bool isRule;
        if (!ParseRuleLine(line, number, &rule, &isRule, error)) return false;
        if (isRule) rules->push_back(rule);
    }
    return true;
}
