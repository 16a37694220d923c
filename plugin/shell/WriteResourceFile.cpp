/*
 * WriteResourceFile.cpp: a build step that writes the plug-in's resource table as the
 * plain-text resource file that sits beside tpx1.fmx (format in docs/resources.md).
 */
#include <cstdio>

#include "platform/Toolbox.h"
#include "ui/PluginResources.h"

static void WriteEscaped(FILE *out, const char *macRoman)
{
    char utf8[1024];
    int32_t length = 0;
    while (macRoman[length] != 0)
        length++;
    if (PlatformMacRomanToUTF8(macRoman, length, utf8, sizeof utf8) < 0)
        utf8[0] = 0;
    for (const char *p = utf8; *p != 0; p++) {
        switch (*p) {
        case '\t': fputs("\\t", out); break;
        case '\r': fputs("\\r", out); break;
        case '\n': fputs("\\n", out); break;
        case '\\': fputs("\\\\", out); break;
        default: fputc(*p, out); break;
        }
    }
}

int main(int argc, char **argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: tpx1rsrc OUTPUT\n");
        return 2;
    }
    FILE *out = fopen(argv[1], "w");
    if (out == nullptr) {
        perror(argv[1]);
        return 1;
    }
    fputs("# Resource file of tpx1.fmx, written by the build from the plug-in's own table.\n"
          "# TYPE<TAB>ID<TAB>INDEX<TAB>TEXT, text in UTF-8 with \\t \\r \\n \\\\ escapes.\n", out);
    for (int i = 0; i < gPluginResourceCount; i++) {
        const ResourceItem *item = &gPluginResources[i];
        fprintf(out, "%c%c%c%c\t%d\t%d\t", (char)(item->type >> 24), (char)(item->type >> 16),
                (char)(item->type >> 8), (char)item->type, item->id, item->index);
        WriteEscaped(out, item->text);
        fputc('\n', out);
    }
    return fclose(out) == 0 ? 0 : 1;
}
