// SPDX-License-Identifier: Apache-2.0
/// @file
/// Object: what a property grid of a host application asks of an object that it shows.
///
/// For      FileHeader, whose fields a host shows; a host's own objects.
/// Callers  the grid: it takes the tree of an object once, and asks for names and values as it draws.
/// Not for  reading or writing files, and not for entities: their attributes are reached over Entity.
/// Threads  those of the object behind the interface.
#pragma once

#include <any>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/Export.h"

/// The root of what a host application shows.
namespace oxa::generate {

/// What all objects that a host knows have in common.
class OXA_PLATFORM_API ObjectInterface {
public:
    virtual ~ObjectInterface();

protected:
    ///@{
    /// For derived classes: there is nothing to copy.
    ObjectInterface() = default;
    ObjectInterface(const ObjectInterface&) = default;
    ObjectInterface(ObjectInterface&&) noexcept = default;
    ObjectInterface& operator=(const ObjectInterface&) = default;
    ObjectInterface& operator=(ObjectInterface&&) noexcept = default;
    ///@}
};

}   // namespace oxa::generate

/// Properties of objects, for a property grid.
namespace oxa::object {

/// The key of a property: ids are the same when their bytes are.
using PropertyId = std::string;

/// An object as a grid sees it: properties by id, with values of any type. A property without a unit, a description and
/// so on answers with an empty text or list.
class OXA_PLATFORM_API PropertyInterface : public generate::ObjectInterface {
public:
    /// Takes one change of a property, with the id and the new value.
    using PropertyListener = std::function<void(const PropertyId& id, const std::any& value)>;

    ~PropertyInterface() override;

    /// The ids that carry a name; groups among them.
    [[nodiscard]] virtual std::set<PropertyId> getAllProperties() const = 0;
    /// What tells the object from others of its host; empty where it has no such key.
    [[nodiscard]] virtual std::string getPropertiesObjectKey() const = 0;
    /// Does nothing where a value can't be set.
    virtual void setValue(const PropertyId& id, const std::any& value) = 0;
    /// Empty where there is no value or no such id.
    [[nodiscard]] virtual std::any getValue(const PropertyId& id) const = 0;
    /// Whether the value may be offered; this does not say that the object takes it.
    [[nodiscard]] virtual bool isValueAllowed(const PropertyId& id, const std::any& value) const = 0;
    /// Whether a user may change the value.
    [[nodiscard]] virtual bool isValueEditable(const PropertyId& id) const = 0;
    /// Whether the value comes from another object, as a default.
    [[nodiscard]] virtual bool isValueInherited(const PropertyId& id) const = 0;
    /// The object that the value belongs to instead; null where it is this one's own.
    [[nodiscard]] virtual std::shared_ptr<PropertyInterface> getPropertyOwner(const PropertyId& id) const = 0;
    /// Whether resetValue() would change anything.
    [[nodiscard]] virtual bool isResetAllowed(const PropertyId& id) const = 0;
    /// Goes back to the value that holds where nobody has set one.
    virtual void resetValue(const PropertyId& id) = 0;
    /// The label; empty for an unknown id.
    [[nodiscard]] virtual std::string getPropertyName(const PropertyId& id) const = 0;
    /// A sentence for people on what the property means.
    [[nodiscard]] virtual std::string getPropertyDescription(const PropertyId& id) const = 0;
    /// The unit to be shown behind the value.
    [[nodiscard]] virtual std::string getPropertyUnit(const PropertyId& id) const = 0;
    /// How the value is to be shown, in terms of the host.
    [[nodiscard]] virtual std::string getPropertyFormat(const PropertyId& id) const = 0;

    ///@{
    /// The values that a list offers, as they are held and as they are shown; and what they look like.
    [[nodiscard]] virtual std::vector<std::any> getOfferedValues(const PropertyId& id) const = 0;
    [[nodiscard]] virtual std::vector<std::string> getOfferedTexts(const PropertyId& id) const = 0;
    [[nodiscard]] virtual std::vector<std::string> getOfferedIcons(const PropertyId& id) const = 0;
    ///@}

    /// Whom to tell of a change that did not come over this interface; an empty function for nobody.
    [[nodiscard]] virtual PropertyListener getPropertyListener(const PropertyId& id) const = 0;
    /// The ids whose values change together with this one's.
    [[nodiscard]] virtual std::vector<PropertyId> getDependentProperties(const PropertyId& id) const = 0;

protected:
    ///@{
    /// For derived classes: there is nothing to copy.
    PropertyInterface() = default;
    PropertyInterface(const PropertyInterface&) = default;
    PropertyInterface(PropertyInterface&&) noexcept = default;
    PropertyInterface& operator=(const PropertyInterface&) = default;
    PropertyInterface& operator=(PropertyInterface&&) noexcept = default;
    ///@}
};

}   // namespace oxa::object

/// The tree of properties that a grid shows.
namespace oxa::fc {

/// A node of the tree that a grid shows. It holds no value: the grid asks the owner for it.
struct OXA_PLATFORM_API Property {
    /// The key of the property for its owner.
    object::PropertyId id;
    /// It only holds others together and has no value.
    bool boGroup = false;
    /// The object to ask for the value.
    std::shared_ptr<object::PropertyInterface> owner;
    /// The nodes below, in the order to be shown.
    std::vector<std::shared_ptr<Property>> children;
    std::string label;   ///< shown instead of the owner's name for the id; empty for that name
    std::string icon;    ///< empty for none
    /// False: the grid passes it over.
    bool boVisible = true;
    std::shared_ptr<Property> origin;   ///< the node that this one repeats elsewhere in the tree; null for none

    Property();
    ~Property();
};

}   // namespace oxa::fc
