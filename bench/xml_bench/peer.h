// peer.h - what every library under measurement offers xml_bench: a table of
// operations over an opaque document, and the counts that a walk reports.
//
// Each library lives in its own peer_*.cpp and defines one Peer table. The
// timed part of each operation is exactly the call; preparing input and
// freeing documents are separate operations that run outside the timing.
#ifndef BENCH_PEER_H
#define BENCH_PEER_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace bench {

/// The document text as every library may want it, filled before timing.
struct Input {
    std::string utf8;     // the file's bytes
    std::u16string utf16; // the same text in UTF-16, only for peers that ask for it
    std::string scratch;  // a writable copy for in-situ parsers, refreshed per run
};

/// What a walk saw. Every library must report the same numbers for a text.
/// `chars` counts code points of element names, attribute names and values,
/// and the data of elements without child elements.
struct WalkCounts {
    uint64_t elements = 0;
    uint64_t attributes = 0;
    uint64_t chars = 0;
};

struct Peer {
    const char* name;
    /// Untimed: fills what the peer needs in `in` (UTF-16 text, a scratch copy).
    void (*prepare)(Input& in);
    /// Timed: text in memory to a navigable document.
    void* (*parse)(Input& in);
    /// Timed: visits every element of a parsed document.
    WalkCounts (*walk)(void* doc);
    /// Untimed: frees the document.
    void (*release)(void* doc);
    /// Timed: builds a catalog of `items` items, each an element with two
    /// attributes and one child with data, and writes its text; returns the
    /// length of that text in bytes.
    std::size_t (*build)(int items);
    /// Timed: a file to a navigable document, the library reading it itself;
    /// null where the library has no such call.
    void* (*load)(const char* path);
    /// Timed: writes a document to a file, as compact as the library writes
    /// (vetra: the text as it is; the peers: no indentation).
    void (*save)(void* doc, const char* path);
};

/// All peers, in the order of the report; null-terminated.
extern const Peer* const kPeers[];

/// Code points in UTF-8 and UTF-16 text: units that don't continue a sequence.
inline uint64_t CodePoints(const char* s, std::size_t n) {
    uint64_t count = 0;
    for (std::size_t i = 0; i < n; ++i)
        count += (static_cast<unsigned char>(s[i]) & 0xC0) != 0x80;
    return count;
}
inline uint64_t CodePoints(const char16_t* s, std::size_t n) {
    uint64_t count = 0;
    for (std::size_t i = 0; i < n; ++i)
        count += (s[i] & 0xFC00) != 0xDC00;
    return count;
}

/// The data of built items: a short line that needs escaping once.
constexpr const char* kBuildData = "Caf\xC3\xA9 & Bar, item data";
constexpr const char16_t* kBuildData16 = u"Caf\u00E9 & Bar, item data";

} // namespace bench

#endif // BENCH_PEER_H
