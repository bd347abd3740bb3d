// SPDX-License-Identifier: Apache-2.0
/// @file
/// Ids: does a model hold the information that was agreed on, as a file of requirements says it (Information Delivery
/// Specification 1.0 of buildingSMART).
///
///     const oxa::ids::Requirements wanted = oxa::ids::Requirements::open("house.ids");
///     for (const oxa::ids::Fault& fault : wanted.faults()) std::cerr << fault.line << ": " << fault.message << '\n';
///     const oxa::ids::Result result = oxa::ids::check(model, wanted);
///     for (const oxa::ids::SpecificationResult& one : result.specifications)
///         for (const oxa::ids::Failure& failure : one.failures)
///             std::cout << '#' << failure.element.id() << ": " << failure.reason << '\n';
///
/// For      who agreed on what a model has to say, and wants to know whether it does, by element.
/// Not for  whether the model itself is valid: Check.h says that. An instance that is not valid is taken as it is.
/// Order    the same results in the same order for any number of threads; nothing is left out of them.
/// Bounded  time and memory grow with the two files: expressions match in linear time, and one that needs too much memory,
///          or can't be said in what matches them, is a fault of the file.
/// Threads  any number at once, as long as nobody changes the model; Requirements may be shared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <limits>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "Model/Element.h"
#include "Model/Options.h"
#include "platform/Export.h"

namespace oxa {
class Model;
}   // namespace oxa

/// Requirements for the content of models, as IDS files have them.
namespace oxa::ids {

/// How much a fault weighs.
enum class FaultWeight : std::uint8_t {
    Fault,   ///< the file is no valid IDS
    Note,    ///< valid, but hardly what was meant: a range that is narrower than the tolerance of numbers
};

/// Something that is wrong with a file of requirements.
struct Fault {
    std::string key{};                         ///< the same in all versions, as in Ids_UnknownClass
    FaultWeight weight = FaultWeight::Fault;   ///< whether it takes validity away
    std::uint64_t line = 0;     ///< from 1, of the element in the file; 0 where it is not known, as in UTF-16
    std::uint64_t column = 0;   ///< in bytes, from 1, of its tag; 0 where the line is not known
    std::string path{};         ///< as in /ids/specifications/specification[2]/applicability/entity/name; may be empty
    std::string message{};      ///< one sentence, in English: what is wrong, and what would be right
    std::string found{};        ///< what stands there; may be empty
    /// Which of Requirements::specifications() it stands in; none for what is about the file as a whole.
    std::optional<std::size_t> specification{};
};

/// What the file says of itself; empty what it does not say.
struct Info {
    std::string title{};         ///< of the document
    std::string copyright{};     ///< who owns it
    std::string version{};       ///< as in 1.0
    std::string description{};   ///< what it is for, in words
    std::string author{};        ///< an address of e-mail
    std::string date{};          ///< as in 2024-12-31
    std::string purpose{};       ///< as in costing
    std::string milestone{};     ///< as in design
};

/// Whether something has to be, may be, or must not be.
enum class Cardinality : std::uint8_t { Required, Optional, Prohibited };
/// "required", "optional" or "prohibited".
[[nodiscard]] OXA_CHECK_API std::string_view cardinalityName(Cardinality cardinality) noexcept;

/// What a parameter of a facet may be: one value, or a restriction. All that is given has to hold.
struct Condition {
    std::optional<std::string> simple{};         ///< the one value; no more is given then
    std::string base{};                          ///< of a restriction, as in xs:double
    std::vector<std::string> enumeration{};      ///< one of these; empty for any
    std::vector<std::string> patterns{};         ///< all of the value matches one of these (XML Schema); empty for any
    std::optional<std::string> minInclusive{};   ///< as written, like the other bounds
    std::optional<std::string> minExclusive{};   ///< lower bound that is not in
    std::optional<std::string> maxInclusive{};   ///< upper bound
    std::optional<std::string> maxExclusive{};   ///< upper bound that is not in
    std::optional<std::uint64_t> length{};       ///< in characters, like the next two
    std::optional<std::uint64_t> minLength{};    ///< at least so many
    std::optional<std::uint64_t> maxLength{};    ///< at most so many

    /// For people: "F 90", "one of A, B", "a match of DT[0-9]{2}", "from 3 to less than 10", "2 characters long".
    [[nodiscard]] OXA_CHECK_API std::string text() const;
};

/// What a facet is about.
enum class FacetKind : std::uint8_t { Entity, PartOf, Classification, Attribute, Property, Material };
/// "entity", "partOf", "classification", "attribute", "property" or "material".
[[nodiscard]] OXA_CHECK_API std::string_view facetKindName(FacetKind kind) noexcept;

/// One thing that is said of an instance: in an applicability what selects it, in requirements what it needs.
struct Facet {
    FacetKind kind = FacetKind::Entity;                ///< which of the members below there can be
    Cardinality cardinality = Cardinality::Required;   ///< in an applicability, and of an entity, always Required
    std::optional<Condition> entity{};                 ///< of Entity the class, of PartOf the class of the whole
    std::optional<Condition> predefinedType{};         ///< of Entity and PartOf; may be missing
    std::string relation{};                            ///< of PartOf, as in IFCRELAGGREGATES; empty for any
    std::optional<Condition> name{};                   ///< of Attribute and Property
    std::optional<Condition> propertySet{};            ///< of Property
    std::string dataType{};                            ///< of Property, as in IFCLABEL; may be empty
    std::optional<Condition> system{};                 ///< of Classification
    std::optional<Condition> value{};                  ///< of all but Entity and PartOf; may be missing
    std::string uri{};                                 ///< where the value is explained; not checked; may be empty
    std::string instructions{};                        ///< for who makes the model; may be empty
    std::uint64_t line = 0;                            ///< in the file, as of a Fault

    /// For people, one sentence without a full stop. In requirements: "Property Pset_WallCommon.FireRating of type
    /// IfcLabel shall be F 90"; in an applicability: "property Pset_WallCommon.IsExternal is true".
    std::string text{};
};

/// Which instances, and what is wanted of them.
struct Specification {
    std::string name{};                      ///< for people
    std::string identifier{};                ///< for machines; may be empty, and need not be the only one of its kind
    std::string description{};               ///< why; may be empty
    std::string instructions{};              ///< how to fulfil it; may be empty
    std::string requirementsDescription{};   ///< what the requirements are for; may be empty
    std::vector<std::string> schemas{};      ///< that it is for: IFC2X3, IFC4, IFC4X3_ADD2
    /// Required: there has to be an applicable instance. Prohibited: there must be none.
    Cardinality cardinality = Cardinality::Required;
    std::vector<Facet> applicability{};   ///< an instance is applicable where all hold
    std::vector<Facet> requirements{};    ///< what each applicable instance is held to
    bool valid = true;                    ///< whether it has no fault; one that has is not checked
    std::uint64_t line = 0;               ///< in the file, as of a Fault
    std::string text{};                   ///< of whom it speaks: "IfcWall, property Pset_WallCommon.IsExternal is true"
};

namespace detail {
struct Program;
}   // namespace detail

/// A file of requirements, read and made ready for any number of checks. Copies share what they hold.
class OXA_CHECK_API Requirements {
public:
    static constexpr std::size_t mostBytes = std::size_t{32} << 20;   ///< of a file; more of it is a fault
    static constexpr std::size_t mostFaults = 100'000;                ///< that are told; the rest is counted
    static constexpr std::size_t mostFacets = 100'000;                ///< of all specifications together; likewise

    /// Reads an IDS file. What is wrong inside of it is a fault, and all of them are told.
    /// FileError where it can't be opened or read.
    [[nodiscard]] static Requirements open(const std::filesystem::path& path);
    /// The same from a stream (opened as binary), from where it stands to its end.
    [[nodiscard]] static Requirements open(std::istream& stream);
    /// The same from bytes in memory, which may go afterwards.
    [[nodiscard]] static Requirements fromBuffer(std::string_view bytes);

    /// Whether the file is IDS 1.0: by its schema, and by what the standard says beyond that of names, types and values.
    [[nodiscard]] bool valid() const noexcept;
    /// What is wrong with it, notes too, in the order of the file.
    [[nodiscard]] const std::vector<Fault>& faults() const noexcept;
    /// What it says of itself.
    [[nodiscard]] const Info& info() const noexcept;
    /// In the order of the file, those with faults too, as far as they can be read.
    [[nodiscard]] const std::vector<Specification>& specifications() const noexcept;

private:
    friend struct detail::Program;
    explicit Requirements(std::shared_ptr<const detail::Program> program) noexcept;
    std::shared_ptr<const detail::Program> m_pProgram;   // never null
};

/// What becomes of a specification that does not name the schema of the model. IFC4X3 and its corrections count as
/// IFC4X3_ADD2.
enum class OtherSchemas : std::uint8_t {
    Auto,    ///< it is checked where no specification of the file names the schema, else left out
    Skip,    ///< it is left out
    Check,   ///< it is checked
};

/// How a model is checked.
struct Options {
    /// 1: all on the calling thread. 0: on as many as the machine has a use for.
    unsigned threads = 0;
    /// What becomes of specifications for other schemas.
    OtherSchemas otherSchemas = OtherSchemas::Auto;
    /// Where it asks for the end, the check throws Stopped.
    std::stop_token stop{};
    /// May be empty. Called now and then on the caller's thread with rising counts: instances that were looked at, those
    /// of all specifications together. The total is known from the first call on.
    std::function<void(const Progress&)> progress{};
};

/// Why an instance fails.
enum class FailureKind : std::uint8_t {
    NotAllowed,       ///< the specification is prohibited, and the instance is applicable
    Class,            ///< it is of another class
    PredefinedType,   ///< or of another predefined type
    Missing,          ///< what is required is not there, or has no value
    Value,            ///< it is there, with another value
    DataType,         ///< or of another type
    System,           ///< it is classified in other systems alone
    Whole,            ///< it is a part of other wholes alone
    Prohibited,       ///< what must not be there is
};
/// "not-allowed", "class", "predefined-type", "missing", "value", "data-type", "system", "whole" or "prohibited".
[[nodiscard]] OXA_CHECK_API std::string_view failureKindName(FailureKind kind) noexcept;

/// One requirement that one instance does not meet. Good as long as the model.
struct Failure {
    /// For Failure::requirement: the specification itself.
    static constexpr std::size_t none = (std::numeric_limits<std::size_t>::max)();

    Element element{};                            ///< the instance: its id, type, GlobalId and Name
    std::size_t requirement = none;               ///< which of Specification::requirements; none of NotAllowed
    FailureKind kind = FailureKind::NotAllowed;   ///< why, for machines
    std::string reason{};                         ///< why, one sentence in English: "FireRating is 'F 30'"
    std::string found{};                          ///< the values that were found, with ", " between them; may be empty
};

/// What became of one specification.
enum class Status : std::uint8_t {
    Passed,        ///< as many instances are applicable as shall be, and all of them meet all requirements
    Failed,        ///< not so
    OtherSchema,   ///< not checked: it is for other schemas than the model's
    Faulty,        ///< not checked: the file has a fault there
};
/// "passed", "failed", "other-schema" or "faulty".
[[nodiscard]] OXA_CHECK_API std::string_view statusName(Status status) noexcept;

/// What one requirement found, over all applicable instances.
struct RequirementResult {
    std::uint64_t passed = 0;   ///< instances that meet it
    std::uint64_t failed = 0;   ///< instances that do not
};

/// What a check found for one specification.
struct SpecificationResult {
    Status status = Status::Passed;   ///< what became of it
    /// The status in words, one sentence: "3 of 40 instances fail", "no instance is applicable, and one is required".
    std::string reason{};
    /// It was checked although the model's schema is none that it names.
    bool otherSchema = false;
    std::uint64_t applicable = 0;                    ///< instances that it speaks of
    std::uint64_t passed = 0;                        ///< those of them that meet all requirements
    std::uint64_t failed = 0;                        ///< the others
    std::vector<RequirementResult> requirements{};   ///< one of each of Specification::requirements
    /// By the number of the instance, then by requirement.
    std::vector<Failure> failures{};
};

/// What can be said in one word.
enum class Verdict : std::uint8_t {
    Passed,      ///< every specification that was checked passed, and one was at least
    Failed,      ///< a specification failed
    Undecided,   ///< none failed, and one has a fault, the file has, or none is for the schema of the model
};
/// "passed", "failed" or "undecided".
[[nodiscard]] OXA_CHECK_API std::string_view verdictName(Verdict verdict) noexcept;

/// What a check found.
struct Result {
    std::string schema{};                                ///< of the model, as in IFC4
    std::vector<SpecificationResult> specifications{};   ///< one of each of Requirements::specifications()
    Verdict verdict = Verdict::Undecided;                ///< in one word
};

/// Holds the model to the requirements. Specifications with faults are told as such, and the others checked.
/// @throws Stopped, where the token asked for it
[[nodiscard]] OXA_CHECK_API Result check(const Model& model, const Requirements& requirements,
                                         const Options& options = {});

}   // namespace oxa::ids
