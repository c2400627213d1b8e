#include <ApplicationServices/Processes.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/AppleEvents.h>
#include <CoreServices/MacErrors.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <unistd.h>

namespace {

std::string DataOf(const AEDesc &desc)
{
    std::string bytes(static_cast<size_t>(AEGetDescDataSize(&desc)), '\0');
    if (!bytes.empty())
        AEGetDescData(&desc, &bytes[0], static_cast<Size>(bytes.size()));
    return bytes;
}

} // namespace

TEST(AEDataModelTest, DescriptorsKeepTheirOwnCopyAndRefuseBadArguments)
{
    char text[] = "hello";
    AEDesc desc, copy;
    ASSERT_EQ(noErr, AECreateDesc(typeChar, text, 5, &desc));
    text[0] = 'J';
    char out[8];
    for (Size size : {Size(8), Size(2)}) { // only the data bytes, at most size of them, are written
        std::memset(out, '#', sizeof out);
        ASSERT_EQ(noErr, AEGetDescData(&desc, out, size));
        EXPECT_EQ(size == 8 ? "hello###" : "he######", std::string(out, 8));
    }
    ASSERT_EQ(noErr, AEDuplicateDesc(&desc, &copy));
    ASSERT_EQ(noErr, AEReplaceDescData(typeUTF8Text, "bye", 3, &desc));
    EXPECT_EQ(static_cast<DescType>(typeUTF8Text), desc.descriptorType);
    EXPECT_EQ("bye", DataOf(desc));
    EXPECT_EQ("hello", DataOf(copy));
    EXPECT_EQ(noErr, AEDisposeDesc(&desc));
    EXPECT_EQ(static_cast<DescType>(typeNull), desc.descriptorType);
    EXPECT_EQ(nullptr, desc.dataHandle);
    EXPECT_EQ(noErr, AEDisposeDesc(&desc)); // a null descriptor disposes harmlessly
    AEDisposeDesc(&copy);

    ASSERT_EQ(noErr, AECreateDesc(typeNull, nullptr, 0, &desc));
    EXPECT_EQ(0, AEGetDescDataSize(&desc));
    EXPECT_EQ(noErr, AEGetDescData(&desc, out, sizeof out));
    AEDisposeDesc(&desc);
    EXPECT_EQ(paramErr, AECreateDesc(typeChar, nullptr, 4, &desc));
    EXPECT_EQ(static_cast<DescType>(typeNull), desc.descriptorType);
    EXPECT_EQ(paramErr, AECreateDesc(typeChar, "x", -1, &desc));
    EXPECT_EQ(paramErr, AECreateDesc(typeChar, "x", 1, nullptr));
    EXPECT_EQ(paramErr, AEGetDescData(nullptr, out, 1));
    EXPECT_EQ(paramErr, AEGetDescData(&desc, nullptr, 1));
    EXPECT_EQ(0, AEGetDescDataSize(nullptr));
    EXPECT_EQ(paramErr, AEDisposeDesc(nullptr));
    EXPECT_EQ(paramErr, AEDuplicateDesc(nullptr, &desc));
}

TEST(AEDataModelTest, ListsAndRecordsHoldCopiesByIndexAndKeyword)
{
    AEDescList list;
    ASSERT_EQ(noErr, AECreateList(nullptr, 0, false, &list));
    EXPECT_EQ(static_cast<DescType>(typeAEList), list.descriptorType);
    EXPECT_FALSE(AECheckIsRecord(&list));
    EXPECT_EQ(noErr, AEPutPtr(&list, 0, typeChar, "one", 3));
    EXPECT_EQ(noErr, AEPutPtr(&list, 2, typeChar, "two", 3)); // count + 1 appends
    SInt32 three = 3;
    EXPECT_EQ(noErr, AEPutPtr(&list, 0, typeSInt32, &three, sizeof three));
    EXPECT_EQ(noErr, AEPutPtr(&list, 1, typeChar, "uno", 3)); // replaces
    EXPECT_EQ(errAEIllegalIndex, AEPutPtr(&list, 9, typeChar, "x", 1));
    long count = 0;
    EXPECT_EQ(noErr, AECountItems(&list, &count));
    EXPECT_EQ(3, count);

    char text[8] = {0};
    Size actual = 0;
    DescType type = 0;
    AEKeyword key = 0;
    EXPECT_EQ(noErr, AEGetNthPtr(&list, 3, typeChar, &key, &type, text, 1, &actual));
    EXPECT_EQ(static_cast<DescType>(typeChar), type); // the number, coerced to text
    EXPECT_EQ(1, actual);
    EXPECT_EQ('3', text[0]);
    EXPECT_EQ(static_cast<AEKeyword>(typeWildCard), key);
    EXPECT_EQ(noErr, AEGetNthPtr(&list, 1, typeWildCard, nullptr, &type, text, 2, &actual));
    EXPECT_EQ(3, actual); // the full size, even though only two bytes were copied
    EXPECT_EQ(0, std::memcmp(text, "un", 2));
    EXPECT_EQ(errAEIllegalIndex, AEGetNthPtr(&list, 0, typeChar, nullptr, nullptr, text, 8, nullptr));
    EXPECT_EQ(errAEIllegalIndex, AEGetNthPtr(&list, 4, typeChar, nullptr, nullptr, text, 8, nullptr));
    EXPECT_EQ(errAECoercionFail, AEGetNthPtr(&list, 1, typeSInt32, nullptr, nullptr, text, 8, nullptr));

    // Items are copies: changing the list later does not touch what was taken.
    AEDesc item;
    EXPECT_EQ(noErr, AEGetNthDesc(&list, 2, typeWildCard, nullptr, &item));
    EXPECT_EQ(noErr, AEDeleteItem(&list, 2));
    EXPECT_EQ("two", DataOf(item));
    AEDisposeDesc(&item);
    AECountItems(&list, &count);
    EXPECT_EQ(2, count);

    AERecord record;
    ASSERT_EQ(noErr, AECreateList(nullptr, 0, true, &record));
    EXPECT_TRUE(AECheckIsRecord(&record));
    EXPECT_EQ(noErr, AEPutKeyPtr(&record, 0x6E616D65, typeChar, "Ann", 3));
    EXPECT_EQ(noErr, AEPutKeyDesc(&record, 0x6C697374, &list)); // nested list
    EXPECT_EQ(noErr, AEPutKeyPtr(&record, 0x6E616D65, typeChar, "Bob", 3)); // same keyword replaces
    AECountItems(&record, &count);
    EXPECT_EQ(2, count);
    AEDesc nested;
    EXPECT_EQ(noErr, AEGetKeyDesc(&record, 0x6C697374, typeWildCard, &nested));
    AECountItems(&nested, &count);
    EXPECT_EQ(2, count);
    AEDisposeDesc(&nested);
    EXPECT_EQ(noErr, AEGetKeyPtr(&record, 0x6E616D65, typeUTF8Text, &type, text, sizeof text, &actual));
    EXPECT_EQ("Bob", std::string(text, actual));
    EXPECT_EQ(errAEDescNotFound, AEGetKeyDesc(&record, 0x6E6F6E65, typeWildCard, &nested));
    EXPECT_EQ(noErr, AEDeleteKeyDesc(&record, 0x6E616D65));
    EXPECT_EQ(errAEDescNotFound, AEDeleteKeyDesc(&record, 0x6E616D65));
    EXPECT_EQ(errAEWrongDataType, AEPutKeyPtr(&list, 0x6E616D65, typeChar, "x", 1)); // a list has no keys

    // Plain descriptors are neither.
    AEDesc plain;
    AECreateDesc(typeChar, "p", 1, &plain);
    EXPECT_EQ(errAEWrongDataType, AECountItems(&plain, &count));
    EXPECT_EQ(errAEWrongDataType, AEPutPtr(&plain, 0, typeChar, "x", 1));
    EXPECT_EQ(paramErr, AECountItems(nullptr, &count));
    EXPECT_EQ(paramErr, AEGetNthDesc(&list, 1, typeWildCard, nullptr, nullptr));
    for (AEDesc *desc : {&list, &record, &plain})
        AEDisposeDesc(desc);
}

TEST(AEDataModelTest, EventsKeepParametersAndAttributesApart)
{
    const ProcessSerialNumber psn = {0, kCurrentProcess};
    AEAddressDesc target;
    AECreateDesc(typeProcessSerialNumber, &psn, sizeof psn, &target);
    AppleEvent event;
    ASSERT_EQ(noErr, AECreateAppleEvent(kCoreEventClass, kAEOpenDocuments, &target, kAutoGenerateReturnID,
                                        kAnyTransactionID, &event));
    EXPECT_FALSE(AECheckIsRecord(&target));
    OSType code = 0;
    EXPECT_EQ(noErr, AEGetAttributePtr(&event, keyEventIDAttr, typeType, nullptr, &code, sizeof code, nullptr));
    EXPECT_EQ(static_cast<OSType>(kAEOpenDocuments), code);
    AEReturnID first = 0, second = 0;
    AEGetAttributePtr(&event, keyReturnIDAttr, typeSInt16, nullptr, &first, sizeof first, nullptr);
    AppleEvent other;
    AECreateAppleEvent(kCoreEventClass, kAEOpenDocuments, &target, kAutoGenerateReturnID, kAnyTransactionID, &other);
    AEGetAttributePtr(&other, keyReturnIDAttr, typeSInt16, nullptr, &second, sizeof second, nullptr);
    EXPECT_GT(first, 0);
    EXPECT_NE(first, second);
    AEDisposeDesc(&other);

    EXPECT_EQ(noErr, AEPutParamPtr(&event, keyDirectObject, typeChar, "doc", 3));
    long count = 0;
    AECountItems(&event, &count);
    EXPECT_EQ(1, count); // attributes are not parameters
    EXPECT_EQ(errAEDescNotFound, AEGetParamPtr(&event, keyEventIDAttr, typeType, nullptr, &code, 4, nullptr));
    AEDesc address;
    EXPECT_EQ(noErr, AEGetAttributeDesc(&event, keyAddressAttr, typeKernelProcessID, &address));
    pid_t pid = 0;
    AEGetDescData(&address, &pid, sizeof pid);
    EXPECT_EQ(getpid(), pid);
    AEDisposeDesc(&address);
    Size size = 0;
    EXPECT_EQ(noErr, AESizeOfParam(&event, keyDirectObject, nullptr, &size));
    EXPECT_EQ(3, size);
    EXPECT_EQ(noErr, AEDeleteParam(&event, keyDirectObject));
    EXPECT_EQ(errAEDescNotFound, AESizeOfParam(&event, keyDirectObject, nullptr, &size));
    EXPECT_EQ(errAENotAppleEvent, AEPutParamPtr(&target, keyDirectObject, typeChar, "x", 1));

    // Flattened and read back, the event is the same, and corrupt bytes are refused.
    AEPutParamPtr(&event, keyDirectObject, typeChar, "again", 5);
    const Size flatSize = AESizeOfFlattenedDesc(&event);
    std::string flat(static_cast<size_t>(flatSize), '\0');
    EXPECT_EQ(errAEBufferTooSmall, AEFlattenDesc(&event, &flat[0], flatSize - 1, &size));
    ASSERT_EQ(noErr, AEFlattenDesc(&event, &flat[0], flatSize, &size));
    AppleEvent copy;
    ASSERT_EQ(noErr, AEUnflattenDesc(flat.data(), &copy));
    char text[8] = {0};
    EXPECT_EQ(noErr, AEGetParamPtr(&copy, keyDirectObject, typeChar, nullptr, text, sizeof text, &size));
    EXPECT_EQ("again", std::string(text, size));
    EXPECT_EQ(noErr, AEGetAttributePtr(&copy, keyEventClassAttr, typeType, nullptr, &code, sizeof code, nullptr));
    EXPECT_EQ(static_cast<OSType>(kCoreEventClass), code);
    AEDisposeDesc(&copy);
    for (size_t cut = 0; cut < flat.size(); cut += 3) {
        std::string broken = flat;
        broken[cut] = static_cast<char>(broken[cut] ^ 0x5A);
        if (AEUnflattenDesc(broken.data(), &copy) == noErr)
            AEDisposeDesc(&copy); // a changed byte of data still reads; a changed length never overruns
    }
    const char truncated[] = {0, 0, 0, 9, 'T', 'E', 'X', 'T', 0};
    EXPECT_EQ(errAECorruptData, AEUnflattenDesc(truncated, &copy));
    AEDisposeDesc(&event);
    AEDisposeDesc(&target);
}
