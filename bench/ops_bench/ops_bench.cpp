// ops_bench.cpp - what one read or one move costs: GetTagName, GetAttribName,
// GetAttrib, GetData by the length of the data, FindElem, IntoElem with
// OutOfElem, each beside pugixml's nearest equivalent on the same document.
//
// Reads on the same element measure the fixed cost of a call; the attribute
// rows that step to the next element first also pay for reading a tag that
// no earlier call has looked at, as a walk does. pugixml hands out pointers
// into its tree where vetra copies into its result string; each row reads
// the first character of what it was handed.
#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <string>

#include "vetra/vetra.h"

namespace {

constexpr int kItems = 1024;

// A root of kItems items with three attributes each, every item holding
// `data` as its text.
std::string Document(const std::string& data) {
    std::string doc = "<catalog>\r\n";
    for (int i = 0; i < kItems; ++i)
        doc += "<item id=\"i" + std::to_string(100000 + i) + "\" kind=\"odd\" price=\"12.50\">" +
               data + "</item>\r\n";
    return doc + "</catalog>\r\n";
}

std::u16string Wide(const std::string& ascii) {
    return std::u16string(ascii.begin(), ascii.end());
}

// Plain text of n characters; with a reference, "&amp;" stands in its middle.
std::string Data(long n, bool reference) {
    std::string data(size_t(n), 'x');
    if (reference && n >= 5) data.replace(size_t(n / 2), 5, "&amp;");
    return data;
}

struct Vetra {
    CVTXmlParser doc;
    explicit Vetra(const std::string& data = "text") {
        doc.SetDoc(Wide(Document(data)).c_str());
        doc.FindElem();
        doc.IntoElem();
        doc.FindElem();
    }
    void Next() {
        if (!doc.FindElem()) {
            doc.ResetMainPos();
            doc.FindElem();
        }
    }
};

struct Pugi {
    pugi::xml_document doc;
    pugi::xml_node item;
    explicit Pugi(const std::string& data = "text") {
        const std::string text = Document(data);
        doc.load_buffer(text.data(), text.size());
        item = doc.first_child().first_child();
    }
    void Next() {
        item = item.next_sibling();
        if (!item) item = doc.first_child().first_child();
    }
};

// The first character: proof of a read that costs the same for both.
template <typename Char> int First(const Char* s) {
    return s[0];
}

void BM_FindElem_vetra(benchmark::State& state) {
    Vetra v;
    for (auto _ : state)
        v.Next();
}
void BM_FindElem_pugixml(benchmark::State& state) {
    Pugi p;
    for (auto _ : state) {
        p.Next();
        benchmark::DoNotOptimize(p.item);
    }
}

void BM_IntoOutOf_vetra(benchmark::State& state) {
    Vetra v;
    for (auto _ : state) {
        v.doc.IntoElem();
        v.doc.OutOfElem();
    }
}
void BM_IntoOutOf_pugixml(benchmark::State& state) {
    Pugi p;
    for (auto _ : state) {
        pugi::xml_node child = p.item.first_child();
        benchmark::DoNotOptimize(child);
        benchmark::DoNotOptimize(p.item = child.parent());
    }
}

void BM_GetTagName_vetra(benchmark::State& state) {
    Vetra v;
    for (auto _ : state)
        benchmark::DoNotOptimize(First(v.doc.GetTagName()));
}
void BM_GetTagName_pugixml(benchmark::State& state) {
    Pugi p;
    for (auto _ : state)
        benchmark::DoNotOptimize(First(p.item.name()));
}

// The same attribute of the same element, again and again.
void BM_GetAttribName_vetra(benchmark::State& state) {
    Vetra v;
    for (auto _ : state)
        benchmark::DoNotOptimize(First(v.doc.GetAttribName(2)));
}
void BM_GetAttribName_pugixml(benchmark::State& state) {
    Pugi p;
    for (auto _ : state)
        benchmark::DoNotOptimize(First(p.item.last_attribute().name()));
}

void BM_GetAttrib_vetra(benchmark::State& state) {
    Vetra v;
    for (auto _ : state)
        benchmark::DoNotOptimize(First(v.doc.GetAttrib(u"price")));
}
void BM_GetAttrib_pugixml(benchmark::State& state) {
    Pugi p;
    for (auto _ : state)
        benchmark::DoNotOptimize(First(p.item.attribute("price").value()));
}

// Steps to the next element and reads every attribute's name and value, as
// a walk does: the name is kept aside, since the value's read replaces it.
void BM_NextAllAttribs_vetra(benchmark::State& state) {
    Vetra v;
    std::u16string name;
    for (auto _ : state) {
        v.Next();
        for (int i = 0;; ++i) {
            name = v.doc.GetAttribName(i);
            if (name.empty()) break;
            benchmark::DoNotOptimize(First(v.doc.GetAttrib(name.c_str())));
        }
    }
}
void BM_NextAllAttribs_pugixml(benchmark::State& state) {
    Pugi p;
    for (auto _ : state) {
        p.Next();
        for (pugi::xml_attribute a = p.item.first_attribute(); a; a = a.next_attribute()) {
            benchmark::DoNotOptimize(First(a.name()));
            benchmark::DoNotOptimize(First(a.value()));
        }
    }
}

// Data of range(0) characters; range(1) 1 puts a reference in its middle.
void BM_GetData_vetra(benchmark::State& state) {
    Vetra v(Data(state.range(0), state.range(1) != 0));
    for (auto _ : state)
        benchmark::DoNotOptimize(First(v.doc.GetData()));
}
void BM_GetData_pugixml(benchmark::State& state) {
    Pugi p(Data(state.range(0), state.range(1) != 0));
    for (auto _ : state)
        benchmark::DoNotOptimize(First(p.item.child_value()));
}

void DataLengths(benchmark::internal::Benchmark* b) {
    for (long n : {8, 64, 512, 4096})
        for (long ref : {0, 1})
            b->Args({n, ref});
    b->ArgNames({"chars", "ref"});
}

} // namespace

BENCHMARK(BM_FindElem_vetra);
BENCHMARK(BM_FindElem_pugixml);
BENCHMARK(BM_IntoOutOf_vetra);
BENCHMARK(BM_IntoOutOf_pugixml);
BENCHMARK(BM_GetTagName_vetra);
BENCHMARK(BM_GetTagName_pugixml);
BENCHMARK(BM_GetAttribName_vetra);
BENCHMARK(BM_GetAttribName_pugixml);
BENCHMARK(BM_GetAttrib_vetra);
BENCHMARK(BM_GetAttrib_pugixml);
BENCHMARK(BM_NextAllAttribs_vetra);
BENCHMARK(BM_NextAllAttribs_pugixml);
BENCHMARK(BM_GetData_vetra)->Apply(DataLengths);
BENCHMARK(BM_GetData_pugixml)->Apply(DataLengths);
