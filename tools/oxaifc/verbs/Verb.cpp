// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

constexpr Verb g_verbs[] = {
    {"info", "What a file holds: schema, header, entities by type, memory", verbInfo},
    {"check", "Every error of a file, with line and source text; as a page, too", verbCheck},
    {"show", "Entities with their attributes, values and referrers", verbShow},
    {"diff", "How two models differ: by GlobalId, then by content", verbDiff},
    {"convert", "Reads a file and writes what its project reaches", verbConvert},
    {"extract", "Writes one entity and what it reaches", verbExtract},
    {"set", "Changes one attribute and writes the file again", verbSet},
    {"header", "The header of a file, told or changed; the data stay as they are", verbHeader},
    {"schema", "What a schema says of its entities and types", verbSchema},
};

}   // namespace

std::span<const Verb> verbs() { return g_verbs; }

}   // namespace oxa::tool
