// wide_text.h - filling a WideString that is used again and again, as the
// readers' result strings are, with as few calls as the library allows.
#ifndef VETRA_XML_WIDE_TEXT_H
#define VETRA_XML_WIDE_TEXT_H

#include <cstddef>

#include "xml/xml_types.h"

namespace vetra::xml {

/// Room for `more` further units; reserves only if the string lacks it.
inline void ReserveMore(WideString& s, std::size_t more) {
    if (s.capacity() - s.size() < more) s.reserve(s.size() + more);
}

/// `out` becomes the `n` units at `p`, which never lie inside `out`. Cheaper
/// than assign, which must allow for that.
inline void SetUnits(WideString& out, const wchar* p, std::size_t n) {
    out.clear();
    out.append(p, n);
}

/// Appends a literal of a few units one by one, which costs less than the
/// call to copy them.
template <std::size_t N> inline void AppendShort(WideString& s, const wchar (&literal)[N]) {
    static_assert(N <= 5, "for short literals");
    for (std::size_t i = 0; i + 1 < N; ++i)
        s.push_back(literal[i]);
}

} // namespace vetra::xml

#endif // VETRA_XML_WIDE_TEXT_H
