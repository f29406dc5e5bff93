// peer_pugixml.cpp - pugixml under xml_bench, the reference of every ratio.
//
// Parses with its default options from a buffer it copies (load_buffer, not
// the in-situ variant), walks with the node handles, and saves raw (no
// indentation or line ends) into a string.
#include <cstdio>
#include <cstring>
#include <pugixml.hpp>

#include "peer.h"

namespace bench {
namespace {

void PrepareNothing(Input&) {}

void* Parse(Input& in) {
    auto* doc = new pugi::xml_document;
    const pugi::xml_parse_result result = doc->load_buffer(in.utf8.data(), in.utf8.size());
    if (!result) std::fprintf(stderr, "pugixml: %s at %td\n", result.description(), result.offset);
    return doc;
}

uint64_t Chars(const char* s) {
    return CodePoints(s, std::strlen(s));
}

bool HasChildElement(pugi::xml_node node) {
    for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling())
        if (child.type() == pugi::node_element) return true;
    return false;
}

WalkCounts Walk(void* handle) {
    auto& doc = *static_cast<pugi::xml_document*>(handle);
    WalkCounts counts;
    pugi::xml_node node = doc.first_child();
    while (node) {
        if (node.type() == pugi::node_element) {
            ++counts.elements;
            counts.chars += Chars(node.name());
            for (pugi::xml_attribute a = node.first_attribute(); a; a = a.next_attribute()) {
                ++counts.attributes;
                counts.chars += Chars(a.name()) + Chars(a.value());
            }
            if (HasChildElement(node)) {
                node = node.first_child();
                continue;
            }
            for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling())
                if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
                    counts.chars += Chars(child.value());
        }
        while (node && !node.next_sibling())
            node = node.parent();
        if (node) node = node.next_sibling();
    }
    return counts;
}

void Release(void* handle) {
    delete static_cast<pugi::xml_document*>(handle);
}

struct StringWriter : pugi::xml_writer {
    std::string text;
    void write(const void* data, std::size_t size) override {
        text.append(static_cast<const char*>(data), size);
    }
};

std::size_t Build(int items) {
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("catalog");
    for (int i = 0; i < items; ++i) {
        pugi::xml_node item = root.append_child("item");
        item.append_attribute("id").set_value(i);
        item.append_attribute("kind").set_value(i % 2 ? "odd" : "even");
        item.append_child("name").text().set(kBuildData);
    }
    StringWriter out;
    doc.save(out, "", pugi::format_raw);
    return out.text.size();
}

void* Load(const char* path) {
    auto* doc = new pugi::xml_document;
    const pugi::xml_parse_result result = doc->load_file(path);
    if (!result) std::fprintf(stderr, "pugixml: %s at %td\n", result.description(), result.offset);
    return doc;
}

void Save(void* handle, const char* path) {
    if (!static_cast<pugi::xml_document*>(handle)->save_file(path, "", pugi::format_raw))
        std::fprintf(stderr, "pugixml: save_file failed\n");
}

} // namespace

extern const Peer kPugixml{"pugixml", PrepareNothing, Parse, Walk, Release, Build, Load, Save};

} // namespace bench
