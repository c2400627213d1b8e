#include "PathTable.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace filemanager {

namespace {

/* Paths are kept once each and never removed, so their cost is what a
 * long-running host pays for every distinct path it ever makes a ref to:
 * the bytes are packed into large blocks that never move, an entry is a view
 * into them, and the index of a path is found through an open-addressing
 * table of entry numbers rather than a node-based map. */
class Table {
public:
    uint32_t Intern(std::string_view path)
    {
        if ((mCount + 1) * 2 > mSlots.size())
            Grow();
        size_t slot = Find(path);
        if (mSlots[slot] != 0)
            return mSlots[slot];
        mPaths.push_back(Store(path));
        const auto index = static_cast<uint32_t>(mPaths.size() - 1);
        mSlots[slot] = index;
        ++mCount;
        return index;
    }

    bool Lookup(uint32_t index, std::string &path) const
    {
        if (index == 0 || index >= mPaths.size())
            return false;
        path.assign(mPaths[index].data(), mPaths[index].size());
        return true;
    }

    std::mutex lock;

private:
    static constexpr size_t kBlockSize = 1 << 20;

    // The slot holding path, or the empty slot where it belongs.
    size_t Find(std::string_view path) const
    {
        const size_t mask = mSlots.size() - 1;
        size_t slot = std::hash<std::string_view>()(path) & mask;
        while (mSlots[slot] != 0 && mPaths[mSlots[slot]] != path)
            slot = (slot + 1) & mask;
        return slot;
    }

    void Grow()
    {
        std::vector<uint32_t> slots(mSlots.empty() ? 1024 : mSlots.size() * 2, 0);
        mSlots.swap(slots);
        for (uint32_t index = 1; index < mPaths.size(); ++index)
            mSlots[Find(mPaths[index])] = index;
    }

    // A copy of the bytes that stays where it is for the life of the process.
    std::string_view Store(std::string_view path)
    {
        if (path.size() > kBlockSize / 4) {
            mLargePaths.emplace_back(new char[path.size()]);
            path.copy(mLargePaths.back().get(), path.size());
            return std::string_view(mLargePaths.back().get(), path.size());
        }
        if (mBlocks.empty() || kBlockSize - mBlockUsed < path.size()) {
            mBlocks.emplace_back(new char[kBlockSize]);
            mBlockUsed = 0;
        }
        char *bytes = mBlocks.back().get() + mBlockUsed;
        path.copy(bytes, path.size());
        mBlockUsed += path.size();
        return std::string_view(bytes, path.size());
    }

    std::vector<std::unique_ptr<char[]>> mBlocks;
    std::vector<std::unique_ptr<char[]>> mLargePaths;
    size_t mBlockUsed = 0;
    std::vector<std::string_view> mPaths{std::string_view()}; // entry 0 names no path
    std::vector<uint32_t> mSlots;                             // 0: empty
    size_t mCount = 0;
};

Table &SharedTable()
{
    // Never destroyed: refs may be used by other static destructors.
    static Table *table = new Table;
    return *table;
}

} // namespace

uint32_t PathTable::Intern(const std::string &path)
{
    Table &table = SharedTable();
    std::lock_guard<std::mutex> guard(table.lock);
    return table.Intern(path);
}

bool PathTable::Lookup(uint32_t index, std::string &path)
{
    Table &table = SharedTable();
    std::lock_guard<std::mutex> guard(table.lock);
    return table.Lookup(index, path);
}

} // namespace filemanager
