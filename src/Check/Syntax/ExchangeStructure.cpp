// SPDX-License-Identifier: Apache-2.0
// Productions by functions: vXxx reads a section, in which faults are told and passed; boXxx a part of a statement, and
// is false after a fault, which vRecover passes. Each begins with its first token current, and ends with the one behind
// it current.
#include "Check/Syntax/ExchangeStructure.h"

#include <string>

namespace oxa::check {

namespace {

constexpr std::string_view g_begin = "ISO-10303-21";
constexpr std::string_view g_end = "END-ISO-10303-21";

}   // namespace

StatementSink::~StatementSink() = default;

ExchangeStructure::ExchangeStructure(std::istream& stream, const CheckOptions& options, Collector& collector,
                                     InstanceTable& instances)
    : m_lexer(stream, options, collector),
      m_instances(instances) {}

// ---- Tokens

bool ExchangeStructure::boAtWord(std::string_view word) const noexcept {
    const Token& token = m_lexer.current();
    return (token.kind == TokenKind::Keyword || token.kind == TokenKind::SectionWord) && token.text == word;
}

bool ExchangeStructure::boAtSectionEnd() const noexcept {
    return m_boNamed || boAt(TokenKind::End) || boAt(TokenKind::SectionWord) || boAtWord("ENDSEC");
}

// Always false, for a function that ends with it.
bool ExchangeStructure::boUnexpected(std::string_view expected) {
    const Token& token = m_lexer.current();
    // A token that is none was told where it has a form of its own to miss.
    m_lexer.vFault(SyntaxFault::Unexpected, token.place,
                   token.kind == TokenKind::End ? std::string_view("the end of the file") : token.text, expected);
    return false;
}

bool ExchangeStructure::boExpect(TokenKind kind, std::string_view expected) {
    if (!boAt(kind)) return boUnexpected(expected);
    m_lexer.next();
    return true;
}

// The ";" of "HEADER;" and its like, which are one token each.
void ExchangeStructure::vSectionSemicolon() {
    const std::string sWord(m_lexer.current().text);
    const Place place = m_lexer.current().place;
    if (m_lexer.boTakeAdjacent(';')) {
        m_lexer.next();
        return;
    }
    m_lexer.next();
    if (boAt(TokenKind::Semicolon)) {
        m_lexer.vFault(SyntaxFault::BlankInToken, place, sWord, sWord + ';');
        m_lexer.next();
    } else {
        boUnexpected(";");
    }
}

// "ENDSEC;", or what stands in its place.
void ExchangeStructure::vSectionEnd(std::string_view expected) {
    if (boAtWord("ENDSEC")) return vSectionSemicolon();
    m_lexer.vFault(SyntaxFault::SectionNotClosed, m_lexer.current().place, m_lexer.current().text, expected);
}

// Behind a fault: to the next statement, which is an instance with its "=" already current where the ";" is missing.
void ExchangeStructure::vRecover() {
    m_boNamed = m_lexer.boSkipStatement(m_name);
    if (boAt(TokenKind::Semicolon)) m_lexer.next();
}

void ExchangeStructure::vEdition3Only(std::string_view expected) {
    if (m_lexer.boEdition3()) return;
    m_lexer.vFault(SyntaxFault::Edition, m_lexer.current().place, m_lexer.current().text, expected);
}

// ---- Sections

void ExchangeStructure::vReadHeader(StatementSink& sink) {
    m_pSink = &sink;
    m_lexer.next();
    vBegin();
    vHeader();
    m_lexer.vEditionKnown(sink.boEdition3());
}

void ExchangeStructure::vReadData(StatementSink& sink) {
    m_pSink = &sink;
    vSections();
}

void ExchangeStructure::vBegin() {
    if (boAtWord(g_begin)) return vSectionSemicolon();
    const Token& token = m_lexer.current();
    m_lexer.vFault(SyntaxFault::Begin, token.place,
                   token.kind == TokenKind::End ? std::string_view("the end of the file") : token.text,
                   "ISO-10303-21;");
    if (token.kind == TokenKind::SectionWord && token.text != g_end) return vSectionSemicolon();
    // What is no structure at all has no statements, and is told once.
    while (!boAt(TokenKind::End) && !boAtWord(g_begin) && !boAtWord("HEADER") && !boAtWord("DATA") &&
           !boAtWord("FILE_DESCRIPTION")) {
        vRecover();
        if (boAtSectionEnd()) break;
    }
    if (boAtWord(g_begin)) vSectionSemicolon();
}

void ExchangeStructure::vHeader() {
    if (boAtWord("HEADER")) {
        vSectionSemicolon();
    } else {
        m_lexer.vFault(SyntaxFault::Section, m_lexer.current().place,
                       boAt(TokenKind::End) ? std::string_view("the end of the file") : m_lexer.current().text,
                       "HEADER;");
        if (boAtWord("DATA") || boAtWord("ENDSEC") || !boAt(TokenKind::Keyword)) return;
    }
    vHeaderEntities();
    vSectionEnd("ENDSEC; of the header");
}

void ExchangeStructure::vHeaderEntities() {
    while (!boAtSectionEnd() && !boAtWord("DATA") && !boAt(TokenKind::InstanceName)) {
        if (!boAt(TokenKind::Keyword)) {
            boUnexpected("a header entity or ENDSEC;");
            vRecover();
            continue;
        }
        const bool boDescription = boAtWord("FILE_DESCRIPTION");
        m_pSink->vStatement({0, m_lexer.current().place});
        const bool boFine = boRecord() && boExpect(TokenKind::Semicolon, ";");
        m_pSink->vStatementEnd(boFine);
        if (boDescription) m_lexer.vEditionKnown(m_pSink->boEdition3());
        if (!boFine) vRecover();
    }
}

void ExchangeStructure::vSections() {
    bool boData = false;
    for (;;) {
        if (boAtWord("DATA")) {
            boData = true;
            vData();
        } else if (boAtWord("ANCHOR")) {
            vEdition3Only("DATA;");
            vAnchors();
        } else if (boAtWord("REFERENCE")) {
            vEdition3Only("DATA;");
            vReferences();
        } else if (boAtWord(g_end)) {
            if (!boData && !m_lexer.boEdition3())
                m_lexer.vFault(SyntaxFault::Section, m_lexer.current().place, m_lexer.current().text, "DATA;");
            vSectionSemicolon();
            return vBehindEnd();
        } else if (m_boNamed || boAt(TokenKind::InstanceName)) {
            boData = true;
            m_lexer.vFault(SyntaxFault::Section, m_lexer.current().place, m_lexer.current().text, "DATA;");
            m_pSink->vSection();
            vInstances();
        } else if (boAt(TokenKind::End)) {
            m_lexer.vFault(SyntaxFault::End, m_lexer.current().place, {}, "END-ISO-10303-21;");
            return;
        } else {
            boUnexpected(boData ? "DATA; or END-ISO-10303-21;" : "DATA;");
            if (boAtSectionEnd()) m_lexer.next();
            vRecover();
        }
    }
}

// "DATA" [ "(" parameters ")" ] ";" instances "ENDSEC;"
void ExchangeStructure::vData() {
    m_pSink->vSection();
    const std::string sWord(m_lexer.current().text);
    const Place place = m_lexer.current().place;
    if (m_lexer.boTakeAdjacent(';')) {
        m_lexer.next();
        return vInstances();
    }
    const Token keyword = m_lexer.current();
    m_lexer.next();
    if (boAt(TokenKind::Open)) {
        m_pSink->vStatement({0, place});
        m_pSink->vRecord(keyword);
        m_lexer.next();
        const bool boFine = boParameters() && boExpect(TokenKind::Semicolon, ";");
        m_pSink->vStatementEnd(boFine);
        if (!boFine) vRecover();
    } else if (boAt(TokenKind::Semicolon)) {
        m_lexer.vFault(SyntaxFault::BlankInToken, place, sWord, "DATA;");
        m_lexer.next();
    } else {
        boUnexpected(";");
    }
    vInstances();
}

void ExchangeStructure::vInstances() {
    while (m_boNamed || (!boAtSectionEnd() && !boAtWord("DATA"))) {
        if (!m_boNamed && boAt(TokenKind::InstanceName)) {
            m_name = m_lexer.current();
            m_lexer.next();
            m_boNamed = boAt(TokenKind::Equals);
            if (!m_boNamed) boUnexpected("=");
        } else if (!m_boNamed) {
            boUnexpected("an instance or ENDSEC;");
        }
        if (m_boNamed)
            vInstance();
        else
            vRecover();
    }
    vSectionEnd("ENDSEC; of the data section");
}

// ---- Instances

// The instance m_name, from its "=" on.
void ExchangeStructure::vInstance() {
    ++m_iStatements;
    m_boNamed = false;
    m_lexer.vInstance(m_name.iNumber);
    const bool boDouble = !m_instances.boInsert(m_name.iNumber, m_name.place.iLine);
    if (boDouble)
        m_lexer.vFault(SyntaxFault::InstanceDouble, m_name.place, InstanceTable::sName(m_name.iNumber),
                       "one of its own");
    m_lexer.next();
    m_pSink->vStatement({m_name.iNumber, m_name.place, boDouble, boAt(TokenKind::Open)});
    const bool boFine = boInstanceBody() && (boAt(TokenKind::Semicolon) || boUnexpected(";"));
    m_pSink->vStatementEnd(boFine);
    m_lexer.vInstance(0);
    if (boFine)
        m_lexer.next();
    else
        vRecover();
}

// record | "(" record { record } ")"
bool ExchangeStructure::boInstanceBody() {
    if (!boAt(TokenKind::Open)) return boRecord();
    m_lexer.next();
    do {
        if (!boRecord()) return false;
    } while (!boAt(TokenKind::Close));
    m_lexer.next();
    return true;
}

// keyword "(" [ parameters ] ")"
bool ExchangeStructure::boRecord() {
    if (!boAt(TokenKind::Keyword)) return boUnexpected("a keyword");
    m_pSink->vRecord(m_lexer.current());
    m_lexer.next();
    return boExpect(TokenKind::Open, "(") && boParameters();
}

// [ parameter { "," parameter } ] ")", with all that nests in it. The innermost of what is open is m_frames.back().
bool ExchangeStructure::boParameters() {
    m_frames.assign(1, Frame::List);
    bool boFirst = true;
    while (!m_frames.empty()) {
        const std::size_t iDepth = m_frames.size();
        const bool boMayClose = boFirst && m_frames.back() == Frame::List;
        if (!(boMayClose && boAt(TokenKind::Close))) {
            if (!boParameter(boMayClose)) return false;
            boFirst = m_frames.size() > iDepth;
            if (boFirst) continue;
            if (m_frames.back() == Frame::List && boAt(TokenKind::Comma)) {
                m_lexer.next();
                continue;
            }
        }
        // What is open ends here, one after another.
        for (;;) {
            if (!boAt(TokenKind::Close)) return boUnexpected(m_frames.back() == Frame::List ? ", or )" : ")");
            m_frames.pop_back();
            if (m_frames.empty()) break;
            m_pSink->vClose(m_lexer.current());
            m_lexer.next();
            if (m_frames.back() == Frame::List && boAt(TokenKind::Comma)) {
                m_lexer.next();
                break;
            }
        }
        boFirst = false;
    }
    m_pSink->vRecordEnd(m_lexer.current());
    m_lexer.next();
    return true;
}

// A value, or what opens a list or a typed parameter.
bool ExchangeStructure::boParameter(bool boMayClose) {
    const Token& token = m_lexer.current();
    switch (token.kind) {
    case TokenKind::InstanceName:
    case TokenKind::ValueName:
    case TokenKind::Integer:
    case TokenKind::Real:
    case TokenKind::String:
    case TokenKind::Enumeration:
    case TokenKind::Binary:
    case TokenKind::Resource:
    case TokenKind::Omitted:
    case TokenKind::Derived:
        m_pSink->vValue(token);
        m_lexer.next();
        return true;
    case TokenKind::Open:
    case TokenKind::Keyword:
        if (m_frames.size() == g_iMaxDepth) {
            m_lexer.vFault(SyntaxFault::NestedTooDeep, token.place, {}, "1000 levels at most");
            return false;
        }
        if (token.kind == TokenKind::Keyword) {
            m_pSink->vOpenTyped(token);
            m_lexer.next();
            m_frames.push_back(Frame::Typed);
            return boExpect(TokenKind::Open, "(");
        }
        m_pSink->vOpenList(token);
        m_frames.push_back(Frame::List);
        m_lexer.next();
        return true;
    case TokenKind::End:
    case TokenKind::SectionWord:
    case TokenKind::Close:
    case TokenKind::Comma:
    case TokenKind::Semicolon:
    case TokenKind::Equals:
    case TokenKind::OpenTag:
    case TokenKind::CloseTag:
    case TokenKind::Colon:
    case TokenKind::Fault: break;
    }
    return boUnexpected(boMayClose ? "a parameter or )" : "a parameter");
}

// ---- Edition 3

// "ANCHOR;" { anchor ";" } "ENDSEC;"
void ExchangeStructure::vAnchors() {
    vSectionSemicolon();
    while (!boAtSectionEnd() && !boAtWord("DATA"))
        if (!boAnchor() || !boExpect(TokenKind::Semicolon, ";")) vRecover();
    vSectionEnd("ENDSEC; of the anchors");
}

// resource "=" item { "{" name ":" item "}" }
bool ExchangeStructure::boAnchor() {
    if (!boExpect(TokenKind::Resource, "the name of an anchor") || !boExpect(TokenKind::Equals, "=") || !boAnchorItem())
        return false;
    while (boAt(TokenKind::OpenTag)) {
        m_lexer.next();
        if (!boExpect(TokenKind::Keyword, "the name of a tag") || !boExpect(TokenKind::Colon, ":") || !boAnchorItem() ||
            !boExpect(TokenKind::CloseTag, "}"))
            return false;
    }
    return true;
}

// A value or a list of such.
bool ExchangeStructure::boAnchorItem() {
    std::size_t iDepth = 0;
    for (;;) {
        const TokenKind kind = m_lexer.current().kind;
        if (kind == TokenKind::Open) {
            ++iDepth;
            m_lexer.next();
            continue;
        }
        if (kind == TokenKind::Close && iDepth > 0) {
            --iDepth;
        } else if (kind != TokenKind::Omitted && kind != TokenKind::Integer && kind != TokenKind::Real &&
                   kind != TokenKind::String && kind != TokenKind::Enumeration && kind != TokenKind::Binary &&
                   kind != TokenKind::InstanceName && kind != TokenKind::ValueName && kind != TokenKind::Resource) {
            return boUnexpected("a value");
        }
        m_lexer.next();
        while (iDepth > 0 && boAt(TokenKind::Close)) {
            --iDepth;
            m_lexer.next();
        }
        if (iDepth == 0) return true;
        if (!boExpect(TokenKind::Comma, ", or )")) return false;
    }
}

// "REFERENCE;" { name "=" resource ";" } "ENDSEC;"
void ExchangeStructure::vReferences() {
    vSectionSemicolon();
    while (!boAtSectionEnd() && !boAtWord("DATA")) {
        const Token name = m_lexer.current();
        const bool boName = boAt(TokenKind::InstanceName) || boAt(TokenKind::ValueName);
        if (boName) m_lexer.next();
        if (boName && name.kind == TokenKind::InstanceName && !m_instances.boInsert(name.iNumber, name.place.iLine))
            m_lexer.vFault(SyntaxFault::InstanceDouble, name.place, InstanceTable::sName(name.iNumber),
                           "one of its own");
        if (!boName) boUnexpected("an instance name");
        if (!boName || !boExpect(TokenKind::Equals, "=") || !boExpect(TokenKind::Resource, "a resource") ||
            !boExpect(TokenKind::Semicolon, ";"))
            vRecover();
    }
    vSectionEnd("ENDSEC; of the references");
}

// { "SIGNATURE" base64 "ENDSEC;" }, and nothing more.
void ExchangeStructure::vBehindEnd() {
    while (boAtWord("SIGNATURE") && m_lexer.boEdition3()) {
        const Place place = m_lexer.current().place;
        // Written with a ";" behind the word as well.
        static_cast<void>(m_lexer.boTakeAdjacent(';'));
        if (!m_lexer.boSkipSignature())
            m_lexer.vFault(SyntaxFault::SectionNotClosed, place, "SIGNATURE", "ENDSEC; of the signature");
        m_lexer.next();
    }
    if (boAt(TokenKind::End)) return;
    m_lexer.vFault(SyntaxFault::TextBehindEnd, m_lexer.current().place, m_lexer.current().text, "nothing");
    m_lexer.vSkipFile();
}

}   // namespace oxa::check
