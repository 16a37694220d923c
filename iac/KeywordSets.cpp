/*
 * KeywordSets.cpp: which parameters are read from an incoming message: the four
 * standard keywords, then the keywords of the message id, or the catch-all set for
 * any id without a set of its own.
 */
#include "iac/Iac.h"

namespace {

struct KeywordSet {
    const char *messageId;
    const char *const *keywords;   /* NULL-ended */
};

const char *const kStandardKeywords[] = {"MSSG", "SIGN", "PSIG", "XTRA", nullptr};

const char *const kGreetingKeywords[] = {"NAME", "PATH", "VERS", "DOC ", nullptr};
const char *const kNoKeywords[] = {nullptr};
const char *const kMenuHitKeywords[] = {"YRPS", "ITEM", "TEXT", nullptr};
const char *const kSelectionKeywords[] = {"NUM ", "LST2", "TYPE", nullptr};
const char *const kObjectIdKeywords[] = {"IDS ", "LST2", nullptr};
const char *const kInfoKeywords[] = {"LST2", nullptr};
const char *const kNeighbourKeywords[] = {"OBJ2", nullptr};
const char *const kUserKeywords[] = {"NAME", "CODE", "PERM", "PATH", nullptr};
const char *const kViewKeywords[] = {"LLAT", "LLNG", "HLAT", "HLNG", nullptr};
const char *const kVersionKeywords[] = {"VNUM", nullptr};
const char *const kOverlayKeywords[] = {"ANSR", "OVID", "ATBS", nullptr};
const char *const kStatusKeywords[] = {"STAT", nullptr};
const char *const kPointKeywords[] = {"LAT ", "LONG", nullptr};
const char *const kPathKeywords[] = {"PATH", nullptr};
const char *const kCatchAllKeywords[] = {
    "ACTN", "ANSR", "ATBS", "CAS ", "CODE", "DOC ", "HLAT", "HLNG", "IDS ", "ITEM",
    "LAT ", "LLAT", "LLNG", "LONG", "LSTA", "LSTB", "LST2", "NAME", "VESK", "NUM ",
    "OBJ2", "OVID", "PATH", "PERM", "STAT", "TEXT", "TYPE", "VERS", "VNUM", "YRPS", nullptr};

const KeywordSet kKeywordSets[] = {
    {"HOLA", kGreetingKeywords}, {"OKHI", kGreetingKeywords}, {"BYE ", kNoKeywords},
    {"MHIT", kMenuHitKeywords},  {"YROD", kSelectionKeywords}, {"OBID", kObjectIdKeywords},
    {"INFO", kInfoKeywords},     {"NBH!", kNeighbourKeywords}, {"USR!", kUserKeywords},
    {"VEW!", kViewKeywords},     {"VER!", kVersionKeywords},   {"OVL!", kOverlayKeywords},
    {"IMP!", kStatusKeywords},   {"CPT!", kPointKeywords},     {"CTL!", kPathKeywords},
};

OSType CodeOf(const char *text)
{
    return FOUR_CHAR(text[0], text[1], text[2], text[3]);
}

int AppendKeywords(const char *const *keywords, OSType *out, int count, int capacity)
{
    for (; *keywords; keywords++, count++)
        if (count < capacity)
            out[count] = CodeOf(*keywords);
    return count;
}

}   // namespace

/* Fills at most capacity keywords and returns how many the set holds. */
int GetKeywordSetForMessage(OSType messageId, OSType *keywords, int capacity)
{
    const char *const *own = kCatchAllKeywords;
    for (const KeywordSet &set : kKeywordSets)
        if (CodeOf(set.messageId) == messageId) {
            own = set.keywords;
            break;
        }
    int count = AppendKeywords(kStandardKeywords, keywords, 0, capacity);
    return AppendKeywords(own, keywords, count, capacity);
}
