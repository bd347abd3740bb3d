// SPDX-License-Identifier: Apache-2.0
/// @file
/// Model: one building model in memory: opened, looked at, changed, saved. The short way in.
///
///     for (oxa::Element wall : model.all("IfcWall")) std::cout << wall.text("Name").value_or("-") << '\n';
///
/// For      programs with a file and a task. The headers in Format/Ifc say more, and core() leads there.
/// Errors   a mistake of the caller, and a file that can't be opened or written, is an exception (Error.h). What is
///          wrong inside of a file is a record in errors(), and the rest of the model is there.
/// Memory   an element that is removed gives none back; all goes with the model.
/// Threads  any number may look at a model at the same time, handles and values included, as long as none changes,
///          saves, moves or destroys it: who does that is alone with it. Different models know nothing of each other,
///          except that one ifcXML document is read at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <iosfwd>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Model/Element.h"
#include "Model/Error.h"
#include "Model/NewValue.h"
#include "Model/Options.h"
#include "Model/Value.h"
#include "platform/Export.h"

namespace oxa::ifc {
class FileBase;
}   // namespace oxa::ifc

/// Building models: Model and what it hands out. The namespaces below have the core and its parts.
namespace oxa {

/// For Model::all: without subtypes.
struct Exact {};
/// As in model.all("IfcWall", oxa::exact).
inline constexpr Exact exact{};

/// What a removal did.
struct Removed {
    std::size_t count = 0;   ///< elements that are gone, relationships too
    Elements incomplete;     ///< that stay, and now lack a value which the schema wants, or items of one
};

/// One building model, with all of its elements; moved, never copied.
class OXA_MODEL_API Model {
public:
    /// Reads a STEP file (ISO 10303-21), ifcXML or the short text form, told by the first bytes; also one that is packed,
    /// as .ifczip (one model in a ZIP archive) or .gz.
    /// FileError where that can't be opened or is none of them, or its schema is not known. A file with faults, or cut
    /// short, gives a model of what is there: see errors() and whole().
    [[nodiscard]] static Model open(const std::filesystem::path& path, const OpenOptions& options = {});
    /// The same from a stream (opened as binary), from where it stands to its end.
    [[nodiscard]] static Model open(std::istream& stream, const OpenOptions& options = {});
    /// The same from bytes in memory, which may go afterwards.
    [[nodiscard]] static Model fromBuffer(std::string_view bytes, const OpenOptions& options = {});
    /// Over a file that was read or made with the core. ValueError for one without a schema. What its read reported stays
    /// with who read it: errors() is empty here, and whole() true.
    [[nodiscard]] static Model fromCore(std::unique_ptr<ifc::FileBase> file);
    /// A model without elements, of a built-in schema ("IFC4"); NameError for another name.
    explicit Model(std::string_view schema);

    /// Handles go with it; "other" can only be assigned to or destroyed.
    Model(Model&& other) noexcept;
    /// Handles of what was here before are dead.
    Model& operator=(Model&& other) noexcept;
    ~Model();

    /// The name of the schema, as in IFC4.
    [[nodiscard]] std::string_view schema() const;
    /// Whether the schema has an entity type of that name.
    [[nodiscard]] bool knows(std::string_view type) const;
    /// How many elements there are.
    [[nodiscard]] std::size_t size() const;

    /// All elements, by number.
    [[nodiscard]] Elements all() const;

    ///@{
    /// Those of a type and its subtypes; with oxa::exact, of that type alone. NameError for an unknown type.
    [[nodiscard]] Elements all(std::string_view type) const;
    [[nodiscard]] Elements all(std::string_view type, Exact) const;
    ///@}

    /// The element with that GlobalId of 22 characters; names nothing where there is none. ValueError for a text that
    /// can't be one.
    [[nodiscard]] Element byGuid(std::string_view guid) const;
    /// The element with that number; names nothing where there is none.
    [[nodiscard]] Element byId(std::uint64_t id) const;

    ///@{
    /// A new element. It gets the next free number, and a GlobalId where its type has one and none is given. What is
    /// not given has no value; where the schema wants one, save() says so.
    /// NameError for an unknown type or attribute, ValueError for an abstract type and for what the schema does not
    /// allow; nothing is created then.
    Element create(std::string_view type, std::initializer_list<Field> fields = {});
    Element create(std::string_view type, std::span<const Field> fields);
    ///@}

    /// Sets an attribute. The same errors, with the element as it was; also for "no value" where the schema wants one.
    void set(const Element& element, std::string_view name, const NewValue& value);
    /// Adds an item to the end of a list.
    void append(const Element& element, std::string_view name, const NewValue& item);

    ///@{
    /// Takes elements out of the model, and out of everything that refers to them; relationships that have nothing left
    /// to relate go as well. One pass over the model, however many they are.
    Removed remove(const Element& element);
    Removed remove(const Elements& elements);
    Removed remove(std::span<const Element> elements);
    ///@}

    /// Writes all elements, statements by number. The file is replaced as a whole or not at all. The records tell what
    /// the schema misses, as a mandatory attribute without a value, by number; they keep nothing from being written.
    /// A name that ends in .ifczip or .gz makes a packed file, which holds what the rest of the name says.
    /// FileError where the file can't be written, or its form has no place for the model; and where it is the one that the
    /// model was read from, and the model is not whole().
    std::vector<Record> save(const std::filesystem::path& path, const SaveOptions& options = {});
    /// The same to a stream (opened as binary); as STEP, where the options name no format.
    std::vector<Record> save(std::ostream& out, const SaveOptions& options = {});

    /// What was wrong with the file, in the order in which it was found.
    [[nodiscard]] std::span<const Record> errors() const;
    /// Whether all of the file is in the model: read to its end, without a record, with nothing passed over. Of ifcXML
    /// that is not known, which counts as false; a model from nothing is whole.
    [[nodiscard]] bool whole() const;

    ///@{
    /// The file of the core: header, data, entities. Whoever changes entities through it keeps inverse lists, GlobalIds
    /// and handles right himself.
    [[nodiscard]] ifc::FileBase& core();
    [[nodiscard]] const ifc::FileBase& core() const;
    ///@}

private:
    friend class detail::ModelState;
    explicit Model(std::unique_ptr<detail::ModelState> state) noexcept;
    [[nodiscard]] detail::ModelState& state() const;

    std::unique_ptr<detail::ModelState> m_pState;
};

}   // namespace oxa
