// CStr and the wide C-string helpers.  The template's members are defined
// here and instantiated once for char and once for wchar_t, so the library
// exports them and callers share one copy of the code.
#include <KORU/CStr.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <wchar.h>
#include <functional>
#include <new>
#include <string>
#include <vector>

extern "C" {
CStrInitData _strInitData = {-1, 0, 0, {0}};
}

namespace {

typedef std::vector<UniChar> UniCharString;

// A CF object released when the owner goes out of scope.
class CFOwner {
public:
    explicit CFOwner(CFTypeRef ref) : mRef(ref) {}
    ~CFOwner()
    {
        if (mRef != nullptr)
            CFRelease(mRef);
    }
    CFOwner(const CFOwner &) = delete;
    CFOwner &operator=(const CFOwner &) = delete;

private:
    CFTypeRef mRef;
};

template <class T> CStrData<T> *SentinelData()
{
    return reinterpret_cast<CStrData<T> *>(&_strInitData);
}

template <class T> T *SentinelText()
{
    return SentinelData<T>()->data();
}

// One block: the header and n + 1 characters in a single array allocation.
template <class T> CStrData<T> *NewBlock(int n)
{
    size_t bytes = sizeof(CStrData<T>) + (static_cast<size_t>(n) + 1) * sizeof(T);
    unsigned char *raw = new unsigned char[bytes];
    CStrData<T> *data = new (raw) CStrData<T>{1, n, n};
    data->data()[n] = 0;
    return data;
}

template <class T> void FreeBlock(CStrData<T> *data)
{
    delete[] reinterpret_cast<unsigned char *>(data);
}

template <class T> void CopyChars(T *d, const T *s, size_t n)
{
    if (n > 0)
        std::memcpy(d, s, n * sizeof(T));
}

template <class T> void MoveChars(T *d, const T *s, size_t n)
{
    if (n > 0)
        std::memmove(d, s, n * sizeof(T));
}

// Writes source with every occurrence at the found indices replaced, front to
// back; target may be source itself when the text does not grow.
template <class T>
void ReplaceForward(T *target, const T *source, int length, const std::vector<int> &found,
                    int oldLength, const T *newText, int newLength)
{
    int from = 0;
    for (int at : found) {
        MoveChars(target, source + from, static_cast<size_t>(at - from));
        target += at - from;
        CopyChars(target, newText, static_cast<size_t>(newLength));
        target += newLength;
        from = at + oldLength;
    }
    MoveChars(target, source + from, static_cast<size_t>(length - from));
}

// The C library's functions for each character type.
const char *FindChar(const char *s, char ch) { return std::strchr(s, ch); }
const wchar_t *FindChar(const wchar_t *s, wchar_t ch) { return std::wcschr(s, ch); }
const char *FindInRange(const char *s, char ch, size_t n)
{
    return static_cast<const char *>(std::memchr(s, ch, n));
}
const wchar_t *FindInRange(const wchar_t *s, wchar_t ch, size_t n) { return std::wmemchr(s, ch, n); }
const char *FindText(const char *s, const char *sub) { return std::strstr(s, sub); }
const wchar_t *FindText(const wchar_t *s, const wchar_t *sub) { return std::wcsstr(s, sub); }
const char *FindAny(const char *s, const char *set) { return std::strpbrk(s, set); }
const wchar_t *FindAny(const wchar_t *s, const wchar_t *set) { return std::wcspbrk(s, set); }
int CompareText(const char *a, const char *b) { return std::strcmp(a, b); }
int CompareText(const wchar_t *a, const wchar_t *b) { return std::wcscmp(a, b); }
int32_t Lowered(char c) { return std::tolower(static_cast<unsigned char>(c)); }
int32_t Lowered(wchar_t c) { return static_cast<int32_t>(std::towlower(c)); }
bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool IsSpace(wchar_t c) { return std::iswspace(c) != 0; }
// The narrow left trim removes blanks only, unlike its right-hand twin.
bool IsLeadingSpace(char c) { return c == ' '; }
bool IsLeadingSpace(wchar_t c) { return std::iswspace(c) != 0; }

int PrintInto(char *d, size_t n, const char *fmt, va_list args)
{
    return std::vsnprintf(d, n, fmt, args);
}
int PrintInto(wchar_t *d, size_t n, const wchar_t *fmt, va_list args)
{
    return std::vswprintf(d, n, fmt, args);
}

// The UTF-16 units of a CF string, or an empty string.
UniCharString CopyUnits(CFStringRef s)
{
    CFIndex length = CFStringGetLength(s);
    UniCharString units;
    if (length > 0) {
        units.resize(static_cast<size_t>(length));
        CFStringGetCharacters(s, CFRangeMake(0, length), &units[0]);
    }
    return units;
}

template <class T> bool Contains(const T *set, T c)
{
    return c != 0 && FindChar(set, c) != nullptr;
}

// True when p points into the characters of a block of the given text.
template <class T> bool PointsInto(const T *p, const T *text, int allocLength)
{
    std::less_equal<const T *> le;
    return le(text, p) && le(p, text + allocLength);
}

} // namespace

// ---- Wide C-string helpers ----

extern "C" size_t _wcslen(const wchar_t *s)
{
    if (s == nullptr)
        return 0;
    const wchar_t *p = s;
    while (*p != 0)
        ++p;
    return static_cast<size_t>(p - s);
}

extern "C" wchar_t *_wcscpy(wchar_t *d, const wchar_t *s)
{
    if (d == nullptr)
        return nullptr;
    size_t n = _wcslen(s);
    MoveChars(d, s, n);
    d[n] = 0;
    return d;
}

extern "C" wchar_t *_wcscat(wchar_t *d, const wchar_t *s)
{
    if (d == nullptr)
        return nullptr;
    _wcscpy(d + _wcslen(d), s);
    return d;
}

extern "C" wchar_t *_wcschr(const wchar_t *s, int ch)
{
    // Every element is visited, so the answer is the last match, not the first.
    const wchar_t *found = nullptr;
    if (ch == 0)
        return nullptr;
    size_t n = _wcslen(s);
    for (size_t i = 0; i < n; ++i) {
        if (s[i] == static_cast<wchar_t>(ch))
            found = s + i;
    }
    return const_cast<wchar_t *>(found);
}

extern "C" int _mbstowcsz(wchar_t *d, const char *s, unsigned long size)
{
    if ((size == 0 && d != nullptr) || s == nullptr)
        return 0;
    try {
        CFStringRef string =
            CFStringCreateWithCString(kCFAllocatorDefault, s, CFStringGetSystemEncoding());
        if (string == nullptr)
            return 0;
        CFOwner owner(string);
        UniCharString units = CopyUnits(string);
        if (d != nullptr && !units.empty()) {
            for (size_t i = 0; i < units.size(); ++i)
                d[i] = static_cast<wchar_t>(units[i]);
            d[units.size()] = 0;
        }
        return static_cast<int>(units.size());
    } catch (...) {
        return 0;
    }
}

extern "C" int _wcstombsz(char *d, const wchar_t *s, unsigned long size)
{
    if (d == nullptr || s == nullptr || size == 0)
        return 0;
    try {
        size_t n = _wcslen(s);
        UniCharString units(n, 0);
        for (size_t i = 0; i < n; ++i)
            units[i] = static_cast<UniChar>(s[i] & 0xFFFF);
        CFStringRef string = CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(),
                                                          static_cast<CFIndex>(n));
        if (string == nullptr)
            return 0;
        CFOwner owner(string);
        // Converted into a scratch buffer first, so that a failed conversion
        // leaves d untouched.  No encoding needs more than four bytes per
        // UTF-16 unit, which bounds the scratch buffer for any size.
        size_t scratchSize = std::min<unsigned long>(size, 4 * n + 1);
        std::vector<char> scratch(scratchSize, 0);
        if (!CFStringGetCString(string, scratch.data(), static_cast<CFIndex>(scratchSize),
                                CFStringGetSystemEncoding()))
            return 0;
        size_t used = std::strlen(scratch.data());
        std::memcpy(d, scratch.data(), used + 1);
        d[size - 1] = 0;
        return static_cast<int>(size - 1);
    } catch (...) {
        return 0;
    }
}

// ---- Block management ----

template <class T> void CStr<T>::Init()
{
    mText = SentinelText<T>();
}

template <class T> bool CStr<T>::OnSentinel() const
{
    return GetData() == SentinelData<T>();
}

template <class T> void CStr<T>::AllocBuffer(int n)
{
    if (n <= 0) {
        Init();
        return;
    }
    mText = NewBlock<T>(n)->data();
}

template <class T> void CStr<T>::Release()
{
    Release(GetData());
    Init();
}

template <class T> void CStr<T>::Release(CStrData<T> *data)
{
    if (data != SentinelData<T>() && --data->refs <= 0)
        FreeBlock(data);
}

template <class T> void CStr<T>::AllocCopy(CStr &dest, int count, int index, int extra) const
{
    if (count + extra <= 0) {
        dest.Init();
        return;
    }
    dest.AllocBuffer(count + extra);
    CopyChars(dest.mText, mText + index, static_cast<size_t>(count));
}

template <class T> void CStr<T>::AllocBeforeWrite(int n)
{
    CStrData<T> *data = GetData();
    if (data->refs < 2 && n <= data->allocLength)
        return;
    Release();
    AllocBuffer(n);
}

template <class T> void CStr<T>::AssignCopy(int n, const T *src)
{
    AllocBeforeWrite(n);
    if (OnSentinel())
        return;
    // src may lie inside the kept block (s = s + 1).
    MoveChars(mText, src, static_cast<size_t>(n));
    GetData()->length = n;
    mText[n] = 0;
}

template <class T> void CStr<T>::CopyBeforeWrite()
{
    CStrData<T> *data = GetData();
    if (data->refs <= 1)
        return;
    --data->refs;
    AllocBuffer(data->length);
    CopyChars(mText, data->data(), static_cast<size_t>(data->length));
}

template <class T> void CStr<T>::ConcatCopy(int countA, const T *a, int countB, const T *b)
{
    if (countA + countB <= 0)
        return;
    AllocBuffer(countA + countB);
    CopyChars(mText, a, static_cast<size_t>(countA));
    CopyChars(mText + countA, b, static_cast<size_t>(countB));
}

template <class T> void CStr<T>::ConcatInPlace(int n, const T *s)
{
    if (n <= 0)
        return;
    CStrData<T> *data = GetData();
    if (data->refs < 2 && data->length + n <= data->allocLength) {
        CopyChars(mText + data->length, s, static_cast<size_t>(n));
        data->length += n;
        mText[data->length] = 0;
        return;
    }
    ConcatCopy(data->length, mText, n, s);
    Release(data);
}

template <class T> int CStr<T>::SafeStrlen(const T *s)
{
    return s == nullptr ? 0 : static_cast<int>(std::char_traits<T>::length(s));
}

// ---- Construction, assignment, destruction ----

template <class T> CStr<T>::CStr()
{
    Init();
}

template <class T> CStr<T>::CStr(const CStr &s)
{
    if (s.GetData()->refs < 0) {
        Init();
        *this = s.mText;
        return;
    }
    mText = s.mText;
    ++GetData()->refs;
}

template <class T> CStr<T>::CStr(const T *s)
{
    Init();
    int n = SafeStrlen(s);
    if (n > 0) {
        AllocBuffer(n);
        CopyChars(mText, s, static_cast<size_t>(n));
    }
}

template <class T> CStr<T>::CStr(const T *s, int n)
{
    Init();
    if (s == nullptr || n <= 0)
        return;
    AllocBuffer(n);
    CopyChars(mText, s, static_cast<size_t>(n));
}

template <class T> CStr<T>::CStr(T ch, int n)
{
    Init();
    if (n <= 0)
        return;
    AllocBuffer(n);
    std::fill(mText, mText + n, ch);
}

template <class T> CStr<T>::CStr(const OtherChar *s)
{
    Init();
    if (s == nullptr || *s == 0)
        return;
    if constexpr (std::is_same<T, wchar_t>::value) {
        int n = static_cast<int>(std::strlen(s));
        AllocBuffer(n);
        mText[0] = 0;
        _mbstowcsz(mText, s, static_cast<unsigned long>(n) + 1);
        ReleaseBuffer(-1);
    } else {
        // Twice the wide length is reserved for the narrow text, and the
        // converter answers with the buffer size, so the length reported is
        // that doubled figure whatever the text's own length.
        int n = 2 * static_cast<int>(_wcslen(s));
        AllocBuffer(n);
        std::memset(mText, 0, static_cast<size_t>(n));
        int r = _wcstombsz(mText, s, static_cast<unsigned long>(n) + 1);
        ReleaseBuffer(std::max(r, -1));
    }
}

template <class T> CStr<T>::CStr(const OtherChar *s, int n)
{
    Init();
    if (s == nullptr || n <= 0)
        return;
    // The C library's converters are given room for n + 1 characters, so
    // they may write one more than n: the narrow block (twice n bytes) keeps
    // it, the wide block (n characters) cuts its length there.  The block
    // starts zeroed because a failed conversion leaves what it managed
    // unterminated, and the length is then measured from the text.
    size_t r;
    if constexpr (std::is_same<T, wchar_t>::value) {
        AllocBuffer(n);
        std::fill(mText, mText + n, 0);
        r = std::mbstowcs(mText, s, static_cast<size_t>(n) + 1);
    } else {
        if (n > INT_MAX / 2)
            return;
        AllocBuffer(2 * n);
        std::fill(mText, mText + 2 * n, 0);
        r = std::wcstombs(mText, s, static_cast<size_t>(n) + 1);
    }
    if (r == static_cast<size_t>(-1))
        ReleaseBuffer(-1);
    else
        ReleaseBuffer(static_cast<int>(std::min<size_t>(r, static_cast<size_t>(GetAllocLength()))));
}

template <class T> CStr<T>::CStr(const unsigned char *s) : CStr(reinterpret_cast<const char *>(s))
{
}

template <class T> CStr<T>::~CStr()
{
    Release(GetData());
}

template <class T> CStr<T> &CStr<T>::operator=(const CStr &s)
{
    if (mText == s.mText)
        return *this;
    CStrData<T> *data = GetData();
    CStrData<T> *source = s.GetData();
    bool locked = data->refs < 0 && !OnSentinel();
    if (locked || source->refs < 0) {
        AssignCopy(source->length, s.mText);
        return *this;
    }
    Release();
    mText = s.mText;
    ++source->refs;
    return *this;
}

template <class T> CStr<T> &CStr<T>::operator=(const T *s)
{
    AssignCopy(SafeStrlen(s), s);
    return *this;
}

template <class T> CStr<T> &CStr<T>::operator=(T ch)
{
    AssignCopy(1, &ch);
    return *this;
}

template <class T> CStr<T> &CStr<T>::operator=(const OtherChar *s)
{
    if constexpr (std::is_same<T, wchar_t>::value) {
        int n = s == nullptr ? 0 : static_cast<int>(std::strlen(s));
        AllocBeforeWrite(n);
        if (OnSentinel())
            return *this;
        if (_mbstowcsz(mText, s, static_cast<unsigned long>(n) + 1) == 0)
            mText[0] = 0;
    } else {
        // Only as many bytes as the wide text has elements: enough for ASCII.
        int n = static_cast<int>(_wcslen(s));
        AllocBeforeWrite(n);
        if (OnSentinel())
            return *this;
        if (_wcstombsz(mText, s, static_cast<unsigned long>(n) + 1) == 0)
            mText[0] = 0;
    }
    ReleaseBuffer(-1);
    return *this;
}

template <class T> CStr<T> &CStr<T>::operator=(const unsigned char *s)
{
    return *this = reinterpret_cast<const char *>(s);
}

template <class T> void CStr<T>::Empty()
{
    CStrData<T> *data = GetData();
    if (data->length == 0)
        return;
    if (data->refs >= 0) {
        Release();
        return;
    }
    T zero = 0;
    AssignCopy(0, &zero);
}

// ---- Access ----

template <class T> int CStr<T>::GetLength() const
{
    return GetData()->length;
}

template <class T> int CStr<T>::GetAllocLength() const
{
    return GetData()->allocLength;
}

template <class T> bool CStr<T>::IsEmpty() const
{
    return GetData()->length == 0;
}

template <class T> T CStr<T>::GetAt(int i) const
{
    if (i < 0 || i > GetData()->length)
        return 0;
    return mText[i];
}

template <class T> T CStr<T>::operator[](int i) const
{
    return GetAt(i);
}

template <class T> void CStr<T>::SetAt(int i, T ch)
{
    if (i < 0 || i >= GetData()->length)
        return;
    CopyBeforeWrite();
    mText[i] = ch;
}

template <class T> CStr<T>::operator const T *() const
{
    return mText;
}

template <class T> CStrData<T> *CStr<T>::GetData() const
{
    return reinterpret_cast<CStrData<T> *>(mText) - 1;
}

template <class T> int CStr<T>::Compare(const T *s) const
{
    T zero = 0;
    return CompareText(mText, s == nullptr ? &zero : s);
}

template <class T> int CStr<T>::CompareNoCase(const T *s) const
{
    T zero = 0;
    const T *a = mText;
    const T *b = s == nullptr ? &zero : s;
    for (;; ++a, ++b) {
        int32_t la = Lowered(*a);
        int32_t lb = Lowered(*b);
        if (la != lb)
            return la < lb ? -1 : 1;
        if (*a == 0)
            return 0;
    }
}

// ---- Search ----

template <class T> int CStr<T>::Find(T ch) const
{
    return Find(ch, 0);
}

template <class T> int CStr<T>::Find(T ch, int start) const
{
    start = std::max(start, 0);
    if (GetData()->length <= start || ch == 0)
        return -1;
    // The search ends at the first zero element.  Looking for ch within the
    // length and then for a zero before the match gives that answer with
    // the C library's fastest scans.
    const T *from = mText + start;
    const T *p = FindInRange(from, ch, static_cast<size_t>(GetData()->length - start));
    if (p == nullptr || FindInRange(from, T(0), static_cast<size_t>(p - from)) != nullptr)
        return -1;
    return static_cast<int>(p - mText);
}

template <class T> int CStr<T>::Find(const T *sub) const
{
    return Find(sub, 0);
}

template <class T> int CStr<T>::Find(const T *sub, int start) const
{
    start = std::max(start, 0);
    if (sub == nullptr || GetData()->length <= start)
        return -1;
    if (*sub == 0)
        return start;
    const T *p = FindText(mText + start, sub);
    return p == nullptr ? -1 : static_cast<int>(p - mText);
}

template <class T> int CStr<T>::ReverseFind(T ch, int skip) const
{
    for (int i = GetData()->length - std::max(skip, 0) - 1; i >= 0; --i) {
        if (mText[i] == ch)
            return i;
    }
    return -1;
}

template <class T> int CStr<T>::FindOneOf(const T *set) const
{
    if (set == nullptr)
        return -1;
    const T *p = FindAny(mText, set);
    return p == nullptr ? -1 : static_cast<int>(p - mText);
}

// ---- Extraction ----

template <class T> CStr<T> CStr<T>::Left(int n) const
{
    n = std::max(n, 0);
    if (n >= GetData()->length)
        return *this;
    CStr result;
    AllocCopy(result, n, 0, 0);
    return result;
}

template <class T> CStr<T> CStr<T>::Right(int n) const
{
    n = std::max(n, 0);
    int length = GetData()->length;
    if (n >= length)
        return *this;
    CStr result;
    AllocCopy(result, n, length - n, 0);
    return result;
}

template <class T> CStr<T> CStr<T>::Mid(int first, int count) const
{
    int length = GetData()->length;
    first = std::max(first, 0);
    count = std::max(count, 0);
    if (first > length)
        count = 0;
    else if (static_cast<long long>(first) + count > length)
        count = length - first;
    if (first == 0 && count == length)
        return *this;
    CStr result;
    AllocCopy(result, count, first, 0);
    return result;
}

template <class T> CStr<T> CStr<T>::Mid(int first) const
{
    long long count = static_cast<long long>(GetData()->length) - first;
    return Mid(first, static_cast<int>(std::min<long long>(count, INT_MAX)));
}

// ---- Editing ----

template <class T> CStr<T> &CStr<T>::operator+=(const T *s)
{
    ConcatInPlace(SafeStrlen(s), s);
    return *this;
}

template <class T> CStr<T> &CStr<T>::operator+=(T ch)
{
    ConcatInPlace(1, &ch);
    return *this;
}

template <class T> CStr<T> &CStr<T>::operator+=(const CStr &s)
{
    ConcatInPlace(s.GetData()->length, s.mText);
    return *this;
}

template <class T> int CStr<T>::InsertChars(int i, const T *s, int n)
{
    CopyBeforeWrite();
    CStrData<T> *data = GetData();
    int length = data->length;
    i = std::min(std::max(i, 0), length);
    if (length + n > data->allocLength) {
        // s is read from the old block before that block is let go.
        T *oldText = mText;
        AllocBuffer(length + n);
        CopyChars(mText, oldText, static_cast<size_t>(i));
        CopyChars(mText + i, s, static_cast<size_t>(n));
        CopyChars(mText + i + n, oldText + i, static_cast<size_t>(length - i));
        Release(data);
    } else {
        std::basic_string<T> saved;
        if (PointsInto(s, mText, data->allocLength)) {
            saved.assign(s, static_cast<size_t>(n));
            s = saved.data();
        }
        MoveChars(mText + i + n, mText + i, static_cast<size_t>(length - i) + 1);
        CopyChars(mText + i, s, static_cast<size_t>(n));
    }
    GetData()->length = length + n;
    mText[length + n] = 0;
    return length + n;
}

template <class T> int CStr<T>::Insert(int i, const T *s)
{
    int n = SafeStrlen(s);
    if (n == 0)
        return GetData()->length;
    return InsertChars(i, s, n);
}

template <class T> int CStr<T>::Insert(int i, T ch)
{
    return InsertChars(i, &ch, 1);
}

template <class T> int CStr<T>::Delete(int i, int count)
{
    CStrData<T> *data = GetData();
    int length = data->length;
    i = std::max(i, 0);
    if (count >= 1 && i < length) {
        count = std::min(count, length - i);
        CopyBeforeWrite();
        MoveChars(mText + i, mText + i + count, static_cast<size_t>(length - i - count) + 1);
        GetData()->length = length - count;
    }
    return length;
}

template <class T> int CStr<T>::Replace(T oldCh, T newCh)
{
    if (oldCh == newCh)
        return 0;
    CopyBeforeWrite();
    int count = 0;
    int length = GetData()->length;
    for (int i = 0; i < length; ++i) {
        if (mText[i] == oldCh) {
            mText[i] = newCh;
            ++count;
        }
    }
    return count;
}

template <class T> int CStr<T>::Replace(const T *oldText, const T *newText)
{
    int oldLength = SafeStrlen(oldText);
    if (oldLength == 0)
        return 0;
    int newLength = SafeStrlen(newText);
    T zero = 0;
    if (newText == nullptr)
        newText = &zero;

    // Occurrences never span an embedded zero: each zero-terminated piece of
    // the text up to its length is searched on its own.
    std::vector<int> found;
    const T *end = mText + GetData()->length;
    for (const T *start = mText; start < end; start += SafeStrlen(start) + 1) {
        const T *p;
        while ((p = FindText(start, oldText)) != nullptr) {
            found.push_back(static_cast<int>(p - mText));
            start = p + oldLength;
        }
    }
    if (found.empty())
        return 0;

    long long resultLength = static_cast<long long>(GetData()->length) +
                             static_cast<long long>(newLength - oldLength) *
                                 static_cast<long long>(found.size());
    if (resultLength > INT_MAX)
        return 0;

    // Both texts may live in this very block, which is about to be rewritten.
    std::basic_string<T> savedOld, savedNew;
    int allocLength = GetData()->allocLength;
    if (PointsInto(oldText, mText, allocLength))
        oldText = (savedOld = oldText).c_str();
    if (PointsInto(newText, mText, allocLength))
        newText = (savedNew = newText).c_str();

    CStrData<T> *data = GetData();
    int length = data->length;
    int count = static_cast<int>(found.size());
    int total = static_cast<int>(resultLength);
    // A shared block is first copied to one of exactly its length; the
    // result then needs a new block if it does not fit.  Either way the new
    // block is filled straight from the old text in one pass.
    bool shared = data->refs > 1;
    int capacity = shared ? length : data->allocLength;
    if (shared || total > capacity) {
        T *source = mText;
        AllocBuffer(std::max(total, capacity));
        ReplaceForward(mText, source, length, found, oldLength, newText, newLength);
        Release(data);
    } else if (newLength <= oldLength) {
        // Shrinking in place: the write point never passes the read point.
        ReplaceForward(mText, mText, length, found, oldLength, newText, newLength);
    } else {
        // Growing in place: one pass from the back.
        int sourceEnd = length;
        int targetEnd = total;
        for (int k = count - 1; k >= 0; --k) {
            int tail = sourceEnd - (found[k] + oldLength);
            MoveChars(mText + targetEnd - tail, mText + found[k] + oldLength,
                      static_cast<size_t>(tail));
            targetEnd -= tail + newLength;
            CopyChars(mText + targetEnd, newText, static_cast<size_t>(newLength));
            sourceEnd = found[k];
        }
    }
    if (!OnSentinel()) {
        GetData()->length = total;
        mText[total] = 0;
    }
    return count;
}

template <class T> int CStr<T>::Remove(T ch)
{
    CopyBeforeWrite();
    int length = GetData()->length;
    int kept = 0;
    for (int i = 0; i < length; ++i) {
        if (mText[i] != ch)
            mText[kept++] = mText[i];
    }
    if (kept == length)
        return 0;
    mText[kept] = 0;
    GetData()->length = kept;
    return length - kept;
}

// ---- Trimming ----

template <class T> void CStr<T>::TrimLeft()
{
    CopyBeforeWrite();
    const T *p = mText;
    while (*p != 0 && IsLeadingSpace(*p))
        ++p;
    int removed = static_cast<int>(p - mText);
    if (removed == 0)
        return;
    int length = GetData()->length - removed;
    MoveChars(mText, p, static_cast<size_t>(length) + 1);
    GetData()->length = length;
}

template <class T> void CStr<T>::TrimRight()
{
    CopyBeforeWrite();
    int length = GetData()->length;
    int i = length;
    while (i > 0 && IsSpace(mText[i - 1]))
        --i;
    if (i == length)
        return;
    mText[i] = 0;
    GetData()->length = i;
}

template <class T> void CStr<T>::Trim()
{
    TrimLeft();
    TrimRight();
}

template <class T> void CStr<T>::TrimLeft(T ch)
{
    T set[2] = {ch, 0};
    TrimLeft(set);
}

template <class T> void CStr<T>::TrimRight(T ch)
{
    T set[2] = {ch, 0};
    TrimRight(set);
}

template <class T> void CStr<T>::TrimLeft(const T *set)
{
    if (set == nullptr || *set == 0)
        return;
    CopyBeforeWrite();
    const T *p = mText;
    while (Contains(set, *p))
        ++p;
    int removed = static_cast<int>(p - mText);
    if (removed == 0)
        return;
    int length = GetData()->length - removed;
    MoveChars(mText, p, static_cast<size_t>(length) + 1);
    GetData()->length = length;
}

template <class T> void CStr<T>::TrimRight(const T *set)
{
    if (set == nullptr)
        return;
    CopyBeforeWrite();
    // Walking forward, remember where the current run of set characters began.
    T *run = nullptr;
    for (T *p = mText; *p != 0; ++p) {
        if (Contains(set, *p)) {
            if (run == nullptr)
                run = p;
        } else {
            run = nullptr;
        }
    }
    if (run == nullptr)
        return;
    *run = 0;
    GetData()->length = static_cast<int>(run - mText);
}

template <class T> void CStr<T>::MakeReverse()
{
    CopyBeforeWrite();
    std::reverse(mText, mText + SafeStrlen(mText));
}

// ---- Buffer access ----

template <class T> T *CStr<T>::GetBuffer(int n)
{
    n = std::max(n, 0);
    CStrData<T> *data = GetData();
    if (data->refs < 2 && n <= data->allocLength)
        return mText;
    int length = data->length;
    T *oldText = mText;
    AllocBuffer(std::max(n, length));
    if (!OnSentinel()) {
        CopyChars(mText, oldText, static_cast<size_t>(length) + 1);
        GetData()->length = length;
    }
    Release(data);
    return mText;
}

template <class T> T *CStr<T>::GetBufferSetLength(int n)
{
    n = std::max(n, 0);
    GetBuffer(n);
    if (!OnSentinel()) {
        GetData()->length = n;
        mText[n] = 0;
    }
    return mText;
}

template <class T> void CStr<T>::ReleaseBuffer(int n)
{
    CopyBeforeWrite();
    if (OnSentinel())
        return;
    CStrData<T> *data = GetData();
    if (n < 0) {
        // Measured, but never past the block, whatever the caller wrote.
        n = 0;
        while (n < data->allocLength && mText[n] != 0)
            ++n;
    }
    n = std::min(n, data->allocLength);
    data->length = n;
    mText[n] = 0;
}

template <class T> T *CStr<T>::LockBuffer()
{
    T *text = GetBuffer(0);
    if (!OnSentinel())
        GetData()->refs = -1;
    return text;
}

template <class T> void CStr<T>::UnlockBuffer()
{
    // Only a locked block: setting a shared one to 1 would lose its owners.
    if (!OnSentinel() && GetData()->refs < 0)
        GetData()->refs = 1;
}

template <class T> void CStr<T>::FreeExtra()
{
    CStrData<T> *data = GetData();
    if (data->length == data->allocLength)
        return;
    T *oldText = mText;
    AllocBuffer(data->length);
    CopyChars(mText, oldText, static_cast<size_t>(data->length));
    Release(data);
}

// ---- Formatting ----

template <class T> void CStr<T>::Format(const T *fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    FormatV(fmt, args);
    va_end(args);
}

template <class T> void CStr<T>::FormatV(const T *fmt, va_list args)
{
    if (fmt == nullptr)
        return;
    // Formatted into a separate string, so that arguments pointing into this
    // one stay valid while it is written, then copied into this string's
    // buffer of the capacity the formatting needed.  The narrow formatter
    // reports the length it needed rather than failing, so its result stays
    // cut at 255 characters; the wide one fails on overflow and is retried
    // 256 characters larger each time.  An encoding error sets errno and
    // ends the retries.
    CStr result;
    int capacity = 0;
    int r;
    do {
        capacity += 256;
        T *buffer = result.GetBuffer(capacity);
        va_list copy;
        va_copy(copy, args);
        errno = 0;
        r = PrintInto(buffer, static_cast<size_t>(capacity), fmt, copy);
        va_end(copy);
    } while (r < 0 && errno == 0 && capacity < INT_MAX - 256);
    if (r < 0 && errno != 0)
        result.GetBuffer(0)[0] = 0;
    result.ReleaseBuffer(-1);
    T *text = GetBuffer(capacity);
    CopyChars(text, static_cast<const T *>(result), static_cast<size_t>(result.GetLength()) + 1);
    ReleaseBuffer(-1);
}

// ---- Core Foundation bridges ----

template <class T> CFStringRef CStr<T>::CreateCFString() const
{
    int length = GetData()->length;
    if (length == 0)
        return nullptr;
    if constexpr (std::is_same<T, wchar_t>::value) {
        UniCharString units(static_cast<size_t>(length), 0);
        for (int i = 0; i < length; ++i)
            units[static_cast<size_t>(i)] = static_cast<UniChar>(mText[i] & 0xFFFF);
        return CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(), length);
    } else {
        return CFStringCreateWithCString(kCFAllocatorDefault, mText, CFStringGetSystemEncoding());
    }
}

template <class T> bool CStr<T>::InitWithCFString(CFStringRef s)
{
    if (s == nullptr || CFStringGetLength(s) == 0)
        return false;
    UniCharString units = CopyUnits(s);
    std::wstring wide(units.begin(), units.end());
    *this = wide.c_str();
    return true;
}

template <class T> unsigned short *CStr<T>::CreateUnsignedShortString() const
{
    int length = GetData()->length;
    if (length == 0)
        return nullptr;
    unsigned short *units = new unsigned short[static_cast<size_t>(length) + 1];
    for (int i = 0; i < length; ++i) {
        if constexpr (std::is_same<T, wchar_t>::value)
            units[i] = static_cast<unsigned short>(mText[i] & 0xFFFF);
        else // bytes from 0x80 up are sign-extended, as they always were
            units[i] = static_cast<unsigned short>(static_cast<short>(mText[i]));
    }
    units[length] = 0;
    return units;
}

template class CStr<char>;
template class CStr<wchar_t>;

// ---- Concatenation ----

namespace {

CStr<wchar_t> Concatenated(const wchar_t *a, size_t countA, const wchar_t *b, size_t countB)
{
    CStr<wchar_t> result;
    if (countA + countB == 0)
        return result;
    wchar_t *text = result.GetBufferSetLength(static_cast<int>(countA + countB));
    CopyChars(text, a, countA);
    CopyChars(text + countA, b, countB);
    return result;
}

} // namespace

CStr<wchar_t> operator+(const CStr<wchar_t> &a, const CStr<wchar_t> &b)
{
    return Concatenated(a, static_cast<size_t>(a.GetLength()), b,
                        static_cast<size_t>(b.GetLength()));
}

CStr<wchar_t> operator+(const CStr<wchar_t> &a, const wchar_t *b)
{
    return Concatenated(a, static_cast<size_t>(a.GetLength()), b, _wcslen(b));
}

CStr<wchar_t> operator+(const wchar_t *a, const CStr<wchar_t> &b)
{
    return Concatenated(a, _wcslen(a), b, static_cast<size_t>(b.GetLength()));
}

CStr<wchar_t> operator+(const CStr<wchar_t> &a, wchar_t ch)
{
    return Concatenated(a, static_cast<size_t>(a.GetLength()), &ch, 1);
}
