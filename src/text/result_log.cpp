// result_log.cpp - LogResult: adds one entry to a result log, or updates the
// first entry of a key, by editing the log as a document of its own.
//
// A second engine is started on the log's text, one element is added (or
// found) and its attributes are written; its text becomes the log. So the
// log's format is exactly what the element and attribute writers produce.
#include "text/result_log.h"

#include <charconv>

#include "xml/xml_engine.h"

namespace vetra::text {

namespace {

WideString Decimal(int32_t value) {
    char digits[16];
    const std::to_chars_result r = std::to_chars(digits, digits + sizeof digits, value);
    return WideString(digits, r.ptr);
}

const wchar* TextAttribute(uint32_t flags) {
    if (flags & LogType) return u"type";
    if (flags & LogEncoding) return u"encoding";
    if (flags & LogMessage) return u"msg";
    return u"tagname";
}

} // namespace

void LogResult(WideString& log, const wchar* key, const wchar* text, uint32_t flags, int32_t value,
               int32_t value2) {
    if (log.size() >= kLogLimit) return;
    xml::XmlEngine entry(log.c_str());
    if (flags & LogUpdate)
        entry.FindElem(key);
    else
        entry.AddElement(key, u"", xml::EditNoLineEnds);
    int32_t at = entry.m_mainIndex;
    if (text != nullptr) entry.WriteAttrib(at, TextAttribute(flags), text, 0);

    // n, count and length are written whatever the value; offset only when
    // there is one.
    const wchar* number = (flags & LogNumber)   ? u"n"
                          : (flags & LogCount)  ? u"count"
                          : (flags & LogLength) ? u"length"
                                                : nullptr;
    if (number != nullptr)
        entry.WriteAttrib(at, number, Decimal(value).c_str(), 0);
    else if (value != -1)
        entry.WriteAttrib(at, u"offset", Decimal(value).c_str(), 0);
    if (value2 != -1) entry.WriteAttrib(at, u"offset2", Decimal(value2).c_str(), 0);
    log.assign(entry.m_docText.View());
}

} // namespace vetra::text
