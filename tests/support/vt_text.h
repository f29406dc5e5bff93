// vt_text.h - literals and strings of the public surface's character type, for tests that
// build on every system: VT("...") is u"..." where vtchar is char16_t (Linux) and L"..."
// where it is wchar_t (Windows); the test build names the prefix in VETRA_TEST_LITERAL.
#ifndef VETRA_TESTS_VT_TEXT_H
#define VETRA_TESTS_VT_TEXT_H

#include <string>

#include "vetra/vetra_export.h"

#define VETRA_TEST_JOIN(prefix, literal) prefix##literal
#define VETRA_TEST_PREFIXED(prefix, literal) VETRA_TEST_JOIN(prefix, literal)
#define VT(literal) VETRA_TEST_PREFIXED(VETRA_TEST_LITERAL, literal)

using vtstring = std::basic_string<vtchar>;

#endif // VETRA_TESTS_VT_TEXT_H
