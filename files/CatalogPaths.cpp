/*
 * CatalogPaths.cpp: full classic paths from the catalog: a folder's path built by
 * walking its parents up to the volume's root, a file's path from its FSSpec, and an
 * FSSpec from a full path.
 */
#include <cstring>

#include "files/FileSupport.h"
#include "files/Paths.h"
#include "text/TextUtils.h"

enum { kMaxCatalogPathLength = 250 };

OSErr GetPathWithDelimiterFromDirID(int32_t dirID, int16_t vRefNum, char *out)
{
    Str255 path;          /* grows at its front, never past kMaxCatalogPathLength */
    Str255 name;
    path[0] = 0;
    out[0] = 0;
    int32_t folder = dirID;
    for (;;) {
        CInfoPBRec pb;
        memset(&pb, 0, sizeof pb);
        name[0] = 0;
        pb.ioNamePtr = name;
        pb.ioVRefNum = vRefNum;
        pb.ioFDirIndex = -1;
        pb.ioDirID = folder;
        OSErr err = PBGetCatInfoSync(&pb);
        if (err != noErr)
            return err;
        int added = name[0] + 1;
        if (path[0] + added > kMaxCatalogPathLength)
            break;
        memmove(path + 1 + added, path + 1, path[0]);
        memcpy(path + 1, name + 1, name[0]);
        path[added] = ':';
        path[0] = (unsigned char)(path[0] + added);
        if (folder == fsRtDirID || pb.ioDrParID == fsRtParID)
            break;
        folder = pb.ioDrParID;
    }
    myp2cstr(path, out);
    return noErr;
}

OSErr GetFSSpecFromFullPath(const char *path, FSSpec *theSpec)
{
    Str255 pascalPath;
    MakePascalPath(path, pascalPath);
    return FSMakeFSSpec(0, 0, pascalPath, theSpec);
}

OSErr GetFullPathFromFSSpec(const FSSpec *theSpec, char *out)
{
    char folder[kPathSize];
    OSErr err = GetPathWithDelimiterFromDirID(theSpec->parID, theSpec->vRefNum, folder);
    if (err != noErr) {
        out[0] = 0;
        return err;
    }
    size_t folderLength = strlen(folder);
    size_t nameLength = theSpec->name[0];
    if (folderLength + nameLength > kPathSize - 1)
        nameLength = kPathSize - 1 - folderLength;
    memcpy(out, folder, folderLength);
    memcpy(out + folderLength, theSpec->name + 1, nameLength);
    out[folderLength + nameLength] = 0;
    return noErr;
}
