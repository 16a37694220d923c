/*
 * main.cpp: mdman's command line.
 *   mdman MARKDOWN NAME SECTION VERSION OUTPUT   writes the man page of MARKDOWN
 *   mdman --check-functions MARKDOWN             checks the function reference
 * Exit status 0, 1 for a mistake in the markdown, 2 for bad usage or a file not read
 * or written.
 */
#include "MdMan.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

static bool ReadText(const char *path, std::string *text)
{
    FILE *in = fopen(path, "rb");
    if (!in) {
        fprintf(stderr, "mdman: cannot read %s: %s\n", path, strerror(errno));
        return false;
    }
    char chunk[65536];
    size_t n;
    while ((n = fread(chunk, 1, sizeof chunk, in)) > 0) text->append(chunk, n);
    fclose(in);
    return true;
}

int main(int argc, char **argv)
{
    std::string markdown;
    if (argc == 3 && !strcmp(argv[1], "--check-functions")) {
        if (!ReadText(argv[2], &markdown)) return 2;
        int problems = CheckFunctionReference(markdown, argv[2]);
        if (problems) fprintf(stderr, "mdman: %d mismatch%s with the table of external functions\n", problems,
                              problems == 1 ? "" : "es");
        return problems ? 1 : 0;
    }
    if (argc != 6) {
        fprintf(stderr, "usage: mdman MARKDOWN NAME SECTION VERSION OUTPUT\n"
                        "       mdman --check-functions MARKDOWN\n");
        return 2;
    }
    if (!ReadText(argv[1], &markdown)) return 2;
    const char *slash = strrchr(argv[1], '/');
    ManPage page{argv[2], argv[3], argv[4], slash ? std::string("docs/") + (slash + 1) : argv[1]};
    std::string roff, error;
    if (!MarkdownToMan(markdown, page, &roff, &error)) {
        fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    FILE *out = fopen(argv[5], "wb");
    if (!out || fwrite(roff.data(), 1, roff.size(), out) != roff.size() || fclose(out) != 0) {
        fprintf(stderr, "mdman: cannot write %s: %s\n", argv[5], strerror(errno));
        return 2;
    }
    return 0;
}
