// doc_text.cpp - the document's text block.
#include "xml/doc_text.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <utility>

namespace vetra::xml {

DocText& DocText::operator=(const DocText& other) {
    if (this != &other) assign(other.c_str(), other.size());
    return *this;
}

DocText::~DocText() {
    std::free(m_pUnits);
}

void DocText::reserve(std::size_t units) {
    if (m_pUnits != nullptr && units <= m_capacity) return;
    if (units >= PTRDIFF_MAX / sizeof(wchar) - 1) throw std::bad_alloc();
    void* grown = std::realloc(m_pUnits, (units + 1) * sizeof(wchar));
    if (grown == nullptr) throw std::bad_alloc();
    m_pUnits = static_cast<wchar*>(grown);
    m_capacity = units;
    m_pUnits[m_size] = 0;
}

void DocText::shrink_to_fit() noexcept {
    if (m_pUnits == nullptr || m_capacity == m_size) return;
    // A failed shrink keeps the larger block, which is still good.
    if (void* less = std::realloc(m_pUnits, (m_size + 1) * sizeof(wchar))) {
        m_pUnits = static_cast<wchar*>(less);
        m_capacity = m_size;
    }
}

void DocText::clear() noexcept {
    m_size = 0;
    if (m_pUnits != nullptr) m_pUnits[0] = 0;
}

void DocText::swap(DocText& other) noexcept {
    std::swap(m_pUnits, other.m_pUnits);
    std::swap(m_size, other.m_size);
    std::swap(m_capacity, other.m_capacity);
}

namespace {

bool Inside(const wchar* p, const wchar* units, std::size_t size) {
    return units != nullptr && p >= units && p <= units + size;
}

} // namespace

void DocText::assign(const wchar* p, std::size_t n) {
    if (Inside(p, m_pUnits, m_size)) {
        std::memmove(m_pUnits, p, n * sizeof(wchar));
    } else {
        reserve(n);
        if (n != 0) std::memcpy(m_pUnits, p, n * sizeof(wchar));
    }
    m_size = n;
    m_pUnits[n] = 0;
}

void DocText::replace(std::size_t pos, std::size_t count, const wchar* p, std::size_t n) {
    if (n != 0 && Inside(p, m_pUnits, m_size)) {
        // Rare: a piece of the text put elsewhere in it. A copy keeps it
        // whole while the text moves and grows.
        const std::u16string piece(p, n);
        return replace(pos, count, piece.data(), n);
    }
    const std::size_t newSize = m_size - count + n;
    reserve(newSize);
    wchar* at = m_pUnits + pos;
    if (n != count) std::memmove(at + n, at + count, (m_size - pos - count) * sizeof(wchar));
    if (n != 0) std::memcpy(at, p, n * sizeof(wchar));
    m_size = newSize;
    m_pUnits[m_size] = 0;
}

wchar* DocText::resize_for_overwrite(std::size_t n) {
    reserve(n);
    m_size = n;
    m_pUnits[n] = 0;
    return m_pUnits;
}

} // namespace vetra::xml
