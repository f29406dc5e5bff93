// catalog_text.h - the document edit_bench works on: a catalog of items, each
// with two attributes and one child with data, as vetra itself writes them.
//
// Made in memory so that the micro benchmarks need no corpus file.
#ifndef BENCH_CATALOG_TEXT_H
#define BENCH_CATALOG_TEXT_H

#include <string>

class CVTXmlParser;

namespace bench {

/// "<catalog>" with `items` items, CRLF after every element: 1 + 2 * items
/// elements.
std::u16string CatalogText(long items);

/// Puts the main position on item `index` (from 0) of a parsed catalog.
/// Returns false if there are fewer items.
bool GoToItem(CVTXmlParser& doc, long index);

} // namespace bench

#endif // BENCH_CATALOG_TEXT_H
