// Alias records from outside data: the bytes of a handle, as a host may have
// read them from a file, are sized, resolved both ways and updated.
#include <CoreServices/CoreServices.h>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Handle handle = nullptr;
    if (PtrToHand(data, &handle, static_cast<long>(size)) != noErr)
        return 0;
    auto alias = reinterpret_cast<AliasHandle>(handle);
    (void)GetAliasSize(alias);
    FSRef target;
    Boolean changed = false;
    (void)FSResolveAlias(nullptr, alias, &target, &changed);
    (void)FSResolveAliasWithMountFlags(nullptr, alias, &target, &changed, kARMTryFileIDFirst);
    (void)GetAliasSize(alias);
    DisposeHandle(handle);
    return 0;
}
