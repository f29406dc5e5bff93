// peer_vetra.cpp - vetra under xml_bench, through its public class only.
//
// Two parse rows: "vetra" is handed UTF-16 text converted before the timing,
// "vetra-utf8" starts from the UTF-8 bytes as the peers do and pays for the
// conversion inside the timing. Walks use the navigation calls, iteratively.
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "peer.h"
#include "platform/text_codec.h"
#include "text/document_bytes.h"
#include "vetra/vetra.h"
#include "xml/run_search.h"
#include "xml/xml_engine.h"

namespace bench {
namespace {

constexpr uint32_t kUtf8 = 65001;

std::u16string ToUtf16(const std::string& bytes) {
    const auto length = static_cast<int32_t>(bytes.size());
    const int32_t units = vetra::platform::MultiByteToWide(kUtf8, bytes.data(), length, nullptr, 0);
    std::u16string text(static_cast<std::size_t>(units), u'\0');
    if (units == 0 ||
        vetra::platform::MultiByteToWide(kUtf8, bytes.data(), length, text.data(), units) != units)
        throw std::runtime_error("UTF-8 to UTF-16 conversion failed");
    return text;
}

CVTXmlParser* NewDocument(const char16_t* text) {
    auto* doc = new CVTXmlParser;
    if (!doc->SetDoc(text)) std::fprintf(stderr, "vetra: the document is not well-formed\n");
    return doc;
}

void PrepareUtf16(Input& in) {
    if (in.utf16.empty() && !in.utf8.empty()) in.utf16 = ToUtf16(in.utf8);
}

void PrepareNothing(Input&) {}

void* ParseUtf16(Input& in) {
    return NewDocument(in.utf16.c_str());
}

// UTF-8 bytes to a document the way the file reader brings a block in: the
// platform layer's decoder writes straight into the engine's own text.
void* ParseUtf8(Input& in) {
    auto* engine = new vetra::xml::XmlEngine;
    if (!vetra::text::SetDocBytes(*engine, kUtf8, in.utf8.data(),
                                  static_cast<int32_t>(in.utf8.size())))
        std::fprintf(stderr, "vetra: the document is not well-formed\n");
    return engine;
}

void ReleaseEngine(void* handle) {
    delete static_cast<vetra::xml::XmlEngine*>(handle);
}

// The length of a 16-bit text, eight units at a time as the C library's
// strlen measures pugixml's texts; a loop over single units took about 15%
// of the build's time, only to report the size of the text.
uint64_t Length(const char16_t* s) {
    return uint64_t(vetra::xml::FindAny(s, 0, u'\0'));
}

// Visits the main element: its name and every attribute; the data only if it
// has no child element. Leaves the child position at the first child, if any.
void Visit(CVTXmlParser& doc, WalkCounts& counts, std::u16string& name) {
    ++counts.elements;
    const char16_t* tag = doc.GetTagName();
    counts.chars += CodePoints(tag, Length(tag));
    for (int i = 0;; ++i) {
        name = doc.GetAttribName(i);
        if (name.empty()) break;
        const char16_t* value = doc.GetAttrib(name.c_str());
        ++counts.attributes;
        counts.chars += CodePoints(name.data(), name.size()) + CodePoints(value, Length(value));
    }
}

WalkCounts Walk(void* handle) {
    auto& doc = *static_cast<CVTXmlParser*>(handle);
    WalkCounts counts;
    std::u16string name;
    int depth = 0;
    doc.ResetPos();
    for (;;) {
        if (doc.FindElem()) {
            Visit(doc, counts, name);
            if (doc.FindChildElem()) {
                doc.ResetChildPos();
                doc.IntoElem();
                ++depth;
            } else {
                const char16_t* data = doc.GetData();
                counts.chars += CodePoints(data, Length(data));
            }
        } else if (depth > 0) {
            doc.OutOfElem();
            --depth;
        } else {
            break;
        }
    }
    return counts;
}

void Release(void* handle) {
    delete static_cast<CVTXmlParser*>(handle);
}

std::size_t Build(int items) {
    CVTXmlParser doc;
    doc.AddElem(u"catalog");
    doc.IntoElem();
    for (int i = 0; i < items; ++i) {
        doc.AddElem(u"item");
        doc.AddAttrib(u"id", i);
        doc.AddAttrib(u"kind", i % 2 ? u"odd" : u"even");
        doc.AddChildElem(u"name", kBuildData16);
    }
    doc.OutOfElem();
    return Length(doc.GetDoc()) * sizeof(char16_t);
}

// The file to a document through the public class, as an application does.
void* Load(const char* path) {
    auto* doc = new CVTXmlParser;
    if (!doc->Load(path)) std::fprintf(stderr, "vetra: the file did not load well-formed\n");
    return doc;
}

void Save(void* handle, const char* path) {
    if (!static_cast<CVTXmlParser*>(handle)->Save(path))
        std::fprintf(stderr, "vetra: Save failed\n");
}

} // namespace

extern const Peer kVetra{"vetra", PrepareUtf16, ParseUtf16, Walk, Release, Build, Load, Save};
extern const Peer kVetraUtf8{"vetra-utf8",  PrepareNothing, ParseUtf8, nullptr,
                             ReleaseEngine, nullptr,        nullptr,   nullptr};

} // namespace bench
