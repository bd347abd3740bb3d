// SPDX-License-Identifier: Apache-2.0
// Target: a file that a verb writes, whole or not at all.
//
// For      verbs with an OUT. The text goes to a new file in the same folder, which takes the name in the end:
//          whoever looks sees the old content or the new one, and OUT may be the file that was read.
//          A name that ends in .ifczip or .gz is that of a packed file, and packed on the way.
// Not for  the answer of a verb: Output.
// Errors   Failure, which leaves an existing file as it was and no other behind.
// Threads  one at a time; the writers of the library hand their text to one.
#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include "Model/Archive.h"

namespace oxa::stream {
class ReplacedFile;
}   // namespace oxa::stream

namespace oxa::tool {

class Target {
public:
    // Opens it: "-" is standard output. What is no regular file, as a pipe or a device, is written as it comes. What is
    // inside of an .ifczip gets a name with this end.
    explicit Target(const std::string& sPath, std::string_view inside = ".ifc");
    // Removes what was written, unless vFinish took it over.
    ~Target();
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    // Once it fails it stays so and drops what follows.
    [[nodiscard]] std::ostream& stream() noexcept;
    // Puts the new file in the place of the old one, with the permissions of that.
    void vFinish();

    // How messages call it.
    [[nodiscard]] const std::string& sName() const noexcept { return m_sName; }
    // True when this is the file of that path, under whatever name; "-" is the one that standard input comes from.
    [[nodiscard]] bool boIs(const std::string& sPath) const;

private:
    std::string m_sName;
    std::unique_ptr<stream::ReplacedFile> m_pFile;
    std::unique_ptr<Packer> m_pPacker;   // null for a file that is not packed
};

// True when both are names of one file; "-" as the path is the one that standard input comes from.
[[nodiscard]] bool boSameFile(const std::string& sPath, const std::string& sOut);
// The end of a name in small letters, as .csv; empty where it has none.
[[nodiscard]] std::string sEndOf(const std::string& sPath);

}   // namespace oxa::tool
