// SPDX-License-Identifier: Apache-2.0
#include "Model/Pattern.h"

#include <re2/re2.h>

namespace oxa::detail {

namespace {

re2::RE2::Options options() {
    re2::RE2::Options options;
    options.set_max_mem(Pattern::g_iMostBytes);
    options.set_log_errors(false);
    return options;
}

re2::StringPiece piece(std::string_view text) { return {text.data(), text.size()}; }

}   // namespace

Pattern::Pattern(std::string_view text) : m_pRegex(std::make_unique<const re2::RE2>(piece(text), options())) {}
Pattern::~Pattern() = default;

const std::string& Pattern::error() const noexcept { return m_pRegex->error(); }
const std::string& Pattern::text() const noexcept { return m_pRegex->pattern(); }
bool Pattern::boMatches(std::string_view text) const { return re2::RE2::FullMatch(piece(text), *m_pRegex); }

}   // namespace oxa::detail
