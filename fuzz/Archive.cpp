// SPDX-License-Identifier: Apache-2.0
// Archive: any bytes as a packed file, unpacked, read as a model, and what came out packed and unpacked again.

#include <istream>
#include <sstream>
#include <string>

#include "Fuzz.h"
#include "Model/Archive.h"
#include "Model/Error.h"
#include "Model/Model.h"

namespace oxa::fuzz {

namespace {

constexpr UnpackLimits g_limits{std::uint64_t{1} << 22, 200};

std::string sInside(std::istream& stream, Packing packing) {
    Unpacked unpacked(packing, *stream.rdbuf(), "fuzz", {}, g_limits);
    std::string sText{std::istreambuf_iterator<char>(&unpacked.bytes()), {}};
    if (unpacked.fault().empty() && unpacked.size())
        vExpect(*unpacked.size() == sText.size(), "an archive without a fault has as many bytes as it says");
    return unpacked.fault().empty() ? sText : std::string();
}

}   // namespace

void vRun(std::string_view input) {
    const Packing packing = packingOf(input);
    try {
        if (packing != Packing::None) {
            ExactStream stream(input);
            const std::string sText = sInside(stream, packing);
            std::stringstream packed;
            Packer packer(packed, packing, "a.ifc");
            packer.stream() << sText;
            packer.finish();
            if (!sText.empty()) vExpect(sInside(packed, packing) == sText, "what is packed comes out again");
        }
        ExactStream stream(input);
        OpenOptions options;
        options.threads = 1;
        options.unpack = g_limits;
        static_cast<void>(Model::open(stream, options).size());
    } catch (const Error&) {   // what can't be unpacked, or is no model
    }
}

}   // namespace oxa::fuzz
