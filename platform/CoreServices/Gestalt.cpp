/* Gestalt over a process-wide table that starts with the built-in answers. */
#include <CoreServices/Gestalt.h>
#include <CoreServices/MacErrors.h>

#include <map>
#include <mutex>

namespace {

class GestaltTable {
public:
    static GestaltTable &shared()
    {
        // Never destroyed: Gestalt may be asked from other objects' destructors at exit.
        static GestaltTable *table = new GestaltTable();
        return *table;
    }

    bool lookup(OSType selector, SInt32 *value)
    {
        std::lock_guard<std::mutex> guard(mLock);
        auto found = mValues.find(selector);
        if (found == mValues.end())
            return false;
        *value = found->second;
        return true;
    }

    /* Stores the value if the selector's presence matches what the caller requires. */
    OSErr store(OSType selector, SInt32 value, bool mustExist, bool mustBeNew)
    {
        std::lock_guard<std::mutex> guard(mLock);
        bool exists = mValues.count(selector) != 0;
        if (mustExist && !exists)
            return gestaltUndefSelectorErr;
        if (mustBeNew && exists)
            return gestaltDupSelectorErr;
        mValues[selector] = value;
        return noErr;
    }

    OSErr remove(OSType selector)
    {
        std::lock_guard<std::mutex> guard(mLock);
        return mValues.erase(selector) != 0 ? OSErr(noErr) : OSErr(gestaltUndefSelectorErr);
    }

private:
    GestaltTable()
        : mValues{{gestaltSystemVersion, 0x1049},
                  {gestaltSystemVersionMajor, 10},
                  {gestaltSystemVersionMinor, 4},
                  {gestaltSystemVersionBugFix, 9},
                  {gestaltSysArchitecture, gestaltIntel}}
    {
    }

    std::mutex mLock;
    std::map<OSType, SInt32> mValues;
};

} // namespace

extern "C" OSErr Gestalt(OSType selector, SInt32 *response)
{
    if (response == nullptr)
        return paramErr;
    try {
        return GestaltTable::shared().lookup(selector, response) ? OSErr(noErr) : OSErr(gestaltUndefSelectorErr);
    } catch (...) {
        return gestaltUndefSelectorErr;
    }
}

extern "C" OSErr NewGestaltValue(OSType selector, SInt32 newValue)
{
    try {
        return GestaltTable::shared().store(selector, newValue, false, true);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr SetGestaltValue(OSType selector, SInt32 newValue)
{
    try {
        return GestaltTable::shared().store(selector, newValue, true, false);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr ReplaceGestaltValue(OSType selector, SInt32 replacementValue)
{
    try {
        return GestaltTable::shared().store(selector, replacementValue, false, false);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr DeleteGestaltValue(OSType selector)
{
    try {
        return GestaltTable::shared().remove(selector);
    } catch (...) {
        return gestaltUndefSelectorErr;
    }
}
