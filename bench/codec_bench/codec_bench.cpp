// codec_bench.cpp - Google Benchmark on the platform layer's UTF-8 codec, the
// step between a file's bytes and the document's UTF-16 text in both
// directions: markup that is nearly all ASCII, and text in several scripts.
#include <benchmark/benchmark.h>

#include <string>

#include "../edit_bench/catalog_text.h"
#include "platform/utf8_codec.h"

namespace utf8 = vetra::platform::utf8;

namespace {

// About 1 MiB of UTF-16: the catalog markup, or prose mixing Latin with
// accents, Greek, Cyrillic and CJK (two- and three-byte sequences).
std::u16string Text(int kind) {
    if (kind == 0) return bench::CatalogText(20000);
    const std::u16string line =
        u"Caf\u00E9 cr\u00E8me \u00FCber \u03B1\u03BB\u03C6\u03B1 \u043C\u0438\u0440 "
        u"\u5C71\u7530 \u65E5\u672C\u8A9E text, \u00E9t\u00E9.\r\n";
    std::u16string text;
    while (text.size() < 500000)
        text += line;
    return text;
}

std::string Bytes(const std::u16string& text) {
    std::string bytes(utf8::EncodedLength(text.data(), text.size(), nullptr), '\0');
    utf8::Encode(text.data(), text.size(), bytes.data(), bytes.size(), nullptr);
    return bytes;
}

void BM_Utf8Decode(benchmark::State& state) {
    const std::string bytes = Bytes(Text(int(state.range(0))));
    std::u16string out(bytes.size(), u'\0');
    for (auto _ : state) {
        benchmark::DoNotOptimize(utf8::Decode(bytes.data(), bytes.size(), out.data(), out.size()));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetLabel(state.range(0) == 0 ? "markup" : "scripts");
}
BENCHMARK(BM_Utf8Decode)->Arg(0)->Arg(1);

void BM_Utf8Encode(benchmark::State& state) {
    const std::u16string text = Text(int(state.range(0)));
    std::string out(text.size() * 3, '\0');
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            utf8::Encode(text.data(), text.size(), out.data(), out.size(), nullptr));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size() * 2));
    state.SetLabel(state.range(0) == 0 ? "markup" : "scripts");
}
BENCHMARK(BM_Utf8Encode)->Arg(0)->Arg(1);

} // namespace

BENCHMARK_MAIN();
