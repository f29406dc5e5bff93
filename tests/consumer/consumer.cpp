// consumer.cpp - what a user of the installed library writes: the umbrella
// header, a document built and read back. Exits 0 when all went well.
#include <cstdio>
#include <string>

#include <vetra/vetra.h>

int main() {
    CVTXmlParser doc;
    doc.AddElem(u"catalog");
    doc.AddChildElem(u"book", u"Dune");
    doc.SetChildAttrib(u"id", 7);
    doc.ResetPos();
    if (!doc.FindElem(u"catalog") || !doc.FindChildElem(u"book")) return 1;
    if (std::u16string(doc.GetChildAttrib(u"id")) != u"7") return 1;
    if (std::u16string(doc.GetChildData()) != u"Dune") return 1;
    std::puts("consumer: vetra works");
    return 0;
}
