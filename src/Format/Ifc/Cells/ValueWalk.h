// SPDX-License-Identifier: Apache-2.0
// ValueWalk: the values of a cell as a caller's type, for callers that know the class of the cell.
//
// For      typed access by name, which finds the class in the layout. AttributeBase::boForEach derives it first.
// Cost     an indirect call a value, and no std::function.
#pragma once

#include <memory>
#include <type_traits>

#include "Format/Ifc/IfcFileAttribute.h"

namespace oxa::ifc {

// What is done with each value: a function of the caller's, which must outlive the walk. False ends the walk.
template <class T>
class ValueFunction {
public:
    template <class Function>
        requires(!std::is_same_v<std::remove_cvref_t<Function>, ValueFunction>)
    ValueFunction(Function&& function)
    noexcept
        : m_pFunction(const_cast<void*>(static_cast<const void*>(std::addressof(function)))),
          m_pCall([](void* pFunction, T& item) -> bool {
              return (*static_cast<std::remove_reference_t<Function>*>(pFunction))(item);
          }) {}
    bool operator()(T& item) const { return m_pCall(m_pFunction, item); }

private:
    void* m_pFunction;
    bool (*m_pCall)(void*, T&);
};

// Which values are asked for: single ones, those of lists, or both.
struct Wanted {
    bool boSingle;
    bool boList;
};

// Walks the values of type T that the cell holds, until the function returns false. False without a value, for a class
// that holds no T, and when the function stopped the walk. One instance for each T to walk of Cells/ValueTypes.h.
template <class T>
bool boWalkValues(const AttributeBase& cell, CellClass eClass, ValueFunction<T> function, Wanted wanted);

}   // namespace oxa::ifc
