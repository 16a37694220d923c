/*
 * FilesState.h: what the path code keeps: the base directory last found and the host
 * application's full path, read once. The frame owns the one object that holds it with
 * the rest of the plug-in's state (plugin/CoreState.h); the code reads each piece
 * through its g name, bound there.
 */
#ifndef TPX1_FILESSTATE_H
#define TPX1_FILESSTATE_H

#include "files/FileSupport.h"

struct FilesState {
    char baseDirectory[256];
    char appFullPathName[kPathSize];
    bool appFullPathKnown;
};

/* The kept application path (files/AppPaths.cpp). */
extern char (&gAppFullPathName)[kPathSize];
extern bool &gAppFullPathKnown;

#endif
