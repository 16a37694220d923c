/*
 * CheckFunctions.cpp: the function reference against the table of external functions
 * (plugin/ExternalFunctions.def): every function has its "### ID NAME" section, in id
 * order, whose first block is the synopsis line the table makes, and an example.
 */
#include "MdMan.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "plugin/ExternalFunctionInfo.h"

namespace {

struct Section {
    long id;
    std::string name;
    size_t line;                 /* 0-based line of the heading */
    std::string synopsis;        /* the first non-blank line after it */
    size_t synopsisLine;
    bool hasExample;
};

int Mismatch(const std::string &file, size_t line, const std::string &message)
{
    fprintf(stderr, "%s:%zu: %s\n", file.c_str(), line + 1, message.c_str());
    return 1;
}

}  // namespace

int CheckFunctionReference(const std::string &markdown, const std::string &fileName)
{
    std::vector<std::string> lines;
    for (size_t start = 0; start <= markdown.size();) {
        size_t end = markdown.find('\n', start);
        if (end == std::string::npos) end = markdown.size();
        lines.push_back(markdown.substr(start, end - start));
        start = end + 1;
    }
    std::vector<Section> sections;
    for (size_t i = 0; i < lines.size(); i++) {
        const std::string &line = lines[i];
        if (line.compare(0, 4, "### ") != 0 || !isdigit((unsigned char)line[4])) {
            if (!sections.empty() && line.compare(0, 7, "Example") == 0) sections.back().hasExample = true;
            continue;
        }
        Section s;
        char *end = nullptr;
        s.id = strtol(line.c_str() + 4, &end, 10);
        s.name = *end == ' ' ? std::string(end + 1) : std::string();
        s.line = i;
        s.synopsisLine = i + 1;
        while (s.synopsisLine < lines.size() && lines[s.synopsisLine].find_first_not_of(' ') == std::string::npos)
            s.synopsisLine++;
        s.synopsis = s.synopsisLine < lines.size() ? lines[s.synopsisLine] : "";
        s.hasExample = false;
        sections.push_back(s);
    }

    int problems = 0;
    long expected = 0;
    for (const Section &s : sections) {
        const ExternalFunctionInfo *info = GetExternalFunctionInfo(s.id);
        if (!info) {
            problems += Mismatch(fileName, s.line, "there is no function " + std::to_string(s.id));
            continue;
        }
        if (s.id != expected)
            problems += Mismatch(fileName, s.line, "function " + std::to_string(s.id) + " comes where " +
                                                       std::to_string(expected) + " belongs (ids in order, each once)");
        expected = s.id + 1;
        if (s.name != info->name)
            problems += Mismatch(fileName, s.line, "function " + std::to_string(s.id) + " is " + info->name + ", not \"" +
                                                       s.name + "\"");
        char synopsis[kSynopsisSize];
        GetExternalFunctionSynopsis(s.id, synopsis, sizeof synopsis);
        if (s.synopsis != std::string("    ") + synopsis)
            problems += Mismatch(fileName, s.synopsisLine,
                                 std::string("the synopsis differs from plugin/ExternalFunctions.def; it is\n    ") + synopsis);
        if (!s.hasExample) problems += Mismatch(fileName, s.line, std::string(info->name) + " has no Example");
    }
    for (long id = 0; id < kFunctionCount; id++) {
        bool found = false;
        for (const Section &s : sections) found |= s.id == id;
        if (!found) {
            const ExternalFunctionInfo *info = GetExternalFunctionInfo(id);
            problems += Mismatch(fileName, lines.size() - 1,
                                 "function " + std::to_string(id) + " " + info->name + " has no \"### " +
                                     std::to_string(id) + " " + info->name + "\" section");
        }
    }
    return problems;
}
