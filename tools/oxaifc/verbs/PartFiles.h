// SPDX-License-Identifier: Apache-2.0
// PartFiles: the names of files that a model is split into, made from an OUT and from what the parts are called.
//
// For      "oxaifc extract --split-by".
// Names    hold nothing that a system takes for a part of a path or refuses, are of a moderate length, and differ in more
//          than the case of letters, whatever the parts are called.
// Threads  one.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <string_view>

namespace oxa::tool {

// A name without a folder and without an end: "../EG" becomes "_EG", nothing but dots and blanks what is given instead.
[[nodiscard]] std::string sFileName(std::string_view name, const std::string& sInstead);

class PartFiles {
public:
    // OUT is a folder, which is made where it is missing, or the name of a file of a known form: "out.ifc" gives
    // "out-EG.ifc". "end" is that of the files in a folder.
    // Errors   Failure, for a folder that can't be made.
    PartFiles(const std::string& sOut, std::string_view end);

    // The path of the next file. Parts of one name get "-2", "-3" behind it.
    [[nodiscard]] std::string sNext(std::string_view name, const std::string& sInstead);

private:
    std::filesystem::path m_folder;
    std::string m_sBefore;
    std::string m_sEnd;
    std::set<std::string> m_taken;   // in lower case
};

}   // namespace oxa::tool
