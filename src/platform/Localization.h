// SPDX-License-Identifier: Apache-2.0
/// @file
/// Localization: message texts by key, in the language of the user.
///
/// For      the reports of reading and writing, and the templates that show them.
/// Texts    each library has its own and hands them in; none are here.
/// Not for  putting the argument into a text, which is the caller's.
/// Threads  any number at once; the language and the texts are those of the process.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"

namespace oxa {

/// The languages that every text is there in.
enum class Language { English, German };

/// English until set. Texts that were made before keep their language.
OXA_PLATFORM_API void setLanguage(Language language) noexcept;
/// The language that localize() answers in now.
[[nodiscard]] OXA_PLATFORM_API Language language() noexcept;

/// One text in all languages, with `%1` where its argument goes.
struct LocalizedText {
    std::string_view key,   ///< the same in all languages, and the order of a table
        english,            ///< UTF-8
        german;             ///< UTF-8
};

/// A table of texts, to be registered. Its texts and it itself stay where they are for the rest of the process, so it
/// is a static object of a library that is not unloaded.
class LocalizedTexts {
public:
    /// "texts" ascending by key, each key once.
    constexpr LocalizedTexts(std::string_view domain, std::span<const LocalizedText> texts) noexcept
        : m_domain(domain),
          m_texts(texts) {}
    LocalizedTexts(const LocalizedTexts&) = delete;
    LocalizedTexts& operator=(const LocalizedTexts&) = delete;

private:
    friend struct TextList;

    std::string_view m_domain;
    std::span<const LocalizedText> m_texts;
    const LocalizedTexts* m_pNext = nullptr;   // written once, when it is registered
};

/// From now on localize() knows these. Whose key stands in several tables of a domain has the text of the one that was
/// registered last. A table that is in already stays where it is. A platform that has the texts itself may pass this
/// over. May be called before main(): what it needs is ready by then.
OXA_PLATFORM_API void registerTexts(LocalizedTexts& texts);

/// The text of a key, with `%1` where its argument goes. An unknown domain or key gives the key itself.
[[nodiscard]] OXA_PLATFORM_API std::string localize(std::string_view domain, std::string_view key);

/// Every key of a domain, ascending; none of an unknown one.
[[nodiscard]] OXA_PLATFORM_API std::vector<std::string_view> localizationKeys(std::string_view domain);

}   // namespace oxa
