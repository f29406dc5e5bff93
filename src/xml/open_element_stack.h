// open_element_stack.h - the names of the elements a parse has open, so
// that an end tag can be matched against them, innermost first.
//
// Entry 0 is never used; entry `depth` is the innermost open element. A name
// is kept as its place in the text being parsed, which doesn't change during
// the parse, so opening an element copies nothing.
#ifndef VETRA_XML_OPEN_ELEMENT_STACK_H
#define VETRA_XML_OPEN_ELEMENT_STACK_H

#include <cstdint>
#include <memory>

#include "xml/xml_types.h"

namespace vetra::xml {

class OpenElementStack {
  public:
    static constexpr int32_t kInitialCapacity = 7;

    /// A name: `length` characters at `name`.
    struct Name {
        const wchar* name;
        int32_t length;
    };

    OpenElementStack() : m_entries(new Name[kInitialCapacity]) {}

    void Push(const wchar* name, int32_t length) {
        ++depth;
        if (depth == capacity) {
            size_t largerSize = size_t(uint32_t(capacity)) * 2;
            std::unique_ptr<Name[]> larger(new Name[largerSize]);
            for (int32_t i = 1; i < depth; ++i)
                larger[i] = m_entries[i];
            m_entries = std::move(larger);
            capacity *= 2;
        }
        m_entries[depth] = {name, length};
    }
    void Pop() { --depth; }
    const Name& Entry(int32_t i) const { return m_entries[i]; }

    int32_t depth = 0;                   // number of open elements
    int32_t capacity = kInitialCapacity; // number of entries

  private:
    std::unique_ptr<Name[]> m_entries;
};

} // namespace vetra::xml

#endif // VETRA_XML_OPEN_ELEMENT_STACK_H
