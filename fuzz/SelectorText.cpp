// SPDX-License-Identifier: Apache-2.0
// SelectorText: any bytes as a query, over a model of one wall.

#include <string>

#include "Fuzz.h"
#include "Model/Columns.h"
#include "Model/Selector.h"

namespace oxa::fuzz {

namespace {

const Model& model() {
    static const Model one =
        Model::fromBuffer("ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;"
                          "#1=IFCWALL('0000000000000000000001',$,'W',$,$,$,$,'12',$);"
                          "#2=IFCRELDEFINESBYPROPERTIES('0000000000000000000002',$,$,$,(#1),#3);"
                          "#3=IFCPROPERTYSET('0000000000000000000003',$,'S',$,(#4,#5));"
                          "#4=IFCPROPERTYSINGLEVALUE('P',$,IFCREAL(1.5),$);#5=IFCCOMPLEXPROPERTY('C',$,'u',(#4,#5));"
                          "ENDSEC;END-ISO-10303-21;");
    return one;
}

}   // namespace

void vRun(std::string_view input) {
    const ExactBytes bytes(input);
    try {
        const Selector selector(bytes.text());
        const std::string sText = selector.text();
        const Selector again(sText);
        vExpect(again.text() == sText, "the form of a query is its own form");
        const Selection found = selector.select(model());
        vExpect(again.select(model()).elements.size() == found.elements.size(), "a query and its form select the same");
    } catch (const Error&) {   // what is no query, or names what the schema does not have
    }
    try {
        Columns columns(model(), {std::string(bytes.text())});
        static_cast<void>(columns.row(model().byId(1)));
    } catch (const NameError&) {}
}

}   // namespace oxa::fuzz
