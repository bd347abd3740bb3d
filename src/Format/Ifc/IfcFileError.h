// SPDX-License-Identifier: Apache-2.0
/// @file
/// Errors: what was wrong with a file, in the order in which it was found.
///
/// - For: everything that reads or writes a model: a problem is one record here, and the work goes on.
/// - Callers: the owner of a read or a write makes one, hands it in, and looks at it afterwards.
/// - Not for: a caller's mistake (the assertion service) or an inside fault (an exception).
/// - Threads: add() from any number at once, boFatal() too. records(), vErrorsWrite() and writeReport() once they have
///   ended.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcReportKey.h"
#include "platform/Export.h"

namespace oxa::ifc {

class Entity;

/// A text of many records: set or not, as an optional string is, but shared by its copies.
class SharedText {
public:
    SharedText() noexcept = default;
    ///@{
    /// Set, also where the text is empty. Not for a null pointer.
    SharedText(std::string sText) : m_pText(std::make_shared<const std::string>(std::move(sText))) {}
    SharedText(const char* sText) : SharedText(std::string(sText)) {}
    ///@}

    ///@{
    /// Whether a text was set.
    [[nodiscard]] bool has_value() const noexcept { return m_pText != nullptr; }
    explicit operator bool() const noexcept { return has_value(); }
    ///@}
    ///@{
    /// The text, good as long as a copy of this object; only where one was set.
    [[nodiscard]] const std::string& operator*() const noexcept { return *m_pText; }
    [[nodiscard]] const std::string* operator->() const noexcept { return m_pText.get(); }
    ///@}
    /// A copy of the text, or "sElse" where none was set.
    [[nodiscard]] std::string value_or(std::string sElse) const { return m_pText ? *m_pText : std::move(sElse); }

    friend bool operator==(const SharedText& text, std::string_view sOther) noexcept {
        return text.m_pText && *text.m_pText == sOther;
    }

private:
    std::shared_ptr<const std::string> m_pText;
};

/// The source text of a record, one for all records of a statement: a statement of a hostile file can hold as many
/// faults as bytes, and a copy for each would be its square.
using SourceText = SharedText;

/// Grows only: whoever uses one object for two reads has the records of both in it.
class OXA_IFC_API Errors {
public:
    /// What a problem means for the work in hand.
    enum Severity : std::uint32_t {
        Error = 0,   ///< reading or writing goes on
        Fatal = 1,   ///< the file is given up
    };

    /// What a record is about. The numbers are fixed; 6 is not in use.
    enum Category : std::uint32_t {
        Syntax = 0,       ///< malformed file text
        Header = 1,       ///< a header statement of an unknown kind
        Value = 2,        ///< unknown or abstract types, attribute counts, values of the wrong form, GUIDs
        Null = 3,         ///< a null where none may be
        Reference = 4,    ///< an instance that the file does not define
        Model = 5,        ///< an instance filled twice, an unknown schema
        Identifier = 7,   ///< an instance number used twice
        Schema = 8,       ///< what the schema does not answer
    };

    /// One problem. The argument and the key are what the description was made of, for whoever counts, groups or
    /// filters: messages have a language, keys have none.
    struct ErrorRecord {
        const Entity* entity = nullptr;   ///< the instance concerned, or null; not owned, never dereferenced
        Severity severity = Error;        ///< whether the work went on
        Category category = Syntax;       ///< what it is about
        std::string description;          ///< localised, with its argument in place
        SourceText lineString;            ///< the source text that the problem belongs to
        std::uint32_t lineNumber = 0;     ///< from 1; 0 where there is no line

        std::uint32_t argumentBegin = 0;        ///< of the argument, in bytes of the description
        std::uint32_t argumentLength = 0;       ///< of the argument in bytes; 0 where there is none
        std::optional<ReportKey> reportKey{};   ///< none where add() was given a text that is no key of the library
        SharedText key{};                       ///< the key as a text: "Error_UnknownEntityType"; one for all of it

        /// The argument, where its text has a place for one; good as long as the description.
        [[nodiscard]] std::string_view argument() const noexcept {
            return std::string_view(description).substr(argumentBegin, argumentLength);
        }
    };

    Errors();
    ~Errors();
    Errors(const Errors&) = delete;
    Errors& operator=(const Errors&) = delete;

    /// Appends a record with the usual severity and category of its key.
    void add(const Entity* entity, ReportKey eKey, SourceText lineString, unsigned lineNumber);
    /// The same with "argument" in the place of every "%1" of the text; not looked into for a further "%1".
    void add(const Entity* entity, ReportKey eKey, std::string_view argument, SourceText lineString,
             unsigned lineNumber);

    ///@{
    /// The same with a severity and a category that are not the usual ones.
    void add(const Entity* entity, Severity severity, Category category, ReportKey eKey, SourceText lineString,
             unsigned lineNumber);
    void add(const Entity* entity, Severity severity, Category category, ReportKey eKey, std::string_view argument,
             SourceText lineString, unsigned lineNumber);
    ///@}

    ///@{
    /// The same for the keys of a caller: any text whose meaning the domain "Ifc" has, or which is its own meaning.
    void add(const Entity* entity, Severity severity, Category category, std::string_view key, SourceText lineString,
             unsigned lineNumber);
    void add(const Entity* entity, Severity severity, Category category, std::string_view key,
             std::string_view argument, SourceText lineString, unsigned lineNumber);
    ///@}

    /// True once a fatal record was added, and then for good.
    [[nodiscard]] bool boFatal() const noexcept { return m_boFatal.load(std::memory_order_relaxed); }

    /// Statements of a read that a fault inside, mostly memory that ran out, kept from the model. They have no record,
    /// and the read may still answer true: a model is whole only where none was lost.
    struct LostStatements {
        std::size_t iCount = 0;    ///< how many there were
        unsigned iFirstLine = 0;   ///< the smallest line on which one of them ended, from 1; 0 where none was lost
    };
    /// What was lost so far. From any number of threads.
    [[nodiscard]] LostStatements lostStatements() const;
    /// Counts statements as lost; none is no loss. From any number of threads; allocates nothing.
    void vLostAdd(std::size_t iCount, unsigned iFirstLine);

    /// Places of a file that the rules of reading pass over without a record, as LostStatements, and like those no part
    /// of the model: in the DATA section a statement without "#" or without ")", and text between its last ")" and its
    /// ";"; in the header a statement with more fields than it has (ISO 10303-21, 8.2); statements of other sections
    /// than HEADER and the first DATA, and those of a file that names no schema. What stands behind the DATA section is
    /// one place, and seen where it begins in bytes that the read has taken already; so is what the simple form has
    /// behind its last ";" or behind a backslash.
    [[nodiscard]] LostStatements passedOver() const noexcept {
        return {m_iPassedOver.load(std::memory_order_relaxed), m_iPassedOverLine.load(std::memory_order_relaxed)};
    }
    /// Counts one. From any number of threads, without a lock: of a file that names no schema, each statement comes
    /// here.
    void vPassedOverAdd(unsigned iLine) noexcept {
        m_iPassedOver.fetch_add(1, std::memory_order_relaxed);
        unsigned iFirst = m_iPassedOverLine.load(std::memory_order_relaxed);
        while ((iFirst == 0 || iLine < iFirst) &&
               !m_iPassedOverLine.compare_exchange_weak(iFirst, iLine, std::memory_order_relaxed)) {}
    }

    /// In the order of arrival.
    [[nodiscard]] const std::vector<ErrorRecord>& records() const noexcept { return m_records; }

    /// One line a record: description, tab, source text.
    void vErrorsWrite(std::ostream& out) const;

    /// Renders the records with a template of inja.
    ///
    /// @param templateText  the template, not a path; what it includes is looked for from the working folder on
    /// @param out  takes what was rendered, up to a fault as well
    /// @param fileName  shown as the template wishes
    /// @return true; false, and an assertion with the cause, where the template has a fault or a text is no UTF-8. No
    ///   template ends the process: what would is such a fault. How long one runs is its own affair.
    ///
    /// The template has
    /// - filename
    /// - categories: one for each text among the descriptions, in the order of their bytes, each with "description" and
    ///   "errors", the records with that text in the order of arrival: "description", "lineNumber", "lineString",
    ///   "severity" ("error" or "fatal")
    /// - dumpJson: all of that as compact JSON text
    /// - localize(key): the text of a key in the domain "Ifc"
    bool writeReport(std::string_view templateText, std::ostream& out, std::string fileName) const;

private:
    struct Message;

    void vStore(const Message& message, const Entity* entity, Severity severity, Category category,
                SourceText&& lineString, unsigned lineNumber);

    std::atomic<bool> m_boFatal{false};   // read while others add
    std::atomic<std::size_t> m_iPassedOver{0};
    std::atomic<unsigned> m_iPassedOverLine{0};              // the smallest; 0 while there is none
    std::vector<ErrorRecord> m_records;                      // guarded by m_mutex while others add
    LostStatements m_lost;                                   // likewise
    std::map<std::string, SharedText, std::less<>> m_keys;   // likewise
    mutable std::mutex m_mutex;
};

/// A record by a shorter name.
using ErrorRecord = Errors::ErrorRecord;

namespace io {

/// The collector of a read.
class OXA_IFC_API ReadError : public Errors {
public:
    /// A new one without records.
    [[nodiscard]] static std::unique_ptr<ReadError> pAllocate();
};

/// The collector of a write.
class OXA_IFC_API WriteError : public Errors {
public:
    /// A new one without records.
    [[nodiscard]] static std::unique_ptr<WriteError> pAllocate();
};

}   // namespace io
}   // namespace oxa::ifc
