// SPDX-License-Identifier: Apache-2.0
// Sha256: the checksum of a stream's bytes (FIPS 180-4).
//
// For      the table file. Sixty lines here, since the libraries that have it bring all of cryptography along.
// Threads  any number at once, each with a stream of its own.
#pragma once

#include <iosfwd>
#include <string>

namespace oxa::tables::detail {

// Of all from here to the end: 64 hexadecimal digits. Empty where the stream can't be read to its end.
[[nodiscard]] std::string sSha256(std::istream& stream);

}   // namespace oxa::tables::detail
