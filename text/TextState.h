/*
 * TextState.h: what the text code keeps between calls: the line-end texts it hands out,
 * the looping line fetcher's place, and the output codes with their word table. The
 * frame owns the one object that holds it with the rest of the plug-in's state
 * (plugin/CoreState.h); the code reads each piece through its g name, bound there.
 */
#ifndef TPX1_TEXTSTATE_H
#define TPX1_TEXTSTATE_H

#include "platform/MacTypes.h"

struct WordCode;

struct TextState {
    const WordCode *wordCodeTable;
    const char *lineCursor;
    long lineCursorLine;
    int16_t outputCodes[10];
    char returnString[4];
    char ibmReturnString[4];
    char macReturnString[4];
};

/* The looping line fetcher's place (text/LineFetch.cpp). */
extern const char *&gLineCursor;
extern long &gLineCursorLine;

#endif
