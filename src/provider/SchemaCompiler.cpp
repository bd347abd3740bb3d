// SPDX-License-Identifier: Apache-2.0
// oxa-schema-compiler: makes a fact table of a published EXPRESS text, for schemas/.
//
// Usage    oxa-schema-compiler NAME TEXT.exp [BASENAME BASETEXT.exp] > schemas/NAME.facts
//          With a base the table holds the differences to it. NAME is what the table says, whatever the text
//          does.
// Exit     0; 1 when a text cannot be read or is at fault, with "file:line:column: message" for each fault;
//          2 when called otherwise.
#include <fstream>
#include <iostream>
#include <iterator>

#include "provider/FactTable.h"
#include "provider/SchemaLoader.h"

namespace {

// Null after its messages.
std::unique_ptr<oxa::ifc::def::SchemaPset> pSchemaFromFile(const char* sName, const char* sPath) {
    std::ifstream stream(sPath, std::ios::binary);
    const std::string sText(std::istreambuf_iterator<char>(stream), {});
    if (!stream && sText.empty()) {
        std::cerr << sPath << ": cannot be read\n";
        return nullptr;
    }
    std::vector<oxa::ifc::SchemaMessage> messages;
    auto pSchema = oxa::ifc::SchemaLoader::pSchemaFromExpress(sText, messages);
    for (const oxa::ifc::SchemaMessage& message : messages)
        std::cerr << sPath << ':' << message.iLine << ':' << message.iColumn << ": " << message.sText << '\n';
    if (pSchema) pSchema->sName = sName;
    return pSchema;
}

}   // namespace

int main(int iCount, char** arguments) {
    if (iCount != 3 && iCount != 5) {
        std::cerr << "usage: oxa-schema-compiler NAME TEXT.exp [BASENAME BASETEXT.exp]\n";
        return 2;
    }
    const auto pSchema = pSchemaFromFile(arguments[1], arguments[2]);
    const auto pBase = iCount == 5 ? pSchemaFromFile(arguments[3], arguments[4]) : nullptr;
    if (!pSchema || (iCount == 5 && !pBase)) return 1;
    std::cout << oxa::ifc::def::express::sFactTable(*pSchema, arguments[1], pBase.get());
    return std::cout.flush() ? 0 : 1;
}
