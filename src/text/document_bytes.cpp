// document_bytes.cpp - SetDocBytes: convert into the document's own buffer,
// hand it to the engine.
#include "text/document_bytes.h"

#include <utility>

#include "platform/text_codec.h"

namespace vetra::text {

bool SetDocBytes(xml::XmlEngine& engine, uint32_t codePage, const char* bytes, int32_t length) {
    xml::DocText text;
    if (length > 0) {
        // One unit a byte is room enough for nearly every page, so the
        // conversion is tried in one pass, straight into the text; a page
        // that needs more is measured.
        int32_t units = platform::MultiByteToWide(
            codePage, bytes, length, text.resize_for_overwrite(size_t(length)), length);
        if (units == 0) {
            units = platform::MultiByteToWide(codePage, bytes, length, nullptr, 0);
            if (units > 0 &&
                platform::MultiByteToWide(codePage, bytes, length,
                                          text.resize_for_overwrite(size_t(units)), units) != units)
                units = 0;
        }
        text.resize_for_overwrite(size_t(units > 0 ? units : 0));
        // Text of multi-byte characters may leave much of the block unused:
        // more than a quarter of it is given back.
        if (text.size() < text.capacity() - text.capacity() / 4) text.shrink_to_fit();
    }
    return engine.SetDocText(std::move(text));
}

} // namespace vetra::text
