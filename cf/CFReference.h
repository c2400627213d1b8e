// An owner for one CF reference of the create rule: released when the owner
// goes, unless handed on with release().  Private to the C helper families.
#ifndef KORU_CF_CFREFERENCE_H
#define KORU_CF_CFREFERENCE_H

#include <CoreFoundation/CoreFoundation.h>

namespace koru {

template <typename Ref>
class CFReference {
public:
    explicit CFReference(Ref ref = nullptr) : ref_(ref) {}
    ~CFReference()
    {
        if (ref_ != nullptr)
            CFRelease(ref_);
    }
    CFReference(const CFReference &) = delete;
    CFReference &operator=(const CFReference &) = delete;

    Ref get() const { return ref_; }
    explicit operator bool() const { return ref_ != nullptr; }

    // Gives up ownership: the caller now releases the reference.
    Ref release()
    {
        Ref ref = ref_;
        ref_ = nullptr;
        return ref;
    }

private:
    Ref ref_;
};

} // namespace koru

#endif
