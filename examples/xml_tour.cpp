// xml_tour - a short tour of CVTXmlParser: build a document with the API,
// read it back by navigating, and show what the parser makes of a text
// that isn't well-formed.
#include <cstdio>
#include <string>

#include <vetra/vetra.h>

namespace {

// Document text is UTF-16; the tour prints ASCII and shows other units as \uXXXX.
std::string Narrow(const vtchar* text) {
    std::string out;
    for (; *text; ++text) {
        if (*text < 128) {
            out += char(*text);
        } else {
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\u%04X", unsigned(*text));
            out += buf;
        }
    }
    return out;
}

void Build(CVTXmlParser& doc) {
    doc.AddElem(u"catalog");
    doc.AddChildElem(u"book", u"Dune & sequels");
    doc.SetChildAttrib(u"id", 1);
    doc.SetChildAttrib(u"lang", u"en");
    doc.AddChildElem(u"book", u"L'\u00C9tranger");
    doc.SetChildAttrib(u"id", 2);
    doc.AddChildElem(u"count", u"2");
}

void Walk(CVTXmlParser& doc) {
    doc.ResetPos();
    doc.FindElem(u"catalog");
    doc.IntoElem();
    while (doc.FindElem(u"book")) {
        std::string id = Narrow(doc.GetAttrib(u"id"));
        std::printf("  book id=%s: %s\n", id.c_str(), Narrow(doc.GetData()).c_str());
    }
}

} // namespace

int main() {
    CVTXmlParser doc;
    Build(doc);
    std::printf("built:\n%s\n", Narrow(doc.GetDoc()).c_str());
    std::printf("read back:\n");
    Walk(doc);

    CVTXmlParser broken;
    const vtchar* text = u"<a><b>x</a><c></C>";
    int ok = broken.SetDoc(text);
    std::printf("\nparsing %s gave %d\n", Narrow(text).c_str(), ok);
    std::printf("result log: %s\n", Narrow(broken.GetResultLog()).c_str());
    broken.FindElem();
    std::string root = Narrow(broken.GetTagName());
    broken.FindChildElem();
    std::string child = Narrow(broken.GetChildTagName());
    std::printf("repaired: root <%s> with child <%s>; ", root.c_str(), child.c_str());
    std::printf("%s\n", broken.FindElem() ? "a second root element follows" : "nothing follows");
    return 0;
}
