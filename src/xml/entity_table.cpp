// entity_table.cpp - the named-entity hash table as constant data.
//
// The rows come from tools/gen_entity_table.py, which also checks the table's
// shape; nothing here runs at start-up.
#include "xml/text_escape.h"

namespace vetra::xml {

const wchar* const EntityTable[kEntityBuckets] = {
#include "xml/entity_table.inc"
};

} // namespace vetra::xml
