// SPDX-License-Identifier: Apache-2.0
#include "Model/Model.h"

#include <cerrno>
#include <fstream>
#include <istream>
#include <optional>
#include <system_error>

#include "Format/Ifc/IfcGuid.h"
#include "Model/Archive.h"
#include "Model/ModelRead.h"
#include "Model/ModelState.h"
#include "Model/ModelWrite.h"
#include "Model/Names.h"
#include "platform/Path.h"
#include "platform/ReplacedFile.h"
#include "platform/SharedBytes.h"
#include "provider/SchemaLoader.h"

namespace oxa {

using detail::ModelState;

namespace {

ifc::def::SchemaPset& builtIn(std::string_view name) {
    if (ifc::def::SchemaPset* pSchema = ifc::SchemaLoader::pBuiltIn(name)) return *pSchema;
    detail::vThrowName("there is no built-in schema " + std::string(name), name, ifc::SchemaLoader::builtInNames());
}

// What a step of a write gives, with the system's errors as the model tells them.
template <class Step>
auto written(const std::filesystem::path& path, Step&& step) try {
    return step();
} catch (const std::system_error& error) {
    throw FileError(str::sOfPath(path) + ": can't be written: " + error.code().message());
}

}   // namespace

Model Model::open(const std::filesystem::path& path, const OpenOptions& options) {
    std::error_code error;
    const std::string sName = str::sOfPath(path);
    if (std::filesystem::is_directory(path, error)) throw FileError(sName + ": is a folder");
    errno = 0;
    std::ifstream stream(path, std::ios::binary);
    if (!stream) throw FileError(sName + ": can't be opened: " + std::generic_category().message(errno));
    const std::uintmax_t iSize = std::filesystem::file_size(path, error);
    const auto size = error ? std::nullopt : std::optional<std::uint64_t>(iSize);
    const bool boFile = std::filesystem::is_regular_file(path, error);
    detail::ReadResult read = detail::modelRead(stream, sName, size, options, boFile ? path : std::filesystem::path());
    read.path = std::filesystem::absolute(path, error);
    return Model(std::make_unique<ModelState>(std::move(read), options.keepNumbers));
}

Model Model::open(std::istream& stream, const OpenOptions& options) {
    return Model(
        std::make_unique<ModelState>(detail::modelRead(stream, "stream", std::nullopt, options), options.keepNumbers));
}

Model Model::fromBuffer(std::string_view bytes, const OpenOptions& options) {
    stream::MemoryBuffer buffer(bytes);
    std::istream stream(&buffer);
    return Model(
        std::make_unique<ModelState>(detail::modelRead(stream, "buffer", bytes.size(), options), options.keepNumbers));
}

Model Model::fromCore(std::unique_ptr<ifc::FileBase> file) {
    if (!file || !file->dataBase().pSchema()) throw ValueError("a file without a schema is no model");
    return Model(
        std::make_unique<ModelState>(detail::ReadResult{std::move(file), nullptr, true, /*boMayBeTwice*/ true}, true));
}

Model::Model(std::string_view schema)
    : m_pState(std::make_unique<ModelState>(detail::modelNew(builtIn(schema)), true)) {}
Model::Model(std::unique_ptr<ModelState> state) noexcept : m_pState(std::move(state)) {}
Model::Model(Model&& other) noexcept = default;
Model& Model::operator=(Model&& other) noexcept = default;
Model::~Model() = default;

ModelState& Model::state() const {
    if (!m_pState) throw HandleError("the model was moved to another object");
    return *m_pState;
}

std::string_view Model::schema() const { return state().schema().sName; }
bool Model::knows(std::string_view type) const {
    return ifc::def::schema::pAsEntity(state().schema().pObjectFromName(type)) != nullptr;
}
std::size_t Model::size() const { return state().iSize(); }

Elements Model::all() const { return state().elementsOf(state().all()); }
Elements Model::all(std::string_view type) const {
    return state().elementsOf(state().all(detail::typeFromName(state().schema(), type), true));
}
Elements Model::all(std::string_view type, Exact) const {
    return state().elementsOf(state().all(detail::typeFromName(state().schema(), type), false));
}

Element Model::byGuid(std::string_view guid) const {
    const auto value = guid.size() == ifc::IfcGuid::Length ? ifc::IfcGuid::fromIfcGuid(guid) : std::nullopt;
    if (!value) throw ValueError("\"" + std::string(guid.substr(0, 100)) + "\" is no GlobalId of 22 characters");
    return state().elementOf(state().pFromGuid(*value));
}
Element Model::byId(std::uint64_t id) const { return state().elementOf(state().pFromNumber(id)); }

Element Model::create(std::string_view type, std::initializer_list<Field> fields) {
    return create(type, std::span<const Field>(fields.begin(), fields.size()));
}
Element Model::create(std::string_view type, std::span<const Field> fields) {
    return state().elementOf(&state().create(detail::typeFromName(state().schema(), type), fields));
}
void Model::set(const Element& element, std::string_view name, const NewValue& value) {
    state().vSet(state().entityHere(element), name, value);
}
void Model::append(const Element& element, std::string_view name, const NewValue& item) {
    state().vAppend(state().entityHere(element), name, item);
}
Removed Model::remove(const Element& element) {
    ifc::EntityRemoval removal = state().remove({&state().entityHere(element)});
    return {removal.removed.size(), state().elementsOf(std::move(removal.incomplete))};
}
Removed Model::remove(const Elements& elements) {
    const std::vector<Element> all(elements.begin(), elements.end());
    return remove(std::span<const Element>(all));
}
Removed Model::remove(std::span<const Element> elements) {
    std::vector<ifc::Entity*> entities;
    for (const Element& element : elements) entities.push_back(&state().entityHere(element));
    ifc::EntityRemoval removal = state().remove(entities);
    return {removal.removed.size(), state().elementsOf(std::move(removal.incomplete))};
}

std::vector<Record> Model::save(const std::filesystem::path& path, const SaveOptions& options) {
    const Format format = options.format == Format::Auto ? detail::formatOf(str::sOfPath(path)) : options.format;
    if (!options.replaceIncomplete && !whole() && state().boIsFrom(path))
        throw FileError(str::sOfPath(path) +
                        ": is the file that the model was read from, and not all of it is in the model: "
                        "the rest would be lost; SaveOptions::replaceIncomplete saves nevertheless");
    const auto pTarget = written(path, [&] { return std::make_unique<stream::ReplacedFile>(path); });
    const std::string sInside = unpackedName(str::sOfPath(path.filename()), detail::endOf(format));
    std::optional<Packer> packer;
    if (const Packing packing = packingOfName(str::sOfPath(path)); packing != Packing::None)
        packer.emplace(pTarget->stream(), packing, sInside);
    std::vector<Record> records =
        detail::modelWrite(state(), packer ? packer->stream() : pTarget->stream(), format, options);
    if (packer) packer->finish();
    written(path, [&] { pTarget->vFinish(); });
    return records;
}
std::vector<Record> Model::save(std::ostream& out, const SaveOptions& options) {
    std::vector<Record> records = detail::modelWrite(state(), out, options.format, options);
    if (!out.flush()) throw FileError("the stream did not take all of the model");
    return records;
}

std::span<const Record> Model::errors() const { return state().records(); }
bool Model::whole() const { return state().boWhole(); }

ifc::FileBase& Model::core() { return state().file(); }
const ifc::FileBase& Model::core() const { return state().file(); }

}   // namespace oxa
