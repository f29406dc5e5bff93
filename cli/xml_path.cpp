// xml_path.cpp - loading, the result log, and walking a path of names.
#include "xml_path.h"

#include "args.h"

namespace cli {

const std::string* LogEntry::Find(const std::string& name) const {
    for (const auto& a : attributes)
        if (a.first == name) return &a.second;
    return nullptr;
}

std::vector<LogEntry> ReadLog(CVTXmlParser& doc) {
    // The log is itself XML: a row of empty elements, read with a second
    // document.
    CVTXmlParser log;
    log.SetDoc(Wide(doc.GetResultLog()).c_str());
    std::vector<LogEntry> entries;
    while (log.FindElem()) {
        LogEntry entry;
        entry.key = ToUtf8(log.GetTagName());
        for (int i = 0;; ++i) {
            const Wide name = log.GetAttribName(i);
            if (name.empty()) break;
            entry.attributes.emplace_back(ToUtf8(name), ToUtf8(log.GetAttrib(name.c_str())));
        }
        entries.push_back(std::move(entry));
    }
    return entries;
}

namespace {

// Fails with the system's message if the log holds a file error.
void FailOnFileError(CVTXmlParser& doc, const std::string& path, const char* what, int status) {
    for (const LogEntry& e : ReadLog(doc)) {
        if (e.key != "file_error") continue;
        const std::string* msg = e.Find("msg");
        Fail(path + ": " + (msg != nullptr && !msg->empty() ? *msg : what), status);
    }
}

} // namespace

bool LoadDocument(CVTXmlParser& doc, const std::string& path) {
    if (doc.Load(path.c_str())) return true;
    FailOnFileError(doc, path, "cannot be read", kUsage);
    return false;
}

void SaveDocument(CVTXmlParser& doc, const std::string& path) {
    if (doc.Save(path.c_str())) return;
    FailOnFileError(doc, path, "cannot be written", kNo);
    Fail(path + ": cannot be written in the encoding the document declares", kNo);
}

namespace {

std::vector<Wide> Steps(const std::string& path) {
    std::vector<Wide> steps;
    // A leading and a trailing '/' change nothing.
    size_t from = path.compare(0, 1, "/") == 0 ? 1 : 0;
    for (;;) {
        const size_t slash = path.find('/', from);
        const std::string step = path.substr(from, slash - from);
        if (step.empty()) Fail("the path '" + path + "' has an empty step");
        // The library's finder would take "book[2]" for "book" and drop the
        // predicate; a path here is names only.
        if (step.find_first_of("[]@()=|") != std::string::npos)
            Fail("the path '" + path + "' may hold only element names and '*'");
        steps.push_back(step == "*" ? Wide() : ToWide(step));
        if (slash == std::string::npos || slash + 1 == path.size()) return steps;
        from = slash + 1;
    }
}

int Walk(CVTXmlParser& doc, const std::vector<Wide>& steps, size_t level,
         const std::function<void()>& visit) {
    int matches = 0;
    doc.ResetMainPos();
    const vtchar* name = steps[level].empty() ? nullptr : steps[level].c_str();
    while (doc.FindElem(name)) {
        if (level + 1 == steps.size()) {
            visit();
            ++matches;
        } else if (doc.IntoElem()) {
            matches += Walk(doc, steps, level + 1, visit);
            doc.OutOfElem();
        }
    }
    return matches;
}

} // namespace

int ForEachMatch(CVTXmlParser& doc, const std::string& path, const std::function<void()>& visit) {
    const std::vector<Wide> steps = Steps(path);
    doc.ResetPos();
    return Walk(doc, steps, 0, visit);
}

bool HasAttrib(CVTXmlParser& doc, const Wide& name) {
    for (int i = 0;; ++i) {
        const Wide each = doc.GetAttribName(i);
        if (each.empty()) return false;
        if (each == name) return true;
    }
}

} // namespace cli
