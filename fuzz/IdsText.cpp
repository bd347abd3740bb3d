// SPDX-License-Identifier: Apache-2.0
// IdsText: any bytes as a file of requirements, and a model of one wall held to it.

#include <string>

#include "Check/Ids.h"
#include "Fuzz.h"
#include "Model/Model.h"

namespace oxa::fuzz {

namespace {

const Model& model() {
    static const Model one = Model::fromBuffer(
        "ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;"
        "#1=IFCWALL('0000000000000000000001',$,'W',$,$,$,$,'12',.SHEAR.);"
        "#2=IFCRELDEFINESBYPROPERTIES('0000000000000000000002',$,$,$,(#1),#3);"
        "#3=IFCPROPERTYSET('0000000000000000000003',$,'S',$,(#4,#5));"
        "#4=IFCPROPERTYSINGLEVALUE('P',$,IFCREAL(1.5),$);#5=IFCCOMPLEXPROPERTY('C',$,'u',(#4,#5));"
        "#6=IFCCLASSIFICATION($,$,$,'Y',$,$,$);#7=IFCCLASSIFICATIONREFERENCE($,'1',$,#6,$,$);"
        "#8=IFCRELASSOCIATESCLASSIFICATION('0000000000000000000004',$,$,$,(#1),#7);"
        "#9=IFCMATERIAL('M',$,$);#10=IFCRELASSOCIATESMATERIAL('0000000000000000000005',$,$,$,(#1),#9);"
        "#11=IFCBUILDINGSTOREY('0000000000000000000006',$,'E',$,$,$,$,$,$,$);"
        "#12=IFCRELCONTAINEDINSPATIALSTRUCTURE('0000000000000000000007',$,$,$,(#1),#11);"
        "ENDSEC;END-ISO-10303-21;");
    return one;
}

}   // namespace

void vRun(std::string_view input) {
    const ExactBytes bytes(input);
    const ids::Requirements wanted = ids::Requirements::fromBuffer(bytes.text());
    for (const ids::Fault& fault : wanted.faults()) {
        vExpect(!fault.key.empty() && !fault.message.empty(), "a fault says what is wrong");
        vExpect(fault.line <= input.size() + 1 && fault.column <= input.size() + 1, "a fault is in the file");
        vExpect(!fault.specification || *fault.specification < wanted.specifications().size(),
                "a fault is in a specification that there is");
    }
    ids::Options options;
    options.threads = 1;
    options.otherSchemas = ids::OtherSchemas::Check;
    const ids::Result result = ids::check(model(), wanted, options);
    vExpect(result.specifications.size() == wanted.specifications().size(), "each specification has a result");
    for (const ids::SpecificationResult& one : result.specifications) {
        vExpect(one.passed + one.failed == one.applicable && !one.reason.empty(), "a result adds up");
        vExpect((one.failed == 0) == one.failures.empty(), "who fails has a reason");
    }
}

}   // namespace oxa::fuzz
