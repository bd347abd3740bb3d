// SPDX-License-Identifier: Apache-2.0
#include "Model/Pattern.h"

#include <re2/re2.h>

namespace oxa::detail {

namespace {

re2::RE2::Options options(std::int64_t iMostBytes) {
    re2::RE2::Options options;
    options.set_max_mem(iMostBytes);
    options.set_log_errors(false);
    return options;
}

re2::StringPiece piece(std::string_view text) { return {text.data(), text.size()}; }

}   // namespace

Pattern::Pattern(std::string_view text, std::int64_t iMostBytes)
    : m_pRegex(std::make_unique<const re2::RE2>(piece(text), options(iMostBytes))) {}
Pattern::~Pattern() = default;

const std::string& Pattern::error() const noexcept { return m_pRegex->error(); }
bool Pattern::boTooLarge() const noexcept { return m_pRegex->error_code() == re2::RE2::ErrorPatternTooLarge; }
const std::string& Pattern::text() const noexcept { return m_pRegex->pattern(); }
bool Pattern::boMatches(std::string_view text) const { return re2::RE2::FullMatch(piece(text), *m_pRegex); }

}   // namespace oxa::detail
