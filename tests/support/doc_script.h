// doc_script.h - small helpers for tests that drive CVTXmlParser: placing
// the position by a short script, and reading results as vtstring.
#ifndef VETRA_TESTS_DOC_SCRIPT_H
#define VETRA_TESTS_DOC_SCRIPT_H

#include <sstream>
#include <string>

#include "support/vt_text.h"
#include "vetra/xml_parser.h"

namespace vetra::test {

inline vtstring S(const vtchar* p) {
    return p ? vtstring(p) : VT("(null)");
}

inline vtstring U(const std::string& ascii) {
    return vtstring(ascii.begin(), ascii.end());
}

/// Places the position by a script of words: "m x" finds main element x
/// (FindElem), "c x" finds child x (FindChildElem), "in" goes into the main
/// element. "none" or "" leaves the position after SetDoc. Returns false if
/// a step fails.
inline bool Place(CVTXmlParser& doc, const std::string& script) {
    std::istringstream words(script);
    std::string word, name;
    while (words >> word) {
        if (word == "none") continue;
        if (word == "in") {
            if (!doc.IntoElem()) return false;
            continue;
        }
        if (!(words >> name)) return false;
        const vtstring wide = U(name);
        if (word == "m" && !doc.FindElem(wide.c_str())) return false;
        if (word == "c" && !doc.FindChildElem(wide.c_str())) return false;
    }
    return true;
}

/// Makes "\r\n" visible in failure messages, in document text and in vtchar text alike.
template <class Unit> std::string ShowUnits(const std::basic_string<Unit>& text) {
    std::string out;
    for (Unit c : text) {
        if (c == Unit('\r'))
            out += "\\r";
        else if (c == Unit('\n'))
            out += "\\n";
        else if (c < 128)
            out += char(c);
        else
            out += "?";
    }
    return out;
}
inline std::string Show(const std::u16string& text) {
    return ShowUnits(text);
}
template <class Unit> std::string Show(const std::basic_string<Unit>& text) {
    return ShowUnits(text);
}
template <class Unit> std::string Show(const Unit* text) {
    return ShowUnits(std::basic_string<Unit>(text));
}

/// The units of a vtchar text as the engine's document text, for the internal checks.
inline const char16_t* Units(const vtchar* text) {
    return reinterpret_cast<const char16_t*>(text);
}

} // namespace vetra::test

#endif // VETRA_TESTS_DOC_SCRIPT_H
