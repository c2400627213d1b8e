#include "PathTable.h"

#include <deque>
#include <mutex>
#include <string_view>
#include <unordered_map>

namespace filemanager {

namespace {

struct Table {
    std::mutex lock;
    // A deque never moves its elements on push_back, so the views used as
    // keys stay valid as the table grows.
    std::deque<std::string> paths{std::string()};
    std::unordered_map<std::string_view, uint32_t> indexes;
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
    auto found = table.indexes.find(path);
    if (found != table.indexes.end())
        return found->second;
    table.paths.push_back(path);
    const auto index = static_cast<uint32_t>(table.paths.size() - 1);
    table.indexes.emplace(table.paths.back(), index);
    return index;
}

bool PathTable::Lookup(uint32_t index, std::string &path)
{
    Table &table = SharedTable();
    std::lock_guard<std::mutex> guard(table.lock);
    if (index == 0 || index >= table.paths.size())
        return false;
    path = table.paths[index];
    return true;
}

} // namespace filemanager
