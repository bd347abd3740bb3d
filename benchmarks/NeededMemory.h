// SPDX-License-Identifier: Apache-2.0
// NeededMemory: what the values of a model take by the sizes of their cells, lists and slots, without what any
// allocator or table adds. The measure for the memory of a read.
#pragma once

#include <cstddef>

namespace oxa::ifc {
class Data;
}   // namespace oxa::ifc

namespace oxa::bench {

// Bytes of slots, attribute blocks, texts, lists, nested cells, inverse blocks and their lists.
[[nodiscard]] std::size_t iNeededBytes(const ifc::Data& data);

}   // namespace oxa::bench
