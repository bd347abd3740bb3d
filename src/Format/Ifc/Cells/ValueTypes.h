// SPDX-License-Identifier: Apache-2.0
// ValueTypes: the types of value that callers set and get, each with the families of operations that take it.
//
// For      the explicit instances of those families, which are all that a user of the library can call.
// A type   that callers shall have besides is a row here, and an overload where its cells are written or walked.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcTypeSelectBase.h"

namespace oxa::ifc {

using Bytes = std::vector<unsigned char>;
using BytesView = std::pair<unsigned char*, std::size_t>;

// Names of one word, as the rows need them.
namespace value {
using Integer = long long;
using Unsigned = unsigned long long;
using Byte = unsigned char;
using Characters = char*;
using Text = const char*;
using Reference = Entity*;
using ConstReference = const Entity*;
using Point2 = math::_2d::Point;
using Vector2 = math::_2d::Vector;
using Point3 = math::_3d::Point;
using Vector3 = math::_3d::Vector;
using Select = types::IfcSelectBase;
using Reals2 = IfcArray<double, 2>;
using Reals3 = IfcArray<double, 3>;
using Integers2 = IfcArray<long long, 2>;
using Integers3 = IfcArray<long long, 3>;
template <class T>
using Row = std::vector<T>;
}   // namespace value

// clang-format off
// One row a type, one column a family:
//   Get     Entity::boValueGet of a T                      GetList  Entity::boListValueGet of a vector of T
//   Set     Entity::boValueSet2, and boValueSet of a list with a T for all its items
//   SetList Entity::boListValueSet, and boValueSet of a list, of a vector of T; Name: by name alone
//   Append  Entity::boListValuePushBack, and boPushBackValue of a list; List: of a list alone
//   Walk    boForEach of a cell and of a list
// The last column is how an assertion calls a type that no row of a list of lists becomes.
//      T                           Get  GetList Set  SetList Append Walk
#define OXA_VALUE_TYPES(Row_) \
    Row_(double,                      Yes, Yes,    Yes, Yes,    Yes,   Yes, "double") \
    Row_(value::Integer,              Yes, Yes,    Yes, Yes,    Yes,   Yes, "long long") \
    Row_(value::Unsigned,             Yes, No,     Yes, No,     No,    Yes, "unsigned long long") \
    Row_(int,                         No,  No,     No,  No,     No,    Yes, "int") \
    Row_(bool,                        Yes, No,     Yes, No,     No,    Yes, "bool") \
    Row_(LogicalValue,                Yes, No,     Yes, No,     No,    Yes, "LogicalValue") \
    Row_(Guid,                        Yes, No,     Yes, No,     No,    Yes, "Guid") \
    Row_(char,                        No,  Yes,    No,  Yes,    Yes,   Yes, "char") \
    Row_(value::Byte,                 No,  Yes,    No,  Name,   No,    Yes, "unsigned char") \
    Row_(value::Characters,           No,  No,     No,  No,     No,    Yes, "char *") \
    Row_(value::Text,                 Yes, Yes,    Yes, Yes,    Yes,   No,  nullptr) \
    Row_(std::string,                 Yes, Yes,    Yes, Yes,    Yes,   Yes, "std::string") \
    Row_(Bytes,                       Yes, Yes,    Yes, Yes,    Yes,   Yes, "std::vector<unsigned char>") \
    Row_(BytesView,                   No,  No,     No,  No,     No,    Yes, "std::pair<unsigned char *,std::size_t>") \
    Row_(value::Reference,            Yes, Yes,    No,  Yes,    No,    Yes, "Entity *") \
    Row_(value::ConstReference,       No,  No,     Yes, Yes,    Yes,   No,  nullptr) \
    Row_(value::Select,               Yes, Yes,    Yes, Yes,    Yes,   No,  nullptr) \
    Row_(AttributeSelect,             No,  No,     No,  No,     No,    Yes, "AttributeSelect") \
    Row_(value::Point2,               Yes, Yes,    Yes, Yes,    List,  Yes, nullptr) \
    Row_(value::Vector2,              Yes, No,     Yes, No,     No,    Yes, nullptr) \
    Row_(value::Point3,               Yes, Yes,    Yes, Yes,    Yes,   Yes, nullptr) \
    Row_(value::Vector3,              Yes, No,     Yes, No,     No,    Yes, nullptr) \
    Row_(value::Reals2,               No,  Yes,    No,  Yes,    Yes,   Yes, nullptr) \
    Row_(value::Reals3,               No,  Yes,    No,  Yes,    Yes,   Yes, nullptr) \
    Row_(value::Integers2,            No,  Yes,    No,  Yes,    Yes,   Yes, nullptr) \
    Row_(value::Integers3,            No,  Yes,    No,  Yes,    Yes,   Yes, nullptr) \
    Row_(value::Row<double>,          No,  Yes,    No,  Yes,    Yes,   Yes, nullptr) \
    Row_(value::Row<long long>,       No,  Yes,    No,  Yes,    Yes,   Yes, nullptr) \
    Row_(value::Row<char>,            No,  Yes,    No,  Yes,    Yes,   Yes, nullptr) \
    Row_(value::Row<std::string>,     No,  No,     No,  Yes,    No,    No,  nullptr) \
    Row_(value::Row<Entity*>,         No,  Yes,    No,  No,     Yes,   Yes, nullptr) \
    Row_(value::Row<const Entity*>,   No,  No,     No,  Yes,    No,    No,  nullptr)
// clang-format on

// The arrays of Entity::boFixedArrayValueGet and boFixedArrayValueSet: the type to get, the type to set, the count.
#define OXA_FIXED_ARRAYS(Row_)                                                            \
    Row_(long long, long long, 2) Row_(double, double, 2) Row_(Entity*, const Entity*, 2) \
        Row_(long long, long long, 3) Row_(double, double, 3) Row_(Entity*, const Entity*, 3)

}   // namespace oxa::ifc
