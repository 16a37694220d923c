/*
 * HostInteractive.cpp: fmhost's prompt. One calculation or step per line (a Script
 * block may span lines), "help", "quit"; with a banner, line editing, history and Tab
 * completion from libedit when standard input is a terminal, and plain line reading
 * otherwise. While it waits for input the host keeps sending Idle on its cadence and
 * dispatching events.
 */
#include "host/HostLanguage.h"

#include <editline/readline.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace {

struct Prompt {
    HostSession *session;
    HostParser parser;
    HostProgram *program;
    int line = 0;
    bool done = false;
};

Prompt *gPrompt = nullptr;

const char *PromptText(const Prompt *p)
{
    return p->parser.openScript >= 0 ? "...> " : "fmhost> ";
}

void HandleLine(Prompt *p, const std::string &text)
{
    p->line++;
    std::string trimmed = text;
    while (!trimmed.empty() && (trimmed.back() == ' ' || trimmed.back() == '\r'))
        trimmed.pop_back();
    size_t first = trimmed.find_first_not_of(' ');
    std::string command = first == std::string::npos ? std::string() : trimmed.substr(first);
    if (p->parser.openScript < 0 && (command == "quit" || command == "exit")) {
        p->done = true;
        return;
    }
    if (p->parser.openScript < 0 && (command == "help" || command.compare(0, 5, "help ") == 0)) {
        HostPrintHelp(p->session->out, p->session->plugin, command.size() > 5 ? command.substr(5) : "");
        fflush(p->session->out);
        return;
    }
    size_t before = p->program->main.size();
    HostError error;
    if (!HostParseLine(&p->parser, p->line, text, &error)) {
        fflush(p->session->out);
        fprintf(p->session->err, "%s\n", HostFormatError(error).c_str());
        fflush(p->session->err);
        return;
    }
    std::vector<HostStatement> fresh(p->program->main.begin() + static_cast<long>(before), p->program->main.end());
    p->program->main.clear();
    HostRunStatements(p->session, fresh);
}

void ReadlineLine(char *line)
{
    if (!line) {
        gPrompt->done = true;
        return;
    }
    if (*line)
        add_history(line);
    HandleLine(gPrompt, line);
    free(line);
    if (!gPrompt->done) {
        rl_callback_handler_remove();
        rl_callback_handler_install(PromptText(gPrompt), ReadlineLine);
    }
}

/* Tab: the words HostCompletions offers for the word that starts at gWordStart. */
int gWordStart = 0;

char *NextCompletion(const char *text, int state)
{
    static std::vector<std::string> words;
    static size_t next = 0;
    if (state == 0) {
        std::string before(rl_line_buffer, static_cast<size_t>(gWordStart));
        size_t first = before.find_first_not_of(' ');
        before.erase(0, first == std::string::npos ? before.size() : first);
        words = HostCompletions(gPrompt->session->plugin, before, text);
        next = 0;
    }
    return next < words.size() ? strdup(words[next++].c_str()) : nullptr;
}

char **Complete(const char *text, int start, int end)
{
    rl_attempted_completion_over = 1;   /* never file names */
    gWordStart = start;
    return rl_completion_matches(text, NextCompletion);
}

std::string HistoryPath(void)
{
    const char *home = getenv("HOME");
    return home && *home ? std::string(home) + "/.fmhost_history" : std::string();
}

void RunTerminal(Prompt *p, const char *hostVersion)
{
    HostPrintBanner(p->session->out, p->session->plugin, hostVersion);
    fflush(p->session->out);
    rl_readline_name = "fmhost";
    rl_attempted_completion_function = Complete;
    rl_completion_append_character = 0;
    std::string history = HistoryPath();
    using_history();
    if (!history.empty())
        read_history(history.c_str());
    gPrompt = p;
    rl_callback_handler_install(PromptText(p), ReadlineLine);
    while (!p->done) {
        HostWaitForInput(p->session, STDIN_FILENO);
        rl_callback_read_char();
    }
    rl_callback_handler_remove();
    gPrompt = nullptr;
    fputc('\n', stdout);
    if (!history.empty())
        write_history(history.c_str());
}

void RunPipe(Prompt *p)
{
    std::string pending;
    char buffer[4096];
    while (!p->done) {
        size_t newline = pending.find('\n');
        if (newline != std::string::npos) {
            std::string line = pending.substr(0, newline);
            pending.erase(0, newline + 1);
            HandleLine(p, line);
            continue;
        }
        HostWaitForInput(p->session, STDIN_FILENO);
        ssize_t n = read(STDIN_FILENO, buffer, sizeof buffer);
        if (n <= 0) {
            if (!pending.empty())
                HandleLine(p, pending);
            break;
        }
        pending.append(buffer, static_cast<size_t>(n));
    }
}

}  // namespace

int HostRunInteractive(HostSession *session, const char *hostVersion)
{
    Prompt p;
    p.session = session;
    p.program = session->program;
    HostParserBegin(&p.parser, "stdin", session->plugin, p.program);
    if (isatty(STDIN_FILENO))
        RunTerminal(&p, hostVersion);
    else
        RunPipe(&p);
    HostError error;
    if (!HostParserEnd(&p.parser, &error))
        fprintf(session->err, "%s\n", HostFormatError(error).c_str());
    return 0;
}
