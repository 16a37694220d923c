/*
 * HostHelp.cpp: what fmhost's prompt tells about itself: the one-line banner, "help"
 * (the plug-in's functions with the synopses of the table of external functions, the
 * built-ins, the steps and the prompt's own commands), "help NAME" for one of them,
 * and the words that Tab completes.
 */
#include "host/HostLanguage.h"

#include <cctype>
#include <cstring>

#include "plugin/ExternalFunctionInfo.h"
#include "platform/Toolbox.h"

namespace {

struct HelpEntry {
    const char *word;       /* what a line starts with; help NAME and Tab complete it */
    const char *syntax;
    const char *summary;
};

const HelpEntry kBuiltins[] = {
    {"Char(", "Char(n)", "the character with Unicode number n"},
    {"Code(", "Code(text)", "the Unicode number of the first character (0 for empty text)"},
    {"Length(", "Length(text)", "the number of characters"},
    {"External(", "External(id ; text)", "calls plug-in function number id, named or not"},
};

const HelpEntry kSteps[] = {
    {"Show ", "Show [ CALC ]", "prints the plain text of a calculation"},
    {"Set Variable [ ", "Set Variable [ $x ; Value: CALC ]   or   $x = CALC", "sets a variable ($$x: shared)"},
    {"Expect [ ", "Expect [ CALC ; EXPECTED ]   or   expect CALC == EXPECTED",
     "checks a value; a failure makes the exit status 1"},
    {"Script \"", "Script \"Name\" ... End Script", "defines a host script (run by name, not here)"},
    {"Perform Script [ ", "Perform Script [ CALC ]", "runs the host script of that name now"},
    {"Idle", "Idle [ n ]", "n idle passes: Idle, event dispatch, the host scripts they asked for"},
    {"Sleep ", "Sleep [ ms ]", "runs the event loop for ms milliseconds"},
    {"answer dialog ", "answer dialog n", "the next dialog is answered with button n (1 to 3)"},
    {"answer file ", "answer file \"classic:path\"", "the next file dialog chooses this path (\"\" cancels)"},
    {"expect dialog ", "expect dialog CALC", "the next dialog not yet checked has exactly this text"},
    {"expect no dialog", "expect no dialog", "no dialog is left unchecked"},
    {"expect leaks ", "expect leaks n", "exactly n host blocks are left after Shutdown"},
    {"fault ", "fault NAME n ERROR [always]   or   fault clear [NAME]",
     "makes the nth call of a platform call fail (platform/FaultPoints.def)"},
    {"clock ", "clock manual T [STEP]   or   clock advance n   or   clock real", "controls TickCount"},
    {"raw ", "raw SELECTOR [; PARM1 [; PARM2]]", "sends any call selector; the answer is in $$raw"},
};

const HelpEntry kCommands[] = {
    {"help", "help [NAME]", "this list, or more on one function, built-in or step"},
    {"quit", "quit   or   exit", "ends the session (so does end of input)"},
};

std::string Lower(const std::string &text)
{
    std::string out = text;
    for (char &c : out)
        c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return out;
}

/* The word a completion or a help topic is matched against: the entry's word without
 * the text Tab adds after it ("[ ", "(", a blank, a quote). */
std::string BareWord(const char *word)
{
    std::string text = word;
    while (!text.empty() && strchr(" [(\"", text.back()))
        text.pop_back();
    return text;
}

/* "  syntax  summary", the summary on a line of its own under a long syntax. */
void PrintEntry(FILE *out, const HelpEntry &entry)
{
    if (strlen(entry.syntax) <= 34)
        fprintf(out, "  %-34s %s\n", entry.syntax, entry.summary);
    else
        fprintf(out, "  %s\n  %-34s %s\n", entry.syntax, "", entry.summary);
}

void PrintEntries(FILE *out, const char *title, const HelpEntry *entries, size_t count)
{
    fprintf(out, "%s\n", title);
    for (size_t i = 0; i < count; i++)
        PrintEntry(out, entries[i]);
}

void PrintFunction(FILE *out, const HostPlugin *plugin, int id)
{
    char synopsis[kSynopsisSize];
    const ExternalFunctionInfo *info = FindExternalFunctionByName(plugin->names[id].c_str());
    if (info && info->id == id && GetExternalFunctionSynopsis(id, synopsis, sizeof synopsis) == 0)
        fprintf(out, "  %2d %s\n", id, HostMacRomanToUTF8(synopsis).c_str());
    else
        fprintf(out, "  %2d %s\n", id, HostMacRomanToUTF8(plugin->names[id]).c_str());
}

bool HelpOnFunction(FILE *out, const HostPlugin *plugin, const std::string &topic)
{
    int id = HostFunctionId(plugin, topic);
    if (id < 0)
        return false;
    PrintFunction(out, plugin, id);
    const ExternalFunctionInfo *info = GetExternalFunctionInfo(id);
    if (info && plugin->names[id] == info->name) {
        fprintf(out, "     in a calculation: %s(\"%s\") or External(%d ; \"%s\")\n", info->name, info->args, id,
                info->args);
        if (info->argLimit > 1)
            fprintf(out, "     the argument is cut at %d characters\n", info->argLimit - 1);
        fprintf(out, "     more: man 7 tpx1, or docs/functions.md\n");
    }
    return true;
}

bool HelpOnEntries(FILE *out, const std::string &topic, const HelpEntry *entries, size_t count)
{
    bool found = false;
    std::string wanted = Lower(topic);
    for (size_t i = 0; i < count; i++) {
        std::string word = Lower(BareWord(entries[i].word));
        if (word == wanted || (word.compare(0, wanted.size(), wanted) == 0 && word[wanted.size()] == ' ')) {
            PrintEntry(out, entries[i]);
            found = true;
        }
    }
    return found;
}

}  // namespace

void HostPrintBanner(FILE *out, const HostPlugin *plugin, const char *hostVersion)
{
    Str255 description;
    description[0] = 0;
    int16_t previous = CurResFile();
    UseResFile(plugin->resFileRef);
    GetIndString(description, 128, 2);
    UseResFile(previous);
    std::string name = HostMacRomanToUTF8(std::string(reinterpret_cast<const char *>(description + 1), description[0]));
    fprintf(out, "%s, plug-in %s%s%s: \"help\" lists its functions and the steps, \"help NAME\" tells more, "
                 "Tab completes, \"quit\" leaves\n",
            hostVersion, plugin->path.c_str(), name.empty() ? "" : " ", name.empty() ? "" : ("(" + name + ")").c_str());
}

void HostPrintHelp(FILE *out, const HostPlugin *plugin, const std::string &topicText)
{
    std::string topic = topicText;
    while (!topic.empty() && (topic.back() == '(' || topic.back() == ')' || topic.back() == ' '))
        topic.pop_back();
    if (topic.empty()) {
        fprintf(out, "Functions of the plug-in (NAME(argument) - what it does; fields separated by |):\n");
        for (int id = 0; id < kFunctionCount; id++)
            if (!plugin->names[id].empty())
                PrintFunction(out, plugin, id);
        PrintEntries(out, "Built-ins (parameters separated by ;):", kBuiltins, sizeof kBuiltins / sizeof kBuiltins[0]);
        PrintEntries(out, "Steps (a line without a step word is a calculation; its result is printed):", kSteps,
                     sizeof kSteps / sizeof kSteps[0]);
        PrintEntries(out, "At the prompt:", kCommands, sizeof kCommands / sizeof kCommands[0]);
        return;
    }
    if (HelpOnFunction(out, plugin, topic) ||
        HelpOnEntries(out, topic, kBuiltins, sizeof kBuiltins / sizeof kBuiltins[0]) ||
        HelpOnEntries(out, topic, kSteps, sizeof kSteps / sizeof kSteps[0]) ||
        HelpOnEntries(out, topic, kCommands, sizeof kCommands / sizeof kCommands[0]))
        return;
    fprintf(out, "no function, built-in or step is called \"%s\"; \"help\" lists them\n", topic.c_str());
}

std::vector<std::string> HostCompletions(const HostPlugin *plugin, const std::string &before, const std::string &word)
{
    std::vector<std::string> words;
    std::string typed = Lower(before + word);
    auto offer = [&](const std::string &candidate, size_t skip) {
        if (candidate.size() > skip && Lower(candidate).compare(0, typed.size(), typed) == 0)
            words.push_back(candidate.substr(skip));
    };
    /* A step's later words complete while only the step's own words stand before them. */
    bool stepWords = before.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ ") ==
                     std::string::npos;
    if (stepWords) {
        for (const HelpEntry &entry : kSteps)
            offer(entry.word, before.size());
        offer("End Script", before.size());
        if (before.empty())
            for (const HelpEntry &entry : kCommands)
                offer(BareWord(entry.word), 0);
    }
    typed = Lower(word);
    for (int id = 0; id < kFunctionCount; id++)
        if (!plugin->names[id].empty())
            offer(HostMacRomanToUTF8(plugin->names[id]) + "(", 0);
    for (const HelpEntry &entry : kBuiltins)
        offer(entry.word, 0);
    return words;
}
