/*
 * Lst2State.h: what the LST2 code keeps between the steps of one call: the text the
 * sort's comparison reads (qsort passes no context). The frame owns the one object that holds
 * it with the rest of the plug-in's state (plugin/CoreState.h); the code reads each
 * piece through its g name, bound there.
 */
#ifndef TPX1_LST2STATE_H
#define TPX1_LST2STATE_H

#include "text/OutputCodes.h"

struct Lst2State {
    const char *lst2GroupText;
};

extern const char *&gLst2GroupText;          /* maplist/Lst2Clean.cpp */

#endif
