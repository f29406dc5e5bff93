// doc_script.h - small helpers for tests that drive CVTXmlParser: placing
// the position by a short script, and reading results as std::u16string.
#ifndef VETRA_TESTS_DOC_SCRIPT_H
#define VETRA_TESTS_DOC_SCRIPT_H

#include <sstream>
#include <string>

#include "vetra/xml_parser.h"

namespace vetra::test {

inline std::u16string S(const vtchar* p) {
    return p ? std::u16string(p) : u"(null)";
}

inline std::u16string U(const std::string& ascii) {
    return std::u16string(ascii.begin(), ascii.end());
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
        std::u16string wide = U(name);
        if (word == "m" && !doc.FindElem(wide.c_str())) return false;
        if (word == "c" && !doc.FindChildElem(wide.c_str())) return false;
    }
    return true;
}

/// Makes "\r\n" visible in failure messages.
inline std::string Show(const std::u16string& text) {
    std::string out;
    for (char16_t c : text) {
        if (c == u'\r')
            out += "\\r";
        else if (c == u'\n')
            out += "\\n";
        else if (c < 128)
            out += char(c);
        else
            out += "?";
    }
    return out;
}

} // namespace vetra::test

#endif // VETRA_TESTS_DOC_SCRIPT_H
