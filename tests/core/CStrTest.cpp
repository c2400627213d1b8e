#include <KORU/CStr.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <string>

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
    EXPECT_STREQ(d, "heLLo");
    EXPECT_STREQ(a, "hello");
    {
        CStr<char> e(a);
        EXPECT_EQ(Refs(a), 2);
    }
    EXPECT_EQ(Refs(a), 1);

    CStr<wchar_t> w(L"abc");
    CStr<wchar_t> w2 = w;
    EXPECT_EQ(w2.Replace(L'b', L'b'), 0);
    EXPECT_EQ(w2.GetData(), w.GetData());
    EXPECT_EQ(w2.Replace(L'b', L'x'), 1);
    EXPECT_STREQ(w, L"abc");
    EXPECT_STREQ(w2, L"axc");
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
    EXPECT_STREQ(copy, "xbc");
    EXPECT_STREQ(assigned, "xbc");
    EXPECT_EQ(Refs(copy), 1);
    EXPECT_EQ(Refs(s), -1);

    // Assigning into a locked string copies into its own block.
    CStr<char> other("12");
    s = other;
    EXPECT_EQ(static_cast<const char *>(s), p);
    EXPECT_STREQ(s, "12");
    EXPECT_EQ(Refs(s), -1);
    EXPECT_EQ(Refs(other), 1);
    s.Empty();
    EXPECT_EQ(static_cast<const char *>(s), p);
    EXPECT_EQ(s.GetLength(), 0);

    s.UnlockBuffer();
    EXPECT_EQ(Refs(s), 1);
    s = "shared again";
    CStr<char> sharer(s);
    EXPECT_EQ(sharer.GetData(), s.GetData());

    // Locking a shared string first gives it a block of its own.
    CStr<wchar_t> x(L"shared");
    CStr<wchar_t> y(x);
    y.LockBuffer();
    EXPECT_NE(x.GetData(), y.GetData());
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
    for (const CStr<char> &s : narrow) {
        EXPECT_TRUE(OnSentinel(s));
        EXPECT_STREQ(s, "");
        EXPECT_TRUE(s.IsEmpty());
    }
    CStr<wchar_t> wide[] = {CStr<wchar_t>(), CStr<wchar_t>(""), CStr<wchar_t>(L"x", 0),
                            CStr<wchar_t>(static_cast<const char *>(nullptr), 4)};
    for (const CStr<wchar_t> &s : wide) {
        EXPECT_TRUE(OnSentinel(s));
        EXPECT_STREQ(s, L"");
    }
    EXPECT_EQ(_strInitData.refs, -1);
    EXPECT_EQ(_strInitData.length, 0);
    EXPECT_EQ(_strInitData.text[0], 0);
}

TEST(CStr, SearchesStayWithinTheText)
{
    CStr<char> s("abcd");
    EXPECT_EQ(s.Find('c'), 2);
    EXPECT_EQ(s.Find('z'), -1);
    EXPECT_EQ(s.Find('a', 1), -1);
    EXPECT_EQ(s.Find('c', 4), -1);
    EXPECT_EQ(s.Find('c', 400), -1);
    EXPECT_EQ(s.Find('\0'), -1);
    EXPECT_EQ(s.Find(""), 0);
    EXPECT_EQ(s.Find("", 2), 2);
    EXPECT_EQ(s.Find("", 4), -1);
    EXPECT_EQ(s.Find("cd"), 2);
    EXPECT_EQ(s.Find("cd", 3), -1);
    EXPECT_EQ(s.Find("bc", -5), 1);
    EXPECT_EQ(s.Find(static_cast<const char *>(nullptr)), -1);
    EXPECT_EQ(s.FindOneOf("dc"), 2);
    EXPECT_EQ(s.FindOneOf("xyz"), -1);
    EXPECT_EQ(s.FindOneOf(nullptr), -1);
    EXPECT_EQ(CStr<char>().Find('a'), -1);
    EXPECT_EQ(CStr<char>().Find(""), -1);

    // Searches forward end at the first zero element, even before the length.
    CStr<char> pieces("ab\0cb", 5);
    EXPECT_EQ(pieces.Find('b'), 1);
    EXPECT_EQ(pieces.Find('c'), -1);
    EXPECT_EQ(pieces.Find("cb"), -1);

    CStr<char> aba("aba");
    EXPECT_EQ(aba.ReverseFind('a', 1), 0);
    EXPECT_EQ(aba.ReverseFind('a'), 2);
    EXPECT_EQ(aba.ReverseFind('a', 3), -1);

    CStr<wchar_t> w(L"abcabc");
    EXPECT_EQ(w.Find(L'c', 3), 5);
    EXPECT_EQ(w.Find(L"ca"), 2);
    EXPECT_EQ(w.Find(L"ca", 3), -1);
    EXPECT_EQ(w.ReverseFind(L'b'), 4);
    EXPECT_EQ(w.FindOneOf(L"xc"), 2);
}

TEST(CStr, ExtractionClampsAndSharesTheWhole)
{
    CStr<char> s("abcd");
    EXPECT_STREQ(s.Mid(2, 100), "cd");
    EXPECT_STREQ(s.Mid(-1, 2), "ab");
    EXPECT_STREQ(s.Mid(1), "bcd");
    EXPECT_STREQ(s.Mid(4), "");
    EXPECT_STREQ(s.Left(2), "ab");
    EXPECT_STREQ(s.Right(1), "d");
    EXPECT_TRUE(OnSentinel(s.Right(0)));
    EXPECT_TRUE(OnSentinel(s.Mid(1, 0)));

    CStr<char> whole[] = {s.Mid(0, 4), s.Mid(-3), s.Left(10), s.Right(10)};
    for (const CStr<char> &w : whole)
        EXPECT_EQ(w.GetData(), s.GetData());
    EXPECT_EQ(Refs(s), 5);

    CStr<wchar_t> w(L"wide");
    EXPECT_STREQ(w.Mid(1, 2), L"id");
    EXPECT_EQ(w.Mid(1, 2).GetAllocLength(), 2);
}

TEST(CStr, InsertAndDeleteMoveTheTail)
{
    CStr<char> s("abcd");
    CStr<char> original(s);
    EXPECT_EQ(s.Delete(1, 2), 4);
    EXPECT_STREQ(s, "ad");
    EXPECT_EQ(s.GetLength(), 2);
    EXPECT_STREQ(original, "abcd");

    EXPECT_EQ(s.Insert(99, "x"), 3);
    EXPECT_STREQ(s, "adx");
    EXPECT_EQ(s.Insert(-5, 'y'), 4);
    EXPECT_STREQ(s, "yadx");
    EXPECT_EQ(s.Insert(1, ""), 4);
    EXPECT_EQ(s.Insert(1, static_cast<const char *>(nullptr)), 4);
    EXPECT_EQ(s.Delete(0, 0), 4);
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

    CStr<wchar_t> w(L"ac");
    EXPECT_EQ(w.Insert(1, L'b'), 3);
    EXPECT_STREQ(w, L"abc");
}

TEST(CStr, ReplaceCountsAndResizesTheBlock)
{
    CStr<char> s("banana");
    EXPECT_EQ(s.Replace("a", "xyz"), 3);
    EXPECT_STREQ(s, "bxyznxyznxyz");
    EXPECT_EQ(s.GetLength(), 12);
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

    CStr<char> overlapping("aaaaa");
    EXPECT_EQ(overlapping.Replace("aa", "b"), 2);
    EXPECT_STREQ(overlapping, "bba");

    CStr<char> self("abab");
    EXPECT_EQ(self.Replace(static_cast<const char *>(self) + 2, "x"), 2);
    EXPECT_STREQ(self, "xx");
    CStr<char> grows("ab");
    EXPECT_EQ(grows.Replace("b", static_cast<const char *>(grows)), 1);
    EXPECT_STREQ(grows, "aab");

    // Occurrences are looked for in each zero-separated piece up to the length.
    CStr<char> pieces("ab\0ab", 5);
    EXPECT_EQ(pieces.Replace("ab", "c"), 2);
    EXPECT_EQ(pieces.GetLength(), 3);
    EXPECT_EQ(std::memcmp(static_cast<const char *>(pieces), "c\0c", 4), 0);

    CStr<wchar_t> w(L"banana");
    EXPECT_EQ(w.Replace(L"an", L""), 2);
    EXPECT_STREQ(w, L"ba");
    EXPECT_EQ(w.Replace(L'a', L'o'), 1);
    EXPECT_STREQ(w, L"bo");

    CStr<char> m("mississippi");
    EXPECT_EQ(m.Remove('s'), 4);
    EXPECT_STREQ(m, "miiippi");
    EXPECT_EQ(m.GetLength(), 7);
    EXPECT_EQ(m.Remove('z'), 0);
}

TEST(CStr, AppendingGrowsToTheExactLength)
{
    CStr<char> s("ab");
    s += "cd";
    EXPECT_EQ(s.GetAllocLength(), 4);
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
    EXPECT_EQ(static_cast<const char *>(reserved), text);
    EXPECT_EQ(reserved.GetAllocLength(), 16);

    CStr<wchar_t> a(L"ab");
    EXPECT_STREQ(a + CStr<wchar_t>(L"cd"), L"abcd");
    EXPECT_STREQ(a + L"cd", L"abcd");
    EXPECT_STREQ(L"x" + a, L"xab");
    EXPECT_STREQ(a + L'z', L"abz");
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
    EXPECT_EQ(blanks.GetLength(), 5);

    CStr<wchar_t> wide(L"\t text\n ");
    wide.Trim();
    EXPECT_STREQ(wide, L"text");
    CStr<wchar_t> spaces(L" \t ");
    spaces.Trim();
    EXPECT_EQ(spaces.GetLength(), 0);

    CStr<char> runs("xxaxbxx");
    CStr<char> untouched(runs);
    runs.TrimLeft('x');
    EXPECT_STREQ(runs, "axbxx");
    runs.TrimRight('x');
    EXPECT_STREQ(runs, "axb");
    EXPECT_EQ(runs.GetLength(), 3);
    EXPECT_STREQ(untouched, "xxaxbxx");

    CStr<char> sets("yxabyx");
    sets.TrimLeft("xy");
    sets.TrimRight("xy");
    EXPECT_STREQ(sets, "ab");
    sets.TrimLeft("");
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
    CStr<char> made(L"abc");
    EXPECT_EQ(made.GetLength(), 6);
    EXPECT_STREQ(made, "abc");
    CStr<char> assigned;
    assigned = L"abc";
    EXPECT_EQ(assigned.GetLength(), 3);

    CStr<wchar_t> wide("h\xC3\xA9llo");
    EXPECT_EQ(wide.GetLength(), 5);
    EXPECT_EQ(wide[1], 0xE9);
    CStr<wchar_t> wideAssigned;
    wideAssigned = reinterpret_cast<const unsigned char *>("x\xC3\xA9");
    EXPECT_STREQ(wideAssigned, L"x\u00E9");

    CStr<char> back(L"h\u00E9");
    EXPECT_STREQ(back, "h\xC3\xA9");
    // As many bytes as wide elements is too few for a two-byte character.
    CStr<char> tooNarrow("old");
    tooNarrow = L"\u00E9";
    EXPECT_TRUE(tooNarrow.IsEmpty());

    CStr<wchar_t> invalid("\xFF\xFE");
    EXPECT_TRUE(invalid.IsEmpty());

    // The C library's converters are given room for one character more than
    // the count: the narrow string keeps it, the wide one is cut to its block.
    CStr<char> countedNarrow(L"abcdef", 3);
    EXPECT_STREQ(countedNarrow, "abcd");
    EXPECT_EQ(countedNarrow.GetLength(), 4);
    EXPECT_EQ(countedNarrow.GetAllocLength(), 6);
    CStr<wchar_t> shortSource("ab", 5);
    EXPECT_STREQ(shortSource, L"ab");
    EXPECT_EQ(shortSource.GetAllocLength(), 5);
    std::string previous = std::setlocale(LC_CTYPE, nullptr);
    if (std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr) {
        CStr<wchar_t> counted("h\xC3\xA9llo", 3); // counts characters, not bytes
        EXPECT_STREQ(counted, L"h\u00E9l");
        EXPECT_EQ(counted.GetLength(), 3);
        std::setlocale(LC_CTYPE, previous.c_str());
    }
}

TEST(CStr, WideHelpersFollowTheirContracts)
{
    EXPECT_EQ(_wcslen(nullptr), 0u);
    wchar_t buffer[16];
    EXPECT_EQ(_wcscpy(buffer, L"ab"), buffer);
    EXPECT_EQ(_wcscat(buffer, L"cb"), buffer);
    EXPECT_STREQ(buffer, L"abcb");
    EXPECT_EQ(_wcslen(buffer), 4u);
    EXPECT_EQ(_wcschr(buffer, L'b'), buffer + 3); // the last match
    EXPECT_EQ(_wcschr(buffer, 0), nullptr);
    EXPECT_EQ(_wcschr(buffer, L'z'), nullptr);
    _wcscpy(buffer, nullptr);
    EXPECT_EQ(buffer[0], 0);

    EXPECT_EQ(_mbstowcsz(buffer, "a\xC3\xA9", 4), 2);
    EXPECT_STREQ(buffer, L"a\u00E9");
    EXPECT_EQ(_mbstowcsz(buffer, "\xF0\x9F\x98\x80", 5), 2); // surrogates stay apart
    EXPECT_EQ(buffer[0], 0xD83D);
    EXPECT_EQ(buffer[1], 0xDE00);
    EXPECT_EQ(_mbstowcsz(buffer, "x", 0), 0);
    EXPECT_EQ(_mbstowcsz(nullptr, "abc", 4), 3);

    char out[8];
    std::memset(out, 'Z', sizeof out);
    EXPECT_EQ(_wcstombsz(out, L"ab", sizeof out), 7);
    EXPECT_STREQ(out, "ab");
    EXPECT_EQ(out[7], 0);
    std::memset(out, 'Z', sizeof out);
    EXPECT_EQ(_wcstombsz(out, L"\u00E9\u00E9\u00E9\u00E9", 4), 0);
    EXPECT_EQ(std::string(out, sizeof out), std::string(sizeof out, 'Z'));
    EXPECT_EQ(_wcstombsz(out, L"\x10041", sizeof out), 7); // cut to 16 bits
    EXPECT_STREQ(out, "A");
    EXPECT_EQ(_wcstombsz(out, L"ab", 0), 0);
    EXPECT_EQ(_wcstombsz(nullptr, L"ab", 4), 0);
}

TEST(CStr, BuffersKeepTextAndLength)
{
    CStr<char> s("abc");
    CStr<char> t(s);
    char *p = s.GetBuffer(10);
    EXPECT_NE(s.GetData(), t.GetData());
    EXPECT_EQ(s.GetAllocLength(), 10);
    EXPECT_EQ(s.GetLength(), 3);
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
    wchar_t *q = w.GetBufferSetLength(3);
    q[0] = L'x';
    q[1] = L'y';
    q[2] = L'z';
    EXPECT_EQ(w.GetLength(), 3);
    EXPECT_STREQ(w, L"xyz");
}

TEST(CStr, FormatCutsNarrowResultsButGrowsWideOnes)
{
    CStr<char> n;
    n.Format("%s-%d", "x", 42);
    EXPECT_STREQ(n, "x-42");
    EXPECT_EQ(n.GetAllocLength(), 256);

    std::string longText(300, 'q');
    n.Format("%s", longText.c_str());
    EXPECT_EQ(n.GetLength(), 255);

    CStr<wchar_t> w;
    w.Format(L"%ls", std::wstring(300, L'q').c_str());
    EXPECT_EQ(w.GetLength(), 300);
    EXPECT_EQ(w.GetAllocLength(), 512);

    // The result is written into the string's own buffer, which keeps its
    // room when the result fits.
    CStr<char> roomy;
    roomy.GetBuffer(1000);
    roomy.Format("%d", 7);
    EXPECT_STREQ(roomy, "7");
    EXPECT_EQ(roomy.GetAllocLength(), 1000);

    n = "abc";
    n.Format("[%s]", static_cast<const char *>(n));
    EXPECT_STREQ(n, "[abc]");
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
    EXPECT_EQ(abc.Compare("abc"), 0);
    EXPECT_GT(abc.Compare(nullptr), 0);

    CStr<wchar_t> upper(L"ABC");
    EXPECT_EQ(upper.CompareNoCase(L"abc"), 0);
    EXPECT_EQ(upper.CompareNoCase(L"abD"), -1);
    EXPECT_EQ(upper.CompareNoCase(L"ab"), 1);
    EXPECT_EQ(CStr<wchar_t>(L"ab").CompareNoCase(L"ABC"), -1);
}

TEST(CStr, CoreFoundationBridges)
{
    EXPECT_EQ(CStr<wchar_t>().CreateCFString(), nullptr);
    EXPECT_EQ(CStr<char>().CreateCFString(), nullptr);
    EXPECT_EQ(CStr<char>().CreateUnsignedShortString(), nullptr);

    CFStringRef wide = CStr<wchar_t>(L"h\u00E9\x10041").CreateCFString();
    ASSERT_NE(wide, nullptr);
    EXPECT_EQ(CFStringGetLength(wide), 3);
    EXPECT_EQ(CFStringGetCharacterAtIndex(wide, 1), 0xE9);
    EXPECT_EQ(CFStringGetCharacterAtIndex(wide, 2), 0x41);
    CFRelease(wide);
    CFStringRef narrow = CStr<char>("h\xC3\xA9").CreateCFString();
    ASSERT_NE(narrow, nullptr);
    EXPECT_EQ(CFStringGetLength(narrow), 2);
    CFRelease(narrow);

    CStr<wchar_t> keep(L"keep");
    EXPECT_FALSE(keep.InitWithCFString(CFSTR("")));
    EXPECT_FALSE(keep.InitWithCFString(nullptr));
    EXPECT_STREQ(keep, L"keep");
    const UniChar smile[] = {0xD83D, 0xDE00, 'x'};
    CFStringRef pair = CFStringCreateWithCharacters(kCFAllocatorDefault, smile, 3);
    EXPECT_TRUE(keep.InitWithCFString(pair));
    CFRelease(pair);
    EXPECT_EQ(keep.GetLength(), 3);
    EXPECT_EQ(keep[0], 0xD83D);
    CStr<char> narrowKeep;
    EXPECT_TRUE(narrowKeep.InitWithCFString(CFSTR("abc")));
    EXPECT_STREQ(narrowKeep, "abc");

    unsigned short *units = CStr<char>("a\xE9").CreateUnsignedShortString();
    EXPECT_EQ(units[0], 0x61);
    EXPECT_EQ(units[1], 0xFFE9); // narrow bytes are sign-extended
    EXPECT_EQ(units[2], 0);
    delete[] units;
    units = CStr<wchar_t>(L"\x10041").CreateUnsignedShortString();
    EXPECT_EQ(units[0], 0x41);
    delete[] units;
}

} // namespace
