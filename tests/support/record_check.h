// record_check.h - an invariant checker for an engine's element records,
// used by the unit tests, the property tests and the fuzz targets.
//
// It walks the tree iteratively and reports the first broken rule in words;
// it never trusts a link before checking that it is in range.
#ifndef VETRA_TESTS_RECORD_CHECK_H
#define VETRA_TESTS_RECORD_CHECK_H

#include <cstdint>
#include <string>
#include <vector>

#include "xml/xml_engine.h"

namespace vetra::test {

struct CheckOptions {
    /// Every level is exactly its parent's + 1. Holds after a parse in which
    /// no element was left unended (whose children keep their levels).
    bool strictLevels = false;
};

/// Empty if the records of `engine` are consistent, else what is wrong.
std::string CheckRecords(const xml::XmlEngine& engine, CheckOptions options = {});

/// The tag names at the position's three levels, "parent,main,child", with
/// "-" for none.
std::string Triple(const xml::XmlEngine& engine);

/// One element in document order, for comparing two engines' trees.
struct RecordView {
    int32_t start, length, startTagChars, endTagChars, level;
    uint32_t flags;
    int32_t depth; // depth in the tree as linked, root = 0
    int32_t childCount;
    bool operator==(const RecordView& o) const {
        return start == o.start && length == o.length && startTagChars == o.startTagChars &&
               endTagChars == o.endTagChars && level == o.level && flags == o.flags &&
               depth == o.depth && childCount == o.childCount;
    }
};

/// The elements of `engine` in document order (pre-order from record 0).
std::vector<RecordView> DocumentOrder(const xml::XmlEngine& engine);

} // namespace vetra::test

#endif // VETRA_TESTS_RECORD_CHECK_H
