// SPDX-License-Identifier: Apache-2.0
// PieceStream: a stream that delivers a text in pieces of a few bytes.
//
// For      tests of readers: every buffer that is filled from it ends where the piece does.
#pragma once

#include <algorithm>
#include <cstddef>
#include <istream>
#include <streambuf>
#include <string>
#include <utility>

namespace oxa::ifc {

class PieceStream : private std::streambuf, public std::istream {
public:
    PieceStream(std::string sText, std::size_t iPiece)
        : std::istream(static_cast<std::streambuf*>(this)),
          m_sText(std::move(sText)),
          m_iPiece(iPiece) {}

private:
    std::streamsize xsgetn(char* pBytes, std::streamsize iWanted) override {
        const std::size_t iCopied =
            m_sText.copy(pBytes, std::min(m_iPiece, static_cast<std::size_t>(iWanted)), m_iNext);
        m_iNext += iCopied;
        return static_cast<std::streamsize>(iCopied);
    }

    std::string m_sText;
    std::size_t m_iPiece;
    std::size_t m_iNext = 0;
};

}   // namespace oxa::ifc
