/*
 * MdToRoff.cpp: the project's markdown subset as a man page (the man macros, no
 * preprocessor). Headings become .SH/.SS, paragraphs .PP, list items .IP (nested lists
 * indented with .RS), code blocks .nf in an indented block, table rows .TP entries (the
 * first cell the tag, the second the text, any further cell "Header: text"). Text is
 * escaped for roff; characters outside ASCII become \[uXXXX].
 */
#include "MdMan.h"

#include <cctype>
#include <cstdio>
#include <vector>

namespace {

struct Converter {
    std::vector<std::string> lines;
    std::vector<size_t> origin;        /* each line's number in the document, from 0 */
    size_t at = 0;
    std::string out;
    std::string error;
    const ManPage *page = nullptr;
    std::vector<size_t> listIndents;   /* the indentation of each open list level */
};

bool Fail(Converter *c, size_t line, const std::string &message)
{
    if (c->error.empty()) c->error = c->page->source + ":" + std::to_string(c->origin[line] + 1) + ": " + message;
    return false;
}

size_t Indent(const std::string &line)
{
    size_t n = 0;
    while (n < line.size() && line[n] == ' ') n++;
    return n;
}

bool Blank(const std::string &line)
{
    return Indent(line) == line.size();
}

/* One character of text or code (UTF-8 decoded) in roff. */
void AppendEscaped(std::string *out, const std::string &text, size_t *i, bool code)
{
    unsigned char c = (unsigned char)text[*i];
    if (c == '\\') *out += "\\e";
    else if (c == '-' && code) *out += "\\-";
    else if (c < 0x80) *out += (char)c;
    else {
        int extra = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : 1;
        unsigned long cp = c & (0x3F >> extra);
        for (int k = 0; k < extra && *i + 1 < text.size(); k++) cp = cp << 6 | ((unsigned char)text[++*i] & 0x3F);
        char escape[16];
        snprintf(escape, sizeof escape, "\\[u%04lX]", cp);
        *out += escape;
    }
}

std::string EscapeCode(const std::string &text)
{
    std::string out;
    for (size_t i = 0; i < text.size(); i++) AppendEscaped(&out, text, &i, true);
    return out;
}

/* The man page a link to one of the project's documents stands for. */
std::string ManReference(const std::string &url)
{
    static const char *const pages[][2] = {
        {"fmhost.md", "\\fBfmhost\\fR(1)"}, {"vesk.md", "\\fBvesk\\fR(1)"}, {"functions.md", "\\fBtpx1\\fR(7)"}};
    std::string base = url.substr(url.rfind('/') == std::string::npos ? 0 : url.rfind('/') + 1);
    for (const auto &page : pages)
        if (base == page[0]) return page[1];
    return "";
}

/* "[label](url)" starts at i. */
bool IsLink(const std::string &text, size_t i)
{
    size_t close = text.find(']', i);
    return close != std::string::npos && text.compare(close, 2, "](") == 0 && text.find(')', close) != std::string::npos;
}

bool Inline(Converter *c, size_t line, const std::string &text, std::string *out)
{
    for (size_t i = 0; i < text.size(); i++) {
        char ch = text[i];
        if (ch == '\\' && i + 1 < text.size() && ispunct((unsigned char)text[i + 1])) {
            ++i;
            AppendEscaped(out, text, &i, false);
        } else if (ch == '`') {
            size_t end = text.find('`', i + 1);
            if (end == std::string::npos) return Fail(c, line, "a `code` span is not closed");
            *out += "\\fB" + EscapeCode(text.substr(i + 1, end - i - 1)) + "\\fR";
            i = end;
        } else if (ch == '*' && text.compare(i, 2, "**") == 0) {
            size_t end = text.find("**", i + 2);
            if (end == std::string::npos) return Fail(c, line, "a **bold** span is not closed");
            std::string inner;
            if (!Inline(c, line, text.substr(i + 2, end - i - 2), &inner)) return false;
            *out += "\\fB" + inner + "\\fR";
            i = end + 1;
        } else if (ch == '*' && i + 1 < text.size() && text[i + 1] != ' ' && text.find('*', i + 1) != std::string::npos) {
            size_t end = text.find('*', i + 1);
            std::string inner;
            if (!Inline(c, line, text.substr(i + 1, end - i - 1), &inner)) return false;
            *out += "\\fI" + inner + "\\fR";
            i = end;
        } else if (ch == '[' && IsLink(text, i)) {
            size_t middle = text.find("](", i), end = text.find(')', middle);
            std::string label = text.substr(i + 1, middle - i - 1), url = text.substr(middle + 2, end - middle - 2);
            std::string rendered, reference = ManReference(url);
            if (!Inline(c, line, label, &rendered)) return false;
            if (!reference.empty()) *out += label == url || label == "`" + url + "`" ? reference : rendered + " (" + reference + ")";
            else if (url.compare(0, 4, "http") == 0) *out += rendered + " <" + EscapeCode(url) + ">";
            else *out += rendered;
            i = end;
        } else {
            AppendEscaped(out, text, &i, false);
        }
    }
    return true;
}

/* A text line for roff: one that starts with a control character is protected. */
void EmitLine(Converter *c, const std::string &text)
{
    if (!text.empty() && (text[0] == '.' || text[0] == '\'')) c->out += "\\&";
    c->out += text;
    c->out += '\n';
}

bool EmitText(Converter *c, size_t line, const std::string &markdown)
{
    std::string roff;
    if (!Inline(c, line, markdown, &roff)) return false;
    EmitLine(c, roff);
    return true;
}

/* A macro line's argument: quotes would split it into arguments. */
std::string MacroArgument(std::string roff)
{
    std::string out;
    for (char ch : roff) out += ch == '"' ? std::string("\\(dq") : std::string(1, ch);
    return out;
}

void CloseLists(Converter *c, size_t downTo)
{
    while (c->listIndents.size() > downTo) {
        c->listIndents.pop_back();
        if (!c->listIndents.empty()) c->out += ".RE\n";
    }
}

bool IsListItem(const std::string &line, size_t *markerLength, std::string *tag)
{
    size_t i = Indent(line);
    if (line.compare(i, 2, "- ") == 0) {
        *markerLength = i + 2;
        *tag = "\\(bu 2";
        return true;
    }
    size_t digits = i;
    while (digits < line.size() && isdigit((unsigned char)line[digits])) digits++;
    if (digits > i && line.compare(digits, 2, ". ") == 0) {
        *markerLength = digits + 2;
        *tag = line.substr(i, digits - i + 1) + " 4";
        return true;
    }
    return false;
}

bool IsBlockStart(const std::string &line)
{
    size_t marker;
    std::string tag;
    return line.compare(0, 1, "#") == 0 || line.compare(0, 1, "|") == 0 || line.compare(0, 3, "```") == 0 ||
           IsListItem(line, &marker, &tag);
}

void EmitCode(Converter *c, const std::vector<std::string> &code)
{
    c->out += c->listIndents.empty() ? ".PP\n" : ".IP \"\" 2\n";
    c->out += ".RS 4\n.nf\n";
    for (const std::string &line : code) EmitLine(c, EscapeCode(line));
    c->out += ".fi\n.RE\n";
}

bool Heading(Converter *c)
{
    const std::string &line = c->lines[c->at];
    size_t level = 0;
    while (level < line.size() && line[level] == '#') level++;
    if (level > 3 || line.compare(level, 1, " ") != 0) return Fail(c, c->at, "headings go from # to ###, a blank after");
    if (level == 1) return Fail(c, c->at, "only the first line is a # title");
    CloseLists(c, 0);
    std::string text = line.substr(level + 1), roff;
    if (level == 2) {
        /* Section headings in capitals, as man pages have them; code keeps its case. */
        bool inCode = false;
        for (char &ch : text) {
            if (ch == '`') inCode = !inCode;
            else if (!inCode) ch = (char)toupper((unsigned char)ch);
        }
    }
    if (!Inline(c, c->at, text, &roff)) return false;
    c->out += (level == 2 ? ".SH " : ".SS ") + MacroArgument(roff) + "\n";
    c->at++;
    return true;
}

std::vector<std::string> TableCells(const std::string &line)
{
    std::vector<std::string> cells;
    std::string cell;
    for (size_t i = 1; i < line.size(); i++) {
        if (line[i] == '\\' && i + 1 < line.size() && line[i + 1] == '|') {
            cell += '|';   /* an escaped bar, also inside `code` */
            i++;
        } else if (line[i] == '|') {
            size_t a = cell.find_first_not_of(' '), b = cell.find_last_not_of(' ');
            cells.push_back(a == std::string::npos ? "" : cell.substr(a, b - a + 1));
            cell.clear();
        } else {
            cell += line[i];
        }
    }
    return cells;
}

bool Table(Converter *c)
{
    CloseLists(c, 0);
    size_t first = c->at;
    std::vector<std::string> header = TableCells(c->lines[c->at++]);
    if (c->at >= c->lines.size() || c->lines[c->at].find("---") == std::string::npos)
        return Fail(c, first, "a table's second line is its |---| rule");
    c->at++;
    c->out += ".PP\n";
    for (; c->at < c->lines.size() && c->lines[c->at].compare(0, 1, "|") == 0; c->at++) {
        std::vector<std::string> cells = TableCells(c->lines[c->at]);
        if (cells.size() != header.size()) return Fail(c, c->at, "the row has another number of cells than the header");
        std::string tag;
        if (!Inline(c, c->at, cells[0], &tag)) return false;
        c->out += ".TP\n";
        EmitLine(c, tag.empty() ? "\\&" : tag);
        for (size_t k = 1; k < cells.size(); k++) {
            if (cells[k].empty()) continue;
            if (k > 1) c->out += ".br\n";
            std::string text = k > 1 && !header[k].empty() ? header[k] + ": " + cells[k] : cells[k];
            if (!EmitText(c, c->at, text)) return false;
        }
    }
    return true;
}

bool ListItem(Converter *c)
{
    size_t marker;
    std::string tag;
    const std::string &first = c->lines[c->at];
    IsListItem(first, &marker, &tag);
    size_t indent = Indent(first);
    while (!c->listIndents.empty() && c->listIndents.back() > indent) CloseLists(c, c->listIndents.size() - 1);
    if (c->listIndents.empty() || c->listIndents.back() < indent) {
        if (!c->listIndents.empty()) c->out += ".RS 2\n";
        else c->out += ".PP\n";
        c->listIndents.push_back(indent);
    }
    size_t line = c->at;
    std::string text = first.substr(marker);
    for (c->at++; c->at < c->lines.size(); c->at++) {
        const std::string &next = c->lines[c->at];
        size_t m;
        std::string t;
        if (Blank(next) || IsListItem(next, &m, &t) || Indent(next) < marker || IsBlockStart(next.substr(Indent(next))))
            break;
        text += " " + next.substr(Indent(next));
    }
    c->out += ".IP " + tag + "\n";
    return EmitText(c, line, text);
}

bool Paragraph(Converter *c)
{
    size_t line = c->at;
    std::string text;
    for (; c->at < c->lines.size() && !Blank(c->lines[c->at]) && (c->at == line || !IsBlockStart(c->lines[c->at])); c->at++)
        text += (text.empty() ? "" : " ") + c->lines[c->at].substr(Indent(c->lines[c->at]));
    c->out += c->listIndents.empty() ? ".PP\n" : ".IP \"\" 2\n";
    return EmitText(c, line, text);
}

bool Block(Converter *c)
{
    const std::string &line = c->lines[c->at];
    if (line.compare(0, 3, "```") == 0) {
        std::vector<std::string> code;
        size_t start = c->at++;
        while (c->at < c->lines.size() && c->lines[c->at].compare(0, 3, "```") != 0) code.push_back(c->lines[c->at++]);
        if (c->at++ >= c->lines.size()) return Fail(c, start, "a ``` block is not closed");
        EmitCode(c, code);
        return true;
    }
    size_t marker;
    std::string tag;
    if (IsListItem(line, &marker, &tag)) return ListItem(c);
    size_t indent = Indent(line);
    size_t codeIndent = (c->listIndents.empty() ? 0 : c->listIndents.back() + 2) + 4;
    if (indent >= codeIndent) {
        std::vector<std::string> code;
        while (c->at < c->lines.size() && (Blank(c->lines[c->at]) || Indent(c->lines[c->at]) >= codeIndent))
            code.push_back(Blank(c->lines[c->at]) ? "" : c->lines[c->at].substr(codeIndent)), c->at++;
        while (!code.empty() && code.back().empty()) code.pop_back();
        EmitCode(c, code);
        return true;
    }
    if (indent == 0 && !c->listIndents.empty()) CloseLists(c, 0);
    if (line[0] == '#') return Heading(c);
    if (line[0] == '|') return Table(c);
    return Paragraph(c);
}

/* The order of a man page: the title (NAME), a "## Synopsis" section wherever the
 * document has it, then what precedes the first other section as the DESCRIPTION. */
void ArrangeSections(Converter *c)
{
    const std::vector<std::string> &lines = c->lines;
    size_t synopsis = 0, end = lines.size(), intro = 1;
    for (size_t i = 1; i < lines.size(); i++) {
        if (lines[i].compare(0, 3, "## ") != 0) continue;
        if (synopsis && end == lines.size()) end = i;
        if (lines[i] == "## Synopsis") synopsis = i;
    }
    std::vector<size_t> order{0};
    for (size_t i = synopsis; synopsis && i < end; i++) order.push_back(i);
    while (intro < lines.size() && Blank(lines[intro])) intro++;
    bool describe = intro < lines.size() && lines[intro].compare(0, 3, "## ") != 0;
    std::vector<std::string> arranged;
    c->origin.clear();
    for (size_t i = 1; i < lines.size(); i++)
        if (!synopsis || i < synopsis || i >= end) order.push_back(i);
    for (size_t i : order) {
        if (describe && i == intro) {
            arranged.push_back("## Description");
            c->origin.push_back(i);
        }
        arranged.push_back(lines[i]);
        c->origin.push_back(i);
    }
    c->lines = arranged;
}

}  // namespace

bool MarkdownToMan(const std::string &markdown, const ManPage &page, std::string *roff, std::string *error)
{
    Converter c;
    c.page = &page;
    size_t start = 0;
    while (start <= markdown.size()) {
        size_t end = markdown.find('\n', start);
        if (end == std::string::npos) end = markdown.size();
        std::string line = markdown.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        c.origin.push_back(c.lines.size());
        c.lines.push_back(line);
        start = end + 1;
    }
    std::string title = c.lines.empty() ? "" : c.lines[0];
    size_t colon = title.find(": ");
    if (title.compare(0, 2, "# ") != 0 || colon == std::string::npos) {
        *error = page.source + ":1: the first line is the title: \"# Name: what it is\"";
        return false;
    }
    std::string upper = page.name;
    for (char &ch : upper) ch = (char)toupper((unsigned char)ch);
    std::string what;
    Inline(&c, 0, title.substr(colon + 2), &what);
    c.out = ".\\\" " + page.name + "(" + page.section + "), made from " + page.source +
            " by mdman: change that file, not this one.\n";
    c.out += ".TH " + upper + " " + page.section + " \"\" \"" + page.version + "\" \"" +
             (page.section == "1" ? "User Commands" : "Miscellaneous Information Manual") + "\"\n";
    c.out += ".SH NAME\n" + page.name + " \\- " + what + "\n";
    ArrangeSections(&c);
    c.at = 1;
    while (c.error.empty() && c.at < c.lines.size()) {
        if (Blank(c.lines[c.at])) {
            c.at++;
            continue;
        }
        Block(&c);
    }
    if (!c.error.empty()) {
        *error = c.error;
        return false;
    }
    *roff = c.out;
    return true;
}
