// SPDX-License-Identifier: Apache-2.0
// Sarif: what fails in files, as SARIF 2.1.0 (OASIS), which build servers and editors show beside the lines.
//
// For      the verb "check" with --strict. One run holds all files of a call.
// Threads  one.
#pragma once

#include <map>
#include <ostream>
#include <string>

#include "Check/Check.h"
#include "oxaifc/io/Output.h"

namespace oxa::tool {

class Sarif {
public:
    explicit Sarif(std::ostream& stream);

    // All records of one file, in the order of the file. A level that could not be decided is a notification: no result
    // is not yet a valid file.
    void vFile(const std::string& sPath, const CheckResult& result);
    // A file that could not be checked.
    void vFault(const std::string& sPath, const std::string& sWhy);
    // What follows the results: to be called once, in the end.
    void vFinish();

private:
    void vResult(const CheckRecord& record, const std::string& sUri);
    void vNotify(const char* pLevel, const std::string& sText, const std::string& sPath);

    std::ostream& m_stream;
    std::map<std::string, std::string> m_rules;   // what each key says
    Json m_notifications = Json::array();
    Json m_files = Json::array();
    bool m_boSuccessful = true;
    bool m_boFirst = true;
};

// The file as a URI reference (RFC 3986): a relative path stays one.
[[nodiscard]] std::string sUriOf(const std::string& sPath);

}   // namespace oxa::tool
