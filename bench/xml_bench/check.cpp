// check.cpp - xml_bench --check: a table of small documents, each with the
// elements, attributes and characters that every library's walk must count.
//
// `chars` counts code points of names, attribute values and the data of
// elements without child elements (text and CDATA, not comments).
#include <cstdio>

#include "check.h"
#include "peer.h"

namespace bench {
namespace {

struct Case {
    const char* what;
    const char* text;
    WalkCounts expect;
};

const Case kCases[] = {
    {"empty element", "<a/>", {1, 0, 1}},
    {"empty content", "<a></a>", {1, 0, 1}},
    {"attributes in both quotes and text", "<a x=\"1\" y='two'>text</a>", {1, 2, 11}},
    {"references in value and text", "<a t=\"&lt;&amp;&#233;\">x &gt; &#x1F600; y</a>", {1, 1, 12}},
    {"quote references", "<a q=\"&quot;&apos;\">&apos;</a>", {1, 1, 5}},
    {"comment and CDATA inside data", "<a>p <!--c--> q<![CDATA[<r>&amp;]]></a>", {1, 0, 13}},
    {"nesting with CRLF between tags",
     "<r>\r\n  <a k=\"v\">x</a>\r\n  <b><c/></b>\r\n</r>\r\n",
     {4, 1, 7}},
    {"text beside a child is no data", "<a>t<b>u</b>v</a>", {2, 0, 3}},
    {"five levels", "<a><b><c><d><e>z</e></d></c></b></a>", {5, 0, 6}},
    // No processing instruction after the declaration: TinyXML-2 refuses one.
    {"prolog", "<?xml version=\"1.0\"?>\r\n<!-- c -->\r\n<r a=\"1\"/>\r\n", {1, 1, 3}},
    {"doctype with internal subset", "<!DOCTYPE r [\r\n<!ELEMENT r ANY>\r\n]>\r\n<r/>", {1, 0, 1}},
    {"non-ASCII names and text",
     "<\xC3\xA9 \xC3\xBC=\"\xC3\xB1\">\xE6\x97\xA5\xE6\x9C\xAC</\xC3\xA9>",
     {1, 1, 5}},
    {"namespace declarations and prefixes",
     "<p:r xmlns:p=\"u\"><p:s p:k=\"v\"/></p:r>",
     {2, 2, 18}},
};

bool Same(const WalkCounts& a, const WalkCounts& b) {
    return a.elements == b.elements && a.attributes == b.attributes && a.chars == b.chars;
}

} // namespace

int RunCheck() {
    int failures = 0, passes = 0;
    for (const Peer* const* p = kPeers; *p; ++p) {
        const Peer& peer = **p;
        if (!peer.walk) continue;
        for (const Case& c : kCases) {
            Input in;
            in.utf8 = c.text;
            peer.prepare(in);
            void* doc = peer.parse(in);
            const WalkCounts got = peer.walk(doc);
            peer.release(doc);
            if (Same(got, c.expect)) {
                ++passes;
                continue;
            }
            ++failures;
            std::printf("FAIL %s / %s: got %llu elements, %llu attributes, %llu chars; "
                        "expected %llu, %llu, %llu\n",
                        peer.name, c.what, static_cast<unsigned long long>(got.elements),
                        static_cast<unsigned long long>(got.attributes),
                        static_cast<unsigned long long>(got.chars),
                        static_cast<unsigned long long>(c.expect.elements),
                        static_cast<unsigned long long>(c.expect.attributes),
                        static_cast<unsigned long long>(c.expect.chars));
        }
    }
    std::printf("%d passed, %d failed\n", passes, failures);
    return failures == 0 ? 0 : 1;
}

} // namespace bench
