/*
 * ExternalIds.h: the ids of the external functions as names (kTPX1SetGlobal and so on)
 * and their count, made from ExternalFunctions.def. Code that calls a function by id,
 * the host and the tests included, uses these names rather than numbers.
 */
#ifndef TPX1_EXTERNAL_IDS_H
#define TPX1_EXTERNAL_IDS_H

enum ExternalId {
#define TPX1_EXTERNAL(id, Name, implementation, argLimit, args, summary) k##Name,
#include "plugin/ExternalFunctions.def"
#undef TPX1_EXTERNAL
    kFunctionCount
};

/* Each row's id is its place in the list: no gap, no repeat, no row out of order. */
#define TPX1_EXTERNAL(id, Name, implementation, argLimit, args, summary) \
    static_assert(k##Name == (id), #Name " is not at its id in ExternalFunctions.def");
#include "plugin/ExternalFunctions.def"
#undef TPX1_EXTERNAL

#endif
