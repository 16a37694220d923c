/*
 * CallBlock.cpp: the address of the host call block of the current call. Every host
 * memory operation goes through the callbacks of this block; the entry function
 * rewrites it on every call and never clears it.
 */
#include "text/FMXExtern.h"

FMX_ExternCallBlock *gFMX_ExternCallPtr = nullptr;
