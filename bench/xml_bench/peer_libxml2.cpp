// peer_libxml2.cpp - libxml2 under xml_bench.
//
// Parses with xmlReadMemory (no network, huge documents allowed, otherwise
// the defaults), walks the xmlNode tree, and dumps with xmlDocDumpMemory.
// Namespace declarations are counted as the attributes they are written as,
// and prefixed names with their prefix, so the counts match the other peers.
#include <cstdio>
#include <cstring>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include "peer.h"

namespace bench {
namespace {

const xmlChar* X(const char* s) {
    return reinterpret_cast<const xmlChar*>(s);
}

uint64_t Chars(const xmlChar* s) {
    const char* text = reinterpret_cast<const char*>(s);
    return text ? CodePoints(text, std::strlen(text)) : 0;
}

uint64_t NameChars(const xmlChar* name, const xmlNs* ns) {
    const uint64_t prefix = ns && ns->prefix ? Chars(ns->prefix) + 1 : 0;
    return prefix + Chars(name);
}

void PrepareInit(Input&) {
    xmlInitParser();
}

void* Parse(Input& in) {
    xmlDocPtr doc = xmlReadMemory(in.utf8.data(), static_cast<int>(in.utf8.size()), "corpus.xml",
                                  nullptr, XML_PARSE_NONET | XML_PARSE_HUGE);
    if (!doc) std::fprintf(stderr, "libxml2: the document did not parse\n");
    return doc;
}

bool HasChildElement(const xmlNode* node) {
    for (const xmlNode* child = node->children; child; child = child->next)
        if (child->type == XML_ELEMENT_NODE) return true;
    return false;
}

void VisitAttributes(const xmlNode* node, WalkCounts& counts) {
    for (const xmlNs* ns = node->nsDef; ns; ns = ns->next) {
        ++counts.attributes;
        counts.chars += 5 + (ns->prefix ? Chars(ns->prefix) + 1 : 0) + Chars(ns->href);
    }
    for (const xmlAttr* a = node->properties; a; a = a->next) {
        ++counts.attributes;
        counts.chars += NameChars(a->name, a->ns);
        for (const xmlNode* text = a->children; text; text = text->next)
            counts.chars += Chars(text->content);
    }
}

WalkCounts Walk(void* handle) {
    WalkCounts counts;
    if (!handle) return counts;
    const xmlNode* node = static_cast<xmlDocPtr>(handle)->children;
    while (node) {
        if (node->type == XML_ELEMENT_NODE) {
            ++counts.elements;
            counts.chars += NameChars(node->name, node->ns);
            VisitAttributes(node, counts);
            if (HasChildElement(node)) {
                node = node->children;
                continue;
            }
            for (const xmlNode* child = node->children; child; child = child->next)
                if (child->type == XML_TEXT_NODE || child->type == XML_CDATA_SECTION_NODE)
                    counts.chars += Chars(child->content);
        }
        while (node && !node->next)
            node = node->parent;
        if (node) node = node->next;
    }
    return counts;
}

void Release(void* handle) {
    xmlFreeDoc(static_cast<xmlDocPtr>(handle));
}

std::size_t Build(int items) {
    xmlDocPtr doc = xmlNewDoc(X("1.0"));
    xmlNodePtr root = xmlNewNode(nullptr, X("catalog"));
    xmlDocSetRootElement(doc, root);
    char number[16];
    for (int i = 0; i < items; ++i) {
        xmlNodePtr item = xmlNewChild(root, nullptr, X("item"), nullptr);
        std::snprintf(number, sizeof number, "%d", i);
        xmlNewProp(item, X("id"), X(number));
        xmlNewProp(item, X("kind"), X(i % 2 ? "odd" : "even"));
        xmlNewTextChild(item, nullptr, X("name"), X(kBuildData));
    }
    xmlChar* text = nullptr;
    int size = 0;
    xmlDocDumpMemory(doc, &text, &size);
    xmlFree(text);
    xmlFreeDoc(doc);
    return static_cast<std::size_t>(size);
}

void* Load(const char* path) {
    xmlDocPtr doc = xmlReadFile(path, nullptr, XML_PARSE_NONET | XML_PARSE_HUGE);
    if (!doc) std::fprintf(stderr, "libxml2: the file did not parse\n");
    return doc;
}

void Save(void* handle, const char* path) {
    if (xmlSaveFile(path, static_cast<xmlDocPtr>(handle)) < 0)
        std::fprintf(stderr, "libxml2: xmlSaveFile failed\n");
}

} // namespace

extern const Peer kLibxml2{"libxml2", PrepareInit, Parse, Walk, Release, Build, Load, Save};

} // namespace bench
