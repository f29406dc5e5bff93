// edit_bench.cpp - Google Benchmark on vetra's edits: appending at the end at
// several document sizes (must cost the same at each), building by appending
// (the text grows by reserve, not by a copy per append), and one edit near
// the start, middle and end of a large document (costs what lies behind it).
#include <benchmark/benchmark.h>

#include <string>

#include "catalog_text.h"
#include "vetra/vetra.h"

namespace {

// Appends between two clean-ups; the clean-up removes them, untimed, so the
// document stays at the size under test.
constexpr int kAppendsPerCleanup = 4096;

void BM_AppendAtEnd(benchmark::State& state) {
    const long elements = state.range(0);
    CVTXmlParser doc;
    doc.SetDoc(bench::CatalogText((elements - 1) / 2).c_str());
    doc.FindElem();
    doc.IntoElem(); // no main position: the first AddElem goes to the end
    int pending = 0;
    for (auto _ : state) {
        doc.AddElem(u"item", u"text");
        if (++pending == kAppendsPerCleanup) {
            state.PauseTiming();
            for (; pending > 0; --pending)
                doc.RemoveElem();
            state.ResumeTiming();
        }
    }
    state.SetComplexityN(elements);
    state.counters["elements"] = static_cast<double>(elements);
}
BENCHMARK(BM_AppendAtEnd)->RangeMultiplier(10)->Range(1000, 1000000)->Complexity();

// Builds a catalog of `items` items from nothing, one AddElem each. A change
// of the GetDoc pointer means the text moved to a larger buffer: those are
// counted, with the characters that each move copied.
void BM_BuildByAppending(benchmark::State& state) {
    const long items = state.range(0);
    double moves = 0, copied = 0;
    for (auto _ : state) {
        CVTXmlParser doc;
        doc.AddElem(u"catalog");
        doc.IntoElem();
        const vtchar* text = doc.GetDoc();
        for (long i = 0; i < items; ++i) {
            doc.AddElem(u"item", u"text");
            if (doc.GetDoc() != text) {
                text = doc.GetDoc();
                moves += 1;
                copied += static_cast<double>(std::char_traits<vtchar>::length(text));
            }
        }
        benchmark::DoNotOptimize(doc.GetDoc());
    }
    const double builds = static_cast<double>(state.iterations());
    state.counters["appends"] = benchmark::Counter(static_cast<double>(items),
                                                   benchmark::Counter::kIsIterationInvariantRate);
    state.counters["text_moves"] = moves / builds;
    state.counters["chars_copied_per_append"] = copied / builds / static_cast<double>(items);
    state.SetComplexityN(items);
}
BENCHMARK(BM_BuildByAppending)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);

// One attribute write on an item near the start, middle or end of a catalog
// of a million elements; the value flips between two lengths so that every
// write moves the text behind it.
constexpr long kBigItems = 500000;
enum Place { kStart, kMiddle, kEnd };

void BM_EditAt(benchmark::State& state) {
    static const std::u16string text = bench::CatalogText(kBigItems);
    const long item = state.range(0) == kStart    ? 0
                      : state.range(0) == kMiddle ? kBigItems / 2
                                                  : kBigItems - 1;
    CVTXmlParser doc;
    doc.SetDoc(text.c_str());
    if (!bench::GoToItem(doc, item)) {
        state.SkipWithError("item not found");
        return;
    }
    // Two untimed writes first: the text has then grown to hold both values.
    bool flip = false;
    for (int i = 0; i < 2; ++i)
        doc.SetAttrib(u"touched", (flip = !flip) ? u"1" : u"22");
    for (auto _ : state)
        benchmark::DoNotOptimize(doc.SetAttrib(u"touched", (flip = !flip) ? u"1" : u"22"));
    state.SetLabel(state.range(0) == kStart    ? "start"
                   : state.range(0) == kMiddle ? "middle"
                                               : "end");
}
BENCHMARK(BM_EditAt)->Arg(kStart)->Arg(kMiddle)->Arg(kEnd)->Unit(benchmark::kMicrosecond);

} // namespace
