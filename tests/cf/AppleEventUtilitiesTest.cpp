#include <KORU/AppleEventUtilities.h>

#include <ApplicationServices/Processes.h>
#include <CoreServices/MacErrors.h>

#include "../platform/CoreServices/FileTestSupport.h"

#include <chrono>
#include <csignal>
#include <cstring>
#include <thread>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

constexpr AEEventClass kTestClass = 0x4B4F5255; // 'KORU'
constexpr AEEventID kTestEcho = 0x6563686F;     // 'echo'
constexpr AEKeyword kCountKey = 0x636E7420;     // 'cnt '

std::string Text(CFStringRef string)
{
    if (string == nullptr)
        return "<NULL>";
    char buffer[1024];
    if (!CFStringGetCString(string, buffer, sizeof buffer, kCFStringEncodingUTF8))
        return "<unconvertible>";
    return buffer;
}

// The last reply the echo handler filled in (a queued reply is not the sender's at once).
AppleEvent gLastReply = {typeNull, nullptr};

// Answers the direct parameter as text, upper-cased, and counts the events.
OSErr EchoHandler(const AppleEvent *event, AppleEvent *reply, SRefCon refcon)
{
    struct Keep {
        AppleEvent *reply;
        ~Keep()
        {
            AEDisposeDesc(&gLastReply);
            AEDuplicateDesc(reply, &gLastReply);
        }
    } keep{reply};
    ++*static_cast<int *>(refcon);
    char text[64] = {0};
    Size size = 0;
    if (AEGetParamPtr(event, keyDirectObject, typeUTF8Text, nullptr, text, sizeof text - 1, &size) != noErr)
        return errAEParamMissed;
    for (Size i = 0; i < size; ++i)
        text[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[i])));
    long count = 0;
    AECountItems(event, &count);
    SInt32 params = static_cast<SInt32>(count);
    AEPutParamPtr(reply, kCountKey, typeSInt32, &params, sizeof params);
    return AEPutParamPtr(reply, keyDirectObject, typeUTF8Text, text, size);
}

// Writes the file and answers its path.
std::string Made(const TemporaryFolder &folder, const std::string &name, const std::string &contents)
{
    WriteFile(folder / name, contents);
    return folder / name;
}

CFURLRef URLOf(const std::string &path)
{
    return CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8 *>(path.c_str()),
                                                   static_cast<CFIndex>(path.size()), false);
}

const ProcessSerialNumber kSelf = {0, kCurrentProcess};

// A child of the test, stopped by pid when the owner goes (also on failure).
class Child {
public:
    Child(const char *path, std::initializer_list<std::string> args, int stdoutFD = -1)
    {
        std::vector<std::string> copies(args);
        std::vector<char *> argv{const_cast<char *>(path)};
        for (std::string &arg : copies)
            argv.push_back(&arg[0]);
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        if (stdoutFD >= 0)
            posix_spawn_file_actions_adddup2(&actions, stdoutFD, STDOUT_FILENO);
        if (posix_spawn(&pid_, path, &actions, nullptr, argv.data(), environ) != 0)
            pid_ = 0;
        posix_spawn_file_actions_destroy(&actions);
    }
    ~Child() { Stop(); }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;
    pid_t pid() const { return pid_; }
    void Stop()
    {
        if (pid_ > 0) {
            kill(pid_, SIGTERM);
            waitpid(pid_, nullptr, 0);
            pid_ = 0;
        }
    }

private:
    pid_t pid_ = 0;
};

// Polls the record file for the line for at most 30 s: a broken child fails the test, never hangs it.
bool WaitForLine(const std::string &record, const std::string &line)
{
    for (int i = 0; i < 600; ++i) {
        if (("\n" + ReadFile(record)).find("\n" + line + "\n") != std::string::npos)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

} // namespace

TEST(AppleEventUtilitiesTest, EventToTheCurrentProcessReachesItsHandlerAndReplies)
{
    int calls = 0;
    ASSERT_TRUE(AppleEventInstallHandler(kTestClass, kTestEcho, EchoHandler, &calls));

    // Handled inside the send; the reply is queued, so the caller's is null.
    AppleEvent reply;
    ASSERT_TRUE(AppleEventSendData(typeProcessSerialNumber, &kSelf, sizeof kSelf, kTestClass, kTestEcho, &reply,
                                   typeChar, "hello", 5));
    EXPECT_EQ(1, calls);
    EXPECT_EQ(static_cast<DescType>(typeNull), reply.descriptorType);
    EXPECT_EQ(nullptr, reply.dataHandle);
    AEDisposeDesc(&reply);
    AEDuplicateDesc(&gLastReply, &reply);
    char answer[16] = {0};
    EXPECT_TRUE(AppleEventGetParamDescData(&reply, keyDirectObject, typeChar, answer, sizeof answer));
    EXPECT_STREQ("HELLO", answer);
    // A buffer one byte too small, no buffer and a missing key are refused.
    EXPECT_FALSE(AppleEventGetParamDescData(&reply, keyDirectObject, typeChar, answer, 4) ||
                 AppleEventGetParamDescData(&reply, keyDirectObject, typeChar, nullptr, 16) ||
                 AppleEventGetParamDescData(&reply, 0x78787878, typeChar, answer, sizeof answer));
    AEDisposeDesc(&reply);

    // Parameters without data or with a size that is not positive are skipped.
    const SInt32 number = 42;
    const AppleEventParam params[] = {
        {keyDirectObject, typeChar, "abc", 3},
        {0x6E756D62, typeSInt32, &number, sizeof number},
        {0x7A65726F, typeChar, "zero", 0},
        {0x6E65676E, typeChar, "neg", -1},
        {0x6E756C6C, typeChar, nullptr, 4},
    };
    ASSERT_TRUE(AppleEventSendDataArray(typeProcessSerialNumber, &kSelf, sizeof kSelf, kTestClass, kTestEcho,
                                        &reply, params, 5));
    AEDuplicateDesc(&gLastReply, &reply);
    SInt32 received = 0;
    EXPECT_TRUE(AppleEventGetParamDescData(&reply, kCountKey, typeSInt32, &received, sizeof received));
    EXPECT_EQ(2, received);
    AEDisposeDesc(&reply);

    // Without a reply descriptor the handler still runs; an empty target is refused.
    EXPECT_FALSE(AppleEventSendData(typeKernelProcessID, &kSelf.lowLongOfPSN, 0, kTestClass, kTestEcho, nullptr,
                                    typeChar, "x", 1));
    const pid_t self = getpid();
    EXPECT_TRUE(AppleEventSendData(typeKernelProcessID, &self, sizeof self, kTestClass, kTestEcho, nullptr,
                                   typeChar, "x", 1));
    EXPECT_EQ(3, calls);

    // Once removed, the event is not handled and the send fails.
    EXPECT_TRUE(AppleEventUninstallHandler(kTestClass, kTestEcho, EchoHandler));
    EXPECT_FALSE(AppleEventUninstallHandler(kTestClass, kTestEcho, EchoHandler));
    reply.descriptorType = typeChar; // whatever it held, the send resets it
    EXPECT_FALSE(AppleEventSend(typeProcessSerialNumber, &kSelf, sizeof kSelf, kTestClass, kTestEcho, &reply));
    EXPECT_EQ(static_cast<DescType>(typeNull), reply.descriptorType);
    EXPECT_EQ(3, calls);
    EXPECT_FALSE(AppleEventInstallHandler(kTestClass, kTestEcho, nullptr, nullptr));
    AEDisposeDesc(&gLastReply);
}

TEST(AppleEventUtilitiesTest, PutParamRefusesWhatCannotBeSent)
{
    AppleEvent event;
    ASSERT_EQ(noErr, AECreateAppleEvent(kTestClass, kTestEcho, nullptr, kAutoGenerateReturnID, kAnyTransactionID,
                                        &event));
    const AppleEventParam good = {keyDirectObject, typeChar, "ok", 2};
    const AppleEventParam empty = {keyDirectObject, typeChar, "ok", 0};
    EXPECT_TRUE(AppleEventPutAppleEventParam(&event, &good));
    EXPECT_FALSE(AppleEventPutAppleEventParam(&event, &empty) || AppleEventPutAppleEventParam(&event, nullptr) ||
                 AppleEventPutAppleEventParam(nullptr, &good));
    AEDesc text;
    AECreateDesc(typeChar, "t", 1, &text);
    EXPECT_FALSE(AppleEventPutAppleEventParam(&text, &good)); // not an event
    AEDisposeDesc(&text);
    AEDisposeDesc(&event);
}

TEST(AppleEventUtilitiesTest, CopyDataCollectsMatchingItemsDepthFirst)
{
    AEDescList outer, inner, deeper;
    AECreateList(nullptr, 0, false, &outer);
    AECreateList(nullptr, 0, false, &inner);
    AECreateList(nullptr, 0, true, &deeper);
    AEPutPtr(&outer, 0, typeChar, "a", 1);
    AEPutPtr(&inner, 0, typeChar, "b", 1);
    AEPutKeyPtr(&deeper, keyDirectObject, typeChar, "c", 1);
    AEPutPtr(&inner, 0, typeSInt32, "\1\0\0\0", 4);
    AEPutDesc(&inner, 0, &deeper);
    AEPutDesc(&outer, 0, &inner);
    AEPutPtr(&outer, 0, typeChar, "d", 1);

    CFDataRef data = AppleEventCopyData(&outer, typeChar);
    ASSERT_NE(nullptr, data);
    ASSERT_EQ(4, CFDataGetLength(data));
    EXPECT_EQ(0, std::memcmp("abcd", CFDataGetBytePtr(data), 4));
    CFRelease(data);

    EXPECT_EQ(nullptr, AppleEventCopyData(&outer, typeFSRef));
    EXPECT_EQ(nullptr, AppleEventCopyData(nullptr, typeChar));
    AEDesc plain;
    AECreateDesc(typeChar, "p", 1, &plain);
    EXPECT_EQ(nullptr, AppleEventCopyData(&plain, typeChar)); // not a list: nothing
    CFMutableDataRef sink = CFDataCreateMutable(nullptr, 0);
    EXPECT_TRUE(AppleEventCopyDataCore(&plain, typeChar, sink) == 0 && AppleEventCopyDataCore(nullptr, typeChar, sink) == 0);
    CFRelease(sink);
    for (AEDesc *desc : {&outer, &inner, &deeper, &plain})
        AEDisposeDesc(desc);
}

TEST(AppleEventUtilitiesTest, SourceTextRunsAndShowsItsResultForPeople)
{
    struct Case {
        const char *source;
        const char *result;
    } cases[] = {
        {"return 1 + 2", "3"},
        {"return {1, 'two', true, 2.5}", "{1, \"two\", true, 2.5}"},
        {"return string.format('%03d', 7)", "\"007\""}, // standard libraries are there
        {"x = 41 function run() return x + 1 end", "42"},
        {"error('it broke', 0)", "it broke"},
        {"return 1 +", "script:1: unexpected symbol near <eof>"},
    };
    for (const Case &c : cases) {
        CFStringRef source = CFStringCreateWithCString(nullptr, c.source, kCFStringEncodingUTF8);
        CFStringRef result = nullptr;
        EXPECT_TRUE(CFStringExecuteAppleScript(source, &result)) << c.source;
        EXPECT_EQ(c.result, Text(result)) << c.source;
        if (result != nullptr)
            CFRelease(result);
        EXPECT_TRUE(CFStringExecuteAppleScript(source, nullptr)); // the result is released for us
        CFRelease(source);
    }

    // A script that returns nothing has no result; each run starts afresh.
    CFStringRef result = CFSTR("stale");
    EXPECT_TRUE(CFStringExecuteAppleScript(CFSTR("y = 1"), &result));
    EXPECT_EQ(nullptr, result);
    EXPECT_TRUE(CFStringExecuteAppleScript(CFSTR("return y == nil"), &result));
    EXPECT_EQ("true", Text(result));
    CFRelease(result);

    result = CFSTR("stale");
    EXPECT_FALSE(CFStringExecuteAppleScript(CFSTR(""), &result) || CFStringExecuteAppleScript(nullptr, &result));
    EXPECT_EQ(nullptr, result);
}

TEST(AppleEventUtilitiesTest, CompiledScriptFilesRunTheirHandlers)
{
    // Compiled with luac5.4, as a user would.
    TemporaryFolder folder;
    Made(folder, "greeter.lua", "greeting = 'hello '\nfunction KORUecho(name) return greeting .. name end\n"
                                "function open(files) return #files end\nreturn 'ran'\n");
    const std::string chunk = folder / "greeter.luac";
    ASSERT_EQ(0, std::system(("luac5.4 -o '" + chunk + "' '" + (folder / "greeter.lua") + "'").c_str()));
    CFURLRef url = URLOf(chunk);
    CFStringRef result = nullptr;
    EXPECT_TRUE(CFURLExecuteRun(url, &result));
    EXPECT_EQ("\"ran\"", Text(result));
    CFRelease(result);

    // The handler for an event sees the globals of the chunk's top level.
    AppleEvent event;
    AECreateAppleEvent(kTestClass, kTestEcho, nullptr, kAutoGenerateReturnID, kAnyTransactionID, &event);
    AEPutParamPtr(&event, keyDirectObject, typeChar, "world", 5);
    EXPECT_TRUE(CFURLExecuteHandler(url, &event, &result));
    EXPECT_EQ("\"hello world\"", Text(result));
    CFRelease(result);
    AEDisposeDesc(&event);

    AppleEvent open;
    AECreateAppleEvent(kCoreEventClass, kAEOpenDocuments, nullptr, kAutoGenerateReturnID, kAnyTransactionID, &open);
    AEDescList files;
    AECreateList(nullptr, 0, false, &files);
    FSRef ref;
    ASSERT_EQ(noErr, FSPathMakeRef(reinterpret_cast<const UInt8 *>(chunk.c_str()), &ref, nullptr));
    AEPutPtr(&files, 0, typeFSRef, &ref, sizeof ref);
    AEPutPtr(&files, 0, typeFSRef, &ref, sizeof ref);
    AEPutParamDesc(&open, keyDirectObject, &files);
    EXPECT_TRUE(FSExecuteHandler(&ref, &open, &result));
    EXPECT_EQ("2", Text(result));
    CFRelease(result);

    // An event the script has no handler for: attempted, with the status.
    AppleEvent quit;
    AECreateAppleEvent(kCoreEventClass, kAEQuitApplication, nullptr, kAutoGenerateReturnID, kAnyTransactionID, &quit);
    EXPECT_TRUE(FSExecuteHandler(&ref, &quit, &result));
    EXPECT_EQ("Unknown error (-1708)", Text(result));
    CFRelease(result);
    for (AEDesc *desc : {&open, &files, &quit})
        AEDisposeDesc(desc);
    CFRelease(url);

    // Lua source loads too; a failing script answers Lua's message.
    url = URLOf(Made(folder, "fails.lua", "local n = nil\nreturn n + 1\n"));
    EXPECT_TRUE(FSExecuteRun(&ref, nullptr));
    EXPECT_TRUE(CFURLExecuteRun(url, &result));
    EXPECT_EQ("script:2: attempt to perform arithmetic on a nil value (local 'n')", Text(result));
    CFRelease(result);
    CFRelease(url);

    // Files that are not scripts, empty files and missing files do not load.
    for (const std::string &path : {Made(folder, "garbage.bin", std::string("\x1bLua\x54\x00garbage", 12)),
                                    Made(folder, "prose.txt", "this is not a script at all"),
                                    Made(folder, "empty.luac", ""), folder / "missing.luac"}) {
        url = URLOf(path);
        result = CFSTR("stale");
        EXPECT_FALSE(CFURLExecuteRun(url, &result)) << path;
        EXPECT_EQ(nullptr, result);
        ComponentInstance component = OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype);
        EXPECT_EQ(kOSANullScript, OSALoadFileFromURL(component, url));
        CloseComponent(component);
        CFRelease(url);
    }
    EXPECT_FALSE(CFURLExecuteRun(nullptr, &result));
    EXPECT_FALSE(FSExecuteRun(nullptr, &result));
    EXPECT_EQ(kOSANullScript, OSALoadFileFromRef(nullptr, &ref));
}

TEST(AppleEventUtilitiesTest, EventsReachASecondProcess)
{
    TemporaryFolder folder;
    const std::string record = folder / "record";
    Child peer(KORU_AE_PEER, {record});
    ASSERT_GT(peer.pid(), 0);
    ASSERT_TRUE(WaitForLine(record, "ready"));
    const ProcessSerialNumber psn = {0, static_cast<UInt32>(peer.pid())};

    // Without a reply descriptor nothing comes back; the handler runs there.
    EXPECT_TRUE(AppleEventSendData(typeProcessSerialNumber, &psn, sizeof psn, kTestClass, kTestEcho, nullptr,
                                   typeChar, "first", 5));
    EXPECT_TRUE(WaitForLine(record, "echo first"));
    // With one the reply is queued: the send answers at once with a null reply.
    AppleEvent reply;
    EXPECT_TRUE(AppleEventSendData(typeProcessSerialNumber, &psn, sizeof psn, kTestClass, kTestEcho, &reply,
                                   typeChar, "second", 6));
    EXPECT_EQ(static_cast<DescType>(typeNull), reply.descriptorType);
    AEDisposeDesc(&reply);
    EXPECT_TRUE(WaitForLine(record, "echo second"));

    EXPECT_TRUE(AppleEventSend(typeProcessSerialNumber, &psn, sizeof psn, kTestClass, 0x73746F70, nullptr)); // 'stop'
    int status = -1;
    EXPECT_EQ(peer.pid(), waitpid(peer.pid(), &status, 0));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    // A process that is gone: the send fails.
    EXPECT_FALSE(AppleEventSendData(typeProcessSerialNumber, &psn, sizeof psn, kTestClass, kTestEcho, nullptr,
                                    typeChar, "late", 4));
}

TEST(AppleEventUtilitiesTest, SystemProcessEventsReachOnlyTheStandInLoginManager)
{
    TemporaryFolder folder;
    const std::string record = folder / "record";
    int output[2];
    ASSERT_EQ(0, pipe(output));
    Child bus("/usr/bin/dbus-daemon", {"--session", "--nofork", "--print-address"}, output[1]);
    close(output[1]);
    std::string address;
    char c = 0;
    while (read(output[0], &c, 1) == 1 && c != '\n')
        address += c;
    close(output[0]);
    ASSERT_FALSE(address.empty());
    Child standIn(KORU_LOGIN_STAND_IN, {address, record});
    ASSERT_TRUE(WaitForLine(record, "ready"));
    setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);

    EXPECT_TRUE(AppleEventSendToSystemProcess(kAEShutDown));
    EXPECT_TRUE(WaitForLine(record, "PowerOff false"));
    EXPECT_TRUE(AppleEventSendToSystemProcess(kAELogOut));
    EXPECT_TRUE(WaitForLine(record, "TerminateSession <own session>"));
    EXPECT_FALSE(AppleEventSendToSystemProcess(0x78787878)); // no such call
    unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    standIn.Stop();
    bus.Stop();
    EXPECT_EQ("ready\nPowerOff false\nTerminateSession <own session>\n", ReadFile(record));
}
