// text.h - between the library's UTF-16 text and the UTF-8 of the command
// line and the terminal.
#ifndef VETRA_CLI_TEXT_H
#define VETRA_CLI_TEXT_H

#include <string>

#include <vetra/vetra_export.h>

namespace cli {

using Wide = std::basic_string<vtchar>;

/// UTF-8 of UTF-16 text; a lone surrogate becomes U+FFFD.
std::string ToUtf8(const vtchar* text, size_t length);
inline std::string ToUtf8(const Wide& text) {
    return ToUtf8(text.data(), text.size());
}
inline std::string ToUtf8(const vtchar* text) {
    return ToUtf8(Wide(text != nullptr ? text : u""));
}

/// UTF-16 of UTF-8 text; an ill-formed byte becomes U+FFFD.
Wide ToWide(const std::string& text);

} // namespace cli

#endif // VETRA_CLI_TEXT_H
