// SPDX-License-Identifier: Apache-2.0
// Sha256: the checksum of a stream's bytes (FIPS 180-4).
//
// For      the table file. Here, since the libraries that have it bring all of cryptography along.
// Threads  any number at once, each with a stream of its own.
#pragma once

#include <iosfwd>
#include <string>

namespace oxa::tables::detail {

// Of all from here to the end: 64 hexadecimal digits. Empty where the stream can't be read to its end.
// boFast: by instructions of the processor, where it has them.
[[nodiscard]] std::string sSha256(std::istream& stream, bool boFast = true);

}   // namespace oxa::tables::detail
