// Tests of ParsePath: which paths parse, how the head classifies them, and
// where the first step is found. A failed parse keeps the head's kind; the
// search turns it into PathInvalid.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/doc_script.h"
#include "xml/xml_engine.h"

using namespace vetra::xml;
using vetra::test::Show;

namespace {

constexpr int32_t kRel = PathQuery::PathRelative;
constexpr int32_t kAbs = PathQuery::PathAbsolute;
constexpr int32_t kAnywhere = PathQuery::PathAnywhere;

TEST(ParsePath, ClassifiesAndValidates) {
    const struct {
        const char16_t* path;
        bool valid;
        int32_t kind;
        int32_t position = 0; // first step; only checked for valid paths
    } cases[] = {
        {nullptr, true, PathQuery::PathAny, 0},
        {u"a", true, kRel, 0},
        {u"/a", true, kAbs, 1},
        {u"//a", true, kAnywhere, 2},
        {u"/@x", true, kAbs, 1}, // the first step is a name, even with an @
        // Steps and predicates beyond the first name are only validated.
        {u"a/@", true, kRel, 0},
        {u"a//b", true, kRel, 0},
        {u"a[0x]", true, kRel, 0}, // a leading 0 makes a name, not an index
        {u"a[12]/b[3]/@c", true, kRel, 0},
        {u"a[@x]", true, kRel, 0},
        {u"a[@x=1 2=3]", true, kRel, 0},
        {u"a[@x=\"1]\"]", true, kRel, 0},
        // A name stops at a space, = or ], which then stands outside a step.
        {u"a b", false, kRel},
        // Predicates: an index is digits only, and one predicate per step.
        {u"a[1a]", false, kRel},
        {u"a[1][2]", false, kRel},
        {u"a[@x y]", false, kRel},
        {u"a[@x=1", false, kRel},
        {u"a[@x=\"1]", false, kRel},
        {u"a[@x=\"1\"z]", false, kRel},
        // Slashes and the attribute tail.
        {u"a/", false, kRel},
        {u"a/@x/y", false, kRel},
        {u"//", false, kAnywhere},
        {u"//a/b", false, kAnywhere},
    };
    for (const auto& tc : cases) {
        SCOPED_TRACE(tc.path != nullptr ? Show(tc.path) : "null");
        // Copied to an exact heap block, so a read past the end is caught.
        std::unique_ptr<char16_t[]> exact;
        if (tc.path != nullptr) {
            const size_t n = std::char_traits<char16_t>::length(tc.path);
            exact.reset(new char16_t[n + 1]);
            std::char_traits<char16_t>::copy(exact.get(), tc.path, n + 1);
        }
        PathQuery query;
        query.kind = PathQuery::PathInvalid;
        query.position = 99;
        query.text = exact.get();
        EXPECT_EQ(ParsePath(query), tc.valid);
        EXPECT_EQ(query.kind, tc.kind);
        EXPECT_EQ(query.text, exact.get());
        if (tc.valid) {
            EXPECT_EQ(query.position, tc.position);
        }
    }
}

} // namespace
