// Fuzz target: any bytes, read as UTF-16 units, become a document through
// SetDoc; the records must then satisfy every invariant, and the whole
// document is walked with the navigation operations, reading every name,
// attribute (by index and by name) and data. The node scanner's loops for
// the usual nodes must cut the text exactly as its state machine does. No
// text may crash the parser, hang it or make it read outside the text.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "support/record_check.h"
#include "vetra/xml_parser.h"
#include "xml/token.h"
#include "xml/xml_engine.h"

namespace {

void Check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

// Depth-first over the whole tree with FindElem, IntoElem and OutOfElem,
// reading everything at each element. Returns the elements visited.
size_t Walk(CVTXmlParser& doc) {
    size_t visited = 0;
    int depth = 0;
    doc.ResetPos();
    for (;;) {
        if (doc.FindElem()) {
            ++visited;
            std::u16string name = doc.GetTagName();
            for (int i = 0;; ++i) {
                std::u16string attrib = doc.GetAttribName(i);
                if (attrib.empty()) break;
                doc.GetAttrib(attrib.c_str());
            }
            doc.GetAttrib(name.c_str());
            doc.GetData();
            doc.GetSubDoc();
            if (doc.FindChildElem()) {
                doc.GetChildTagName();
                doc.GetChildData();
                doc.GetChildAttrib(u"a");
                doc.GetChildSubDoc();
                doc.ResetChildPos();
            }
            Check(doc.IntoElem() == 1, "IntoElem on a found element");
            ++depth;
        } else if (depth > 0) {
            Check(doc.OutOfElem() == 1, "OutOfElem below the document level");
            --depth;
        } else {
            return visited;
        }
    }
}

// The text cut into nodes by ScanNode and by the state machine alone.
void CompareScans(const std::u16string& text) {
    using namespace vetra::xml;
    TokenCursor quick(text.c_str(), 0), rules(text.c_str(), 0);
    NodeToken a, b;
    for (;;) {
        const int32_t type = ScanNode(quick, a);
        Check(type == ScanNodeByRules(rules, b), "node types agree");
        Check(a.start == b.start && a.length == b.length && a.flags == b.flags, "nodes agree");
        Check(quick.next == rules.next && quick.tokenStart == rules.tokenStart &&
                  quick.tokenEnd == rules.tokenEnd,
              "cursors agree");
        Check(a.report == b.report, "fault reports agree");
        if (type == ScanEnd) return;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::u16string text(size / 2, u'\0');
    std::memcpy(text.data(), data, text.size() * 2);
    CompareScans(text);

    vetra::xml::XmlEngine engine;
    engine.SetDocText(text.c_str());
    std::string problem = vetra::test::CheckRecords(engine);
    Check(problem.empty(), problem.c_str());
    size_t elements = vetra::test::DocumentOrder(engine).size();

    CVTXmlParser doc;
    doc.SetDoc(text.c_str());
    Check(Walk(doc) == elements, "the walk visits every element once");
    doc.GetResultLog();

    CVTXmlParser copy(doc);
    Check(std::u16string(copy.GetDoc()) == std::u16string(doc.GetDoc()), "copy has the text");
    return 0;
}
