// Fuzz target: the input is a sequence of operations (edits, navigation,
// saving and restoring positions, reads) on a small document that the first
// bytes choose; after every step the main element's attributes must read as
// a scan of the text finds them, and the record invariants must hold.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "support/edit_ops.h"
#include "support/record_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vetra::test::ByteChoices choices(data, size);
    std::u16string text = vetra::test::RandomDocument(choices, 1 + int(choices.Pick(12)));
    vetra::xml::XmlEngine engine(text.c_str());
    for (int step = 0; step < 200 && choices.More(); ++step) {
        std::string op = vetra::test::RandomStep(engine, choices, true);
        std::string problem = vetra::test::CompareAttributes(engine);
        if (problem.empty()) problem = vetra::test::CheckRecords(engine);
        if (!problem.empty()) {
            std::fprintf(stderr, "step %d (%s): %s\n", step, op.c_str(), problem.c_str());
            std::abort();
        }
    }
    return 0;
}
