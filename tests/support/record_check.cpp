// record_check.cpp - the record invariant checker and the document-order view.
#include "support/record_check.h"

#include <algorithm>
#include <sstream>

namespace vetra::test {

using namespace vetra::xml;

namespace {

class Checker {
  public:
    Checker(const XmlEngine& e, CheckOptions o) : engine(e), options(o) {}
    std::string Run();

  private:
    bool Fail(int32_t index, const std::string& what) {
        if (error.empty()) {
            std::ostringstream s;
            s << "record " << index << ": " << what;
            error = s.str();
        }
        return false;
    }
    bool InRange(int32_t index) const { return index > 0 && index < engine.m_nextRecord; }
    bool CheckElement(int32_t index, int32_t parent);
    bool CheckChildren(int32_t parent);

    const XmlEngine& engine;
    CheckOptions options;
    std::string error;
    std::vector<uint8_t> seen;
    int32_t textLength = 0;
};

bool Checker::CheckElement(int32_t i, int32_t parent) {
    const ElementRecord& r = engine.Rec(i);
    const std::u16string_view text = engine.m_docText.View();
    if (r.Has(ElemFreed)) return Fail(i, "freed record is linked");
    if (r.parent != parent) return Fail(i, "parent link differs from the chain it is in");
    if (r.start < 0 || r.length < 0 || int64_t(r.start) + r.length > textLength)
        return Fail(i, "extent outside the text");
    int32_t stc = r.StartTagChars(), etc = r.EndTagChars();
    if (stc < 3 || stc > r.length) return Fail(i, "bad startTagChars");
    if (text[size_t(r.start)] != u'<' || text[size_t(r.start + stc - 1)] != u'>')
        return Fail(i, "start tag not enclosed in < >");
    if (etc == 0) {
        if (r.length != stc) return Fail(i, "no end tag but length != startTagChars");
    } else {
        if (r.length < stc + etc) return Fail(i, "content length negative");
        size_t endTag = size_t(r.start + r.length - etc);
        if (text[endTag] != u'<' || text[endTag + 1] != u'/' ||
            text[size_t(r.start + r.length - 1)] != u'>')
            return Fail(i, "end tag not enclosed in </ >");
    }
    if (r.Has(ElemUnended) && (etc != 0 || r.firstChild != 0))
        return Fail(i, "unended element with end tag or children");
    uint32_t known = ElemFirstSibling | ElemUnended | ElemFaultInside;
    if (r.Flags() & ~known) return Fail(i, "unknown flag bits");
    if (parent != 0) {
        int32_t want = engine.Rec(parent).Level() + 1;
        if (r.Level() < want && r.Level() != int32_t(ElementRecord::kLevelMask))
            return Fail(i, "level below parent's + 1");
        if (options.strictLevels && r.Level() != want) return Fail(i, "level != parent's + 1");
    } else if (options.strictLevels && r.Level() != 0) {
        return Fail(i, "document-level element with level != 0");
    }
    return true;
}

bool Checker::CheckChildren(int32_t parent) {
    const ElementRecord& p = engine.Rec(parent);
    int32_t first = p.firstChild;
    if (first == 0) return true;
    if (!InRange(first)) return Fail(parent, "firstChild out of range");
    int32_t lo = parent == 0 ? 0 : p.start + p.StartTagChars();
    int32_t hi = parent == 0 ? textLength : p.start + p.length - p.EndTagChars();
    if (parent != 0 && p.Has(ElemUnended)) return Fail(parent, "unended element with children");
    int32_t previous = 0, last = 0;
    int32_t prevEnd = lo;
    for (int32_t c = first; c != 0; c = engine.Rec(c).nextSibling) {
        if (!InRange(c)) return Fail(previous, "nextSibling out of range");
        if (seen[size_t(c)]) return Fail(c, "reached twice (cycle or shared child)");
        seen[size_t(c)] = 1;
        const ElementRecord& r = engine.Rec(c);
        if (!CheckElement(c, parent)) return false;
        if (r.Has(ElemFirstSibling) != (c == first))
            return Fail(c, "ElemFirstSibling not exactly on the first child");
        if (c != first && r.prevSibling != previous) return Fail(c, "prevSibling breaks the chain");
        if (r.start < prevEnd) return Fail(c, "overlaps its previous sibling or its parent's tag");
        prevEnd = r.start + r.length;
        if (prevEnd > hi) return Fail(c, "extends beyond its parent's content");
        previous = last = c;
    }
    if (engine.Rec(first).prevSibling != last)
        return Fail(first, "first child's prevSibling is not the last child");
    return true;
}

std::string Checker::Run() {
    textLength = int32_t(engine.m_docText.size());
    if (engine.m_nextRecord < 1 || engine.m_nextRecord > engine.m_pStore->Size())
        return "m_nextRecord outside the store";
    const ElementRecord& doc = engine.Rec(0);
    if (doc.start != 0 || doc.parent != 0 || doc.nextSibling != 0 || doc.prevSibling != 0 ||
        doc.tagLengths != 0 || doc.Level() != 0)
        return "record 0 has fields that must be 0";
    if (doc.Flags() & ~uint32_t(ElemIllFormed | ElemFaultInside)) return "record 0 has bad flags";
    if (doc.length != textLength) return "record 0 length != text length";

    seen.assign(size_t(engine.m_nextRecord), 0);
    // Breadth-first over parents, iteratively.
    std::vector<int32_t> queue{0};
    for (size_t q = 0; q < queue.size(); ++q) {
        int32_t parent = queue[q];
        if (!CheckChildren(parent)) return error;
        for (int32_t c = engine.Rec(parent).firstChild; c != 0; c = engine.Rec(c).nextSibling)
            queue.push_back(c);
    }
    int32_t reachable = int32_t(queue.size()) - 1;
    int32_t freed = 0;
    for (int32_t f = engine.m_freedHead; f != 0; f = engine.Rec(f).nextSibling) {
        if (!InRange(f) || seen[size_t(f)] == 2) return "freed chain broken or cyclic";
        if (seen[size_t(f)] == 1) return "a linked record is on the freed chain";
        if (engine.Rec(f).levelFlags != ElemFreed) return "freed record with other bits";
        seen[size_t(f)] = 2;
        ++freed;
    }
    if (reachable + freed != engine.m_nextRecord - 1)
        return "records in use + freed != records taken";

    // The position triple.
    auto live = [&](int32_t i) { return i == 0 || (InRange(i) && seen[size_t(i)] == 1); };
    if (!live(engine.m_parentIndex) || !live(engine.m_mainIndex) || !live(engine.m_childIndex))
        return "position names a record not in the tree";
    if (engine.m_mainIndex != 0 && engine.Rec(engine.m_mainIndex).parent != engine.m_parentIndex)
        return "main position is not a child of the parent position";
    if (engine.m_childIndex != 0 && engine.Rec(engine.m_childIndex).parent != engine.m_mainIndex)
        return "child position is not a child of the main position";
    if (engine.m_nodeLength == 0 && engine.m_nodeType != (engine.m_mainIndex != 0 ? 1 : 0))
        return "m_nodeType disagrees with the main position";
    return std::string();
}

} // namespace

std::string CheckRecords(const XmlEngine& engine, CheckOptions options) {
    return Checker(engine, options).Run();
}

std::string Triple(const XmlEngine& e) {
    auto name = [&](int32_t i) {
        if (i == 0) return std::string("-");
        WideString n = e.ElementName(i);
        return std::string(n.begin(), n.end());
    };
    return name(e.m_parentIndex) + "," + name(e.m_mainIndex) + "," + name(e.m_childIndex);
}

std::vector<RecordView> DocumentOrder(const XmlEngine& engine) {
    std::vector<RecordView> out;
    std::vector<std::pair<int32_t, int32_t>> stack; // (record, depth), pre-order
    auto pushChildren = [&](int32_t parent, int32_t depth) {
        size_t mark = stack.size();
        for (int32_t k = engine.Rec(parent).firstChild; k != 0; k = engine.Rec(k).nextSibling)
            stack.push_back({k, depth});
        std::reverse(stack.begin() + long(mark), stack.end()); // first child pops first
        return int32_t(stack.size() - mark);
    };
    pushChildren(0, 0);
    while (!stack.empty()) {
        auto [i, depth] = stack.back();
        stack.pop_back();
        const ElementRecord& r = engine.Rec(i);
        out.push_back({r.start, r.length, r.StartTagChars(), r.EndTagChars(), r.Level(), r.Flags(),
                       depth, 0});
        out.back().childCount = pushChildren(i, depth + 1);
    }
    return out;
}

} // namespace vetra::test
