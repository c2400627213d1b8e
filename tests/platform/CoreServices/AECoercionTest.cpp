#include <ApplicationServices/Processes.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/Files.h>
#include <CoreServices/MacErrors.h>

#include "FileTestSupport.h"

namespace {

std::string DataOf(const AEDesc &desc)
{
    std::string bytes(static_cast<size_t>(AEGetDescDataSize(&desc)), '\0');
    if (!bytes.empty())
        AEGetDescData(&desc, &bytes[0], static_cast<Size>(bytes.size()));
    return bytes;
}

// Coerces the bytes and answers the result's bytes ("<fail>" when refused).
std::string Coerced(DescType from, const void *data, Size size, DescType to)
{
    AEDesc result;
    if (AECoercePtr(from, data, size, to, &result) != noErr) {
        EXPECT_EQ(static_cast<DescType>(typeNull), result.descriptorType);
        return "<fail>";
    }
    EXPECT_EQ(to == typeWildCard ? from : to, result.descriptorType);
    std::string bytes = DataOf(result);
    AEDisposeDesc(&result);
    return bytes;
}

template <typename T>
std::string Raw(T value)
{
    return std::string(reinterpret_cast<const char *>(&value), sizeof value);
}

} // namespace

TEST(AECoercionTest, BetweenTheBasicTypes)
{
    const SInt32 fortyTwo = 42;
    const double half = 2.5;
    const Boolean yes = true;
    EXPECT_EQ("42", Coerced(typeSInt32, &fortyTwo, 4, typeChar));
    EXPECT_EQ(Raw<SInt16>(42), Coerced(typeSInt32, &fortyTwo, 4, typeSInt16));
    EXPECT_EQ(Raw<double>(42.0), Coerced(typeSInt32, &fortyTwo, 4, typeIEEE64BitFloatingPoint));
    EXPECT_EQ(Raw<SInt32>(-17), Coerced(typeChar, " -17", 4, typeSInt32));
    EXPECT_EQ(Raw<double>(2.5), Coerced(typeChar, "2.5", 3, typeIEEE64BitFloatingPoint));
    EXPECT_EQ("2.5", Coerced(typeIEEE64BitFloatingPoint, &half, sizeof half, typeChar));
    EXPECT_EQ("<fail>", Coerced(typeIEEE64BitFloatingPoint, &half, sizeof half, typeSInt32)); // not whole
    EXPECT_EQ("<fail>", Coerced(typeChar, "12abc", 5, typeSInt32));
    const SInt32 big = 70000;
    EXPECT_EQ("<fail>", Coerced(typeSInt32, &big, 4, typeSInt16)); // does not fit
    const SInt32 negative = -1;
    EXPECT_EQ("<fail>", Coerced(typeSInt32, &negative, 4, typeUInt32));

    EXPECT_EQ("true", Coerced(typeBoolean, &yes, 1, typeChar));
    EXPECT_EQ(Raw<Boolean>(true), Coerced(typeTrue, nullptr, 0, typeBoolean));
    EXPECT_EQ(Raw<Boolean>(false), Coerced(typeChar, "FALSE", 5, typeBoolean));
    EXPECT_EQ(Raw<SInt32>(1), Coerced(typeBoolean, &yes, 1, typeSInt32));
    EXPECT_EQ("<fail>", Coerced(typeSInt32, &fortyTwo, 4, typeBoolean));

    // Text: the system encoding ('TEXT', UTF-8 here), UTF-8 and UTF-16.
    const std::string utf8 = "caf\xC3\xA9";
    const UniChar utf16[] = {'c', 'a', 'f', 0xE9};
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(utf16), sizeof utf16),
              Coerced(typeUTF8Text, utf8.data(), static_cast<Size>(utf8.size()), typeUnicodeText));
    EXPECT_EQ(utf8, Coerced(typeUnicodeText, utf16, sizeof utf16, typeChar));
    EXPECT_EQ("<fail>", Coerced(typeUnicodeText, "abc", 3, typeChar)); // half a character

    // Four-character codes, processes.
    const OSType code = 0x54455854; // 'TEXT'
    EXPECT_EQ("TEXT", Coerced(typeType, &code, 4, typeChar));
    EXPECT_EQ(Raw<OSType>(0x6F617070), Coerced(typeChar, "oapp", 4, typeType));
    EXPECT_EQ("<fail>", Coerced(typeChar, "toolong", 7, typeEnumerated));
    const ProcessSerialNumber current = {0, kCurrentProcess};
    EXPECT_EQ(Raw<pid_t>(getpid()), Coerced(typeProcessSerialNumber, &current, sizeof current, typeKernelProcessID));
    const pid_t pid = 1234;
    const ProcessSerialNumber numbered = {0, 1234};
    EXPECT_EQ(Raw(numbered), Coerced(typeKernelProcessID, &pid, sizeof pid, typeProcessSerialNumber));

    // Files: a path, an FSRef, an alias and a file URL all name the same file.
    TemporaryFolder folder;
    const std::string path = folder / "file name.txt";
    WriteFile(path, "");
    const std::string ref = Coerced(typeChar, path.data(), static_cast<Size>(path.size()), typeFSRef);
    ASSERT_EQ(sizeof(FSRef), ref.size());
    const std::string alias = Coerced(typeFSRef, ref.data(), static_cast<Size>(ref.size()), typeAlias);
    ASSERT_NE("<fail>", alias);
    const std::string url = Coerced(typeAlias, alias.data(), static_cast<Size>(alias.size()), typeFileURL);
    EXPECT_EQ("file://" + folder.Path() + "/file%20name.txt", url);
    EXPECT_EQ(path, Coerced(typeFileURL, url.data(), static_cast<Size>(url.size()), typeChar));
    EXPECT_EQ("<fail>", Coerced(typeChar, "/no/such/file", 13, typeFSRef));
    EXPECT_EQ("<fail>", Coerced(typeAlias, "junk", 4, typeFSRef));

    // Anything to itself and to '****'; an item to a list of one; nothing else.
    EXPECT_EQ("42", Coerced(typeChar, "42", 2, typeWildCard));
    AEDesc list;
    EXPECT_EQ(noErr, AECoercePtr(typeChar, "x", 1, typeAEList, &list));
    long count = 0;
    AECountItems(&list, &count);
    EXPECT_EQ(1, count);
    AEDesc back;
    EXPECT_EQ(errAECoercionFail, AECoerceDesc(&list, typeChar, &back));
    AEDisposeDesc(&list);
    EXPECT_EQ("<fail>", Coerced(typeData, "abc", 3, typeSInt32));
    EXPECT_EQ(paramErr, AECoerceDesc(nullptr, typeChar, &back));
    EXPECT_EQ(paramErr, AECoercePtr(typeChar, nullptr, 4, typeChar, &back));
}
