// SPDX-License-Identifier: Apache-2.0
// Relations: what an element is related to: its type, where it stands, what it consists of, its properties, quantities,
// materials, classifications and groups. The same in IFC2X3, IFC4 and IFC4X3.
//
// For      programs that ask for "the fire rating of this wall" and not for three relationships and a list.
// Example  for (const oxa::PropertySet& set : oxa::psets(wall))
//              for (const oxa::Property& one : set.properties) std::cout << set.name << '.' << one.name << '\n';
// Order    where a file has several of one kind, by the numbers of the relationships, and in the order of lists.
// Cost     inverse lists of the element, and of what is asked on the way; nothing is searched.
// Errors   HandleError for an element that is not there. What an element does not have is empty, or names nothing.
// Threads  see Model.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Model/Element.h"
#include "Model/Value.h"
#include "platform/Export.h"

namespace oxa {

class Model;

///@{
/// All of a kind, by number: objects and types of objects; projects; sites, buildings, storeys and spaces; what stands in
/// them, as walls and doors.
[[nodiscard]] OXA_MODEL_API Elements objects(const Model& model);
[[nodiscard]] OXA_MODEL_API Elements projects(const Model& model);
[[nodiscard]] OXA_MODEL_API Elements spatialElements(const Model& model);
[[nodiscard]] OXA_MODEL_API Elements physicalElements(const Model& model);
///@}
/// Whether it is a site, a building, a storey, a space or another part of the spatial structure.
[[nodiscard]] OXA_MODEL_API bool isSpatial(const Element& element);

/// The type object of an element.
[[nodiscard]] OXA_MODEL_API Element type(const Element& element);

/// One step up, towards the project: the whole of a part (aggregated, then nested), else the spatial element that
/// contains it, else the element that an opening voids, the opening that it fills, or what it projects from or is a
/// port of.
[[nodiscard]] OXA_MODEL_API Element parent(const Element& element);
/// The nearest spatial element above: of a wall its storey, of a part the one of its whole, of a door in a wall that of
/// the wall, unless it has one of its own.
[[nodiscard]] OXA_MODEL_API Element container(const Element& element);
/// The nearest storey above.
[[nodiscard]] OXA_MODEL_API Element storey(const Element& element);
/// The nearest building above; in IFC4X3 also a bridge, a road or another facility.
[[nodiscard]] OXA_MODEL_API Element building(const Element& element);

/// What it consists of: what is aggregated and nested in it, its openings and their fillings, projections and ports.
[[nodiscard]] OXA_MODEL_API Elements parts(const Element& element);
/// What a spatial element contains directly, apart from its parts.
[[nodiscard]] OXA_MODEL_API Elements contents(const Element& element);
/// Groups, systems and zones that it is assigned to.
[[nodiscard]] OXA_MODEL_API Elements groups(const Element& element);

/// Whether an element has a property, a material or a classification by itself or by its type.
enum class Source : std::uint8_t { Instance, Type };

/// What holds the values of a property: the class of IfcProperty, or something else that is told as one.
enum class PropertyKind : std::uint8_t {
    Single,
    Bounded,
    Enumerated,
    List,
    Table,
    Reference,
    Complex,
    Quantity,
    Attribute   ///< of a set that the schema defines, as the panel of a door
};

/// A property or a quantity, with its values.
struct Property {
    std::string name;                           ///< as the file has it
    PropertyKind kind = PropertyKind::Single;   ///< which of the values below there can be
    Source source = Source::Instance;           ///< of the set that it stands in
    Element element;                            ///< the property; of an attribute its set
    Element unit;                               ///< where one is given here; see Units.h
    /// The value: of a list or an enumeration all of them, of a bounded one the set point, of a table the defined
    /// values, of a reference the element. Null where there is none, and of a complex one.
    Value value;
    Value lower;                        ///< of a bounded one
    Value upper;                        ///< of a bounded one
    Value defining;                     ///< of a table
    std::vector<Property> properties;   ///< of a complex one
};

/// A property set or a set of quantities.
struct PropertySet {
    std::string name;                   ///< as the file has it
    Source source = Source::Instance;   ///< Type where the element has no set of this name by itself
    Element element;                    ///< the set, the element's own where there are two
    std::vector<Property> properties;   ///< in their order; see psets()
};

/// Property sets, those of the element first, then those of its type. Sets of one name are one set here, and of two
/// properties of one name the first counts, so that what an element says of itself hides what its type says. Of a type
/// object: its own.
[[nodiscard]] OXA_MODEL_API std::vector<PropertySet> psets(const Element& element);
/// The same for quantities.
[[nodiscard]] OXA_MODEL_API std::vector<PropertySet> quantities(const Element& element);
/// One property or quantity, as psets() and quantities() tell it; "Complex.Part" is a part of a complex one.
[[nodiscard]] OXA_MODEL_API std::optional<Property> property(const Element& element, std::string_view set,
                                                             std::string_view name);

/// A material, and the place that it has in an element.
struct Material {
    Element element;    ///< the material; names nothing for a layer of air
    std::string name;   ///< of the material
    std::string part;   ///< the name of the layer, profile or constituent
    Element of;         ///< that layer, profile or constituent; names nothing for a material on its own or in a list
    Element set;        ///< the layer, profile or constituent set, or the list; names nothing for a material on its own
    std::string setName;                 ///< the name of that set; empty where it has none
    std::optional<double> thickness{};   ///< of a layer, in the unit of the model
    std::optional<double> fraction{};    ///< of a constituent, from 0 to 1
    Source source = Source::Instance;    ///< who says so
};

/// What the element consists of, an entry a layer, profile or constituent in their order; where it says nothing itself,
/// what its type says.
[[nodiscard]] OXA_MODEL_API std::vector<Material> materials(const Element& element);

/// A place in a system of classification.
struct Classification {
    Element element;                    ///< the reference, notation or classification
    std::string system;                 ///< as in Uniclass 2015; empty where the file does not say
    std::string code;                   ///< as in Ss_25_10_20
    std::string name;                   ///< in words
    Source source = Source::Instance;   ///< who says so
};

/// Those of the element, then those of its type.
[[nodiscard]] OXA_MODEL_API std::vector<Classification> classifications(const Element& element);

/// What an entity is to those who look at elements.
enum class Role : std::uint8_t {
    Other,
    Object,             ///< an element, a spatial element, a type object, the project
    Set,                ///< a set of properties or quantities
    TypeOf,             ///< relationships: who has which type,
    SetsOf,             ///< which set,
    PlaceOf,            ///< stands in, is a part of, or fills what,
    MaterialOf,         ///< is made of what,
    ClassificationOf,   ///< is classified as what,
    GroupOf             ///< belongs to which group
};
/// That role, by the class of the entity.
[[nodiscard]] OXA_MODEL_API Role role(const Element& element);
/// Of whom an entity tells something: of a relationship the elements that have the type, the set, the material and so on;
/// of a set those that have it, types too, with the elements of these; of a type object its elements. Each once.
[[nodiscard]] OXA_MODEL_API Elements concerned(const Element& element);

}   // namespace oxa
