// document_bytes.cpp - SetDocBytes: measure, convert into the document's
// own buffer, hand it to the engine.
#include "text/document_bytes.h"

#include <utility>

#include "platform/text_codec.h"

namespace vetra::text {

bool SetDocBytes(xml::XmlEngine& engine, uint32_t codePage, const char* bytes, int32_t length) {
    xml::WideString text;
    int32_t units = length > 0 ? platform::MultiByteToWide(codePage, bytes, length, nullptr, 0) : 0;
    if (units > 0) {
        text.resize(size_t(units));
        if (platform::MultiByteToWide(codePage, bytes, length, text.data(), units) != units)
            text.clear();
    }
    return engine.SetDocText(std::move(text));
}

} // namespace vetra::text
