// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/io/CommandLine.h"

#include <utility>

#include <CLI/CLI.hpp>

namespace oxa::tool {

CommandOption CommandOption::required(bool boRequired) const {
    m_pOption->required(boRequired);
    return *this;
}

CommandOption CommandOption::value(const char* pName) const {
    m_pOption->type_name(pName);
    return *this;
}

CommandOption CommandOption::oneOf(std::vector<std::string> words) const {
    m_pOption->check(CLI::IsMember(std::move(words)));
    return *this;
}

CommandOption CommandOption::within(double least, double most) const {
    m_pOption->check(CLI::Range(least, most));
    return *this;
}

CommandOption CommandOption::excludes(CommandOption other) const {
    m_pOption->excludes(other.m_pOption);
    return *this;
}

CommandOption CommandOption::oneEach() const {
    m_pOption->allow_extra_args(false);
    return *this;
}

CommandOption CommandOption::oneEach(char mark) const {
    m_pOption->delimiter(mark)->allow_extra_args(false);
    return *this;
}

CommandOption CommandOption::each(std::function<void(const std::string&)> called) const {
    m_pOption->each([called = std::move(called)](std::string sValue) { called(sValue); });
    return *this;
}

void CommandOption::vGive(const std::string& sValue) const { m_pOption->add_result(sValue); }

CommandOption Command::option(const char* pNames, std::string& sValue, const std::string& sHelp) const {
    return CommandOption(*m_pApp->add_option(pNames, sValue, sHelp));
}

CommandOption Command::option(const char* pNames, std::vector<std::string>& values, const std::string& sHelp) const {
    return CommandOption(*m_pApp->add_option(pNames, values, sHelp));
}

CommandOption Command::option(const char* pNames, double& value, const std::string& sHelp) const {
    return CommandOption(*m_pApp->add_option(pNames, value, sHelp));
}

CommandOption Command::option(const char* pNames, std::size_t& iValue, const std::string& sHelp) const {
    return CommandOption(*m_pApp->add_option(pNames, iValue, sHelp));
}

CommandOption Command::option(const char* pNames, std::function<void(const std::string&)> taken,
                              const std::string& sHelp) const {
    return CommandOption(*m_pApp->add_option_function<std::string>(pNames, std::move(taken), sHelp));
}

CommandOption Command::severalTo(const char* pNames, std::function<void(const std::vector<std::string>&)> taken,
                                 const std::string& sHelp) const {
    return CommandOption(*m_pApp->add_option_function<std::vector<std::string>>(pNames, std::move(taken), sHelp));
}

CommandOption Command::flag(const char* pName, bool& boValue, const char* pHelp) const {
    return CommandOption(*m_pApp->add_flag(pName, boValue, pHelp));
}

CommandOption Command::flag(const char* pName, std::string& sValue, const char* pHelp) const {
    return CommandOption(*m_pApp->add_flag(pName, sValue, pHelp));
}

CommandOption Command::declared(const char* pName) const { return CommandOption(*m_pApp->get_option(pName)); }

void Command::vFooter(const std::string& sText) const { m_pApp->footer(sText); }

}   // namespace oxa::tool
