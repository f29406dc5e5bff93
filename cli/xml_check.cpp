// xml_check.cpp - `vetra xml check`: is each file well-formed, and what did
// the parser repair, at which line and column.
#include <cstdio>
#include <cstdlib>

#include "commands.h"
#include "xml_path.h"

namespace cli {

namespace {

struct Position {
    long line = 1;
    long column = 1;
};

// Line and column (from 1, in characters) of a UTF-16 offset: CR LF, LF and
// a lone CR each end a line; a surrogate pair is one character.
Position LineColumn(const vtchar* text, long offset) {
    Position at;
    for (long i = 0; i < offset && text[i] != 0; ++i) {
        const vtchar c = text[i];
        if (c == u'\n' || (c == u'\r' && text[i + 1] != u'\n')) {
            ++at.line;
            at.column = 1;
        } else if (c != u'\r' && (c < 0xDC00 || c >= 0xE000)) {
            ++at.column;
        }
    }
    return at;
}

// What the file layer reports on every load; shown with --verbose only.
bool IsInformation(const std::string& key) {
    return key == "bom" || key == "read" || key == "converted_to" || key == "utf8_detection" ||
           key == "endian_swap";
}

std::string Attributes(const LogEntry& e) {
    std::string out;
    for (const auto& a : e.attributes) {
        if (a.first == "offset" || a.first == "offset2") continue;
        out += (out.empty() ? "" : ", ") + a.first + " " + a.second;
    }
    return out;
}

// One entry as FILE:LINE:COLUMN: key (detail), without a position where it has no offset.
void PrintEntry(const std::string& file, const LogEntry& e, const vtchar* text) {
    std::string where = file;
    if (const std::string* offset = e.Find("offset")) {
        const Position at = LineColumn(text, std::atol(offset->c_str()));
        where += ":" + std::to_string(at.line) + ":" + std::to_string(at.column);
    }
    std::string detail;
    if (const std::string* name = e.Find("tagname"))
        detail = *name;
    else if (const std::string* type = e.Find("type"))
        detail = *type;
    else
        detail = Attributes(e);
    std::printf("%s: %s%s\n", where.c_str(), e.key.c_str(),
                detail.empty() ? "" : (" (" + detail + ")").c_str());
}

} // namespace

int RunXmlCheck(Args& args) {
    const bool quiet = args.TakeFlag("--quiet", "-q");
    const bool verbose = args.TakeFlag("--verbose", "-v");
    const std::vector<std::string> files = args.Operands(1, size_t(-1));
    int status = kOk;
    for (const std::string& file : files) {
        CVTXmlParser doc;
        bool wellFormed = false;
        try {
            wellFormed = LoadDocument(doc, file);
        } catch (const Failure& f) {
            std::fprintf(stderr, "vetra: %s\n", f.message.c_str());
            status = kUsage;
            continue;
        }
        if (!wellFormed && status == kOk) status = kNo;
        if (!quiet || !wellFormed)
            std::printf("%s: %s\n", file.c_str(), wellFormed ? "well-formed" : "not well-formed");
        const std::vector<LogEntry> entries = ReadLog(doc);
        bool faults = false;
        for (const LogEntry& e : entries) {
            if (IsInformation(e.key) && !verbose) continue;
            faults = faults || !IsInformation(e.key);
            PrintEntry(file, e, doc.GetDoc());
        }
        if (!wellFormed && !faults && doc.GetDoc()[0] == 0)
            std::printf("%s: the document is empty\n", file.c_str());
    }
    return status;
}

} // namespace cli
