/*
 * HostPointerTable.h: the table in which the host's memory keeps its live handles and
 * pointers, keyed by address. Open addressing with linear probing in one array that
 * doubles when half full, and deletion by shifting back the entries that follow, so
 * that adding and removing a block costs no allocation of its own (a plug-in makes and
 * disposes of hundreds of handles for every message it sends or receives).
 */
#ifndef TPX1_HOST_POINTER_TABLE_H
#define TPX1_HOST_POINTER_TABLE_H

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

template <typename Value> class HostPointerTable {
public:
    /* The value kept for key, or null. */
    Value *Find(const void *key)
    {
        if (mSlots.empty() || !key)
            return nullptr;
        for (size_t i = Home(key);; i = Next(i)) {
            if (!mSlots[i].key)
                return nullptr;
            if (mSlots[i].key == key)
                return &mSlots[i].value;
        }
    }

    /* Adds key, or replaces its value. */
    void Put(const void *key, const Value &value)
    {
        if (Value *kept = Find(key)) {
            *kept = value;
            return;
        }
        if ((mCount + 1) * 2 > mSlots.size())
            Grow();
        size_t i = Home(key);
        while (mSlots[i].key)
            i = Next(i);
        mSlots[i] = Slot{key, value};
        mCount++;
    }

    /* Removes key; false when it was not there. */
    bool Remove(const void *key)
    {
        if (mSlots.empty() || !key)
            return false;
        size_t i = Home(key);
        while (mSlots[i].key != key) {
            if (!mSlots[i].key)
                return false;
            i = Next(i);
        }
        /* Move back every entry of the run after the hole that may sit there. */
        for (size_t j = Next(i);; j = Next(j)) {
            if (!mSlots[j].key)
                break;
            size_t home = Home(mSlots[j].key);
            bool stays = i <= j ? (i < home && home <= j) : (i < home || home <= j);
            if (!stays) {
                mSlots[i] = mSlots[j];
                i = j;
            }
        }
        mSlots[i] = Slot{};
        mCount--;
        return true;
    }

    size_t Count() const { return mCount; }

    template <typename Visit> void ForEach(Visit visit) const
    {
        for (const Slot &slot : mSlots)
            if (slot.key)
                visit(slot.key, slot.value);
    }

private:
    struct Slot {
        const void *key = nullptr;
        Value value{};
    };

    size_t Home(const void *key) const
    {
        uint64_t bits = reinterpret_cast<uintptr_t>(key) >> 4;
        return static_cast<size_t>((bits * 0x9E3779B97F4A7C15ull) >> 20) & (mSlots.size() - 1);
    }

    size_t Next(size_t i) const { return (i + 1) & (mSlots.size() - 1); }

    void Grow()
    {
        std::vector<Slot> old = std::move(mSlots);
        mSlots.assign(old.empty() ? 64 : old.size() * 2, Slot{});
        mCount = 0;
        for (const Slot &slot : old)
            if (slot.key)
                Put(slot.key, slot.value);
    }

    std::vector<Slot> mSlots;
    size_t mCount = 0;
};

#endif
