#include <CoreServices/AppleEvents.h>
#include <CoreServices/MacErrors.h>
#include <OpenScripting/OSA.h>

#include <gtest/gtest.h>

#include <string>

namespace {

std::string TextOf(const AEDesc &desc)
{
    std::string text(static_cast<size_t>(AEGetDescDataSize(&desc)), '\0');
    if (!text.empty())
        AEGetDescData(&desc, &text[0], static_cast<Size>(text.size()));
    return text;
}

class LuaComponentTest : public ::testing::Test {
protected:
    void SetUp() override { component_ = OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype); }
    void TearDown() override { CloseComponent(component_); }

    OSAError Compile(const std::string &source, OSAID *script)
    {
        AEDesc text;
        AECreateDesc(typeUTF8Text, source.data(), static_cast<Size>(source.size()), &text);
        *script = kOSANullScript;
        OSAError err = OSACompile(component_, &text, kOSAModeNull, script);
        AEDisposeDesc(&text);
        return err;
    }

    std::string Display(OSAID value)
    {
        AEDesc text;
        if (OSADisplay(component_, value, typeChar, kOSAModeDisplayForHumans, &text) != noErr)
            return "<none>";
        std::string shown = TextOf(text);
        AEDisposeDesc(&text);
        return shown;
    }

    std::string ErrorMessage()
    {
        AEDesc text;
        OSAScriptError(component_, kOSAErrorMessage, typeChar, &text);
        std::string message = TextOf(text);
        AEDisposeDesc(&text);
        return message;
    }

    ComponentInstance component_ = nullptr;
};

} // namespace

TEST_F(LuaComponentTest, OnlyTheScriptingComponentOpens)
{
    ASSERT_NE(nullptr, component_);
    EXPECT_EQ(nullptr, OpenDefaultComponent(0x74657374, kAppleScriptSubtype));
    EXPECT_EQ(nullptr, OpenDefaultComponent(kOSAComponentType, 0x6A617661));
    ComponentInstance any = OpenDefaultComponent(kOSAComponentType, kAnyComponentSubType);
    EXPECT_NE(nullptr, any);
    EXPECT_EQ(noErr, CloseComponent(any));
    EXPECT_EQ(static_cast<OSErr>(badComponentInstance), CloseComponent(any)); // already closed
    EXPECT_EQ(static_cast<OSErr>(badComponentInstance), CloseComponent(nullptr));
    OSAID script = 1;
    EXPECT_EQ(badComponentInstance, OSAExecute(any, 1, kOSANullScript, kOSAModeNull, &script));
}

TEST_F(LuaComponentTest, ValuesAreShownForPeople)
{
    const std::pair<const char *, const char *> cases[] = {
        {"return 'say \"hi\"'", "\"say \\\"hi\\\"\""},
        {"return 10 // 3", "3"},
        {"return 10 / 4", "2.5"},
        {"return 2^1", "2.0"},
        {"return {}", "{}"},
        {"return {1, {2, 3}, 'x'}", "{1, {2, 3}, \"x\"}"},
        {"return {b = 2, a = 'one'}", "{a:\"one\", b:2}"},
        {"return true", "true"},
    };
    for (const auto &[source, shown] : cases) {
        OSAID script = kOSANullScript, value = kOSANullScript;
        ASSERT_EQ(noErr, Compile(source, &script)) << source;
        ASSERT_EQ(noErr, OSAExecute(component_, script, kOSANullScript, kOSAModeNull, &value)) << source;
        EXPECT_EQ(shown, Display(value)) << source;
        EXPECT_EQ(source, Display(script)); // a compiled script shows its source
        EXPECT_EQ(noErr, OSADispose(component_, value));
        EXPECT_EQ(errOSAInvalidID, OSADispose(component_, value));
        OSADispose(component_, script);
    }
}

TEST_F(LuaComponentTest, ErrorsCarryLuasMessageAndNumber)
{
    OSAID script = kOSANullScript;
    EXPECT_EQ(errOSAScriptError, Compile("return (", &script));
    EXPECT_EQ(kOSANullScript, script);
    EXPECT_EQ("script:1: unexpected symbol near <eof>", ErrorMessage());
    AEDesc number;
    ASSERT_EQ(noErr, OSAScriptError(component_, kOSAErrorNumber, typeSInt32, &number));
    SInt32 value = 0;
    AEGetDescData(&number, &value, sizeof value);
    EXPECT_EQ(errOSAScriptError, value);
    AEDisposeDesc(&number);
    EXPECT_EQ(errOSABadSelector, OSAScriptError(component_, 0x78787878, typeChar, &number));

    ASSERT_EQ(noErr, Compile("error({})", &script));
    OSAID result = 7;
    EXPECT_EQ(errOSAScriptError, OSAExecute(component_, script, kOSANullScript, kOSAModeNull, &result));
    EXPECT_EQ(kOSANullScript, result);
    EXPECT_EQ("(error object is a table value)", ErrorMessage());

    AEDesc notText;
    AECreateDesc(typeSInt32, &value, sizeof value, &notText);
    EXPECT_EQ(errOSABadStorageType, OSACompile(component_, &notText, kOSAModeNull, &script));
    AEDisposeDesc(&notText);
    EXPECT_EQ(paramErr, OSACompile(component_, nullptr, kOSAModeNull, &script));

    // Text that is a compiled chunk is not source: it does not compile.
    OSAID chunk = kOSANullScript;
    ASSERT_EQ(noErr, Compile("return 1", &chunk));
    AEDesc stored;
    ASSERT_EQ(noErr, OSAStore(component_, chunk, typeOSAGenericStorage, kOSAModeNull, &stored));
    const std::string bytes = TextOf(stored);
    AEDisposeDesc(&stored);
    OSAID fromText = 1;
    EXPECT_EQ(errOSAScriptError, Compile(bytes, &fromText));
    EXPECT_EQ(kOSANullScript, fromText);
    EXPECT_NE(std::string::npos, ErrorMessage().find("binary chunk"));
    EXPECT_EQ(errOSAInvalidID, OSAExecute(component_, 999, kOSANullScript, kOSAModeNull, &result));
}

TEST_F(LuaComponentTest, StoredScriptsLoadAndHandleEvents)
{
    OSAID script = kOSANullScript;
    ASSERT_EQ(noErr, Compile("count = 0\n"
                             "function KORUtick(n) count = count + n return count end\n"
                             "function quit() return 'bye' end\n",
                             &script));
    AEDesc stored;
    ASSERT_EQ(noErr, OSAStore(component_, script, typeOSAGenericStorage, kOSAModeNull, &stored));
    EXPECT_EQ(0, TextOf(stored).compare(0, 4, "\x1bLua"));
    OSAID loaded = kOSANullScript;
    ASSERT_EQ(noErr, OSALoad(component_, &stored, kOSAModeNull, &loaded));
    AEDisposeDesc(&stored);

    AppleEvent tick, quit, open;
    AECreateAppleEvent(0x4B4F5255, 0x7469636B, nullptr, kAutoGenerateReturnID, kAnyTransactionID, &tick);
    AECreateAppleEvent(kCoreEventClass, kAEQuitApplication, nullptr, kAutoGenerateReturnID, kAnyTransactionID, &quit);
    AECreateAppleEvent(kCoreEventClass, kAEOpenDocuments, nullptr, kAutoGenerateReturnID, kAnyTransactionID, &open);
    SInt32 step = 5;
    AEPutParamPtr(&tick, keyDirectObject, typeSInt32, &step, sizeof step);
    OSAID value = kOSANullScript;
    // Each execution starts from a fresh state, so the count never grows past one step.
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(noErr, OSAExecuteEvent(component_, &tick, loaded, kOSAModeNull, &value));
        EXPECT_EQ("5", Display(value));
        OSADispose(component_, value);
    }
    ASSERT_EQ(noErr, OSAExecuteEvent(component_, &quit, loaded, kOSAModeNull, &value));
    EXPECT_EQ("\"bye\"", Display(value));
    EXPECT_EQ(errAEEventNotHandled, OSAExecuteEvent(component_, &open, loaded, kOSAModeNull, &value));
    EXPECT_EQ(kOSANullScript, value);
    EXPECT_EQ(errAENotAppleEvent, OSAExecuteEvent(component_, &stored, loaded, kOSAModeNull, &value));
    for (AEDesc *desc : {&tick, &quit, &open})
        AEDisposeDesc(desc);

    // A chunk with a broken body is refused, not run.
    AEDesc broken;
    AECreateDesc(typeOSAGenericStorage, "\x1bLua\x54\x00\x19\x93\r\n\x1a\n", 12, &broken);
    EXPECT_EQ(errAECorruptData, OSALoad(component_, &broken, kOSAModeNull, &loaded));
    EXPECT_EQ(kOSANullScript, loaded);
    AEDisposeDesc(&broken);
}
