// SPDX-License-Identifier: Apache-2.0
#include "str/core/registry.h"

#include "str/core/case_record.h"
#include "str/core/frame.h"
#include "str/core/steady.h"

#include <algorithm>
#include <functional>

CaseTableRecord *pCaseTabs;
int32_t NumCaseTabs;
char *str_ba;

namespace libstr::registry
{

std::atomic<const Image *> theImage;

// The block that was made last.  A host may have set pCaseTabs to another.
std::atomic<const CaseTableRecord *> theBlock;

namespace
{

constexpr char kSource[] = "str/core/registry";
constexpr int32_t kFirstCapacity = 32;

// All blocks that were made, and how many records each may hold.
struct Block {
    const CaseTableRecord *records;
    int32_t capacity;
};
Steady<Block> theBlocks;
std::atomic<size_t> theBlockCount;

bool Has(const CaseTableRecord *records, size_t count, const CaseTableRecord *record)
{
    const std::less<> before;
    return !before(record, records) && before(record, records + count);
}

bool IsOwn(const CaseTableRecord *record)
{
    for (size_t i = theBlockCount.load(std::memory_order_acquire); i > 0; --i) {
        const Block &block = *ElementAt(theBlocks, i - 1);
        if (Has(block.records, static_cast<size_t>(block.capacity), record))
            return true;
    }
    return false;
}

// How many records they may be, if they are of the block that was made last; else 0.
int32_t CapacityOf(const CaseTableRecord *records)
{
    const size_t count = theBlockCount.load(std::memory_order_acquire);
    if (count == 0)
        return 0;
    const Block &last = *ElementAt(theBlocks, count - 1);
    return records == last.records ? last.capacity : 0;
}

template <class T>
void Publish(T *global, T value)
{
    std::atomic_ref(*global).store(value, std::memory_order_release);
}

void Move(int32_t used)
{
    const size_t made = theBlockCount.load(std::memory_order_relaxed);
    const size_t count = used == 0 && made != 0 ? made - 1 : made; // an empty block is not kept
    const int32_t capacity = std::clamp(2 * used, kFirstCapacity, kMostEntries);
    GrowTo(&theBlocks, count);
    auto *const block =
        static_cast<CaseTableRecord *>(os_malloc(ArraySize<CaseTableRecord>(capacity)));
    if (used != 0)
        std::memcpy(block, pCaseTabs, ArraySize<CaseTableRecord>(used));
    *ElementAt(theBlocks, count) = {block, capacity};
    theBlockCount.store(count + 1, std::memory_order_release);
    theBlock.store(block, std::memory_order_release);
    Publish(&pCaseTabs, block);
}

size_t CountOf(int32_t count) { return static_cast<size_t>(std::max(count, 0)); }

// Keeps the images before it, whose tables others may still read.
const Image *MakeImage(const char *base, const CaseTableRecord *records, size_t count)
{
    const size_t keptSize = count * sizeof(std::atomic<void *>);
    auto *const image = static_cast<Image *>(os_malloc(sizeof(Image) + keptSize));
    auto *const kept = reinterpret_cast<std::atomic<void *> *>(image + 1);
    std::memset(static_cast<void *>(kept), 0, keptSize);
    *image = {base, records, count, kept, theImage.load(std::memory_order_relaxed)};
    return image;
}

} // namespace

CaseTableRecord *RecordOf(uint16_t number)
{
    CaseTableRecord *const first = First();
    const Image *const image = Attached();
    if (image != nullptr && first == image->records && number > image->count)
        return nullptr;
    if (const int32_t capacity = CapacityOf(first); capacity != 0 && number > capacity)
        return nullptr;
    return first + (number - 1);
}

const char *BaseOf(const CaseTableRecord *record)
{
    const char *const base = std::atomic_ref(str_ba).load(std::memory_order_acquire);
    if (base == nullptr)
        return nullptr;
    for (const Image *image = Attached(); image != nullptr; image = image->before)
        if (Has(image->records, image->count, record))
            return image->base;
    return IsOwn(record) ? nullptr : base;
}

int16_t Add()
{
    const int32_t used = NumCaseTabs;
    if (used >= kMostEntries)
        frame::Raise(kSource, OS_ESC_MEMORY);
    if (used == 0 || used >= CapacityOf(pCaseTabs))
        Move(used);
    ++NumCaseTabs;
    return static_cast<int16_t>(used);
}

void Attach(char *base, CaseTableRecord *records, int32_t count)
{
    const Image *image = nullptr; // without memory, nothing is prepared
    frame::Disregard([&] { image = MakeImage(base, records, CountOf(count)); });
    theImage.store(image, std::memory_order_release);
    Publish(&str_ba, base);
    Publish(&pCaseTabs, records);
    NumCaseTabs = count;
}

} // namespace libstr::registry
