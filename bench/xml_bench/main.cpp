// main.cpp - xml_bench: runs one work of one library on one corpus, several
// times, and prints one CSV row per run, with the process's peak memory.
//
// One process per (library, work, corpus) keeps the peak resident size that
// library's own. Run 0 is the cold run, on memory the process never touched;
// medians of the warm runs, ratios and the table are made by summarize.py.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "check.h"
#include "common/warm_heap.h"
#include "measure.h"
#include "peer.h"
#include "scaling.h"

namespace bench {

extern const Peer kVetra, kVetraUtf8, kPugixml, kRapidxml, kTinyxml2, kLibxml2;
const Peer* const kPeers[] = {&kVetra,    &kVetraUtf8, &kPugixml, &kRapidxml,
                              &kTinyxml2, &kLibxml2,   nullptr};

namespace {

const char kUsage[] =
    "usage: xml_bench LIB WORK [FILE] [--runs N] [--items N]\n"
    "       xml_bench --check\n"
    "LIB:  vetra vetra-utf8 pugixml rapidxml tinyxml2 libxml2\n"
    "WORK: parse walk (need FILE), build (--items, default 500000), scaling (FILE;\n"
    "      vetra or pugixml), load save (FILE; vetra, pugixml, libxml2)\n"
    "Prints: lib,work,corpus,bytes,run,seconds,elements,attributes,chars,peak_kib,base_kib,wall\n"
    "        (seconds: CPU time of the thread; wall: elapsed time)\n"
    "        (peak_kib: after the cold run where there is one; base_kib: before it)\n"
    "        (parse, walk, build, load, save: run 0 is an extra, cold run before the N\n"
    "        warm ones; save writes FILE.LIB.saved beside FILE and removes it)\n";

struct Options {
    std::string lib, work, file;
    int runs = 5;
    int items = 500000;
};

struct Row {
    std::string work;
    std::string corpus; // empty: the corpus of the run
    int firstRun = 0;   // 0 when the seconds begin with the cold run
    long peakKib = 0;   // the peak after the cold run; 0: after all runs
    double bytes = 0;
    std::vector<double> seconds;     // CPU seconds of each run
    std::vector<double> wallSeconds; // wall seconds of each run, where measured
    WalkCounts counts;
};

[[noreturn]] void Fail(const std::string& why) {
    std::fprintf(stderr, "xml_bench: %s\n%s", why.c_str(), kUsage);
    std::exit(2);
}

Options ParseArgs(int argc, char** argv) {
    Options o;
    std::vector<std::string> positional;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if ((arg == "--runs" || arg == "--items") && i + 1 < argc)
            (arg == "--runs" ? o.runs : o.items) = std::atoi(argv[++i]);
        else if (arg.rfind("--", 0) == 0)
            Fail("unknown option " + arg);
        else
            positional.push_back(arg);
    }
    if (positional.size() < 2 || positional.size() > 3 || o.runs < 1 || o.items < 1)
        Fail("bad arguments");
    o.lib = positional[0];
    o.work = positional[1];
    if (positional.size() == 3) o.file = positional[2];
    return o;
}

const Peer& FindPeer(const std::string& name) {
    for (const Peer* const* p = kPeers; *p; ++p)
        if (name == (*p)->name) return **p;
    Fail("unknown library " + name);
}

// Reads into one allocation of the file's size: freed scratch memory would
// stay resident (see warm_heap.h) and hide part of the first run's peak.
std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file) Fail("cannot read " + path);
    std::string text(static_cast<std::size_t>(file.tellg()), '\0');
    file.seekg(0);
    if (!file.read(text.data(), static_cast<std::streamsize>(text.size())))
        Fail("cannot read " + path);
    return text;
}

// "dir/name.xml" -> "name"
std::string CorpusName(const std::string& path) {
    std::string name = path.substr(path.find_last_of('/') + 1);
    return name.substr(0, name.find('.'));
}

// Times one run of `work` in CPU and wall seconds and files both in `row`.
template <typename Work> void TimeRun(Row& row, Work work) {
    const double wall = WallNow();
    const double cpu = CpuNow();
    work();
    row.seconds.push_back(CpuSince(cpu));
    row.wallSeconds.push_back(WallNow() - wall);
}

Row TimeParse(const Peer& peer, Input& in, int runs, bool walk) {
    Row row;
    row.work = walk ? "walk" : "parse";
    row.bytes = static_cast<double>(in.utf8.size());
    for (int run = 0; run <= runs; ++run) {
        peer.prepare(in);
        void* doc = walk ? peer.parse(in) : nullptr;
        TimeRun(row, [&] {
            if (walk)
                row.counts = peer.walk(doc);
            else
                doc = peer.parse(in);
        });
        peer.release(doc);
        if (run == 0) row.peakKib = PeakRssKib();
    }
    return row;
}

// The library reads the file itself (load), or writes a document it loaded
// untimed (save); the program holds no copy of the file.
Row TimeFile(const Peer& peer, const std::string& file, int runs, bool save) {
    Row row;
    row.work = save ? "save" : "load";
    row.bytes = static_cast<double>(std::filesystem::file_size(file));
    const std::string saved = file + "." + peer.name + ".saved";
    for (int run = 0; run <= runs; ++run) {
        void* doc = save ? peer.load(file.c_str()) : nullptr;
        TimeRun(row, [&] {
            if (save)
                peer.save(doc, saved.c_str());
            else
                doc = peer.load(file.c_str());
        });
        peer.release(doc);
        if (run == 0) row.peakKib = PeakRssKib();
    }
    std::remove(saved.c_str());
    return row;
}

Row TimeBuild(const Peer& peer, Input& in, int runs, int items) {
    Row row;
    row.work = "build";
    row.counts.elements = 2 * static_cast<uint64_t>(items) + 1;
    row.counts.attributes = 2 * static_cast<uint64_t>(items);
    for (int run = 0; run <= runs; ++run) {
        peer.prepare(in);
        TimeRun(row, [&] { row.bytes = static_cast<double>(peer.build(items)); });
        if (run == 0) row.peakKib = PeakRssKib();
    }
    return row;
}

std::vector<Row> TimeScaling(const Options& o, Input& in) {
    std::vector<OpSample> samples;
    if (o.lib == "vetra") {
        kVetra.prepare(in);
        samples = ScaleVetra(in, o.runs);
    } else if (o.lib == "pugixml") {
        samples = ScalePugixml(in, o.runs);
    } else {
        Fail("scaling is measured for vetra and pugixml only");
    }
    std::vector<Row> rows;
    for (OpSample& s : samples) {
        Row row;
        row.work = s.work;
        row.corpus = s.onCorpus ? "" : "from-empty";
        row.firstRun = 1;
        row.seconds = std::move(s.seconds);
        rows.push_back(row);
    }
    return rows;
}

int Run(const Options& o) {
    const Peer& peer = FindPeer(o.lib);
    const bool needsFile = o.work != "build";
    if (needsFile == o.file.empty())
        Fail(needsFile ? "this work needs a FILE" : "build takes no FILE");
    const bool fileWork = o.work == "load" || o.work == "save";
    Input in;
    if (needsFile && !fileWork) in.utf8 = ReadFile(o.file);
    const std::string corpus = needsFile ? CorpusName(o.file) : "items-" + std::to_string(o.items);
    peer.prepare(in);
    const long base = CurrentRssKib();

    std::vector<Row> rows;
    if ((o.work == "parse" || o.work == "walk") && (o.work == "parse" || peer.walk))
        rows.push_back(TimeParse(peer, in, o.runs, o.work == "walk"));
    else if (o.work == "build" && peer.build)
        rows.push_back(TimeBuild(peer, in, o.runs, o.items));
    else if (o.work == "scaling")
        rows = TimeScaling(o, in);
    else if (fileWork && peer.load)
        rows.push_back(TimeFile(peer, o.file, o.runs, o.work == "save"));
    else
        Fail(o.lib + " has no work " + o.work);

    const long peak = PeakRssKib();
    for (const Row& row : rows)
        for (std::size_t run = 0; run < row.seconds.size(); ++run)
            std::printf("%s,%s,%s,%.0f,%zu,%.9f,%llu,%llu,%llu,%ld,%ld,%.9f\n", o.lib.c_str(),
                        row.work.c_str(), (row.corpus.empty() ? corpus : row.corpus).c_str(),
                        row.bytes, run + static_cast<std::size_t>(row.firstRun), row.seconds[run],
                        static_cast<unsigned long long>(row.counts.elements),
                        static_cast<unsigned long long>(row.counts.attributes),
                        static_cast<unsigned long long>(row.counts.chars),
                        row.peakKib ? row.peakKib : peak, base,
                        run < row.wallSeconds.size() ? row.wallSeconds[run] : row.seconds[run]);
    return 0;
}

} // namespace
} // namespace bench

int main(int argc, char** argv) {
    bench::KeepFreedMemory();
    if (argc == 2 && std::strcmp(argv[1], "--check") == 0) return bench::RunCheck();
    return bench::Run(bench::ParseArgs(argc, argv));
}
