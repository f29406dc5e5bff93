// edit_ops.cpp - random documents and random operations for the property
// test and the editing fuzz target, and the comparison with a fresh parse.
#include "support/edit_ops.h"

#include <sstream>

#include "support/record_check.h"
#include "xml/text_escape.h"

namespace vetra::test {

using namespace vetra::xml;

namespace {

const char16_t* const kNames[] = {u"a", u"b", u"c", u"item", u"a;b"};
const char16_t* const kValues[] = {u"",          u"x",   u"a<b&c>d", u"  spaced  ",
                                   u"q\"uote's", u"]]>", u"&amp;",   u"\u00E9\U0001F600"};
const char16_t* const kFragments[] = {
    u"<n/>",
    u"<n k=\"v\">t</n>",
    u"<n><m/>x<m/></n>",
    u" <n/> ",
    u"<n/><o/>",
    u"<n><o></n>",
    u"text",
    u"",
    u"<!-- c --><n/>",
    u"</z>",
    u"<n><![CDATA[<x>]]></n>",
    // An unterminated tag would join the text behind it into a tag that a
    // fresh parse sees and the edit doesn't: it is a fuzz-only fragment.
};
const char16_t* const kFuzzFragments[] = {u"<n", u"<", u"<n k=\"", u"<!--", u"<![CDATA[x"};

const char16_t* Pick(ChoiceSource& c, const char16_t* const* list, size_t n) {
    return list[c.Pick(uint32_t(n))];
}
#define PICK(c, list) Pick(c, list, sizeof(list) / sizeof(list[0]))

} // namespace

std::u16string RandomDocument(ChoiceSource& c, int maxElements) {
    std::u16string text;
    std::vector<std::u16string> open;
    int elements = 0;
    if (c.Pick(4) == 0) text += u"<?xml version=\"1.0\"?>\r\n";
    while (elements < maxElements || !open.empty()) {
        uint32_t what = elements >= maxElements ? 0 : c.Pick(10);
        if (what == 0 && !open.empty()) {
            if (c.Pick(40) != 0) text += u"</" + open.back() + u">"; // rarely left unended
            open.pop_back();
            if (c.Pick(2)) text += u"\r\n";
            if (open.empty() && elements < maxElements && c.Pick(4) != 0) break;
            continue;
        }
        if (what <= 4 || open.empty()) {
            std::u16string name = PICK(c, kNames);
            text += u"<" + name;
            for (uint32_t k = c.Pick(3); k > 0; --k)
                text += u" k" + name + u"=\"v\"";
            ++elements;
            if (c.Pick(3) == 0) {
                text += u"/>";
            } else {
                text += u">";
                open.push_back(name);
            }
        } else if (what == 5) {
            text += u"text &amp; &#65; ";
        } else if (what == 6) {
            text += u"<![CDATA[cd<>]]>";
        } else if (what == 7) {
            text += u"<!-- note -->";
        } else if (what == 8) {
            text += u"\r\n  ";
        } else if (c.Pick(30) == 0) {
            text += u"</stray>";
        }
    }
    return text;
}

std::string RandomStep(XmlEngine& e, ChoiceSource& c, bool anyFragment) {
    const char16_t* name = PICK(c, kNames);
    const char16_t* value = PICK(c, kValues);
    const char16_t* fragment =
        anyFragment && c.Pick(4) == 0 ? PICK(c, kFuzzFragments) : PICK(c, kFragments);
    switch (c.Pick(22)) {
    case 0:
        e.FindElem(c.Pick(2) ? nullptr : name);
        return "FindElem";
    case 1:
        e.FindChildElem(c.Pick(2) ? nullptr : name);
        return "FindChildElem";
    case 2:
        e.IntoElem();
        return "IntoElem";
    case 3:
        e.OutOfElem();
        return "OutOfElem";
    case 4:
        e.ResetPos();
        return "ResetPos";
    case 5:
        e.ResetMainPos();
        return "ResetMainPos";
    case 6:
        e.ResetChildPos();
        return "ResetChildPos";
    case 7:
        e.AddElement(name, value, c.Pick(2) ? uint32_t(EditCData) : 0u);
        return "AddElem";
    case 8:
        e.AddElement(name, value, EditInsertBefore);
        return "InsertElem";
    case 9:
        e.AddElement(name, value, EditChild);
        return "AddChildElem";
    case 10:
        e.AddSubDocument(fragment, 0);
        return "AddSubDoc";
    case 11:
        e.AddSubDocument(fragment, EditInsertBefore);
        return "InsertSubDoc";
    case 12:
        e.AddSubDocument(fragment, EditChild);
        return "AddChildSubDoc";
    case 13:
        e.RemoveElem();
        return "RemoveElem";
    case 14:
        e.RemoveChildElem();
        return "RemoveChildElem";
    case 15:
        e.WriteAttrib(e.m_mainIndex, name, value, 0);
        return "SetAttrib";
    case 16:
        e.WriteAttrib(e.m_childIndex, name, value, 0);
        return "SetChildAttrib";
    case 17:
        e.WriteData(e.m_mainIndex, value, c.Pick(3) == 0 ? uint32_t(EditCData) : 0u);
        return "SetData";
    case 18:
        e.WriteData(e.m_childIndex, value, c.Pick(2) ? uint32_t(EditKeepRefs) : 0u);
        return "SetChildData";
    case 19:
        e.SavePosition(name);
        return "SavePos";
    case 20:
        e.RestorePosition(name);
        return "RestorePos";
    default: {
        // Read everything at the position; reads must never disturb anything.
        e.ElementData(e.m_mainIndex);
        e.ElementData(e.m_childIndex);
        e.AttribValue(e.m_mainIndex, name);
        e.AttribName(int32_t(c.Pick(4)));
        e.ElementSubDoc(e.m_childIndex);
        e.NodeName();
        return "reads";
    }
    }
}

std::string CompareWithReparse(const XmlEngine& engine, bool compareLevels) {
    XmlEngine fresh(engine.m_docText.c_str());
    if (fresh.Rec(0).Has(ElemIllFormed) || fresh.Rec(0).firstChild == 0 ||
        fresh.Rec(fresh.Rec(0).firstChild).nextSibling != 0)
        return std::string(); // only a well-formed text is compared
    std::vector<RecordView> a = DocumentOrder(engine), b = DocumentOrder(fresh);
    if (a.size() != b.size()) return "element count differs from a fresh parse";
    // Levels are compared relative to the root, and only the structural
    // flags: a fault flag is history that a later edit may have removed.
    const uint32_t structural = ElemFirstSibling | ElemUnended;
    for (size_t i = 0; i < a.size(); ++i) {
        RecordView x = a[i], y = b[i];
        x.level = compareLevels ? x.level - a[0].level : 0;
        y.level = compareLevels ? y.level - b[0].level : 0;
        x.flags &= structural;
        y.flags &= structural;
        if (!(x == y)) {
            std::ostringstream s;
            s << "element " << i << " differs from a fresh parse: start " << x.start << "/"
              << y.start << " length " << x.length << "/" << y.length << " tags " << x.startTagChars
              << "," << x.endTagChars << "/" << y.startTagChars << "," << y.endTagChars << " level "
              << x.level << "/" << y.level;
            return s.str();
        }
    }
    return std::string();
}

std::string CompareAttributes(XmlEngine& engine) {
    if (engine.m_mainIndex == 0 || engine.m_nodeType != NodeElement) return std::string();
    const int32_t start = engine.Rec(engine.m_mainIndex).start + 1;
    const wchar* text = engine.m_docText.c_str();
    for (int32_t index = 0; index < 8; ++index) {
        TokenCursor byIndex(text, engine.m_docFlags, start);
        const bool exists = ScanAttrib(byIndex, nullptr, index);
        const WideString name = exists ? TokenText(byIndex) : WideString();
        if (engine.AttribName(index) != name) return "name " + std::to_string(index);
        if (!exists) break;
        TokenCursor byName(text, engine.m_docFlags, start);
        WideString value;
        if (ScanAttrib(byName, name.c_str(), 0))
            value = DecodeText(text + byName.tokenStart, byName.TokenLength(), engine.m_docFlags);
        if (engine.AttribValue(engine.m_mainIndex, name.c_str()) != value)
            return "value " + std::to_string(index);
    }
    return std::string();
}

} // namespace vetra::test
