// SPDX-License-Identifier: Apache-2.0
// ReadDiagnosis: why an exchange structure was not read to its end, where the read itself can't say more than that.
//
// For      Model, after a read that failed; it looks at the bytes a second time.
// How      statements, texts and comments as the reader takes them apart (ISO 10303-21, 6), without their values.
//          A quote that is missing turns all that follows inside out, so the text that holds the begin of another
//          statement on a line of its own is the one that was never closed.
// Threads  one.
#pragma once

#include <cstdint>
#include <istream>
#include <string>
#include <string_view>

namespace oxa::tool {

struct ReadDiagnosis {
    std::string sText;     // empty where nothing was found
    std::string sSource;   // where it began, the first bytes of it
    std::uint32_t iLine = 0;
};

// All texts are in the language of the process.

// Of a file that does not have the keyword of an exchange structure among its first bytes.
[[nodiscard]] ReadDiagnosis foreignBegin(std::string_view firstBytes);

// The stream stands at the begin of the file.
[[nodiscard]] ReadDiagnosis readDiagnosis(std::istream& stream);

}   // namespace oxa::tool
