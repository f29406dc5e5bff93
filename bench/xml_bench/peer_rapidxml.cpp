// peer_rapidxml.cpp - rapidxml under xml_bench.
//
// rapidxml parses in situ: it writes into the text it is given and its
// document points into it. The writable copy is made by `prepare`, outside
// the timing, for every run; the other peers copy the text inside their own
// parse, so rapidxml's parse row is a little flattered by design.
#include <cstdio>
#include <iterator>
#include <rapidxml/rapidxml.hpp>
#include <rapidxml/rapidxml_print.hpp>
#include <string>

#include "peer.h"

namespace bench {
namespace {

struct Document {
    rapidxml::xml_document<> dom;
};

void PrepareScratch(Input& in) {
    in.scratch = in.utf8;
}

void* Parse(Input& in) {
    auto* doc = new Document;
    try {
        doc->dom.parse<0>(in.scratch.data());
    } catch (const rapidxml::parse_error& e) {
        std::fprintf(stderr, "rapidxml: %s at %td\n", e.what(),
                     e.where<char>() - in.scratch.data());
    }
    return doc;
}

bool HasChildElement(const rapidxml::xml_node<>* node) {
    for (auto* child = node->first_node(); child; child = child->next_sibling())
        if (child->type() == rapidxml::node_element) return true;
    return false;
}

// The next node in document order that isn't inside `node`, or null. The
// document itself has no siblings to ask for.
const rapidxml::xml_node<>* NextOutside(const rapidxml::xml_node<>* node) {
    for (; node->parent(); node = node->parent())
        if (node->next_sibling()) return node->next_sibling();
    return nullptr;
}

WalkCounts Walk(void* handle) {
    auto& doc = static_cast<Document*>(handle)->dom;
    WalkCounts counts;
    const rapidxml::xml_node<>* node = doc.first_node();
    while (node) {
        if (node->type() == rapidxml::node_element) {
            ++counts.elements;
            counts.chars += CodePoints(node->name(), node->name_size());
            for (auto* a = node->first_attribute(); a; a = a->next_attribute()) {
                ++counts.attributes;
                counts.chars +=
                    CodePoints(a->name(), a->name_size()) + CodePoints(a->value(), a->value_size());
            }
            if (HasChildElement(node)) {
                node = node->first_node();
                continue;
            }
            for (auto* child = node->first_node(); child; child = child->next_sibling())
                if (child->type() == rapidxml::node_data || child->type() == rapidxml::node_cdata)
                    counts.chars += CodePoints(child->value(), child->value_size());
        }
        node = NextOutside(node);
    }
    return counts;
}

void Release(void* handle) {
    delete static_cast<Document*>(handle);
}

std::size_t Build(int items) {
    rapidxml::xml_document<> doc;
    auto* root = doc.allocate_node(rapidxml::node_element, "catalog");
    doc.append_node(root);
    char number[16];
    for (int i = 0; i < items; ++i) {
        auto* item = doc.allocate_node(rapidxml::node_element, "item");
        std::snprintf(number, sizeof number, "%d", i);
        item->append_attribute(doc.allocate_attribute("id", doc.allocate_string(number)));
        item->append_attribute(doc.allocate_attribute("kind", i % 2 ? "odd" : "even"));
        item->append_node(doc.allocate_node(rapidxml::node_element, "name", kBuildData));
        root->append_node(item);
    }
    std::string out;
    rapidxml::print(std::back_inserter(out), doc, rapidxml::print_no_indenting);
    return out.size();
}

} // namespace

extern const Peer kRapidxml{"rapidxml", PrepareScratch, Parse,   Walk,
                            Release,    Build,          nullptr, nullptr};

} // namespace bench
