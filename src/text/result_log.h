// result_log.h - LogResult, the one writer of a result log: a wide text of
// empty XML elements one behind the other, with no root.
//
// The log only records: nothing that the scanner, the parser or the file
// layer does depends on what it holds.
#ifndef VETRA_TEXT_RESULT_LOG_H
#define VETRA_TEXT_RESULT_LOG_H

#include <cstdint>

#include "xml/xml_types.h"

namespace vetra::text {

using xml::wchar;
using xml::WideString;

/// Flags of LogResult: which attribute the text and the number go to.
enum LogFlag : uint32_t {
    LogCount = 0x1,    // value -> count
    LogType = 0x2,     // text -> type
    LogNumber = 0x4,   // value -> n
    LogEncoding = 0x8, // text -> encoding
    LogLength = 0x10,  // value -> length
    LogUpdate = 0x20,  // set the attributes on the first entry of `key` instead of adding one
    LogMessage = 0x40, // text -> msg
};

/// A log that has reached this many characters takes no further entry.
constexpr size_t kLogLimit = 1000;

/// Adds the entry <key .../> to `log`, or with LogUpdate sets attributes on
/// the first entry of `key`. `text` null means no text attribute; `value`
/// -1 means no offset; `value2` -1 means no offset2.
void LogResult(WideString& log, const wchar* key, const wchar* text, uint32_t flags, int32_t value,
               int32_t value2);

} // namespace vetra::text

#endif // VETRA_TEXT_RESULT_LOG_H
