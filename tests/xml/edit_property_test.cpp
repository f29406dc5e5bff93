// Property test of editing: random operation sequences on random documents.
// After every step the records satisfy every invariant, and whenever the
// text is well-formed they describe the same tree as a fresh parse of it.
//
// Seeds are fixed, so a failure names its seed and step. For longer runs:
//   VETRA_PROPERTY_SEEDS=20000 build/tests/vetra_xml_tests --gtest_filter='EditProperty*'
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/edit_ops.h"
#include "support/record_check.h"

using namespace vetra::test;

namespace {

int SeedCount() {
    const char* env = std::getenv("VETRA_PROPERTY_SEEDS");
    return env != nullptr ? std::atoi(env) : 400;
}

TEST(EditProperty, RecordsStayTrueThroughRandomEdits) {
    const int seeds = SeedCount();
    int compared = 0;
    for (int seed = 0; seed < seeds; ++seed) {
        SeededChoices choices{uint64_t(seed)};
        std::u16string text = RandomDocument(choices, 2 + int(choices.Pick(30)));
        vetra::xml::XmlEngine engine(text.c_str());
        ASSERT_EQ(CheckRecords(engine), "") << "seed " << seed << " after the parse";
        for (int step = 0; step < 60; ++step) {
            std::string op = RandomStep(engine, choices);
            std::string problem = CheckRecords(engine);
            if (problem.empty()) problem = CompareWithReparse(engine);
            ASSERT_EQ(problem, "") << "seed " << seed << " step " << step << " (" << op << ")";
            compared += CompareWithReparse(engine).empty();
        }
    }
    EXPECT_GT(compared, 0);
}

} // namespace
