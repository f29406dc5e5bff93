// Property test of editing: random operation sequences on random documents.
// After every step the main element's attributes read as a scan of the text
// finds them, the records satisfy every invariant, and whenever the text is
// well-formed they describe the same tree as a fresh parse of it.
//
// Seeds are fixed, so a failure names its seed and step. For longer runs:
//   tools/property.sh 50000
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/edit_ops.h"
#include "support/record_check.h"

using namespace vetra::test;

namespace {

int SeedCount() {
    const char* env = std::getenv("VETRA_PROPERTY_SEEDS");
    return env != nullptr ? std::atoi(env) : 2000;
}

TEST(EditProperty, RecordsStayTrueThroughRandomEdits) {
    const int seeds = SeedCount();
    for (int seed = 0; seed < seeds; ++seed) {
        SeededChoices choices{uint64_t(seed)};
        std::u16string text = RandomDocument(choices, 2 + int(choices.Pick(30)));
        vetra::xml::XmlEngine engine(text.c_str());
        ASSERT_EQ(CheckRecords(engine), "") << "seed " << seed << " after the parse";
        // A repaired text may hold levels that no fresh parse gives.
        const bool exactLevels = CheckRecords(engine, {true}).empty();
        for (int step = 0; step < 60; ++step) {
            std::string op = RandomStep(engine, choices);
            std::string problem = CompareAttributes(engine);
            if (problem.empty()) problem = CheckRecords(engine);
            if (problem.empty()) problem = CompareWithReparse(engine, exactLevels);
            ASSERT_EQ(problem, "") << "seed " << seed << " step " << step << " (" << op << ")";
        }
    }
}

} // namespace
