// SPDX-License-Identifier: Apache-2.0
// ExpressText: a schema in EXPRESS (ISO 10303-11), long form.

#include <memory>
#include <vector>

#include "Fuzz.h"
#include "provider/SchemaLoader.h"

namespace oxa::fuzz {

void vRun(std::string_view input) {
    const ExactBytes text(input);
    std::vector<ifc::SchemaMessage> messages;
    const auto pSchema = ifc::SchemaLoader::pSchemaFromExpress(text.text(), messages);
    vExpect((pSchema == nullptr) == !messages.empty(), "a schema, or why there is none");
    for (const ifc::SchemaMessage& message : messages)
        vExpect(message.iLine >= 1 && message.iColumn >= 1 && !message.sText.empty(), "a message has place and text");
    if (!pSchema) return;
    for (const ifc::def::schema::Schema::Record& record : pSchema->objects) {
        const auto* pType = ifc::def::schema::pAsEntity(record.pObject);
        if (!pType) continue;
        (void)pType->allAttributes();
        (void)pType->allInverseAttributes();
    }
}

}   // namespace oxa::fuzz
