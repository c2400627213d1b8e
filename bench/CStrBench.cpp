/* CStr<char> against std::string on a 1 MiB text.
 *
 * Copying, appending 64-byte pieces, finding a text and a character, and
 * replacing every occurrence of a two-letter text by a longer and by a
 * shorter one.  std::string replaces the way a careful user writes it: one
 * pass building a new string.  Each figure is the best of several runs; the
 * ratio printed is CStr time / std::string time (below 1: CStr is faster).
 *
 * CStr grows exactly, never reserving spare room, so appending is measured
 * twice: into a block reserved with GetBuffer (beside std::string::reserve),
 * and without any reservation on a 64 KiB text, where CStr copies the whole
 * text on every append. */
#include <KORU/CStr.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

namespace {

constexpr size_t kTextSize = size_t(1) << 20;
constexpr size_t kPieceSize = 64;
constexpr int kRuns = 5;

volatile size_t gSink;

// Lowercase letters from a fixed xorshift sequence: ordinary text, in which
// "ab" occurs about once in 676 characters.
std::string MakeText(size_t size)
{
    std::string text(size, ' ');
    uint64_t state = 0x9E3779B97F4A7C15ull;
    for (char &c : text) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        c = static_cast<char>('a' + state % 26);
    }
    return text;
}

template <typename Work> double BestSeconds(int repeat, Work work)
{
    double best = 1e30;
    for (int run = 0; run < kRuns; ++run) {
        auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < repeat; ++i)
            work();
        std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        if (elapsed.count() < best)
            best = elapsed.count();
    }
    return best / repeat;
}

void Report(const char *what, double cstrTime, double stdTime, bool agree)
{
    std::printf("%-34s CStr %10.3f us  std::string %10.3f us  ratio %8.4f%s\n", what,
                cstrTime * 1e6, stdTime * 1e6, cstrTime / stdTime, agree ? "" : "  RESULTS DIFFER");
}

std::string Replaced(const std::string &text, const std::string &from, const std::string &to)
{
    std::string result;
    result.reserve(text.size());
    size_t start = 0;
    size_t at;
    while ((at = text.find(from, start)) != std::string::npos) {
        result.append(text, start, at - start);
        result += to;
        start = at + from.size();
    }
    result.append(text, start, std::string::npos);
    return result;
}

} // namespace

int main()
{
    const std::string text = MakeText(kTextSize);
    const CStr<char> big(text.c_str(), static_cast<int>(text.size()));
    const std::string piece = text.substr(0, kPieceSize);
    std::printf("CStr<char> against std::string, %zu-byte text\n", text.size());

    double cstrTime = BestSeconds(1000, [&] {
        CStr<char> copy(big);
        gSink = gSink + static_cast<size_t>(copy[static_cast<int>(gSink % kTextSize)]);
    });
    double stdTime = BestSeconds(200, [&] {
        std::string copy(text);
        gSink = gSink + static_cast<size_t>(copy[gSink % kTextSize]);
    });
    Report("copy", cstrTime, stdTime, true);

    CStr<char> appended;
    std::string appendedStd;
    cstrTime = BestSeconds(20, [&] {
        appended.Empty();
        appended.GetBuffer(static_cast<int>(kTextSize));
        for (size_t i = 0; i < kTextSize / kPieceSize; ++i)
            appended += piece.c_str();
    });
    stdTime = BestSeconds(20, [&] {
        appendedStd.clear();
        appendedStd.shrink_to_fit();
        appendedStd.reserve(kTextSize);
        for (size_t i = 0; i < kTextSize / kPieceSize; ++i)
            appendedStd += piece.c_str();
    });
    Report("append 64 B pieces, reserved", cstrTime, stdTime,
           appendedStd == static_cast<const char *>(appended));

    const size_t smallSize = kTextSize / 16;
    cstrTime = BestSeconds(5, [&] {
        CStr<char> grown;
        for (size_t i = 0; i < smallSize / kPieceSize; ++i)
            grown += piece.c_str();
        gSink = gSink + static_cast<size_t>(grown.GetLength());
    });
    stdTime = BestSeconds(5, [&] {
        std::string grown;
        for (size_t i = 0; i < smallSize / kPieceSize; ++i)
            grown += piece.c_str();
        gSink = gSink + grown.size();
    });
    Report("append 64 B pieces to 64 KiB, bare", cstrTime, stdTime, true);

    const std::string needle = text.substr(kTextSize - 16);
    int found = 0;
    size_t foundStd = 0;
    cstrTime = BestSeconds(50, [&] { found = big.Find(needle.c_str()); });
    stdTime = BestSeconds(50, [&] { foundStd = text.find(needle); });
    Report("find a 16-letter text at the end", cstrTime, stdTime, size_t(found) == foundStd);
    cstrTime = BestSeconds(50, [&] { found = big.Find('#'); });
    stdTime = BestSeconds(50, [&] { foundStd = text.find('#'); });
    Report("find an absent character", cstrTime, stdTime,
           found == -1 && foundStd == std::string::npos);

    int count = 0;
    CStr<char> result;
    std::string resultStd;
    cstrTime = BestSeconds(20, [&] {
        result = big;
        count = result.Replace("ab", "xyz");
    });
    stdTime = BestSeconds(20, [&] { resultStd = Replaced(text, "ab", "xyz"); });
    Report("replace \"ab\" by \"xyz\"", cstrTime, stdTime,
           count > 0 && resultStd == static_cast<const char *>(result));
    cstrTime = BestSeconds(20, [&] {
        result = big;
        count = result.Replace("ab", "x");
    });
    stdTime = BestSeconds(20, [&] { resultStd = Replaced(text, "ab", "x"); });
    Report("replace \"ab\" by \"x\"", cstrTime, stdTime,
           count > 0 && resultStd == static_cast<const char *>(result));
    return 0;
}
