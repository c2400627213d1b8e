#include <CoreServices/Files.h>

#include "FileTestSupport.h"

#include <algorithm>
#include <set>

namespace {

std::string Narrow(const HFSUniStr255 &name)
{
    return std::string(name.unicode, name.unicode + name.length); // ASCII names only
}

std::set<std::string> ListNames(const FSRef &folder, ItemCount batch)
{
    std::set<std::string> names;
    FSIterator iterator;
    if (FSOpenIterator(&folder, kFSIterateFlat, &iterator) != noErr)
        return names;
    std::vector<HFSUniStr255> buffer(batch);
    ItemCount count;
    while (FSGetCatalogInfoBulk(iterator, batch, &count, nullptr, kFSCatInfoNone, nullptr, nullptr, nullptr,
                                buffer.data()) == noErr) {
        EXPECT_GT(count, 0u);
        for (ItemCount k = 0; k < count; ++k)
            names.insert(Narrow(buffer[k]));
    }
    EXPECT_EQ(0u, count);
    FSCloseIterator(iterator);
    return names;
}

TEST(Iterator, ListsEachItemOnceAndHidesCompanions)
{
    TemporaryFolder folder;
    for (int k = 0; k < 25; ++k)
        WriteFile(folder / ("file" + std::to_string(k)), "");
    mkdir((folder / "sub").c_str(), 0755);
    WriteFile(folder / "sub/deeper", "");
    WriteFile(folder / "._file0", "companion");
    WriteFile(folder / "._orphan", "companion of nothing");
    symlink("nowhere", (folder / "link").c_str());

    std::set<std::string> expected{"sub", "._orphan", "link"};
    for (int k = 0; k < 25; ++k)
        expected.insert("file" + std::to_string(k));
    const FSRef ref = RefAt(folder.Path());
    EXPECT_EQ(expected, ListNames(ref, 1));
    EXPECT_EQ(expected, ListNames(ref, 7));
    EXPECT_EQ(expected, ListNames(ref, 100));

    TemporaryFolder empty;
    EXPECT_TRUE(ListNames(RefAt(empty.Path()), 1).empty());
}

TEST(Iterator, FillsRefsSpecsAndCatalogInfo)
{
    TemporaryFolder folder;
    mkdir((folder / "sub").c_str(), 0755);
    WriteFile(folder / "data", "1234567");
    symlink("data", (folder / "link").c_str());

    const FSRef ref = RefAt(folder.Path());
    FSIterator iterator;
    ASSERT_EQ(noErr, FSOpenIterator(&ref, kFSIterateFlat, &iterator));
    FSCatalogInfo infos[8];
    FSRef refs[8];
    FSSpec fsSpecs[8];
    HFSUniStr255 names[8];
    ItemCount count = 0;
    Boolean changed = true;
    ASSERT_EQ(noErr, FSGetCatalogInfoBulk(iterator, 8, &count, &changed, kFSCatInfoNodeFlags | kFSCatInfoDataSizes,
                                          infos, refs, fsSpecs, names));
    EXPECT_FALSE(changed);
    ASSERT_EQ(3u, count);
    for (ItemCount k = 0; k < count; ++k) {
        const std::string name = Narrow(names[k]);
        EXPECT_EQ(folder / name, PathOf(refs[k]));
        EXPECT_EQ(name, std::string(reinterpret_cast<char *>(fsSpecs[k].name + 1), fsSpecs[k].name[0]));
        EXPECT_EQ(name == "sub", (infos[k].nodeFlags & kFSNodeIsDirectoryMask) != 0);
        if (name == "data") {
            EXPECT_EQ(7u, infos[k].dataLogicalSize);
        }
    }
    EXPECT_EQ(errFSNoMoreItems, FSGetCatalogInfoBulk(iterator, 8, &count, nullptr, kFSCatInfoNone, nullptr, refs,
                                                     nullptr, nullptr));
    EXPECT_EQ(0u, count);
    EXPECT_EQ(errFSBadItemCount, FSGetCatalogInfoBulk(iterator, 0, &count, nullptr, kFSCatInfoNone, nullptr,
                                                      nullptr, nullptr, nullptr));
    EXPECT_EQ(noErr, FSCloseIterator(iterator));
}

TEST(Iterator, OpensFoldersOnly)
{
    TemporaryFolder folder;
    WriteFile(folder / "file", "");
    symlink(folder.Path().c_str(), (folder / "folderlink").c_str());
    FSIterator iterator = reinterpret_cast<FSIterator>(1);
    const FSRef file = RefAt(folder / "file"), ref = RefAt(folder.Path());
    EXPECT_EQ(errFSNotAFolder, FSOpenIterator(&file, kFSIterateFlat, &iterator));
    EXPECT_EQ(nullptr, iterator);
    const FSRef link = LinkRefAt(folder / "folderlink");
    EXPECT_EQ(errFSNotAFolder, FSOpenIterator(&link, kFSIterateFlat, &iterator));
    EXPECT_EQ(errFSBadIteratorFlags, FSOpenIterator(&ref, kFSIterateSubtree, &iterator));
    EXPECT_EQ(paramErr, FSOpenIterator(nullptr, kFSIterateFlat, &iterator));
    EXPECT_EQ(paramErr, FSCloseIterator(nullptr));
    ItemCount count;
    EXPECT_EQ(paramErr, FSGetCatalogInfoBulk(nullptr, 1, &count, nullptr, 0, nullptr, nullptr, nullptr, nullptr));
}

} // namespace
