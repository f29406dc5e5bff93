// xml_edit.cpp - `vetra xml get`, `set` and `convert`: reading by a path of
// names, editing in place, and re-encoding, all through the library's own
// operations, so that a document keeps every byte that no edit touches.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

#include "commands.h"
#include "xml_path.h"

namespace cli {

namespace {

// An attribute name from "@name", or "@name=value" split in two.
struct Target {
    bool attribute = false;
    Wide name;
    Wide value;
};

Target ParseTarget(const std::string& word, bool withValue) {
    Target t;
    const size_t eq = word.find('=');
    if (word.compare(0, 1, "@") == 0) {
        t.attribute = true;
        const std::string name = word.substr(1, withValue ? eq - 1 : std::string::npos);
        if (name.empty() || (withValue && eq == std::string::npos) ||
            (!withValue && eq != std::string::npos))
            Fail("expected " + std::string(withValue ? "@ATTR=VALUE" : "@ATTR") + ", not '" + word +
                 "'");
        t.name = ToWide(name);
        if (withValue) t.value = ToWide(word.substr(eq + 1));
    } else if (withValue && word.compare(0, 1, "=") == 0) {
        t.value = ToWide(word.substr(1));
    } else {
        Fail("expected " + std::string(withValue ? "@ATTR=VALUE or =DATA" : "@ATTR") + ", not '" +
             word + "'");
    }
    return t;
}

void Warn(const std::string& file, const char* what) {
    std::fprintf(stderr, "vetra: %s: %s\n", file.c_str(), what);
}

std::string ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// A scratch file of this process in the temporary folder, removed when it
// goes out of scope.
struct Scratch {
    std::string path;
    explicit Scratch(const char* purpose)
        : path((std::filesystem::temp_directory_path() /
                ("vetra-" + std::string(purpose) + "-" + std::to_string(getpid())))
                   .string()) {}
    ~Scratch() { std::remove(path.c_str()); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
};

} // namespace

int RunXmlGet(Args& args) {
    const std::vector<std::string> words = args.Operands(2, 3);
    const Target target = words.size() == 3 ? ParseTarget(words[2], false) : Target{};
    CVTXmlParser doc;
    if (!LoadDocument(doc, words[0])) Warn(words[0], "not well-formed; reading the repaired tree");
    int printed = 0;
    ForEachMatch(doc, words[1], [&] {
        if (target.attribute && !HasAttrib(doc, target.name)) return;
        const vtchar* value = target.attribute ? doc.GetAttrib(target.name.c_str()) : doc.GetData();
        std::printf("%s\n", ToUtf8(value).c_str());
        ++printed;
    });
    return printed > 0 ? kOk : kNo;
}

int RunXmlSet(Args& args) {
    const std::vector<std::string> words = args.Operands(3, 3);
    const std::string& file = words[0];
    const Target target = ParseTarget(words[2], true);
    CVTXmlParser doc;
    if (!LoadDocument(doc, file)) Warn(file, "not well-formed; editing the repaired tree");

    // The library saves in the encoding the file declares or marks, else
    // UTF-8: a file in another encoding, or with bytes its encoding can't
    // hold, would change beyond the edit. So the untouched document is
    // saved beside it first and must come out byte for byte.
    {
        Scratch copy("check");
        SaveDocument(doc, copy.path);
        if (ReadBytes(copy.path) != ReadBytes(file))
            Fail(file + ": saving would change bytes outside the edit (its encoding doesn't "
                        "round-trip); "
                        "nothing written",
                 kNo);
    }

    int edited = 0;
    const int matches = ForEachMatch(doc, words[1], [&] {
        const int ok = target.attribute ? doc.SetAttrib(target.name.c_str(), target.value.c_str())
                                        : doc.SetData(target.value.c_str());
        if (!ok) Fail(file + ": cannot set the data of an element that has child elements", kNo);
        ++edited;
    });
    if (matches == 0) Fail(file + ": nothing matches '" + words[1] + "'", kNo);
    SaveDocument(doc, file);
    std::printf("%s: %d element%s edited\n", file.c_str(), edited, edited == 1 ? "" : "s");
    return kOk;
}

namespace {

bool IsNameChar(char c, bool first) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           (!first && ((c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-'));
}

std::string Lower(std::string s) {
    for (char& c : s)
        if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
    return s;
}

// The byte-order mark a file in `encoding` begins with: UTF-16 always has
// one (the library writes UTF-16 only behind its mark), UTF-8 on request.
std::string MarkFor(const std::string& encoding, bool utf8Mark) {
    const std::string e = Lower(encoding);
    for (const char* le :
         {"utf-16", "utf-16le", "utf16", "utf16le", "ucs-2", "ucs-2le", "unicode", "cp1200"})
        if (e == le) return "\xFF\xFE";
    for (const char* be : {"utf-16be", "utf16be", "ucs-2be", "unicodefffe", "cp1201"})
        if (e == be) return "\xFE\xFF";
    if (utf8Mark && (e == "utf-8" || e == "utf8")) return "\xEF\xBB\xBF";
    return "";
}

size_t FindWide(const Wide& text, const char16_t* what, size_t from, size_t end) {
    const size_t at = text.find(what, from);
    return at < end ? at : Wide::npos;
}

// `text` with its XML declaration naming `encoding`: the value replaced,
// the attribute added behind `version`, or a declaration put in front.
Wide Redeclare(Wide text, const std::string& encoding) {
    const Wide name = ToWide(encoding);
    const bool declared =
        text.compare(0, 5, u"<?xml") == 0 && text.size() > 5 &&
        (text[5] == u' ' || text[5] == u'\t' || text[5] == u'\r' || text[5] == u'\n');
    const size_t end = declared ? text.find(u"?>") : Wide::npos;
    if (declared && end != Wide::npos) {
        const size_t attr = FindWide(text, u"encoding", 5, end);
        if (attr != Wide::npos) {
            const size_t open = text.find_first_of(u"\"'", attr);
            const size_t close = open < end ? text.find(text[open], open + 1) : Wide::npos;
            if (close != Wide::npos && close < end)
                return text.replace(open + 1, close - open - 1, name);
        }
        // Behind the version's value, or before "?>" if there is none.
        size_t at = end;
        const size_t version = FindWide(text, u"version", 5, end);
        if (version != Wide::npos) {
            const size_t open = text.find_first_of(u"\"'", version);
            const size_t close = open < end ? text.find(text[open], open + 1) : Wide::npos;
            if (close != Wide::npos && close < end) at = close + 1;
        }
        return text.insert(at, u" encoding=\"" + name + u"\"");
    }
    // A new declaration ends its line as the document's first line does.
    const size_t lf = text.find(u'\n');
    const Wide lineEnd = (lf != Wide::npos && lf > 0 && text[lf - 1] == u'\r') ? u"\r\n" : u"\n";
    return u"<?xml version=\"1.0\" encoding=\"" + name + u"\"?>" + lineEnd + text;
}

bool SawLoss(CVTXmlParser& doc) {
    for (const LogEntry& e : ReadLog(doc))
        if (e.key == "conversion_loss") return true;
    return false;
}

} // namespace

int RunXmlConvert(Args& args) {
    const std::string encoding = args.Take("--encoding", "");
    const bool utf8Mark = args.TakeFlag("--bom");
    const bool allowLoss = args.TakeFlag("--allow-loss");
    const std::vector<std::string> words = args.Operands(2, 2);
    if (encoding.empty()) Fail("xml convert: --encoding NAME is required");
    for (size_t i = 0; i < encoding.size(); ++i)
        if (!IsNameChar(encoding[i], i == 0)) Fail("'" + encoding + "' is not an encoding name");

    CVTXmlParser in;
    if (!LoadDocument(in, words[0])) Warn(words[0], "not well-formed; converting it as it is");
    const Wide text = Redeclare(Wide(in.GetDoc()), encoding);

    // A fresh document saves in the encoding it declares. The library
    // writes UTF-16 (and UTF-8 with a mark) behind the mark a loaded file
    // had, so such a document first loads a file holding just that mark.
    CVTXmlParser out;
    const std::string mark = MarkFor(encoding, utf8Mark);
    if (!mark.empty()) {
        Scratch markFile("mark");
        std::ofstream(markFile.path, std::ios::binary) << mark;
        out.Load(markFile.path.c_str());
    }
    out.SetDoc(text.c_str());

    // A trial save finds characters the encoding can't hold before the
    // real one replaces anything.
    if (!allowLoss) {
        Scratch trial("trial");
        if (out.Save(trial.path.c_str()) && SawLoss(out))
            Fail(words[0] + ": some characters can't be written in " + encoding +
                     " (--allow-loss writes '?' for them); nothing written",
                 kNo);
    }
    SaveDocument(out, words[1]);
    return kOk;
}

} // namespace cli
