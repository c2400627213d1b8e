#include <KORU/CStr.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

namespace {

template <class T> bool OnSentinel(const CStr<T> &s)
{
    return reinterpret_cast<void *>(s.GetData()) == reinterpret_cast<void *>(&_strInitData);
}

template <class T> int Refs(const CStr<T> &s)
{
    return s.GetData()->refs;
}

TEST(CStr, CopiesShareUntilOneIsWritten)
{
    CStr<char> a("hello");
    CStr<char> b(a);
    CStr<char> c;
    c = a;
    EXPECT_EQ(a.GetData(), b.GetData());
    EXPECT_EQ(a.GetData(), c.GetData());
    EXPECT_EQ(Refs(a), 3);

    b.SetAt(0, 'j');
    c += "!";
    EXPECT_STREQ(a, "hello");
    EXPECT_STREQ(b, "jello");
    EXPECT_STREQ(c, "hello!");
    EXPECT_EQ(Refs(a), 1);

    CStr<char> d(a);
    EXPECT_EQ(d.Replace("zz", "y"), 0); // nothing found: still shared
    EXPECT_EQ(d.GetData(), a.GetData());
    EXPECT_EQ(d.Replace("l", "L"), 2);
    EXPECT_STREQ(a, "hello");
    {
        CStr<char> e(a);
        EXPECT_EQ(Refs(a), 2);
    }
    EXPECT_EQ(Refs(a), 1);

    CStr<wchar_t> w(L"abc"), w2(w);
    EXPECT_EQ(w2.Replace(L'b', L'b'), 0); // a character replaced by itself leaves it shared
    EXPECT_EQ(w2.GetData(), w.GetData());
    EXPECT_EQ(w2.Replace(L'b', L'x'), 1);
    EXPECT_STREQ(w, L"abc");
}

TEST(CStr, LockedBlocksAreNeverShared)
{
    CStr<char> s("abc");
    char *p = s.LockBuffer();
    EXPECT_EQ(Refs(s), -1);
    p[0] = 'x';

    CStr<char> copy(s);
    CStr<char> assigned("zzz");
    assigned = s;
    EXPECT_NE(copy.GetData(), s.GetData());
    EXPECT_NE(assigned.GetData(), s.GetData());
    EXPECT_STREQ(assigned, "xbc");

    // Assigning into a locked string copies into its own block.
    CStr<char> other("12");
    s = other;
    EXPECT_EQ(static_cast<const char *>(s), p);
    EXPECT_STREQ(s, "12");
    EXPECT_EQ(Refs(other), 1);
    s.Empty();
    EXPECT_EQ(static_cast<const char *>(s), p);

    s.UnlockBuffer();
    CStr<char> sharer(s);
    EXPECT_EQ(sharer.GetData(), s.GetData());

    // Locking a shared string first gives it a block of its own.
    CStr<wchar_t> x(L"shared");
    CStr<wchar_t> y(x);
    y.LockBuffer();
    EXPECT_EQ(Refs(x), 1);
    EXPECT_EQ(Refs(y), -1);

    CStr<char> empty;
    empty.LockBuffer();
    EXPECT_TRUE(OnSentinel(empty));
    EXPECT_EQ(_strInitData.refs, -1);
}

TEST(CStr, EmptyStringsUseTheSentinel)
{
    CStr<char> abcd("abcd");
    CStr<char> emptied("abc");
    emptied.Empty();
    CStr<char> shrunk("abc");
    shrunk.ReleaseBuffer(0);
    EXPECT_FALSE(OnSentinel(shrunk)); // an empty private block is kept...
    shrunk.FreeExtra();               // ...until the extra room is given back

    CStr<char> narrow[] = {CStr<char>(), CStr<char>("abc", 0), CStr<char>('x', -2),
                           CStr<char>(static_cast<const char *>(nullptr)), emptied, shrunk,
                           abcd.Left(-3), abcd.Mid(5, 1)};
    for (const CStr<char> &s : narrow)
        EXPECT_TRUE(OnSentinel(s) && s.IsEmpty());
    CStr<wchar_t> wide[] = {CStr<wchar_t>(""), CStr<wchar_t>(L"x", 0),
                            CStr<wchar_t>(static_cast<const char *>(nullptr), 4)};
    for (const CStr<wchar_t> &s : wide)
        EXPECT_TRUE(OnSentinel(s));
    EXPECT_TRUE(_strInitData.refs == -1 && _strInitData.length == 0 && _strInitData.text[0] == 0);
}

TEST(CStr, SearchesStayWithinTheText)
{
    CStr<char> s("abcd"), aba("aba");
    CStr<wchar_t> w(L"abcabc");
    EXPECT_EQ((std::vector<int>{s.Find('c'), s.Find('a', 1), s.Find('c', 400), s.Find('\0'), s.Find("", 2),
                                s.Find("", 4), s.Find("cd", 3), s.Find("bc", -5),
                                s.Find(static_cast<const char *>(nullptr)), s.FindOneOf("dc"), s.FindOneOf(nullptr),
                                CStr<char>().Find(""), aba.ReverseFind('a', 1), aba.ReverseFind('a'),
                                aba.ReverseFind('a', 3), w.Find(L'c', 3), w.Find(L"ca", 3)}),
              (std::vector<int>{2, -1, -1, -1, 2, -1, -1, 1, -1, 2, -1, -1, 0, 2, -1, 5, -1}));

    // Searches forward end at the first zero element, even before the length.
    CStr<char> pieces("ab\0cb", 5);
    EXPECT_EQ((std::vector<int>{pieces.Find('b'), pieces.Find('c'), pieces.Find("cb")}), (std::vector<int>{1, -1, -1}));
}

TEST(CStr, ExtractionClampsAndSharesTheWhole)
{
    CStr<char> s("abcd");
    EXPECT_STREQ(s.Mid(2, 100), "cd");
    EXPECT_STREQ(s.Mid(-1, 2), "ab");
    EXPECT_STREQ(s.Left(2), "ab");
    EXPECT_STREQ(s.Right(1), "d");
    EXPECT_TRUE(OnSentinel(s.Right(0)));

    CStr<char> whole[] = {s.Mid(0, 4), s.Mid(-3), s.Left(10), s.Right(10)};
    for (const CStr<char> &w : whole)
        EXPECT_EQ(w.GetData(), s.GetData());
    EXPECT_EQ(Refs(s), 5);

    EXPECT_EQ(CStr<wchar_t>(L"wide").Mid(1, 2).GetAllocLength(), 2);
}

TEST(CStr, InsertAndDeleteMoveTheTail)
{
    CStr<char> s("abcd");
    CStr<char> original(s);
    EXPECT_EQ(s.Delete(1, 2), 4);
    EXPECT_STREQ(s, "ad");
    EXPECT_STREQ(original, "abcd");

    EXPECT_EQ(s.Insert(99, "x"), 3);
    EXPECT_EQ(s.Insert(-5, 'y'), 4);
    EXPECT_EQ(s.Insert(1, static_cast<const char *>(nullptr)), 4);
    EXPECT_EQ(s.Delete(10, 1), 4);
    EXPECT_STREQ(s, "yadx");
    EXPECT_EQ(s.Delete(2, 99), 4); // the count is cut at the end of the text
    EXPECT_STREQ(s, "ya");

    // Text taken from the string itself, with and without room to spare.
    CStr<char> roomy("abc");
    roomy.GetBuffer(10);
    EXPECT_EQ(roomy.Insert(1, static_cast<const char *>(roomy) + 1), 5);
    EXPECT_STREQ(roomy, "abcbc");
    CStr<char> tight("abc");
    EXPECT_EQ(tight.Insert(0, static_cast<const char *>(tight)), 6);
    EXPECT_STREQ(tight, "abcabc");
}

TEST(CStr, ReplaceCountsAndResizesTheBlock)
{
    CStr<char> s("banana");
    EXPECT_EQ(s.Replace("a", "xyz"), 3);
    EXPECT_EQ(s.GetAllocLength(), 12);
    EXPECT_EQ(s.Replace("", "q"), 0);
    EXPECT_EQ(s.Replace(nullptr, "q"), 0);
    EXPECT_EQ(s.Replace("xyz", nullptr), 3);
    EXPECT_STREQ(s, "bnn");
    EXPECT_EQ(s.GetAllocLength(), 12); // shrinking keeps the block

    CStr<char> roomy("a-b-c");
    roomy.GetBuffer(64);
    const char *before = roomy;
    EXPECT_EQ(roomy.Replace("-", "--"), 2);
    EXPECT_STREQ(roomy, "a--b--c");
    EXPECT_EQ(static_cast<const char *>(roomy), before);

    CStr<char> overlapping("aaaaa"), self("abab"), grows("ab");
    EXPECT_EQ(overlapping.Replace("aa", "b"), 2);
    EXPECT_STREQ(overlapping, "bba");
    // Text taken from the string itself.
    EXPECT_EQ(self.Replace(static_cast<const char *>(self) + 2, "x"), 2);
    EXPECT_STREQ(self, "xx");
    EXPECT_EQ(grows.Replace("b", static_cast<const char *>(grows)), 1);
    EXPECT_STREQ(grows, "aab");

    // Occurrences are looked for in each zero-separated piece up to the length.
    CStr<char> pieces("ab\0ab", 5);
    EXPECT_EQ(pieces.Replace("ab", "c"), 2);
    EXPECT_EQ(pieces.GetLength(), 3);
    EXPECT_EQ(std::memcmp(static_cast<const char *>(pieces), "c\0c", 4), 0);

    CStr<char> m("mississippi");
    EXPECT_EQ(m.Remove('s'), 4);
    EXPECT_EQ(m.GetLength(), 7);
}

TEST(CStr, AppendingGrowsToTheExactLength)
{
    CStr<char> s("ab");
    s += "cd";
    s += 'e';
    s += CStr<char>("f");
    s += static_cast<const char *>(nullptr);
    EXPECT_STREQ(s, "abcdef");
    EXPECT_EQ(s.GetAllocLength(), 6);
    CStr<char> before(s);
    s += s;
    EXPECT_STREQ(s, "abcdefabcdef");
    EXPECT_STREQ(before, "abcdef");

    CStr<char> reserved;
    reserved.GetBuffer(16);
    const char *text = reserved;
    reserved += "xyz";
    reserved += 'w';
    EXPECT_STREQ(reserved, "xyzw");
    EXPECT_TRUE(static_cast<const char *>(reserved) == text && reserved.GetAllocLength() == 16);

    CStr<wchar_t> a(L"ab");
    EXPECT_STREQ(L"x" + a + L'z', L"xabz");
    EXPECT_STREQ(a + static_cast<const wchar_t *>(nullptr), L"ab");
    EXPECT_TRUE(OnSentinel(CStr<wchar_t>() + L""));
}

TEST(CStr, TrimmingNarrowLeftRemovesBlanksOnly)
{
    CStr<char> narrow("\t text");
    narrow.TrimLeft();
    EXPECT_STREQ(narrow, "\t text");
    CStr<char> blanks("  \ttext \t\n");
    blanks.Trim();
    EXPECT_STREQ(blanks, "\ttext");

    CStr<wchar_t> wide(L"\t text\n ");
    wide.Trim();
    EXPECT_STREQ(wide, L"text");

    CStr<char> runs("xxaxbxx");
    CStr<char> untouched(runs);
    runs.TrimLeft('x');
    runs.TrimRight('x');
    EXPECT_STREQ(runs, "axb");
    EXPECT_EQ(runs.GetLength(), 3);
    EXPECT_STREQ(untouched, "xxaxbxx");

    CStr<char> sets("yxabyx");
    sets.TrimLeft("xy");
    sets.TrimRight("xy");
    sets.TrimRight(static_cast<const char *>(nullptr));
    EXPECT_STREQ(sets, "ab");

    CStr<wchar_t> reversed(L"abc");
    reversed.MakeReverse();
    EXPECT_STREQ(reversed, L"cba");
}

TEST(CStr, NarrowAndWideConvertThroughTheSystemEncoding)
{
    // The narrow string made from wide text reports twice the wide length;
    // assigned, it reports the converted length.
    CStr<char> made(L"abc"), assigned;
    assigned = L"abc";
    EXPECT_TRUE(made.GetLength() == 6 && assigned.GetLength() == 3);
    EXPECT_STREQ(made, "abc");

    EXPECT_STREQ(CStr<wchar_t>("h\xC3\xA9llo"), L"h\u00E9llo");
    CStr<wchar_t> wideAssigned;
    wideAssigned = reinterpret_cast<const unsigned char *>("x\xC3\xA9");
    EXPECT_STREQ(wideAssigned, L"x\u00E9");

    CStr<char> back(L"h\u00E9");
    EXPECT_STREQ(back, "h\xC3\xA9");
    // As many bytes as wide elements is too few for a two-byte character.
    CStr<char> tooNarrow("old");
    tooNarrow = L"\u00E9";
    EXPECT_TRUE(tooNarrow.IsEmpty() && CStr<wchar_t>("\xFF\xFE").IsEmpty());

    // The C library's converters are given room for one character more than
    // the count: the narrow string keeps it, the wide one is cut to its block.
    CStr<char> countedNarrow(L"abcdef", 3);
    EXPECT_STREQ(countedNarrow, "abcd");
    EXPECT_TRUE(countedNarrow.GetLength() == 4 && countedNarrow.GetAllocLength() == 6);
    CStr<wchar_t> shortSource("ab", 5);
    EXPECT_STREQ(shortSource, L"ab");
    EXPECT_EQ(shortSource.GetAllocLength(), 5);
    std::string previous = std::setlocale(LC_CTYPE, nullptr);
    if (std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr) {
        CStr<wchar_t> counted("h\xC3\xA9llo", 3); // counts characters, not bytes
        EXPECT_STREQ(counted, L"h\u00E9l");
        std::setlocale(LC_CTYPE, previous.c_str());
    }
}

TEST(CStr, WideHelpersFollowTheirContracts)
{
    EXPECT_EQ(_wcslen(nullptr), 0u);
    wchar_t buffer[16];
    EXPECT_EQ(_wcscpy(buffer, L"ab"), buffer);
    EXPECT_EQ(_wcscat(buffer, L"cb"), buffer);
    EXPECT_EQ(_wcslen(buffer), 4u);
    EXPECT_EQ(_wcschr(buffer, L'b'), buffer + 3); // the last match
    EXPECT_EQ(_wcschr(buffer, 0), nullptr);
    _wcscpy(buffer, nullptr);
    EXPECT_EQ(buffer[0], 0);

    EXPECT_EQ(_mbstowcsz(buffer, "a\xC3\xA9", 4), 2);
    EXPECT_STREQ(buffer, L"a\u00E9");
    EXPECT_EQ(_mbstowcsz(buffer, "\xF0\x9F\x98\x80", 5), 2); // surrogates stay apart
    EXPECT_TRUE(buffer[0] == 0xD83D && buffer[1] == 0xDE00);
    EXPECT_TRUE(_mbstowcsz(buffer, "x", 0) == 0 && _mbstowcsz(nullptr, "abc", 4) == 3);

    char out[8];
    std::memset(out, 'Z', sizeof out);
    EXPECT_EQ(_wcstombsz(out, L"ab", sizeof out), 7);
    EXPECT_EQ(out[7], 0);
    std::memset(out, 'Z', sizeof out);
    EXPECT_EQ(_wcstombsz(out, L"\u00E9\u00E9\u00E9\u00E9", 4), 0);
    EXPECT_EQ(std::string(out, sizeof out), std::string(sizeof out, 'Z'));
    EXPECT_EQ(_wcstombsz(out, L"\x10041", sizeof out), 7); // cut to 16 bits
    EXPECT_STREQ(out, "A");
    EXPECT_TRUE(_wcstombsz(out, L"ab", 0) == 0 && _wcstombsz(nullptr, L"ab", 4) == 0);
}

TEST(CStr, BuffersKeepTextAndLength)
{
    CStr<char> s("abc");
    CStr<char> t(s);
    char *p = s.GetBuffer(10);
    EXPECT_NE(s.GetData(), t.GetData());
    EXPECT_EQ(s.GetAllocLength(), 10);
    std::strcpy(p, "abcdefgh");
    s.ReleaseBuffer();
    EXPECT_EQ(s.GetLength(), 8);
    EXPECT_STREQ(t, "abc");
    EXPECT_EQ(s.GetBuffer(4), p);
    s.ReleaseBuffer(2);
    EXPECT_STREQ(s, "ab");
    s.FreeExtra();
    EXPECT_EQ(s.GetAllocLength(), 2);

    CStr<wchar_t> w;
    std::wcscpy(w.GetBufferSetLength(3), L"xyz");
    EXPECT_EQ(w.GetLength(), 3);
}

TEST(CStr, FormatCutsNarrowResultsButGrowsWideOnes)
{
    CStr<char> n;
    n.Format("%s", std::string(300, 'q').c_str());
    EXPECT_TRUE(n.GetLength() == 255 && n.GetAllocLength() == 256);

    CStr<wchar_t> w;
    w.Format(L"%ls", std::wstring(300, L'q').c_str());
    EXPECT_TRUE(w.GetLength() == 300 && w.GetAllocLength() == 512);

    // The result is written into the string's own buffer, keeping its room.
    CStr<char> roomy;
    roomy.GetBuffer(1000);
    roomy.Format("%d", 7);
    EXPECT_STREQ(roomy, "7");
    EXPECT_EQ(roomy.GetAllocLength(), 1000);

    n = "abc";
    n.Format("[%s]", static_cast<const char *>(n));
    n.Format(nullptr);
    EXPECT_STREQ(n, "[abc]");

    // A text the formatter cannot convert ends the retries with an empty result.
    w.Format(L"%s", "\xFF\xFE");
    EXPECT_TRUE(w.IsEmpty());
}

TEST(CStr, ComparisonsOrderTheText)
{
    CStr<char> abc("abc");
    EXPECT_LT(abc.Compare("abd"), 0);
    EXPECT_GT(abc.Compare(nullptr), 0);

    CStr<wchar_t> upper(L"ABC");
    EXPECT_EQ(upper.CompareNoCase(L"abc"), 0);
    EXPECT_EQ(upper.CompareNoCase(L"ab"), 1);
    EXPECT_EQ(CStr<wchar_t>(L"ab").CompareNoCase(L"ABC"), -1);
}

TEST(CStr, CoreFoundationBridges)
{
    EXPECT_TRUE(CStr<wchar_t>().CreateCFString() == nullptr && CStr<char>().CreateCFString() == nullptr &&
                CStr<char>().CreateUnsignedShortString() == nullptr);

    CFStringRef wide = CStr<wchar_t>(L"h\u00E9\x10041").CreateCFString();
    ASSERT_NE(wide, nullptr);
    EXPECT_EQ(CFStringGetLength(wide), 3);
    EXPECT_EQ(CFStringGetCharacterAtIndex(wide, 2), 0x41); // cut to 16 bits
    CFRelease(wide);
    CFStringRef narrow = CStr<char>("h\xC3\xA9").CreateCFString();
    EXPECT_EQ(CFStringGetLength(narrow), 2);
    CFRelease(narrow);

    CStr<wchar_t> keep(L"keep");
    EXPECT_FALSE(keep.InitWithCFString(CFSTR("")) || keep.InitWithCFString(nullptr));
    EXPECT_STREQ(keep, L"keep");
    const UniChar smile[] = {0xD83D, 0xDE00, 'x'};
    CFStringRef pair = CFStringCreateWithCharacters(kCFAllocatorDefault, smile, 3);
    EXPECT_TRUE(keep.InitWithCFString(pair));
    CFRelease(pair);
    EXPECT_TRUE(keep.GetLength() == 3 && keep[0] == 0xD83D);

    CStr<char> narrowKeep;
    EXPECT_TRUE(narrowKeep.InitWithCFString(CFSTR("abc")) && std::strcmp(narrowKeep, "abc") == 0);

    unsigned short *units = CStr<char>("a\xE9").CreateUnsignedShortString();
    EXPECT_TRUE(units[0] == 0x61 && units[1] == 0xFFE9 && units[2] == 0); // narrow bytes are sign-extended
    delete[] units;
    units = CStr<wchar_t>(L"\x10041").CreateUnsignedShortString();
    EXPECT_EQ(units[0], 0x41);
    delete[] units;
}

} // namespace
