# SPDX-License-Identifier: Apache-2.0
"""Questions to elements: their properties, type, place, parts and materials.

The same in IFC2X3, IFC4 and IFC4X3. They raise RemovedError for an element that was removed, ValueTypeError for what is
no Entity.
"""

from ._core import (
    get_container,
    get_decomposition,
    get_material,
    get_materials,
    get_parent,
    get_predefined_type,
    get_psets,
    get_type,
)

__all__ = [
    "get_container",
    "get_decomposition",
    "get_material",
    "get_materials",
    "get_parent",
    "get_predefined_type",
    "get_psets",
    "get_type",
]
