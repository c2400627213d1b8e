#include <CoreServices/Resources.h>

#include "FileTestSupport.h"

#include <cstring>
#include <map>
#include <tuple>

namespace {

constexpr ResType kText = 0x54455854; // 'TEXT'
constexpr ResType kStr = 0x53545220;  // 'STR '
constexpr ResType kIcon = 0x49434E23; // 'ICN#'

UInt32 Be32(const std::string &b, size_t at)
{
    return (UInt32(UInt8(b[at])) << 24) | (UInt32(UInt8(b[at + 1])) << 16) | (UInt32(UInt8(b[at + 2])) << 8) |
           UInt32(UInt8(b[at + 3]));
}
UInt16 Be16(const std::string &b, size_t at)
{
    return static_cast<UInt16>((UInt8(b[at]) << 8) | UInt8(b[at + 1]));
}
void Put32(std::string &b, UInt32 v)
{
    for (int s = 24; s >= 0; s -= 8)
        b += static_cast<char>(v >> s);
}
void Put16(std::string &b, UInt16 v)
{
    b += static_cast<char>(v >> 8);
    b += static_cast<char>(v);
}

// The test's own reading of a resource fork: (type, id) -> (name, data).
using Contents = std::map<std::pair<ResType, SInt16>, std::pair<std::string, std::string>>;

Contents ParseFork(const std::string &fork)
{
    Contents contents;
    const UInt32 data = Be32(fork, 0), map = Be32(fork, 4);
    const size_t typeList = map + Be16(fork, map + 24), nameList = map + Be16(fork, map + 26);
    const int types = Be16(fork, typeList) == 0xFFFF ? 0 : Be16(fork, typeList) + 1;
    for (int t = 0; t < types; ++t) {
        const size_t entry = typeList + 2 + t * 8;
        const ResType type = Be32(fork, entry);
        const int count = Be16(fork, entry + 4) + 1;
        for (int r = 0; r < count; ++r) {
            const size_t ref = typeList + Be16(fork, entry + 6) + r * 12;
            const SInt16 id = static_cast<SInt16>(Be16(fork, ref));
            std::string name;
            if (Be16(fork, ref + 2) != 0xFFFF) {
                const size_t at = nameList + Be16(fork, ref + 2);
                name = fork.substr(at + 1, UInt8(fork[at]));
            }
            const size_t at = data + (Be32(fork, ref + 4) & 0xFFFFFF);
            contents[{type, id}] = {name, fork.substr(at + 4, Be32(fork, at))};
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
    Put16(typeList, static_cast<UInt16>(byType.size() - 1));
    size_t refOffset = 2 + byType.size() * 8;
    for (auto &[type, indexes] : byType) {
        Put32(typeList, type);
        Put16(typeList, static_cast<UInt16>(indexes.size() - 1));
        Put16(typeList, static_cast<UInt16>(refOffset + refs.size()));
        for (size_t k : indexes) {
            const auto &[t, id, name, bytes] = resources[k];
            (void)t;
            Put16(refs, static_cast<UInt16>(id));
            if (name.empty()) {
                Put16(refs, 0xFFFF);
            } else {
                Put16(refs, static_cast<UInt16>(names.size()));
                names += static_cast<char>(name.size());
                names += name;
            }
            refs += '\0';
            const UInt32 off = static_cast<UInt32>(data.size());
            refs += static_cast<char>(off >> 16);
            refs += static_cast<char>(off >> 8);
            refs += static_cast<char>(off);
            Put32(refs, 0);
            Put32(data, static_cast<UInt32>(bytes.size()));
            data += bytes;
        }
    }
    std::string header;
    const UInt32 mapLength = static_cast<UInt32>(28 + typeList.size() + refs.size() + names.size());
    Put32(header, 256);
    Put32(header, static_cast<UInt32>(256 + data.size()));
    Put32(header, static_cast<UInt32>(data.size()));
    Put32(header, mapLength);
    std::string fork = header + std::string(240, '\0') + data + header;
    Put32(fork, 0);
    Put16(fork, 0);
    Put16(fork, 0);
    Put16(fork, 28);
    Put16(fork, static_cast<UInt16>(28 + typeList.size() + refs.size()));
    return fork + typeList + refs + names;
}

std::string Companion(const std::string &fork)
{
    std::string image;
    Put32(image, 0x00051607);
    Put32(image, 0x00020000);
    image += std::string(16, ' ');
    Put16(image, 1);
    Put32(image, 2);
    Put32(image, 38);
    Put32(image, static_cast<UInt32>(fork.size()));
    return image + fork;
}

std::string ForkInCompanion(const std::string &path)
{
    const std::string image = ReadFile(path);
    if (image.size() < 26)
        return "";
    for (size_t k = 0; k < Be16(image, 24); ++k)
        if (Be32(image, 26 + k * 12) == 2)
            return image.substr(Be32(image, 26 + k * 12 + 4), Be32(image, 26 + k * 12 + 8));
    return "";
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

    std::vector<std::string> bad;
    bad.push_back(good.substr(0, good.size() - 5));          // truncated map
    bad.push_back(good.substr(0, 10));                      // truncated header
    std::string overlap = good;                             // map inside the data
    overlap.replace(4, 4, std::string("\x00\x00\x01\x02", 4));
    bad.push_back(overlap);
    std::string huge = good;                                // absurd data length
    huge.replace(8, 4, std::string("\x7F\xFF\xFF\xFF", 4));
    bad.push_back(huge);
    std::string types = good;                               // more types than the map holds
    const size_t map = Be32(good, 4);
    types.replace(map + 28, 2, std::string("\x7F\xFF", 2));
    bad.push_back(types);
    std::string entry = good;                               // a data entry past the data area
    entry.replace(256, 4, std::string("\x00\x10\x00\x00", 4));
    bad.push_back(entry);
    std::string name = good;                                // a name list outside the map
    name.replace(map + 26, 2, std::string("\xFF\xF0", 2));
    bad.push_back(name);

    for (size_t k = 0; k < bad.size(); ++k) {
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
    const ResFileRefNum refNum = FSOpenResourceFile(&file, 0, nullptr, fsRdWrPerm, nullptr) == paramErr
                                     ? -1
                                     : 0;
    EXPECT_EQ(-1, refNum);
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
    EXPECT_EQ(Be32(ReadFile(folder / "h"), 0), 256u); // the data fork holds the map
    GetResInfo(nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(resNotFound, ResError());
}

} // namespace
