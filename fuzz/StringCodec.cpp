// SPDX-License-Identifier: Apache-2.0
// StringCodec: any bytes as the inside of a STEP string, and any bytes as a text to be put into one.

#include <algorithm>
#include <string>

#include "Format/Ifc/IfcStepStrings.h"
#include "Fuzz.h"
#include "platform/String.h"

namespace oxa::fuzz {

void vRun(std::string_view input) {
    const ExactBytes inside(input, "'");
    std::string sDecoded;
    ifc::vIfcStrToUtf8(sDecoded, inside.text().data(), inside.text().size());

    for (const std::string_view text : {input, std::string_view(sDecoded)}) {
        const ExactBytes bytes(text);
        std::string sEncoded;
        try {
            ifc::sIfcStrFromUtf8(sEncoded, bytes.text().data(), text.size());
        } catch (const str::exception&) {
            vExpect(sEncoded.empty(), "what is no UTF-8 gives nothing");
            continue;
        }
        vExpect(std::ranges::all_of(sEncoded, [](char c) { return c >= 32 && c <= 126; }), "STEP text is plain ASCII");
        const ExactBytes encoded(sEncoded, "'");
        std::string sBack;
        ifc::vIfcStrToUtf8(sBack, encoded.text().data(), sEncoded.size());
        vExpect(sBack == text, "a text survives STEP");
    }
}

}   // namespace oxa::fuzz
