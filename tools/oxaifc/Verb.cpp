#include "oxaifc/Verb.h"

namespace oxa::tool {

namespace {

constexpr Verb g_verbs[] = {
    {"info", "What a file holds: schema, header, entities by type, memory", verbInfo},
    {"check", "Every error of a file, with line and source text", verbCheck},
    {"schema", "What a schema says of its entities and types", verbSchema},
};

}   // namespace

std::span<const Verb> verbs() { return g_verbs; }

}   // namespace oxa::tool
