/* WString: the toolkit's wide standard string.
 *
 * A std::basic_string of 32-bit wchar_t (one Unicode code point per element)
 * whose traits order elements as signed 32-bit values and answer -1, 0 or 1.
 * The Utils helpers take and return WString for wide text.  A WString is a
 * plain value: share it between threads only as std::string would be shared. */
#ifndef KORU_WSTRING_H
#define KORU_WSTRING_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace lum {

struct lum_wchar_traits : public std::char_traits<wchar_t> {
    /* Compares the first n elements: -1 when a's first differing element is
     * the smaller (as a signed 32-bit value), 1 when it is the larger, 0 when
     * all n are equal.  Null pointers are accepted only with n == 0. */
    static int compare(const char_type *a, const char_type *b, std::size_t n)
    {
        for (std::size_t i = 0; i < n; ++i) {
            if (a[i] != b[i])
                return static_cast<int32_t>(a[i]) < static_cast<int32_t>(b[i]) ? -1 : 1;
        }
        return 0;
    }
};

} // namespace lum

typedef std::basic_string<wchar_t, lum::lum_wchar_traits> WString;

#endif
