// The scripting component over Lua 5.4.  Scripts are kept as Lua chunks
// (what lua_dump writes, the same bytes as luac5.4's output); every run gets a
// fresh Lua state, so nothing a script does outlives its execution.  Results
// leave the state as plain values (ScriptValue) before it is closed.
#include <CoreServices/Components.h>
#include <CoreServices/MacErrors.h>
#include <OpenScripting/OSA.h>
#include <CoreServices/AppleEvents.h>

#include <lua.hpp>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int kMaxValueDepth = 32;

// A value a script handed back, independent of the state it came from.
struct ScriptValue {
    enum class Type { nil, boolean, integer, real, string, list, record, other } type = Type::nil;
    bool boolean = false;
    long long integer = 0;
    double real = 0;
    std::string text; // string contents, or the type name of another value
    std::vector<ScriptValue> items;
    std::vector<std::pair<std::string, ScriptValue>> fields;
};

struct Entry {
    bool isScript = false;
    std::string chunk;  // the compiled chunk of a script
    std::string source; // the source text when it was compiled here
    ScriptValue value;  // the value of a result
};

} // namespace

struct ComponentInstanceRecord {
    std::map<OSAID, Entry> entries;
    OSAID nextID = 1;
    OSAError lastError = noErr;
    std::string lastMessage;
};

namespace {

std::mutex gInstancesLock;
std::set<ComponentInstance> gInstances;

bool IsInstance(ComponentInstance instance)
{
    std::lock_guard<std::mutex> hold(gInstancesLock);
    return instance != nullptr && gInstances.count(instance) > 0;
}

OSAID Store(ComponentInstance instance, Entry entry)
{
    OSAID id = instance->nextID++;
    if (id == kOSANullScript)
        id = instance->nextID++;
    instance->entries[id] = std::move(entry);
    return id;
}

OSAError ScriptError(ComponentInstance instance, const std::string &message)
{
    instance->lastError = errOSAScriptError;
    instance->lastMessage = message;
    return errOSAScriptError;
}

// The bytes of a text or storage descriptor as UTF-8 (storage as it is).
bool DescBytes(const AEDesc *desc, bool allowStorage, std::string *out)
{
    AEDesc text;
    const DescType type = desc->descriptorType;
    if (allowStorage && (type == typeOSAGenericStorage || type == typeData || type == typeUTF8Text)) {
        AEDuplicateDesc(desc, &text);
    } else if (type == typeChar || type == typeUnicodeText || type == typeUTF8Text) {
        if (AECoerceDesc(desc, typeUTF8Text, &text) != noErr)
            return false;
    } else {
        return false;
    }
    out->assign(static_cast<size_t>(AEGetDescDataSize(&text)), '\0');
    if (!out->empty())
        AEGetDescData(&text, &(*out)[0], static_cast<Size>(out->size()));
    AEDisposeDesc(&text);
    return true;
}

class LuaState {
public:
    LuaState() : L_(luaL_newstate())
    {
        if (L_ != nullptr)
            luaL_openlibs(L_);
    }
    ~LuaState()
    {
        if (L_ != nullptr)
            lua_close(L_);
    }
    LuaState(const LuaState &) = delete;
    LuaState &operator=(const LuaState &) = delete;
    lua_State *get() const { return L_; }

private:
    lua_State *L_;
};

std::string ErrorMessage(lua_State *L)
{
    size_t length = 0;
    // Strings and numbers read as text, as the stand-alone interpreter shows them.
    const char *text = lua_isstring(L, -1) ? lua_tolstring(L, -1, &length) : nullptr;
    std::string message = text != nullptr ? std::string(text, length)
                                          : std::string("(error object is a ") + luaL_typename(L, -1) + " value)";
    lua_pop(L, 1);
    return message;
}

int Writer(lua_State *, const void *p, size_t size, void *ud)
{
    try {
        static_cast<std::string *>(ud)->append(static_cast<const char *>(p), size);
        return 0;
    } catch (...) {
        return 1;
    }
}

bool IsBinaryChunk(const std::string &bytes)
{
    return bytes.compare(0, std::strlen(LUA_SIGNATURE), LUA_SIGNATURE) == 0;
}

// Loads source or (when allowed) a binary chunk onto the stack; false with
// the message.  Source text to compile is never taken as a binary chunk: Lua
// does not check those, and text that merely looks like one must not run.
bool LoadChunk(lua_State *L, const std::string &bytes, std::string *message, bool allowBinary = true)
{
    const char *mode = allowBinary && IsBinaryChunk(bytes) ? "b" : "t";
    if (luaL_loadbufferx(L, bytes.data(), bytes.size(), "=script", mode) == LUA_OK)
        return true;
    *message = ErrorMessage(L);
    return false;
}

// Reads the value on the top of the stack.  Only calls that raise no Lua
// error (bar running out of memory) are used: this runs outside lua_pcall.
ScriptValue ReadValue(lua_State *L, int index, int depth)
{
    ScriptValue value;
    index = lua_absindex(L, index);
    switch (lua_type(L, index)) {
    case LUA_TNIL:
        break;
    case LUA_TBOOLEAN:
        value.type = ScriptValue::Type::boolean;
        value.boolean = lua_toboolean(L, index);
        break;
    case LUA_TNUMBER:
        if (lua_isinteger(L, index)) {
            value.type = ScriptValue::Type::integer;
            value.integer = lua_tointeger(L, index);
        } else {
            value.type = ScriptValue::Type::real;
            value.real = lua_tonumber(L, index);
        }
        break;
    case LUA_TSTRING: {
        size_t length = 0;
        const char *text = lua_tolstring(L, index, &length);
        value.type = ScriptValue::Type::string;
        value.text.assign(text, length);
        break;
    }
    case LUA_TTABLE: {
        if (depth >= kMaxValueDepth || !lua_checkstack(L, 3)) {
            value.type = ScriptValue::Type::other;
            value.text = "table";
            break;
        }
        const lua_Unsigned length = lua_rawlen(L, index);
        lua_Unsigned count = 0;
        lua_pushnil(L);
        while (lua_next(L, index) != 0) {
            ++count;
            if (lua_type(L, -2) == LUA_TSTRING) {
                size_t keyLength = 0;
                const char *key = lua_tolstring(L, -2, &keyLength);
                value.fields.emplace_back(std::string(key, keyLength), ReadValue(L, -1, depth + 1));
            }
            lua_pop(L, 1);
        }
        if (count == length) {
            value.type = ScriptValue::Type::list;
            for (lua_Unsigned i = 1; i <= length; ++i) {
                lua_rawgeti(L, index, static_cast<lua_Integer>(i));
                value.items.push_back(ReadValue(L, -1, depth + 1));
                lua_pop(L, 1);
            }
            value.fields.clear();
        } else {
            value.type = ScriptValue::Type::record;
            std::sort(value.fields.begin(), value.fields.end(),
                      [](const auto &a, const auto &b) { return a.first < b.first; });
        }
        break;
    }
    default:
        value.type = ScriptValue::Type::other;
        value.text = luaL_typename(L, index);
        break;
    }
    return value;
}

std::string Quoted(const std::string &text)
{
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\')
            out += '\\';
        out += c;
    }
    return out + "\"";
}

std::string Display(const ScriptValue &value)
{
    char number[64];
    switch (value.type) {
    case ScriptValue::Type::nil:
        return "nil";
    case ScriptValue::Type::boolean:
        return value.boolean ? "true" : "false";
    case ScriptValue::Type::integer:
        std::snprintf(number, sizeof number, "%lld", value.integer);
        return number;
    case ScriptValue::Type::real:
        // As Lua writes a float: an integral one keeps its ".0".
        std::snprintf(number, sizeof number, LUA_NUMBER_FMT, value.real);
        if (std::strspn(number, "-0123456789") == std::strlen(number))
            std::strcat(number, ".0");
        return number;
    case ScriptValue::Type::string:
        return Quoted(value.text);
    case ScriptValue::Type::list: {
        std::string out = "{";
        for (size_t i = 0; i < value.items.size(); ++i)
            out += (i > 0 ? ", " : "") + Display(value.items[i]);
        return out + "}";
    }
    case ScriptValue::Type::record: {
        std::string out = "{";
        for (size_t i = 0; i < value.fields.size(); ++i)
            out += (i > 0 ? ", " : "") + value.fields[i].first + ":" + Display(value.fields[i].second);
        return out + "}";
    }
    case ScriptValue::Type::other:
        break;
    }
    return value.text;
}

// --- Event parameters into Lua.

std::string FourChars(OSType code)
{
    std::string text(4, ' ');
    for (int i = 0; i < 4; ++i)
        text[i] = static_cast<char>(code >> (24 - 8 * i));
    return text;
}

void PushDesc(lua_State *L, const AEDesc *desc, int depth)
{
    long count = 0;
    if (depth < kMaxValueDepth && AECountItems(desc, &count) == noErr && lua_checkstack(L, 3)) {
        const bool record = AECheckIsRecord(desc);
        lua_createtable(L, record ? 0 : static_cast<int>(count), record ? static_cast<int>(count) : 0);
        for (long i = 1; i <= count; ++i) {
            AEKeyword key = 0;
            AEDesc item;
            if (AEGetNthDesc(desc, i, typeWildCard, &key, &item) != noErr)
                continue;
            PushDesc(L, &item, depth + 1);
            AEDisposeDesc(&item);
            if (record)
                lua_setfield(L, -2, FourChars(key).c_str());
            else
                lua_rawseti(L, -2, i);
        }
        return;
    }
    AEDesc converted;
    const DescType type = desc->descriptorType;
    if (type == typeBoolean || type == typeTrue || type == typeFalse) {
        Boolean flag = false;
        AECoerceDesc(desc, typeBoolean, &converted);
        AEGetDescData(&converted, &flag, sizeof flag);
        lua_pushboolean(L, flag);
    } else if (type == typeSInt16 || type == typeSInt32 || type == typeUInt32 || type == typeSInt64) {
        SInt64 integer = 0;
        AECoerceDesc(desc, typeSInt64, &converted);
        AEGetDescData(&converted, &integer, sizeof integer);
        lua_pushinteger(L, integer);
    } else if (type == typeIEEE32BitFloatingPoint || type == typeIEEE64BitFloatingPoint) {
        double real = 0;
        AECoerceDesc(desc, typeIEEE64BitFloatingPoint, &converted);
        AEGetDescData(&converted, &real, sizeof real);
        lua_pushnumber(L, real);
    } else if (type == typeType || type == typeEnumerated || type == typeKeyword) {
        OSType code = 0;
        AEGetDescData(desc, &code, sizeof code);
        lua_pushstring(L, FourChars(code).c_str());
    } else if (type == typeNull) {
        lua_pushnil(L);
    } else {
        // Text and files as UTF-8 text (files as their paths); anything else
        // as its bytes.
        const AEDesc *source = AECoerceDesc(desc, typeUTF8Text, &converted) == noErr ? &converted : desc;
        std::string bytes(static_cast<size_t>(AEGetDescDataSize(source)), '\0');
        if (!bytes.empty())
            AEGetDescData(source, &bytes[0], static_cast<Size>(bytes.size()));
        lua_pushlstring(L, bytes.data(), bytes.size());
    }
    AEDisposeDesc(&converted);
}

// The global function that handles the event.
std::string HandlerName(const AppleEvent *event)
{
    OSType eventClass = 0, eventID = 0;
    AEGetAttributePtr(event, keyEventClassAttr, typeType, nullptr, &eventClass, sizeof eventClass, nullptr);
    AEGetAttributePtr(event, keyEventIDAttr, typeType, nullptr, &eventID, sizeof eventID, nullptr);
    if (eventClass == kCoreEventClass) {
        switch (eventID) {
        case kAEOpenApplication: return "run";
        case kAEOpenDocuments: return "open";
        case kAEPrintDocuments: return "print";
        case kAEQuitApplication: return "quit";
        default: break;
        }
    }
    return FourChars(eventClass) + FourChars(eventID);
}

// Runs a script: its top level, then (for an event, or a chunk that returns
// nothing and defines "run") a handler.  The result value goes to *result.
OSAError Run(ComponentInstance instance, const Entry &script, const AppleEvent *event, OSAID *result)
{
    LuaState state;
    lua_State *L = state.get();
    if (L == nullptr)
        return errOSASystemError;
    std::string message;
    if (!LoadChunk(L, script.chunk, &message))
        return ScriptError(instance, message);
    if (lua_pcall(L, 0, event != nullptr ? 0 : 1, 0) != LUA_OK)
        return ScriptError(instance, ErrorMessage(L));
    bool callHandler = event != nullptr;
    std::string name = event != nullptr ? HandlerName(event) : "run";
    if (event == nullptr && lua_isnil(L, -1)) {
        lua_pop(L, 1);
        callHandler = lua_getglobal(L, "run") == LUA_TFUNCTION;
        lua_pop(L, 1);
        if (!callHandler)
            lua_pushnil(L);
    }
    if (callHandler) {
        if (lua_getglobal(L, name.c_str()) != LUA_TFUNCTION) {
            lua_pop(L, 1);
            return errAEEventNotHandled;
        }
        int arguments = 0;
        AEDesc direct;
        if (event != nullptr && AEGetParamDesc(event, keyDirectObject, typeWildCard, &direct) == noErr) {
            PushDesc(L, &direct, 0);
            AEDisposeDesc(&direct);
            arguments = 1;
        }
        if (lua_pcall(L, arguments, 1, 0) != LUA_OK)
            return ScriptError(instance, ErrorMessage(L));
    }
    if (lua_isnil(L, -1))
        return noErr;
    Entry value;
    value.value = ReadValue(L, -1, 0);
    *result = Store(instance, std::move(value));
    return noErr;
}

const Entry *Find(ComponentInstance instance, OSAID id)
{
    auto found = instance->entries.find(id);
    return found == instance->entries.end() ? nullptr : &found->second;
}

OSAError MakeText(const std::string &utf8, DescType desiredType, AEDesc *result)
{
    if (desiredType == typeWildCard)
        desiredType = typeUTF8Text;
    return AECoercePtr(typeUTF8Text, utf8.data(), static_cast<Size>(utf8.size()), desiredType, result);
}

// Compiles or loads: the chunk checked by loading it, and kept in compiled form.
OSAError MakeScript(ComponentInstance instance, const std::string &bytes, bool keepSource, OSAID *id)
{
    LuaState state;
    lua_State *L = state.get();
    if (L == nullptr)
        return errOSASystemError;
    std::string message;
    if (!LoadChunk(L, bytes, &message, !keepSource)) {
        if (!keepSource && IsBinaryChunk(bytes))
            return errAECorruptData;
        return ScriptError(instance, message);
    }
    Entry script;
    script.isScript = true;
    if (lua_dump(L, Writer, &script.chunk, 0) != 0)
        return memFullErr;
    if (keepSource && !IsBinaryChunk(bytes))
        script.source = bytes;
    if (*id != kOSANullScript && Find(instance, *id) != nullptr)
        instance->entries[*id] = std::move(script);
    else
        *id = Store(instance, std::move(script));
    return noErr;
}

} // namespace

extern "C" ComponentInstance OpenDefaultComponent(OSType componentType, OSType componentSubType)
{
    if (componentType != kOSAComponentType)
        return nullptr;
    if (componentSubType != kAppleScriptSubtype && componentSubType != kAnyComponentSubType &&
        componentSubType != typeWildCard && componentSubType != kOSAGenericScriptingComponentSubtype)
        return nullptr;
    try {
        auto *instance = new ComponentInstanceRecord;
        std::lock_guard<std::mutex> hold(gInstancesLock);
        gInstances.insert(instance);
        return instance;
    } catch (...) {
        return nullptr;
    }
}

extern "C" OSErr CloseComponent(ComponentInstance aComponentInstance)
{
    {
        std::lock_guard<std::mutex> hold(gInstancesLock);
        if (aComponentInstance == nullptr || gInstances.erase(aComponentInstance) == 0)
            return static_cast<OSErr>(badComponentInstance);
    }
    delete aComponentInstance;
    return noErr;
}

extern "C" OSAError OSACompile(ComponentInstance scriptingComponent, const AEDesc *sourceData, SInt32,
                               OSAID *previousAndResultingScriptID)
{
    if (!IsInstance(scriptingComponent))
        return badComponentInstance;
    if (sourceData == nullptr || previousAndResultingScriptID == nullptr)
        return paramErr;
    try {
        std::string source;
        if (!DescBytes(sourceData, false, &source))
            return errOSABadStorageType;
        return MakeScript(scriptingComponent, source, true, previousAndResultingScriptID);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSAError OSALoad(ComponentInstance scriptingComponent, const AEDesc *scriptData, SInt32,
                            OSAID *resultingScriptID)
{
    if (resultingScriptID != nullptr)
        *resultingScriptID = kOSANullScript;
    if (!IsInstance(scriptingComponent))
        return badComponentInstance;
    if (scriptData == nullptr || resultingScriptID == nullptr)
        return paramErr;
    try {
        std::string bytes;
        if (!DescBytes(scriptData, true, &bytes))
            return errOSABadStorageType;
        if (bytes.empty())
            return errAECorruptData;
        return MakeScript(scriptingComponent, bytes, false, resultingScriptID);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSAError OSAExecute(ComponentInstance scriptingComponent, OSAID compiledScriptID, OSAID, SInt32,
                               OSAID *resultingScriptValueID)
{
    if (resultingScriptValueID != nullptr)
        *resultingScriptValueID = kOSANullScript;
    if (!IsInstance(scriptingComponent))
        return badComponentInstance;
    if (resultingScriptValueID == nullptr)
        return paramErr;
    const Entry *script = Find(scriptingComponent, compiledScriptID);
    if (script == nullptr || !script->isScript)
        return errOSAInvalidID;
    try {
        return Run(scriptingComponent, *script, nullptr, resultingScriptValueID);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSAError OSAExecuteEvent(ComponentInstance scriptingComponent, const AppleEvent *theAppleEvent,
                                    OSAID contextID, SInt32, OSAID *resultingScriptValueID)
{
    if (resultingScriptValueID != nullptr)
        *resultingScriptValueID = kOSANullScript;
    if (!IsInstance(scriptingComponent))
        return badComponentInstance;
    if (theAppleEvent == nullptr || resultingScriptValueID == nullptr)
        return paramErr;
    if (theAppleEvent->descriptorType != typeAppleEvent)
        return errAENotAppleEvent;
    const Entry *script = Find(scriptingComponent, contextID);
    if (script == nullptr || !script->isScript)
        return errOSAInvalidID;
    try {
        return Run(scriptingComponent, *script, theAppleEvent, resultingScriptValueID);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSAError OSADisplay(ComponentInstance scriptingComponent, OSAID scriptValueID, DescType desiredType,
                               SInt32, AEDesc *resultingText)
{
    if (resultingText != nullptr)
        AEInitializeDesc(resultingText);
    if (!IsInstance(scriptingComponent))
        return badComponentInstance;
    if (resultingText == nullptr)
        return paramErr;
    const Entry *entry = Find(scriptingComponent, scriptValueID);
    if (entry == nullptr)
        return errOSAInvalidID;
    try {
        if (entry->isScript)
            return entry->source.empty() ? OSAError(errOSASourceNotAvailable)
                                         : MakeText(entry->source, desiredType, resultingText);
        return MakeText(Display(entry->value), desiredType, resultingText);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSAError OSAScriptError(ComponentInstance scriptingComponent, OSType selector, DescType desiredType,
                                   AEDesc *resultingErrorDescription)
{
    if (resultingErrorDescription != nullptr)
        AEInitializeDesc(resultingErrorDescription);
    if (!IsInstance(scriptingComponent))
        return badComponentInstance;
    if (resultingErrorDescription == nullptr)
        return paramErr;
    try {
        switch (selector) {
        case kOSAErrorNumber: {
            SInt32 number = scriptingComponent->lastError;
            return AECoercePtr(typeSInt32, &number, sizeof number, desiredType, resultingErrorDescription);
        }
        case kOSAErrorMessage:
        case kOSAErrorBriefMessage:
            return MakeText(scriptingComponent->lastMessage, desiredType, resultingErrorDescription);
        default:
            return errOSABadSelector;
        }
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSAError OSADispose(ComponentInstance scriptingComponent, OSAID scriptID)
{
    if (!IsInstance(scriptingComponent))
        return badComponentInstance;
    if (scriptID == kOSANullScript)
        return noErr;
    return scriptingComponent->entries.erase(scriptID) > 0 ? OSAError(noErr) : OSAError(errOSAInvalidID);
}

extern "C" OSAError OSAStore(ComponentInstance scriptingComponent, OSAID scriptID, DescType desiredType, SInt32,
                             AEDesc *resultingScriptData)
{
    if (resultingScriptData != nullptr)
        AEInitializeDesc(resultingScriptData);
    if (!IsInstance(scriptingComponent))
        return badComponentInstance;
    if (resultingScriptData == nullptr)
        return paramErr;
    const Entry *entry = Find(scriptingComponent, scriptID);
    if (entry == nullptr || !entry->isScript)
        return errOSAInvalidID;
    if (desiredType != typeOSAGenericStorage && desiredType != typeWildCard)
        return errOSABadStorageType;
    return AECreateDesc(typeOSAGenericStorage, entry->chunk.data(), static_cast<Size>(entry->chunk.size()),
                        resultingScriptData);
}
