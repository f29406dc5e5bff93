// xml_parser.cpp - CVTXmlParser, the exported shell over XmlEngine: two
// pointers, copying and moving, and the path of a computed result.
//
// Every operation forwards to the engine; nothing here knows XML.
#include "vetra/xml_parser.h"

#include <charconv>
#include <cstdio>
#include <new>
#include <type_traits>
#include <utility>

#include "text/document_file.h"
#include "xml/xml_engine.h"

using vetra::xml::wchar;
using vetra::xml::WideString;
using vetra::xml::XmlEngine;

static_assert(sizeof(vtchar) == sizeof(wchar), "document text is 16-bit units");

namespace {

const wchar* In(const vtchar* text) {
    return reinterpret_cast<const wchar*>(text);
}
const vtchar* Out(const wchar* text) {
    return reinterpret_cast<const vtchar*>(text);
}

const vtchar kEmpty[1] = {0};

} // namespace

CVTXmlParser::CVTXmlParser() : m_pEngine(new XmlEngine), m_pResult(nullptr) {}

CVTXmlParser::~CVTXmlParser() {
    delete m_pEngine;
    delete m_pResult;
}

CVTXmlParser::CVTXmlParser(const CVTXmlParser& other)
    : m_pEngine(new XmlEngine), m_pResult(nullptr) {
    try {
        m_pEngine->CopyFrom(*other.m_pEngine);
    } catch (...) {
        delete m_pEngine;
        throw;
    }
}

CVTXmlParser& CVTXmlParser::operator=(const CVTXmlParser& other) {
    if (this != &other) m_pEngine->CopyFrom(*other.m_pEngine);
    return *this;
}

CVTXmlParser::CVTXmlParser(CVTXmlParser&& other) : m_pEngine(new XmlEngine), m_pResult(nullptr) {
    std::swap(m_pEngine, other.m_pEngine);
}

CVTXmlParser& CVTXmlParser::operator=(CVTXmlParser&& other) noexcept {
    std::swap(m_pEngine, other.m_pEngine);
    return *this;
}

// A computed result: the engine writes the value into m_pResult, reusing
// its memory, and the characters stay valid until the next computed result.
// Creating m_pResult is the one allocation that never raises: without
// memory the answer is the empty text.
template <typename Read> const vtchar* Computed(std::u16string*& result, Read read) {
    if (result == nullptr) {
        result = new (std::nothrow) std::u16string();
        if (result == nullptr) return kEmpty;
    }
    read(*result);
    return Out(result->c_str());
}

int CVTXmlParser::SetDoc(const vtchar* text) {
    return m_pEngine->SetDocText(In(text)) ? 1 : 0;
}

const vtchar* CVTXmlParser::GetDoc() const {
    return Out(m_pEngine->m_docText.c_str());
}

// --- Files -----------------------------------------------------------------

namespace {

int LoadFile(XmlEngine& engine, const char* path) {
    if (engine.m_docFlags & vetra::xml::DocStreamModes) return 0;
    if (vetra::text::LoadTextFile(path, engine.m_docText, engine.m_resultLog, engine.m_docFlags))
        return engine.ParseDocument() ? 1 : 0;
    // The text is empty now, so the records must not describe the old one: the parse of
    // an empty text resets them and logs nothing.
    engine.ParseDocument();
    return 0;
}

int SaveFile(XmlEngine& engine, const char* path) {
    if (engine.m_docFlags & vetra::xml::DocStreamModes) return 0;
    const vetra::xml::DocText& text = engine.m_docText;
    return vetra::text::SaveTextFile(path, text.c_str(), int32_t(text.size()), engine.m_resultLog,
                                     engine.m_docFlags)
               ? 1
               : 0;
}

// The UTF-8 form of a UTF-16 path; null for one with a lone surrogate, which the file
// layer reports.
const char* Utf8Path(const vtchar* path, std::string& bytes) {
    return vetra::text::WidePathToUtf8(In(path), bytes) ? bytes.c_str() : nullptr;
}

} // namespace

int CVTXmlParser::Load(const char* path) {
    return path == nullptr || *path == 0 ? 0 : LoadFile(*m_pEngine, path);
}

int CVTXmlParser::Load(const vtchar* path) {
    std::string bytes;
    return path == nullptr || *path == 0 ? 0 : LoadFile(*m_pEngine, Utf8Path(path, bytes));
}

int CVTXmlParser::Save(const char* path) {
    return path == nullptr || *path == 0 ? 0 : SaveFile(*m_pEngine, path);
}

int CVTXmlParser::Save(const vtchar* path) {
    std::string bytes;
    return path == nullptr || *path == 0 ? 0 : SaveFile(*m_pEngine, Utf8Path(path, bytes));
}

const vtchar* CVTXmlParser::GetResultLog() {
    return Computed(m_pResult, [&](WideString& out) { out = m_pEngine->m_resultLog; });
}

// --- Navigation ------------------------------------------------------------

int CVTXmlParser::FindElem(const vtchar* path) {
    return m_pEngine->FindElem(In(path));
}
int CVTXmlParser::FindChildElem(const vtchar* path) {
    return m_pEngine->FindChildElem(In(path));
}
int CVTXmlParser::IntoElem() {
    return m_pEngine->IntoElem();
}
int CVTXmlParser::OutOfElem() {
    return m_pEngine->OutOfElem();
}
void CVTXmlParser::ResetPos() {
    m_pEngine->ResetPos();
}
void CVTXmlParser::ResetMainPos() {
    m_pEngine->ResetMainPos();
}
void CVTXmlParser::ResetChildPos() {
    m_pEngine->ResetChildPos();
}

// --- Reading ---------------------------------------------------------------

const vtchar* CVTXmlParser::GetTagName() {
    return Computed(m_pResult, [&](WideString& out) { m_pEngine->NodeName(out); });
}
const vtchar* CVTXmlParser::GetChildTagName() {
    return Computed(m_pResult,
                    [&](WideString& out) { m_pEngine->ElementName(m_pEngine->m_childIndex, out); });
}
const vtchar* CVTXmlParser::GetAttribName(int index) {
    return Computed(m_pResult, [&](WideString& out) { m_pEngine->AttribName(index, out); });
}
const vtchar* CVTXmlParser::GetData() {
    return Computed(m_pResult,
                    [&](WideString& out) { m_pEngine->ElementData(m_pEngine->m_mainIndex, out); });
}
const vtchar* CVTXmlParser::GetChildData() {
    return Computed(m_pResult,
                    [&](WideString& out) { m_pEngine->ElementData(m_pEngine->m_childIndex, out); });
}
const vtchar* CVTXmlParser::GetAttrib(const vtchar* name) {
    return Computed(m_pResult, [&](WideString& out) {
        m_pEngine->AttribValue(m_pEngine->m_mainIndex, In(name), out);
    });
}
const vtchar* CVTXmlParser::GetChildAttrib(const vtchar* name) {
    return Computed(m_pResult, [&](WideString& out) {
        m_pEngine->AttribValue(m_pEngine->m_childIndex, In(name), out);
    });
}
const vtchar* CVTXmlParser::GetSubDoc() {
    return Computed(
        m_pResult, [&](WideString& out) { m_pEngine->ElementSubDoc(m_pEngine->m_mainIndex, out); });
}
const vtchar* CVTXmlParser::GetChildSubDoc() {
    return Computed(m_pResult, [&](WideString& out) {
        m_pEngine->ElementSubDoc(m_pEngine->m_childIndex, out);
    });
}

// --- Editing ---------------------------------------------------------------

namespace {

using vetra::xml::EditChild;
using vetra::xml::EditInsertBefore;

// A number as wide text. The buffer is the limit of a formatted value: a
// text that wouldn't fit is refused rather than cut short. Integers are
// written by to_chars, which gives what "%d" and its kin give; a double
// goes through the C library's "%f".
struct Number {
    wchar text[128];
    bool ok = false;
    template <typename T> explicit Number(T value) {
        static_assert(std::is_integral_v<T>, "doubles take the format");
        char narrow[32];
        const std::to_chars_result r = std::to_chars(narrow, narrow + sizeof narrow, value);
        Widen(narrow, int(r.ptr - narrow));
    }
    Number(const char* format, double value) {
        char narrow[sizeof text / sizeof text[0]];
        int n = std::snprintf(narrow, sizeof narrow, format, value);
        if (n >= 0 && size_t(n) < sizeof narrow) Widen(narrow, n);
    }
    void Widen(const char* narrow, int n) {
        for (int i = 0; i < n; ++i)
            text[i] = wchar(static_cast<unsigned char>(narrow[i]));
        text[n] = 0;
        ok = true;
    }
};

const wchar* OrEmpty(const vtchar* text) {
    return text != nullptr ? In(text) : u"";
}

} // namespace

int CVTXmlParser::AddElem(const vtchar* name, const vtchar* value) {
    if (name == nullptr) return 0;
    return m_pEngine->AddElement(In(name), OrEmpty(value), 0) ? 1 : 0;
}

#define VT_NUMERIC_ADD_ELEM(type, args)                                                            \
    int CVTXmlParser::AddElem(const vtchar* name, type value) {                                    \
        Number number args;                                                                        \
        if (!number.ok || name == nullptr) return 0;                                               \
        return m_pEngine->AddElement(In(name), number.text, 0) ? 1 : 0;                            \
    }
VT_NUMERIC_ADD_ELEM(unsigned long long, (value))
VT_NUMERIC_ADD_ELEM(long long, (value))
VT_NUMERIC_ADD_ELEM(double, ("%f", value))
VT_NUMERIC_ADD_ELEM(unsigned int, (value))
VT_NUMERIC_ADD_ELEM(int, (value))
#undef VT_NUMERIC_ADD_ELEM

int CVTXmlParser::InsertElem(const vtchar* name, const vtchar* value) {
    if (name == nullptr) return 0;
    return m_pEngine->AddElement(In(name), In(value), EditInsertBefore) ? 1 : 0;
}

int CVTXmlParser::AddChildElem(const vtchar* name, const vtchar* value) {
    if (name == nullptr) return 0;
    return m_pEngine->AddElement(In(name), OrEmpty(value), EditChild) ? 1 : 0;
}

int CVTXmlParser::AddSubDoc(const vtchar* text) {
    return m_pEngine->AddSubDocument(OrEmpty(text), 0) ? 1 : 0;
}
int CVTXmlParser::InsertSubDoc(const vtchar* text) {
    return m_pEngine->AddSubDocument(OrEmpty(text), EditInsertBefore) ? 1 : 0;
}
int CVTXmlParser::AddChildSubDoc(const vtchar* text) {
    return m_pEngine->AddSubDocument(OrEmpty(text), EditChild) ? 1 : 0;
}

int CVTXmlParser::RemoveElem() {
    return m_pEngine->RemoveElem();
}
int CVTXmlParser::RemoveChildElem() {
    return m_pEngine->RemoveChildElem();
}

// Attributes: one engine operation behind every name and overload.
namespace {
int WriteAttrib(XmlEngine& engine, int32_t index, const vtchar* name, const wchar* value) {
    if (name == nullptr) return 0;
    return engine.WriteAttrib(index, In(name), value, 0) ? 1 : 0;
}
} // namespace

int CVTXmlParser::AddAttrib(const vtchar* name, const vtchar* value) {
    return WriteAttrib(*m_pEngine, m_pEngine->m_mainIndex, name, OrEmpty(value));
}

#define VT_NUMERIC_ATTRIB(method, index, type, args)                                               \
    int CVTXmlParser::method(const vtchar* name, type value) {                                     \
        Number number args;                                                                        \
        if (!number.ok) return 0;                                                                  \
        return WriteAttrib(*m_pEngine, m_pEngine->index, name, number.text);                       \
    }
VT_NUMERIC_ATTRIB(AddAttrib, m_mainIndex, unsigned long long, (value))
VT_NUMERIC_ATTRIB(AddAttrib, m_mainIndex, long long, (value))
VT_NUMERIC_ATTRIB(AddAttrib, m_mainIndex, double, ("%f", value))
VT_NUMERIC_ATTRIB(AddAttrib, m_mainIndex, unsigned int, (value))
VT_NUMERIC_ATTRIB(AddAttrib, m_mainIndex, int, (value))
VT_NUMERIC_ATTRIB(SetAttrib, m_mainIndex, int, (value))
VT_NUMERIC_ATTRIB(AddChildAttrib, m_childIndex, int, (value))
VT_NUMERIC_ATTRIB(SetChildAttrib, m_childIndex, int, (value))
#undef VT_NUMERIC_ATTRIB

int CVTXmlParser::SetAttrib(const vtchar* name, const vtchar* value) {
    return AddAttrib(name, value);
}
int CVTXmlParser::AddChildAttrib(const vtchar* name, const vtchar* value) {
    return WriteAttrib(*m_pEngine, m_pEngine->m_childIndex, name, OrEmpty(value));
}
int CVTXmlParser::SetChildAttrib(const vtchar* name, const vtchar* value) {
    return AddChildAttrib(name, value);
}

int CVTXmlParser::SetData(const vtchar* text, int flags) {
    return m_pEngine->WriteData(m_pEngine->m_mainIndex, OrEmpty(text), uint32_t(flags)) ? 1 : 0;
}
int CVTXmlParser::SetChildData(const vtchar* text, int flags) {
    return m_pEngine->WriteData(m_pEngine->m_childIndex, OrEmpty(text), uint32_t(flags)) ? 1 : 0;
}

// --- Saved positions -------------------------------------------------------

int CVTXmlParser::SavePos(const vtchar* name) {
    return m_pEngine->SavePosition(OrEmpty(name)) ? 1 : 0;
}
int CVTXmlParser::RestorePos(const vtchar* name) {
    return m_pEngine->RestorePosition(OrEmpty(name)) ? 1 : 0;
}
