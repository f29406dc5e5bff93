// scaling_vetra.cpp - the scaling work for vetra: single edits near the start,
// middle and end of the parsed corpus, and appends at growing sizes.
//
// An edit splices the text once and corrects the records behind it, so its
// cost should follow what lies behind it; an append at the end should not.
#include <cstdio>

#include "measure.h"
#include "scaling.h"
#include "vetra/vetra.h"

namespace bench {
namespace {

// Walks catalog/section/item and stops on item `target` (from 0); with a
// target of -1 it walks them all. Returns the number of items passed.
long GoToItem(CVTXmlParser& doc, long target) {
    long seen = 0;
    doc.ResetPos();
    if (!doc.FindElem() || !doc.IntoElem()) return 0;
    while (doc.FindElem(u"section")) {
        doc.IntoElem();
        while (doc.FindElem(u"item")) {
            if (seen == target) return seen;
            ++seen;
        }
        doc.OutOfElem();
    }
    return seen;
}

void ScaleEdits(Input& in, int runs, std::vector<OpSample>& out) {
    CVTXmlParser doc;
    doc.SetDoc(in.utf16.c_str());
    const long items = GoToItem(doc, -1);
    if (items == 0) return;
    const struct {
        const char* work;
        long item;
    } places[] = {{"edit-start", 0}, {"edit-middle", items / 2}, {"edit-end", items - 1}};
    for (const auto& place : places) {
        GoToItem(doc, place.item);
        bool flip = false;
        OpSample sample{place.work, true, {}};
        for (int run = 0; run < runs; ++run)
            sample.seconds.push_back(
                SecondsPerOp([&] { doc.SetAttrib(u"touched", (flip = !flip) ? u"1" : u"22"); }));
        out.push_back(sample);
    }
}

void ScaleAppends(int runs, std::vector<OpSample>& out) {
    CVTXmlParser doc;
    doc.AddElem(u"catalog");
    doc.IntoElem();
    long elements = 1;
    for (long size : AppendSizes()) {
        for (; elements < size; ++elements)
            doc.AddElem(u"item", u"text");
        OpSample sample{AppendWork(size), false, {}};
        for (int run = 0; run < runs; ++run) {
            const double start = CpuNow();
            for (int i = 0; i < kAppendBatch; ++i)
                doc.AddElem(u"item", u"text");
            sample.seconds.push_back(CpuSince(start) / kAppendBatch);
            for (int i = 0; i < kAppendBatch; ++i)
                doc.RemoveElem();
        }
        out.push_back(sample);
    }
}

} // namespace

std::vector<OpSample> ScaleVetra(Input& in, int runs) {
    std::vector<OpSample> out;
    ScaleEdits(in, runs, out);
    ScaleAppends(runs, out);
    return out;
}

} // namespace bench
