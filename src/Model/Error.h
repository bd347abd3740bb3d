// SPDX-License-Identifier: Apache-2.0
/// @file
/// Error: what the short way in throws.
///
/// For      callers who made a mistake, or whose file can't be opened or written: each has a message that says what was
///          wrong with what, and what would be right.
/// Not for  what is wrong inside of a file: that is a record (Model::errors), and the rest of the file is there.
/// Threads  plain values.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/Export.h"

namespace oxa {

/// Everything that Model, Element and Value throw on purpose.
class OXA_MODEL_API Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    ~Error() override;
};

/// A type, an attribute or a schema by a name that there is none of.
class OXA_MODEL_API NameError final : public Error {
public:
    /// With the text of what().
    explicit NameError(const std::string& message, std::vector<std::string> nearNames = {})
        : Error(message),
          m_near(std::move(nearNames)) {}
    ~NameError() override;

    /// Names that may have been meant, nearest first; they are in the message too.
    [[nodiscard]] const std::vector<std::string>& nearNames() const noexcept { return m_near; }

private:
    std::vector<std::string> m_near;
};

/// A value was asked for as something that it is not: a number as a text.
class OXA_MODEL_API TypeError final : public Error {
public:
    using Error::Error;
    ~TypeError() override;
};

/// A value that can't be taken: the schema does not allow it, or there is none where one is needed.
class OXA_MODEL_API ValueError final : public Error {
public:
    using Error::Error;
    ~ValueError() override;
};

/// An Element or a Value of what is not there any more: removed, or its model is gone; or an Element of another model.
class OXA_MODEL_API HandleError final : public Error {
public:
    using Error::Error;
    ~HandleError() override;
};

/// A file that can't be opened, read as a model, or written.
class OXA_MODEL_API FileError final : public Error {
public:
    using Error::Error;
    ~FileError() override;
};

/// The stop token of a read or a write asked for its end. Of a read nothing is left, nor of a file to be written.
class OXA_MODEL_API Stopped final : public Error {
public:
    using Error::Error;
    ~Stopped() override;
};

}   // namespace oxa
