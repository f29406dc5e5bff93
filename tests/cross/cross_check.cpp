// cross_check.cpp - one program for the Linux and the Windows build, whose outputs
// tools/test-windows.sh compares between the two: a file's version, and documents saved in
// every code page of the encoding-name table and loaded again.
//
//   vetra_cross_check version FILE          prints "MS LS" (hex) of FILE's version, or "none"
//   vetra_cross_check save FIXTURES OUTDIR  writes OUTDIR/CODEPAGE.xml for every code page,
//                                           and prints the code pages it could save
//   vetra_cross_check load DIR              prints "CODEPAGE LENGTH HASH" of the text that
//                                           Load reads from each DIR/CODEPAGE.xml
//
// A saved document declares its encoding by the first name the table has for the page, and
// holds the page's real text from FIXTURES/CODEPAGE.utf16 where there is one, else ASCII.
// Pages that a build can't convert are left out, so the comparison shows them.
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "vetra/vetra.h"

namespace {

const char16_t* const kAliasBuckets[] = {
#include "text/charset_table.inc"
};

// The public surface takes vtchar, 16-bit units as char16_t is.
const vtchar* V(const std::u16string& text) {
    return reinterpret_cast<const vtchar*>(text.c_str());
}

std::u16string Wide(const std::string& ascii) {
    return std::u16string(ascii.begin(), ascii.end());
}

// Every code page of the table with its first name. A bucket is packed as rows of two digits
// of name length, five of code page, then the name.
std::map<int, std::u16string> FirstNames() {
    std::map<int, std::u16string> names;
    for (const char16_t* bucket : kAliasBuckets) {
        for (std::u16string row(bucket); row.size() >= 7;) {
            auto number = [&](size_t from, size_t count) {
                return std::stoi(std::string(row.begin() + from, row.begin() + from + count));
            };
            const size_t length = size_t(number(0, 2));
            names.emplace(number(2, 5), row.substr(7, length));
            row.erase(0, 7 + length);
        }
    }
    return names;
}

std::u16string SampleText(const std::string& fixtures, int codePage) {
    std::ifstream in(fixtures + "/" + std::to_string(codePage) + ".utf16", std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (bytes.size() < 2) return u"Plain text 0123456789, the same in every page.";
    std::u16string text(bytes.size() / 2, u'\0');
    for (size_t i = 0; i < text.size(); ++i)
        text[i] = char16_t(uint8_t(bytes[2 * i]) | uint8_t(bytes[2 * i + 1]) << 8);
    return text;
}

int Save(const std::string& fixtures, const std::string& dir) {
    for (const auto& [codePage, name] : FirstNames()) {
        const std::u16string text = u"<?xml version=\"1.0\" encoding=\"" + name + u"\"?>\r\n<t>" +
                                    SampleText(fixtures, codePage) + u"</t>\r\n";
        CVTXmlParser doc;
        doc.SetDoc(V(text));
        const std::string path = dir + "/" + std::to_string(codePage) + ".xml";
        // A save that fails may leave a file behind (Windows writes in place): only the
        // pages listed were saved.
        if (doc.Save(V(Wide(path)))) std::printf("%d\n", codePage);
    }
    return 0;
}

int Load(const std::string& dir) {
    for (const auto& entry : FirstNames()) {
        const std::string path = dir + "/" + std::to_string(entry.first) + ".xml";
        if (!std::ifstream(path)) continue;
        CVTXmlParser doc;
        doc.Load(V(Wide(path)));
        const auto* text = reinterpret_cast<const char16_t*>(doc.GetDoc());
        uint64_t hash = 14695981039346656037ull; // FNV-1a over the units
        size_t length = 0;
        for (; text[length] != 0; ++length)
            hash = (hash ^ text[length]) * 1099511628211ull;
        std::printf("%d %lu %08lx%08lx\n", entry.first, static_cast<unsigned long>(length),
                    static_cast<unsigned long>(hash >> 32),
                    static_cast<unsigned long>(hash & 0xFFFFFFFF));
    }
    return 0;
}

int Version(const std::string& file) {
    vtdword ms = 0, ls = 0;
    if (!VETRA_GetFileVersion(V(Wide(file)), &ms, &ls)) {
        std::printf("none\n");
        return 0;
    }
    std::printf("%08lx %08lx\n", static_cast<unsigned long>(ms), static_cast<unsigned long>(ls));
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "version" && argc == 3) return Version(argv[2]);
    if (command == "save" && argc == 4) return Save(argv[2], argv[3]);
    if (command == "load" && argc == 3) return Load(argv[2]);
    std::fprintf(stderr, "usage: vetra_cross_check version FILE | save FIXTURES DIR | load DIR\n");
    return 2;
}
