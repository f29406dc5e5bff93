// peer_tinyxml2.cpp - TinyXML-2 under xml_bench.
//
// Parse copies the text. TinyXML-2 decodes names, values and text lazily, on
// first read, so part of what the others pay in parse it pays in the walk.
// Build prints compactly (no indentation or line ends).
#include <cstdio>
#include <cstring>
#include <tinyxml2.h>

#include "peer.h"

namespace bench {
namespace {

void PrepareNothing(Input&) {}

void* Parse(Input& in) {
    auto* doc = new tinyxml2::XMLDocument;
    if (doc->Parse(in.utf8.data(), in.utf8.size()) != tinyxml2::XML_SUCCESS)
        std::fprintf(stderr, "tinyxml2: %s\n", doc->ErrorStr());
    return doc;
}

uint64_t Chars(const char* s) {
    return CodePoints(s, std::strlen(s));
}

bool HasChildElement(const tinyxml2::XMLNode* node) {
    return node->FirstChildElement() != nullptr;
}

WalkCounts Walk(void* handle) {
    auto& doc = *static_cast<tinyxml2::XMLDocument*>(handle);
    WalkCounts counts;
    const tinyxml2::XMLNode* node = doc.FirstChild();
    while (node) {
        if (const tinyxml2::XMLElement* e = node->ToElement()) {
            ++counts.elements;
            counts.chars += Chars(e->Name());
            for (const tinyxml2::XMLAttribute* a = e->FirstAttribute(); a; a = a->Next()) {
                ++counts.attributes;
                counts.chars += Chars(a->Name()) + Chars(a->Value());
            }
            if (HasChildElement(node)) {
                node = node->FirstChild();
                continue;
            }
            for (const tinyxml2::XMLNode* child = node->FirstChild(); child;
                 child = child->NextSibling())
                if (child->ToText()) counts.chars += Chars(child->Value());
        }
        while (node && !node->NextSibling())
            node = node->Parent();
        if (node) node = node->NextSibling();
    }
    return counts;
}

void Release(void* handle) {
    delete static_cast<tinyxml2::XMLDocument*>(handle);
}

std::size_t Build(int items) {
    tinyxml2::XMLDocument doc;
    tinyxml2::XMLElement* root = doc.NewElement("catalog");
    doc.InsertEndChild(root);
    for (int i = 0; i < items; ++i) {
        tinyxml2::XMLElement* item = doc.NewElement("item");
        item->SetAttribute("id", i);
        item->SetAttribute("kind", i % 2 ? "odd" : "even");
        tinyxml2::XMLElement* name = doc.NewElement("name");
        name->SetText(kBuildData);
        item->InsertEndChild(name);
        root->InsertEndChild(item);
    }
    tinyxml2::XMLPrinter out(nullptr, true);
    doc.Print(&out);
    return static_cast<std::size_t>(out.CStrSize() - 1);
}

} // namespace

extern const Peer kTinyxml2{"tinyxml2", PrepareNothing, Parse,   Walk,
                            Release,    Build,          nullptr, nullptr};

} // namespace bench
