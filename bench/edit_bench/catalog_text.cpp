// catalog_text.cpp - builds the catalog text of edit_bench and finds an item
// in it by number.
//
// The text is written directly, not through vetra, so that setting it up
// costs a single SetDoc.
#include "catalog_text.h"

#include "vetra/vetra.h"

namespace bench {

std::u16string CatalogText(long items) {
    std::u16string text = u"<catalog>\r\n";
    text.reserve(static_cast<std::size_t>(items) * 64 + 32);
    for (long i = 0; i < items; ++i) {
        const std::string id = std::to_string(i);
        text += u"<item id=\"";
        text.append(id.begin(), id.end());
        text += i % 2 ? u"\" kind=\"odd\">" : u"\" kind=\"even\">";
        text += u"<name>Caf\u00E9 &amp; Bar</name></item>\r\n";
    }
    text += u"</catalog>\r\n";
    return text;
}

bool GoToItem(CVTXmlParser& doc, long index) {
    doc.ResetPos();
    if (!doc.FindElem() || !doc.IntoElem()) return false;
    for (long i = 0; i <= index; ++i)
        if (!doc.FindElem()) return false;
    return true;
}

} // namespace bench
