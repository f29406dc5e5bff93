// open_element_stack.h - the names of the elements a parse has open, so
// that an end tag can be matched against them, innermost first.
//
// Entry 0 is never used; entry `depth` is the innermost open element. Popped
// strings stay behind and are overwritten, so a parse reuses their memory.
#ifndef VETRA_XML_OPEN_ELEMENT_STACK_H
#define VETRA_XML_OPEN_ELEMENT_STACK_H

#include <cstdint>
#include <memory>
#include <utility>

#include "xml/xml_types.h"

namespace vetra::xml {

class OpenElementStack {
  public:
    static constexpr int32_t kInitialCapacity = 7;

    OpenElementStack() : m_entries(new WideString[kInitialCapacity]) {}

    /// Pushes the name of `length` characters at `name`.
    void Push(const wchar* name, int32_t length) {
        ++depth;
        if (depth == capacity) {
            size_t largerSize = size_t(uint32_t(capacity)) * 2;
            std::unique_ptr<WideString[]> larger(new WideString[largerSize]);
            for (int32_t i = 1; i < depth; ++i) larger[i] = std::move(m_entries[i]);
            m_entries = std::move(larger);
            capacity *= 2;
        }
        m_entries[depth].assign(name, size_t(length));
    }
    void Pop() { --depth; }
    const WideString& Entry(int32_t i) const { return m_entries[i]; }

    int32_t depth = 0;                   // number of open elements
    int32_t capacity = kInitialCapacity; // number of entries

  private:
    std::unique_ptr<WideString[]> m_entries;
};

} // namespace vetra::xml

#endif // VETRA_XML_OPEN_ELEMENT_STACK_H
