// navigation.cpp - moving the position triple: FindElem and FindChildElem
// step through siblings by path, IntoElem and OutOfElem shift a level, and
// the resets move back.
//
// A search never walks the tree: it looks at the following siblings of one
// level, reading each candidate's name from the text again.
#include "xml/xml_engine.h"

namespace vetra::xml {

int32_t XmlEngine::FindSibling(int32_t parent, int32_t after, const PathQuery& query) {
    if (query.kind != PathQuery::PathAny && query.kind != PathQuery::PathRelative) return 0;
    int32_t candidate = after != 0 ? Rec(after).nextSibling : Rec(parent).firstChild;
    if (query.kind == PathQuery::PathAny) return candidate;
    const wchar* name = query.text + query.position;
    const bool ignoreCase = (m_docFlags & DocIgnoreCase) != 0;
    for (; candidate != 0; candidate = Rec(candidate).nextSibling) {
        const wchar* word;
        const int32_t length = ElementNameSpan(candidate, word);
        if (TokenEquals(word, length, name, ignoreCase)) return candidate;
    }
    return 0;
}

namespace {

PathQuery MakeQuery(const wchar* path) {
    PathQuery query;
    query.text = path;
    // The usual step to the next element needs no parse.
    if (path != nullptr && !ParsePath(query)) query.kind = PathQuery::PathInvalid;
    return query;
}

} // namespace

int XmlEngine::FindElem(const wchar* path) {
    if (m_docFlags & DocWriteStream) return 0;
    int32_t found = FindSibling(m_parentIndex, m_mainIndex, MakeQuery(path));
    if (found == 0) return 0;
    m_parentIndex = Rec(found).parent;
    m_mainIndex = found;
    m_childIndex = 0;
    SettleNode();
    return 1;
}

int XmlEngine::FindChildElem(const wchar* path) {
    if (m_docFlags & DocStreamModes) return 0;
    // Without a main position the child search first takes the next element
    // at this level, and keeps it even if the child search then fails.
    if (m_mainIndex == 0) FindElem(nullptr);
    int32_t found = FindSibling(m_mainIndex, m_childIndex, MakeQuery(path));
    if (found == 0) return 0;
    m_childIndex = found;
    m_mainIndex = Rec(found).parent;
    m_parentIndex = Rec(m_mainIndex).parent;
    SettleNode();
    return 1;
}

int XmlEngine::IntoElem() {
    if (m_mainIndex == 0 || m_nodeType != NodeElement) return 0;
    m_parentIndex = m_mainIndex;
    m_mainIndex = m_childIndex;
    m_childIndex = 0;
    SettleNode();
    return 1;
}

int XmlEngine::OutOfElem() {
    if (m_parentIndex == 0) return 0;
    m_childIndex = m_mainIndex;
    m_mainIndex = m_parentIndex;
    m_parentIndex = Rec(m_mainIndex).parent;
    SettleNode();
    return 1;
}

void XmlEngine::ResetChildPos() {
    m_childIndex = 0;
    SettleNode();
}

void XmlEngine::ResetMainPos() {
    m_mainIndex = 0;
    m_childIndex = 0;
    SettleNode();
}

void XmlEngine::ResetPos() {
    m_parentIndex = m_mainIndex = m_childIndex = 0;
    SettleNode();
}

} // namespace vetra::xml
