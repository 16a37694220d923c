/*
 * ErrorCodes.h: the plug-in's own error codes, shared by every folder of the core. Every
 * operation returns 0 or an error code; toolbox errors pass through as they are, the
 * host's out-of-memory among them (memFullErr, -108).
 */
#ifndef TPX1_ERRORCODES_H
#define TPX1_ERRORCODES_H

constexpr short kMissingErr = -1;           /* a required handle, pointer or value is missing */
constexpr short kNoListOrSignatureErr = -2; /* no such outgoing list, or no signature */
constexpr short kTableFullErr = -3;         /* a table is full (the map table, for example) */
constexpr short kArchiveFullErr = -33;      /* the message archive is full */
constexpr short kReservedGlobalErr = -117;  /* a reserved global cannot be removed */
constexpr short kNoMessageIdErr = -123;     /* the message id is missing */
constexpr short kNoBarErr = -222;           /* an argument lacks its "|" separator */
constexpr short kPartnerNotRunningErr = -234; /* the partner must already be running and is not */
constexpr short kLineTooLongErr = -345;     /* a line is over 510 characters (merging) */
constexpr short kNoSuchGlobalErr = -2802;   /* no such global (or no such node, or no message) */

#endif
