/*
 * AppleEventDescriptors.cpp: descriptor records of the event service: plain descriptors
 * that copy their data, Apple events with their ordered parameters and attributes, and
 * the default event table's descriptor calls (create, put, get, size, attributes, count,
 * dispose, coerce). Records are tracked so that a stale or foreign dataHandle is refused
 * instead of being followed.
 */
#include "platform/AppleEventRecords.h"
#include "platform/EventService.h"
#include "platform/ServiceResets.h"

#include <cstring>
#include <new>
#include <unordered_set>

namespace {

const uint32_t kRecordMagic = 0x41455244;   /* 'AERD' */
#define typeType FOUR_CHAR('t', 'y', 'p', 'e')
#define typeSInt16 FOUR_CHAR('s', 'h', 'o', 'r')
#define keyReturnIDAttr FOUR_CHAR('r', 't', 'i', 'd')
#define keyTransactionIDAttr FOUR_CHAR('t', 'r', 'a', 'n')

/* Kept by PlatformResetAll: a record belongs to the descriptor holding it until
 * AEDisposeDesc. */
std::unordered_set<const AEDescRecord *> gLiveRecords;
int16_t gLastReturnID = 0;

std::string CodeBytes(OSType code)
{
    return std::string(reinterpret_cast<const char *>(&code), sizeof code);
}

/* An attribute of an event as (type, bytes); false when the event has no such attribute. */
bool EventAttribute(const AEDescRecord *record, AEKeyword keyword, DescType *type, std::string *bytes)
{
    switch (keyword) {
    case keyEventClassAttr:
        *type = typeType;
        *bytes = CodeBytes(record->eventClass);
        return true;
    case keyEventIDAttr:
        *type = typeType;
        *bytes = CodeBytes(record->eventID);
        return true;
    case keyAddressAttr:
        if (record->targetType == typeNull) return false;
        *type = record->targetType;
        *bytes = record->target;
        return true;
    case keyOriginalAddressAttr:
        if (!record->sender) return false;
        *type = typeApplSignature;
        *bytes = CodeBytes(record->sender);
        return true;
    case keyReturnIDAttr:
        *type = typeSInt16;
        *bytes = std::string(reinterpret_cast<const char *>(&record->returnID), sizeof record->returnID);
        return true;
    case keyTransactionIDAttr:
        *type = typeSInt32;
        *bytes = std::string(reinterpret_cast<const char *>(&record->transactionID), sizeof record->transactionID);
        return true;
    default:
        /* keyMissedKeywordAttr among them: no parameter of ours is ever required. */
        return false;
    }
}

/* Copies (type, bytes) out as desiredType. */
OSErr CopyOutAs(DescType type, const std::string &bytes, DescType desiredType, DescType *actualType,
                void *dataPtr, int32_t maximumSize, int32_t *actualSize)
{
    if (maximumSize < 0) return paramErr;
    std::string converted;
    const std::string *out = &bytes;
    DescType outType = type;
    if (desiredType != typeWildCard && desiredType != type) {
        OSErr err = AECoerceBytes(type, bytes, desiredType, &converted);
        if (err) return err;
        out = &converted;
        outType = desiredType;
    }
    if (actualType) *actualType = outType;
    AECopyOut(*out, dataPtr, maximumSize, actualSize);
    return noErr;
}

} // namespace

void ResetReturnIDs(void)
{
    gLastReturnID = 0;
}

/* ---- Records ---- */

AEDescRecord *AERecordOf(const AEDesc *desc)
{
    if (!desc || !desc->dataHandle) return nullptr;
    const AEDescRecord *record = static_cast<const AEDescRecord *>(desc->dataHandle);
    if (!gLiveRecords.count(record)) return nullptr;
    return const_cast<AEDescRecord *>(record);
}

bool AEDescIsEvent(const AEDesc *desc)
{
    return desc && (desc->descriptorType == typeAppleEvent || desc->descriptorType == typeAppParameters) &&
           AERecordOf(desc);
}

AEDescRecord *AENewRecord(void)
{
    AEDescRecord *record = new (std::nothrow) AEDescRecord;
    if (!record) return nullptr;
    record->master = record;
    record->magic = kRecordMagic;
    gLiveRecords.insert(record);
    return record;
}

void AEFreeRecord(AEDescRecord *record)
{
    if (!record) return;
    gLiveRecords.erase(record);
    record->magic = 0;
    delete record;
}

AEDescRecord *AECopyRecord(const AEDescRecord *record)
{
    AEDescRecord *copy = AENewRecord();
    if (!copy) return nullptr;
    copy->data = record->data;
    copy->eventClass = record->eventClass;
    copy->eventID = record->eventID;
    copy->targetType = record->targetType;
    copy->target = record->target;
    copy->sender = record->sender;
    copy->returnID = record->returnID;
    copy->transactionID = record->transactionID;
    copy->params = record->params;
    return copy;
}

void AEAttachRecord(AEDesc *desc, DescType type, AEDescRecord *record)
{
    desc->descriptorType = type;
    desc->dataHandle = record;
}

const AEParamItem *AEFindParam(const AEDescRecord *record, AEKeyword keyword)
{
    for (const AEParamItem &item : record->params)
        if (item.keyword == keyword) return &item;
    return nullptr;
}

void AESetParam(AEDescRecord *record, AEKeyword keyword, DescType type, const std::string &data)
{
    for (AEParamItem &item : record->params) {
        if (item.keyword == keyword) {
            item.type = type;
            item.data = data;
            return;
        }
    }
    record->params.push_back(AEParamItem{keyword, type, data});
}

OSType AETargetSignature(const AEDescRecord *record)
{
    if (record->targetType != typeApplSignature || record->target.size() != sizeof(OSType)) return 0;
    OSType signature;
    memcpy(&signature, record->target.data(), sizeof signature);
    return signature;
}

void AECopyOut(const std::string &bytes, void *dataPtr, int32_t maximumSize, int32_t *actualSize)
{
    int32_t size = (int32_t)bytes.size();
    if (dataPtr && maximumSize > 0) memcpy(dataPtr, bytes.data(), size < maximumSize ? size : maximumSize);
    if (actualSize) *actualSize = size;
}

/* ---- The default table's descriptor calls ---- */

void DescInitialize(AEDesc *desc)
{
    if (!desc) return;
    desc->descriptorType = typeNull;
    desc->dataHandle = nullptr;
}

OSErr DescCreate(DescType typeCode, const void *dataPtr, int32_t dataSize, AEDesc *result)
{
    if (!result) return paramErr;
    DescInitialize(result);
    if (dataSize < 0 || (!dataPtr && dataSize > 0)) return paramErr;
    if (typeCode == typeNull) return noErr;
    AEDescRecord *record = AENewRecord();
    if (!record) return memFullErr;
    if (dataSize > 0) record->data.assign(static_cast<const char *>(dataPtr), dataSize);
    AEAttachRecord(result, typeCode, record);
    return noErr;
}

OSErr DescCreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc *target,
                           int16_t returnID, int32_t transactionID, AppleEvent *result)
{
    if (!result) return paramErr;
    DescInitialize(result);
    AEDescRecord *record = AENewRecord();
    if (!record) return memFullErr;
    record->eventClass = eventClass;
    record->eventID = eventID;
    if (target && target->descriptorType != typeNull) {
        AEDescRecord *address = AERecordOf(target);
        if (!address) {
            AEFreeRecord(record);
            return errAENotAEDesc;
        }
        record->targetType = target->descriptorType;
        record->target = address->data;
    }
    if (returnID == kAutoGenerateReturnID) {
        if (++gLastReturnID <= 0) gLastReturnID = 1;
        returnID = gLastReturnID;
    }
    record->returnID = returnID;
    record->transactionID = transactionID;
    AEAttachRecord(result, typeAppleEvent, record);
    return noErr;
}

OSErr DescPutParamPtr(AppleEvent *event, AEKeyword keyword, DescType typeCode, const void *dataPtr,
                      int32_t dataSize)
{
    if (dataSize < 0 || (!dataPtr && dataSize > 0)) return paramErr;
    if (!AEDescIsEvent(event)) return event && AERecordOf(event) ? errAEWrongDataType : errAENotAEDesc;
    std::string bytes;
    if (dataSize > 0) bytes.assign(static_cast<const char *>(dataPtr), dataSize);
    AESetParam(AERecordOf(event), keyword, typeCode, bytes);
    return noErr;
}

OSErr DescGetParamPtr(const AppleEvent *event, AEKeyword keyword, DescType desiredType, DescType *actualType,
                      void *dataPtr, int32_t maximumSize, int32_t *actualSize)
{
    if (!AEDescIsEvent(event)) return errAENotAEDesc;
    const AEParamItem *item = AEFindParam(AERecordOf(event), keyword);
    if (!item) return errAEDescNotFound;
    return CopyOutAs(item->type, item->data, desiredType, actualType, dataPtr, maximumSize, actualSize);
}

OSErr DescSizeOfParam(const AppleEvent *event, AEKeyword keyword, DescType *typeCode, int32_t *dataSize)
{
    if (!AEDescIsEvent(event)) return errAENotAEDesc;
    const AEParamItem *item = AEFindParam(AERecordOf(event), keyword);
    if (!item) return errAEDescNotFound;
    if (typeCode) *typeCode = item->type;
    if (dataSize) *dataSize = (int32_t)item->data.size();
    return noErr;
}

OSErr DescGetAttributePtr(const AppleEvent *event, AEKeyword keyword, DescType desiredType, DescType *typeCode,
                          void *dataPtr, int32_t maximumSize, int32_t *actualSize)
{
    if (!AEDescIsEvent(event)) return errAENotAEDesc;
    DescType type;
    std::string bytes;
    if (!EventAttribute(AERecordOf(event), keyword, &type, &bytes)) return errAEDescNotFound;
    return CopyOutAs(type, bytes, desiredType, typeCode, dataPtr, maximumSize, actualSize);
}

OSErr DescCountItems(const AEDesc *list, int32_t *count)
{
    if (!count) return paramErr;
    if (!AERecordOf(list)) return errAENotAEDesc;
    if (!AEDescIsEvent(list)) return errAEWrongDataType;
    *count = (int32_t)AERecordOf(list)->params.size();
    return noErr;
}

OSErr DescDispose(AEDesc *desc)
{
    if (!desc) return noErr;
    AEFreeRecord(AERecordOf(desc));
    DescInitialize(desc);
    return noErr;
}

OSErr DescCoerce(const AEDesc *desc, DescType toType, AEDesc *result)
{
    if (!result) return paramErr;
    DescInitialize(result);
    AEDescRecord *record = AERecordOf(desc);
    if (!record) return desc && desc->descriptorType == typeNull ? errAECoercionFail : errAENotAEDesc;
    bool isEvent = AEDescIsEvent(desc);
    bool wantEvent = toType == typeAppleEvent || toType == typeAppParameters;
    if (toType == desc->descriptorType || toType == typeWildCard || (isEvent && wantEvent)) {
        AEDescRecord *copy = AECopyRecord(record);
        if (!copy) return memFullErr;
        AEAttachRecord(result, toType == typeWildCard ? desc->descriptorType : toType, copy);
        return noErr;
    }
    if (isEvent || wantEvent) return errAECoercionFail;
    std::string converted;
    OSErr err = AECoerceBytes(desc->descriptorType, record->data, toType, &converted);
    if (err) return err;
    return DescCreate(toType, converted.data(), (int32_t)converted.size(), result);
}

/* ---- Reading an event whole ---- */

extern "C" OSErr PlatformEventGetNthParam(const AppleEvent *event, int32_t index, AEKeyword *keyword,
                                          DescType *typeCode, void *dataPtr, int32_t maximumSize,
                                          int32_t *actualSize)
{
    if (!AEDescIsEvent(event)) return errAENotAEDesc;
    const AEDescRecord *record = AERecordOf(event);
    if (index < 1 || index > (int32_t)record->params.size()) return errAEDescNotFound;
    const AEParamItem &item = record->params[index - 1];
    if (keyword) *keyword = item.keyword;
    if (typeCode) *typeCode = item.type;
    AECopyOut(item.data, dataPtr, maximumSize < 0 ? 0 : maximumSize, actualSize);
    return noErr;
}
