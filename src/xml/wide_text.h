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

} // namespace vetra::xml

#endif // VETRA_XML_WIDE_TEXT_H
