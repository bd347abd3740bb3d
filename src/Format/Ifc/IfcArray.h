// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcArray: values of fixed size as callers see them: arrays, points, vectors and the three-valued logical.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace oxa {

/// EXPRESS LOGICAL (ISO 10303-11, 8.1.4).
enum class LogicalValue : std::int32_t { False = 0, True = 1, Unknown = -1 };

/// Values of geometry, which say nothing of the model that they are from.
namespace math {

/// A plain value of N doubles, in the model's own unit of length.
template <std::size_t N, class Tag>
struct Coordinates {
    std::array<double, N> m_values{};   ///< x, y and, where N is 3, z

    static constexpr std::size_t iSize = N;   ///< how many there are
    ///@{
    /// A coordinate by its position, from 0; not checked against N.
    [[nodiscard]] double& operator[](std::size_t i) noexcept { return m_values[i]; }
    [[nodiscard]] double operator[](std::size_t i) const noexcept { return m_values[i]; }
    ///@}
    friend bool operator==(const Coordinates&, const Coordinates&) = default;
};

struct PointTag;    ///< only tells points from vectors
struct VectorTag;   ///< only tells vectors from points

/// The plane.
namespace _2d {
using Point = Coordinates<2, PointTag>;     ///< a place in the plane: x, y
using Vector = Coordinates<2, VectorTag>;   ///< a direction or distance in the plane, which no point is taken for
}   // namespace _2d
/// Space.
namespace _3d {
using Point = Coordinates<3, PointTag>;     ///< a place in space: x, y, z
using Vector = Coordinates<3, VectorTag>;   ///< a direction or distance in space, which no point is taken for
}   // namespace _3d

}   // namespace math

namespace ifc {

/// A fixed array of N values of T.
template <class T, std::size_t N>
struct IfcArray {
    std::array<T, N> m_values{};   ///< the items in their order

    static constexpr std::size_t iSize = N;   ///< how many there are
    ///@{
    /// An item by its position, from 0; not checked against N.
    [[nodiscard]] T& operator[](std::size_t i) noexcept { return m_values[i]; }
    [[nodiscard]] const T& operator[](std::size_t i) const noexcept { return m_values[i]; }
    ///@}
    friend bool operator==(const IfcArray&, const IfcArray&) = default;
};

}   // namespace ifc
}   // namespace oxa
