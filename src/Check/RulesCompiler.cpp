// SPDX-License-Identifier: Apache-2.0
// oxa-rules-compiler: makes a table of rules of a published EXPRESS text, for schemas/.
//
// Usage    oxa-rules-compiler NAME TEXT.exp > schemas/NAME.rules
//          NAME is what the table says, whatever the text does.
// Exit     0; 1 when the text cannot be read or is at fault, with "file:line:column: message"; 2 when called otherwise.
#include <fstream>
#include <iostream>
#include <iterator>

#include "Check/Express/Parser.h"
#include "Check/Express/Printer.h"

int main(int iCount, char** arguments) {
    if (iCount != 3) {
        std::cerr << "usage: oxa-rules-compiler NAME TEXT.exp\n";
        return 2;
    }
    const char* sPath = arguments[2];
    std::ifstream stream(sPath, std::ios::binary);
    const std::string sText(std::istreambuf_iterator<char>(stream), {});
    if (!stream && sText.empty()) {
        std::cerr << sPath << ": cannot be read\n";
        return 1;
    }
    std::vector<oxa::ifc::SchemaMessage> messages;
    oxa::check::express::SchemaRules rules;
    const bool boRead = oxa::check::express::Parser(sText, messages).boReadSchema(rules);
    for (const oxa::ifc::SchemaMessage& message : messages)
        std::cerr << sPath << ':' << message.iLine << ':' << message.iColumn << ": " << message.sText << '\n';
    if (!boRead) return 1;
    rules.sName = arguments[1];
    std::cout << oxa::check::express::sText(rules);
    return std::cout.flush() ? 0 : 1;
}
