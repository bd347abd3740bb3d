// SPDX-License-Identifier: Apache-2.0
// Localization: message texts by key, in the language of the user.
//
// For      the reports of reading and writing, and the templates that show them.
// Not for  putting the argument into a text, which is the caller's.
// Threads  any number at once; the language is one for the process.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"

namespace oxa {

enum class Language { English, German };

// English until set. Texts that were made before keep their language.
OXA_PLATFORM_API void setLanguage(Language language) noexcept;
[[nodiscard]] OXA_PLATFORM_API Language language() noexcept;

// The text of a key, with "%1" where its argument goes. An unknown domain or key gives the key itself.
[[nodiscard]] OXA_PLATFORM_API std::string localize(std::string_view domain, std::string_view key);

// Every key of a domain, ascending; none of an unknown one.
[[nodiscard]] OXA_PLATFORM_API std::vector<std::string_view> localizationKeys(std::string_view domain);

}   // namespace oxa
