// SPDX-License-Identifier: Apache-2.0
// oxa-rules-compiler: makes a table of rules of a published EXPRESS text, for schemas/.
//
// Usage    oxa-rules-compiler NAME TEXT.exp [BASE BASETEXT.exp] > schemas/NAME.rules
//          NAME is what the table says, whatever the text does. With a base the table holds what differs from the table of
//          that name, which is made of BASETEXT.
// Exit     0; 1 when the text cannot be read or is at fault, with "file:line:column: message"; 2 when called otherwise.
#include <fstream>
#include <iostream>
#include <iterator>
#include <utility>

#include "Check/Express/Difference.h"
#include "Check/Express/Parser.h"
#include "Check/Express/Printer.h"

namespace {

using namespace oxa::check;

// The rules of a text, whose schema has that name from here on, in its literals too.
bool boRead(const char* sPath, const char* sName, express::SchemaRules& rules) {
    std::ifstream stream(sPath, std::ios::binary);
    std::string sText(std::istreambuf_iterator<char>(stream), {});
    if (!stream && sText.empty()) {
        std::cerr << sPath << ": cannot be read\n";
        return false;
    }
    for (int i = 0; i < 2; ++i) {
        // Once for the name that the text gives the schema, which is known then.
        rules = {};
        std::vector<oxa::ifc::SchemaMessage> messages;
        const bool boFine = express::Parser(sText, messages).boReadSchema(rules);
        for (const oxa::ifc::SchemaMessage& message : messages)
            std::cerr << sPath << ':' << message.iLine << ':' << message.iColumn << ": " << message.sText << '\n';
        if (!boFine) return false;
        sText = express::sRenamed(sText, rules.sName, sName);
    }
    rules.sName = sName;
    return true;
}

}   // namespace

int main(int iCount, char** arguments) {
    if (iCount != 3 && iCount != 5) {
        std::cerr << "usage: oxa-rules-compiler NAME TEXT.exp [BASE BASETEXT.exp]\n";
        return 2;
    }
    const char* sName = arguments[1];
    express::SchemaRules rules;
    if (!boRead(arguments[2], sName, rules)) return 1;
    if (iCount == 3) {
        std::cout << express::sText(rules);
    } else {
        express::SchemaRules base;
        if (!boRead(arguments[4], sName, base)) return 1;
        std::cout << express::sText(express::difference(std::move(rules), std::move(base), arguments[3]));
    }
    return std::cout.flush() ? 0 : 1;
}
