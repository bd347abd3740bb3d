// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/formats/ElementModel.h"

#include <algorithm>
#include <cstdio>

#include <fmt/format.h>

#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"

namespace oxa::tool {

namespace {

// Why there is no schema: the record that ended the read, where there is one.
[[noreturn]] void vNoSchema(const Model& file) {
    const auto& records = file.errors();
    const auto fatal = std::ranges::find(records, ifc::Errors::Fatal, &ifc::ErrorRecord::severity);
    throw Failure(fmt::format("{}: {}", file.sName(),
                              fatal == records.end() ? "has no schema that is known" : sPrintable(fatal->description)));
}

oxa::Model elements(Model& file) {
    if (const std::size_t iErrors = file.errors().size(); iErrors && file.data().pSchema())
        vTell(fmt::format("{}: {} while reading; oxaifc check tells {}", file.sName(), sCounted(iErrors, "error"),
                          iErrors == 1 ? "it" : "them"));
    return elementsOf(file);
}

}   // namespace

oxa::Model elementsOf(Model& file) {
    if (!file.data().pSchema()) vNoSchema(file);
    return oxa::Model::fromCore(file.pFileTake());
}

ElementModel::ElementModel(const ModelOptions& options) : m_file(options, true), m_model(elements(m_file)) {}

void vTell(const std::string& sText) { std::fputs(fmt::format("oxaifc: {}\n", sPrintable(sText)).c_str(), stderr); }

}   // namespace oxa::tool
