// SPDX-License-Identifier: Apache-2.0
// ManPage: the manual page oxaifc(1), made from what the program declares: "oxaifc help --man".
#pragma once

#include <string_view>

namespace CLI {
class App;
}   // namespace CLI

namespace oxa::tool {

class Output;

// As roff, with the macros of man(7).
void vManPageWrite(const CLI::App& program, std::string_view version, Output& output);

}   // namespace oxa::tool
