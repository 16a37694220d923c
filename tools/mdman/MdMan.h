/*
 * MdMan.h: mdman, the build's man page generator and documentation check. It turns the
 * project's own small markdown (headings, paragraphs, lists, indented or fenced code,
 * tables, `code`, **bold**, *emphasis*, links) into a man page, and checks the function
 * reference against the table of external functions.
 */
#ifndef TPX1_MDMAN_H
#define TPX1_MDMAN_H

#include <string>

struct ManPage {
    std::string name;       /* "fmhost" */
    std::string section;    /* "1" */
    std::string version;    /* "tpx1 8.0" */
    std::string source;     /* the markdown file's name, for the comment at the top */
};

/* The man page of a markdown text. Its first line must be "# Title: what it is"; the
 * text after ": " becomes the NAME line, what stands before the first "##" heading the
 * DESCRIPTION. False with a message naming the line when the markdown is outside the
 * subset. */
bool MarkdownToMan(const std::string &markdown, const ManPage &page, std::string *roff, std::string *error);

/* Checks the function reference: one "### ID NAME" heading per external function, in id
 * order, each followed by its synopsis line (indented four blanks) exactly as the table
 * gives it and an "Example" paragraph. Prints every mismatch as "file:line: ..." on
 * stderr and returns their number. */
int CheckFunctionReference(const std::string &markdown, const std::string &fileName);

#endif
