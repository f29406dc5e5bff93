// path_query.cpp - ParsePath: validates an element path and classifies it by
// its head. The whole grammar is checked, steps, predicates and the attribute
// tail, so that a malformed path fails the search instead of matching.
//
// Nothing beyond the head and the first step's offset is kept: the search
// only ever compares the first step's name.
#include "xml/char_sets.h"
#include "xml/xml_engine.h"

namespace vetra::xml {

namespace {

// Behind a name: the next member of PathEndChars, or the end of the text.
int32_t SkipName(const wchar* path, int32_t i) {
    while (path[i] != 0 && !InSet(path[i], PathEndChars))
        ++i;
    return i;
}

bool IsDigit(wchar c) {
    return c >= u'0' && c <= u'9';
}

// Parses the inside of a predicate from just behind its '['; gives the offset
// behind its ']', or -1 if it doesn't parse.
int32_t SkipPredicate(const wchar* path, int32_t i) {
    if (path[i] >= u'1' && path[i] <= u'9') {
        while (IsDigit(path[i]))
            ++i;
    } else if (path[i] == u'@') {
        i = SkipName(path, i + 1);
        if (path[i] == u'=') {
            ++i;
            const wchar quote = path[i];
            if (quote == u'"' || quote == u'\'') {
                ++i;
                while (path[i] != 0 && path[i] != quote)
                    ++i;
                if (path[i] == 0) return -1;
                ++i;
            } else {
                while (path[i] != 0 && path[i] != u']')
                    ++i;
                if (path[i] == 0) return -1;
            }
        }
    } else {
        // A leading 0 lands here too: it is a name, not an index.
        i = SkipName(path, i);
    }
    return path[i] == u']' ? i + 1 : -1;
}

} // namespace

bool ParsePath(PathQuery& query) {
    const wchar* path = query.text;
    query.position = 0;
    if (path == nullptr || path[0] == 0) {
        query.kind = PathQuery::PathAny;
        return true;
    }

    int32_t i = 0;
    if (path[0] == u'/' && path[1] == u'/') {
        query.kind = PathQuery::PathAnywhere;
        i = 2;
    } else if (path[0] == u'/') {
        query.kind = PathQuery::PathAbsolute;
        i = 1;
    } else {
        query.kind = PathQuery::PathRelative;
    }
    if (path[i] == 0) return false;
    const int32_t firstStep = i;

    for (;;) {
        i = SkipName(path, i);
        if (path[i] == u'[') {
            i = SkipPredicate(path, i + 1);
            if (i < 0) return false;
        }
        if (path[i] != u'/') break;
        // A path that searches anywhere names a single step.
        if (query.kind == PathQuery::PathAnywhere) return false;
        ++i;
        if (path[i] == u'@') {
            i = SkipName(path, i + 1);
            break;
        }
        if (path[i] == 0) return false;
    }

    // Whatever stops a step outside a predicate (a space, =, ] or anything
    // behind the attribute tail) makes the path invalid.
    if (path[i] != 0) return false;
    query.position = firstStep;
    return true;
}

} // namespace vetra::xml
