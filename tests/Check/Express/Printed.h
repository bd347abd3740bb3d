// SPDX-License-Identifier: Apache-2.0
// Printed: tokens of EXPRESS texts, for comparing a text with what was printed of it.
#pragma once

#include <cctype>
#include <string>
#include <string_view>

#include "provider/ExpressLexer.h"

namespace oxa::test {

// The tokens with one blank between two, words in capitals, so that texts that differ in layout are the same.
inline std::string sTokens(std::string_view text) {
    namespace ex = ifc::def::express;
    ex::ExpressLexer lexer(text);
    std::string sResult;
    for (ex::Token token = lexer.next(); token.kind != ex::TokenKind::End; token = lexer.next()) {
        if (token.kind == ex::TokenKind::Fault) return "fault: " + std::string(token.text);
        if (!sResult.empty()) sResult += ' ';
        for (const char c : token.text)
            sResult +=
                token.kind == ex::TokenKind::Word ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
    }
    return sResult;
}

}   // namespace oxa::test
