#include <CoreServices/Resources.h>

#include "FileTestSupport.h"

#include <cstring>
#include <map>
#include <tuple>

namespace {

constexpr ResType kText = 0x54455854; // 'TEXT'
constexpr ResType kStr = 0x53545220;  // 'STR '
constexpr ResType kIcon = 0x49434E23; // 'ICN#'

// The test's own reading of a resource fork: (type, id) -> (name, data).
using Contents = std::map<std::pair<ResType, SInt16>, std::pair<std::string, std::string>>;

Contents ParseFork(const std::string &fork)
{
    Contents contents;
    const UInt32 data = ReadBE32(fork, 0), map = ReadBE32(fork, 4);
    const size_t typeList = map + ReadBE16(fork, map + 24), nameList = map + ReadBE16(fork, map + 26);
    const int types = ReadBE16(fork, typeList) == 0xFFFF ? 0 : ReadBE16(fork, typeList) + 1;
    for (int t = 0; t < types; ++t) {
        const size_t entry = typeList + 2 + t * 8;
        const ResType type = ReadBE32(fork, entry);
        const int count = ReadBE16(fork, entry + 4) + 1;
        for (int r = 0; r < count; ++r) {
            const size_t ref = typeList + ReadBE16(fork, entry + 6) + r * 12;
            const SInt16 id = static_cast<SInt16>(ReadBE16(fork, ref));
            std::string name;
            if (ReadBE16(fork, ref + 2) != 0xFFFF) {
                const size_t at = nameList + ReadBE16(fork, ref + 2);
                name = fork.substr(at + 1, UInt8(fork[at]));
            }
            const size_t at = data + (ReadBE32(fork, ref + 4) & 0xFFFFFF);
            contents[{type, id}] = {name, fork.substr(at + 4, ReadBE32(fork, at))};
        }
    }
    return contents;
}

// A fork laid out as a Mac lays it out, map after the data.
std::string MacFork(const std::vector<std::tuple<ResType, SInt16, std::string, std::string>> &resources)
{
    std::map<ResType, std::vector<size_t>> byType;
    for (size_t k = 0; k < resources.size(); ++k)
        byType[std::get<0>(resources[k])].push_back(k);
    std::string data, refs, names, typeList;
    AppendBE16(typeList, static_cast<UInt16>(byType.size() - 1));
    for (auto &[type, indexes] : byType) {
        AppendBE32(typeList, type);
        AppendBE16(typeList, static_cast<UInt16>(indexes.size() - 1));
        AppendBE16(typeList, static_cast<UInt16>(2 + byType.size() * 8 + refs.size()));
        for (size_t k : indexes) {
            const auto &[unused, id, name, bytes] = resources[k];
            (void)unused;
            AppendBE16(refs, static_cast<UInt16>(id));
            AppendBE16(refs, name.empty() ? 0xFFFF : static_cast<UInt16>(names.size()));
            names += name.empty() ? "" : static_cast<char>(name.size()) + name;
            AppendBE32(refs, static_cast<UInt32>(data.size())); // no attributes, 24-bit offset
            AppendBE32(refs, 0);
            AppendBE32(data, static_cast<UInt32>(bytes.size()));
            data += bytes;
        }
    }
    std::string header;
    for (size_t field : {size_t(256), 256 + data.size(), data.size(), 28 + typeList.size() + refs.size() + names.size()})
        AppendBE32(header, static_cast<UInt32>(field));
    std::string fork = header + std::string(240, '\0') + data + header + std::string(8, '\0'); // + handle, file, attributes
    AppendBE16(fork, 28);
    AppendBE16(fork, static_cast<UInt16>(28 + typeList.size() + refs.size()));
    return fork + typeList + refs + names;
}

std::string Companion(const std::string &fork)
{
    return AppleDoubleImage("", {{2, fork}});
}

std::string ForkInCompanion(const std::string &path)
{
    return CompanionEntries(ReadFile(path))[2];
}

std::string HandleText(Handle h)
{
    return h ? std::string(*h, static_cast<size_t>(GetHandleSize(h))) : "<null>";
}

Handle HandleOf(const std::string &text)
{
    Handle h = nullptr;
    PtrToHand(text.data(), &h, static_cast<long>(text.size()));
    return h;
}

TEST(Resources, ForkWithSeveralTypesIsWrittenInTheMacFormat)
{
    TemporaryFolder folder;
    const FSRef parent = RefAt(folder.Path());
    const auto name = Units(u"Settings");
    FSRef file;
    FSCreateResFile(&parent, name.size(), name.data(), kFSCatInfoNone, nullptr, &file, nullptr);
    ASSERT_EQ(noErr, ResError());
    // A new resource fork holds the empty map, and nothing else.
    const std::string empty = ForkInCompanion(folder / "._Settings");
    ASSERT_EQ(286u, empty.size());
    EXPECT_TRUE(ParseFork(empty).empty());

    const ResFileRefNum refNum = FSOpenResFile(&file, fsRdWrPerm);
    ASSERT_NE(-1, refNum);
    EXPECT_EQ(refNum, CurResFile());
    AddResource(HandleOf("hello"), kText, 128, reinterpret_cast<ConstStr255Param>("\x05Greet"));
    ASSERT_EQ(noErr, ResError());
    AddResource(HandleOf("second"), kText, 129, nullptr);
    AddResource(HandleOf(std::string("\x03" "abc", 4)), kStr, -16000, nullptr);
    AddResource(HandleOf(std::string(128, '\x55')), kIcon, 128, nullptr);
    EXPECT_EQ(3, Count1Types());
    EXPECT_EQ(2, Count1Resources(kText));
    UpdateResFile(refNum);
    ASSERT_EQ(noErr, ResError());

    Contents written = ParseFork(ForkInCompanion(folder / "._Settings"));
    ASSERT_EQ(4u, written.size());
    EXPECT_EQ(std::make_pair(std::string("Greet"), std::string("hello")), (written[{kText, 128}]));
    EXPECT_EQ("second", (written[{kText, 129}].second));
    EXPECT_EQ(std::string("\x03" "abc", 4), (written[{kStr, -16000}].second));
    EXPECT_EQ(std::string(128, '\x55'), (written[{kIcon, 128}].second));

    // A change to a resource's handle is written once it is marked.
    Handle text = Get1Resource(kText, 129);
    ASSERT_NE(nullptr, text);
    SetHandleSize(text, 3);
    std::memcpy(*text, "new", 3);
    ChangedResource(text);
    Handle icon = Get1Resource(kIcon, 128);
    RemoveResource(icon);
    ASSERT_EQ(noErr, ResError());
    DisposeHandle(icon); // a removed resource's handle is the caller's
    CloseResFile(refNum);
    ASSERT_EQ(noErr, ResError());
    written = ParseFork(ForkInCompanion(folder / "._Settings"));
    EXPECT_EQ(3u, written.size());
    EXPECT_EQ("new", (written[{kText, 129}].second));
    EXPECT_EQ(0u, (written.count({kIcon, 128})));

    // Read back through a fresh open.
    const ResFileRefNum again = FSOpenResFile(&file, fsRdPerm);
    ASSERT_NE(-1, again);
    Handle greet = Get1Resource(kText, 128);
    EXPECT_EQ("hello", HandleText(greet));
    ResID id = 0;
    ResType type = 0;
    Str255 resName;
    GetResInfo(greet, &id, &type, resName);
    EXPECT_EQ(128, id);
    EXPECT_EQ(kText, type);
    EXPECT_EQ("Greet", std::string(reinterpret_cast<char *>(resName + 1), resName[0]));
    EXPECT_EQ(again, HomeResFile(greet));
    Handle refused = HandleOf("x");
    AddResource(refused, kText, 200, nullptr);
    EXPECT_EQ(addResFailed, ResError()); // opened for reading
    DisposeHandle(refused);
    EXPECT_EQ(nullptr, Get1Resource(kText, 999));
    EXPECT_EQ(resNotFound, ResError());
    CloseResFile(again);
}

TEST(Resources, ForksWrittenByAMacOpenAndChainBySearchOrder)
{
    TemporaryFolder folder;
    WriteFile(folder / "App", "");
    WriteFile(folder / "._App", Companion(MacFork({{kStr, 1, "app", "from app"}, {kText, 5, "", "app text"}})));
    WriteFile(folder / "Doc", "");
    WriteFile(folder / "._Doc", Companion(MacFork({{kText, 5, "", "doc text"}})));
    const FSRef app = RefAt(folder / "App"), doc = RefAt(folder / "Doc");

    const ResFileRefNum appFile = FSOpenResFile(&app, fsRdPerm);
    const ResFileRefNum docFile = FSOpenResFile(&doc, fsRdPerm);
    ASSERT_NE(-1, appFile);
    ASSERT_NE(-1, docFile);
    EXPECT_EQ(docFile, CurResFile());
    EXPECT_EQ("doc text", HandleText(Get1Resource(kText, 5)));
    EXPECT_EQ(nullptr, Get1Resource(kStr, 1));               // not in the current file
    EXPECT_EQ("from app", HandleText(GetResource(kStr, 1))); // but down the chain
    EXPECT_EQ("from app", HandleText(GetNamedResource(kStr, reinterpret_cast<ConstStr255Param>("\x03" "app"))));
    UseResFile(appFile);
    EXPECT_EQ("app text", HandleText(Get1Resource(kText, 5)));
    EXPECT_EQ(nullptr, GetResource(kText, 6));
    UseResFile(4321);
    EXPECT_EQ(resFNotFound, ResError());
    EXPECT_EQ(appFile, CurResFile());
    CloseResFile(docFile);
    CloseResFile(appFile);
    EXPECT_EQ(0, CurResFile());
}

TEST(Resources, MalformedMapsAreRefusedWithMapReadErr)
{
    TemporaryFolder folder;
    WriteFile(folder / "f", "");
    const FSRef ref = RefAt(folder / "f");
    const std::string good = MacFork({{kText, 1, "n", "abcdef"}, {kStr, 2, "", "xy"}});

    const auto patched = [&](size_t at, const std::string &bytes) {
        return std::string(good).replace(at, bytes.size(), bytes);
    };
    const size_t map = ReadBE32(good, 4);
    const std::string bad[] = {
        good.substr(0, good.size() - 5),                        // truncated map
        good.substr(0, 10),                                     // truncated header
        patched(4, std::string("\x00\x00\x01\x02", 4)),         // map inside the data
        patched(8, "\x7F\xFF\xFF\xFF"),                          // absurd data length
        patched(map + 28, "\x7F\xFF"),                           // more types than the map holds
        patched(256, std::string("\x00\x10\x00\x00", 4)),       // a data entry past the data area
        patched(map + 26, "\xFF\xF0"),                           // a name list outside the map
    };

    for (size_t k = 0; k < std::size(bad); ++k) {
        WriteFile(folder / "._f", Companion(bad[k]));
        EXPECT_EQ(-1, FSOpenResFile(&ref, fsRdPerm)) << "case " << k;
        EXPECT_EQ(mapReadErr, ResError()) << "case " << k;
    }
    WriteFile(folder / "._f", Companion(good));
    const ResFileRefNum refNum = FSOpenResFile(&ref, fsRdPerm);
    EXPECT_NE(-1, refNum);
    CloseResFile(refNum);

    // A file with no resource fork at all has nothing to open.
    unlink((folder / "._f").c_str());
    EXPECT_EQ(-1, FSOpenResFile(&ref, fsRdPerm));
    EXPECT_EQ(eofErr, ResError());
}

TEST(Resources, HandlesAndAttributes)
{
    TemporaryFolder folder;
    const FSRef parent = RefAt(folder.Path());
    const auto name = Units(u"h");
    FSRef file;
    ASSERT_EQ(noErr, FSCreateResourceFile(&parent, name.size(), name.data(), kFSCatInfoNone, nullptr, 0, nullptr,
                                          &file, nullptr)); // a map in the data fork
    EXPECT_EQ(paramErr, FSOpenResourceFile(&file, 0, nullptr, fsRdWrPerm, nullptr));
    ResFileRefNum opened = -1;
    ASSERT_EQ(noErr, FSOpenResourceFile(&file, 0, nullptr, fsRdWrPerm, &opened));
    Handle mine = HandleOf("abc");
    AddResource(mine, kText, Unique1ID(kText), nullptr);
    AddResource(mine, kText, 300, nullptr);
    EXPECT_EQ(addResFailed, ResError()); // already a resource
    ChangedResource(mine);
    ReleaseResource(mine);
    EXPECT_EQ(resAttrErr, ResError()); // unwritten changes
    UpdateResFile(opened);
    DetachResource(mine);
    EXPECT_EQ(noErr, ResError());
    EXPECT_EQ(-1, HomeResFile(mine));
    DisposeHandle(mine);
    Handle again = Get1Resource(kText, 128);
    EXPECT_EQ("abc", HandleText(again));
    SetResAttrs(again, resProtected);
    ChangedResource(again);
    EXPECT_EQ(resAttrErr, ResError());
    ReleaseResource(again);
    EXPECT_EQ(noErr, ResError());
    CloseResFile(opened);
    EXPECT_EQ(ReadBE32(ReadFile(folder / "h"), 0), 256u); // the data fork holds the map
    GetResInfo(nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(resNotFound, ResError());
}

} // namespace
