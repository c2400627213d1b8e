/* CStr: the toolkit's reference-counted, copy-on-write string, and the wide
 * C-string helpers it converts with.
 *
 * A CStr<T> (T is char or the 32-bit wchar_t) holds one pointer: the first
 * character of its zero-terminated text.  In front of the text, in the same
 * heap block, stands a CStrData<T> header with the reference count, the
 * length and the capacity.  Copies share the block until one of them writes;
 * every empty string points at one static sentinel that is never counted or
 * freed.  LockBuffer() takes a block out of sharing so that its owner may
 * write through the text pointer; copies of a locked string are deep.
 *
 * Narrow text converts to and from wide text through the system encoding
 * (CFStringGetSystemEncoding); the locale-dependent (const T *, int n)
 * constructors use the C library's converters instead.
 *
 * Thread safety: none.  The reference count is a plain integer, so copies of
 * one string may not be used on two threads at once.  The free _wcs...
 * helpers keep no state and may run on any thread. */
#ifndef KORU_CSTR_H
#define KORU_CSTR_H

#include <CoreFoundation/CoreFoundation.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Elements before the first zero; 0 for NULL. */
size_t _wcslen(const wchar_t *s);
/* Copies s and its terminator to d (a NULL s writes just the terminator); returns d. */
wchar_t *_wcscpy(wchar_t *d, const wchar_t *s);
/* Appends s to d; returns d. */
wchar_t *_wcscat(wchar_t *d, const wchar_t *s);
/* The LAST element of s equal to ch, or NULL; searching for 0 always gives NULL. */
wchar_t *_wcschr(const wchar_t *s, int ch);
/* Converts s from the system encoding into d, one element per UTF-16 unit
 * (surrogates are not combined), terminated when at least one unit was
 * stored.  Returns the number of units, 0 on failure or for size 0.  size
 * does not bound the writing: d must hold strlen(s) + 1 elements.  A NULL d
 * only counts. */
int _mbstowcsz(wchar_t *d, const char *s, unsigned long size);
/* Converts s (each element cut to 16 bits) into at most size bytes of the
 * system encoding.  Returns size - 1 on success, with d[size - 1] set to 0;
 * returns 0 and leaves d untouched when the text does not fit or cannot be
 * represented. */
int _wcstombsz(char *d, const wchar_t *s, unsigned long size);

/* The sentinel's layout: a header like CStrData's, then one zero element. */
struct CStrInitData {
    int32_t refs;
    int32_t length;
    int32_t allocLength;
    wchar_t text[1]; /* zero: the empty text of both instantiations */
};

/* The empty sentinel: refs -1, length 0, allocLength 0, then zeros. */
extern struct CStrInitData _strInitData;

#ifdef __cplusplus
}

#include <cstdarg>
#include <type_traits>

template <class T> struct CStrData {
    int32_t refs;        /* sharing strings; -1 locked or the sentinel */
    int32_t length;      /* characters in use, terminator excluded */
    int32_t allocLength; /* characters the block holds, terminator excluded */

    T *data() { return reinterpret_cast<T *>(this + 1); }
};

template <class T> class CStr {
    static_assert(std::is_same<T, char>::value || std::is_same<T, wchar_t>::value,
                  "CStr holds char or wchar_t");

public:
    /* The character type of the other instantiation, converted from and to. */
    typedef typename std::conditional<std::is_same<T, char>::value, wchar_t, char>::type
        OtherChar;

    CStr();
    /* Shares the block, or copies a locked one. */
    CStr(const CStr &s);
    /* A copy of the C string s; empty for NULL. */
    CStr(const T *s);
    /* Exactly n characters of s; empty for n <= 0 or a NULL s. */
    CStr(const T *s, int n);
    /* n copies of ch; empty for n <= 0. */
    CStr(T ch, int n);
    /* Converted through the system encoding.  The narrow string made from
     * wide text reports a length of twice the wide length, whatever the
     * converted text's own length; the text itself ends at its first zero. */
    CStr(const OtherChar *s);
    /* The C string s converted with the C library's locale-dependent
     * converters (mbstowcs / wcstombs), which may produce n + 1 characters.
     * The narrow string reserves 2n bytes and keeps all n + 1; the wide one
     * reserves n characters and is cut to them.  Empty for n <= 0 or NULL. */
    CStr(const OtherChar *s, int n);
    /* As from const char *. */
    CStr(const unsigned char *s);
    ~CStr();

    CStr &operator=(const CStr &s);
    /* NULL assigns the empty string. */
    CStr &operator=(const T *s);
    CStr &operator=(T ch);
    /* Converted through the system encoding; a conversion that fails (for
     * narrow text: one that needs more bytes than the wide text has
     * elements) leaves the string empty. */
    CStr &operator=(const OtherChar *s);
    CStr &operator=(const unsigned char *s);
    /* Back to the sentinel; a locked string keeps its block. */
    void Empty();

    int GetLength() const;
    int GetAllocLength() const;
    bool IsEmpty() const;
    /* The character at i; 0 outside [0, length]. */
    T GetAt(int i) const;
    T operator[](int i) const;
    /* Writes ch at i (copying a shared block first); ignored outside [0, length). */
    void SetAt(int i, T ch);
    operator const T *() const;
    CStrData<T> *GetData() const;

    /* strcmp / wcscmp; a NULL s compares as the empty string. */
    int Compare(const T *s) const;
    /* -1, 0 or 1 comparing lowered characters (towlower; tolower for char). */
    int CompareNoCase(const T *s) const;

    /* Indices, or -1.  Searches stop at the first zero element; a negative
     * start counts as 0. */
    int Find(T ch) const;
    int Find(T ch, int start) const;
    /* An empty sub is found at start; a NULL sub is never found. */
    int Find(const T *sub) const;
    int Find(const T *sub, int start) const;
    /* Searches backwards, ignoring the last skip characters. */
    int ReverseFind(T ch, int skip = 0) const;
    int FindOneOf(const T *set) const;

    /* New strings; a result equal to the whole string shares its block. */
    CStr Left(int n) const;
    CStr Right(int n) const;
    CStr Mid(int first, int count) const;
    CStr Mid(int first) const;

    /* Appends, growing the block to exactly the new length when it is full. */
    CStr &operator+=(const T *s);
    CStr &operator+=(T ch);
    CStr &operator+=(const CStr &s);
    /* Insert at i (clamped to [0, length]); return the new length, or the
     * unchanged length when s is NULL or empty. */
    int Insert(int i, const T *s);
    int Insert(int i, T ch);
    /* Removes count characters at i; returns the length before the call. */
    int Delete(int i, int count);
    /* Replace every occurrence; return how many were replaced. */
    int Replace(T oldCh, T newCh);
    int Replace(const T *oldText, const T *newText);
    /* Drops every ch; returns how many. */
    int Remove(T ch);

    /* Narrow TrimLeft() removes leading blanks (0x20) only; the wide one and
     * every TrimRight() remove any white space. */
    void TrimLeft();
    void TrimRight();
    void Trim();
    void TrimLeft(T ch);
    void TrimRight(T ch);
    /* The runs of characters occurring in set; NULL or empty set: nothing. */
    void TrimLeft(const T *set);
    void TrimRight(const T *set);
    /* Reverses the characters before the first zero element. */
    void MakeReverse();

    /* A writable buffer of at least n characters (text and length kept). */
    T *GetBuffer(int n);
    /* GetBuffer(n), then the length becomes n. */
    T *GetBufferSetLength(int n);
    /* Sets the length to n, or to the C-string length for a negative n. */
    void ReleaseBuffer(int n = -1);
    /* Makes the block private and unshareable; returns the text. */
    T *LockBuffer();
    void UnlockBuffer();
    /* Shrinks the block to the length. */
    void FreeExtra();

    /* printf-style formatting.  A narrow result is cut at 255 characters; a
     * wide one grows as needed.  A NULL format leaves the string unchanged. */
    void Format(const T *fmt, ...);
    void FormatV(const T *fmt, va_list args);

    /* A new CFString of the text (wide: each element cut to 16 bits; narrow:
     * the system encoding); NULL for the empty string.  The caller releases it. */
    CFStringRef CreateCFString() const;
    /* Assigns the UTF-16 units of s (narrow: converted to the system
     * encoding).  false, leaving the string as it was, for NULL or an empty s. */
    bool InitWithCFString(CFStringRef s);
    /* A new unsigned short[length + 1], terminated, freed with delete[]:
     * wide elements cut to 16 bits, narrow bytes sign-extended.  NULL for
     * the empty string. */
    unsigned short *CreateUnsignedShortString() const;

protected:
    void Init();
    bool OnSentinel() const;
    void AllocBuffer(int n);
    void Release();
    static void Release(CStrData<T> *data);
    void AllocCopy(CStr &dest, int count, int index, int extra) const;
    void AllocBeforeWrite(int n);
    void AssignCopy(int n, const T *src);
    void CopyBeforeWrite();
    void ConcatCopy(int countA, const T *a, int countB, const T *b);
    void ConcatInPlace(int n, const T *s);
    static int SafeStrlen(const T *s);
    int InsertChars(int i, const T *s, int n);

private:
    T *mText;
};

/* The member definitions live in the library, instantiated once for each
 * character type. */
extern template class CStr<char>;
extern template class CStr<wchar_t>;

/* Fresh strings holding a then b; a NULL C string counts as empty. */
CStr<wchar_t> operator+(const CStr<wchar_t> &a, const CStr<wchar_t> &b);
CStr<wchar_t> operator+(const CStr<wchar_t> &a, const wchar_t *b);
CStr<wchar_t> operator+(const wchar_t *a, const CStr<wchar_t> &b);
CStr<wchar_t> operator+(const CStr<wchar_t> &a, wchar_t ch);

#endif /* __cplusplus */

#endif
