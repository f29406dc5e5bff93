// Fuzz target: any bytes become a file that Load reads, whatever mark, declaration or
// encoding they hold; the records must then satisfy every invariant and every element is
// visited and read. Save writes the document back, and a file written with a UTF-16 mark
// must load again as the same text. No file may crash the reader, hang it or make it read
// outside its buffers.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/record_check.h"
#include "vetra/xml_parser.h"
#include "xml/xml_engine.h"

namespace {

void Check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

// One folder for the whole run, for the file read and the file written; removed at exit.
char g_folder[] = "/tmp/vetra-load-fuzz-XXXXXX";

void RemoveFolder() {
    unlink((std::string(g_folder) + "/in.xml").c_str());
    rmdir(g_folder);
}

const std::string& Folder() {
    static const std::string folder = [] {
        Check(mkdtemp(g_folder) != nullptr, "a scratch folder");
        std::atexit(RemoveFolder);
        return std::string(g_folder);
    }();
    return folder;
}

// Every element in document order, reading its name, attributes and data.
size_t ReadEverything(CVTXmlParser& doc) {
    size_t elements = 0;
    doc.ResetPos();
    for (;;) {
        if (!doc.FindElem()) {
            if (!doc.OutOfElem()) return elements;
            continue;
        }
        ++elements;
        doc.GetTagName();
        for (int i = 0; *doc.GetAttribName(i) != 0; ++i) {
            const std::u16string name = doc.GetAttribName(i);
            doc.GetAttrib(name.c_str());
        }
        doc.GetData();
        Check(doc.IntoElem() == 1, "into a found element");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string in = Folder() + "/in.xml", out = Folder() + "/out.xml";
    FILE* file = std::fopen(in.c_str(), "wb");
    Check(file != nullptr && std::fwrite(data, 1, size, file) == size, "the input file");
    std::fclose(file);

    CVTXmlParser doc;
    doc.Load(in.c_str());
    vetra::xml::XmlEngine engine;
    engine.SetDocText(doc.GetDoc());
    const std::string problem = vetra::test::CheckRecords(engine);
    Check(problem.empty(), problem.c_str());
    Check(ReadEverything(doc) == vetra::test::DocumentOrder(engine).size(),
          "the walk visits every element once");
    doc.GetResultLog();

    // A save may fail only for an encoding the system can't write to; UTF-16 always goes.
    const int saved = doc.Save(out.c_str());
    const bool utf16 =
        size >= 2 && ((data[0] == 0xFF && data[1] == 0xFE) || (data[0] == 0xFE && data[1] == 0xFF));
    CVTXmlParser again;
    again.Load(out.c_str());
    if (utf16) {
        Check(saved == 1, "a UTF-16 document is saved");
        Check(std::u16string(doc.GetDoc()) == again.GetDoc(), "it loads back as the same text");
    }
    unlink(out.c_str());
    return 0;
}
