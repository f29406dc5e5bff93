// scaling_pugixml.cpp - the scaling work for pugixml, the yardstick: the same
// edits and appends as for vetra, on pugixml's node tree.
//
// A node tree has no offsets to correct, so each of these is constant time.
#include <pugixml.hpp>

#include "measure.h"
#include "scaling.h"

namespace bench {
namespace {

// All items of catalog/section/item, in document order.
std::vector<pugi::xml_node> Items(const pugi::xml_document& doc) {
    std::vector<pugi::xml_node> items;
    for (pugi::xml_node section : doc.document_element().children("section"))
        for (pugi::xml_node item : section.children("item"))
            items.push_back(item);
    return items;
}

void ScaleEdits(Input& in, int runs, std::vector<OpSample>& out) {
    pugi::xml_document doc;
    doc.load_buffer(in.utf8.data(), in.utf8.size());
    const std::vector<pugi::xml_node> items = Items(doc);
    if (items.empty()) return;
    const struct {
        const char* work;
        std::size_t item;
    } places[] = {
        {"edit-start", 0}, {"edit-middle", items.size() / 2}, {"edit-end", items.size() - 1}};
    for (const auto& place : places) {
        pugi::xml_node item = items[place.item];
        bool flip = false;
        OpSample sample{place.work, true, {}};
        for (int run = 0; run < runs; ++run)
            sample.seconds.push_back(SecondsPerOp([&] {
                pugi::xml_attribute a = item.attribute("touched");
                if (!a) a = item.append_attribute("touched");
                a.set_value((flip = !flip) ? "1" : "22");
            }));
        out.push_back(sample);
    }
}

void ScaleAppends(int runs, std::vector<OpSample>& out) {
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("catalog");
    long elements = 1;
    for (long size : AppendSizes()) {
        for (; elements < size; ++elements)
            root.append_child("item").text().set("text");
        OpSample sample{AppendWork(size), false, {}};
        for (int run = 0; run < runs; ++run) {
            const double start = CpuNow();
            for (int i = 0; i < kAppendBatch; ++i)
                root.append_child("item").text().set("text");
            sample.seconds.push_back(CpuSince(start) / kAppendBatch);
            for (int i = 0; i < kAppendBatch; ++i)
                root.remove_child(root.last_child());
        }
        out.push_back(sample);
    }
}

} // namespace

std::vector<OpSample> ScalePugixml(Input& in, int runs) {
    std::vector<OpSample> out;
    ScaleEdits(in, runs, out);
    ScaleAppends(runs, out);
    return out;
}

} // namespace bench
