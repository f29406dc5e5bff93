// Tests of FindAny: every stop character at every place and alignment, with
// stops just in front of the start that must not count; and of the bounded
// search.
#include <gtest/gtest.h>

#include <memory>

#include "xml/run_search.h"

using namespace vetra::xml;

namespace {

TEST(RunSearch, FindsTheFirstStopAtEveryPlaceAndAlignment) {
    for (int shift = 0; shift < 8; ++shift) {
        for (int length = 0; length < 40; ++length) {
            for (int stop = 0; stop <= length; ++stop) {
                std::unique_ptr<wchar[]> block(new wchar[size_t(shift + length + 1)]);
                wchar* text = block.get() + shift;
                for (int k = 0; k < length; ++k)
                    text[k] = wchar(0x4E00 + k); // no stops
                text[length] = 0;                // the NUL always stops
                if (stop < length) text[stop] = u"<>\""[stop % 3];
                // Stops in front of the start, in the same block, don't count.
                const int32_t from = stop % 8;
                for (int k = 0; k < from; ++k)
                    text[k] = u'<';
                ASSERT_EQ(FindAny(text, from, u'<', u'>', u'"'), stop)
                    << "shift " << shift << " length " << length;
            }
        }
    }
}

TEST(RunSearch, BoundedSearchStopsAtItsEnd) {
    const char16_t text[] = u"0123456789abcdefghij<klm";
    for (int32_t end = 0; end <= 24; ++end)
        for (int32_t from = 0; from <= end; ++from)
            ASSERT_EQ(FindAnyBefore(text, from, end, u'<', u'<', u'<'),
                      end > 20 && from <= 20 ? 20 : end);
}

} // namespace
