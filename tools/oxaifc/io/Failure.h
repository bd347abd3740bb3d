// SPDX-License-Identifier: Apache-2.0
// Failure: why a verb can't do what was asked, in one line.
//
// For      everything that ends the program with exit code 2: a wrong call, a file that can't be read.
// Not for  errors in a file's text: they are the verb's result, exit code 1.
#pragma once

#include <stdexcept>
#include <string>

namespace oxa::tool {

inline constexpr int g_iExitFine = 0;
inline constexpr int g_iExitErrors = 1;    // the file has errors
inline constexpr int g_iExitFailure = 2;   // unreadable or wrong usage

// The text goes to standard error behind "oxaifc: ", without a line end.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& sText) : std::runtime_error(sText) {}
    ~Failure() override;
};

}   // namespace oxa::tool
