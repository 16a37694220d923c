/*
 * Globals.h: the solution's named globals and the plug-in's reserved globals, kept in
 * gUserGlobalsDataNodeList, with their attached scripts; the external functions on them
 * and the lookups by type that the other folders use.
 */
#ifndef TPX1_GLOBALS_H
#define TPX1_GLOBALS_H

#include "platform/MacTypes.h"

/* The reserved globals, which Init creates in this order as system nodes. */
inline constexpr char kAppNameGlobal[] = "App Name";
inline constexpr char kAppPathGlobal[] = "App Path";
inline constexpr char kAppFolderGlobal[] = "App Folder with Delim";
inline constexpr char kErrorDialogsGlobal[] = "Error Dialogs";
inline constexpr char kHandleMessageScriptGlobal[] = "Handle Message Script";
inline constexpr char kPluginVersionGlobal[] = "Plugin Version";
inline constexpr char kScriptMenuNameGlobal[] = "Script Menu Name";
inline constexpr char kAppSignatureGlobal[] = "App Signature";
inline constexpr char kAppPsigGlobal[] = "App PSIG";
inline constexpr char kAppDocGlobal[] = "App DOC";

OSErr SetGlobalFromStr(const char *name, unsigned char isSystem, const char *text);
OSErr SetGlobalInList(const char *name, unsigned char isSystem, char **handle);
OSErr AppendToGlobalInList(const char *name, unsigned char isSystem, bool noDupes, char **handle);
OSErr RemoveGlobalFromList(const char *name);
long GetGlobalInListAsStr(const char *name, char *buffer, long size);
bool GetGlobalInListAsBoolean(const char *name);
OSType GetGlobalInListAsOSType(const char *name);
OSErr GetGlobalInListAsResultHandle(const char *name, char **result);
OSErr GetGlobalListInfo(char **options, char **result);
OSErr AttachScriptToGlobalInList(const char *name, const char *script);
OSErr SetEnableOfGlobalScript(const char *name, unsigned char enabled);
/* Splits "name|rest" or "name|NODUPES|rest": name gets the first field (256 bytes),
 * *noDupes is set for NODUPES, and the handle is left holding only the rest. */
OSErr GetAndStripNameAndDupes(char **argument, char *name, bool *noDupes);
/* Splits "name|value": name (256 bytes) gets the text before the first "|" within the
 * argument's first 255 characters (all of them when there is none), *valueOffset where the value starts in the handle,
 * which is made NUL-terminated. -222 when there is no "|". */
OSErr SplitNameAndValue(char **argument, char *name, long *valueOffset);

void TPX1SetGlobal(long funcId, char **argHandle, char **resultHandle);
void TPX1AppendToGlobal(long funcId, char **argHandle, char **resultHandle);
void TPX1UnsetGlobal(long funcId, char **argHandle, char **resultHandle);
void TPX1GetGlobal(long funcId, char **argHandle, char **resultHandle);
void TPX1GetGlobalList(long funcId, char **argHandle, char **resultHandle);
void TPX1AttachScriptToGlobal(long funcId, char **argHandle, char **resultHandle);
void TPX1EnableGlobalScript(long funcId, char **argHandle, char **resultHandle);
void TPX1DisableGlobalScript(long funcId, char **argHandle, char **resultHandle);
void TPX1GetNameOfGlobalThatTriggeredScript(long funcId, char **argHandle, char **resultHandle);

#endif
