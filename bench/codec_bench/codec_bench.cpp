// codec_bench.cpp - Google Benchmark on the platform layer's codecs, the step
// between a file's bytes and the document's UTF-16 text in both directions:
// UTF-8 on markup that is nearly all ASCII and on text in several scripts, and
// single-byte pages (windows-1252, ISO-8859-5) by their tables against iconv.
#include <benchmark/benchmark.h>

#include <string>

#include "../edit_bench/catalog_text.h"
#include "platform/posix/code_page_paths.h"
#include "platform/text_codec.h"
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

// About 1 MiB of text in a single-byte page, by the first argument: 0 the catalog
// markup in windows-1252, 1 French and German prose in windows-1252, 2 Russian
// prose in ISO-8859-5. The second argument is 1 for the tables (the public
// call), 0 for iconv. Sets the label and returns the page.
uint32_t SingleByteCase(benchmark::State& state, std::u16string& text) {
    const int64_t kind = state.range(0);
    state.SetLabel(std::string(kind == 0 ? "markup, " : "prose, ") +
                   (state.range(1) ? "table" : "iconv"));
    if (kind == 0) {
        text = Text(0);
        return 1252;
    }
    const std::u16string line =
        kind == 1 ? u"<p>L'\u00E9t\u00E9 \u00E0 la for\u00EAt, \u00FCber die Stra\u00DFe "
                    u"\u201Eschnell\u201C \u2013 co\u00FBt 20 \u20AC.</p>\r\n"
                  : u"<p>\u041B\u0435\u0442\u043E\u043C \u0432 \u043B\u0435\u0441\u0443 "
                    u"\u0438 \u043D\u0430 \u0443\u043B\u0438\u0446\u0435, 20 "
                    u"\u0440\u0443\u0431\u043B\u0435\u0439.</p>\r\n";
    text.clear();
    while (text.size() < (1u << 20))
        text += line;
    return kind == 1 ? 1252 : 28595;
}

void BM_SingleByteDecode(benchmark::State& state) {
    namespace platform = vetra::platform;
    std::u16string text;
    const uint32_t codePage = SingleByteCase(state, text);
    std::string bytes(text.size(), '\0');
    platform::WideToMultiByte(codePage, text.data(), int32_t(text.size()), bytes.data(),
                              int32_t(bytes.size()), nullptr);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            state.range(1)
                ? platform::MultiByteToWide(codePage, bytes.data(), int32_t(bytes.size()),
                                            text.data(), int32_t(text.size()))
                : platform::posix::IconvToWide(codePage, bytes.data(), bytes.size(), text.data(),
                                               text.size()));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}
BENCHMARK(BM_SingleByteDecode)->ArgsProduct({{0, 1, 2}, {1, 0}});

void BM_SingleByteEncode(benchmark::State& state) {
    namespace platform = vetra::platform;
    std::u16string text;
    const uint32_t codePage = SingleByteCase(state, text);
    std::string out(text.size(), '\0');
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            state.range(1) ? platform::WideToMultiByte(codePage, text.data(), int32_t(text.size()),
                                                       out.data(), int32_t(out.size()), nullptr)
                           : platform::posix::IconvFromWide(codePage, text.data(), text.size(),
                                                            out.data(), out.size(), nullptr));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size() * 2));
}
BENCHMARK(BM_SingleByteEncode)->ArgsProduct({{0, 1, 2}, {1, 0}});

} // namespace

BENCHMARK_MAIN();
