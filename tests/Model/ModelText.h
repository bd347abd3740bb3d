// SPDX-License-Identifier: Apache-2.0
// ModelText: models of a few statements, and what a mistake says.
#pragma once

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "Model/Model.h"

namespace oxa::test {

inline std::string fileText(std::string_view schema, std::string_view statements) {
    return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','2026-01-01T00:00:00',(''),(''),'','','"
           "');\n"
           "FILE_SCHEMA(('" +
           std::string(schema) + "'));\nENDSEC;\nDATA;\n" + std::string(statements) + "ENDSEC;\nEND-ISO-10303-21;\n";
}

inline Model modelOf(std::string_view schema, std::string_view statements, const OpenOptions& options = {}) {
    return Model::fromBuffer(fileText(schema, statements), options);
}

// "NameError: <what>" of what the function throws; "nothing" where it throws nothing.
template <class Function>
std::string sThrown(Function&& function) {
    try {
        function();
    } catch (const NameError& error) {
        return std::string("NameError: ") + error.what();
    } catch (const TypeError& error) {
        return std::string("TypeError: ") + error.what();
    } catch (const ValueError& error) {
        return std::string("ValueError: ") + error.what();
    } catch (const HandleError& error) {
        return std::string("HandleError: ") + error.what();
    } catch (const FileError& error) {
        return std::string("FileError: ") + error.what();
    } catch (const Stopped& error) {
        return std::string("Stopped: ") + error.what();
    }
    return "nothing";
}

// "#1 #4" in their order.
inline std::string sIds(const Elements& elements) {
    std::string sText;
    for (const Element element : elements) sText += (sText.empty() ? "#" : " #") + std::to_string(element.id());
    return sText;
}

}   // namespace oxa::test
