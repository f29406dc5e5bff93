// edit_ops.h - random sequences of editing and navigation operations on a
// document, shared by the property test and the editing fuzz target.
//
// Each step reads its choices from a byte source, so the same code serves a
// seeded random generator and a fuzzer's input.
#ifndef VETRA_TESTS_EDIT_OPS_H
#define VETRA_TESTS_EDIT_OPS_H

#include <cstdint>
#include <string>

#include "xml/xml_engine.h"

namespace vetra::test {

/// Where a step's choices come from.
class ChoiceSource {
  public:
    virtual ~ChoiceSource() = default;
    /// A number in [0, n), n > 0.
    virtual uint32_t Pick(uint32_t n) = 0;
    /// False once a fuzzer's input is used up.
    virtual bool More() const { return true; }
};

/// A deterministic generator (xorshift), for seeded property runs.
class SeededChoices : public ChoiceSource {
  public:
    explicit SeededChoices(uint64_t seed) : m_state(seed * 0x9E3779B97F4A7C15ULL + 1) {}
    uint32_t Pick(uint32_t n) override {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 7;
        m_state ^= m_state << 17;
        return uint32_t(m_state % n);
    }

  private:
    uint64_t m_state;
};

/// Choices read from bytes; when they run out, More() turns false and Pick
/// gives 0.
class ByteChoices : public ChoiceSource {
  public:
    ByteChoices(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
    uint32_t Pick(uint32_t n) override {
        if (m_pos >= m_size) return 0;
        return m_data[m_pos++] % n;
    }
    bool More() const override { return m_pos < m_size; }

  private:
    const uint8_t* m_data;
    size_t m_size;
    size_t m_pos = 0;
};

/// A random small document text: nested elements with attributes, text with
/// references, CDATA, comments and whitespace; sometimes ill-formed.
std::u16string RandomDocument(ChoiceSource& choices, int maxElements);

/// Runs one random operation on `engine`; returns its name for messages.
/// With `anyFragment`, sub-documents may also be unterminated pieces of tags.
std::string RandomStep(xml::XmlEngine& engine, ChoiceSource& choices, bool anyFragment = false);

/// Empty if the engine's records agree with a fresh parse of its text
/// whenever that text is well-formed, else what differs. Levels are left out
/// unless `compareLevels`: children of an unended element keep their levels
/// when the repair moves them up, and an edit that later makes the text
/// well-formed doesn't renumber them.
std::string CompareWithReparse(const xml::XmlEngine& engine, bool compareLevels = true);

/// Empty if the attributes of the main element, read through the engine (and
/// so through the names it keeps of the last tag read), are what a scan of
/// the text from the tag's start finds; else the first that differs.
std::string CompareAttributes(xml::XmlEngine& engine);

} // namespace vetra::test

#endif // VETRA_TESTS_EDIT_OPS_H
