/*
 * ResourceStore.h: the default resource store (ResourceFile.cpp), internal to the
 * platform library.
 */
#ifndef TPX1_RESOURCESTORE_H
#define TPX1_RESOURCESTORE_H

#include "platform/Services.h"

extern const Tpx1ResourceMethods gLinuxResources;

#endif
