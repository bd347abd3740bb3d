// SPDX-License-Identifier: Apache-2.0
// PublishedText: the facts of a published EXPRESS text, by a reader of its own that shares no code with the
// provider: slow, made of string searches, and right only for the regular form of these texts.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace oxa::test {

struct PublishedEntity {
    std::string sSupertype;
    bool boAbstract = false;
    std::vector<std::string> attributes;   // "Name : OPTIONAL LIST [1:?] OF IfcX"
    std::vector<std::string> inverses;     // "Name : SET [0:?] OF IfcX FOR Attribute"
};

struct PublishedText {
    std::map<std::string, PublishedEntity> entities;
    std::map<std::string, std::string> types;   // text between "=" and ";", blanks made single

    explicit PublishedText(std::string sText);
};

// "text" with each run of blanks and line ends made one blank, none beside a bracket, a comma or at an end.
std::string sPlainBlanks(const std::string& text);

}   // namespace oxa::test
