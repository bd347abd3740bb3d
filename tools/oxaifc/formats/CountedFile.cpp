// SPDX-License-Identifier: Apache-2.0
// Counts a STEP file of the disk; of any other says that it has to be read.
#include "oxaifc/formats/CountedFile.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <system_error>

#include <fmt/format.h>

#include "oxaifc/io/Output.h"
#include "oxaifc/io/Progress.h"
#include "platform/Path.h"

namespace oxa::tool {

CountedFile::CountedFile(const ModelOptions& options) : m_schemas(options.schemaPaths) {
    // What can be opened once only is left to the read.
    std::error_code error;
    if (options.sPath == "-" || !std::filesystem::is_regular_file(str::pathOf(options.sPath), error)) {
        m_count.doubt = "no file of the disk";
        return;
    }
    const std::unique_ptr<Input> pInput = pFileOpen(options.sPath, options.unpack.limits());
    m_sName = pInput->sName();
    if (pInput->boPacked()) {
        m_count.doubt = "packed";
        return;
    }
    if (formatOfInput(pInput->sInside(), pInput->firstBytes()).word != formats().front()->word) {
        m_count.doubt = "no STEP file";
        return;
    }
    std::uint64_t iDone = 0;
    Progress progress([&](unsigned) {
        return fmt::format("counting {}: {} %", sPrintable(m_sName), iDone * 100 / pInput->iBytesExpected());
    });
    ifc::io::CountOptions how{.schemaFromName = m_schemas.function(), .boSingleThreaded = options.boSingleThreaded};
    if (const auto vTell = progress.function())
        how.progress = [&iDone, vTell](std::uint64_t iBytes) {
            iDone = iBytes;
            vTell(0);
        };
    const auto start = std::chrono::steady_clock::now();
    m_count = ifc::io::CountFile::count(str::pathOf(options.sPath), how);
    m_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}   // namespace oxa::tool
