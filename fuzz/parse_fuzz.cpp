// Fuzz target: any bytes, read as UTF-16 units, become a document through
// SetDoc; the records must then satisfy every invariant. No text may crash
// the parser, hang it or make it read outside the text.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "support/record_check.h"
#include "vetra/xml_parser.h"
#include "xml/xml_engine.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::u16string text(size / 2, u'\0');
    std::memcpy(text.data(), data, text.size() * 2);

    vetra::xml::XmlEngine engine;
    engine.SetDocText(text.c_str());
    std::string problem = vetra::test::CheckRecords(engine);
    if (!problem.empty()) {
        std::fprintf(stderr, "invariant broken: %s\n", problem.c_str());
        std::abort();
    }

    // The exported class on the same text, and a copy of it.
    CVTXmlParser doc;
    doc.SetDoc(text.c_str());
    CVTXmlParser copy(doc);
    if (std::u16string(copy.GetDoc()) != std::u16string(doc.GetDoc())) std::abort();
    return 0;
}
