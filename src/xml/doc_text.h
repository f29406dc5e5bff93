// doc_text.h - the document's text: UTF-16 units in one block, always
// followed by a 0 unit.
//
// A std::u16string grows by allocating a fresh block and copying every unit
// into it, so at its peak it holds the old block and the new one. This block
// grows with realloc instead, which extends it in place where the heap has
// room. A file's bytes are converted straight into it, with no zero-filling
// first.
//
// The members that a string has are named as a string's are.
#ifndef VETRA_XML_DOC_TEXT_H
#define VETRA_XML_DOC_TEXT_H

#include <cstddef>
#include <string_view>

#include "xml/xml_types.h"

namespace vetra::xml {

class DocText {
  public:
    DocText() noexcept = default;
    DocText(const DocText& other) { assign(other.c_str(), other.size()); }
    DocText(DocText&& other) noexcept { swap(other); }
    DocText& operator=(const DocText& other);
    DocText& operator=(DocText&& other) noexcept {
        DocText(static_cast<DocText&&>(other)).swap(*this);
        return *this;
    }
    ~DocText();

    const wchar* c_str() const noexcept { return m_pUnits != nullptr ? m_pUnits : kEmpty; }
    std::size_t size() const noexcept { return m_size; }
    std::size_t capacity() const noexcept { return m_capacity; }
    bool empty() const noexcept { return m_size == 0; }
    std::u16string_view View() const noexcept { return {c_str(), m_size}; }

    /// Room for at least `units` units without another allocation. Raises
    /// std::bad_alloc and then leaves the text as it was.
    void reserve(std::size_t units);
    /// Frees room beyond the size.
    void shrink_to_fit() noexcept;
    void clear() noexcept;
    void swap(DocText& other) noexcept;

    /// The text becomes the `n` units at `p`, which may lie inside it.
    void assign(const wchar* p, std::size_t n);
    /// Replaces `count` units at `pos` by the `n` units at `p`, which may lie
    /// inside the text. Needs pos + count <= size().
    void replace(std::size_t pos, std::size_t count, const wchar* p, std::size_t n);
    /// Sets the size to `n` and returns the units, of which those beyond the
    /// old size hold nothing defined until the caller writes them: a
    /// converter writes straight into the text.
    wchar* resize_for_overwrite(std::size_t n);

  private:
    static constexpr wchar kEmpty[1] = {};

    wchar* m_pUnits = nullptr; // m_capacity + 1 units, or null
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

} // namespace vetra::xml

#endif // VETRA_XML_DOC_TEXT_H
