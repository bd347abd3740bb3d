# SPDX-License-Identifier: Apache-2.0
"""Building models in IFC (ISO 16739): read, asked, checked, changed, compared, written.

    import oxaifc
    f = oxaifc.open("house.ifc")
    for wall in f.by_type("IfcWall"):
        print(wall.GlobalId, wall.Name)
"""

from . import util
from ._check import check
from ._core import (
    Derived,
    DerivedType,
    Entity,
    FileDescription,
    FileName,
    FileSchema,
    Header,
    Model,
    Table,
    TypedValue,
    __version__,
    diff,
    open,
    table_names,
)
from ._errors import (
    Error,
    FileError,
    Hint,
    IdsError,
    MissingFileError,
    NotFoundError,
    QueryError,
    RefusedError,
    RemovedError,
    SqlError,
    UnknownNameError,
    ValueTypeError,
)
from ._parquet import ParquetResult, to_parquet
from ._results import (
    Change,
    CheckGroup,
    CheckLevel,
    CheckPlace,
    CheckReport,
    Detail,
    Diff,
    Difference,
    ElementName,
    EntityName,
    IdsFailure,
    IdsFault,
    IdsReport,
    IdsSpecification,
    OtherChange,
    Others,
    Record,
    Removed,
    Rows,
)
from ._tables import Column

#: For scripts that call it so.
file = Model

__all__ = [
    "Change",
    "CheckGroup",
    "CheckLevel",
    "CheckPlace",
    "CheckReport",
    "Column",
    "Derived",
    "DerivedType",
    "Detail",
    "Diff",
    "Difference",
    "ElementName",
    "Entity",
    "EntityName",
    "Error",
    "FileDescription",
    "FileError",
    "FileName",
    "FileSchema",
    "Header",
    "Hint",
    "IdsError",
    "IdsFailure",
    "IdsFault",
    "IdsReport",
    "IdsSpecification",
    "MissingFileError",
    "Model",
    "NotFoundError",
    "OtherChange",
    "Others",
    "ParquetResult",
    "QueryError",
    "Record",
    "RefusedError",
    "Removed",
    "RemovedError",
    "Rows",
    "SqlError",
    "Table",
    "TypedValue",
    "UnknownNameError",
    "ValueTypeError",
    "__version__",
    "check",
    "diff",
    "file",
    "open",
    "table_names",
    "to_parquet",
    "util",
]
