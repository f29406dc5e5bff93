// xml_path.h - documents for the xml subcommands: loading with one-line
// errors, and visiting the elements a path of names leads to.
#ifndef VETRA_CLI_XML_PATH_H
#define VETRA_CLI_XML_PATH_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <vetra/xml_parser.h>

#include "text.h"

namespace cli {

/// One entry of a document's result log: its key and its attributes in order.
struct LogEntry {
    std::string key;
    std::vector<std::pair<std::string, std::string>> attributes;
    /// The value of attribute `name`, or null.
    const std::string* Find(const std::string& name) const;
};

/// The entries of `doc`'s result log.
std::vector<LogEntry> ReadLog(CVTXmlParser& doc);

/// Loads `path` into `doc`. A file that can't be read fails with status 2
/// and the system's message; a document that isn't well-formed loads (the
/// tree is repaired) and gives false.
bool LoadDocument(CVTXmlParser& doc, const std::string& path);

/// Saves `doc` to `path`, or fails with status 1 and the system's message.
void SaveDocument(CVTXmlParser& doc, const std::string& path);

/// Calls `visit` on every element that `path` leads to, in document order,
/// with the main position on it: `path` is element names from the root
/// separated by '/' ("catalog/book"), '*' standing for any name. Returns
/// how many elements were visited.
int ForEachMatch(CVTXmlParser& doc, const std::string& path, const std::function<void()>& visit);

/// Is `name` an attribute of the main element (even with an empty value)?
bool HasAttrib(CVTXmlParser& doc, const Wide& name);

} // namespace cli

#endif // VETRA_CLI_XML_PATH_H
